#include "HitSearch.h"

#include "ViewerSession.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "query/QueryComposer.h"
#include "server/LateBinding.h"
#include "session/FormDefinition.h"

#include <QSet>
#include <QWidget>
#include <algorithm>

namespace vx::viewer {

SearchCriteria SearchCriteria::fromArguments(const QStringList& arguments) {
    static const QString keywordOption = QStringLiteral("--keyword");
    SearchCriteria criteria;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (argument == keywordOption) {
            if (i + 1 >= arguments.size())
                throw Error(ErrorNumber::InvalidArgument,
                            QStringLiteral("--keyword needs a word after it."));
            criteria.keywords << arguments.at(++i);
            continue;
        }
        if (argument.startsWith(keywordOption + u'=')) {
            criteria.keywords << argument.mid(keywordOption.size() + 1);
            continue;
        }
        const qsizetype equals = argument.indexOf(u'=');
        if (equals <= 0 || argument.startsWith(u'-'))
            throw Error(ErrorNumber::InvalidArgument,
                        QStringLiteral("\"%1\" is not a criterion: give COLUMN=VALUE or "
                                       "--keyword WORD.")
                            .arg(argument));
        criteria.fields.append({argument.left(equals).trimmed(), argument.mid(equals + 1)});
    }
    return criteria;
}

namespace search {

namespace {

QObject* child(QWidget* control, const QString& name) {
    QObject* found = control->findChild<QObject*>(name);
    if (!found)
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The query control has no part named %1.").arg(name));
    return found;
}

QStringList pickedKeywords(QObject* picker) {
    QStringList picked;
    callMember(picker, "MoveFirst");
    while (!readMember(picker, "EOF").toBool()) {
        const QString value = readMember(picker, "CurrentListValue").toString();
        if (!value.isEmpty())
            picked << value;
        callMember(picker, "MoveNext");
    }
    return picked;
}

// Every document of the group, in the columns the search form would show.
QString allDocumentsQuery(const ViewerSession& session) {
    const QString group = session.groupName();
    QString columns;
    for (const auto& [column, caption] : session.formColumns()) {
        QString alias = caption;
        alias.remove(u'[').remove(u']');
        columns +=
            QStringLiteral(", ") + group + u'.' + column + QStringLiteral(" AS [") + alias + u']';
    }
    return QStringLiteral("SELECT DISTINCT ktitem.itemid AS itemid, ktitem.idx_date AS "
                          "IndexDate") +
           columns + QStringLiteral(" FROM ktitem, ") + group +
           QStringLiteral(" WHERE ktitem.itemid = ") + group +
           QStringLiteral(".itemid AND ktitem.deleted = 0");
}

} // namespace

void fill(QWidget* queryControl, const SearchCriteria& criteria) {
    callMember(queryControl, "Refresh");
    QObject* form = child(queryControl, QStringLiteral("Group"));
    QSet<QString> used;
    QStringList columns;
    callMember(form, "MoveFirstField");
    while (!readMember(form, "FieldEOF").toBool()) {
        const QString column = readMember(form, "FieldName").toString();
        if (!columns.contains(column))
            columns << column;
        for (const auto& [name, value] : criteria.fields) {
            if (column.compare(name, Qt::CaseInsensitive) != 0)
                continue;
            used.insert(name.toLower());
            if (GetControlValuesFromXML(QStringLiteral("ColumnName"), column,
                                        QStringLiteral("Type")) == u"ListField")
                callMember(form, "AddFieldListItem", value);
            else
                writeMember(form, "FieldValue", value);
        }
        callMember(form, "MoveNextField");
    }
    for (const auto& [name, value] : criteria.fields) {
        if (!used.contains(name.toLower()))
            throw Error(ErrorNumber::InvalidArgument,
                        QStringLiteral("The search form has no field \"%1\"; its fields are: %2.")
                            .arg(name, columns.join(QStringLiteral(", "))));
    }
    QObject* picker = child(queryControl, QStringLiteral("kss1"));
    for (const QString& keyword : criteria.keywords)
        callMember(picker, "AddListItem", keyword);
}

QString queryText(QWidget* queryControl, const ViewerSession& session) {
    const QString query = readMember(queryControl, "QueryString").toString();
    if (!query.trimmed().isEmpty())
        return query;
    const QStringList keywords = pickedKeywords(child(queryControl, QStringLiteral("kss1")));
    if (keywords.isEmpty())
        return {};
    return query::composeQuery(allDocumentsQuery(session), query::keywordClause(keywords));
}

QList<qint32> itemIds(const ViewerSession& session, const QString& query) {
    Recordset rows;
    rows.open(query, session.connection());
    const int column = rows.fieldIndex(QStringLiteral("itemid"));
    if (column < 0)
        throw Error(ErrorNumber::Unspecified, QStringLiteral("The search returns no item ids."));
    QList<qint32> ids;
    for (; !rows.eof(); rows.moveNext())
        ids << rows.value(column).toInt();
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    ids.removeAll(0);
    return ids;
}

} // namespace search

} // namespace vx::viewer
