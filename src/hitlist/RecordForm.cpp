#include "hitlist/RecordForm.h"

#include "data/Connection.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "data/RetryTransient.h"
#include "data/recordset/RecordsetErrors.h"
#include "operations/HitListContext.h"
#include "operations/Progressbar.h"
#include "server/LateBinding.h"
#include "session/Conversions.h"
#include "session/FormDefinition.h"
#include "session/LibraryState.h"
#include "session/Schema.h"
#include "session/UiServices.h"
#include "session/UserDirectory.h"
#include "session/companions/CompanionRegistry.h"
#include "session/companions/VXDynaForm.h"
#include "session/companions/VXSecurity.h"

#include <QHash>
#include <QPointer>

namespace vx {

namespace {

// Longest text an edit or memo field stores.
constexpr int MaxTextLength = 64000;
// Polls of the security rows after a save, one second apart.
constexpr int SecurityPolls = 5;
constexpr int SecurityPollMilliseconds = 1000;

Recordset openWorkRows(const QString& sql, const Connection& connection) {
    Recordset rows;
    rows.open(sql, connection, CursorType::Keyset, LockType::Optimistic, CommandType::Text);
    return rows;
}

FieldType fieldTypeOf(const QString& column) {
    return fieldTypeFromName(
        GetControlValuesFromXML(QStringLiteral("ColumnName"), column, QStringLiteral("Type")));
}

// Only blanks, as the form has always trimmed them.
QString trimmedBlanks(const QString& text) {
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text[first] == u' ')
        ++first;
    while (last > first && text[last - 1] == u' ')
        --last;
    return text.mid(first, last - first);
}

bool holdsValue(const QVariant& value) {
    return value.isValid() && !value.isNull() && !value.toString().isEmpty();
}

VXDynaForm& requireForm(HitListContext& hitList) {
    VXDynaForm* form = hitList.form();
    if (!form)
        throw Error(ErrorNumber::ObjectClosed, QStringLiteral("The record form is not loaded."));
    return *form;
}

QString describe(const std::exception& error) {
    if (const auto* known = dynamic_cast<const Error*>(&error))
        return known->description();
    return QString::fromLocal8Bit(error.what());
}

// Values as stored compare equal: null only with null; numbers across their integer widths.
bool sameStoredValue(const QVariant& a, const QVariant& b) {
    const bool aNull = !a.isValid() || a.isNull();
    const bool bNull = !b.isValid() || b.isNull();
    if (aNull || bNull)
        return aNull == bNull;
    return a == b;
}

qint32 numberOf(const std::exception& error) {
    if (const auto* known = dynamic_cast<const Error*>(&error))
        return known->number();
    return ErrorNumber::Unspecified;
}

} // namespace

struct RecordForm::Private {
    HitListContext& hitList;
    QPointer<QObject> keywords; // "kss3"
    QPointer<QObject> users;    // "dcs"
    std::unique_ptr<VXSecurity> security;
    qint32 securityWrittenCount = 0;
    bool securityPending = false;
    // The group row's form columns (lower case) as stored when the form was filled: a save
    // finding other values there was overtaken by another user and must not overwrite them.
    qint32 shownItemId = 0;
    QHash<QString, QVariant> shownValues;
    bool shownKnown = false;

    Private(HitListContext& context, QObject* keywordsPicker, QObject* usersPicker)
        : hitList(context)
        , keywords(keywordsPicker)
        , users(usersPicker) {}

    VXSecurity& securityManager() {
        if (!security)
            security = createCompanion<VXSecurity>(CompanionClass::Security);
        return *security;
    }

    void fillFields(Recordset& result);
    Recordset openGroupRow(qint32 itemId) const;
    void rememberGroupRow(const Recordset& rows, qint32 itemId);
    void checkNotChangedSinceShown(const Recordset& rows, qint32 itemId) const;
    void fillKeywords(qint32 itemId);
    void fillExcludedUsers(qint32 itemId, RecordForm& owner);
    void waitForSecurityRows(Recordset& rows);

