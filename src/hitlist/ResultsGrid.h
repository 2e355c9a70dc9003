#pragma once

#include "data/Recordset.h"

#include <QList>
#include <QString>
#include <QTableView>

namespace vx {

class RecordsetModel;

// The hit list's result grid ("HitList"): a table view over one RecordsetModel that follows the
// bound record set's current row, keeps a multi-row selection addressed by bookmarks and lays
// its columns out from the remembered widths.
//
// Widths are kept in the grid's own units, fifteen to a pixel (as twips are on a standard
// screen), so the stored default 1000 opens a column about 67 pixels wide. unitsToPixels and
// pixelsToUnits are the one place that knows this.
class ResultsGrid : public QTableView {
    Q_OBJECT

public:
    explicit ResultsGrid(QWidget* parent = nullptr);
    ~ResultsGrid() override;

    static int unitsToPixels(double units);
    static double pixelsToUnits(int pixels);

    RecordsetModel* recordsetModel() const { return m_model; }
    // Binds a record set (or a closed one to empty the grid); the current row follows it.
    void bind(const Recordset& recordset);
    Recordset boundRecordset() const;

    // Column widths from the settings section; `suffix` is appended to each field name ("KTRev"
    // for the versions view). Columns never stored open at 1000 units.
    void applyColumnWidths(const QString& section, const QString& suffix);
    // Yes/No for Boolean fields, Short Date for date fields with a value in the current row.
    void applyColumnFormats();
    // Where a user's resize is stored (set with the widths).
    QString widthSection() const { return m_widthSection; }

    // The selected rows' bookmarks, in the order they were selected.
    QList<Bookmark> selectedBookmarks() const;
    void selectRow(int row);
    // Selects every row from `row` to the last.
    void selectRowsFrom(int row);
    // Puts the grid's current row on the record set's current row; `select` also makes that
    // row the selected one.
    void followRecordset(bool select);

    // While one lives, the grid does not follow the record set's moves: a walk over many rows
    // would otherwise scroll and repaint once a row. The grid catches up when the last one ends.
    class FollowPause {
    public:
        explicit FollowPause(ResultsGrid& grid);
        ~FollowPause();
        FollowPause(const FollowPause&) = delete;
        FollowPause& operator=(const FollowPause&) = delete;

    private:
        ResultsGrid& m_grid;
    };

signals:
    // The grid's current row changed (by the user or by following the record set).
    void rowColChange();
    void headClick(int column);
    // The menu key, Shift+F10 or a right click asks for the column menu a header click opens:
    // the current cell's column from the keyboard, the one under the mouse otherwise.
    void columnMenuRequested(int column, const QPoint& globalPosition);
    void dblClick();

protected:
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void storeColumnWidth(int column, int pixels);
    void requestColumnMenu(int column);

    RecordsetModel* const m_model; // child, owned by Qt
    QString m_widthSection;
    QString m_widthSuffix;
    bool m_applyingWidths = false;
    int m_followPauses = 0;
    bool m_followMissed = false; // the record set moved during a pause
};

} // namespace vx
