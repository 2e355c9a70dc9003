#include "FakeDriver.h"
#include "data/Recordset.h"

#include <QRandomGenerator>
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <numeric>

using namespace vx;
using namespace Qt::StringLiterals;
using vx::test::column;
using vx::test::errorOf;
using vx::test::makeStore;

namespace {

QVariantList columnValues(const Recordset& set, int column) {
    QVariantList values;
    for (qsizetype p = 0; p < set.recordCount(); ++p)
        values << set.valueAt(p, column);
    return values;
}

Recordset people() {
    return Recordset::fromRows(
        makeStore({column("id", DataType::Integer), column("name", DataType::VarWChar),
                   column("city", DataType::VarWChar), column("born", DataType::Date),
                   column("score", DataType::Double)},
                  {{1, "bob", "Oslo", "1990-05-01", 2.5},
                   {2, "Alice", "oslo", "1985-01-20", QVariant()},
                   {3, QVariant(), "Bergen", QVariant(), -1.0},
                   {4, "alice", "Bergen", "1985-01-20 08:00:00", 10.0},
                   {5, "Carol", QVariant(), "2001-12-31", 2.5}}));
}

// The ids 0..count-1 in a stable order by `less`.
template <typename Less>
QVariantList idsSortedBy(int count, Less less) {
    QList<int> order(count);
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), less);
    return QVariantList(order.begin(), order.end());
}

} // namespace

TEST(Sort, KeysByValueInEitherDirectionCaseInsensitiveTextNullsFirst) {
    Recordset set = people();
    const std::pair<const char*, QVariantList> sorts[] = {
        {"name", {3, 2, 4, 1, 5}},        // "Alice" and "alice" keep storage order; null first
        {"[name] DESC", {5, 1, 2, 4, 3}}, // null last
        {"born ASC", {3, 2, 4, 1, 5}},    // by date and time
        {"score desc", {4, 1, 5, 3, 2}},
        {"[city] ASC, [score] DESC", {5, 4, 3, 1, 2}},
        {"city DESC,id DESC", {2, 1, 4, 3, 5}},
        {"", {1, 2, 3, 4, 5}}};
    for (const auto& [sort, ids] : sorts) {
        set.moveLast();
        set.setSort(QString::fromLatin1(sort));
        EXPECT_EQ(columnValues(set, 0), ids) << sort;
        EXPECT_EQ(set.sort(), QString::fromLatin1(sort));
        EXPECT_EQ(set.position(), 0) << "a new sort starts at the first row";
    }
}

TEST(Sort, UnknownColumnIsRefusedAndChangesNothing) {
    Recordset set = people();
    set.setSort("id DESC");
    for (const char* bad : {"nosuch", "[name] ASC, [nosuch] DESC", "name UPWARDS", "id,"}) {
        EXPECT_EQ(errorOf([&] { set.setSort(QString::fromLatin1(bad)); }),
                  ErrorNumber::ItemNotFound)
            << bad;
        EXPECT_EQ(test::errorTextOf([&] { set.setSort(QString::fromLatin1(bad)); }),
                  "Item cannot be found in the collection corresponding to the requested name or "
                  "ordinal.");
    }
    EXPECT_EQ(set.sort(), "id DESC");
    EXPECT_EQ(columnValues(set, 0), (QVariantList{5, 4, 3, 2, 1}));
}

TEST(Sort, BookmarksStayWithTheirRows) {
    Recordset set = people();
    set.setPosition(3);
    const Bookmark mark = set.bookmark();
    for (const char* sort : {"name DESC", "born", "score DESC, id", ""}) {
        set.setSort(QString::fromLatin1(sort));
        set.setBookmark(mark);
        EXPECT_EQ(set.value("id"), QVariant(4)) << sort;
        EXPECT_EQ(set.bookmarkAt(set.positionOf(mark)), mark);
    }
}

// Against a plain reference: QString case-insensitive comparison, nulls first, ties in storage
// order in both directions. Half the texts are short pieces, half long runs that share their first
// bytes ("Customer 00042 Ltd") and are only told apart by later ones.
TEST(Sort, MatchesAReferenceOrderOnGeneratedText) {
    QRandomGenerator random(20240315);
    const QStringList pieces = {"a", "B",  "ab", "AB", "abcdefgh", "ABCDEFGHij", "abcdefghI",
                                "z", "Zz", "0",  "_",  "",         "abcdefgh0",  "ABCDEFGH"};
    const QStringList endings = {" Ltd", " LTD", " ltd.", "", " Ltd and Sons of a very long name"};
    const auto pick = [&](const QStringList& from) {
        return from[random.bounded(int(from.size()))];
    };
    QList<QVariantList> rows;
    for (int i = 0; i < 6000; ++i) {
        const QString text = i % 2 ? pick(pieces) + pick(pieces)
                                   : (random.bounded(2) ? u"Customer %1"_s : u"CUSTOMER %1"_s)
                                             .arg(random.bounded(300), 5, 10, QChar(u'0')) +
                                         pick(endings);
        const bool null = random.bounded(10) == 0;
        rows << QVariantList{i, null ? QVariant() : QVariant(text), random.bounded(5) - 2};
    }
    Recordset set = Recordset::fromRows(
        makeStore({column("id", DataType::Integer), column("text", DataType::VarWChar),
                   column("group", DataType::Integer)},
                  rows));

    const auto text = [&](int a, int b) {
        const QVariant& x = rows[a][1];
        const QVariant& y = rows[b][1];
        if (!x.isValid() || !y.isValid())
            return int(x.isValid()) - int(y.isValid());
        return x.toString().compare(y.toString(), Qt::CaseInsensitive);
    };
    const struct {
        const char* sort;
        std::function<bool(int, int)> less;
    } cases[] = {
        {"[text] ASC", [&](int a, int b) { return text(a, b) < 0; }},
        {"[text] DESC", [&](int a, int b) { return text(a, b) > 0; }},
        {"[group] DESC, [text]",
         [&](int a, int b) {
             const int ga = rows[a][2].toInt();
             const int gb = rows[b][2].toInt();
             return ga != gb ? ga > gb : text(a, b) < 0;
         }},
    };
    for (const auto& c : cases) {
        set.setSort(QString::fromLatin1(c.sort));
        EXPECT_EQ(columnValues(set, 0), idsSortedBy(int(rows.size()), c.less)) << c.sort;
    }
}
