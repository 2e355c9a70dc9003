#pragma once

#include "data/Connection.h"
#include "data/Recordset.h"
#include "data/RowAppender.h"

#include <QString>
#include <QStringList>
#include <memory>

namespace vx {

// Fills an export's portable database from the repository: the group row, each exported
// document's item, group-table and file rows, the word lists and the hint tables. All of it is
// written in one transaction, committed by close(); dropping the object without close() leaves
// the database without the rows.
class PortableRows {
public:
    PortableRows(const QString& databasePath, Connection repository, QString groupTable);
    ~PortableRows();
    PortableRows(const PortableRows&) = delete;
    PortableRows& operator=(const PortableRows&) = delete;

    // The repository's KTGroup row of the group, when there is one.
    void addGroup();
    // The itemid 0 row the viewer expects before the first real item.
    void addPlaceholderItem();
    // Copies the current rows of the repository's KTItem and group-table record sets.
    void addItem(const Recordset& repositoryItem, const Recordset& repositoryGroupRow);
    // Copies the current file row, with the volume it went to ("" for none).
    void addFile(const Recordset& repositoryFile, const QString& volume);
    // The dictionary and keywords tables, whole.
    void copyWordLists();
    // One table per "table=column" entry, filled from the repository table of that name.
    void copyHintTables(const QStringList& hintTables);

    // Commits and closes the portable database.
    void close();

private:
    Recordset openTable(const QString& table) const;

    Connection m_repository;
    Connection m_portable;
    QString m_groupTable;
    Recordset m_files;
    Recordset m_groupRows;
    Recordset m_items;
    Recordset m_groups;
    // Each document's rows go in through appenders (a record set's per-row work cost more than
    // the rest of the export); the record sets above describe the columns.
    std::unique_ptr<RowAppender> m_itemAppender;
    std::unique_ptr<RowAppender> m_groupRowAppender;
    std::unique_ptr<RowAppender> m_fileAppender;
    QList<int> m_itemColumns;
    bool m_committed = false;
};

} // namespace vx
