#include "pickers/DataGridView.h"

#include <QKeyEvent>

namespace vx {

DataGridView::DataGridView(QWidget* parent)
    : QTableView(parent) {}

void DataGridView::moveDown() {
    QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
    QTableView::keyPressEvent(&down);
}

void DataGridView::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (state() != EditingState) {
            moveDown();
            event->accept();
            return;
        }
        break;
    case Qt::Key_Delete:
        if (state() != EditingState && currentIndex().isValid()) {
            emit deleteRowRequested(currentIndex().row());
            event->accept();
            return;
        }
        break;
    default:
        break;
    }
    QTableView::keyPressEvent(event);
}

void DataGridView::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
    QTableView::closeEditor(editor, hint);
    // The item delegates end an edit with this hint only for Enter.
    if (hint == QAbstractItemDelegate::SubmitModelCache)
        moveDown();
}

} // namespace vx
