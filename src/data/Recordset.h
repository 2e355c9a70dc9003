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

/// The cursor a record set is opened with. Rows are held on the client, so every kind moves
/// both ways and sees the rows as read; only a forward-only open of a table (CommandType::Table
/// or TableDirect) reads its rows as it goes, which makes appending to a large table cheap.
enum class CursorType {
    ForwardOnly = 0, ///< Read from first to last; tables are read as the cursor moves.
    Keyset = 1,      ///< Rows read at open.
    Dynamic = 2,     ///< Rows read at open.
    Static = 3       ///< Rows read at open.
};
/// How edits of a record set reach the repository.
enum class LockType {
    ReadOnly = 1,       ///< No edits.
    Pessimistic = 2,    ///< Written as with Optimistic.
    Optimistic = 3,     ///< Each row written by update() or on moving away.
    BatchOptimistic = 4 ///< All pending rows written by updateBatch().
};
/// What the source text of Recordset::open is.
enum class CommandType {
    Text = 1,         ///< A SQL statement.
    Table = 2,        ///< A table name, read with all its columns.
    TableDirect = 512 ///< A table name, opened directly for appending and editing.
};
/// What Recordset::supports can be asked about.
enum class CursorOption {
    AddNew,      ///< Adding rows.
    Update,      ///< Changing rows.
    Delete,      ///< Deleting rows.
    Bookmark,    ///< Bookmarks.
    UpdateBatch, ///< Writing pending rows together.
    MovePrevious ///< Moving backwards.
};
/// The edit state of the current row.
enum class EditMode {
    None = 0,       ///< No edit.
    InProgress = 1, ///< Values changed, not yet written.
    Add = 2,        ///< A new row, not yet written.
    Delete = 4      ///< Deleted, not yet written (batch locking).
};

/// Identifies a row of a record set, whatever its position.
using Bookmark = qint64;

/// What a record set tells the grids bound to it. The "about to" kinds come before the record
/// set changes (a view may still read the old rows then); the others after it.
struct RecordsetChange {
    /// The kind of change.
    enum Kind {
        Reset,                ///< Every row may have changed.
        RowInserted,          ///< Rows were inserted at #position.
        RowRemoved,           ///< The row at #position was removed.
        RowChanged,           ///< Values of the row at #position changed.
        CurrentMoved,         ///< The current row moved to #position.
        AboutToReset,         ///< Every row is about to change.
        RowAboutToBeInserted, ///< Rows are about to be inserted at #position.
        RowAboutToBeRemoved   ///< The row at #position is about to be removed.
    } kind = Reset;           ///< What changed.
    /// 0-based position in the current order.
    qsizetype position = -1;
    /// Rows inserted at #position (rows read later arrive together).
    qsizetype count = 1;
};

/// A client-side cursor over materialised rows, after the platform's record set: copies share
/// one cursor. Positions are 0-based in the current order; bookmarks stay with their row across
/// sorts and requeries of unchanged rows. With optimistic locking an edit is written back to the
/// base table by update() (or on moving away); with batch locking, by updateBatch(). A row
/// changed by another session since it was read is not overwritten: the write fails. Every
/// failure throws vx::Error.
class VXDATA_EXPORT Recordset {
public:
    /// A closed record set.
    Recordset();
    /// Lets go of the shared cursor.
    ~Recordset();
    /// Another handle on the same cursor.
    Recordset(const Recordset&);
    /// Makes this a handle on the other's cursor.
    Recordset& operator=(const Recordset&);

    /// Runs `source` (a SELECT, or a table name with CommandType::Table or TableDirect) on the
    /// connection and reads its rows; stands on the first row.
    void open(const QString& source, const Connection& connection,
              CursorType cursor = CursorType::ForwardOnly, LockType lock = LockType::ReadOnly,
              CommandType command = CommandType::Text);
    /// \cond internal
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
    /// \endcond
    /// Closes the record set; pending edits are dropped.
    void close();
    /// True between open and close.
    bool isOpen() const;
    /// The source text the record set was opened with.
    QString source() const;
    /// The connection the record set reads and writes through.
    Connection activeConnection() const;
    /// How edits reach the repository.
    LockType lockType() const;

