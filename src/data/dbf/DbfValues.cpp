#include "data/dbf/DbfValues.h"

#include "data/Error.h"
#include "data/dbf/Cp1252.h"

#include <QDateTime>
#include <QtEndian>
#include <cstring>

namespace vx::dbf {

namespace {

Error conversionError(const FieldDescriptor& field, const QVariant& value, const QString& why) {
    return Error(ErrorNumber::TypeMismatch, QStringLiteral("Cannot store \"%1\" in field %2: %3")
                                                .arg(value.toString(), field.name, why));
}

void writeText(char* out, const FieldDescriptor& field, const QVariant& value) {
    const QByteArray bytes = toCp1252(value.toString());
    const qsizetype size = std::min<qsizetype>(bytes.size(), field.length);
    std::memcpy(out, bytes.constData(), size_t(size));
}

void writeNumber(char* out, const FieldDescriptor& field, const QVariant& value) {
    bool ok = false;
    const double number = value.toDouble(&ok);
    if (!ok)
        throw conversionError(field, value, QStringLiteral("it is not a number"));
    const QByteArray text = QByteArray::number(number, 'f', field.decimals);
    if (text.size() > field.length)
        throw Error(ErrorNumber::ValueDoesNotFit,
                    QStringLiteral("Numeric overflow: %1 does not fit field %2 N(%3,%4).")
                        .arg(QString::fromLatin1(text), field.name)
                        .arg(field.length)
                        .arg(field.decimals));
    std::memcpy(out + field.length - text.size(), text.constData(), size_t(text.size()));
}

QDate dateOf(const FieldDescriptor& field, const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::QDate:
        return value.toDate();
    case QMetaType::QDateTime:
        return value.toDateTime().date();
    default:
        break;
    }
    const QString text = value.toString().trimmed();
    QDate date = QDate::fromString(text.left(10), Qt::ISODate);
    if (!date.isValid())
        date = QDate::fromString(text, QStringLiteral("yyyyMMdd"));
    if (!date.isValid())
        throw conversionError(field, value, QStringLiteral("it is not a date"));
    return date;
}

void writeDate(char* out, const FieldDescriptor& field, const QVariant& value) {
    const QDate date = dateOf(field, value);
    if (date.year() < 1 || date.year() > 9999)
        throw conversionError(field, value, QStringLiteral("the year is out of range"));
    // Digit by digit: no format string to parse for every record.
    const int parts[3] = {date.year(), date.month(), date.day()};
    const int widths[3] = {4, 2, 2};
    for (int part = 0; part < 3; ++part) {
        int value = parts[part];
        for (int digit = widths[part] - 1; digit >= 0; --digit) {
            out[digit] = char('0' + value % 10);
            value /= 10;
        }
        out += widths[part];
    }
}

void writeLogical(char* out, const FieldDescriptor& field, const QVariant& value) {
    bool truth = false;
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString().trimmed().toLower();
        if (text == u"t" || text == u"true" || text == u"y" || text == u"yes" || text == u"-1" ||
            text == u"1")
            truth = true;
        else if (!(text == u"f" || text == u"false" || text == u"n" || text == u"no" ||
                   text == u"0"))
            throw conversionError(field, value, QStringLiteral("it is not a logical value"));
    } else {
        truth = value.toBool();
    }
    *out = truth ? 'T' : 'F';
}

} // namespace

void writeFieldValue(char* out, const FieldDescriptor& field, const QVariant& value) {
    std::memset(out, ' ', size_t(field.length));
    if (!value.isValid() || value.isNull())
        return;
    switch (field.type) {
    case 'C':
        writeText(out, field, value);
        return;
    case 'N':
        if (value.typeId() == QMetaType::QString && value.toString().trimmed().isEmpty())
            return;
        writeNumber(out, field, value);
        return;
    case 'D':
        if (value.typeId() == QMetaType::QString && value.toString().trimmed().isEmpty())
            return;
        writeDate(out, field, value);
        return;
    case 'L':
        writeLogical(out, field, value);
        return;
    default:
        throw Error(ErrorNumber::NotSupported,
                    QStringLiteral("Field %1 has type '%2', which cannot be written.")
                        .arg(field.name, QChar::fromLatin1(field.type)));
    }
}

QVariant readFieldValue(const char* record, const FieldDescriptor& field) {
    const char* at = record + field.offset;
    const QByteArray raw = QByteArray(at, field.length);
    switch (field.type) {
    case 'C': {
        qsizetype size = field.length;
        while (size > 0 && (at[size - 1] == ' ' || at[size - 1] == '\0'))
            --size;
        return fromCp1252(at, size);
    }
    case 'N': {
        bool ok = false;
        const double number = raw.trimmed().toDouble(&ok);
        return ok ? QVariant(number) : QVariant();
    }
    case 'D': {
        const QDate date = QDate::fromString(QString::fromLatin1(raw), QStringLiteral("yyyyMMdd"));
        return date.isValid() ? QVariant(QDateTime(date, QTime(0, 0))) : QVariant();
    }
    case 'L':
        if (*at == 'T' || *at == 't' || *at == 'Y' || *at == 'y')
            return true;
        if (*at == 'F' || *at == 'f' || *at == 'N' || *at == 'n')
            return false;
        return {};
    case 'M':
        return readMemoBlock(at);
    default:
        return {};
    }
}

void writeMemoBlock(char* out, quint32 block) {
    qToLittleEndian(block, out);
}

quint32 readMemoBlock(const char* field) {
    return qFromLittleEndian<quint32>(field);
}

} // namespace vx::dbf
