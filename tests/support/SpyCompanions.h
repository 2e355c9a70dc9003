#pragma once

#include "session/companions/CompanionRegistry.h"
#include "session/companions/VXDynaForm.h"
#include "session/companions/VXItemList.h"
#include "session/companions/VXSQLQuery.h"
#include "session/companions/VXScanIndex.h"
#include "session/companions/VXSecurity.h"

#include <QHash>
#include <QList>
#include <QPointer>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace vx::test {

// One field of the spy form.
struct SpyField {
    QString name;        // column name
    QString caption;     // label
    QVariant value;      // invalid = unset
    QStringList entries; // list fields
};

// What the spies answer. Shared by every spy created while the fixture lives, so a test can
// change an answer after a control has created its companions.
struct SpyAnswers {
    // Form
    bool loadForm = true;
    bool fieldsValid = true;
    QString queryText;
    Recordset queryRecordset;
    QList<SpyField> fields; // the form's fields in form order; LoadForm keeps them
    // Indexing API
    bool selectGroup = true;
    qint32 documentIndex = 1;
    // Security manager: true unless the user id is in this list
    QList<qint32> failingSecurityUsers;
    // Query parser: the answer, or the query unchanged when unset
    std::optional<QString> securedQuery;
    // Members that throw vx::Error with the given description after being logged, by their log
    // name ("VXScanIndex.SelectGroup", "VXSecurity.KillItem" ...).
    QHash<QString, QString> failures;
};

class SpyDynaForm;
class SpyScanIndex;
class SpyItemList;
class SpySecurity;
class SpySqlQuery;

// The state every spy of one fixture shares: the call log and the answers.
struct SpyState {
    QStringList calls;
    SpyAnswers answers;
    QList<QPointer<SpyDynaForm>> forms;
    QList<QPointer<SpyScanIndex>> scanIndexes;
    QList<QPointer<SpyItemList>> itemLists;
    QList<QPointer<SpySecurity>> securityManagers;
    QList<QPointer<SpySqlQuery>> sqlQueries;

    // Logs "Member(arguments)" (or a read/write text) and throws when a failure is set for it.
    void record(const QString& member, const QString& details = {});
};

// Registers spy implementations for the companion class names for its lifetime (the previous
// registrations come back afterwards). Every call on a spy is appended, with its arguments, to
// one call log: "VXScanIndex.SetFieldContent(Customer, Acme)", "VXSecurity.Init = /x/g.ini",
// property reads as "VXDynaForm.FieldEOF".
class SpyCompanions {
public:
    enum Kind { DynaForm = 1, ScanIndex = 2, ItemList = 4, Security = 8, SqlQuery = 16, All = 31 };

    explicit SpyCompanions(int kinds = All);
    ~SpyCompanions();
    SpyCompanions(const SpyCompanions&) = delete;
    SpyCompanions& operator=(const SpyCompanions&) = delete;

    SpyAnswers& answers() const;
    const QStringList& calls() const;
    // The log without property reads (entries without "(" or " = ").
    QStringList callsWithoutReads() const;
    // Entries that start with the prefix ("VXSecurity.", "VXScanIndex.SetFieldContent").
    QStringList callsStartingWith(const QString& prefix) const;
    void clearCalls() const;

    // Spies created through the registry, oldest first; null entries once an owner deleted them.
    SpyDynaForm* lastForm() const;
    SpyScanIndex* lastScanIndex() const;
    SpySecurity* lastSecurity() const;

private:
    std::shared_ptr<SpyState> m_state;
    std::vector<std::unique_ptr<CompanionOverride>> m_overrides;
};

class SpyDynaForm : public VXDynaForm {
    Q_OBJECT

public:
    explicit SpyDynaForm(std::shared_ptr<SpyState> state);

    QString QueryText() const override;
    Recordset QueryRecordset() override;
    QString FieldName() const override;
    QVariant FieldValue() const override;
    void setFieldValue(const QVariant& value) override;
    bool FieldEOF() const override;
    bool ListItemPresent() const override;
    void ResetFields() override;
    void MoveFirstField() override;
    void MoveNextField() override;
    void MoveFirstListItem() override;
    void MoveNextListItem() override;
    QString ListItemText() const override;
    QString FieldCaption() const override;
    void ClearFieldList() override;
    void AddFieldListItem(const QString& text) override;
    bool FieldsValid() const override;
    void ClearForm() override;
    bool LoadForm(QString& path) override;

    // The spy's own fields (a copy of the answers' fields taken at creation and at LoadForm).
    QList<SpyField>& fields() { return m_fields; }

private:
    SpyField* current();
    const SpyField* current() const;
    void clearValues();

    std::shared_ptr<SpyState> m_state;
    QList<SpyField> m_fields;
    int m_field = 0;
    int m_entry = 0;
};

class SpyItemList : public VXItemList {
    Q_OBJECT

public:
    explicit SpyItemList(std::shared_ptr<SpyState> state);

    void ClearList() override;
    void AddItem(QString& text) override;
    int Count() const override;
    QString Item(int index) const override;
    QStringList items() const override;

private:
    std::shared_ptr<SpyState> m_state;
    QStringList m_items;
};

class SpyScanIndex : public VXScanIndex {
    Q_OBJECT

public:
    explicit SpyScanIndex(std::shared_ptr<SpyState> state);

    void Init(QString& library) override;
    bool RemoteIndex() const override;
    void setRemoteIndex(bool remote) override;
    bool SelectGroup(QString& group) override;
    void SetFieldContent(QString& column, const QVariant& value) override;
    std::shared_ptr<VXItemList> ExcludeUserIDList() const override;
    void setExcludeUserIDList(std::shared_ptr<VXItemList> list) override;
    std::shared_ptr<VXItemList> KeywordsList() const override;
    void setKeywordsList(std::shared_ptr<VXItemList> list) override;
    qint32 DocumentIndex(QString& path, QWidget* owner, QString& user) override;

    // Values staged by SetFieldContent, in order, with their types as given.
    const QList<std::pair<QString, QVariant>>& fieldContents() const { return m_contents; }

private:
    std::shared_ptr<SpyState> m_state;
    bool m_remote = false;
    std::shared_ptr<VXItemList> m_excluded;
    std::shared_ptr<VXItemList> m_keywords;
    QList<std::pair<QString, QVariant>> m_contents;
};

class SpySecurity : public VXSecurity {
    Q_OBJECT

public:
    explicit SpySecurity(std::shared_ptr<SpyState> state);

    QString Init() const override;
    void setInit(const QString& initFilePath) override;
    void SelectItem(qint32& itemId) override;
    void DeleteItemSecurity() override;
    bool AddItemSecurity(qint32 userId, qint32 itemId) override;
    void KillItem() override;
    void Done() override;

private:
    std::shared_ptr<SpyState> m_state;
    QString m_init;
};

class SpySqlQuery : public VXSQLQuery {
    Q_OBJECT

public:
    explicit SpySqlQuery(std::shared_ptr<SpyState> state);

    QString QueryStringWithSecurity(const QString& query, qint16& userId) override;

private:
    std::shared_ptr<SpyState> m_state;
};

} // namespace vx::test
