// Measures a folder export of the sample's documents for the CD viewer against `cp -r` of the
// document files it draws from, in one run.
//
//   vxbench_portable [documents]     (default: 2000)

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
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>

using namespace vx;

namespace {

double secondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
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
    void makeResultRowCurrent() override {}
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

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int documents = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 2000;

    QTemporaryDir work;
    setSettingsDirectory(work.filePath(QStringLiteral("settings")));
    repo::SampleOptions options;
    options.documents = documents;
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

    constexpr int runs = 3;
    double exportSeconds = 1e300;
    double copySeconds = 1e300;
    for (int run = 0; run < runs; ++run) {
        ui->destination = work.filePath(QStringLiteral("export%1").arg(run));
        QDir().mkpath(ui->destination);
        exportSeconds = std::min(exportSeconds, secondsOf([&] { exportToVeltrane(hitList); }));
        // The baseline: the document files the export draws from, copied by the system's tool.
        const QString copyTarget = work.filePath(QStringLiteral("copy%1").arg(run));
        copySeconds = std::min(copySeconds, secondsOf([&] {
                                   QProcess::execute(
                                       QStringLiteral("cp"),
                                       {QStringLiteral("-r"), sample.documentFolder, copyTarget});
                               }));
    }
    const qsizetype files = QDir(sample.documentFolder).entryList(QDir::Files).size();
    std::printf("portable folder export of %d documents (%lld files on disk), best of %d:\n",
                documents, static_cast<long long>(files), runs);
    std::printf("  export      %8.3f s\n", exportSeconds);
    std::printf("  cp -r       %8.3f s   (the document folder)\n", copySeconds);
    std::printf("  ratio       %8.2fx  (target within 1.3x)\n", exportSeconds / copySeconds);
    std::printf("  exports ok: %d of %d, messages shown: %d\n", hitList.audits, runs, ui->messages);
    return hitList.audits == runs && ui->messages == 0 ? 0 : 1;
}
