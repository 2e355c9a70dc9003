#include "data/dbf/DbfLayout.h"

#include "data/Error.h"
#include "data/dbf/Cp1252.h"

#include <QtEndian>

namespace vx::dbf {

namespace {

constexpr char visualFoxProTable = 0x30;
constexpr char tableHasMemo = 0x02;
constexpr char windowsAnsiCodePage = 0x03;
constexpr int fileHeaderLength = 32;
constexpr int descriptorLength = 32;
constexpr char headerTerminator = 0x0D;

void putLittle16(QByteArray& bytes, int at, quint16 value) {
    qToLittleEndian(value, bytes.data() + at);
}

void putLittle32(QByteArray& bytes, int at, quint32 value) {
    qToLittleEndian(value, bytes.data() + at);
}

Error badTable(const QString& path, const QString& why) {
    return Error(ErrorNumber::Unspecified,
                 QStringLiteral("'%1' is not a FoxPro table: %2").arg(path, why));
}

} // namespace

TableLayout::TableLayout(QList<FieldDescriptor> fields)
    : m_fields(std::move(fields)) {
    int offset = 1; // after the deletion flag
    for (FieldDescriptor& field : m_fields) {
        field.offset = offset;
        offset += field.length;
        m_hasMemo = m_hasMemo || field.type == 'M';
    }
    m_recordLength = offset;
    m_headerLength =
        fileHeaderLength + descriptorLength * int(m_fields.size()) + 1 + BacklinkLength;
}

int TableLayout::indexOf(const QString& name) const {
    for (int i = 0; i < m_fields.size(); ++i) {
        if (m_fields[i].name.compare(name, Qt::CaseInsensitive) == 0)
            return i;
    }
    return -1;
}

QByteArray encodeLastUpdate(QDate date) {
    QByteArray bytes(3, '\0');
    bytes[0] = char(qBound(0, date.year() - 1900, 255));
    bytes[1] = char(date.month());
    bytes[2] = char(date.day());
    return bytes;
}

QByteArray TableLayout::encodeHeader(quint32 recordCount, QDate lastUpdate) const {
    QByteArray header(m_headerLength, '\0');
    header[0] = visualFoxProTable;
    header.replace(LastUpdateOffset, 3, encodeLastUpdate(lastUpdate));
    putLittle32(header, RecordCountOffset, recordCount);
    putLittle16(header, 8, quint16(m_headerLength));
    putLittle16(header, 10, quint16(m_recordLength));
    header[28] = m_hasMemo ? tableHasMemo : '\0';
    header[29] = windowsAnsiCodePage;

    int at = fileHeaderLength;
    for (const FieldDescriptor& field : m_fields) {
        const QByteArray name = toCp1252(field.name).left(10);
        header.replace(at, name.size(), name);
        header[at + 11] = field.type;
        putLittle32(header, at + 12, quint32(field.offset));
        header[at + 16] = char(field.length);
        header[at + 17] = char(field.decimals);
        at += descriptorLength;
    }
    header[at] = headerTerminator;
    return header; // the back-link area stays zero
}

TableLayout TableLayout::decodeHeader(const QByteArray& bytes, const QString& path,
                                      quint32* recordCount) {
    if (bytes.size() < fileHeaderLength + 1)
        throw badTable(path, QStringLiteral("the file is too short"));
    const auto* data = reinterpret_cast<const uchar*>(bytes.constData());
    const int headerLength = qFromLittleEndian<quint16>(data + 8);
    const int recordLength = qFromLittleEndian<quint16>(data + 10);
    if (headerLength > bytes.size() || headerLength < fileHeaderLength + 1)
        throw badTable(path, QStringLiteral("the header is damaged"));

    QList<FieldDescriptor> fields;
    for (int at = fileHeaderLength;
         at + descriptorLength <= headerLength && bytes[at] != headerTerminator;
         at += descriptorLength) {
        FieldDescriptor field;
        const QByteArray name = bytes.mid(at, 11);
        const qsizetype end = name.indexOf('\0');
        field.name = fromCp1252(name.constData(), end < 0 ? name.size() : end);
        field.type = bytes[at + 11];
        field.length = data[at + 16];
        field.decimals = data[at + 17];
        fields << field;
    }
    TableLayout layout(fields);
    if (layout.recordLength() != recordLength)
        throw badTable(path, QStringLiteral("the record length does not match its fields"));
    // Tables written elsewhere may keep a different header length; records start where it says.
    layout.m_headerLength = headerLength;
    if (recordCount)
        *recordCount = qFromLittleEndian<quint32>(data + RecordCountOffset);
    return layout;
}

} // namespace vx::dbf
