#include "portable/PortableRows.h"

#include "data/DataType.h"
#include "data/Error.h"
#include "data/Field.h"
#include "data/RowAppender.h"
#include "data/SqlQuoting.h"
#include "data/recordset/WriteTarget.h"
#include "portable/PortableDatabase.h"
#include "session/Conversions.h"

#include <QDateTime>
#include <algorithm>

namespace vx {

namespace {

// The portable database keeps narrower texts than the repository; a longer value is cut to the
// column's width rather than failing the export.
QVariant fitted(const ColumnInfo& info, const QVariant& value) {
    if (isTextType(info.type) && info.definedSize > 0 &&
        value.metaType().id() == QMetaType::QString && value.toString().size() > info.definedSize)
        return value.toString().left(info.definedSize);
    return value;
}

void setFitted(Recordset& target, const QString& column, const QVariant& value) {
    const int index = target.fieldIndex(column);
    target.setValue(index, fitted(target.columnInfo(index), value));
}

// A value as a record set would store it in the column: cut to fit, converted, Yes/No as -1/0.
QVariant storable(const Recordset& target, int column, const QVariant& value) {
    const ColumnInfo& info = target.columnInfo(column);
    return storedValue(convertForColumn(fitted(info, value), info), info);
}

std::span<const QVariant> spanOf(const QVariantList& values) {
    return {values.constData(), size_t(values.size())};
}

// Dates travel as their day alone (the viewer's "dd/mm/yyyy"): local midnight of the value's
// day. The day itself is handed over, not its text, so the user's locale cannot swap day and
// month.
QVariant dayOnly(const QVariant& value) {
    if (value.isNull())
        return {};
    const QDateTime stamp = value.toDateTime();
    if (!stamp.isValid())
        return QDateTime();
    return QDateTime(stamp.date(), QTime(0, 0));
}

} // namespace

PortableRows::PortableRows(const QString& databasePath, Connection repository, QString groupTable)
    : m_repository(std::move(repository))
    , m_groupTable(std::move(groupTable)) {
    m_portable.open(portableConnectionText(databasePath));
    m_portable.beginTrans();
    m_files = openTable(QStringLiteral("KTFile"));
    m_groupRows = openTable(m_groupTable);
    m_items = openTable(QStringLiteral("KTItem"));
    m_groups = openTable(QStringLiteral("KTGroup"));
}

PortableRows::~PortableRows() {
    if (m_committed)
        return;
    try {
        m_itemAppender.reset();
        m_groupRowAppender.reset();
        m_fileAppender.reset();
        m_files.close();
        m_groupRows.close();
        m_items.close();
        m_groups.close();
        m_portable.close(); // an open transaction is rolled back
    } catch (...) {         // a failed export is being cleaned up; its error is already reported
    }
}

Recordset PortableRows::openTable(const QString& table) const {
    Recordset recordset;
    recordset.open(table, m_portable, CursorType::Keyset, LockType::Optimistic,
                   CommandType::TableDirect);
    return recordset;
}

void PortableRows::addGroup() {
    Recordset group;
    group.open(QStringLiteral("select * from KTGroup where [Name] = ") +
                   sqlTextLiteral(m_groupTable),
               m_repository);
    if (group.eof())
        return;
    m_groups.addNew();
    for (const char* column : {"GroupID", "name", "Description", "Path", "Deleted"})
        setFitted(m_groups, QLatin1String(column), group.value(QLatin1String(column)));
    m_groups.update();
}

void PortableRows::addPlaceholderItem() {
    m_items.addNew();
    m_items.setValue(QStringLiteral("itemid"), 0);
    m_items.setValue(QStringLiteral("idx_date"), QDateTime(QDate::currentDate(), QTime(0, 0)));
    m_items.setValue(QStringLiteral("UserName"), QStringLiteral("void"));
    m_items.setValue(QStringLiteral("Type"), 2);
    m_items.setValue(QStringLiteral("Description"), QStringLiteral("void"));
    m_items.setValue(QStringLiteral("GroupID"), 1);
    m_items.setValue(QStringLiteral("lockcount"), 0);
    m_items.setValue(QStringLiteral("Tag"), QStringLiteral("void"));
    m_items.setValue(QStringLiteral("attachment"), true);
    m_items.setValue(QStringLiteral("Deleted"), true);
    m_items.update();
}

// The columns each exported document fills, in the order its values are appended.
const QStringList itemColumns{QStringLiteral("itemid"),  QStringLiteral("UserName"),
                              QStringLiteral("Type"),    QStringLiteral("Description"),
                              QStringLiteral("GroupID"), QStringLiteral("lockcount"),
                              QStringLiteral("Tag"),     QStringLiteral("attachment"),
                              QStringLiteral("Deleted"), QStringLiteral("idx_date")};

void PortableRows::addItem(const Recordset& repositoryItem, const Recordset& repositoryGroupRow) {
    if (!m_itemAppender) {
        for (const QString& column : itemColumns)
            m_itemColumns << m_items.fieldIndex(column);
        m_itemAppender = m_portable.appendRows(QStringLiteral("KTItem"), itemColumns);
    }
    QVariantList item;
    for (qsizetype i = 0; i + 1 < itemColumns.size(); ++i)
        item << storable(m_items, m_itemColumns[i], repositoryItem.value(itemColumns[i]));
    item << storable(m_items, m_itemColumns.back(),
                     dayOnly(repositoryItem.value(QStringLiteral("idx_date"))));
    m_itemAppender->append(spanOf(item));

    const int columns = std::min(m_groupRows.fieldCount(), repositoryGroupRow.fieldCount());
    if (!m_groupRowAppender) {
        QStringList names;
        for (int i = 0; i < columns; ++i)
            names << m_groupRows.columnInfo(i).name;
        m_groupRowAppender = m_portable.appendRows(m_groupTable, names);
    }
    QVariantList groupRow;
    for (int i = 0; i < columns; ++i) {
        const QVariant value = repositoryGroupRow.value(i);
        switch (repositoryGroupRow.columnInfo(i).type) {
        case DataType::DBTimeStamp:
            groupRow << storable(m_groupRows, i, dayOnly(value));
            break;
        case DataType::Boolean:
            groupRow << storable(m_groupRows, i, value.isNull() ? QVariant(false) : value);
            break;
        default:
            groupRow << storable(m_groupRows, i, value);
            break;
        }
    }
    m_groupRowAppender->append(spanOf(groupRow));
}

void PortableRows::addFile(const Recordset& repositoryFile, const QString& volume) {
    const QString name = repositoryFile.value(QStringLiteral("fname")).toString();
    const qint32 width =
        m_files.columnInfo(m_files.fieldIndex(QStringLiteral("fname"))).definedSize;
    // The viewer finds the document by this name, so it is never cut.
    if (name.size() > width)
        throw Error(ErrorNumber::ValueDoesNotFit,
                    QStringLiteral("The file name %1 is longer than the %2 characters the "
                                   "portable database keeps.")
                        .arg(name)
                        .arg(width));
    const int columns = std::min(m_files.fieldCount(), repositoryFile.fieldCount());
    const int volumeColumn = m_files.fieldIndex(QStringLiteral("Volume"));
    if (!m_fileAppender) {
        QStringList names;
        for (int i = 0; i < columns; ++i)
            names << m_files.columnInfo(i).name;
        if (volumeColumn >= columns)
            names << m_files.columnInfo(volumeColumn).name;
        m_fileAppender = m_portable.appendRows(QStringLiteral("KTFile"), names);
    }
    QVariantList file;
    for (int i = 0; i < columns; ++i)
        file << storable(m_files, i,
                         i == volumeColumn ? QVariant(volume) : repositoryFile.value(i));
    if (volumeColumn >= columns)
        file << storable(m_files, volumeColumn, volume);
    m_fileAppender->append(spanOf(file));
}

void PortableRows::copyWordLists() {
    Recordset words;
    words.open(QStringLiteral("select * from dictionary"), m_repository);
    Recordset portableWords = openTable(QStringLiteral("dictionary"));
    for (; !words.eof(); words.moveNext()) {
        portableWords.addNew();
        portableWords.setValue(QStringLiteral("words"), words.value(QStringLiteral("words")));
        portableWords.update();
    }

    Recordset keywords;
    keywords.open(QStringLiteral("select * from keywords"), m_repository);
    Recordset portableKeywords = openTable(QStringLiteral("keywords"));
    for (; !keywords.eof(); keywords.moveNext()) {
        portableKeywords.addNew();
        portableKeywords.setValue(QStringLiteral("keyword"),
                                  keywords.value(QStringLiteral("keyword")));
        portableKeywords.setValue(QStringLiteral("itemid"),
                                  keywords.value(QStringLiteral("itemid")));
        portableKeywords.update();
    }
}

void PortableRows::copyHintTables(const QStringList& hintTables) {
    for (const QString& entry : hintTables) {
        const qsizetype equals = entry.indexOf(u'=');
        const QString table = equals < 0 ? entry : entry.left(equals);
        const QString column = equals < 0 ? QString() : entry.mid(equals + 1);
        Recordset portableHints = openTable(table);
        Recordset hints;
        hints.open(QStringLiteral("SELECT * FROM ") + table, m_repository);
        for (; !hints.eof(); hints.moveNext()) {
            portableHints.addNew();
            setFitted(portableHints, column, hints.value(column));
            portableHints.update();
        }
    }
}

void PortableRows::close() {
    for (std::unique_ptr<RowAppender>* appender :
         {&m_itemAppender, &m_groupRowAppender, &m_fileAppender}) {
        if (*appender)
            (*appender)->finish();
        appender->reset();
    }
    m_files.close();
    m_groupRows.close();
    m_items.close();
    m_groups.close();
    m_portable.commitTrans();
    m_portable.close();
    m_committed = true;
}

} // namespace vx