    void writeGroupRow(qint32 itemId);
    void writeTextColumn(Recordset& rows, const QString& column, const QVariant& value);
    bool writeKeywordRows(qint32 itemId);
    void writeSecurity(qint32 itemId, RecordForm& owner);
};

RecordForm::RecordForm(HitListContext& hitList, QObject* keywordsPicker, QObject* usersPicker)
    : d(std::make_unique<Private>(hitList, keywordsPicker, usersPicker)) {}

RecordForm::~RecordForm() = default;

// Throws when the registered manager cannot be created; Init shows that.
void RecordForm::openSecurityManager() {
    d->security.reset();
    if (library().securityTablePresent)
        d->securityManager();
}

void RecordForm::releaseSecurityManager() {
    d->security.reset();
}

// ---- UpdateForm ----------------------------------------------------------------------------

void RecordForm::UpdateForm() {
    try {
        Recordset result = d->hitList.resultSet();
        if (!result.isOpen() || result.eof() || result.bof())
            return;
        const qint32 itemId = d->hitList.currentItemId();
        d->fillFields(result);
        d->shownKnown = false;
        if (d->hitList.groupId() != 0) {
            try {
                d->rememberGroupRow(d->openGroupRow(itemId), itemId);
            } catch (const Error&) { // then the save has only the engine's check
            }
        }
        d->fillKeywords(itemId);
        if (!library().securityTablePresent) {
            d->securityPending = false;
            return;
        }
        d->fillExcludedUsers(itemId, *this);
    } catch (const std::exception& error) {
        ui().messageBox(describe(error), MessageStyle::OkOnly | MessageStyle::Exclamation,
                        QStringLiteral("UpdateForm"));
    }
}

void RecordForm::Private::fillFields(Recordset& result) {
    VXDynaForm& form = requireForm(hitList);
    for (form.MoveFirstField(); !form.FieldEOF(); form.MoveNextField()) {
        const QString caption = form.FieldCaption();
        const FieldType type = fieldTypeOf(form.FieldName());
        QVariant value = result.value(caption);
        if (value.isNull() && type != FieldType::Date)
            value = QString();
        if (type != FieldType::List) {
            form.setFieldValue(value);
            continue;
        }
        // Every piece is an entry, empty ones included, so the value saves back unchanged.
        form.ClearFieldList();
        const QStringList pieces = value.toString().split(u';');
        for (const QString& piece : pieces)
            form.AddFieldListItem(piece);
    }
}

void RecordForm::Private::fillKeywords(qint32 itemId) {
    Recordset rows = openWorkRows(QStringLiteral("select * from keywords where itemid = ") +
                                      numberToText(qint64(itemId)),
                                  hitList.connection());
    callMember(keywords, "ClearContents");
    for (; !rows.eof(); rows.moveNext())
        callMember(keywords, "AddListItem", rows.value(QStringLiteral("keyword")).toString());
    rows.close();
}

void RecordForm::Private::fillExcludedUsers(qint32 itemId, RecordForm& owner) {
    callMember(users, "ClearContents");
    Recordset rows = openWorkRows(QStringLiteral("select * from KTSecurity where itemid =") +
                                      numberToText(qint64(itemId)),
                                  hitList.connection());
    if (securityPending)
        waitForSecurityRows(rows);
    for (; !rows.eof(); rows.moveNext()) {
        const qint16 userId = toInt16(rows.value(QStringLiteral("UserID")));
        callMember(users, "AddListItem", owner.GetUserName(userId));
    }
    rows.close();
    securityPending = false;
}

// The security manager writes through its own session; give it a few seconds to show up here.
void RecordForm::Private::waitForSecurityRows(Recordset& rows) {
    ProgressScope progress(hitList.controlWidget(), 100,
                           QStringLiteral("Updating record please wait ..."));
    for (int attempt = 0; attempt < SecurityPolls; ++attempt) {
        if (rows.recordCount() == securityWrittenCount)
            break;
        ui().sleep(SecurityPollMilliseconds);
        rows.requery();
        progress.setValue(20 * attempt);
    }
}

