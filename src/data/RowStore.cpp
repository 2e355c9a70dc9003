#include "data/RowStore.h"

#include "data/DataType.h"
#include "data/Error.h"

#include <cstring>
#include <limits>
#include <unordered_map>
#include <vector>

namespace vx {

namespace {

constexpr qint64 secondsPerDay = 86400;

int integerWidthOf(DataType type) {
    switch (type) {
    case DataType::Boolean:
    case DataType::TinyInt:
    case DataType::UnsignedTinyInt:
        return 1;
    case DataType::SmallInt:
        return 2;
    case DataType::Integer:
        return 4;
    default:
        return 8;
    }
}

int digits(const char* text, int count) {
    int value = 0;
    for (int i = 0; i < count; ++i) {
        const char c = text[i];
        if (c < '0' || c > '9')
            return -1;
        value = value * 10 + (c - '0');
    }
    return value;
}

} // namespace

qint64 packDateTime(QDate date, QTime time) {
    const qint64 seconds = time.isValid() ? time.msecsSinceStartOfDay() / 1000 : 0;
    // Every valid date fits in 64 bits of seconds; an invalid one's day number would not.
    if (!date.isValid())
        return seconds;
    return date.toJulianDay() * secondsPerDay + seconds;
}

qint64 packDateTime(const QDateTime& value) {
    return packDateTime(value.date(), value.time());
}

QDateTime unpackDateTime(qint64 packed) {
    qint64 day = packed / secondsPerDay;
    qint64 seconds = packed % secondsPerDay;
    if (seconds < 0) {
        seconds += secondsPerDay;
        --day;
    }
    return QDateTime(QDate::fromJulianDay(day),
                     QTime::fromMSecsSinceStartOfDay(int(seconds) * 1000));
}

bool parseStoredDateTime(const char* text, qsizetype size, qint64& packed) {
    if (size < 10 || text[4] != '-' || text[7] != '-')
        return false;
    const int year = digits(text, 4);
    const int month = digits(text + 5, 2);
    const int day = digits(text + 8, 2);
    if (year < 0 || month < 0 || day < 0)
        return false;
    const QDate date(year, month, day);
    if (!date.isValid())
        return false;
    int hour = 0, minute = 0, second = 0;
    if (size > 10) {
        if (size < 16 || (text[10] != ' ' && text[10] != 'T') || text[13] != ':')
            return false;
        hour = digits(text + 11, 2);
        minute = digits(text + 14, 2);
        if (size >= 19 && text[16] == ':')
            second = digits(text + 17, 2);
        if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59)
            return false;
    }
    packed = date.toJulianDay() * secondsPerDay + hour * 3600 + minute * 60 + second;
    return true;
}

struct RowStore::Private {
    struct Column {
        StorageKind kind = StorageKind::Text;
        int width = 8;                  // bytes per integer cell
        std::vector<std::byte> numbers; // integers of `width` bytes, doubles, packed dates
        std::vector<quint32> offsets;   // text: cell i is arena[offsets[i], offsets[i + 1])
        std::vector<char> arena;
        std::unordered_map<qsizetype, QByteArray> rewritten; // text cells written after filling
        std::vector<quint64> nulls;

        bool isNull(qsizetype row) const { return (nulls[size_t(row) >> 6] >> (row & 63)) & 1; }
        void markNull(qsizetype row, bool null) {
            const size_t word = size_t(row) >> 6;
            if (word >= nulls.size())
                nulls.resize(word + 1, 0);
            const quint64 bit = quint64(1) << (row & 63);
            nulls[word] = null ? (nulls[word] | bit) : (nulls[word] & ~bit);
        }
        qint64 integerAt(qsizetype row) const {
            const std::byte* p = numbers.data() + size_t(row) * size_t(width);
            switch (width) {
            case 1:
                return qint64(qint8(p[0]));
            case 2: {
                qint16 v;
                std::memcpy(&v, p, 2);
                return v;
            }
            case 4: {
                qint32 v;
                std::memcpy(&v, p, 4);
                return v;
            }
            default: {
                qint64 v;
                std::memcpy(&v, p, 8);
                return v;
            }
            }
        }
        void putInteger(qsizetype row, qint64 value) {
            std::byte* p = numbers.data() + size_t(row) * size_t(width);
            switch (width) {
            case 1: {
                const qint8 v = qint8(value);
                std::memcpy(p, &v, 1);
                break;
            }
            case 2: {
                const qint16 v = qint16(value);
                std::memcpy(p, &v, 2);
                break;
            }
            case 4: {
                const qint32 v = qint32(value);
                std::memcpy(p, &v, 4);
                break;
            }
            default:
                std::memcpy(p, &value, 8);
            }
        }
        double realAt(qsizetype row) const {
            double v;
            std::memcpy(&v, numbers.data() + size_t(row) * 8, 8);
            return v;
        }
        void growNumbers() { numbers.resize(numbers.size() + size_t(width)); }
    };

