#include "DemoWindow.h"

#include "AuditTrailPanel.h"
#include "DocumentCommands.h"
#include "HitListEvents.h"
#include "HostSettings.h"
#include "IndexPage.h"
#include "SearchPage.h"
#include "core/SampleBuilder.h"
#include "data/Error.h"
#include "operations/StoredFileName.h"
#include "server/LateBinding.h"
#include "session/PrivateProfile.h"
#include "session/ShownText.h"
#include "session/SystemFolder.h"
#include "session/UiServices.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QLabel>
#include <QMenuBar>
#include <QScreen>
#include <QSettings>
#include <QSplitter>
#include <QStatusBar>
#include <QSysInfo>
#include <QTabWidget>
#include <QToolBar>

namespace vx::demo {

namespace {

// The size a first window opens with, when the screen has room for it.
constexpr QSize PreferredSize(1280, 960);

// The viewer files a portable export copies are kept in this folder beside the repository.
const QString ViewerFolder = QStringLiteral("veltrane");

} // namespace

DemoWindow::DemoWindow(QWidget* parent)
    : QMainWindow(parent)
    , m_ui(std::make_unique<HostUiServices::Installation>()) {
    setObjectName(QStringLiteral("demoWindow"));
    setWindowTitle(tr("VXUILib Demo"));
    m_pages = new QTabWidget(this);
    m_pages->setObjectName(QStringLiteral("pages"));
    m_indexPage = new IndexPage(m_pages);
    m_searchPage = new SearchPage(m_pages);
    m_pages->addTab(m_indexPage, tr("&Index"));
    // Alt+S is the Search button's on this page.
    m_pages->addTab(m_searchPage, tr("S&earch"));
    setCentralWidget(m_pages);

    m_auditTrail = new AuditTrailPanel(this);
    connect(m_auditTrail, &AuditTrailPanel::logNotWritten, this, &DemoWindow::showStatus);
    auto* dock = new QDockWidget(tr("Audit trail"), this);
    dock->setObjectName(QStringLiteral("auditTrailDock"));
    dock->setWidget(m_auditTrail);
    dock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    addDockWidget(Qt::BottomDockWidgetArea, dock);
    resizeDocks({dock}, {110}, Qt::Vertical);

    m_currentItem = new QLabel(this);
    m_currentItem->setObjectName(QStringLiteral("currentItem"));
    statusBar()->addPermanentWidget(m_currentItem);
    m_commands = new DocumentCommands(m_searchPage->hitListControl(), m_ui->services(), this);
    connect(m_commands, &DocumentCommands::statusMessage, this, &DemoWindow::showStatus);
    connect(m_commands, &DocumentCommands::resultsChanged, m_searchPage, &SearchPage::rerunQuery);
    buildMenus();

    HitListEvents* events = m_searchPage->hitListEvents();
    connect(events, &HitListEvents::currentItemChanged, this, &DemoWindow::setCurrentItem);
    connect(events, &HitListEvents::locateRequested, this, &DemoWindow::answerLocate);
    connect(events, &HitListEvents::serverNameRequested, this, &DemoWindow::answerServerName);
    connect(events, &HitListEvents::auditTrail, this, &DemoWindow::recordAudit);
    connect(events, &HitListEvents::documentRequested, this, &DemoWindow::openFile);
    connect(events, &HitListEvents::revisionRequested, this, &DemoWindow::noteRevision);
    watchVersionActivation();
    connect(m_indexPage, &IndexPage::statusMessage, this, &DemoWindow::showStatus);
    connect(m_indexPage, &IndexPage::documentFiled, this,
            [this](qint32 itemId, const QString& path) {
                recordAudit(QStringLiteral("Indexing"), {itemId}, QFileInfo(path).fileName());
            });
    connect(m_searchPage, &SearchPage::statusMessage, this, &DemoWindow::showStatus);
    if (!m_searchPage->unconnectedEvents().isEmpty())
        showStatus(tr("Hit list events not connected: %1")
                       .arg(m_searchPage->unconnectedEvents().join(QStringLiteral(", "))));
    watchHandOverFolder();
    restoreWindowState();
}

DemoWindow::~DemoWindow() {
    // The repository's folder may go away after the window; the process goes on where it was.
    if (!m_startFolder.isEmpty())
        QDir::setCurrent(m_startFolder);
}

bool DemoWindow::openGroup(const QString& initFilePath) {
    try {
        GroupSession session = GroupSession::fromInitFile(initFilePath);
        DocumentLocator locator(session.initFilePath);
        listInCatalog(session);
        // The hit list takes the viewer files of a portable export from the folder current at
        // its Init: the sample keeps them beside the repository.
        if (QFileInfo(QDir(session.repositoryDir).filePath(ViewerFolder)).isDir()) {
            if (m_startFolder.isEmpty())
                m_startFolder = QDir::currentPath();
            QDir::setCurrent(session.repositoryDir);
        }
        m_indexPage->openSession(session);
        m_searchPage->openSession(session);
        m_session = std::move(session);
        m_locator = std::move(locator);
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly | MessageStyle::Critical,
                        tr("Open group"));
        return false;
    }
    m_auditTrail->setLogFile(
        QDir(m_session.repositoryDir).filePath(QStringLiteral("audit-trail.log")));
    setWindowTitle(tr("VXUILib Demo - %1 (%2) - %3")
                       .arg(m_session.groupName, m_session.libraryName, m_session.userName));
    m_commands->setPermission(m_session.userPermission);
    setCurrentItem(0);
    showStatus(tr("Opened %1").arg(QDir::toNativeSeparators(m_session.initFilePath)));
    return true;
}

