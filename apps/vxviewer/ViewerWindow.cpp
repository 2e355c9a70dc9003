#include "ViewerWindow.h"

#include "DocumentResolver.h"
#include "HitSearch.h"
#include "ViewerSession.h"
#include "data/Error.h"
#include "server/ControlFactory.h"
#include "server/LateBinding.h"
#include "session/UiServices.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QMetaMethod>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QStatusBar>
#include <QVBoxLayout>

namespace vx::viewer {

namespace {

const char* const HitListEvents[] = {"CurrentItemID", "LocateDocument", "SaveQuery",
                                     "LocateDocumentFromID", "LocateDocumentToMove"};

QMetaMethod findByName(const QMetaObject* meta, const QByteArray& name,
                       QMetaMethod::MethodType type) {
    for (int i = 0; i < meta->methodCount(); ++i) {
        const QMetaMethod method = meta->method(i);
        if (method.methodType() == type && method.name() == name)
            return method;
    }
    return {};
}

// Methods taking strings by reference, as VXFavourites and VXQuery declare them.
bool callWithTexts(QObject* control, const char* method, QString first, QString second) {
    bool result = false;
    if (!QMetaObject::invokeMethod(control, method, Qt::DirectConnection,
                                   Q_RETURN_ARG(bool, result), Q_ARG(QString&, first),
                                   Q_ARG(QString&, second)))
        throw Error(ErrorNumber::NotSupported,
                    QStringLiteral("Object doesn't support this property or method: %1")
                        .arg(QString::fromLatin1(method)));
    return result;
}

bool callWithText(QObject* control, const char* method, QString text) {
    bool result = false;
    if (!QMetaObject::invokeMethod(control, method, Qt::DirectConnection,
                                   Q_RETURN_ARG(bool, result), Q_ARG(QString&, text)))
        throw Error(ErrorNumber::NotSupported,
                    QStringLiteral("Object doesn't support this property or method: %1")
                        .arg(QString::fromLatin1(method)));
    return result;
}

constexpr QSize QueryFormMinimumSize(560, 420);

} // namespace

ViewerWindow::ViewerWindow(const QString& stateRoot, QWidget* parent)
    : QMainWindow(parent)
    , m_stateRoot(stateRoot) {
    setObjectName(QStringLiteral("viewerWindow"));
    setWindowTitle(tr("VXUILib Viewer"));
    m_query = ControlFactory::create(QStringLiteral("VXUILib.VXQuery"), this);
    m_query->setObjectName(QStringLiteral("VXQuery1"));
    m_favourites = ControlFactory::create(QStringLiteral("VXUILib.VXFavourites"), this);
    m_favourites->setObjectName(QStringLiteral("VXFavourites1"));
    m_hitList = ControlFactory::create(QStringLiteral("VXUILib.VXHitList"), this);
    m_hitList->setObjectName(QStringLiteral("VXHitList1"));

    m_searchButton = new QPushButton(tr("&Search"), this);
    m_searchButton->setObjectName(QStringLiteral("search"));
    m_searchButton->setDefault(true);
    m_clearButton = new QPushButton(tr("C&lear"), this);
    m_clearButton->setObjectName(QStringLiteral("clearCriteria"));
    m_openButton = new QPushButton(tr("&Open document"), this);
    m_openButton->setObjectName(QStringLiteral("openDocument"));

    auto* side = new QVBoxLayout;
    side->addWidget(new QLabel(tr("Favourites"), this));
    side->addWidget(m_favourites, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_clearButton);
    buttons->addWidget(m_searchButton);
    side->addLayout(buttons);
    side->addWidget(m_openButton);

    m_query->setMinimumSize(QueryFormMinimumSize);
    auto* queryArea = new QScrollArea(this);
    queryArea->setObjectName(QStringLiteral("queryArea"));
    queryArea->setWidgetResizable(true);
    queryArea->setFrameShape(QFrame::NoFrame);
    queryArea->setWidget(m_query);

    auto* top = new QWidget(this);
    auto* topLayout = new QHBoxLayout(top);
    topLayout->setContentsMargins(0, 0, 0, 0);
    topLayout->addWidget(queryArea, 3);
    topLayout->addLayout(side, 1);

    auto* splitter = new QSplitter(Qt::Vertical, this);
    splitter->setObjectName(QStringLiteral("viewerSplitter"));
    splitter->addWidget(top);
    splitter->addWidget(m_hitList);
    splitter->setStretchFactor(0, 2);
    splitter->setStretchFactor(1, 3);
    splitter->setSizes({480, 420});
    splitter->setChildrenCollapsible(false);
    setCentralWidget(splitter);

    m_volumeLabel = new QLabel(this);
    m_volumeLabel->setObjectName(QStringLiteral("volumeLabel"));
    statusBar()->addPermanentWidget(m_volumeLabel);
    buildMenus();
    connectEvents();
    connect(m_searchButton, &QPushButton::clicked, this, [this] { search(); });
    connect(m_clearButton, &QPushButton::clicked, this, [this] {
        try {
            callMember(m_query, "Refresh");
        } catch (const Error& error) {
            showStatus(error.description());
        }
    });
    connect(m_openButton, &QPushButton::clicked, this, [this] { openCurrentDocument(); });
    m_openDocument->setEnabled(false);
    m_openButton->setEnabled(false);
    m_searchButton->setEnabled(false);
    resize(1280, 960);
}

ViewerWindow::~ViewerWindow() {
    closeExport();
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
    for (const char* name : HitListEvents) {
        const QMetaMethod signal =
            findByName(m_hitList->metaObject(), QByteArray(name), QMetaMethod::Signal);
        const QMetaMethod slot = findByName(metaObject(), QByteArray(name), QMetaMethod::Slot);
        if (!signal.isValid() || !slot.isValid() ||
            !connect(m_hitList, signal, this, slot, Qt::DirectConnection))
            showStatus(tr("The hit list's event %1 is not connected.").arg(QLatin1String(name)));
    }
    connect(m_favourites, SIGNAL(SelectedItem(QString&, QString&)), this,
            SLOT(runFavourite(QString&, QString&)));
    connect(m_query, SIGNAL(PerformQuery()), this, SLOT(performQuery()));
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
    try {
        writeMember(m_hitList, "GroupName", s.groupName());
        writeMember(m_hitList, "GroupID", s.groupId());
        writeMember(m_hitList, "UserName", QStringLiteral("viewer"));
        writeMember(m_hitList, "UserPermission", ReadOnlyPermission);
        writeMember(m_hitList, "GroupInitString", s.recordFormPath());
        writeMember(m_hitList, "Init", s.initFilePath());

        writeMember(m_query, "GroupName", s.groupName());
        writeMember(m_query, "CurrentLibrary", QStringLiteral("Viewer"));
        writeMember(m_query, "MethodInitString", s.initFilePath());
        callWithText(m_query, "Init", s.queryFormPath());
        writeMember(m_query, "UserID", -1);
        callWithText(m_favourites, "Init", s.groupName());
    } catch (const Error& error) {
        tell(error.description(), tr("Open export"));
    }
    const ExportVolume& volume = s.volume();
    QStringList others = volume.neighbours.keys();
    m_volumeLabel->setText(
        others.isEmpty()
            ? tr("Volume %1").arg(volume.name)
            : tr("Volume %1 (also here: %2)").arg(volume.name, others.join(QStringLiteral(", "))));
    setWindowTitle(tr("%1 - VXUILib Viewer").arg(QDir::toNativeSeparators(volume.folder)));
    m_searchButton->setEnabled(true);
    showStatus(tr("Opened the export of %1 on volume %2").arg(s.groupName(), volume.name));
    return true;
}

void ViewerWindow::closeExport() {
    if (!m_session)
        return;
    // Done saves the favourites into the export's own settings, then the store moves back.
    for (QWidget* control : {m_favourites, m_hitList}) {
        try {
            callMember(control, "Done");
        } catch (const Error&) {
        }
    }
    try {
        callMember(m_hitList, "CloseList");
    } catch (const Error&) {
    }
    m_resolver.reset();
    m_session.reset();
    m_currentItem = 0;
    m_openDocument->setEnabled(false);
    m_openButton->setEnabled(false);
    m_searchButton->setEnabled(false);
}

bool ViewerWindow::search() {
    if (!m_session)
        return false;
    QString query;
    try {
        query = search::queryText(m_query, *m_session);
    } catch (const Error& error) {
        tell(error.description(), tr("Search"));
        return false;
    }
    if (query.trimmed().isEmpty()) {
        showStatus(tr("Fill in at least one search field or pick a keyword."));
        return false;
    }
    runQuery(query);
    return true;
}

bool ViewerWindow::search(const SearchCriteria& criteria) {
    if (!m_session)
        return false;
    try {
        search::fill(m_query, criteria);
    } catch (const Error& error) {
        tell(error.description(), tr("Search"));
        return false;
    }
    return search();
}

void ViewerWindow::runQuery(const QString& query) {
    try {
        writeMember(m_hitList, "DoQuery", query);
    } catch (const Error& error) {
        showStatus(error.description());
    }
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

void ViewerWindow::CurrentItemID(qint32& itemid) {
    m_currentItem = itemid;
    const bool openable = m_resolver && m_resolver->hasFile(itemid);
    m_openDocument->setEnabled(openable);
    m_openButton->setEnabled(openable);
    if (itemid != 0 && !openable)
        showStatus(tr("Document %1 has no file in this export.").arg(itemid));
}

void ViewerWindow::LocateDocument(QString& sFile, QString& sVolume) {
    if (!m_resolver)
        return;
    const DocumentResolver::Location location = m_resolver->locate(sFile, sVolume);
    if (!location.found())
        tell(location.problem, tr("Open document"));
    else if (!ui().shellExecute(QStringLiteral("open"), location.path))
        showStatus(tr("No program opens %1.").arg(QDir::toNativeSeparators(location.path)));
}

void ViewerWindow::SaveQuery(QString& sName, QString& sQueryString) {
    try {
        if (callWithTexts(m_favourites, "AddItem", sName, sQueryString))
            showStatus(tr("Saved \"%1\" to the favourites of this export.").arg(sName));
    } catch (const Error& error) {
        showStatus(error.description());
    }
}

void ViewerWindow::LocateDocumentFromID(qint32& itemid, QString& sFile, QString& sVolume) {
    answerLocate(itemid, sFile, sVolume);
}

void ViewerWindow::LocateDocumentToMove(qint32& itemid, QString& sFile, QString& sVolume) {
    answerLocate(itemid, sFile, sVolume);
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
        writeMember(m_hitList, "DocumentToMove", path);
    } catch (const Error& error) {
        showStatus(error.description());
    }
}

void ViewerWindow::runFavourite(QString& sName, QString& sString) {
    showStatus(tr("Running the favourite \"%1\".").arg(sName));
    runQuery(sString);
}

void ViewerWindow::performQuery() {
    search();
}

void ViewerWindow::showStatus(const QString& text) {
    statusBar()->showMessage(text, 10000);
}

void ViewerWindow::tell(const QString& text, const QString& title) {
    ui().messageBox(text, MessageStyle::OkOnly | MessageStyle::Exclamation, title);
}

} // namespace vx::viewer