    ColumnList columns;
    std::vector<Column> data;
    qsizetype rows = 0;
    int appendColumn = 0;

    Column& next(StorageKind expected) {
        if (appendColumn >= int(data.size()))
            throw Error(ErrorNumber::Unspecified, QStringLiteral("Too many values for one row"));
        Column& column = data[size_t(appendColumn)];
        Q_UNUSED(expected);
        return column;
    }
    void finishCell(Column& column, bool null) {
        column.markNull(rows, null);
        ++appendColumn;
    }
    void appendTextBytes(Column& column, const char* utf8, qsizetype size) {
        if (column.arena.size() + size_t(size) > std::numeric_limits<quint32>::max())
            throw Error(ErrorNumber::Unspecified,
                        QStringLiteral("The result holds more text than one column can keep"));
        column.arena.insert(column.arena.end(), utf8, utf8 + size);
        column.offsets.push_back(quint32(column.arena.size()));
    }
};

RowStore::RowStore(ColumnList columns)
    : d(std::make_unique<Private>()) {
    d->columns = std::move(columns);
    d->data.resize(size_t(d->columns.size()));
    for (qsizetype i = 0; i < d->columns.size(); ++i) {
        auto& column = d->data[size_t(i)];
        column.kind = storageKindOf(d->columns[i].type);
        column.width = column.kind == StorageKind::Integer ? integerWidthOf(d->columns[i].type) : 8;
        if (column.kind == StorageKind::Text)
            column.offsets.push_back(0);
    }
}

RowStore::~RowStore() = default;

const ColumnList& RowStore::columns() const {
    return d->columns;
}
ColumnList& RowStore::columns() {
    return d->columns;
}
int RowStore::columnCount() const {
    return int(d->columns.size());
}
qsizetype RowStore::rowCount() const {
    return d->rows;
}

void RowStore::reserve(qsizetype rows) {
    for (auto& column : d->data) {
        if (column.kind == StorageKind::Text)
            column.offsets.reserve(size_t(rows) + 1);
        else
            column.numbers.reserve(size_t(rows) * size_t(column.width));
        column.nulls.reserve(size_t(rows) / 64 + 1);
    }
}

void RowStore::appendNull() {
    auto& column = d->next(StorageKind::Text);
    if (column.kind == StorageKind::Text)
        column.offsets.push_back(quint32(column.arena.size()));
    else
        column.growNumbers();
    d->finishCell(column, true);
}

void RowStore::appendInteger(qint64 value) {
    auto& column = d->next(StorageKind::Integer);
    switch (column.kind) {
    case StorageKind::Integer:
    case StorageKind::DateTime:
        column.growNumbers();
        column.putInteger(d->rows, value);
        break;
    case StorageKind::Real: {
        column.growNumbers();
        const double real = double(value);
        std::memcpy(column.numbers.data() + size_t(d->rows) * 8, &real, 8);
        break;
    }
    case StorageKind::Text: {
        const QByteArray text = QByteArray::number(value);
        d->appendTextBytes(column, text.constData(), text.size());
        break;
    }
    }
    d->finishCell(column, false);
}

