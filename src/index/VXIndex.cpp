#include "index/VXIndex.h"

#include "data/Error.h"
#include "data/Recordset.h"
#include "index/ApiCommit.h"
#include "index/DirectCommit.h"
#include "index/HintListEditor.h"
#include "index/IndexHandOver.h"
#include "index/IndexSession.h"
#include "server/ControlFactory.h"
#include "server/LateBinding.h"
#include "session/FormDefinition.h"
#include "session/GroupConnection.h"
#include "session/LibraryState.h"
#include "session/Schema.h"
#include "session/UiServices.h"
#include "session/companions/CompanionRegistry.h"
#include "session/companions/KeyCodes.h"
#include "session/companions/VXDynaForm.h"

#include <QFrame>
#include <QKeyEvent>
#include <QPointer>
#include <QTabBar>

namespace vx {

namespace {

namespace TabKey {
const QString Group = QStringLiteral("Group");
const QString Keywords = QStringLiteral("Keywords");
const QString Dictionary = QStringLiteral("dictionary");
const QString Hints = QStringLiteral("Hints");
} // namespace TabKey

constexpr int PageMargin = 2;

QString describe(const std::exception& error) {
    if (const auto* vxError = dynamic_cast<const Error*>(&error))
        return vxError->description();
    return QString::fromLocal8Bit(error.what());
}

void showError(const std::exception& error, const QString& title) {
    ui().messageBox(describe(error), MessageStyle::OkOnly | MessageStyle::Critical, title);
}

} // namespace

struct VXIndex::Private {
    IndexIdentity identity;
    IndexSession session;
    QString formDefinitionPath;
    QTabBar* tabs = nullptr;
    QFrame* pageFrame = nullptr;
    QPointer<VXDynaForm> form;
    QPointer<QWidget> keywords;
    QPointer<QWidget> dictionary;
    HintListEditor* hints = nullptr;

