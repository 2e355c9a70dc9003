#include "index/DirectCommit.h"

#include "data/Error.h"
#include "data/Recordset.h"
#include "index/IndexFormReader.h"
#include "session/Conversions.h"
#include "session/UiServices.h"
#include "session/UserDirectory.h"
#include "session/companions/VXDynaForm.h"

#include <QDateTime>

namespace vx {

namespace {

Recordset openTableForAppend(const QString& table, const Connection& connection) {
    Recordset rows;
    rows.open(table, connection, CursorType::ForwardOnly, LockType::Optimistic,
              CommandType::TableDirect);
    return rows;
}

} // namespace

DirectCommit::DirectCommit(const IndexCommitContext& context)
    : m_context(context) {}

bool DirectCommit::run() {
    try {
        if (!m_context.form.FieldsValid())
            return false;
        writeItemRow();
        writeGroupRow();
        writeKeywordRows();
        return true;
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("UpdateRecord"));
    } catch (const std::exception& error) {
        ui().messageBox(QString::fromLocal8Bit(error.what()),
                        MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("UpdateRecord"));
    }
    return false;
}

void DirectCommit::writeItemRow() {
    const IndexIdentity& identity = m_context.identity;
    Recordset rows = openTableForAppend(QStringLiteral("ktitem"), m_context.session.connection);
    rows.addNew();
    rows.setValue(QStringLiteral("itemid"), identity.curItemId);
    rows.setValue(QStringLiteral("UserName"), identity.userName);
    rows.setValue(QStringLiteral("GroupID"), identity.groupId);
    rows.setValue(QStringLiteral("idx_date"), QDateTime::currentDateTime());
    rows.setValue(QStringLiteral("Type"), identity.curFileType);
    rows.setValue(QStringLiteral("Description"), QString(QLatin1String("")));
    rows.setValue(QStringLiteral("lockcount"), 0);
    rows.setValue(QStringLiteral("Tag"), QStringLiteral(" "));
    rows.setValue(QStringLiteral("attachment"), 0);
    rows.setValue(QStringLiteral("Deleted"), 0);
    rows.update();
    rows.close();
}

void DirectCommit::setTextColumn(Recordset& rows, const QString& column, const QVariant& value) {
    QString text = indexform::cutAndTrimmed(value);
    const Field field = rows.field(column);
    const bool sized = field.type() != DataType::LongVarWChar &&
                       field.type() != DataType::LongVarChar &&
                       field.type() != DataType::LongVarBinary;
    const qint32 maximum = field.definedSize();
    if (sized && maximum >= 1 && maximum < text.size()) {
        ui().messageBox(QStringLiteral("The data in Field ") + column +
                            QStringLiteral(" will be truncated to ") + QString::number(maximum),
                        MessageStyle::OkOnly, QString());
        text = text.left(maximum);
    }
    rows.setValue(column, text);
}

void DirectCommit::writeGroupRow() {
    VXDynaForm& form = m_context.form;
    Recordset rows = openTableForAppend(m_context.groupTable, m_context.session.connection);
    rows.addNew();
    rows.setValue(QStringLiteral("itemid"), m_context.identity.curItemId);
    for (form.MoveFirstField(); !form.FieldEOF(); form.MoveNextField()) {
        const QString column = form.FieldName();
        const QVariant value = form.FieldValue();
        switch (indexform::fieldType(column)) {
        case FieldType::Memo:
        case FieldType::Edit:
            setTextColumn(rows, column, value);
            break;
        case FieldType::Numeric:
        case FieldType::Combo:
        case FieldType::Date:
            if (!indexform::isEmptyValue(value))
                rows.setValue(column, value);
            break;
        case FieldType::Check:
            // The direct path has always stored an untouched check box as set.
            rows.setValue(column, indexform::isEmptyValue(value) ? QVariant(1) : value);
            break;
        case FieldType::List: {
            int count = 0;
            const QString joined = indexform::joinedListEntries(form, count);
            rows.setValue(column, count > 0 ? joined : QStringLiteral(" "));
            break;
        }
        case FieldType::Unknown:
            break;
        }
    }
    rows.update();
    rows.close();
}

void DirectCommit::writeKeywordRows() {
    Recordset rows = openTableForAppend(QStringLiteral("keywords"), m_context.session.connection);
    for (const QString& word : indexform::pickedKeywords(m_context.keywords)) {
        rows.addNew();
        rows.setValue(QStringLiteral("keyword"), word);
        rows.setValue(QStringLiteral("itemid"), m_context.identity.curItemId);
        rows.update();
    }
    rows.close();
}

qint32 DirectCommit::userId(const Connection& connection, const QString& userName) {
    return userIdForName(connection, userName);
}

} // namespace vx
