#pragma once

#include "data/Connection.h"

#include <QString>
#include <QStringList>
#include <optional>

namespace vx {

struct ColumnInfo;

// The small database ("veltrane.znl") the viewer reads in place of the repository.

// The connection text that opens the portable database at `path` directly (no data-link file),
// without waiting for the disk on commits; with `create` the file is made when missing.
QString portableConnectionText(const QString& path, bool create = false);

// Makes the empty database file; throws vx::Error when it cannot.
void createPortableDatabaseFile(const QString& path);

// The portable column type for a repository column ("LONG", "VARCHAR(50)" ...), or nothing for a
// type the portable database does not carry.
std::optional<QString> portableColumnType(const ColumnInfo& column);

// Creates the tables of the portable database in the already created file: the group table
// (copying the structure of `groupTable` in `repository`), dictionary, keywords, KTFile, KTGroup,
// KTItem and one table per `hintTables` entry ("table=column"). Returns false as soon as a step
// fails, leaving what was created; shows nothing.
bool CreatePortableTables(const QString& databasePath, const QString& groupTable,
                          const Connection& repository, const QStringList& hintTables);

} // namespace vx
