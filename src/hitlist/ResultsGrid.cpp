#include "hitlist/ResultsGrid.h"

#include "data/Error.h"
#include "data/model/RecordsetModel.h"
#include "session/Settings.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QSet>
#include <cmath>

namespace vx {

namespace {
// Stored widths are in the grid's own units; the default of 1000 opens a column wide enough
// for a date or a short name (125 pixels).
constexpr double UnitsPerPixel = 8.0;
constexpr double DefaultWidth = 1000.0;
} // namespace

ResultsGrid::ResultsGrid(QWidget* parent)
    : QTableView(parent)
    , m_model(new RecordsetModel(this)) {
    setObjectName(QStringLiteral("HitList"));
    setModel(m_model);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    // Results are edited through the record form, never in the cells.
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    // Whole rows are selected, so Tab moving from cell to cell would only trap the keyboard here.
    setTabKeyNavigation(false);
    setSortingEnabled(false);
    setWordWrap(false);
    setAlternatingRowColors(true);
    // Fixed row heights and no sizing to contents: nothing walks every row when a large result
    // is bound.
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    // Row numbers say nothing about a document and would need sizing to the row count.
    verticalHeader()->hide();
    horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    horizontalHeader()->setHighlightSections(false);
    // Narrow columns show the start of their caption, not its middle.
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    horizontalHeader()->setSectionsClickable(true);
    connect(horizontalHeader(), &QHeaderView::sectionClicked, this, &ResultsGrid::headClick);
    connect(horizontalHeader(), &QHeaderView::sectionResized, this,
            [this](int column, int, int size) {
                if (!m_applyingWidths)
                    storeColumnWidth(column, size);
            });
    connect(m_model, &RecordsetModel::currentRowChanged, this, [this](int) {
        if (m_followPauses > 0)
            m_followMissed = true;
        else
            followRecordset(false);
    });
}

ResultsGrid::FollowPause::FollowPause(ResultsGrid& grid)
    : m_grid(grid) {
    ++m_grid.m_followPauses;
}

ResultsGrid::FollowPause::~FollowPause() {
    if (--m_grid.m_followPauses > 0 || !m_grid.m_followMissed)
        return;
    m_grid.m_followMissed = false;
    try {
        m_grid.followRecordset(false);
    } catch (const Error&) {
        // Only the grid's current row lags; the walk's own result stands.
    }
}

ResultsGrid::~ResultsGrid() = default;

int ResultsGrid::unitsToPixels(double units) {
    return int(std::lround(units / UnitsPerPixel));
}

double ResultsGrid::pixelsToUnits(int pixels) {
    return pixels * UnitsPerPixel;
}

void ResultsGrid::bind(const Recordset& recordset) {
    m_model->setRecordset(recordset);
}

Recordset ResultsGrid::boundRecordset() const {
    return m_model->recordset();
}

void ResultsGrid::applyColumnWidths(const QString& section, const QString& suffix) {
    m_widthSection = section;
    m_widthSuffix = suffix;
    const Recordset recordset = m_model->recordset();
    m_applyingWidths = true;
    // One read of the section rather than one per column: each read parses the whole store.
    const QHash<QString, QString> stored = getSectionSettings(section);
    for (int column = 0; column < m_model->columnCount(); ++column) {
        // A bad stored value must not stop the other columns.
        try {
            const QString key = recordset.columnInfo(column).name + suffix;
            bool ok = false;
            double units = stored.value(key.toLower(), QString::number(DefaultWidth)).toDouble(&ok);
            if (!ok || units < 0)
                units = DefaultWidth;
            setColumnWidth(column, unitsToPixels(units));
        } catch (const Error&) {
        }
    }
    m_applyingWidths = false;
}

void ResultsGrid::applyColumnFormats() {
    Recordset recordset = m_model->recordset();
    if (!recordset.isOpen())
        return;
    const bool onRow = !recordset.eof() && !recordset.bof();
    for (int column = 0; column < recordset.fieldCount(); ++column) {
        try {
            const DataType type = recordset.columnInfo(column).type;
            if (type == DataType::Boolean)
                m_model->setColumnFormat(column, RecordsetModel::YesNo);
            else if (type == DataType::Date && onRow && !recordset.value(column).isNull())
                m_model->setColumnFormat(column, RecordsetModel::ShortDate);
        } catch (const Error&) {
        }
    }
}

void ResultsGrid::storeColumnWidth(int column, int pixels) {
    const Recordset recordset = m_model->recordset();
    if (m_widthSection.isEmpty() || column < 0 || column >= recordset.fieldCount())
        return;
    try {
        saveSetting(m_widthSection, recordset.columnInfo(column).name + m_widthSuffix,
                    QString::number(pixelsToUnits(pixels)));
    } catch (const Error&) {
    }
}

QList<Bookmark> ResultsGrid::selectedBookmarks() const {
    QList<Bookmark> bookmarks;
    if (!selectionModel())
        return bookmarks;
    QSet<int> seen;
    // Ranges come in the order they were added, so this is the order of selection.
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange& range : selection) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            if (seen.contains(row))
                continue;
            seen.insert(row);
            const Bookmark bookmark = m_model->bookmarkForRow(row);
            if (bookmark != 0)
                bookmarks << bookmark;
        }
    }
    return bookmarks;
}

