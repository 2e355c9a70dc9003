#include "hitlist/FindReplaceSql.h"

#include "data/Connection.h"
#include "data/DataType.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "session/companions/VXDynaForm.h"

namespace vx {

QString EscapeQuotes(const QString& text) {
    QString escaped = text;
    return escaped.replace(QLatin1Char('\''), QLatin1String("''"));
}

QString GetLiteralAffix(Connection& connection, int adoType, const QString& which) {
    const int wanted = adoType == int(DataType::VarChar) || adoType == int(DataType::VarWChar)
                           ? int(DataType::WChar)
                           : adoType;
    Recordset types = connection.openSchema(SchemaKind::ProviderTypes);
    for (; !types.eof(); types.moveNext()) {
        if (types.value(QStringLiteral("DATA_TYPE")).toInt() != wanted ||
            !types.value(QStringLiteral("BEST_MATCH")).toBool())
            continue;
        const QVariant affix = types.value(which);
        return affix.isNull() ? QString() : affix.toString();
    }
    return {};
}

QString GetQueryWhere(const QString& query) {
    const qsizetype where = query.indexOf(QLatin1String("WHERE"), 0, Qt::CaseSensitive);
    if (where < 0)
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("The current query has no WHERE clause, so the change could "
                                   "not be kept to the documents of the result."));
    return query.mid(where);
}

QString singleReplaceSelect(VXDynaForm& form, const QString& groupTable) {
    QString sql = QStringLiteral("SELECT ITEMID ");
    form.MoveFirstField();
    while (!form.FieldEOF()) {
        sql += QStringLiteral(", ") + form.FieldName() + QStringLiteral(" as [") +
               form.FieldCaption() + QStringLiteral("]");
        form.MoveNextField();
    }
    return sql + QStringLiteral(" FROM ") + groupTable;
}

ReplaceAllStatements buildReplaceAll(const ReplaceAllTerms& terms) {
    const QString& table = terms.groupTable;
    const QString target = table + QLatin1Char('.') + terms.column;
    ReplaceAllStatements sql;
    sql.condition = QStringLiteral(" WHERE ") + target + QLatin1Char('=') + terms.literalPrefix +
                    EscapeQuotes(terms.findText) + terms.literalSuffix +
                    QStringLiteral(" AND itemid IN (SELECT ") + table +
                    QStringLiteral(".itemid FROM KTITEM, ") + table + QLatin1Char(' ') +
                    terms.queryWhere + QLatin1Char(')');
    sql.update = QStringLiteral("UPDATE ") + table + QStringLiteral(" SET ") + target +
                 QLatin1Char('=') + terms.literalPrefix + EscapeQuotes(terms.replaceText) +
                 terms.literalSuffix + sql.condition;
    sql.count = QStringLiteral("SELECT * FROM ") + table + sql.condition;
    return sql;
}

} // namespace vx
