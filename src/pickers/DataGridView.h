#pragma once

#include <QTableView>

namespace vx {

// A table view with the keys of a data grid: Enter moves down a row, also when it ends an edit,
// and Delete asks its owner to delete the current row instead of doing anything itself.
class DataGridView : public QTableView {
    Q_OBJECT

public:
    explicit DataGridView(QWidget* parent = nullptr);

signals:
    void deleteRowRequested(int row);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;

private:
    void moveDown();
};

} // namespace vx
