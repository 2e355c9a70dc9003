// Many users filing at once on one repository: 1, 2, 4 and 8 users, each a separate process,
// file documents through the indexing API and then edit random documents, on SQLite and on a
// throw-away PostgreSQL server. Per engine and user count: documents filed per second (all
// users together), refused filings, edits refused as conflicts, and whether every new KTFile row
// has its own stored file and no file is left over. Every user does the same work whatever the
// count; the users start filing together, once all are set up (process start and connection
// are not timed), and start editing together once all have filed, so that one user's edits
// never compete with another's filing.
//
//   vxbench_load [--documents N] [--edits N] [--rounds N] [--sqlite-only]
//   (per user; 400, 10; 3 rounds)
//
// Each user count runs several rounds, taken in turn, and its best round counts: the machine
// is shared, and a build starting next to one round would otherwise decide the ratio.
//
// The last line:
//   load: refused <n>, sqlite 8 users <a>x 1 user, postgres 8 users <b>x 1 user

#include "companions/ItemList.h"
#include "companions/ScanIndex.h"
#include "core/SampleBuilder.h"
#include "data/Connection.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "data/RetryTransient.h"
#include "session/GroupConnection.h"
#include "session/PrivateProfile.h"
#include "session/UiServices.h"
#include "support/PostgresServer.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QSet>
#include <QTemporaryDir>
#include <cstdio>
#include <memory>
#include <vector>

using namespace vx;

