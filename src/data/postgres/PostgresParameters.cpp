#include "data/postgres/PostgresParameters.h"

#include "data/postgres/PostgresCatalog.h"

#include <QDateTime>
#include <charconv>

namespace vx::postgres {

namespace {

template <typename Number>
QByteArray shortestText(Number value) {
    char buffer[64];
    const auto [end, error] = std::to_chars(buffer, buffer + sizeof(buffer), value);
    return error == std::errc() ? QByteArray(buffer, end - buffer) : QByteArray::number(value);
}

QByteArray hexBytea(const QByteArray& bytes) {
    return "\\x" + bytes.toHex();
}

} // namespace

std::optional<QByteArray> parameterText(const QVariant& value, const CatalogColumn* column) {
    const Oid type = column ? column->baseType : InvalidOid;
    switch (value.typeId()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        return std::nullopt;
    case QMetaType::Bool:
        if (type == TypeOid::Bool)
            return QByteArray(value.toBool() ? "t" : "f");
        return QByteArray(value.toBool() ? "-1" : "0");
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        if (type == TypeOid::Bool)
            return QByteArray(value.toLongLong() != 0 ? "t" : "f");
        return QByteArray::number(value.toLongLong());
    case QMetaType::Double:
    case QMetaType::Float:
        // A single-precision column compares with the value it printed.
        if (type == TypeOid::Float4)
            return shortestText(value.toFloat());
        return shortestText(value.toDouble());
    case QMetaType::QDate: {
        const QDate date = value.toDate();
        return date.isValid() ? std::optional(date.toString(u"yyyy-MM-dd").toLatin1())
                              : std::nullopt;
    }
    case QMetaType::QTime: {
        const QTime time = value.toTime();
        if (!time.isValid())
            return std::nullopt;
        const QByteArray text = time.toString(u"HH:mm:ss").toLatin1();
        // A time alone lies on the zero day, as the old engine keeps it.
        return type == TypeOid::Time ? text : "1899-12-30 " + text;
    }
    case QMetaType::QDateTime: {
        const QDateTime moment = value.toDateTime();
        return moment.isValid() ? std::optional(moment.toString(u"yyyy-MM-dd HH:mm:ss").toLatin1())
                                : std::nullopt;
    }
    case QMetaType::QByteArray:
        if (type == TypeOid::Bytea)
            return hexBytea(value.toByteArray());
        return value.toByteArray();
    default:
        return value.toString().toUtf8();
    }
}

} // namespace vx::postgres
