#pragma once

#include <QTableView>

class QMenu;

namespace vx {

// A table view with the keys of a data grid: Enter moves down a row, also when it ends an edit,
// and Delete asks its owner to delete the current row instead of doing anything itself. The
// right button (or the menu key) offers the same deletion for the row under it.
class DataGridView : public QTableView {
    Q_OBJECT

public:
    explicit DataGridView(QWidget* parent = nullptr);

signals:
    void deleteRowRequested(int row);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;

private:
    void moveDown();

    QMenu* m_rowMenu = nullptr; // child, owned by Qt; made on first use
    int m_menuRow = -1;
};

} // namespace vx
