#include "ViewerWindow.h"

#include "DocumentResolver.h"
#include "HitListEvents.h"
#include "HitSearch.h"
#include "SearchPane.h"
#include "ViewerSession.h"
#include "data/Error.h"
#include "server/LateBinding.h"
#include "session/UiServices.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QSplitter>
#include <QStatusBar>

namespace vx::viewer {

ViewerWindow::ViewerWindow(const QString& stateRoot, QWidget* parent)
    : QMainWindow(parent)
    , m_stateRoot(stateRoot) {
    setObjectName(QStringLiteral("viewerWindow"));
    setWindowTitle(tr("VXUILib Viewer"));
    m_pane = new apps::SearchPane(this);
    m_pane->setObjectName(QStringLiteral("searchPane"));
    m_pane->splitter()->setObjectName(QStringLiteral("viewerSplitter"));
    m_pane->splitter()->setSizes({480, 420});
    // The form's QueryString, or every document carrying one of the picked keywords.
    m_pane->setQueryTextSource([this]() -> QString {
        return m_session ? search::queryText(queryControl(), *m_session) : QString();
    });
    m_openButton = new QPushButton(tr("&Open document"), this);
    m_openButton->setObjectName(QStringLiteral("openDocument"));
    m_pane->addSideWidget(m_openButton);
    setCentralWidget(m_pane);

    m_volumeLabel = new QLabel(this);
    m_volumeLabel->setObjectName(QStringLiteral("volumeLabel"));
    statusBar()->addPermanentWidget(m_volumeLabel);
    buildMenus();
    connectEvents();
    connect(m_openButton, &QPushButton::clicked, this, [this] { openCurrentDocument(); });
    m_openDocument->setEnabled(false);
    m_openButton->setEnabled(false);
    m_pane->setSearchEnabled(false);
    resize(1280, 960);
}

ViewerWindow::~ViewerWindow() {
    closeExport();
}

QWidget* ViewerWindow::queryControl() const {
    return m_pane->queryControl();
}

QWidget* ViewerWindow::favouritesControl() const {
    return m_pane->favouritesControl();
}

QWidget* ViewerWindow::hitListControl() const {
    return m_pane->hitListControl();
}

void ViewerWindow::buildMenus() {
    QMenu* file = menuBar()->addMenu(tr("&File"));
    QAction* open = file->addAction(tr("&Open Export..."), this, &ViewerWindow::chooseExport);
    open->setObjectName(QStringLiteral("openExportAction"));
    open->setShortcut(QKeySequence::Open);
    m_openDocument = file->addAction(tr("Open &Document"), this, [this] { openCurrentDocument(); });
    m_openDocument->setObjectName(QStringLiteral("openDocumentAction"));
    file->addSeparator();
    QAction* quit = file->addAction(tr("&Quit"), this, &QWidget::close);
    quit->setShortcut(QKeySequence::Quit);
}

void ViewerWindow::connectEvents() {
    for (const QString& name : m_pane->unconnectedEvents())
        showStatus(tr("The hit list's event %1 is not connected.").arg(name));
    apps::HitListEvents* events = m_pane->hitListEvents();
    connect(events, &apps::HitListEvents::currentItemChanged, this, &ViewerWindow::setCurrentItem);
    connect(events, &apps::HitListEvents::documentRequested, this, &ViewerWindow::openFile);
    connect(events, &apps::HitListEvents::locateRequested, this,
            [this](qint32 itemId, const QString& file, const QString& volume, bool) {
                answerLocate(itemId, file, volume);
            });
    connect(m_pane, &apps::SearchPane::statusMessage, this, &ViewerWindow::showStatus);
}

void ViewerWindow::chooseExport() {
    const QString folder = QFileDialog::getExistingDirectory(
        this, tr("Open an export volume or export folder"),
        m_session ? m_session->volume().folder : QDir::homePath());
    if (!folder.isEmpty())
        openExport(folder);
}

bool ViewerWindow::isOpen() const {
    return m_session != nullptr;
}

bool ViewerWindow::openExport(const QString& folder) {
    std::unique_ptr<ViewerSession> session;
    try {
        session = std::make_unique<ViewerSession>(ExportVolume::open(folder), m_stateRoot);
    } catch (const Error& error) {
        tell(error.description(), tr("Open export"));
        return false;
    }
    closeExport();
    m_session = std::move(session);
    m_session->useExportSettings();
    m_resolver = std::make_unique<DocumentResolver>(*m_session, this);
    const ViewerSession& s = *m_session;
    QWidget* hitList = hitListControl();
    QWidget* query = queryControl();
    try {
        writeMember(hitList, "GroupName", s.groupName());
        writeMember(hitList, "GroupID", s.groupId());
        writeMember(hitList, "UserName", QStringLiteral("viewer"));
        writeMember(hitList, "UserPermission", ReadOnlyPermission);
        writeMember(hitList, "GroupInitString", s.recordFormPath());
        writeMember(hitList, "Init", s.initFilePath());

        writeMember(query, "GroupName", s.groupName());
        writeMember(query, "CurrentLibrary", QStringLiteral("Viewer"));
        writeMember(query, "MethodInitString", s.initFilePath());
        apps::callWithTexts(query, "Init", s.queryFormPath());
        writeMember(query, "UserID", -1);
        apps::callWithTexts(favouritesControl(), "Init", s.groupName());
    } catch (const Error& error) {
        tell(error.description(), tr("Open export"));
    }
    m_pane->fitQueryForm();
    const ExportVolume& volume = s.volume();
    QStringList others = volume.neighbours.keys();
    m_volumeLabel->setText(
        others.isEmpty()
            ? tr("Volume %1").arg(volume.name)
            : tr("Volume %1 (also here: %2)").arg(volume.name, others.join(QStringLiteral(", "))));
    setWindowTitle(tr("%1 - VXUILib Viewer").arg(QDir::toNativeSeparators(volume.folder)));
    m_pane->setSearchEnabled(true);
    showStatus(tr("Opened the export of %1 on volume %2").arg(s.groupName(), volume.name));
    return true;
}

void ViewerWindow::closeExport() {
    if (!m_session)
        return;
    // Done saves the favourites into the export's own settings, then the store moves back.
    m_pane->doneControls();
    try {
        callMember(hitListControl(), "CloseList");
    } catch (const Error&) {
    }
    m_resolver.reset();
    m_session.reset();
    m_currentItem = 0;
    m_openDocument->setEnabled(false);
    m_openButton->setEnabled(false);
    m_pane->setSearchEnabled(false);
}

bool ViewerWindow::search() {
    return m_session && m_pane->search();
}

bool ViewerWindow::search(const SearchCriteria& criteria) {
    if (!m_session)
        return false;
    try {
        search::fill(queryControl(), criteria);
    } catch (const Error& error) {
        tell(error.description(), tr("Search"));
        return false;
    }
    return search();
}

bool ViewerWindow::openCurrentDocument() {
    if (!m_resolver)
        return false;
    const DocumentResolver::Location location = m_resolver->locate(m_currentItem);
    if (!location.found()) {
        tell(location.problem, tr("Open document"));
        return false;
    }
    if (!ui().shellExecute(QStringLiteral("open"), location.path)) {
        tell(tr("No program opens %1.").arg(QDir::toNativeSeparators(location.path)),
             tr("Open document"));
        return false;
    }
    showStatus(tr("Opened %1").arg(QDir::toNativeSeparators(location.path)));
    return true;
}

void ViewerWindow::setCurrentItem(qint32 itemid) {
    m_currentItem = itemid;
    const bool openable = m_resolver && m_resolver->hasFile(itemid);
    m_openDocument->setEnabled(openable);
    m_openButton->setEnabled(openable);
    if (itemid != 0 && !openable)
        showStatus(tr("Document %1 has no file in this export.").arg(itemid));
}

void ViewerWindow::openFile(const QString& sFile, const QString& sVolume) {
    if (!m_resolver)
        return;
    const DocumentResolver::Location location = m_resolver->locate(sFile, sVolume);
    if (!location.found())
        tell(location.problem, tr("Open document"));
    else if (!ui().shellExecute(QStringLiteral("open"), location.path))
        showStatus(tr("No program opens %1.").arg(QDir::toNativeSeparators(location.path)));
}

void ViewerWindow::answerLocate(qint32 itemId, const QString& file, const QString& volume) {
    // The hit list reads the answer as soon as this returns.
    QString path = QStringLiteral("ERROR");
    if (m_resolver && itemId != 0) {
        const DocumentResolver::Location location = file.trimmed().isEmpty()
                                                        ? m_resolver->locate(itemId)
                                                        : m_resolver->locate(file, volume);
        if (location.found())
            path = QDir::toNativeSeparators(location.path);
        else
            showStatus(location.problem);
    }
    try {
        writeMember(hitListControl(), "DocumentToMove", path);
    } catch (const Error& error) {
        showStatus(error.description());
    }
}

void ViewerWindow::showStatus(const QString& text) {
    statusBar()->showMessage(text, 10000);
}

void ViewerWindow::tell(const QString& text, const QString& title) {
    ui().messageBox(text, MessageStyle::OkOnly | MessageStyle::Exclamation, title);
}

} // namespace vx::viewer