void DemoWindow::listInCatalog(const GroupSession& session) {
    // The indexing API finds a group through the library catalog; list the opened one there.
    const QString catalog = libraryCatalogPath();
    if (readPrivateProfileString(catalog, session.libraryName, session.groupName, QString()) ==
        session.initFilePath)
        return;
    QDir().mkpath(QFileInfo(catalog).absolutePath());
    writePrivateProfileString(catalog, session.libraryName, session.groupName,
                              session.initFilePath);
}

QString DemoWindow::locateDocument(qint32 itemId, const QString& storedName) const {
    return m_locator ? m_locator->locateItem(itemId, storedName) : DocumentLocator::NotFound;
}

QString DemoWindow::initFileIn(const QString& folder) {
    const QFileInfoList found =
        QDir(folder).entryInfoList({QStringLiteral("*.ini")}, QDir::Files, QDir::Name);
    return found.isEmpty() ? QString() : found.first().absoluteFilePath();
}

void DemoWindow::buildMenus() {
    const auto addItem = [this](QMenu* menu, const QString& text, auto slot) {
        auto* action = new QAction(text, menu);
        connect(action, &QAction::triggered, this, slot);
        menu->addAction(action);
        return action;
    };
    QMenu* file = menuBar()->addMenu(tr("&File"));
    addItem(file, tr("Repository &Location..."), &DemoWindow::chooseRepositoryLocation);
    addItem(file, tr("Open &Group Init File..."), &DemoWindow::chooseGroupInitFile);
    file->addSeparator();
    addItem(file, tr("&Quit"), &QWidget::close)->setShortcut(QKeySequence::Quit);
    QMenu* documents = menuBar()->addMenu(tr("&Documents"));
    documents->setObjectName(QStringLiteral("documentsMenu"));
    const QList<QAction*> commands = m_commands->actions();
    for (QAction* action : commands) {
        documents->addAction(action);
        // Exports first, then the file operations, then marking and properties.
        if (action->objectName() == u"portableExport" || action->objectName() == u"updateVolume")
            documents->addSeparator();
    }
    m_toolbar = addToolBar(tr("Documents"));
    m_toolbar->setObjectName(QStringLiteral("documentsToolbar"));
    m_toolbar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_toolbar->setMovable(false);
    for (const char* name : {"exportTable", "saveAsText", "portableExport", "properties"})
        m_toolbar->addAction(m_commands->action(QString::fromLatin1(name)));
    QMenu* help = menuBar()->addMenu(tr("&Help"));
    addItem(help, tr("&About"), &DemoWindow::showAbout);
}