namespace {

const QString Library = QStringLiteral("Main");
const QString Group = QStringLiteral("Invoices");

// Nobody answers in a worker: every message is counted and printed to the error stream.
class CountingUi : public UiServices {
public:
    int messages = 0;
    MessageAnswer messageBox(const QString& text, int, const QString& title) override {
        ++messages;
        std::fprintf(stderr, "[%s] %s\n", qPrintable(title), qPrintable(text));
        return MessageAnswer::Ok;
    }
    std::optional<QString> inputBox(const QString&, const QString&, const QString&) override {
        return std::nullopt;
    }
    QString browseForFolder(QWidget*, const QString&) override { return {}; }
    void setBusyCursor(bool) override {}
    void processEvents() override {}
    void sleep(int) override {}
    bool shellExecute(const QString&, const QString&) override { return false; }
};

qint64 now() {
    return QDateTime::currentMSecsSinceEpoch();
}

// Waits for the line the parent sends when every user is at the same point.
bool waitForGo() {
    char line[16];
    return std::fgets(line, sizeof line, stdin) != nullptr;
}

void say(const QByteArray& line) {
    std::fputs(line.constData(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

// One user: files `documents` documents, then makes `edits` edits of random documents the way
// the hit list saves a record (a keyset record set on the group row, one column changed).
// Says "ready", then "filed <filed> <refused> <start> <end>", then "edited <conflicts>", each
// phase after the parent's go.
int runWorker(const QStringList& arguments) {
    const QString initFile = arguments.at(0);
    const int documents = arguments.at(1).toInt();
    const int edits = arguments.at(2).toInt();
    const QString name = arguments.at(3);
    installUiServices(std::make_unique<CountingUi>());

    QTemporaryDir incoming;
    const QString path = incoming.filePath(QStringLiteral("scan.pdf"));
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return 2;
        file.write(QByteArray(4096, 'x'));
    }
    ScanIndex api;
    QString library = Library;
    QString group = Group;
    api.Init(library);
    if (!api.SelectGroup(group)) {
        std::fprintf(stderr, "SelectGroup: %s\n", qPrintable(api.lastError()));
        return 2;
    }
    Connection connection = openGroupConnection(initFile);
    int filed = 0;
    int refused = 0;
    QString user = name;
    say("ready");
    if (!waitForGo())
        return 2;
    const qint64 start = now();
    for (int i = 0; i < documents; ++i) {
        QString column = QStringLiteral("InvoiceNo");
        api.SetFieldContent(column, QStringLiteral("%1-%2").arg(name).arg(i));
        column = QStringLiteral("Customer");
        api.SetFieldContent(column, QStringLiteral("Acme"));
        auto keywords = std::make_shared<ItemList>();
        QString keyword = QStringLiteral("load");
        keywords->AddItem(keyword);
        api.setKeywordsList(keywords);
        QString document = path;
        if (api.DocumentIndex(document, nullptr, user) != 0)
            ++filed;
        else
            ++refused;
    }
    const qint64 end = now();
    say(QStringLiteral("filed %1 %2 %3 %4").arg(filed).arg(refused).arg(start).arg(end).toUtf8());
    if (!waitForGo())
        return 2;

    int conflicts = 0;
    for (int i = 0; i < edits; ++i) {
        const int id = 1 + int(QRandomGenerator::global()->bounded(300));
        try {
            retryTransient([&] {
                Recordset row;
                row.open(QStringLiteral("select * from Invoices where itemid = %1").arg(id),
                         connection, CursorType::Keyset, LockType::Optimistic);
                if (row.eof())
                    return;
                row.setValue(QStringLiteral("Status"), QStringLiteral("Seen by %1").arg(name));
                row.update();
            });
        } catch (const Error& error) {
            ++conflicts;
            std::fprintf(stderr, "edit of %d: %s\n", id, qPrintable(error.description()));
        }
    }
    say(QStringLiteral("edited %1").arg(conflicts).toUtf8());
    return 0;
}

struct Outcome {
    int users = 0;
    int filed = 0;
    int refused = 0;
    int conflicts = 0;
    double perSecond = 0;
    bool consistent = false;
};

qint64 scalar(Connection& connection, const QString& sql) {
    Recordset rows;
    rows.open(sql, connection);
    return rows.eof() ? 0 : rows.value(0).toLongLong();
}

// Hidden files too: a filer's working copy left behind counts as a stray file.
QSet<QString> filesIn(const QString& folder) {
    const QStringList names = QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System);
    return QSet<QString>(names.begin(), names.end());
}

// One round of `users` users on the sample, checked against what it held before.
Outcome runUsers(int users, int documents, int edits, const repo::SampleResult& sample) {
    Connection connection = openGroupConnection(sample.initFilePath);
    const qint64 lastItem = scalar(connection, QStringLiteral("SELECT MAX(itemid) FROM KTItem"));
    const qint64 lastFile = scalar(connection, QStringLiteral("SELECT MAX(fileid) FROM KTFile"));
    const QSet<QString> filesBefore = filesIn(sample.documentFolder);

    std::vector<std::unique_ptr<QProcess>> workers;
    for (int u = 0; u < users; ++u) {
        auto process = std::make_unique<QProcess>();
        process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process->start(QCoreApplication::applicationFilePath(),
                       {QStringLiteral("--worker"), sample.initFilePath, QString::number(documents),
                        QString::number(edits), QStringLiteral("user%1").arg(u + 1)});
        workers.push_back(std::move(process));
    }
    // The next line of a worker, split at blanks; empty when it ended without one.
    auto nextLine = [](QProcess& process) {
        while (!process.canReadLine()) {
            if (!process.waitForReadyRead(-1))
                return QList<QByteArray>();
        }
        return process.readLine().trimmed().split(' ');
    };
    // Sent to all before any answer is awaited (a QProcess writes only while waited on).
    auto everyoneGo = [&] {
        for (auto& process : workers)
            process->write("go\n");
        for (auto& process : workers)
            process->waitForBytesWritten(-1);
    };
    Outcome outcome;
    outcome.users = users;
    std::vector<bool> alive(workers.size(), true);
    for (size_t w = 0; w < workers.size(); ++w)
        alive[w] = nextLine(*workers[w]).value(0) == "ready";
    everyoneGo();
    qint64 first = std::numeric_limits<qint64>::max();
    qint64 last = 0;
    for (size_t w = 0; w < workers.size(); ++w) {
        const QList<QByteArray> parts = alive[w] ? nextLine(*workers[w]) : QList<QByteArray>();
        if (parts.size() != 5 || parts[0] != "filed") {
            alive[w] = false;
            continue;
        }
        outcome.filed += parts[1].toInt();
        outcome.refused += parts[2].toInt();
        first = std::min(first, parts[3].toLongLong());
        last = std::max(last, parts[4].toLongLong());
    }
    everyoneGo();
    for (size_t w = 0; w < workers.size(); ++w) {
        QProcess& process = *workers[w];
        const QList<QByteArray> parts = alive[w] ? nextLine(process) : QList<QByteArray>();
        process.closeWriteChannel();
        process.waitForFinished(-1);
        if (parts.size() != 2 || parts[0] != "edited" || process.exitCode() != 0) {
            std::fprintf(stderr, "a worker failed (exit %d)\n", process.exitCode());
            if (!alive[w])
                outcome.refused += documents;
            continue;
        }
        outcome.conflicts += parts[1].toInt();
    }
    outcome.perSecond = last > first ? outcome.filed * 1000.0 / double(last - first) : 0;

    // Every filed document has its rows and one stored file of its own; nothing else was left.
    const QString newItems = QStringLiteral(" FROM KTItem WHERE itemid > %1").arg(lastItem);
    const QString newFiles = QStringLiteral(" FROM KTFile WHERE fileid > %1").arg(lastFile);
    const qint64 items = scalar(connection, "SELECT COUNT(*)" + newItems);
    const qint64 fileRows = scalar(connection, "SELECT COUNT(*)" + newFiles);
    const qint64 distinctItems = scalar(connection, "SELECT COUNT(DISTINCT itemid)" + newItems);
    const qint64 distinctNames = scalar(connection, "SELECT COUNT(DISTINCT fname)" + newFiles);
    QSet<QString> stored;
    Recordset names;
    names.open("SELECT fname" + newFiles, connection);
    for (; !names.eof(); names.moveNext())
        stored.insert(names.value(0).toString());
    QSet<QString> added = filesIn(sample.documentFolder);
    added.subtract(filesBefore);
    outcome.consistent = items == outcome.filed && fileRows == items && distinctItems == items &&
                         distinctNames == items && added == stored;
    std::printf("  %d user%s: %4d filed, %2d refused, %2d conflicts, %7.1f documents/s, "
                "rows = files and ids unique: %s\n",
                users, users == 1 ? " " : "s", outcome.filed, outcome.refused, outcome.conflicts,
                outcome.perSecond, outcome.consistent ? "yes" : "NO");
    std::fflush(stdout);
    connection.close();
    return outcome;
}

// Runs every user count on one engine, `rounds` times in turn so that the load other programs
// put on the machine meets every count alike; each count's best round stands. Returns 8 users'
// best throughput over one user's.
double runEngine(const char* engine, int documents, int edits, int rounds, const QString& root,
                 const std::function<QString()>& server, int& refused) {
    std::printf("%s, %d documents and %d edits per user, %d rounds:\n", engine, documents, edits,
                rounds);
    const std::vector<int> userCounts{1, 2, 4, 8};
    std::vector<repo::SampleResult> samples;
    for (const int users : userCounts) {
        repo::SampleOptions options;
        options.server = server();
        options.catalogPath = QDir(root).filePath(QStringLiteral("zn5000/vxlibraries.ini"));
        samples.push_back(repo::createSample(
            QDir(root).filePath(QStringLiteral("%1-%2").arg(engine).arg(users)), options));
    }
    std::vector<double> best(userCounts.size(), 0);
    for (int round = 0; round < rounds; ++round) {
        for (size_t i = 0; i < userCounts.size(); ++i) {
            // Each run names its sample in the catalog, where the workers look the group up.
            writePrivateProfileString(QDir(root).filePath(QStringLiteral("zn5000/vxlibraries.ini")),
                                      Library, Group, samples[i].initFilePath);
            const Outcome outcome = runUsers(userCounts[i], documents, edits, samples[i]);
            refused += outcome.refused + (outcome.consistent ? 0 : 1);
            best[i] = std::max(best[i], outcome.perSecond);
        }
    }
    std::printf("  best: ");
    for (size_t i = 0; i < userCounts.size(); ++i)
        std::printf("%s%d user%s %.1f/s", i ? ", " : "", userCounts[i],
                    userCounts[i] == 1 ? "" : "s", best[i]);
    std::printf("\n");
    return best.front() > 0 ? best.back() / best.front() : 0;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() > 1 && arguments.at(1) == u"--worker")
        return runWorker(arguments.mid(2));

    auto option = [&](const char* name, int fallback) {
        const int at = int(arguments.indexOf(QLatin1String(name)));
        return at > 0 && at + 1 < arguments.size() ? arguments.at(at + 1).toInt() : fallback;
    };
    const int documents = option("--documents", 400);
    const int edits = option("--edits", 10);
    const int rounds = std::max(1, option("--rounds", 3));
    QTemporaryDir root;
    // The workers find the library catalog in the system folder's zn5000 folder.
    qputenv("VXUILIB_SYSTEM_DIR", root.path().toUtf8());
    try {
        int refused = 0;
        const double sqlite = runEngine(
            "SQLite", documents, edits, rounds, root.path(), [] { return QString(); }, refused);
        double postgres = 0;
        if (arguments.contains(QStringLiteral("--sqlite-only"))) {
            std::printf("PostgreSQL: not measured (--sqlite-only)\n");
        } else if (test::PostgresServer& server = test::PostgresServer::instance();
                   server.isRunning()) {
            postgres = runEngine(
                "PostgreSQL", documents, edits, rounds, root.path(),
                [&] { return server.createDatabase(); }, refused);
        } else {
            std::printf("PostgreSQL: not measured (%s)\n",
                        qPrintable(server.isAvailable() ? server.failure() : server.skipReason()));
        }
        std::printf(
            "load: refused %d, sqlite 8 users %.2fx 1 user, postgres 8 users %.2fx 1 user\n",
            refused, sqlite, postgres);
    } catch (const Error& error) {
        std::fprintf(stderr, "failed: %s\n", qPrintable(error.description()));
        return 1;
    }
    return 0;
}
