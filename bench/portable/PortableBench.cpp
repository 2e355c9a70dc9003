// Measures a folder export of the sample's documents for the CD viewer against `cp -r` of a
// folder holding exactly the files the export copies, in one run. The sample gives every
// document a file of its own, so the export copies as many distinct files as it has documents.
//
//   vxbench_portable [documents] [runs]     (defaults: 2000 and 5)

#include "core/SampleBuilder.h"
#include "operations/HitListContext.h"
#include "portable/MediaDialog.h"
#include "portable/PortableExport.h"
#include "session/GroupConnection.h"
#include "session/LibraryState.h"
#include "session/Settings.h"
#include "session/UiServices.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

using namespace vx;

namespace {

// Wall time, and processor time (user + system) of this process or of its children.
struct Timing {
    double wall = 0;
    double processor = 0;
};

#ifdef Q_OS_UNIX
double processorSeconds(int who) {
    rusage usage{};
    getrusage(who, &usage);
    const auto seconds = [](const timeval& t) { return double(t.tv_sec) + t.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}
#else
double processorSeconds(int) {
    return 0;
}
constexpr int RUSAGE_SELF = 0;
constexpr int RUSAGE_CHILDREN = -1;
#endif

Timing timingOf(int who, const std::function<void()>& work) {
    const double processorBefore = processorSeconds(who);
    const auto start = std::chrono::steady_clock::now();
    work();
    Timing timing;
    timing.wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    timing.processor = processorSeconds(who) - processorBefore;
    return timing;
}

// Answers as a user choosing the full export into `destination` would.
class BenchUi : public UiServices {
public:
    QString destination;
    int messages = 0;

    MessageAnswer messageBox(const QString& text, int, const QString&) override {
        ++messages;
        std::fprintf(stderr, "message: %s\n", qPrintable(text));
        return MessageAnswer::Ok;
    }
    std::optional<QString> inputBox(const QString&, const QString&, const QString&) override {
        return std::nullopt;
    }
    QString browseForFolder(QWidget*, const QString&) override { return destination; }
    void setBusyCursor(bool) override {}
    void processEvents() override {
        QApplication::processEvents();
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* dialog = qobject_cast<MediaDialog*>(widget);
            if (!dialog || !dialog->isVisible())
                continue;
            dialog->findChild<QComboBox*>(QStringLiteral("cmb_MediaType"))
                ->setCurrentIndex(MediaDialog::FullExport);
            dialog->findChild<QPushButton*>(QStringLiteral("btn_Ok"))->click();
        }
    }
    void sleep(int) override {}
    bool shellExecute(const QString&, const QString&) override { return false; }
};

// The least of a hit list an export needs: the session, the selection and the events.
class BenchHitList : public HitListContext {
public:
    BenchHitList(Connection connection, QString documents, QList<qint32> selection)
        : m_connection(std::move(connection))
        , m_documents(std::move(documents))
        , m_selection(std::move(selection)) {}