void RowStore::appendReal(double value) {
    auto& column = d->next(StorageKind::Real);
    switch (column.kind) {
    case StorageKind::Real:
        column.growNumbers();
        std::memcpy(column.numbers.data() + size_t(d->rows) * 8, &value, 8);
        break;
    case StorageKind::Integer:
    case StorageKind::DateTime:
        column.growNumbers();
        column.putInteger(d->rows, qint64(value));
        break;
    case StorageKind::Text: {
        const QByteArray text = QByteArray::number(value, 'g', 17);
        d->appendTextBytes(column, text.constData(), text.size());
        break;
    }
    }
    d->finishCell(column, false);
}

void RowStore::appendText(const char* utf8, qsizetype size) {
    auto& column = d->next(StorageKind::Text);
    bool null = false;
    switch (column.kind) {
    case StorageKind::Text:
        d->appendTextBytes(column, utf8, size);
        break;
    case StorageKind::DateTime: {
        qint64 packed = 0;
        null = !parseStoredDateTime(utf8, size, packed);
        column.growNumbers();
        column.putInteger(d->rows, packed);
        break;
    }
    case StorageKind::Integer: {
        bool ok = false;
        const qint64 value = QByteArray(utf8, size).trimmed().toLongLong(&ok);
        null = !ok;
        column.growNumbers();
        column.putInteger(d->rows, value);
        break;
    }
    case StorageKind::Real: {
        bool ok = false;
        const double value = QByteArray(utf8, size).trimmed().toDouble(&ok);
        null = !ok;
        column.growNumbers();
        std::memcpy(column.numbers.data() + size_t(d->rows) * 8, &value, 8);
        break;
    }
    }
    d->finishCell(column, null);
}

void RowStore::appendText(const QString& value) {
    const QByteArray utf8 = value.toUtf8();
    appendText(utf8.constData(), utf8.size());
}

void RowStore::appendDateTime(qint64 packed) {
    auto& column = d->next(StorageKind::DateTime);
    if (column.kind == StorageKind::Text) {
        const QByteArray text =
            unpackDateTime(packed).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")).toUtf8();
        d->appendTextBytes(column, text.constData(), text.size());
    } else {
        column.growNumbers();
        if (column.kind == StorageKind::Real) {
            const double real = double(packed);
            std::memcpy(column.numbers.data() + size_t(d->rows) * 8, &real, 8);
        } else {
            column.putInteger(d->rows, packed);
        }
    }
    d->finishCell(column, false);
}

void RowStore::endRow() {
    while (d->appendColumn < columnCount())
        appendNull();
    d->appendColumn = 0;
    ++d->rows;
}

qsizetype RowStore::appendEmptyRow() {
    d->appendColumn = 0;
    endRow();
    return d->rows - 1;
}

void RowStore::appendRows(const RowStore& other) {
    if (other.d->data.size() != d->data.size() || d->appendColumn != 0)
        throw Error(ErrorNumber::Unspecified, QStringLiteral("Rows of another result"));
    const qsizetype base = d->rows;
    const qsizetype added = other.d->rows;
    for (size_t i = 0; i < d->data.size(); ++i) {
        Private::Column& to = d->data[i];
        const Private::Column& from = other.d->data[i];
        if (to.kind != from.kind || to.width != from.width)
            throw Error(ErrorNumber::Unspecified, QStringLiteral("Rows of another result"));
        if (to.kind == StorageKind::Text) {
            if (to.arena.size() + from.arena.size() > std::numeric_limits<quint32>::max())
                throw Error(ErrorNumber::Unspecified,
                            QStringLiteral("The result holds more text than one column can keep"));
            const quint32 shift = quint32(to.arena.size());
            to.arena.insert(to.arena.end(), from.arena.begin(), from.arena.end());
            to.offsets.reserve(to.offsets.size() + size_t(added));
            for (size_t k = 1; k < from.offsets.size(); ++k)
                to.offsets.push_back(from.offsets[k] + shift);
            for (const auto& [row, text] : from.rewritten)
                to.rewritten[base + row] = text;
        } else {
            to.numbers.insert(to.numbers.end(), from.numbers.begin(), from.numbers.end());
        }
        // Null bits, shifted to their new rows: whole words when the rows line up.
        const size_t words = size_t(base + added + 63) / 64;
        if (to.nulls.size() < words)
            to.nulls.resize(words, 0);
        const int offset = int(base & 63);
        const size_t first = size_t(base) >> 6;
        for (size_t w = 0; w < from.nulls.size(); ++w) {
            const quint64 bits = from.nulls[w];
            if (!bits)
                continue;
            to.nulls[first + w] |= bits << offset;
            if (offset && first + w + 1 < to.nulls.size())
                to.nulls[first + w + 1] |= bits >> (64 - offset);
        }
    }
    d->rows += added;
}

