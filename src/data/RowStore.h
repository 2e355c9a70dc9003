#pragma once

#include "data/ColumnInfo.h"

#include <QDateTime>
#include <QVariant>
#include <VXUILib/vxdata_export.h>
#include <cstdint>
#include <memory>

namespace vx {

// Dates are kept as seconds on the wall clock (no time zone, as the repository stores them):
// Julian day * 86400 + seconds of the day.
qint64 packDateTime(QDate date, QTime time);
qint64 packDateTime(const QDateTime& value);
QDateTime unpackDateTime(qint64 packed);
// Parses "YYYY-MM-DD", "YYYY-MM-DD HH:MM:SS" and "YYYY-MM-DDTHH:MM:SS[.fff]" as the engines
// store them. Returns false for anything else.
bool parseStoredDateTime(const char* text, qsizetype size, qint64& packed);

// The rows of a materialised result, held compactly: one typed vector per column, text in one
// UTF-8 arena per column, a null bitmap. Rows are addressed by their storage index, which never
// changes while the store lives (bookmarks rest on it); sorting and deleting happen in the
// record set's order vector, not here.
class VXDATA_EXPORT RowStore {
public:
    explicit RowStore(ColumnList columns);
    ~RowStore();
    RowStore(const RowStore&) = delete;
    RowStore& operator=(const RowStore&) = delete;

    const ColumnList& columns() const;
    ColumnList& columns();
    int columnCount() const;
    qsizetype rowCount() const;
    void reserve(qsizetype rows);

    // Filling, used by drivers: one call per column in column order, then endRow().
    void appendNull();
    void appendInteger(qint64 value);
    void appendReal(double value);
    void appendText(const char* utf8, qsizetype size);
    void appendText(const QString& value);
    void appendDateTime(qint64 packed);
    void endRow();

    // A new row with every cell null; returns its storage index.
    qsizetype appendEmptyRow();
    // Appends every row of a store read from the same result (same columns, same storage), as
    // a result read in pieces arrives. Throws when the columns differ.
    void appendRows(const RowStore& other);

    bool isNull(qsizetype row, int column) const;
    // Null is an invalid QVariant; otherwise int (SmallInt, Integer), qint64 (BigInt), bool,
    // double, QString or QDateTime by the column's type.
    QVariant value(qsizetype row, int column) const;
    // The value must already be of the column's kind (see convertForColumn); invalid sets null.
    void setValue(qsizetype row, int column, const QVariant& value);

    // Raw access for sort keys and scans; the caller checks the column's storage kind.
    qint64 integerAt(qsizetype row, int column) const;
    double realAt(qsizetype row, int column) const;
    QString textAt(qsizetype row, int column) const;
    // The UTF-8 bytes of a text cell; valid until the cell is written again.
    std::pair<const char*, qsizetype> utf8At(qsizetype row, int column) const;

    // Bytes held for the rows (vectors' capacity, arenas, overflow text), for measurements.
    std::size_t memoryBytes() const;

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx
