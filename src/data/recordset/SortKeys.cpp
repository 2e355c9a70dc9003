#include "data/recordset/SortKeys.h"

#include "data/DataType.h"
#include "data/RowStore.h"

#include <QString>
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <functional>
#include <limits>
#include <string>

namespace vx {
namespace {

constexpr quint64 signBit = quint64(1) << 63;

quint64 integerKey(qint64 value) {
    return quint64(value) ^ signBit;
}

// Maps a double onto unsigned integers in the same order.
quint64 realKey(double value) {
    const auto bits = std::bit_cast<quint64>(value + 0.0); // -0.0 sorts with 0.0
    return (bits & signBit) ? ~bits : (bits | signBit);
}

char asciiLower(char c) {
    return (c >= 'A' && c <= 'Z') ? char(c + ('a' - 'A')) : c;
}

bool isAscii(const char* bytes, qsizetype size) {
    unsigned char any = 0;
    for (qsizetype i = 0; i < size; ++i)
        any |= static_cast<unsigned char>(bytes[i]);
    return any < 0x80;
}

// The first eight folded bytes, big-endian, so that integer order is byte order.
quint64 prefixKey(const char* bytes, qsizetype size) {
    quint64 key = 0;
    const qsizetype n = std::min<qsizetype>(size, 8);
    for (qsizetype i = 0; i < 8; ++i) {
        const auto byte = i < n ? static_cast<unsigned char>(asciiLower(bytes[i])) : 0;
        key = (key << 8) | byte;
    }
    return key;
}

// Keys of one sort column, indexed by the row's place in the input.
struct ColumnKeys {
    bool descending = false;
    bool text = false;
    std::vector<quint64> key;
    std::vector<unsigned char> isNull;
    // Folded text beyond the first eight bytes, for ties of the prefix.
    std::string tails;
    std::vector<std::pair<qsizetype, qsizetype>> tail; // offset, length in `tails`

    int compareTail(quint32 a, quint32 b) const {
        const auto& [offsetA, lengthA] = tail[a];
        const auto& [offsetB, lengthB] = tail[b];
        const qsizetype common = std::min(lengthA, lengthB);
        if (common > 0) {
            const int c = std::memcmp(tails.data() + offsetA, tails.data() + offsetB, common);
            if (c != 0)
                return c;
        }
        return lengthA < lengthB ? -1 : (lengthA > lengthB ? 1 : 0);
    }

    // Folded bytes [8 * chunk, 8 * chunk + 8) as a big-endian key (chunk 0 is `key`).
    quint64 chunkKey(quint32 index, size_t chunk) const {
        const auto& [offset, length] = tail[index];
        const qsizetype start = qsizetype(chunk - 1) * 8;
        quint64 result = 0;
        for (qsizetype i = 0; i < 8; ++i) {
            const qsizetype at = start + i;
            const auto byte =
                at < length ? static_cast<unsigned char>(tails[size_t(offset + at)]) : 0;
            result = (result << 8) | byte;
        }
        return result;
    }
    qsizetype tailLength(quint32 index) const { return tail[index].second; }

