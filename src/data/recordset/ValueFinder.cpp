#include "data/recordset/ValueFinder.h"

#include "data/DataType.h"
#include "data/Error.h"
#include "data/Field.h"
#include "data/RowStore.h"
#include "data/recordset/SortKeys.h"

#include <cstring>
#include <string>

namespace vx {
namespace {

char asciiLower(char c) {
    return (c >= 'A' && c <= 'Z') ? char(c + ('a' - 'A')) : c;
}

// `needle` is folded. Stays on bytes while they are ASCII; a row with other characters is
// compared through Unicode folding.
bool equalsFolded(const char* bytes, qsizetype size, const std::string& needle,
                  const QString& needleText) {
    for (qsizetype i = 0; i < size; ++i) {
        const char c = bytes[i];
        if (static_cast<unsigned char>(c) >= 0x80)
            return QString::fromUtf8(bytes, size).compare(needleText, Qt::CaseInsensitive) == 0;
        if (asciiLower(c) != needle[size_t(i)])
            return false;
    }
    return true;
}

qsizetype findText(const RowStore& store, const std::vector<qsizetype>& order, int column,
                   const QString& text, qsizetype from, Qt::CaseSensitivity textCase) {
    std::string needle;
    const QByteArray utf8 = text.toUtf8();
    if (textCase == Qt::CaseInsensitive)
        appendFoldedUtf8(utf8.constData(), utf8.size(), needle);
    else
        needle.assign(utf8.constData(), size_t(utf8.size()));
    const auto length = qsizetype(needle.size());
    const auto count = qsizetype(order.size());
    for (qsizetype position = from; position < count; ++position) {
        const qsizetype row = order[size_t(position)];
        if (store.isNull(row, column))
            continue;
        const auto [bytes, size] = store.utf8At(row, column);
        if (size != length)
            continue;
        if (textCase == Qt::CaseSensitive) {
            if (size == 0 || std::memcmp(bytes, needle.data(), size_t(size)) == 0)
                return position;
        } else if (equalsFolded(bytes, size, needle, text)) {
            return position;
        }
    }
    return -1;
}

template <typename Read, typename Value>
qsizetype findEqual(const RowStore& store, const std::vector<qsizetype>& order, int column,
                    Value wanted, qsizetype from, Read read) {
    const auto count = qsizetype(order.size());
    for (qsizetype position = from; position < count; ++position) {
        const qsizetype row = order[size_t(position)];
        if (!store.isNull(row, column) && read(row) == wanted)
            return position;
    }
    return -1;
}

} // namespace

qsizetype findValue(const RowStore& store, const std::vector<qsizetype>& order, int column,
                    const QVariant& value, qsizetype from, Qt::CaseSensitivity textCase) {
    from = std::max<qsizetype>(from, 0);
    const ColumnInfo& info = store.columns().at(column);
    const StorageKind kind = storageKindOf(info.type);

    if (!value.isValid() || value.isNull()) {
        const auto count = qsizetype(order.size());
        for (qsizetype position = from; position < count; ++position) {
            if (store.isNull(order[size_t(position)], column))
                return position;
        }
        return -1;
    }
    if (kind == StorageKind::Text)
        return findText(store, order, column, value.toString(), from, textCase);

    QVariant wanted;
    try {
        wanted = convertForColumn(value, info);
    } catch (const Error&) {
        return -1; // no cell of this column can hold it
    }
    if (!wanted.isValid())
        return -1;
    switch (kind) {
    case StorageKind::Integer:
        if (info.type == DataType::Boolean) {
            const bool flag = wanted.toBool();
            return findEqual(store, order, column, flag, from,
                             [&](qsizetype row) { return store.integerAt(row, column) != 0; });
        }
        return findEqual(store, order, column, wanted.toLongLong(), from,
                         [&](qsizetype row) { return store.integerAt(row, column); });
    case StorageKind::Real:
        return findEqual(store, order, column, wanted.toDouble(), from,
                         [&](qsizetype row) { return store.realAt(row, column); });
    case StorageKind::DateTime:
        return findEqual(store, order, column, packDateTime(wanted.toDateTime()), from,
                         [&](qsizetype row) { return store.integerAt(row, column); });
    case StorageKind::Text:
        break;
    }
    return -1;
}

} // namespace vx
