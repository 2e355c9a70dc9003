#pragma once

#include "data/Connection.h"
#include "data/Recordset.h"

#include <QHash>
#include <QList>
#include <QString>

namespace vx {

// The repository rows of the selected documents (file, group-table and KTItem rows), read a
// chunk of item ids at a time rather than three queries per document. Per document it offers the
// same rows the queries "... where itemid = N" return first, in the engine's order.
class SelectionRows {
public:
    // Item ids read per query; keeps the statement short and the rows held small.
    static constexpr qsizetype ChunkSize = 500;

    SelectionRows(Connection repository, QString groupTable, QList<qint32> selection);

    // Moves the three record sets to the rows of the selection's document at `index` (0-based),
    // reading the next chunk when needed. False when the document lacks any of the three rows.
    bool moveTo(qsizetype index);

    const Recordset& file() const { return m_files; }
    const Recordset& groupRow() const { return m_groupRows; }
    const Recordset& item() const { return m_items; }

private:
    void loadChunkAt(qsizetype index);

    Connection m_repository;
    QString m_groupTable;
    QList<qint32> m_selection;
    qsizetype m_chunkStart = -1;
    Recordset m_files;
    Recordset m_groupRows;
    Recordset m_items;
    // Item id to the position of its first row in each record set.
    QHash<qint32, qsizetype> m_filePositions;
    QHash<qint32, qsizetype> m_groupRowPositions;
    QHash<qint32, qsizetype> m_itemPositions;
};

} // namespace vx
