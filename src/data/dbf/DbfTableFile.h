#pragma once

#include "data/dbf/DbfLayout.h"

#include <QString>
#include <QVariantList>
#include <memory>
#include <span>

namespace vx {
class RowStore;
}

namespace vx::dbf {

// One open FoxPro table (".dbf", with its ".fpt" when it has memo fields) that records are
// appended to. Records are buffered and written in large pieces on a writer thread; flush() writes,
// the end-of-file mark, the record count and the date of last update, so the files are complete
// after every flush. Closing flushes.
//
// The files stay a valid table at every failure: each piece of records is followed by the
// end-of-file mark and the record count (memos go to disk before the records that point at
// them); a failed write cuts both files back to the last whole record and memo, rewrites their
// headers and then reports the system's cause. The records appended so far that were not
// written are dropped.
class DbfTableFile {
public:
    // Makes new files; throws vx::Error when the table file already exists.
    static std::unique_ptr<DbfTableFile> create(const QString& path, const TableLayout& layout);
    static std::unique_ptr<DbfTableFile> open(const QString& path);
    ~DbfTableFile();
    DbfTableFile(const DbfTableFile&) = delete;
    DbfTableFile& operator=(const DbfTableFile&) = delete;

    const QString& path() const;
    const TableLayout& layout() const;
    quint32 recordCount() const;

    // One record: `values[i]` goes to field `fields[i]`; the other fields stay blank. Nothing is
    // appended when a value does not convert.
    void append(const QList<int>& fields, std::span<const QVariant> values);
    void flush();
    void close();

    // Every record not marked deleted, the columns named after the fields, their base table
    // `tableName`.
    std::unique_ptr<RowStore> readAll(const QString& tableName);

private:
    DbfTableFile();
    struct Private;
    std::unique_ptr<Private> const d;
};

// The memo file that goes with a table file.
QString memoPathFor(const QString& tablePath);

} // namespace vx::dbf