// ---- SaveData ------------------------------------------------------------------------------

void RecordForm::SaveData() {
    qint32 itemId = 0;
    try {
        if (!requireForm(d->hitList).FieldsValid())
            return;
        itemId = d->hitList.currentItemId();
        if (d->hitList.groupId() != 0)
            d->writeGroupRow(itemId);
        if (!d->writeKeywordRows(itemId))
            return;
        d->securityPending = true;
    } catch (const std::exception& error) {
        ui().messageBox(describe(error) + QStringLiteral(" : ") + QString::number(numberOf(error)),
                        MessageStyle::OkOnly | MessageStyle::Critical, QStringLiteral("SaveData"));
        return;
    }
    if (library().securityTablePresent)
        d->writeSecurity(itemId, *this);
    d->hitList.raiseRecordAuditTrail(QStringLiteral("Editing"), {itemId},
                                     QStringLiteral("Record Data for Item: ") +
                                         QString::number(itemId));
}

Recordset RecordForm::Private::openGroupRow(qint32 itemId) const {
    return openWorkRows(QStringLiteral("select * from ") + hitList.groupTableName() +
                            QStringLiteral(" where itemid = ") + numberToText(qint64(itemId)),
                        hitList.connection());
}

void RecordForm::Private::writeGroupRow(qint32 itemId) {
    Recordset rows = openGroupRow(itemId);
    if (rows.supports(CursorOption::Update)) {
        checkNotChangedSinceShown(rows, itemId);
        VXDynaForm& form = requireForm(hitList);
        for (form.MoveFirstField(); !form.FieldEOF(); form.MoveNextField()) {
            const QString column = form.FieldName();
            switch (fieldTypeOf(column)) {
            case FieldType::Memo:
            case FieldType::Edit:
                writeTextColumn(rows, column, form.FieldValue());
                break;
            case FieldType::Numeric:
            case FieldType::Combo:
            case FieldType::Date:
                rows.setValue(column, form.FieldValue());
                break;
            case FieldType::Check: {
                const QVariant value = form.FieldValue();
                rows.setValue(column, holdsValue(value) ? value : QVariant(0));
                break;
            }
            case FieldType::List: {
                QStringList entries;
                for (form.MoveFirstListItem(); form.ListItemPresent(); form.MoveNextListItem())
                    entries.append(form.ListItemText());
                rows.setValue(column, entries.join(u';'));
                break;
            }
            case FieldType::Unknown:
                break;
            }
        }
        // Sent again when it loses to another user's lock; a row changed meanwhile fails.
        retryTransient([&] { rows.update(); });
        rememberGroupRow(rows, itemId);
    }
    rows.close();
}

// The row as read for saving against the row as it was when the form was filled. The update
// itself then matches the values read here, so a change made in between is caught by the engine.
void RecordForm::Private::checkNotChangedSinceShown(const Recordset& rows, qint32 itemId) const {
    if (!shownKnown || itemId != shownItemId || rows.eof() || rows.bof())
        return;
    for (auto shown = shownValues.cbegin(); shown != shownValues.cend(); ++shown) {
        const int column = rows.fieldIndex(shown.key());
        if (column >= 0 && !sameStoredValue(rows.value(column), shown.value()))
            throw errors::rowNotFoundForUpdate();
    }
}

// The form's columns of the group row: when the form is filled, and after each save (saving
// again is then no conflict with the form's own save).
void RecordForm::Private::rememberGroupRow(const Recordset& rows, qint32 itemId) {
    shownValues.clear();
    shownItemId = itemId;
    shownKnown = !rows.eof() && !rows.bof();
    if (!shownKnown)
        return;
    VXDynaForm& form = requireForm(hitList);
    for (form.MoveFirstField(); !form.FieldEOF(); form.MoveNextField()) {
        const int column = rows.fieldIndex(form.FieldName());
        if (column >= 0)
            shownValues.insert(form.FieldName().toLower(), rows.value(column));
    }
}