    /// True when the cursor stands after the last row (or there are no rows).
    bool eof() const;
    /// True when the cursor stands before the first row (or there are no rows).
    bool bof() const;
    /// The number of rows.
    qsizetype recordCount() const;
    /// Moves to the first row.
    void moveFirst();
    /// Moves to the last row.
    void moveLast();
    /// Moves to the next row, or past the last (eof()).
    void moveNext();
    /// Moves to the previous row, or before the first (bof()).
    void movePrevious();
    /// Moves by `rows` rows, backwards when negative.
    void move(qsizetype rows);
    /// 0-based position of the current row; -1 when before the first or after the last.
    qsizetype position() const;
    /// Moves to a 0-based position.
    void setPosition(qsizetype position);

    /// The current row's bookmark.
    Bookmark bookmark() const;
    /// Moves to the row of a bookmark.
    void setBookmark(Bookmark bookmark);
    /// The bookmark of the row at a 0-based position.
    Bookmark bookmarkAt(qsizetype position) const;
    /// The current position of a bookmark's row; -1 when the row is gone.
    qsizetype positionOf(Bookmark bookmark) const;

    /// The current order, "[col] ASC, other DESC"; empty for the order the engine returned.
    QString sort() const;
    /// Orders the rows; empty restores the order the engine returned.
    void setSort(const QString& sort);

    /// Runs the source again; keeps the sort; moves to the first row.
    void requery();

    /// Appends a new row and makes it current; update() writes it.
    void addNew();
    /// Writes the current row's edit to the base table.
    void update();
    /// Drops the current row's edit.
    void cancelUpdate();
    /// Deletes the current row (at once, or at updateBatch() with batch locking).
    void deleteCurrent();
    /// Writes every pending row (batch locking).
    void updateBatch();
    /// Drops every pending row (batch locking).
    void cancelBatch();
    /// Whether the record set can do what `option` names; results without a single base table
    /// with a key do not support updating.
    bool supports(CursorOption option) const;
    /// The edit state of the current row.
    EditMode editMode() const;

    /// The number of columns.
    int fieldCount() const;
    /// The column at a 0-based index.
    Field field(int index) const;
    /// The column of that name, compared without regard to case; throws ItemNotFound.
    Field field(const QString& name) const;
    /// The index of the column of that name, compared without regard to case; -1 when absent.
    int fieldIndex(const QString& name) const;
    /// Everything the result knows about a column.
    const ColumnInfo& columnInfo(int index) const;
    /// True when assigning to the column can reach the base table (not computed, not filled in
    /// by the engine) and the record set supports updating.
    bool isColumnUpdatable(int index) const;

    /// The current row's value in a column (a null QVariant for NULL).
    QVariant value(int column) const;
    /// The current row's value in the named column; throws ItemNotFound.
    QVariant value(const QString& name) const;
    /// Assigns a value in the current row, converted as Field::setValue does.
    void setValue(int column, const QVariant& value);
    /// Assigns a value in the named column of the current row.
    void setValue(const QString& name, const QVariant& value);
    /// The current row's value as read, before any pending change.
    QVariant originalValue(int column) const;
    /// Reads another row without moving the cursor (grids).
    QVariant valueAt(qsizetype position, int column) const;
    /// The first position at or after `from` whose value in `column` equals `value` (text
    /// compared without regard to case unless asked), or -1. Works on the stored values: no row
    /// is built.
    qsizetype find(int column, const QVariant& value, qsizetype from = 0,
                   Qt::CaseSensitivity textCase = Qt::CaseInsensitive) const;

    /// Calls `listener` with every change of the rows or the current row, for views bound to
    /// the record set; returns an id for unsubscribe().
    int subscribe(std::function<void(const RecordsetChange&)> listener);
    /// Stops the calls of a listener.
    void unsubscribe(int id);

    /// \cond internal
    const RowStore& rows() const;
    /// \endcond

private:
    explicit Recordset(std::shared_ptr<detail::RecordsetData> data);
    std::shared_ptr<detail::RecordsetData> d;
    friend class Field;
};

} // namespace vx