    QWidget* controlWidget() override { return &m_widget; }
    Connection connection() override { return m_connection; }
    Recordset resultSet() override { return {}; }
    QString queryString() const override { return {}; }
    QString groupTableName() const override { return QStringLiteral("Invoices"); }
    qint32 groupId() const override { return 1; }
    QString userName() const override { return QStringLiteral("admin"); }
    qint32 userPermission() const override { return 0xFF; }
    QString initFilePath() const override { return {}; }
    QString serverName() const override { return {}; }
    bool isServer() const override { return false; }
    qint32 currentItemId() const override { return m_selection.value(0); }
    VXDynaForm* form() override { return nullptr; }
    QList<qint32> selectionForCommand() override { return m_selection; }
    QString clickedColumnCaption() const override { return {}; }
    void makeResultRowCurrent(qsizetype) override {}
    void layoutControl() override {}
    void requeryList() override {}
    QString locateDocumentFromID(qint32, const QString& file, const QString&) override {
        return m_documents + u'/' + file;
    }
    QString locateDocumentToMove(qint32, const QString& file, const QString&) override {
        return m_documents + u'/' + file;
    }
    void raiseGetServerName() override {}
    void raiseCurrentItemID() override {}
    void raiseRecordAuditTrail(const QString&, const QList<qint32>&, const QString&) override {
        ++audits;
    }
    int audits = 0;

private:
    Connection m_connection;
    QString m_documents;
    QList<qint32> m_selection;
    QWidget m_widget;
};

// Files directly in a folder and their bytes.
struct FolderSize {
    qint64 files = 0;
    qint64 bytes = 0;
};

FolderSize sizeOf(const QString& folder) {
    FolderSize size;
    for (const QFileInfo& file : QDir(folder).entryInfoList(QDir::Files)) {
        ++size.files;
        size.bytes += file.size();
    }
    return size;
}

// The one export root made in `destination`.
QString exportRootIn(const QString& destination) {
    const QStringList roots = QDir(destination).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return roots.size() == 1 ? QDir(destination).filePath(roots.first()) : QString();
}

// The document files an export wrote (its single volume's Document folder).
QString exportedDocuments(const QString& destination) {
    const QString root = exportRootIn(destination);
    const QStringList volumes = QDir(root).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return volumes.size() == 1 ? root + u'/' + volumes.first() + QStringLiteral("/Document")
                               : QString();
}

// A folder with copies of the source files the export copied, the same names and bytes.
bool prepareBaseline(const QString& exported, const QString& sourceFolder,
                     const QString& baseline) {
    if (!QDir().mkpath(baseline))
        return false;
    // Read and written plainly: QFile::copy would sync each file to the disk.
    for (const QString& name : QDir(exported).entryList(QDir::Files)) {
        QFile source(sourceFolder + u'/' + name);
        QFile copy(baseline + u'/' + name);
        if (!source.open(QIODevice::ReadOnly) || !copy.open(QIODevice::WriteOnly))
            return false;
        const QByteArray content = source.readAll();
        if (copy.write(content) != content.size())
            return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int documents = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 2000;
    const int runs = argc > 2 ? QString::fromLocal8Bit(argv[2]).toInt() : 5;
    if (documents < 1 || runs < 1) {
        std::fprintf(stderr, "usage: vxbench_portable [documents] [runs]\n");
        return 2;
    }

    QTemporaryDir work;
    setSettingsDirectory(work.filePath(QStringLiteral("settings")));
    repo::SampleOptions options;
    options.documents = documents;
    options.filesOnDiskLimit = documents;
    const repo::SampleResult sample =
        repo::createSample(work.filePath(QStringLiteral("sample")), options);
    QDir::setCurrent(sample.dir);

    auto* ui = new BenchUi;
    installUiServices(std::unique_ptr<UiServices>(ui));
    QList<qint32> selection;
    for (qint32 id = 1; id <= documents; ++id)
        selection << id;
    BenchHitList hitList(openGroupConnection(sample.initFilePath), sample.documentFolder,
                         selection);

    // An untimed export first: it names the files the baseline copies and warms both sides'
    // caches alike.
    ui->destination = work.filePath(QStringLiteral("warm-up"));
    QDir().mkpath(ui->destination);
    exportToVeltrane(hitList);
    const QString baseline = work.filePath(QStringLiteral("baseline"));
    if (!prepareBaseline(exportedDocuments(ui->destination), sample.documentFolder, baseline)) {
        std::fprintf(stderr, "could not prepare the baseline folder\n");
        return 1;
    }
    const FolderSize baselineSize = sizeOf(baseline);

    std::vector<double> exportSeconds;
    std::vector<double> copySeconds;
    bool sameFiles = true;
    std::printf("portable folder export of %d documents, %d runs\n", documents, runs);
    for (int run = 0; run < runs; ++run) {
        ui->destination = work.filePath(QStringLiteral("export%1").arg(run));
        QDir().mkpath(ui->destination);
        const QString copyTarget = work.filePath(QStringLiteral("copy%1").arg(run));
        Timing exportTiming;
        Timing copyTiming;
        auto exportOnce = [&] {
            exportTiming = timingOf(RUSAGE_SELF, [&] { exportToVeltrane(hitList); });
        };
        auto copyOnce = [&] {
            copyTiming = timingOf(RUSAGE_CHILDREN, [&] {
                QProcess::execute(QStringLiteral("cp"),
                                  {QStringLiteral("-r"), baseline, copyTarget});
            });
        };
        // Turn about: whichever goes first meets the file system as the last run left it.
        if (run % 2 == 0) {
            exportOnce();
            copyOnce();
        } else {
            copyOnce();
            exportOnce();
        }
        exportSeconds.push_back(exportTiming.wall);
        copySeconds.push_back(copyTiming.wall);
        const FolderSize exported = sizeOf(exportedDocuments(ui->destination));
        const FolderSize copied = sizeOf(copyTarget);
        sameFiles = sameFiles && exported.files == copied.files && exported.bytes == copied.bytes &&
                    copied.files == baselineSize.files;
        std::printf("  run %d: export %7.3f s (cpu %.3f s; %lld files, %lld bytes)   cp -r %7.3f s "
                    "(cpu %.3f s; %lld files, %lld bytes)   ratio %6.2fx\n",
                    run + 1, exportTiming.wall, exportTiming.processor,
                    static_cast<long long>(exported.files), static_cast<long long>(exported.bytes),
                    copyTiming.wall, copyTiming.processor, static_cast<long long>(copied.files),
                    static_cast<long long>(copied.bytes), exportTiming.wall / copyTiming.wall);
    }
    const auto [exportBest, exportWorst] =
        std::minmax_element(exportSeconds.begin(), exportSeconds.end());
    const auto [copyBest, copyWorst] = std::minmax_element(copySeconds.begin(), copySeconds.end());
    std::printf("  export      best %7.3f s   range %.3f .. %.3f s\n", *exportBest, *exportBest,
                *exportWorst);
    std::printf("  cp -r       best %7.3f s   range %.3f .. %.3f s   (the same %lld files, "
                "%lld bytes)\n",
                *copyBest, *copyBest, *copyWorst, static_cast<long long>(baselineSize.files),
                static_cast<long long>(baselineSize.bytes));
    std::printf("  ratio       %7.2fx best to best  (target within 1.3x)\n",
                *exportBest / *copyBest);
    std::printf("  exports ok: %d of %d, messages shown: %d, same files on both sides: %s\n",
                hitList.audits, runs + 1, ui->messages, sameFiles ? "yes" : "no");
    return hitList.audits == runs + 1 && ui->messages == 0 && sameFiles ? 0 : 1;
}
