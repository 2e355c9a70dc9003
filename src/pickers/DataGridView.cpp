#include "pickers/DataGridView.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>

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

void DataGridView::contextMenuEvent(QContextMenuEvent* event) {
    const bool byMouse = event->reason() == QContextMenuEvent::Mouse;
    const QModelIndex index = byMouse ? indexAt(event->pos()) : currentIndex();
    if (!index.isValid() || state() == EditingState)
        return;
    setCurrentIndex(index);
    if (!m_rowMenu) {
        m_rowMenu = new QMenu(this);
        m_rowMenu->setObjectName(QStringLiteral("rowMenu"));
        QAction* remove = m_rowMenu->addAction(tr("&Delete Row"));
        remove->setObjectName(QStringLiteral("deleteRow"));
        connect(remove, &QAction::triggered, this, [this] {
            if (m_menuRow >= 0)
                emit deleteRowRequested(m_menuRow);
        });
    }
    m_menuRow = index.row();
    const QPoint at =
        byMouse ? event->globalPos() : viewport()->mapToGlobal(visualRect(index).bottomLeft());
    m_rowMenu->popup(at);
}

void DataGridView::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
    QTableView::closeEditor(editor, hint);
    // The item delegates end an edit with this hint only for Enter.
    if (hint == QAbstractItemDelegate::SubmitModelCache)
        moveDown();
}

} // namespace vx