void DemoWindow::chooseRepositoryLocation() {
    const QString folder =
        QFileDialog::getExistingDirectory(this, tr("Repository location"), m_session.repositoryDir);
    if (folder.isEmpty())
        return;
    QString initFile = initFileIn(folder);
    if (initFile.isEmpty()) {
        const auto answer = ui().messageBox(
            tr("%1 holds no repository. Create the sample repository there?")
                .arg(QDir::toNativeSeparators(folder)),
            MessageStyle::YesNo | MessageStyle::Question, tr("Repository location"));
        if (answer != MessageAnswer::Yes)
            return;
        try {
            BusyCursor busy;
            initFile = repo::createSample(folder).initFilePath;
        } catch (const Error& error) {
            ui().messageBox(error.description(), MessageStyle::OkOnly | MessageStyle::Critical,
                            tr("Repository location"));
            return;
        }
    }
    if (openGroup(initFile))
        hostSettings().setValue(QStringLiteral("Repository"), QFileInfo(initFile).absolutePath());
}

void DemoWindow::chooseGroupInitFile() {
    const QString initFile =
        QFileDialog::getOpenFileName(this, tr("Group initialisation file"), m_session.repositoryDir,
                                     tr("Group initialisation files (*.ini);;All files (*)"));
    if (!initFile.isEmpty())
        openGroup(initFile);
}

void DemoWindow::showAbout() {
    ui().messageBox(
        tr("VXUILib Demo\n\nA sample host of the VXUILib document-management controls: index "
           "documents, search them, work on the results and keep favourites.\n\nRepository: "
           "%1\nGroup: %2, user %3")
            .arg(QDir::toNativeSeparators(m_session.repositoryDir), m_session.groupName,
                 m_session.userName),
        MessageStyle::OkOnly | MessageStyle::Information, tr("About VXUILib Demo"));
}

void DemoWindow::answerLocate(qint32 itemId, const QString& file, const QString& volume,
                              bool toMove) {
    Q_UNUSED(volume)
    Q_UNUSED(toMove)
    // The answer is read by the hit list as soon as this handler returns.
    const QString path = locateDocument(itemId, file);
    try {
        writeMember(m_searchPage->hitListControl(), "DocumentToMove", path);
    } catch (const Error& error) {
        showStatus(error.description());
    }
}

void DemoWindow::answerServerName() {
    QSettings settings = hostSettings();
    const QString serverName =
        settings.value(QStringLiteral("ServerName"), QSysInfo::machineHostName()).toString();
    const bool isServer = settings.value(QStringLiteral("IsServer"), true).toBool();
    try {
        writeMember(m_searchPage->hitListControl(), "ServerName", serverName);
        writeMember(m_searchPage->hitListControl(), "IsServer", isServer);
    } catch (const Error& error) {
        showStatus(error.description());
    }
}

void DemoWindow::openFile(const QString& file, const QString& volume) {
    Q_UNUSED(volume)
    const QString path = locateDocument(0, file);
    if (path == DocumentLocator::NotFound) {
        showStatus(tr("The file %1 is in none of the repository's document folders.")
                       .arg(shownText(file)));
        return;
    }
    if (const QString problem = openingProblem(path); !problem.isEmpty()) {
        showStatus(tr("%1 is not opened: %2.").arg(QDir::toNativeSeparators(path), problem));
        return;
    }
    m_openedFiles << path;
    if (!ui().shellExecute(QStringLiteral("open"), path))
        showStatus(tr("No program opens %1.").arg(QDir::toNativeSeparators(path)));
}

void DemoWindow::recordAudit(const QString& action, const QList<qint32>& ids,
                             const QString& description) {
    m_auditTrail->record(action, ids, description);
    // A command of the host's menu reports when it ends; the control's own buttons report here.
    if (m_commands->running()) {
        m_commands->noteAudit(action, ids, description);
        return;
    }
    const QString outcome = DocumentCommands::auditOutcome(action, ids, description);
    if (!outcome.isEmpty())
        showStatus(outcome);
}

void DemoWindow::noteRevision(const QString& file, const QString& volume, const QString& version,
                              const QString& itemId) {
    // Choosing a version only names it; double click or Enter opens it.
    m_revision = Revision{file, volume, version, itemId};
    showStatus(tr("Version %1 of item %2: %3 (double-click or Enter opens it)")
                   .arg(version, itemId, file));
}

