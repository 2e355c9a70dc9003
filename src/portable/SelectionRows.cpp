#include "portable/SelectionRows.h"

#include "session/Conversions.h"

#include <QSet>
#include <algorithm>

namespace vx {

namespace {

// Reads `select * from TABLE where itemid in (...)` and notes where each item's first row lies.
Recordset readRows(const QString& table, const QString& idList, const Connection& repository,
                   QHash<qint32, qsizetype>& firstPositions) {
    Recordset rows;
    rows.open(QStringLiteral("select * from ") + table + QStringLiteral(" where itemid in (") +
                  idList + u')',
              repository, CursorType::Static, LockType::ReadOnly);
    firstPositions.clear();
    const int itemColumn = rows.fieldIndex(QStringLiteral("itemid"));
    const qsizetype count = rows.recordCount();
    for (qsizetype position = 0; position < count; ++position) {
        const QVariant id = rows.valueAt(position, itemColumn);
        if (!id.isNull() && !firstPositions.contains(id.toInt()))
            firstPositions.insert(id.toInt(), position);
    }
    return rows;
}

} // namespace

SelectionRows::SelectionRows(Connection repository, QString groupTable, QList<qint32> selection)
    : m_repository(std::move(repository))
    , m_groupTable(std::move(groupTable))
    , m_selection(std::move(selection)) {}

void SelectionRows::loadChunkAt(qsizetype index) {
    m_chunkStart = index;
    const qsizetype end = std::min(m_selection.size(), index + ChunkSize);
    QSet<qint32> seen;
    QString idList;
    for (qsizetype i = index; i < end; ++i) {
        const qint32 id = m_selection.at(i);
        if (seen.contains(id))
            continue;
        seen.insert(id);
        if (!idList.isEmpty())
            idList += u',';
        idList += numberToText(qint64(id));
    }
    m_files = readRows(QStringLiteral("ktfile"), idList, m_repository, m_filePositions);
    m_groupRows = readRows(m_groupTable, idList, m_repository, m_groupRowPositions);
    m_items = readRows(QStringLiteral("KTItem"), idList, m_repository, m_itemPositions);
}

bool SelectionRows::moveTo(qsizetype index) {
    if (m_chunkStart < 0 || index < m_chunkStart || index >= m_chunkStart + ChunkSize)
        loadChunkAt(index);
    const qint32 id = m_selection.at(index);
    const auto file = m_filePositions.constFind(id);
    const auto groupRow = m_groupRowPositions.constFind(id);
    const auto item = m_itemPositions.constFind(id);
    if (file == m_filePositions.cend() || groupRow == m_groupRowPositions.cend() ||
        item == m_itemPositions.cend())
        return false;
    m_files.setPosition(*file);
    m_groupRows.setPosition(*groupRow);
    m_items.setPosition(*item);
    return true;
}

} // namespace vx
