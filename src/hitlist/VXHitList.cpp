#include "hitlist/VXHitList.h"

#include "data/Error.h"
#include "hitlist/FindReplacePanel.h"
#include "hitlist/HitListCommands.h"
#include "hitlist/HitListLoader.h"
#include "hitlist/HitListSession.h"
#include "hitlist/HitListToolbar.h"
#include "hitlist/RecordForm.h"
#include "hitlist/ResultsGrid.h"
#include "operations/DocumentOperations.h"
#include "portable/PortableExport.h"
#include "server/ControlFactory.h"
#include "server/LateBinding.h"
#include "session/FormDefinition.h"
#include "session/GroupConnection.h"
#include "session/KeyedTabStrip.h"
#include "session/LibraryState.h"
#include "session/Settings.h"
#include "session/UiServices.h"
#include "session/companions/CompanionRegistry.h"
#include "session/companions/VXDynaForm.h"

#include <QAction>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <QMenu>
#include <functional>

namespace vx {

namespace {

const QString GroupTab = QStringLiteral("Group");
const QString SecurityTab = QStringLiteral("Document Security");
const QString ItemIdField = QStringLiteral("itemid");

Q_LOGGING_CATEGORY(lcHitList, "vx.hitlist", QtWarningMsg)

void showMessage(const QString& text, int style, const QString& title) {
    ui().messageBox(text, style, title);
}

// Runs a public operation, showing any failure instead of letting it reach the host.
template <typename Result>
Result guarded(const QString& title, Result neutral, const std::function<Result()>& operation,
               int style = MessageStyle::OkOnly | MessageStyle::Critical) {
    try {
        return operation();
    } catch (const Error& error) {
        showMessage(error.description(), style, title);
    } catch (const std::exception& error) {
        showMessage(QString::fromLocal8Bit(error.what()), style, title);
    }
    return neutral;
}

// The same for steps whose errors are ignored.
void quietly(const std::function<void()>& step) {
    try {
        step();
    } catch (const Error&) {
    } catch (const std::exception&) {
    }
}

} // namespace

struct VXHitList::Private {
    HitListParts parts;
    HitListSession session{parts};
    std::unique_ptr<HitListCommands> commands;
    std::unique_ptr<HitListLoader> loader;
};

VXHitList::VXHitList(QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<Private>()) {
    // Focus given to the control goes on to the grid; Tab itself stops at the parts (toolbar
    // buttons, then the grid), so the control is not a stop that sends Tab back to the grid.
    setFocusPolicy(Qt::ClickFocus);
    HitListParts& parts = d->parts;
    parts.control = this;
    d->commands = std::make_unique<HitListCommands>(d->session, nullptr);
    parts.commands = d->commands.get();
    d->loader = std::make_unique<HitListLoader>(this, [](const QString& description) {
        showMessage(description,
                    MessageStyle::OkOnly | MessageStyle::Information | MessageStyle::Foreground,
                    QStringLiteral("Results"));
    });
    parts.loader = d->loader.get();

    parts.toolbar = new HitListToolbar(this);
    parts.oldGrid = new QTableView(this);
    parts.oldGrid->setObjectName(QStringLiteral("HitList_old"));
    parts.oldGrid->hide();
    parts.grid = new ResultsGrid(this);
    parts.tabStrip = new KeyedTabStrip(this);
    parts.tabStrip->setObjectName(QStringLiteral("TabStrip1"));
    parts.tabStrip->addTab(GroupTab, GroupTab);
    parts.tabStrip->addTab(QStringLiteral("Keywords"), QStringLiteral("Keywords"));
    parts.tabStrip->hide();
    parts.findReplace = new FindReplacePanel(d->session, this);
    parts.findReplace->setObjectName(QStringLiteral("PicFindReplace"));
    parts.findReplace->hide();

    parts.optionMenu = new QMenu(QStringLiteral("Option"), this);
    parts.optionMenu->setObjectName(QStringLiteral("mnuOption"));
    const QStringList items = {QStringLiteral("Sort Ascending"), QStringLiteral("Sort Descending"),
                               QStringLiteral("Find Replace")};
    for (int index = 0; index < items.size(); ++index) {
        QAction* item = parts.optionMenu->addAction(items[index]);
        item->setObjectName(QStringLiteral("mnuOptionVal"));
        item->setData(index);
        connect(item, &QAction::triggered, this, [this, index] {
            if (index == 0)
                d->commands->sortByColumn(QStringLiteral("ASC"));
            else if (index == 1)
                d->commands->sortByColumn(QStringLiteral("DESC"));
            else
                d->parts.findReplace->openForClickedColumn();
        });
    }

    try {
        parts.form = createDynaForm(this);
        parts.form->hide();
        connect(parts.form, &VXDynaForm::KeyDown, this,
                [this](short& keyCode, short& shift) { d->commands->formKeyDown(keyCode, shift); });
        parts.keywords = ControlFactory::create(QStringLiteral("VXUILib.VXKeywords"), this);
        parts.keywords->setObjectName(QStringLiteral("kss3"));
        parts.keywords->hide();
        parts.users = ControlFactory::create(QStringLiteral("VXUILib.VXDocSec"), this);
        parts.users->setObjectName(QStringLiteral("dcs"));
        parts.users->hide();
    } catch (const Error& error) {
        showMessage(error.description(), MessageStyle::OkOnly | MessageStyle::Critical,
                    QStringLiteral("UserControl_Initialize"));
    }
    parts.recordForm = std::make_unique<RecordForm>(d->session, parts.keywords, parts.users);

    connect(parts.toolbar, &HitListToolbar::buttonClick, this,
            [this](const QString& key) { d->commands->buttonClick(key); });
    connect(parts.grid, &ResultsGrid::rowColChange, this, [this] { d->session.rowColChange(); });
    connect(parts.grid, &ResultsGrid::headClick, this,
            [this](int column) { d->commands->headClick(column); });
    connect(parts.grid, &ResultsGrid::columnMenuRequested, this,
            [this](int column, const QPoint& at) { d->commands->headClick(column, at); });
    connect(parts.grid, &ResultsGrid::dblClick, this, [this] { d->commands->dblClick(); });
    connect(parts.tabStrip, &KeyedTabStrip::clicked, this, [this] { d->commands->switchTab(); });
    watchKeys(this);
    layoutControl();
}

VXHitList::~VXHitList() {
    // The reading thread ends before the parts it feeds.
    d->loader->cancel();
}

void VXHitList::setGroupName(const QString& name) {
    d->session.groupName = name;
    if (!name.isEmpty()) {
        d->parts.tabStrip->setCaption(GroupTab, name);
        return;
    }
    d->parts.tabStrip->hide();
    if (d->parts.form)
        d->parts.form->hide();
}

void VXHitList::setGroupID(qint32 groupId) {
    d->session.groupIdValue = groupId;
}

void VXHitList::setUserName(const QString& name) {
    d->session.userNameValue = name;
}

void VXHitList::setGroupInitString(const QString& path) {
    guarded<bool>(
        QStringLiteral("ZNHitlist.GroupInitString"), false,
        [&] {
            library().formDefinitionPath = path;
            clearFormDefinitionCache();
            if (!d->parts.form)
                throw Error(ErrorNumber::ObjectClosed,
                            QStringLiteral("The record form is missing."));
            d->parts.form->hide();
            QString formPath = path;
            const bool loaded = d->parts.form->LoadForm(formPath);
            watchKeys(d->parts.form);
            return loaded;
        },
        MessageStyle::OkOnly);
}

void VXHitList::setInit(const QString& initFilePath) {
    const bool started = guarded<bool>(QStringLiteral("Initilizing Hitlist"), false, [&] {
        HitListSession& session = d->session;
        Connection connection = openGroupConnection(initFilePath);
        if (session.session.isOpen() && session.sessionOpen)
            quietly([&] { session.session.close(); });
        session.session = connection;
        if (d->parts.keywords)
            writeMember(d->parts.keywords, "Init", initFilePath);
        session.initFile = initFilePath;
        d->parts.toolbar->button(QStringLiteral("Save"))->setVisible(false);
        session.sessionOpen = true;
        if (library().securityTablePresent) {
            if (d->parts.tabStrip->count() != 3)
                d->parts.tabStrip->addTab(SecurityTab, SecurityTab);
            d->parts.recordForm->openSecurityManager();
            if (d->parts.users)
                writeMember(d->parts.users, "Init", initFilePath);
        }
        library().revisionTablePresent = false;
        Recordset tables = connection.openSchema(SchemaKind::Tables);
        for (; !tables.eof(); tables.moveNext()) {
            if (tables.value(QStringLiteral("TABLE_TYPE")).toString() == QLatin1String("TABLE") &&
                tables.value(QStringLiteral("TABLE_NAME")).toString() ==
                    QLatin1String("KTRevision")) {
                library().revisionTablePresent = true;
                d->parts.toolbar->button(QStringLiteral("Archive"))->setVisible(true);
            }
        }
        tables.close();
        layoutControl();
        return true;
    });
    d->session.openFailed = !started && !d->session.session.isOpen();
}

void VXHitList::setUserPermission(qint32 permission) {
    d->session.permission = permission;
    d->parts.toolbar->enableByPermission(permission);
}

void VXHitList::setDocumentToMove(const QString& path) {
    d->session.documentToMove = path;
}

void VXHitList::setServerName(const QString& name) {
    d->session.serverNameValue = name;
}

void VXHitList::setIsServer(bool isServer) {
    d->session.isServerValue = isServer;
}

qint32 VXHitList::currentItemId() const {
    return d->session.itemId;
}

QVariantList VXHitList::selectedItems() {
    QVariantList ids;
    quietly([&] {
        for (const qint32 id : d->session.selectedItems())
            ids << id;
    });
    return ids;
}

void VXHitList::setDatabaseName(const QString&) {}

void VXHitList::setRecordset(const vx::Recordset& recordset) {
    guarded<bool>(QStringLiteral("Recordset"), false, [&] {
        HitListSession& session = d->session;
        if (d->parts.toolbar->isPressed(QStringLiteral("Edit")))
            d->commands->pressAndRun(QStringLiteral("Edit"), false);
        session.cancelLoad();
        session.result = recordset;
        session.bindGrid(recordset, true);
        session.applyColumnLayout();
        d->parts.grid->viewport()->update();
        d->parts.grid->show();
        session.itemId = session.resultRowItemId();
        session.currentValid = true;
        d->parts.grid->setFocus();
        return true;
    });
}

void VXHitList::setDoQuery(const QString& query) {
    HitListSession& session = d->session;
    HitListParts& parts = d->parts;
    // Init has told why the repository cannot be used; a second message would only confuse.
    if (session.openFailed)
        return;
    guarded<bool>(
        QStringLiteral("Results"), false,
        [&] {
            if (parts.toolbar->isPressed(QStringLiteral("Archive")))
                d->commands->pressAndRun(QStringLiteral("Archive"), false);
            if (parts.toolbar->isPressed(QStringLiteral("Edit")))
                d->commands->pressAndRun(QStringLiteral("Edit"), false);
            QElapsedTimer took;
            took.start();
            session.query = query;
            session.itemId = 0;
            const QString section = session.settingsSection();
            // Both in one read of the store.
            const QHash<QString, QString> stored = getSectionSettings(section);
            const QString sortOrder =
                stored.value(QStringLiteral("vxsortorder"), QStringLiteral("ITEMID"));
            const QString sortBy = stored.value(QStringLiteral("vxsortby"), QStringLiteral("ASC"));

            // A load still running belongs to the last query.
            session.cancelLoad();
            // The first screen comes at once in the remembered order; the rest follows.
            Recordset result = d->loader->open(
                query, session.session, sortOrder,
                QLatin1Char('[') + sortOrder + QLatin1String("] ") + sortBy, firstScreenRows());
            qCDebug(lcHitList) << "DoQuery: first rows read after" << took.elapsed() << "ms";
            session.result = result;
            if (result.recordCount() == 0) {
                // The grid keeps the rows it showed.
                showMessage(QStringLiteral("No results found."),
                            MessageStyle::OkOnly | MessageStyle::Information,
                            QStringLiteral("Search result"));
            } else {
                result.moveFirst();
                session.bindGrid(result, true);
                session.applyColumnLayout();
                parts.grid->show();
                session.itemId = result.value(ItemIdField).toInt();
                session.currentValid = true;
                parts.grid->viewport()->update();
            }
            qCDebug(lcHitList) << "DoQuery: grid bound after" << took.elapsed() << "ms";
            session.updateForm();
            qCDebug(lcHitList) << "DoQuery: record form filled after" << took.elapsed() << "ms";
            session.raiseCurrentItemID();
            return true;
        },
        MessageStyle::OkOnly | MessageStyle::Information | MessageStyle::Foreground);
}

void VXHitList::Done() {
    HitListSession& session = d->session;
    d->loader->close();
    quietly([&] { session.session.close(); });
    session.session = Connection();
    session.sessionOpen = false;
    if (library().securityTablePresent)
        quietly([&] { d->parts.recordForm->releaseSecurityManager(); });
}

void VXHitList::CloseList() {
    HitListSession& session = d->session;
    HitListParts& parts = d->parts;
    session.cancelLoad();
    session.itemId = 0;
    session.currentValid = false;
    quietly([&] { session.bindGrid(Recordset(), false); });
    parts.grid->hide();
    parts.tabStrip->hide();
    parts.findReplace->hide();
    for (QWidget* page :
         {static_cast<QWidget*>(parts.form), parts.keywords.data(), parts.users.data()})
        if (page)
            page->hide();
    parts.grid->viewport()->update();
    session.result = Recordset();
}

void VXHitList::Refresh() {
    d->parts.grid->viewport()->update();
    for (QWidget* picker : {d->parts.keywords.data(), d->parts.users.data()})
        if (picker)
            quietly([&] { callMember(picker, "ClearContents"); });
}

void VXHitList::UpdateForm() {
    guarded<bool>(QStringLiteral("UpdateForm"), false, [&] {
        d->parts.recordForm->UpdateForm();
        return true;
    });
}

QString VXHitList::GetUserName(short& intUserId) {
    return guarded<QString>(QStringLiteral("GetUserName"), QString(),
                            [&] { return d->parts.recordForm->GetUserName(intUserId); });
}

void VXHitList::SaveData() {
    guarded<bool>(QStringLiteral("SaveData"), false, [&] {
        d->parts.recordForm->SaveData();
        return true;
    });
}

qint32 VXHitList::GetUserId(QString& strUserName) {
    return guarded<qint32>(QStringLiteral("GetUserId"), 0,
                           [&] { return d->parts.recordForm->GetUserId(strUserName); });
}

bool VXHitList::MarkForDeletion() {
    return guarded<bool>(QStringLiteral("MarkForDeletion"), false,
                         [&] { return markForDeletion(d->session); });
}

bool VXHitList::UpdateVolume() {
    return guarded<bool>(QStringLiteral("UpdateVolume"), false,
                         [&] { return updateVolume(d->session); });
}

bool VXHitList::MoveFilesAndUpdateVolume() {
    return guarded<bool>(QStringLiteral("MoveFilesAndUpdateVolume"), false,
                         [&] { return moveFilesAndUpdateVolume(d->session); });
}

bool VXHitList::CopyDocuments() {
    return guarded<bool>(QStringLiteral("CopyDocuments"), false,
                         [&] { return copyDocuments(d->session); });
}

bool VXHitList::ExportData() {
    return guarded<bool>(QStringLiteral("ExportData"), false,
                         [&] { return exportData(d->session); });
}

bool VXHitList::PrintData() {
    return guarded<bool>(QStringLiteral("PrintData"), false, [&] { return printData(d->session); });
}

bool VXHitList::PropertyDocuments() {
    return guarded<bool>(QStringLiteral("PropertyDocuments"), false,
                         [&] { return propertyDocuments(d->session); });
}

void VXHitList::ExportToVeltrane() {
    guarded<bool>(QStringLiteral("ExportToVeltrane"), false, [&] {
        exportToVeltrane(d->session);
        return true;
    });
}

qsizetype VXHitList::firstScreenRows() const {
    // More than the grid shows, so that paging down finds rows there too; a result of a few
    // hundred rows is read in about the time of one paint, so it comes whole.
    constexpr qsizetype atLeast = 500;
    const ResultsGrid* grid = d->parts.grid;
    const int rowHeight = qMax(1, grid->verticalHeader()->defaultSectionSize());
    return qMax(atLeast, qsizetype(4) * (grid->height() / rowHeight + 1));
}

void VXHitList::layoutControl() {
    HitListParts& parts = d->parts;
    const int width = this->width();
    const int height = this->height();
    const int toolbarHeight = parts.toolbar->sizeHint().height();
    parts.toolbar->setGeometry(0, 0, width, toolbarHeight);
    int gridTop = toolbarHeight;
    int gridHeight = height - toolbarHeight;
    if (!parts.findReplace->isHidden()) {
        // The panel sits a little in from the left edge, the grid below it.
        constexpr int PanelLeft = 10;
        const int panelHeight = parts.findReplace->sizeHint().height();
        parts.findReplace->setGeometry(PanelLeft, toolbarHeight, qMax(0, width - PanelLeft),
                                       panelHeight);
        gridTop = toolbarHeight + panelHeight;
        gridHeight = height - (panelHeight + toolbarHeight);
    }
    // A control smaller than its toolbar shows no grid rather than a negative one.
    const QRect gridArea(0, gridTop, width, qMax(0, gridHeight));
    parts.grid->setGeometry(gridArea);
    parts.oldGrid->setGeometry(gridArea);
    parts.tabStrip->setGeometry(gridArea);
    const QRect client = parts.tabStrip->clientArea();
    for (QWidget* page :
         {static_cast<QWidget*>(parts.form), parts.keywords.data(), parts.users.data()}) {
        if (!page)
            continue;
        page->setGeometry(client);
        page->raise();
    }
}

void VXHitList::watchKeys(QWidget* widget) {
    if (!widget)
        return;
    if (widget != this)
        widget->installEventFilter(this);
    for (QWidget* child : widget->findChildren<QWidget*>())
        child->installEventFilter(this);
}

bool VXHitList::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress && d->commands) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (watched == d->parts.grid && d->commands->gridKeyDown(key->key(), key->modifiers()))
            return true;
        if (d->commands->keyDown(key->key(), key->modifiers()))
            return true;
    }
    return QWidget::eventFilter(watched, event);
}

void VXHitList::keyPressEvent(QKeyEvent* event) {
    if (d->commands->keyDown(event->key(), event->modifiers()))
        return;
    QWidget::keyPressEvent(event);
}

void VXHitList::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (d->session.sessionOpen)
        layoutControl();
}

void VXHitList::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    if (d->parts.grid->isVisible())
        d->parts.grid->setFocus();
}

} // namespace vx
