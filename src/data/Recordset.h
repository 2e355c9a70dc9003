#pragma once

#include <QVariant>
#include <VXUILib/Connection.h>
#include <VXUILib/Field.h>
#include <VXUILib/vxdata_export.h>
#include <functional>
#include <memory>

namespace vx {

class RowStore;
namespace detail {
struct RecordsetData;
}

enum class CursorType { ForwardOnly = 0, Keyset = 1, Dynamic = 2, Static = 3 };
enum class LockType { ReadOnly = 1, Pessimistic = 2, Optimistic = 3, BatchOptimistic = 4 };
enum class CommandType { Text = 1, Table = 2, TableDirect = 512 };
enum class CursorOption { AddNew, Update, Delete, Bookmark, UpdateBatch, MovePrevious };
enum class EditMode { None = 0, InProgress = 1, Add = 2, Delete = 4 };

using Bookmark = qint64;

// What a record set tells the grids bound to it. The "about to" kinds come before the record
// set changes (a view may still read the old rows then); the others after it.
struct RecordsetChange {
    enum Kind {
        Reset,
        RowInserted,
        RowRemoved,
        RowChanged,
        CurrentMoved,
        AboutToReset,
        RowAboutToBeInserted,
        RowAboutToBeRemoved
    } kind = Reset;
    qsizetype position = -1; // 0-based position in the current order
    qsizetype count = 1;     // rows inserted at `position` (rows read later arrive together)
};

// A client-side cursor over materialised rows, after the platform's record set: copies share
// one cursor. Positions are 0-based in the current order; bookmarks stay with their row across
// sorts and requeries of unchanged rows. With optimistic locking an edit is written back to the
// base table by Update (or on moving away); with batch locking, by UpdateBatch.
class VXDATA_EXPORT Recordset {
public:
    Recordset();
    ~Recordset();
    Recordset(const Recordset&);
    Recordset& operator=(const Recordset&);

    void open(const QString& source, const Connection& connection,
              CursorType cursor = CursorType::ForwardOnly, LockType lock = LockType::ReadOnly,
              CommandType command = CommandType::Text);
    // Opens over the first rows of `source` read elsewhere (a ResultStream of another connection
    // of the same repository); appendRows adds the rest as they come. The rows stand in the
    // order they were read, which is the order `sort` gives when the engine was asked for it:
    // the record set reports `sort` without sorting them again. Requery and write-back go
    // through `connection`, as after open.
    void openRead(std::unique_ptr<RowStore> rows, const QString& source,
                  const Connection& connection, CursorType cursor, LockType lock,
                  const QString& sort);
    // Further rows of the same result, after the last row of the current order.
    void appendRows(const RowStore& rows);
    // A record set over rows made elsewhere (schema rowsets); read-only.
    static Recordset fromRows(std::unique_ptr<RowStore> rows);
    void close();
    bool isOpen() const;
    QString source() const;
    Connection activeConnection() const;
    LockType lockType() const;

    bool eof() const;
    bool bof() const;
    qsizetype recordCount() const;
    void moveFirst();
    void moveLast();
    void moveNext();
    void movePrevious();
    void move(qsizetype rows);
    // 0-based position of the current row; -1 when before the first or after the last.
    qsizetype position() const;
    void setPosition(qsizetype position);

    Bookmark bookmark() const;
    void setBookmark(Bookmark bookmark);
    Bookmark bookmarkAt(qsizetype position) const;
    qsizetype positionOf(Bookmark bookmark) const; // -1 when the row is gone

    // "[col] ASC, other DESC"; empty restores the order the engine returned.
    QString sort() const;
    void setSort(const QString& sort);

    // Runs the source again; keeps sort; moves to the first row.
    void requery();

    void addNew();
    void update();
    void cancelUpdate();
    void deleteCurrent();
    void updateBatch();
    void cancelBatch();
    bool supports(CursorOption option) const;
    EditMode editMode() const;

    int fieldCount() const;
    Field field(int index) const;
    Field field(const QString& name) const;    // throws ItemNotFound
    int fieldIndex(const QString& name) const; // case-insensitive; -1 when absent
    const ColumnInfo& columnInfo(int index) const;
    // True when assigning to the column can reach the base table (not computed, not filled in by
    // the engine) and the record set supports updating.
    bool isColumnUpdatable(int index) const;

    QVariant value(int column) const;
    QVariant value(const QString& name) const;
    void setValue(int column, const QVariant& value);
    void setValue(const QString& name, const QVariant& value);
    QVariant originalValue(int column) const;
    // Reading another row without moving the cursor (grids).
    QVariant valueAt(qsizetype position, int column) const;
    // The first position at or after `from` whose value in `column` equals `value` (text compared
    // without regard to case unless asked), or -1. Works on the stored values: no row is built.
    qsizetype find(int column, const QVariant& value, qsizetype from = 0,
                   Qt::CaseSensitivity textCase = Qt::CaseInsensitive) const;

    int subscribe(std::function<void(const RecordsetChange&)> listener);
    void unsubscribe(int id);

    const RowStore& rows() const;

private:
    explicit Recordset(std::shared_ptr<detail::RecordsetData> data);
    std::shared_ptr<detail::RecordsetData> d;
    friend class Field;
};

} // namespace vx
