// Filing cost against the repository's size: documents filed through the index control's direct
// path (UpdateRecord) and through the indexing API with the default companions
// (UpdateRecordAPI), each interleaved, batch by batch, with a raw C-API loop writing the same
// rows in the same journal mode (and, for the API path, the same file copy).
//
//   vxbench_commit [--million] [--documents N]   (N documents filed per path and size; 200)
//
// The last line holds the ratios of the medians:
//   commit: direct <r1>x raw, api <r2>x raw+copy, growth 10k->100k direct <g1>x api <g2>x

#include "companions/DefaultCompanions.h"
#include "core/SampleBuilder.h"
#include "index/VXIndex.h"
#include "server/ControlFactory.h"
#include "server/LateBinding.h"
#include "session/Settings.h"
#include "session/UiServices.h"
#include "session/companions/VXDynaForm.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <sqlite3.h>
#include <vector>

using namespace vx;

namespace {

class SilentUi : public UiServices {
public:
    MessageAnswer messageBox(const QString& text, int, const QString& title) override {
        std::printf("  [message] %s: %s\n", qPrintable(title), qPrintable(text));
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

double secondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

void check(sqlite3* db, int code) {
    if (code != SQLITE_OK && code != SQLITE_DONE && code != SQLITE_ROW) {
        std::fprintf(stderr, "sqlite: %s\n", sqlite3_errmsg(db));
        std::exit(1);
    }
}

// The rows the controls write, straight through the C API with statements prepared once.
class RawFiler {
public:
    RawFiler(const QString& database, const QString& documentFolder)
        : m_folder(documentFolder) {
        check(m_db, sqlite3_open(database.toUtf8().constData(), &m_db));
        sqlite3_busy_timeout(m_db, 10000);
        check(m_db, sqlite3_exec(m_db, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr));
        prepare(&m_item, "INSERT INTO KTItem (itemid, idx_date, username, type, description, "
                         "groupid, lockcount, tag, attachment, deleted) VALUES "
                         "(?, '2024-05-06 07:08:09', 'bench', 1, '', 1, 0, ' ', 0, 0)");
        prepare(&m_group, "INSERT INTO Invoices (itemid, InvoiceNo, Customer, Status, Amount, "
                          "InvoiceDate, Paid, Categories, Notes) VALUES "
                          "(?, 'INV-B', 'Acme', 'Open', 100, '2024-05-06 00:00:00', 1, "
                          "'Software', 'bench')");
        prepare(&m_keyword, "INSERT INTO keywords (keyword, itemid) VALUES ('bench', ?)");
        prepare(&m_file, "INSERT INTO KTFile (fileid, itemid, fname, fdate, fsize, archive, "
                         "volume) VALUES (?, ?, ?, '2024-05-06 07:08:09', 13, 0, '')");
    }
    ~RawFiler() {
        for (sqlite3_stmt* statement : {m_item, m_group, m_keyword, m_file})
            sqlite3_finalize(statement);
        sqlite3_close(m_db);
    }

    // The direct path: three rows, each saved on its own.
    void fileRows(qint32 id) {
        run(m_item, id);
        run(m_group, id);
        run(m_keyword, id);
    }

    // The API path: the same rows and the file row in one transaction, and the copy.
    void fileWithCopy(qint32 id, const QString& source) {
        const QString name = QStringLiteral("raw%1.pdf").arg(id);
        // A plain copy, not synced (QFile::copy syncs), as the indexing API copies.
        QFile in(source);
        QFile out(QDir(m_folder).filePath(name));
        if (!in.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            std::exit(1);
        out.write(in.readAll());
        out.close();
        check(m_db, sqlite3_exec(m_db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr));
        run(m_item, id);
        sqlite3_bind_int(m_file, 1, id);
        sqlite3_bind_int(m_file, 2, id);
        const QByteArray fname = name.toUtf8();
        sqlite3_bind_text(m_file, 3, fname.constData(), int(fname.size()), SQLITE_TRANSIENT);
        check(m_db, sqlite3_step(m_file));
        sqlite3_reset(m_file);
        run(m_group, id);
        run(m_keyword, id);
        check(m_db, sqlite3_exec(m_db, "COMMIT", nullptr, nullptr, nullptr));
    }

private:
    void prepare(sqlite3_stmt** statement, const char* sql) {
        check(m_db, sqlite3_prepare_v2(m_db, sql, -1, statement, nullptr));
    }
    void run(sqlite3_stmt* statement, qint32 id) {
        sqlite3_bind_int(statement, 1, id);
        check(m_db, sqlite3_step(statement));
        sqlite3_reset(statement);
    }

    sqlite3* m_db = nullptr;
    sqlite3_stmt* m_item = nullptr;
    sqlite3_stmt* m_group = nullptr;
    sqlite3_stmt* m_keyword = nullptr;
    sqlite3_stmt* m_file = nullptr;
    QString m_folder;
};

void fillForm(VXIndex& index) {
    auto* form = index.findChild<VXDynaForm*>(QStringLiteral("Group"));
    for (form->MoveFirstField(); !form->FieldEOF(); form->MoveNextField()) {
        const QString column = form->FieldName();
        if (column == u"InvoiceNo")
            form->setFieldValue(QStringLiteral("INV-B"));
        else if (column == u"Customer")
            form->setFieldValue(QStringLiteral("Acme"));
        else if (column == u"Status")
            form->setFieldValue(QStringLiteral("Open"));
        else if (column == u"Amount")
            form->setFieldValue(100);
        else if (column == u"InvoiceDate")
            form->setFieldValue(QDate(2024, 5, 6));
        else if (column == u"Categories")
            form->AddFieldListItem(QStringLiteral("Software"));
        else if (column == u"Notes")
            form->setFieldValue(QStringLiteral("bench"));
    }
    callMember(index.findChild<QWidget*>(QStringLiteral("kss2")), "AddListItem",
               QStringLiteral("bench"));
}

struct Figures {
    double direct = 0, rawDirect = 0, api = 0, rawApi = 0; // seconds per document (medians)
};

Figures measure(qint32 documents, qint32 filed, const QString& root) {
    const auto started = std::chrono::steady_clock::now();
    repo::SampleOptions options;
    options.documents = documents;
    options.catalogPath = QDir(root).filePath(QStringLiteral("zn5000/vxlibraries.ini"));
    const repo::SampleResult sample =
        repo::createSample(QDir(root).filePath(QStringLiteral("sample%1").arg(documents)), options);
    std::printf("%d documents: sample built in %.1f s\n", documents,
                std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count());
    const QString source = QDir(root).filePath(QStringLiteral("incoming.pdf"));
    {
        QFile file(source);
        file.open(QIODevice::WriteOnly);
        file.write("%PDF-1.4 test");
    }

    std::unique_ptr<VXIndex> index(
        qobject_cast<VXIndex*>(ControlFactory::create(QStringLiteral("VXUILib.VXIndex"))));
    index->setGroupName(QStringLiteral("Invoices"));
    index->setGroupId(sample.groupId);
    index->setUserName(QStringLiteral("admin"));
    index->setCurrentLibrary(QStringLiteral("Main"));
    index->setUserPermission(0xFF);
    index->setCurFileType(1);
    index->setDocumentPath(source);
    index->setInit(sample.initFilePath);
    index->setGroupInitString(sample.formPath);
    fillForm(*index);
    RawFiler raw(sample.databasePath, sample.documentFolder);

    // One filing first: the id counter starts from the ids in use, below the bands used here.
    if (!index->UpdateRecordAPI())
        std::exit(1);
    const qint32 batch = 20;
    std::vector<double> direct, rawDirect, api, rawApi;
    qint32 next = 0;
    for (qint32 done = 0; done < filed; done += batch) {
        const double perDocument = 1.0 / batch;
        direct.push_back(perDocument * secondsOf([&] {
                             for (qint32 i = 0; i < batch; ++i) {
                                 index->setCurItemId(10'000'000 + next + i);
                                 if (!index->UpdateRecord())
                                     std::exit(1);
                             }
                         }));
        rawDirect.push_back(perDocument * secondsOf([&] {
                                for (qint32 i = 0; i < batch; ++i)
                                    raw.fileRows(20'000'000 + next + i);
                            }));
        api.push_back(perDocument * secondsOf([&] {
                          for (qint32 i = 0; i < batch; ++i)
                              if (!index->UpdateRecordAPI())
                                  std::exit(1);
                      }));
        rawApi.push_back(perDocument * secondsOf([&] {
                             for (qint32 i = 0; i < batch; ++i)
                                 raw.fileWithCopy(30'000'000 + next + i, source);
                         }));
        next += batch;
    }
    index->Done();
    const Figures figures{median(direct), median(rawDirect), median(api), median(rawApi)};
    std::printf("  UpdateRecord     %8.3f ms/document   raw rows        %8.3f ms   ratio %.2f\n",
                figures.direct * 1e3, figures.rawDirect * 1e3, figures.direct / figures.rawDirect);
    std::printf("  UpdateRecordAPI  %8.3f ms/document   raw rows + copy %8.3f ms   ratio %.2f\n",
                figures.api * 1e3, figures.rawApi * 1e3, figures.api / figures.rawApi);
    std::fflush(stdout);
    return figures;
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir root;
    // The indexing API finds the library catalog in the system folder's zn5000 folder.
    qputenv("VXUILIB_SYSTEM_DIR", root.path().toUtf8());
    QApplication app(argc, argv);
    setSettingsDirectory(root.filePath(QStringLiteral("settings")));
    installUiServices(std::make_unique<SilentUi>());
    registerDefaultCompanions();
    registerLibraryControls();

    const QStringList arguments = app.arguments();
    qint32 filed = 200;
    const int documentsAt = int(arguments.indexOf(QStringLiteral("--documents")));
    if (documentsAt > 0 && documentsAt + 1 < arguments.size())
        filed = std::max(20, arguments.at(documentsAt + 1).toInt());

    const Figures small = measure(10'000, filed, root.path());
    const Figures large = measure(100'000, filed, root.path());
    double worstDirect = std::max(small.direct / small.rawDirect, large.direct / large.rawDirect);
    double worstApi = std::max(small.api / small.rawApi, large.api / large.rawApi);
    if (arguments.contains(QStringLiteral("--million"))) {
        const Figures million = measure(1'000'000, filed, root.path());
        worstDirect = std::max(worstDirect, million.direct / million.rawDirect);
        worstApi = std::max(worstApi, million.api / million.rawApi);
        std::printf("growth 10k->1M: direct %.2fx api %.2fx\n", million.direct / small.direct,
                    million.api / small.api);
    }
    std::printf("commit: direct %.2fx raw, api %.2fx raw+copy, growth 10k->100k direct %.2fx "
                "api %.2fx\n",
                worstDirect, worstApi, large.direct / small.direct, large.api / small.api);
    return 0;
}
