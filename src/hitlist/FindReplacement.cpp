#include "hitlist/FindReplacement.h"

#include "data/Connection.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "data/RetryTransient.h"
#include "hitlist/FindReplaceSearch.h"
#include "hitlist/FindReplaceSql.h"
#include "hitlist/FindReplaceValues.h"
#include "operations/HitListContext.h"
#include "session/Conversions.h"
#include "session/FormDefinition.h"
#include "session/UiServices.h"
#include "session/companions/VXDynaForm.h"

namespace vx {

namespace {

bool confirm(const QString& text, const QString& title) {
    return ui().messageBox(text, MessageStyle::YesNo, title) == MessageAnswer::Yes;
}

// The value as it goes into SQL: numbers without the user's formatting, other values as typed.
QString sqlText(const QString& typed, const QVariant& validated, const QString& type) {
    if (type == QLatin1String("NumericField"))
        return plainNumberText(validated.toDouble());
    return typed;
}

} // namespace

FindReplacement::FindReplacement(HitListContext& hitList)
    : m_hitList(hitList) {}

qsizetype FindReplacement::rowOfItem(const Recordset& result, qint32 itemId) {
    if (!result.isOpen())
        return -1;
    const int column = result.field(QStringLiteral("itemID")).index();
    return result.find(column, QVariant(itemId));
}

bool FindReplacement::replaceOne(const Request& request) {
    VXDynaForm* form = m_hitList.form();
    if (!form)
        throw Error(ErrorNumber::ObjectClosed, QStringLiteral("The record form is not loaded."));
    Connection connection = m_hitList.connection();
    Recordset result = m_hitList.resultSet();
    Recordset rows;
    rows.open(singleReplaceSelect(*form, m_hitList.groupTableName()), connection,
              CursorType::Keyset, LockType::Optimistic, CommandType::Text);
    if (rows.eof() && !askStartFromBeginning())
        return false;

    const int column = rows.field(request.caption).index();
    const QString wanted = FormatForCompare(request.type, request.findValue);
    const QString question = QStringLiteral("Match found! Changes made will be permanent. "
                                            "Proceed with Replacing ") +
                             request.findText + QStringLiteral(" with ") + request.replaceText +
                             QLatin1Char('?');
    for (;;) {
        for (; !rows.eof(); rows.moveNext()) {
            if (FormatForCompare(request.type, rows.value(column)) != wanted)
                continue;
            const qint32 itemId = toInt32(rows.value(QStringLiteral("ItemID")));
            const qsizetype row = rowOfItem(result, itemId);
            if (row < 0)
                continue;
            m_hitList.makeResultRowCurrent(row);
            // Asked before anything is written: other users never wait for the answer, and a
            // declined replacement leaves nothing to undo.
            if (!confirm(question, QStringLiteral("Replace")))
                continue;
            // The change goes to the group table's row; the result follows on requery. A row
            // another user changed since it was read fails the write, which is then reported.
            rows.setValue(column, request.replaceText);
            try {
                retryTransient([&] { rows.update(); });
            } catch (...) {
                rows.cancelUpdate();
                throw;
            }
            m_hitList.requeryList();
            return true;
        }
        if (!askStartFromBeginning()) {
            if (rows.recordCount() > 0)
                rows.moveLast();
            return false;
        }
        // Read the rows again: other users may have changed them meanwhile.
        rows.requery();
    }
}

qint64 FindReplacement::replaceAll(const Request& request,
                                   const std::function<void()>& afterCommit) {
    const BusyCursor busy;
    qint64 changed = 0;
    try {
        changed = runReplaceAll(request, afterCommit);
    } catch (...) {
        try {
            m_hitList.requeryList();
        } catch (...) {
            // The first failure is the one to report.
        }
        throw;
    }
    m_hitList.requeryList();
    return changed;
}

qint64 FindReplacement::runReplaceAll(const Request& request,
                                      const std::function<void()>& afterCommit) {
    Connection connection = m_hitList.connection();
    const Recordset result = m_hitList.resultSet();
    const int adoType = int(result.field(request.caption).type());

    ReplaceAllTerms terms;
    terms.groupTable = m_hitList.groupTableName();
    terms.column = GetControlValuesFromXML(QStringLiteral("Caption"), request.caption,
                                           QStringLiteral("ColumnName"));
    if (terms.column.isEmpty() || terms.column == QLatin1String("Not Found"))
        throw Error(ErrorNumber::ColumnNotFound,
                    QStringLiteral("No field of the form is captioned ") + request.caption +
                        QLatin1Char('.'));
    terms.findText = sqlText(request.findText, request.findValue, request.type);
    terms.replaceText = sqlText(request.replaceText, request.replaceValue, request.type);
    terms.literalPrefix = GetLiteralAffix(connection, adoType, QStringLiteral("LITERAL_PREFIX"));
    terms.literalSuffix = GetLiteralAffix(connection, adoType, QStringLiteral("LITERAL_SUFFIX"));
    terms.queryWhere = GetQueryWhere(m_hitList.queryString());
    const ReplaceAllStatements sql = buildReplaceAll(terms);

    qint64 count = 0;
    {
        Recordset matches;
        matches.open(sql.count, connection, CursorType::ForwardOnly, LockType::ReadOnly,
                     CommandType::Text);
        for (; !matches.eof(); matches.moveNext())
            ++count;
    }
    if (count == 0) {
        ui().messageBox(QStringLiteral("No matches found!"), MessageStyle::OkOnly,
                        QStringLiteral("Replace All"));
        return 0;
    }
    if (!confirm(QStringLiteral("Changes made will be permanent. Proceed in replacing all "
                                "occurances of ") +
                     request.findText + QStringLiteral(" with ") + request.replaceText +
                     QLatin1Char('?'),
                 QStringLiteral("Replace All")))
        return 0;

    // One statement over many rows: on a server it can meet another user's changes in another
    // order (a deadlock) and is then run again whole.
    retryTransient([&] {
        Transaction transaction(connection);
        connection.execute(sql.update);
        transaction.commit();
    });
    if (afterCommit)
        afterCommit();
    ui().messageBox(QString::number(count) + QStringLiteral(" Change(s) Made"),
                    MessageStyle::OkOnly | MessageStyle::Information, QStringLiteral("Replaced"));
    return count;
}

} // namespace vx