void ResultsGrid::selectRow(int row) {
    if (row < 0 || row >= m_model->rowCount())
        return;
    selectionModel()->select(m_model->index(row, 0),
                             QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

void ResultsGrid::selectRowsFrom(int row) {
    const int last = m_model->rowCount() - 1;
    if (row < 0 || row > last || m_model->columnCount() == 0)
        return;
    selectionModel()->select(
        QItemSelection(m_model->index(row, 0), m_model->index(last, m_model->columnCount() - 1)),
        QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

void ResultsGrid::followRecordset(bool select) {
    const Recordset recordset = m_model->recordset();
    if (!recordset.isOpen() || m_model->columnCount() == 0)
        return;
    const int row = int(recordset.position());
    if (row < 0 || row >= m_model->rowCount())
        return;
    const int column = qMax(0, currentIndex().column());
    const QModelIndex index = m_model->index(row, column);
    const auto flags = select ? QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows
                              : QItemSelectionModel::NoUpdate;
    if (index != currentIndex())
        selectionModel()->setCurrentIndex(index, flags);
    else if (select)
        selectionModel()->select(index, flags);
    scrollTo(index);
}

void ResultsGrid::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTableView::currentChanged(current, previous);
    if (!current.isValid() || current.row() == previous.row())
        return;
    Recordset recordset = m_model->recordset();
    // A row the user chose: the record set follows the grid.
    try {
        if (recordset.isOpen() && recordset.position() != current.row())
            recordset.setPosition(current.row());
    } catch (const Error&) {
        return;
    }
    emit rowColChange();
}

void ResultsGrid::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() == QContextMenuEvent::Mouse) {
        const int column = columnAt(event->pos().x());
        if (column >= 0)
            emit columnMenuRequested(column, event->globalPos());
        return;
    }
    requestColumnMenu(currentIndex().column());
}

void ResultsGrid::keyPressEvent(QKeyEvent* event) {
    const bool menuKey = event->key() == Qt::Key_Menu && event->modifiers() == Qt::NoModifier;
    const bool shiftF10 = event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier;
    if (menuKey || shiftF10) {
        requestColumnMenu(currentIndex().column());
        return;
    }
    QTableView::keyPressEvent(event);
}

void ResultsGrid::requestColumnMenu(int column) {
    if (column < 0 || column >= m_model->columnCount())
        column = horizontalHeader()->logicalIndexAt(0);
    if (column < 0)
        return;
    // Below the column's header, where a click on it would have opened the menu.
    QHeaderView* header = horizontalHeader();
    const int x = qBound(0, header->sectionViewportPosition(column), header->width() - 1);
    emit columnMenuRequested(column, header->mapToGlobal(QPoint(x, header->height())));
}

void ResultsGrid::mouseDoubleClickEvent(QMouseEvent* event) {
    QTableView::mouseDoubleClickEvent(event);
    if (indexAt(event->position().toPoint()).isValid())
        emit dblClick();
}

} // namespace vx
