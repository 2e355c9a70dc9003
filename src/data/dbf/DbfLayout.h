#pragma once

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>

namespace vx::dbf {

// One column of a FoxPro table as its field descriptor records it.
struct FieldDescriptor {
    QString name;     // at most 10 characters
    char type = 'C';  // 'C' text, 'N' number, 'D' date, 'L' logical, 'M' memo
    int length = 0;   // bytes in the record
    int decimals = 0; // 'N' only
    int offset = 0;   // from the start of the record (the deletion flag is byte 0)
};

// The fixed part of a Visual FoxPro table: its fields and the sizes that follow from them.
class TableLayout {
public:
    TableLayout() = default;
    explicit TableLayout(QList<FieldDescriptor> fields);

    const QList<FieldDescriptor>& fields() const { return m_fields; }
    int headerLength() const { return m_headerLength; }
    int recordLength() const { return m_recordLength; }
    bool hasMemo() const { return m_hasMemo; }
    // Case-insensitive; -1 when absent.
    int indexOf(const QString& name) const;

    // The header with its field descriptors, terminator and back-link area.
    QByteArray encodeHeader(quint32 recordCount, QDate lastUpdate) const;
    // Reads a header; throws vx::Error naming `path` when it is not a table this driver knows.
    static TableLayout decodeHeader(const QByteArray& bytes, const QString& path,
                                    quint32* recordCount);

private:
    QList<FieldDescriptor> m_fields;
    int m_headerLength = 0;
    int m_recordLength = 1;
    bool m_hasMemo = false;
};

// Where the header keeps the date of last update (3 bytes) and the record count (4 bytes).
inline constexpr int LastUpdateOffset = 1;
inline constexpr int RecordCountOffset = 4;
inline constexpr char EndOfFile = 0x1A;
// The back-link area after the field descriptors: empty for a table outside any database.
inline constexpr int BacklinkLength = 263;

QByteArray encodeLastUpdate(QDate date);

} // namespace vx::dbf
