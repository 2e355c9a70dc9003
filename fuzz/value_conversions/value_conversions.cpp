// The value conversions behind Field.Value and the controls' own conversions: any input either
// converts or fails with the platform's error, without undefined behaviour.
#include "FuzzInput.h"
#include "data/Error.h"
#include "data/Field.h"
#include "data/RowStore.h"
#include "data/recordset/DateText.h"
#include "session/Conversions.h"

#include <cstdlib>

namespace {

using namespace vx;

const DataType columnTypes[] = {
    DataType::SmallInt, DataType::Integer,      DataType::Single,         DataType::Double,
    DataType::Currency, DataType::Date,         DataType::Boolean,        DataType::TinyInt,
    DataType::BigInt,   DataType::WChar,        DataType::Numeric,        DataType::DBTimeStamp,
    DataType::VarWChar, DataType::LongVarWChar, DataType::UnsignedTinyInt};

QVariant valueFrom(fuzz::Input& input) {
    switch (input.byte() % 9) {
    case 0:
        return QVariant(input.text(64));
    case 1:
        return QVariant(input.number<double>());
    case 2:
        return QVariant(input.number<qint64>());
    case 3:
        return QVariant(input.number<qint32>());
    case 4:
        return QVariant(bool(input.byte() & 1));
    case 5:
        return QVariant(QDate::fromJulianDay(input.number<qint64>()));
    case 6:
        return QVariant(QDateTime(QDate::fromJulianDay(input.number<qint32>()),
                                  QTime::fromMSecsSinceStartOfDay(input.number<qint32>())));
    case 7:
        return QVariant(input.number<quint64>());
    default:
        return QVariant(QTime::fromMSecsSinceStartOfDay(input.number<qint32>()));
    }
}

template <typename Call>
void tolerate(Call call) {
    try {
        call();
    } catch (const Error&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    ColumnInfo column;
    column.type = columnTypes[input.byte() % std::size(columnTypes)];
    column.definedSize = input.byte();
    const QVariant value = valueFrom(input);
    tolerate([&] {
        const QVariant converted = convertForColumn(value, column);
        // A converted date is one the stores can hold and give back unchanged.
        if (converted.typeId() == QMetaType::QDateTime) {
            const QDateTime date = converted.toDateTime();
            if (unpackDateTime(packDateTime(date)) != date)
                std::abort();
        }
    });
    tolerate([&] { datetext::fromSerial(value.toDouble()); });
    tolerate([&] { toInt32(value); });
    tolerate([&] { toInt16(value); });
    tolerate([&] { toDouble(value); });
    const QString text = value.toString();
    tolerate([&] { textToBoolean(text); });
    tolerate([&] { textToDate(text); });
    tolerate([&] { numberToText(value.toDouble()); });
    tolerate([&] { numberToText(value.toLongLong()); });
    const QString pattern = input.text(24);
    tolerate([&] { formatDateTime(value.toDateTime(), pattern); });
    tolerate([&] { formatNumber(value.toDouble(), pattern); });
    return 0;
}
