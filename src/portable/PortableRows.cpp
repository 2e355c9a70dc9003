#include "portable/PortableRows.h"

#include "data/Error.h"
#include "portable/PortableDatabase.h"
#include "session/Conversions.h"

#include <QDateTime>
#include <algorithm>

namespace vx {

namespace {

// The portable database keeps narrower texts than the repository; a longer value is cut to the
// column's width rather than failing the export.
void setFitted(Recordset& target, int column, const QVariant& value) {
    const ColumnInfo& info = target.columnInfo(column);
    if (isTextType(info.type) && info.definedSize > 0 &&
        value.metaType().id() == QMetaType::QString && value.toString().size() > info.definedSize) {
        target.setValue(column, value.toString().left(info.definedSize));
        return;
    }
    target.setValue(column, value);
}

void setFitted(Recordset& target, const QString& column, const QVariant& value) {
    setFitted(target, target.fieldIndex(column), value);
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
    group.open(QStringLiteral("select * from KTGroup where [Name] = '") + m_groupTable +
                   QStringLiteral("'"),
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

void PortableRows::addItem(const Recordset& repositoryItem, const Recordset& repositoryGroupRow) {
    m_items.addNew();
    for (const char* column : {"itemid", "UserName", "Type", "Description", "GroupID", "lockcount",
                               "Tag", "attachment", "Deleted"})
        setFitted(m_items, QLatin1String(column), repositoryItem.value(QLatin1String(column)));
    m_items.setValue(QStringLiteral("idx_date"),
                     dayOnly(repositoryItem.value(QStringLiteral("idx_date"))));
    // The record set keeps the added row, so no requery is needed to see it.
    m_items.update();

    m_groupRows.addNew();
    const int columns = std::min(m_groupRows.fieldCount(), repositoryGroupRow.fieldCount());
    for (int i = 0; i < columns; ++i) {
        const QVariant value = repositoryGroupRow.value(i);
        switch (repositoryGroupRow.columnInfo(i).type) {
        case DataType::DBTimeStamp:
            m_groupRows.setValue(i, dayOnly(value));
            break;
        case DataType::Boolean:
            m_groupRows.setValue(i, value.isNull() ? QVariant(false) : value);
            break;
        default:
            setFitted(m_groupRows, i, value);
            break;
        }
    }
    m_groupRows.update();
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
    m_files.addNew();
    const int columns = std::min(m_files.fieldCount(), repositoryFile.fieldCount());
    for (int i = 0; i < columns; ++i)
        setFitted(m_files, i, repositoryFile.value(i));
    m_files.setValue(QStringLiteral("Volume"), volume);
    m_files.update();
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
    m_files.close();
    m_groupRows.close();
    m_items.close();
    m_groups.close();
    m_portable.commitTrans();
    m_portable.close();
    m_committed = true;
}

} // namespace vx