bool RowStore::isNull(qsizetype row, int column) const {
    return d->data[size_t(column)].isNull(row);
}

QVariant RowStore::value(qsizetype row, int column) const {
    const auto& data = d->data[size_t(column)];
    if (data.isNull(row))
        return {};
    const DataType type = d->columns[column].type;
    switch (data.kind) {
    case StorageKind::Integer:
        if (type == DataType::Boolean)
            return QVariant(data.integerAt(row) != 0);
        if (type == DataType::BigInt)
            return QVariant(qlonglong(data.integerAt(row)));
        return QVariant(int(data.integerAt(row)));
    case StorageKind::Real:
        return QVariant(data.realAt(row));
    case StorageKind::DateTime:
        return QVariant(unpackDateTime(data.integerAt(row)));
    case StorageKind::Text: {
        const auto [text, size] = utf8At(row, column);
        if (type == DataType::Binary || type == DataType::LongVarBinary)
            return QVariant(QByteArray(text, size));
        return QVariant(QString::fromUtf8(text, size));
    }
    }
    return {};
}

void RowStore::setValue(qsizetype row, int column, const QVariant& value) {
    auto& data = d->data[size_t(column)];
    if (!value.isValid() || value.isNull()) {
        data.markNull(row, true);
        if (data.kind == StorageKind::Text)
            data.rewritten.erase(row);
        return;
    }
    switch (data.kind) {
    case StorageKind::Integer:
        data.putInteger(row, value.typeId() == QMetaType::Bool ? (value.toBool() ? -1 : 0)
                                                               : value.toLongLong());
        break;
    case StorageKind::Real: {
        const double real = value.toDouble();
        std::memcpy(data.numbers.data() + size_t(row) * 8, &real, 8);
        break;
    }
    case StorageKind::DateTime:
        data.putInteger(row, packDateTime(value.toDateTime()));
        break;
    case StorageKind::Text:
        data.rewritten[row] = value.typeId() == QMetaType::QByteArray ? value.toByteArray()
                                                                      : value.toString().toUtf8();
        break;
    }
    data.markNull(row, false);
}

qint64 RowStore::integerAt(qsizetype row, int column) const {
    return d->data[size_t(column)].integerAt(row);
}

double RowStore::realAt(qsizetype row, int column) const {
    return d->data[size_t(column)].realAt(row);
}

QString RowStore::textAt(qsizetype row, int column) const {
    const auto [text, size] = utf8At(row, column);
    return QString::fromUtf8(text, size);
}

std::pair<const char*, qsizetype> RowStore::utf8At(qsizetype row, int column) const {
    const auto& data = d->data[size_t(column)];
    if (!data.rewritten.empty()) {
        const auto found = data.rewritten.find(row);
        if (found != data.rewritten.end())
            return {found->second.constData(), found->second.size()};
    }
    const quint32 begin = data.offsets[size_t(row)];
    return {data.arena.data() + begin, qsizetype(data.offsets[size_t(row) + 1] - begin)};
}

std::size_t RowStore::memoryBytes() const {
    std::size_t total = 0;
    for (const auto& column : d->data) {
        total += column.numbers.capacity() + column.offsets.capacity() * sizeof(quint32) +
                 column.arena.capacity() + column.nulls.capacity() * sizeof(quint64);
        for (const auto& [row, text] : column.rewritten)
            total += sizeof(row) + sizeof(text) + size_t(text.capacity());
    }
    return total;
}

} // namespace vx
