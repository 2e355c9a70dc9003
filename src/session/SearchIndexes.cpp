#include "session/SearchIndexes.h"

#include "data/Error.h"
#include "data/Field.h"
#include "data/Recordset.h"
#include "session/Schema.h"
#include "session/UiServices.h"

#include <QLoggingCategory>
#include <QMutex>
#include <QSet>
#include <optional>

namespace vx {

namespace {

Q_LOGGING_CATEGORY(lcIndexes, "vx.session.indexes", QtWarningMsg)

// Longer text is searched for what it contains, which no index helps with.
constexpr qint32 LongestIndexedText = 100;

bool isNumberOrDate(DataType type) {
    switch (type) {
    case DataType::SmallInt:
    case DataType::Integer:
    case DataType::Single:
    case DataType::Double:
    case DataType::Currency:
    case DataType::Date:
    case DataType::TinyInt:
    case DataType::UnsignedTinyInt:
    case DataType::BigInt:
    case DataType::Numeric:
    case DataType::DBTimeStamp:
        return true;
    default:
        return false;
    }
}

bool isShortText(const IndexedColumn& column) {
    switch (column.type) {
    case DataType::Char:
    case DataType::WChar:
    case DataType::VarChar:
    case DataType::VarWChar:
        return column.definedSize > 0 && column.definedSize <= LongestIndexedText;
    default:
        return false;
    }
}

QList<IndexedColumn> columnsOf(Connection& connection, const QString& table) {
    Recordset rows;
    rows.open(QStringLiteral("SELECT * FROM [%1] WHERE 1 = 0").arg(table), connection);
    QList<IndexedColumn> columns;
    for (int i = 0; i < rows.fieldCount(); ++i) {
        const Field field = rows.field(i);
        columns.append({field.name(), field.type(), field.definedSize()});
    }
    rows.close();
    return columns;
}

QStringList groupTables(Connection& connection) {
    Recordset groups;
    groups.open(QStringLiteral("SELECT [Name] FROM [%1]").arg(table::Group), connection);
    QStringList names;
    for (; !groups.eof(); groups.moveNext()) {
        const QString name = groups.value(0).toString().trimmed();
        if (!name.isEmpty() && !names.contains(name, Qt::CaseInsensitive))
            names.append(name);
    }
    groups.close();
    return names;
}

} // namespace

QList<SearchIndex> searchIndexesFor(const QString& groupTable,
                                    const QList<IndexedColumn>& columns) {
    QList<SearchIndex> indexes;
    const auto add = [&](const QString& name, const QString& target) {
        indexes.append({name, QStringLiteral("CREATE INDEX IF NOT EXISTS [%1] ON [%2] (%3)")
                                  .arg(name, groupTable, target)});
    };
    for (const IndexedColumn& column : columns) {
        if (column.name.compare(QStringLiteral("itemid"), Qt::CaseInsensitive) == 0)
            continue; // the key has its own
        const QString name = QStringLiteral("ix_%1_%2").arg(groupTable, column.name);
        if (isNumberOrDate(column.type)) {
            add(name, u'[' + column.name + u']');
        } else if (isShortText(column)) {
            add(name, u'[' + column.name + u']');
            // An expression in its own parentheses, as both engines accept it.
            add(name + QStringLiteral("_lower"), QStringLiteral("(LOWER([%1]))").arg(column.name));
        }
    }
    return indexes;
}

QStringList ensureSearchIndexes(Connection& connection, const QStringList& tables) {
    QSet<QString> existing;
    for (const QString& name : connection.indexNames())
        existing.insert(name.toLower());
    QStringList created;
    std::optional<BusyCursor> busy; // a large table takes seconds to index
    for (const QString& table : tables) {
        bool tableChanged = false;
        for (const SearchIndex& index : searchIndexesFor(table, columnsOf(connection, table))) {
            // Checked by name first: even a CREATE ... IF NOT EXISTS would wait on a server for
            // the table's writers. An engine whose index names are per database keeps them
            // apart by the table's name after the index's own.
            const QString name = index.name.toLower();
            if (existing.contains(name) || existing.contains(name + u'_' + table.toLower()))
                continue;
            if (!busy)
                busy.emplace();
            connection.execute(index.statement);
            created.append(index.name);
            tableChanged = true;
        }
        // The planner picks these indexes over a scan once it knows how selective they are.
        if (tableChanged)
            connection.execute(QStringLiteral("ANALYZE [%1]").arg(table));
    }
    return created;
}

QStringList ensureSearchIndexes(Connection& connection) {
    return ensureSearchIndexes(connection, groupTables(connection));
}

void ensureSearchIndexesOnce(Connection& connection, const QString& connectionText) {
    static QMutex mutex;
    static QSet<QString> done;
    {
        const QMutexLocker lock(&mutex);
        if (done.contains(connectionText))
            return;
        done.insert(connectionText);
    }
    try {
        const QStringList created = ensureSearchIndexes(connection);
        if (!created.isEmpty())
            qCInfo(lcIndexes) << "created" << created;
    } catch (const Error& error) {
        qCInfo(lcIndexes) << "search indexes not made:" << error.description();
    }
}

} // namespace vx
