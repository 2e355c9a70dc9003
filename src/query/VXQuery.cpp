#include "query/VXQuery.h"

#include "data/Error.h"
#include "query/QueryComposer.h"
#include "query/QueryHandOver.h"
#include "server/ControlFactory.h"
#include "server/LateBinding.h"
#include "session/FormDefinition.h"
#include "session/HandOverFile.h"
#include "session/KeyedTabStrip.h"
#include "session/LibraryState.h"
#include "session/SystemFolder.h"
#include "session/UiServices.h"
#include "session/companions/CompanionRegistry.h"
#include "session/companions/VXDynaForm.h"
#include "session/companions/VXSQLQuery.h"

#include <QPointer>

namespace vx {

namespace {

const QString GroupTab = QStringLiteral("Group");
const QString KeywordsTab = QStringLiteral("Keywords");

void showError(const QString& description, const QString& title) {
    ui().messageBox(description, MessageStyle::OkOnly | MessageStyle::Critical, title);
}

} // namespace

struct VXQuery::Private {
    QString groupName;
    QString currentLibrary;
    QString methodInitString;
    qint16 userId = 0;
    bool initialised = false;
    // Held until the next search replaces it, as hosts may keep asking it.
    std::unique_ptr<VXSQLQuery> queryParser;

    KeyedTabStrip* tabStrip = nullptr; // children, owned by Qt
    QPointer<VXDynaForm> form;
    QPointer<QWidget> keywords;

    VXDynaForm& requireForm() const {
        if (!form)
            throw Error(ErrorNumber::ObjectClosed,
                        QStringLiteral("The query form is not available."));
        return *form;
    }
    QWidget* requireKeywords() const {
        if (!keywords)
            throw Error(ErrorNumber::ObjectClosed,
                        QStringLiteral("The keyword picker is not available."));
        return keywords;
    }

    QStringList pickedKeywords() const {
        QWidget* picker = requireKeywords();
        QStringList picked;
        callMember(picker, "MoveFirst");
        while (!readMember(picker, "EOF").toBool()) {
            picked << readMember(picker, "CurrentListValue").toString();
            callMember(picker, "MoveNext");
        }
        return picked;
    }
};

VXQuery::VXQuery(QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<Private>()) {
    setFocusPolicy(Qt::TabFocus);
    d->tabStrip = new KeyedTabStrip(this);
    d->tabStrip->setObjectName(QStringLiteral("TabStrip1"));
    d->tabStrip->addTab(GroupTab, QString());
    d->tabStrip->addTab(KeywordsTab, QStringLiteral("Keywords"));
    connect(d->tabStrip, &KeyedTabStrip::clicked, this, &VXQuery::switchTab);

    try {
        d->form = createDynaForm(this);
        connect(d->form, &VXDynaForm::KeyDown, this,
                [this](short& keyCode, short& shift) { emit KeyDown(keyCode, shift); });
        d->keywords = ControlFactory::create(QStringLiteral("VXUILib.VXKeywords"), this);
        d->keywords->setObjectName(QStringLiteral("kss1"));
        d->keywords->raise();
        d->keywords->hide();
    } catch (const Error& error) {
        showError(error.description(), QStringLiteral("UserControl_Initialize"));
    } catch (const std::exception& error) {
        showError(QString::fromLocal8Bit(error.what()), QStringLiteral("UserControl_Initialize"));
    }
    layOut();
}

VXQuery::~VXQuery() = default;

void VXQuery::Refresh() {
    d->requireForm().ClearForm();
    callMember(d->requireKeywords(), "ClearContents");
}

void VXQuery::setGroupName(const QString& name) {
    d->tabStrip->setCaption(GroupTab, name);
    d->groupName = name;
}

QString VXQuery::queryString() {
    const QString clause = query::keywordClause(d->pickedKeywords());
    const QString query = query::composeQuery(d->requireForm().QueryText(), clause);
    if (query.isEmpty() || !library().securityTablePresent)
        return query;
    d->queryParser = createCompanion<VXSQLQuery>(CompanionClass::SqlQuery);
    return d->queryParser->QueryStringWithSecurity(query, d->userId);
}

void VXQuery::setUserID(short userId) {
    d->userId = userId;
}

Recordset VXQuery::queryResult() {
    return d->requireForm().QueryRecordset();
}

void VXQuery::setMethodInitString(const QString& initFilePath) {
    d->methodInitString = initFilePath;
}

bool VXQuery::Init(QString& sInit) {
    library().formDefinitionPath = sInit;
    clearFormDefinitionCache();
    d->userId = -1;
    const bool loaded = d->requireForm().LoadForm(sInit);
    QWidget* picker = d->requireKeywords();
    writeMember(picker, "Init", d->methodInitString);
    picker->hide();
    d->initialised = true;
    return loaded;
}

void VXQuery::setCurrentLibrary(const QString& library) {
    d->currentLibrary = library;
}

void VXQuery::setCurrentGroup(const QString& name) {
    d->groupName = name;
    if (d->tabStrip->caption(GroupTab).isEmpty())
        d->tabStrip->setCaption(GroupTab, name);
}

void VXQuery::RefreshFormContent() {
    if (!d->initialised)
        return;
    const QString path = handOverFilePath(QStringLiteral("~znfind"));
    HandOverFile file(path, d->currentLibrary + QLatin1Char('-') + d->groupName);
    if (!file.exists() || d->groupName.isEmpty())
        return;

    // The file is a one-shot hand-over: it goes whether or not every value fitted.
    try {
        query::applyQueryHandOver(d->requireForm(), file);
    } catch (const Error& error) {
        showError(error.description(), QStringLiteral("RefreshFormContent"));
        file.remove();
        return;
    } catch (const std::exception& error) {
        showError(QString::fromLocal8Bit(error.what()), QStringLiteral("RefreshFormContent"));
        file.remove();
        return;
    }
    file.remove();
    emit PerformQuery();
}

void VXQuery::switchTab() {
    const QString key = d->tabStrip->selectedKey();
    QWidget* shown = nullptr;
    QWidget* hidden = nullptr;
    if (key == GroupTab) {
        shown = d->form;
        hidden = d->keywords;
    } else if (key == KeywordsTab) {
        shown = d->keywords;
        hidden = d->form;
    }
    if (shown)
        shown->show();
    // Focus moves before the other page hides: hiding the focused page would pass the focus to
    // this control, whose focus handling goes back to the form.
    const bool formVisible = d->form && hidden != d->form && !d->form->isHidden();
    if (formVisible)
        d->form->setFocus();
    else if (d->keywords)
        d->keywords->setFocus();
    if (hidden)
        hidden->hide();
}

void VXQuery::layOut() {
    d->tabStrip->setGeometry(rect());
    const QRect client = d->tabStrip->clientArea();
    if (d->form)
        d->form->setGeometry(client);
    if (d->keywords)
        d->keywords->setGeometry(client);
}

void VXQuery::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layOut();
}

void VXQuery::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    switchTab();
}

void VXQuery::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    if (!d->form)
        return;
    // Back on the form's tab, so the picker does not stay on top of the form.
    d->tabStrip->select(GroupTab);
    switchTab();
}

} // namespace vx
