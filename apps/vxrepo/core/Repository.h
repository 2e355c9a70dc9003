#pragma once

#include "data/Connection.h"

#include <QString>
#include <QVariant>

namespace vx::repo {

// A repository folder: the database named by DIR/<name>.udl (for SQLite DIR/<name>.db), reached
// through the data layer like every control reaches it.
class Repository {
public:
    static inline const QString DefaultName = QStringLiteral("repository");

    // A new repository with the fixed tables: a SQLite file in DIR, or, when `server` is given
    // ("Host=...;Port=...;Database=...;User ID=...;Password=..." or a data-link file naming one),
    // that PostgreSQL database, which must not hold the tables yet. DIR/NAME.udl names the
    // database either way. Refuses to touch an existing repository; leaves nothing behind when
    // it fails.
    static Repository create(const QString& dir, const QString& name = DefaultName,
                             const QString& server = {});
    // Throws vx::Error with a hint at "create" when DIR holds no repository of that name. With
    // `server`, that database is used instead of the one DIR/NAME.udl names.
    static Repository open(const QString& dir, const QString& name = DefaultName,
                           const QString& server = {});

    const QString& dir() const { return m_dir; }
    const QString& name() const { return m_name; }
    QString dataLinkPath() const;
    Connection& connection() { return m_connection; }
    // The init string of the database, as the data-link files written for it hold it.
    const QString& initString() const { return m_initString; }
    bool isOnServer() const { return m_onServer; }

    // One row each; a name, path or word already present (letter case ignored) is refused.
    // Return the new user's id.
    qint32 addUser(const QString& userName);
    void addPath(const QString& path);
    void addWord(const QString& word);

    // The first column of the first row, null when there is none.
    QVariant scalar(const QString& sql);
    qint64 count(const QString& tableName);
    // The highest value of an integer column plus one; 1 for an empty table.
    qint32 nextId(const QString& tableName, const QString& column);
    bool hasTable(const QString& tableName);

    // The file paths a repository of this name takes in DIR.
    static QString dataLinkPath(const QString& dir, const QString& name);
    static QString databasePath(const QString& dir, const QString& name);
    // "Provider=SQLite;Data Source=<db>".
    static QString sqliteInitString(const QString& databasePath);
    // "Provider=PostgreSQL;Host=...;..." from --server text or a data-link file's path; throws
    // vx::Error for another provider or when Host or Database is missing.
    static QString serverInitString(const QString& server);
    // "database D on host:port", for messages (never the password).
    static QString describeServer(const QString& initString);

    // Drops those of the tables that exist; errors are ignored (cleanup after a failure).
    void dropTablesQuietly(const QStringList& tableNames);

private:
    Repository(QString dir, QString name, Connection connection, QString initString, bool onServer);
    bool containsText(const QString& tableName, const QString& column, const QString& value);

    QString m_dir;
    QString m_name;
    Connection m_connection;
    QString m_initString;
    bool m_onServer = false;
};

// Absolute, cleaned, with the platform's separators (what the tool stores in files and rows).
QString storedPath(const QString& path);

} // namespace vx::repo