    VXDynaForm& requireForm() const {
        if (!form)
            throw Error(CannotCreateObject, QStringLiteral("The index form is not available."));
        return *form;
    }
    QWidget* requireKeywords() const {
        if (!keywords)
            throw Error(CannotCreateObject, QStringLiteral("The keyword picker is not available."));
        return keywords;
    }
    IndexCommitContext commitContext(VXIndex* owner, const QString& groupTable) {
        return IndexCommitContext{session,           identity, requireForm(),
                                  requireKeywords(), owner,    groupTable};
    }
    void releaseSession() {
        hints->releaseHints();
        if (session.connection.isOpen())
            session.connection.close();
        session.connection = Connection();
    }
};

VXIndex::VXIndex(QWidget* parent)
    : QWidget(parent)
    , d(new Private) {
    setFocusPolicy(Qt::StrongFocus);
    d->pageFrame = new QFrame(this);
    d->pageFrame->setFrameShape(QFrame::StyledPanel);
    d->tabs = new QTabBar(this);
    d->tabs->setObjectName(QStringLiteral("TabStrip1"));
    d->tabs->setDrawBase(false);
    d->tabs->setExpanding(false);
    const std::pair<QString, QString> tabs[] = {
        {TabKey::Group, QStringLiteral("Group")},
        {TabKey::Keywords, QStringLiteral("Keywords")},
        {TabKey::Dictionary, QStringLiteral("Edit Dictionary")},
        {TabKey::Hints, QStringLiteral("Edit Hint Lists")}};
    for (const auto& [key, caption] : tabs) {
        const int index = d->tabs->addTab(caption);
        d->tabs->setTabData(index, key);
    }
    d->tabs->setTabToolTip(2, QStringLiteral("Modify the dictionary for the Keywords tab"));
    d->tabs->setTabToolTip(3, QStringLiteral("Modify entries in the hint lists"));

    // A missing companion or child class leaves its page empty instead of failing the host.
    try {
        d->form = createDynaForm(this);
    } catch (const std::exception& error) {
        showError(error, QStringLiteral("VXIndex"));
    }
    try {
        d->dictionary = ControlFactory::create(QStringLiteral("VXUILib.VXDictionary"), this);
        d->dictionary->setObjectName(QStringLiteral("dcs"));
        d->keywords = ControlFactory::create(QStringLiteral("VXUILib.VXKeywords"), this);
        d->keywords->setObjectName(QStringLiteral("kss2"));
        d->dictionary->raise();
        d->keywords->raise();
    } catch (const std::exception& error) {
        showError(error, QStringLiteral("VXIndex"));
    }
    d->hints = new HintListEditor(
        d->form, [this] { return groupTabCaption(); }, [this] { return d->session.connection; },
        this);

    connect(d->tabs, &QTabBar::currentChanged, this, [this](int) { showPageOfSelectedTab(); });
    resize(640, 420);
    layOutPages();
    showPageOfSelectedTab();
}

VXIndex::~VXIndex() {
    try {
        d->releaseSession();
    } catch (...) {
    }
}

// --- identity properties -------------------------------------------------------------------

QString VXIndex::init() const {
    return d->session.initPath;
}

void VXIndex::setInit(const QString& initFilePath) {
    QString status;
    try {
        d->session.connection = openGroupConnection(initFilePath);
        library().initFilePath = initFilePath;
        status = QStringLiteral("Connection Opened.");

        d->session.api = createCompanion<VXScanIndex>(CompanionClass::ScanIndex);
        d->session.apiList = createCompanion<VXItemList>(CompanionClass::ItemList);
        d->session.apiListKey = createCompanion<VXItemList>(CompanionClass::ItemList);
        status = QStringLiteral("VXIntegrate Created.");

        // Only a base table switches document security on, never a view of that name.
        library().securityTablePresent = false;
        Recordset tables = d->session.connection.openSchema(SchemaKind::Tables);
        for (; !tables.eof(); tables.moveNext()) {
            if (tables.value(QStringLiteral("TABLE_TYPE")).toString() == QLatin1String("TABLE") &&
                tables.value(QStringLiteral("TABLE_NAME")).toString() == table::Security)
                library().securityTablePresent = true;
        }
        tables.close();
        status = QStringLiteral("KTSecurity Checked.");

        if (library().securityTablePresent) {
            d->session.security = createCompanion<VXSecurity>(CompanionClass::Security);
            status = QStringLiteral("VXAdmin Created");
        }

        if (!d->dictionary || !d->keywords)
            throw Error(CannotCreateObject, QStringLiteral("The picker controls are missing."));
        writeMember(d->dictionary, "Init", initFilePath);
        writeMember(d->keywords, "Init", initFilePath);
        d->keywords->hide();

        d->session.initialised = true;
        d->identity.userIds = QVariantList{UnsetUserIdsMarker};
        d->session.initPath = initFilePath;
    } catch (const std::exception& error) {
        ui().messageBox(describe(error) + QLatin1Char('-') + status,
                        MessageStyle::OkOnly | MessageStyle::Critical, QStringLiteral("Init"));
    }
}

QString VXIndex::groupInitString() const {
    return d->formDefinitionPath;
}

void VXIndex::setGroupInitString(const QString& formDefinitionPath) {
    try {
        d->formDefinitionPath = formDefinitionPath;
        library().formDefinitionPath = formDefinitionPath;
        clearFormDefinitionCache();
        QString path = formDefinitionPath;
        d->requireForm().LoadForm(path);
        d->hints->loadFields(d->identity.userPermission);
        layOutPages();
    } catch (const std::exception& error) {
        showError(error, QStringLiteral("GroupInitString"));
    }
}

QString VXIndex::groupName() const {
    return d->identity.groupName;
}

void VXIndex::setGroupName(const QString& name) {
    d->identity.groupName = name;
    d->tabs->setTabText(0, name);
    layOutPages();
}

qint32 VXIndex::groupId() const {
    return d->identity.groupId;
}
void VXIndex::setGroupId(qint32 id) {
    d->identity.groupId = id;
}
QString VXIndex::userName() const {
    return d->identity.userName;
}
void VXIndex::setUserName(const QString& name) {
    d->identity.userName = name;
}
qint32 VXIndex::curItemId() const {
    return d->identity.curItemId;
}
void VXIndex::setCurItemId(qint32 id) {
    d->identity.curItemId = id;
}
qint32 VXIndex::curFileType() const {
    return d->identity.curFileType;
}
void VXIndex::setCurFileType(qint32 type) {
    d->identity.curFileType = type;
}
qint32 VXIndex::userPermission() const {
    return d->identity.userPermission;
}
void VXIndex::setUserPermission(qint32 permission) {
    d->identity.userPermission = permission;
}
QString VXIndex::currentLibrary() const {
    return d->identity.currentLibrary;
}
void VXIndex::setCurrentLibrary(const QString& library) {
    d->identity.currentLibrary = library;
}
QString VXIndex::documentPath() const {
    return d->identity.documentPath;
}
void VXIndex::setDocumentPath(const QString& path) {
    d->identity.documentPath = path;
}
QString VXIndex::getItemId() const {
    return d->identity.getItemId;
}
QVariantList VXIndex::userIds() const {
    return d->identity.userIds;
}
void VXIndex::setUserIds(const QVariantList& ids) {
    d->identity.userIds = ids;
}
bool VXIndex::remoteIndex() const {
    return d->identity.remoteIndex;
}
void VXIndex::setRemoteIndex(bool remote) {
    d->identity.remoteIndex = remote;
}

bool VXIndex::isInitialised() const {
    return d->session.initialised;
}

// --- methods ---------------------------------------------------------------------------------

bool VXIndex::UpdateRecordAPI() {
    try {
        ApiCommit commit(d->commitContext(this, groupTabCaption()));
        const bool filed = commit.run();
        if (commit.finished())
            selectGroupTab();
        return filed;
    } catch (const std::exception& error) {
        ui().messageBox(QStringLiteral("Error: ") + describe(error) + QLatin1Char('\r'),
                        MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("UpdateRecordAPI"));
    }
    return false;
}

qint32 VXIndex::GetUserId(QString& strUserName) {
    return DirectCommit::userId(d->session.connection, strUserName);
}

bool VXIndex::UpdateRecord() {
    try {
        DirectCommit commit(d->commitContext(this, groupTabCaption()));
        if (!commit.run())
            return false;
        selectGroupTab();
        return true;
    } catch (const std::exception& error) {
        showError(error, QStringLiteral("UpdateRecord"));
    }
    return false;
}

void VXIndex::RefreshFormContent() {
    if (!d->session.initialised || !d->form)
        return;
    IndexHandOver(d->identity.currentLibrary, d->identity.groupName).apply(*d->form);
}

void VXIndex::Refresh() {
    try {
        d->requireForm().ClearForm();
        QWidget* keywords = d->requireKeywords();
        callMember(keywords, "Done");
        writeMember(keywords, "Init", library().initFilePath);
        callMember(keywords, "ClearContents");
    } catch (const std::exception& error) {
        showError(error, QStringLiteral("Refresh"));
    }
}

void VXIndex::Done() {
    // Tear-down goes on past any failure: each step stands alone.
    try {
        d->releaseSession();
    } catch (...) {
    }
    d->session.initialised = false;
    if (library().securityTablePresent)
        d->session.security.reset();
    d->session.apiList.reset();
    d->session.apiListKey.reset();
}

// --- pages, layout, focus and keys -----------------------------------------------------------

QString VXIndex::groupTabCaption() const {
    return d->tabs->tabText(0);
}

void VXIndex::selectGroupTab() {
    d->tabs->setCurrentIndex(0);
    showPageOfSelectedTab();
}

void VXIndex::showPageOfSelectedTab() {
    try {
        const QString key = d->tabs->tabData(d->tabs->currentIndex()).toString();
        QWidget* const pages[] = {d->form, d->keywords, d->dictionary, d->hints};
        const QString keys[] = {TabKey::Group, TabKey::Keywords, TabKey::Dictionary, TabKey::Hints};
        int shown = -1;
        for (int i = 0; i < 4; ++i) {
            if (keys[i] == key)
                shown = i;
        }
        if (shown < 0)
            return;
        for (int i = 0; i < 4; ++i) {
            if (pages[i])
                pages[i]->setVisible(i == shown);
        }
    } catch (const std::exception& error) {
        showError(error, QStringLiteral("TabStrip1_Click"));
    }
}

void VXIndex::layOutPages() {
    const int barHeight = d->tabs->sizeHint().height();
    d->tabs->setGeometry(0, 0, width(), barHeight);
    const QRect client(PageMargin, barHeight + PageMargin, qMax(0, width() - 2 * PageMargin),
                       qMax(0, height() - barHeight - 2 * PageMargin));
    d->pageFrame->setGeometry(0, barHeight - 1, width(), qMax(0, height() - barHeight + 1));
    QWidget* const pages[] = {d->form, d->keywords, d->dictionary, d->hints};
    for (QWidget* page : pages) {
        if (page)
            page->setGeometry(client);
    }
}

void VXIndex::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layOutPages();
}

void VXIndex::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    showPageOfSelectedTab();
}

void VXIndex::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    if (d->form && d->form->isVisible())
        d->form->setFocus();
    if (d->hints->isVisible())
        d->hints->setFocus();
}

void VXIndex::keyPressEvent(QKeyEvent* event) {
    short keyCode = platformKeyCode(*event);
    short shift = platformShiftState(*event);
    emit KeyDown(keyCode, shift);
    QWidget::keyPressEvent(event);
}

} // namespace vx