void RecordForm::Private::writeTextColumn(Recordset& rows, const QString& column,
                                          const QVariant& value) {
    QString text = trimmedBlanks(value.toString().left(MaxTextLength));
    const qint32 definedSize = rows.field(column).definedSize();
    if (definedSize >= 1 && definedSize < text.size()) {
        ui().messageBox(QStringLiteral("The data in Field ") + column +
                            QStringLiteral(" will be truncated to ") +
                            numberToText(qint64(definedSize)),
                        MessageStyle::OkOnly, QString());
        text.truncate(definedSize);
    }
    rows.setValue(column, text);
}

// False when the keyword rows cannot be rewritten: the save stops there.
// The old rows out and the new ones in as one unit: never half done, and run again whole when
// it loses to another user's lock or deadlock.
bool RecordForm::Private::writeKeywordRows(qint32 itemId) {
    return retryTransient([&] {
        Transaction transaction(hitList.connection());
        Recordset rows = openWorkRows(QStringLiteral("select * from keywords where itemid = ") +
                                          numberToText(qint64(itemId)),
                                      hitList.connection());
        if (!rows.supports(CursorOption::Update))
            return false;
        callMember(keywords, "MoveFirst");
        while (!rows.eof()) {
            rows.deleteCurrent();
            rows.moveNext();
        }
        rows.updateBatch();
        while (!readMember(keywords, "EOF").toBool()) {
            rows.addNew();
            rows.setValue(QStringLiteral("keyword"), readMember(keywords, "CurrentListValue"));
            rows.setValue(QStringLiteral("itemid"), itemId);
            rows.update();
            callMember(keywords, "MoveNext");
        }
        rows.close();
        transaction.commit();
        return true;
    });
}

// Failures here never undo the saved record: each call is tried on its own.
void RecordForm::Private::writeSecurity(qint32 itemId, RecordForm& owner) {
    VXSecurity* manager = nullptr;
    try {
        callMember(users, "MoveFirst");
        manager = &securityManager();
        manager->setInit(hitList.initFilePath());
        qint32 selected = itemId;
        manager->SelectItem(selected);
        manager->DeleteItemSecurity();
    } catch (const std::exception&) {
        if (manager) {
            try {
                manager->Done();
            } catch (const std::exception&) {
            }
        }
        return;
    }

    securityWrittenCount = 0;
    for (;;) {
        QString userName;
        try {
            if (readMember(users, "EOF").toBool())
                break;
            userName = readMember(users, "CurrentListValue").toString();
        } catch (const std::exception&) {
            break;
        }
        const qint32 userId = owner.GetUserId(userName);
        bool added = false;
        try {
            added = manager->AddItemSecurity(userId, itemId);
        } catch (const std::exception&) {
        }
        if (!added)
            ui().messageBox(QStringLiteral("Error updating Document Security for\rUserID: ") +
                                QString::number(userId) + QStringLiteral(" ItemId: ") +
                                QString::number(itemId),
                            MessageStyle::OkOnly | MessageStyle::Critical, QString());
        ++securityWrittenCount;
        try {
            callMember(users, "MoveNext");
        } catch (const std::exception&) {
            break;
        }
    }
    try {
        manager->KillItem();
    } catch (const std::exception&) {
    }
    try {
        manager->Done();
    } catch (const std::exception&) {
    }
}

// ---- User ids and names --------------------------------------------------------------------

QString RecordForm::GetUserName(qint16 userId) {
    try {
        Recordset rows = openWorkRows(QStringLiteral("select * from KTUsers where userid = ") +
                                          QString::number(userId),
                                      d->hitList.connection());
        rows.moveFirst();
        const QString name = rows.value(QStringLiteral("UserName")).toString();
        rows.close();
        return name;
    } catch (const std::exception&) {
        ui().messageBox(QStringLiteral("Could not retrieve UserName for UserID: ") +
                            QString::number(userId),
                        MessageStyle::OkOnly, QString());
    }
    return {};
}

qint32 RecordForm::GetUserId(const QString& userName) {
    return userIdForName(d->hitList.connection(), userName);
}

} // namespace vx