    // Ascending comparison including nulls; the caller applies the direction.
    int compare(quint32 a, quint32 b) const {
        if (isNull[a] || isNull[b])
            return int(isNull[b]) - int(isNull[a]);
        if (key[a] != key[b])
            return key[a] < key[b] ? -1 : 1;
        return text ? compareTail(a, b) : 0;
    }
};

ColumnKeys buildKeys(const RowStore& store, const std::vector<qsizetype>& rows,
                     const SortColumn& column) {
    ColumnKeys keys;
    keys.descending = column.descending;
    const StorageKind kind = storageKindOf(store.columns().at(column.column).type);
    keys.text = kind == StorageKind::Text;
    const size_t n = rows.size();
    keys.key.resize(n);
    keys.isNull.resize(n);
    if (keys.text)
        keys.tail.resize(n);
    std::string folded;
    for (size_t i = 0; i < n; ++i) {
        const qsizetype row = rows[i];
        if (store.isNull(row, column.column)) {
            keys.isNull[i] = 1;
            continue;
        }
        switch (kind) {
        case StorageKind::Integer:
        case StorageKind::DateTime:
            keys.key[i] = integerKey(store.integerAt(row, column.column));
            break;
        case StorageKind::Real:
            keys.key[i] = realKey(store.realAt(row, column.column));
            break;
        case StorageKind::Text: {
            auto [bytes, size] = store.utf8At(row, column.column);
            if (!isAscii(bytes, size)) {
                folded.clear();
                appendFoldedUtf8(bytes, size, folded);
                bytes = folded.data();
                size = qsizetype(folded.size());
            }
            // ASCII is folded on the fly; folding leaves other text unchanged.
            keys.key[i] = prefixKey(bytes, size);
            if (size > 8) {
                keys.tail[i] = {qsizetype(keys.tails.size()), size - 8};
                const size_t start = keys.tails.size();
                keys.tails.append(bytes + 8, size_t(size - 8));
                for (size_t k = start; k < keys.tails.size(); ++k)
                    keys.tails[k] = asciiLower(keys.tails[k]);
            }
            break;
        }
        }
    }
    return keys;
}

// The first column's key travels with the row so that most of the work touches one array.
struct Entry {
    quint64 key;
    quint32 index;
};

// Stable LSD radix sort on the 64-bit key, a byte at a time; bytes that are the same in every
// entry (the high bytes of small numbers) cost nothing.
void radixSort(std::vector<Entry>& entries) {
    const size_t n = entries.size();
    std::vector<std::array<size_t, 256>> counts(8);
    for (auto& count : counts)
        count.fill(0);
    for (const Entry& entry : entries) {
        for (int b = 0; b < 8; ++b)
            ++counts[size_t(b)][(entry.key >> (8 * b)) & 0xff];
    }
    std::vector<Entry> buffer(n);
    for (int b = 0; b < 8; ++b) {
        auto& count = counts[size_t(b)];
        if (count[(entries.front().key >> (8 * b)) & 0xff] == n)
            continue;
        size_t offset = 0;
        for (size_t& c : count) {
            const size_t here = c;
            c = offset;
            offset += here;
        }
        for (const Entry& entry : entries)
            buffer[count[(entry.key >> (8 * b)) & 0xff]++] = entry;
        entries.swap(buffer);
    }
}

} // namespace

void appendFoldedUtf8(const char* utf8, qsizetype size, std::string& out) {
    for (qsizetype i = 0; i < size; ++i) {
        if (static_cast<unsigned char>(utf8[i]) >= 0x80) {
            out.append(QString::fromUtf8(utf8, size).toCaseFolded().toStdString());
            return;
        }
    }
    const size_t start = out.size();
    out.append(utf8, size_t(size));
    for (size_t i = start; i < out.size(); ++i) {
        const char c = out[i];
        if (c >= 'A' && c <= 'Z')
            out[i] = char(c + ('a' - 'A'));
    }
}

std::vector<qsizetype> sortRows(const RowStore& store, std::vector<qsizetype> rows,
                                const std::vector<SortColumn>& columns) {
    if (!std::is_sorted(rows.begin(), rows.end()))
        std::sort(rows.begin(), rows.end());
    if (columns.empty() || rows.size() < 2)
        return rows;
    Q_ASSERT(rows.size() < std::numeric_limits<quint32>::max());

    std::vector<ColumnKeys> keys;
    keys.reserve(columns.size());
    for (const SortColumn& column : columns)
        keys.push_back(buildKeys(store, rows, column));

    // Nulls form their own group (first when ascending); within each group the first column's
    // key decides, and only runs of equal keys need the remaining columns.
    const ColumnKeys& first = keys.front();
    std::vector<Entry> nulls;
    std::vector<Entry> values;
    values.reserve(rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        if (first.isNull[i])
            nulls.push_back({0, quint32(i)});
        else
            values.push_back({first.descending ? ~first.key[i] : first.key[i], quint32(i)});
    }
    if (values.size() > 1)
        radixSort(values);

    std::vector<Entry> entries;
    entries.reserve(rows.size());
    const auto& before = first.descending ? values : nulls;
    const auto& after = first.descending ? nulls : values;
    entries.insert(entries.end(), before.begin(), before.end());
    entries.insert(entries.end(), after.begin(), after.end());

    const bool tiesNeedMore = first.text || keys.size() > 1;
    auto tieBreak = [&keys, &first](const Entry& a, const Entry& b) {
        if (first.text && !first.isNull[a.index]) {
            const int c = first.compareTail(a.index, b.index);
            if (c != 0)
                return first.descending ? c > 0 : c < 0;
        }
        for (size_t k = 1; k < keys.size(); ++k) {
            const int c = keys[k].compare(a.index, b.index);
            if (c != 0)
                return keys[k].descending ? c > 0 : c < 0;
        }
        return a.index < b.index;
    };
    // A run sharing its first 8 * chunk folded bytes: long runs (values with a common start,
    // "Customer 00042 Ltd") are radix-sorted on the next eight bytes, then split again; short
    // runs, and runs past the end of every value, are compared whole. The radix pass is stable,
    // so a run of equal values is already in row order.
    std::function<void(std::vector<Entry>&, size_t, size_t, size_t)> sortRun =
        [&](std::vector<Entry>& all, size_t begin, size_t end, size_t chunk) {
            const auto runBegin = all.begin() + qsizetype(begin);
            const auto runEnd = all.begin() + qsizetype(end);
            bool longer = false;
            if (chunk > 0 && first.text && end - begin > 64) {
                for (size_t i = begin; i < end && !longer; ++i)
                    longer = first.tailLength(all[i].index) > qsizetype(chunk - 1) * 8;
            }
            if (!longer) {
                if (!std::is_sorted(runBegin, runEnd, tieBreak))
                    std::sort(runBegin, runEnd, tieBreak);
                return;
            }
            std::vector<Entry> run(runBegin, runEnd);
            for (Entry& entry : run) {
                const quint64 key = first.chunkKey(entry.index, chunk);
                entry.key = first.descending ? ~key : key;
            }
            radixSort(run);
            size_t from = 0;
            while (from < run.size()) {
                size_t to = from + 1;
                while (to < run.size() && run[to].key == run[from].key)
                    ++to;
                if (to - from > 1)
                    sortRun(run, from, to, chunk + 1);
                from = to;
            }
            // Keys of this level only matter inside the run; the caller groups by its own.
            const quint64 outerKey = runBegin->key;
            for (size_t i = 0; i < run.size(); ++i)
                all[begin + i] = {outerKey, run[i].index};
        };
    if (tiesNeedMore) {
        size_t begin = 0;
        while (begin < entries.size()) {
            size_t end = begin + 1;
            const bool null = first.isNull[entries[begin].index] != 0;
            while (end < entries.size() && entries[end].key == entries[begin].key &&
                   (first.isNull[entries[end].index] != 0) == null)
                ++end;
            if (end - begin > 1)
                sortRun(entries, begin, end, null ? 0 : 1);
            begin = end;
        }
    }

    std::vector<qsizetype> sorted(rows.size());
    for (size_t i = 0; i < entries.size(); ++i)
        sorted[i] = rows[entries[i].index];
    return sorted;
}

} // namespace vx
