#include "SpyCompanions.h"

#include "data/Error.h"

#include <QDate>
#include <QDateTime>

namespace vx::test {
namespace {

// How a value reads in the log: texts as they are, "Empty" when unset, dates in ISO form.
QString logText(const QVariant& value) {
    if (!value.isValid() || value.isNull())
        return QStringLiteral("Empty");
    switch (value.typeId()) {
    case QMetaType::QDate:
        return value.toDate().toString(Qt::ISODate);
    case QMetaType::QDateTime:
        return value.toDateTime().toString(Qt::ISODate);
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    default:
        return value.toString();
    }
}

} // namespace

void SpyState::record(const QString& member, const QString& details) {
    calls << member + details;
    const auto failure = answers.failures.constFind(member);
    if (failure != answers.failures.cend())
        throw Error(ErrorNumber::Unspecified, *failure, member);
}

namespace {

QString argumentsText(const QStringList& arguments) {
    return QLatin1Char('(') + arguments.join(QStringLiteral(", ")) + QLatin1Char(')');
}

QString listText(const std::shared_ptr<VXItemList>& list) {
    return list ? QStringLiteral("VXItemList") + argumentsText(list->items())
                : QStringLiteral("Nothing");
}

template <class Spy>
CompanionFactory spyFactory(const std::shared_ptr<SpyState>& state,
                            QList<QPointer<Spy>> SpyState::*instances) {
    return [state, instances]() -> std::unique_ptr<QObject> {
        auto spy = std::make_unique<Spy>(state);
        ((*state).*instances).append(spy.get());
        return spy;
    };
}

template <class Spy>
Spy* lastOf(const QList<QPointer<Spy>>& instances) {
    return instances.isEmpty() ? nullptr : instances.last().data();
}

} // namespace

// --- fixture ---

SpyCompanions::SpyCompanions(int kinds)
    : m_state(std::make_shared<SpyState>()) {
    if (kinds & DynaForm)
        m_overrides.push_back(std::make_unique<CompanionOverride>(
            CompanionClass::DynaForm, spyFactory(m_state, &SpyState::forms)));
    if (kinds & ScanIndex)
        m_overrides.push_back(std::make_unique<CompanionOverride>(
            CompanionClass::ScanIndex, spyFactory(m_state, &SpyState::scanIndexes)));
    if (kinds & ItemList)
        m_overrides.push_back(std::make_unique<CompanionOverride>(
            CompanionClass::ItemList, spyFactory(m_state, &SpyState::itemLists)));
    if (kinds & Security)
        m_overrides.push_back(std::make_unique<CompanionOverride>(
            CompanionClass::Security, spyFactory(m_state, &SpyState::securityManagers)));
    if (kinds & SqlQuery)
        m_overrides.push_back(std::make_unique<CompanionOverride>(
            CompanionClass::SqlQuery, spyFactory(m_state, &SpyState::sqlQueries)));
}

SpyCompanions::~SpyCompanions() {
    // Restore in reverse order of registration.
    while (!m_overrides.empty())
        m_overrides.pop_back();
}

SpyAnswers& SpyCompanions::answers() const {
    return m_state->answers;
}
const QStringList& SpyCompanions::calls() const {
    return m_state->calls;
}
void SpyCompanions::clearCalls() const {
    m_state->calls.clear();
}

QStringList SpyCompanions::callsWithoutReads() const {
    QStringList result;
    for (const QString& call : std::as_const(m_state->calls))
        if (call.contains(QLatin1Char('(')) || call.contains(QStringLiteral(" = ")))
            result << call;
    return result;
}

QStringList SpyCompanions::callsStartingWith(const QString& prefix) const {
    QStringList result;
    for (const QString& call : std::as_const(m_state->calls))
        if (call.startsWith(prefix))
            result << call;
    return result;
}

SpyDynaForm* SpyCompanions::lastForm() const {
    return lastOf(m_state->forms);
}
SpyScanIndex* SpyCompanions::lastScanIndex() const {
    return lastOf(m_state->scanIndexes);
}
SpySecurity* SpyCompanions::lastSecurity() const {
    return lastOf(m_state->securityManagers);
}

// --- form ---

SpyDynaForm::SpyDynaForm(std::shared_ptr<SpyState> state)
    : m_state(std::move(state))
    , m_fields(m_state->answers.fields) {}

SpyField* SpyDynaForm::current() {
    return m_field < m_fields.size() ? &m_fields[m_field] : nullptr;
}
const SpyField* SpyDynaForm::current() const {
    return m_field < m_fields.size() ? &m_fields[m_field] : nullptr;
}

QString SpyDynaForm::QueryText() const {
    m_state->record(QStringLiteral("VXDynaForm.QueryText"));
    return m_state->answers.queryText;
}

Recordset SpyDynaForm::QueryRecordset() {
    m_state->record(QStringLiteral("VXDynaForm.QueryRecordset"));
    return m_state->answers.queryRecordset;
}

QString SpyDynaForm::FieldName() const {
    m_state->record(QStringLiteral("VXDynaForm.FieldName"));
    return current() ? current()->name : QString();
}

QVariant SpyDynaForm::FieldValue() const {
    m_state->record(QStringLiteral("VXDynaForm.FieldValue"));
    return current() ? current()->value : QVariant();
}

void SpyDynaForm::setFieldValue(const QVariant& value) {
    m_state->record(QStringLiteral("VXDynaForm.FieldValue"),
                    QStringLiteral(" = ") + logText(value));
    if (SpyField* field = current())
        field->value = value;
}

bool SpyDynaForm::FieldEOF() const {
    m_state->record(QStringLiteral("VXDynaForm.FieldEOF"));
    return m_field >= m_fields.size();
}

bool SpyDynaForm::ListItemPresent() const {
    m_state->record(QStringLiteral("VXDynaForm.ListItemPresent"));
    return current() && m_entry < current()->entries.size();
}

void SpyDynaForm::ResetFields() {
    m_state->record(QStringLiteral("VXDynaForm.ResetFields"), QStringLiteral("()"));
    clearValues();
}

void SpyDynaForm::clearValues() {
    for (SpyField& field : m_fields) {
        field.value = QVariant();
        field.entries.clear();
    }
}

void SpyDynaForm::MoveFirstField() {
    m_state->record(QStringLiteral("VXDynaForm.MoveFirstField"), QStringLiteral("()"));
    m_field = 0;
    m_entry = 0;
}

void SpyDynaForm::MoveNextField() {
    m_state->record(QStringLiteral("VXDynaForm.MoveNextField"), QStringLiteral("()"));
    if (m_field < m_fields.size())
        ++m_field;
    m_entry = 0;
}

void SpyDynaForm::MoveFirstListItem() {
    m_state->record(QStringLiteral("VXDynaForm.MoveFirstListItem"), QStringLiteral("()"));
    m_entry = 0;
}

void SpyDynaForm::MoveNextListItem() {
    m_state->record(QStringLiteral("VXDynaForm.MoveNextListItem"), QStringLiteral("()"));
    ++m_entry;
}

QString SpyDynaForm::ListItemText() const {
    m_state->record(QStringLiteral("VXDynaForm.ListItemText"));
    const SpyField* field = current();
    return field && m_entry < field->entries.size() ? field->entries.at(m_entry) : QString();
}

QString SpyDynaForm::FieldCaption() const {
    m_state->record(QStringLiteral("VXDynaForm.FieldCaption"));
    return current() ? current()->caption : QString();
}

void SpyDynaForm::ClearFieldList() {
    m_state->record(QStringLiteral("VXDynaForm.ClearFieldList"), QStringLiteral("()"));
    if (SpyField* field = current())
        field->entries.clear();
    m_entry = 0;
}

void SpyDynaForm::AddFieldListItem(const QString& text) {
    m_state->record(QStringLiteral("VXDynaForm.AddFieldListItem"), argumentsText({text}));
    if (SpyField* field = current())
        field->entries << text;
}

bool SpyDynaForm::FieldsValid() const {
    m_state->record(QStringLiteral("VXDynaForm.FieldsValid"));
    return m_state->answers.fieldsValid;
}

void SpyDynaForm::ClearForm() {
    m_state->record(QStringLiteral("VXDynaForm.ClearForm"), QStringLiteral("()"));
    clearValues();
}

bool SpyDynaForm::LoadForm(QString& path) {
    m_state->record(QStringLiteral("VXDynaForm.LoadForm"), argumentsText({path}));
    m_fields = m_state->answers.fields;
    m_field = 0;
    m_entry = 0;
    return m_state->answers.loadForm;
}

// --- item list ---

SpyItemList::SpyItemList(std::shared_ptr<SpyState> state)
    : m_state(std::move(state)) {}

void SpyItemList::ClearList() {
    m_state->record(QStringLiteral("VXItemList.ClearList"), QStringLiteral("()"));
    m_items.clear();
}

void SpyItemList::AddItem(QString& text) {
    m_state->record(QStringLiteral("VXItemList.AddItem"), argumentsText({text}));
    m_items << text;
}

int SpyItemList::Count() const {
    return int(m_items.size());
}
QString SpyItemList::Item(int index) const {
    return m_items.value(index);
}
QStringList SpyItemList::items() const {
    return m_items;
}

// --- indexing API ---

SpyScanIndex::SpyScanIndex(std::shared_ptr<SpyState> state)
    : m_state(std::move(state)) {}

void SpyScanIndex::Init(QString& library) {
    m_state->record(QStringLiteral("VXScanIndex.Init"), argumentsText({library}));
}

bool SpyScanIndex::RemoteIndex() const {
    return m_remote;
}

void SpyScanIndex::setRemoteIndex(bool remote) {
    m_state->record(QStringLiteral("VXScanIndex.RemoteIndex"),
                    QStringLiteral(" = ") + logText(remote));
    m_remote = remote;
}

bool SpyScanIndex::SelectGroup(QString& group) {
    m_state->record(QStringLiteral("VXScanIndex.SelectGroup"), argumentsText({group}));
    return m_state->answers.selectGroup;
}

void SpyScanIndex::SetFieldContent(QString& column, const QVariant& value) {
    m_state->record(QStringLiteral("VXScanIndex.SetFieldContent"),
                    argumentsText({column, logText(value)}));
    m_contents.append({column, value});
}

std::shared_ptr<VXItemList> SpyScanIndex::ExcludeUserIDList() const {
    return m_excluded;
}

void SpyScanIndex::setExcludeUserIDList(std::shared_ptr<VXItemList> list) {
    m_state->record(QStringLiteral("VXScanIndex.ExcludeUserIDList"),
                    QStringLiteral(" = ") + listText(list));
    m_excluded = std::move(list);
}

std::shared_ptr<VXItemList> SpyScanIndex::KeywordsList() const {
    return m_keywords;
}

void SpyScanIndex::setKeywordsList(std::shared_ptr<VXItemList> list) {
    m_state->record(QStringLiteral("VXScanIndex.KeywordsList"),
                    QStringLiteral(" = ") + listText(list));
    m_keywords = std::move(list);
}

qint32 SpyScanIndex::DocumentIndex(QString& path, QWidget* owner, QString& user) {
    const QString ownerText = owner ? owner->objectName() : QStringLiteral("Nothing");
    m_state->record(QStringLiteral("VXScanIndex.DocumentIndex"),
                    argumentsText({path, ownerText, user}));
    return m_state->answers.documentIndex;
}

// --- security manager ---

SpySecurity::SpySecurity(std::shared_ptr<SpyState> state)
    : m_state(std::move(state)) {}

QString SpySecurity::Init() const {
    return m_init;
}

void SpySecurity::setInit(const QString& initFilePath) {
    m_state->record(QStringLiteral("VXSecurity.Init"), QStringLiteral(" = ") + initFilePath);
    m_init = initFilePath;
}

void SpySecurity::SelectItem(qint32& itemId) {
    m_state->record(QStringLiteral("VXSecurity.SelectItem"),
                    argumentsText({QString::number(itemId)}));
}

void SpySecurity::DeleteItemSecurity() {
    m_state->record(QStringLiteral("VXSecurity.DeleteItemSecurity"), QStringLiteral("()"));
}

bool SpySecurity::AddItemSecurity(qint32 userId, qint32 itemId) {
    m_state->record(QStringLiteral("VXSecurity.AddItemSecurity"),
                    argumentsText({QString::number(userId), QString::number(itemId)}));
    return !m_state->answers.failingSecurityUsers.contains(userId);
}

void SpySecurity::KillItem() {
    m_state->record(QStringLiteral("VXSecurity.KillItem"), QStringLiteral("()"));
}

void SpySecurity::Done() {
    m_state->record(QStringLiteral("VXSecurity.Done"), QStringLiteral("()"));
}

// --- query parser ---

SpySqlQuery::SpySqlQuery(std::shared_ptr<SpyState> state)
    : m_state(std::move(state)) {}

QString SpySqlQuery::QueryStringWithSecurity(const QString& query, qint16& userId) {
    m_state->record(QStringLiteral("VXSQLQuery.QueryStringWithSecurity"),
                    argumentsText({query, QString::number(userId)}));
    return m_state->answers.securedQuery.value_or(query);
}

} // namespace vx::test