void DemoWindow::watchVersionActivation() {
    auto* grid =
        m_searchPage->hitListControl()->findChild<QAbstractItemView*>(QStringLiteral("HitList"));
    if (!grid)
        return;
    connect(grid, &QAbstractItemView::activated, this, [this] { openNotedRevision(); });
}

void DemoWindow::openNotedRevision() {
    // Only while the versions view is shown: its toolbar button stays pressed then.
    const auto* versions =
        m_searchPage->hitListControl()->findChild<QAction*>(QStringLiteral("Archive"));
    if (!m_revision || !versions || !versions->isChecked())
        return;
    showStatus(tr("Opening version %1 of item %2").arg(m_revision->version, m_revision->itemId));
    openFile(m_revision->file, m_revision->volume);
}

void DemoWindow::setCurrentItem(qint32 itemId) {
    m_currentItemId = itemId;
    m_commands->setResultsShown(itemId != 0);
    m_currentItem->setText(itemId ? tr("Current item: %1").arg(itemId) : tr("No current item"));
}

void DemoWindow::watchHandOverFolder() {
    // Another program of the system leaves "~znindex" and "~znfind" here.
    const QString folder = handOverFolder();
    QDir().mkpath(folder);
    m_handOverWatcher = new QFileSystemWatcher(this);
    m_handOverWatcher->addPath(folder);
    connect(m_handOverWatcher, &QFileSystemWatcher::directoryChanged, this,
            &DemoWindow::applyHandOvers);
    connect(qApp, &QApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive)
            applyHandOvers();
    });
}

void DemoWindow::applyHandOvers() {
    if (QFileInfo::exists(handOverFilePath(QStringLiteral("~znindex")))) {
        m_pages->setCurrentWidget(m_indexPage);
        m_indexPage->applyHandOver();
    }
    if (QFileInfo::exists(handOverFilePath(QStringLiteral("~znfind")))) {
        m_pages->setCurrentWidget(m_searchPage);
        m_searchPage->applyHandOver();
    }
}

void DemoWindow::showStatus(const QString& text) {
    // Stays until the next message: the user may look away while a long operation ends.
    statusBar()->showMessage(text);
}

void DemoWindow::restoreWindowState() {
    QSettings settings = hostSettings();
    settings.beginGroup(QStringLiteral("Window"));
    const QScreen* screen = this->screen() ? this->screen() : QGuiApplication::primaryScreen();
    const QRect available = screen ? screen->availableGeometry() : QRect(0, 0, 1280, 960);
    if (!restoreGeometry(settings.value(QStringLiteral("Geometry")).toByteArray())) {
        // At a high scale factor the free area in device-independent pixels is small.
        resize(PreferredSize.boundedTo(available.size() * 0.94));
        move(available.center() - QPoint(width() / 2, height() / 2));
    } else if (!available.contains(frameGeometry()) && !isMaximized()) {
        resize(size().boundedTo(available.size()));
        move(qBound(available.left(), x(), qMax(available.left(), available.right() - width())),
             qBound(available.top(), y(), qMax(available.top(), available.bottom() - height())));
    }
    restoreState(settings.value(QStringLiteral("State")).toByteArray());
    if (auto* splitter = m_searchPage->findChild<QSplitter*>(QStringLiteral("searchSplitter")))
        splitter->restoreState(settings.value(QStringLiteral("SearchSplitter")).toByteArray());
    m_pages->setCurrentIndex(settings.value(QStringLiteral("Page"), 0).toInt());
}

void DemoWindow::saveWindowState() const {
    QSettings settings = hostSettings();
    settings.beginGroup(QStringLiteral("Window"));
    settings.setValue(QStringLiteral("Geometry"), saveGeometry());
    settings.setValue(QStringLiteral("State"), saveState());
    if (auto* splitter = m_searchPage->findChild<QSplitter*>(QStringLiteral("searchSplitter")))
        settings.setValue(QStringLiteral("SearchSplitter"), splitter->saveState());
    settings.setValue(QStringLiteral("Page"), m_pages->currentIndex());
}

void DemoWindow::closeEvent(QCloseEvent* event) {
    saveWindowState();
    QMainWindow::closeEvent(event);
}

} // namespace vx::demo
