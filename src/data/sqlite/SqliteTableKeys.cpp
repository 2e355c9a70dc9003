#include "data/sqlite/SqliteTableKeys.h"

#include "data/dialect/SqlLexer.h"
#include "data/sqlite/SqliteSupport.h"

#include <map>

namespace vx::sqlite {

namespace {

QString text(sqlite3_stmt* statement, int column) {
    return QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(statement, column)),
                             sqlite3_column_bytes(statement, column));
}

QString pragma(const QString& database, const char* name, const QString& argument) {
    return QStringLiteral("PRAGMA %1.%2(%3)")
        .arg(dialect::quoteName(database), QLatin1String(name), dialect::quoteName(argument));
}

} // namespace

const TableKey& SqliteTableKeys::of(const QString& database, const QString& table) {
    const QString cacheKey = (database + u'.' + table).toLower();
    auto found = m_cache.find(cacheKey);
    if (found == m_cache.end())
        found = m_cache.insert(cacheKey, read(database, table));
    return *found;
}

TableKey SqliteTableKeys::read(const QString& database, const QString& table) const {
    TableKey key;
    std::map<int, QString> primary; // position in the key -> column
    {
        auto info = prepare(m_db, pragma(database, "table_info", table).toUtf8());
        while (sqlite3_step(info.get()) == SQLITE_ROW) {
            const int position = sqlite3_column_int(info.get(), 5);
            if (position > 0)
                primary[position] = text(info.get(), 1);
        }
    }
    if (!primary.empty()) {
        key.primaryKey = true;
        for (const auto& [position, column] : primary)
            key.columns << column;
        if (key.columns.size() == 1) {
            int autoIncrement = 0;
            const QByteArray column = key.columns.front().toUtf8();
            if (sqlite3_table_column_metadata(m_db, database.toUtf8().constData(),
                                              table.toUtf8().constData(), column.constData(),
                                              nullptr, nullptr, nullptr, nullptr,
                                              &autoIncrement) == SQLITE_OK &&
                autoIncrement)
                key.autoIncrementColumn = key.columns.front();
        }
        return key;
    }

    // No declared key: a unique index made by CREATE UNIQUE INDEX, preferring a primary one.
    QString chosen;
    {
        auto list = prepare(m_db, pragma(database, "index_list", table).toUtf8());
        while (sqlite3_step(list.get()) == SQLITE_ROW) {
            const QString name = text(list.get(), 1);
            const bool unique = sqlite3_column_int(list.get(), 2) != 0;
            const QString origin = text(list.get(), 3);
            const bool partial = sqlite3_column_int(list.get(), 4) != 0;
            if (!unique || partial || origin == u"pk")
                continue;
            if (chosen.isEmpty() || name.startsWith(QStringLiteral("pk"), Qt::CaseInsensitive))
                chosen = name;
            if (name.startsWith(QStringLiteral("pk"), Qt::CaseInsensitive))
                break;
        }
    }
    if (chosen.isEmpty())
        return key;
    auto columns = prepare(m_db, pragma(database, "index_info", chosen).toUtf8());
    while (sqlite3_step(columns.get()) == SQLITE_ROW) {
        if (sqlite3_column_type(columns.get(), 2) == SQLITE_NULL)
            return {}; // an index on an expression finds no row by column values
        key.columns << text(columns.get(), 2);
    }
    return key;
}

} // namespace vx::sqlite
