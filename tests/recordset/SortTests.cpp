#include "FakeDriver.h"
#include "data/Recordset.h"

#include <QRandomGenerator>
#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>

using namespace vx;
using namespace Qt::StringLiterals;
using vx::test::column;
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
        try {
            set.setSort(QString::fromLatin1(bad));
            ADD_FAILURE() << "accepted " << bad;
        } catch (const Error& error) {
            EXPECT_EQ(error.number(), ErrorNumber::ItemNotFound) << bad;
            EXPECT_EQ(error.description(),
                      QStringLiteral("Item cannot be found in the collection corresponding to "
                                     "the requested name or ordinal."));
        }
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

// Against a plain reference: QString case-insensitive comparison, stable on storage order.
TEST(Sort, MatchesAReferenceOrderOnRandomText) {
    QRandomGenerator random(20240315);
    const QStringList pieces = {"a", "B",  "ab", "AB", "abcdefgh", "ABCDEFGHij", "abcdefghI",
                                "z", "Zz", "0",  "_",  "",         "abcdefgh0",  "ABCDEFGH"};
    QList<QVariantList> rows;
    QList<QString> texts;
    for (int i = 0; i < 400; ++i) {
        QString text =
            pieces[random.bounded(int(pieces.size()))] + pieces[random.bounded(int(pieces.size()))];
        const bool null = random.bounded(10) == 0;
        rows << QVariantList{i, null ? QVariant() : QVariant(text), random.bounded(5) - 2};
        texts << (null ? QString() : text);
    }
    Recordset set = Recordset::fromRows(
        makeStore({column("id", DataType::Integer), column("text", DataType::VarWChar),
                   column("group", DataType::Integer)},
                  rows));

    const QVariantList expectedIds = idsSortedBy(400, [&](int a, int b) {
        const QVariant& ga = rows[a][2];
        const QVariant& gb = rows[b][2];
        if (ga.toInt() != gb.toInt())
            return ga.toInt() > gb.toInt();
        const bool na = !rows[a][1].isValid();
        const bool nb = !rows[b][1].isValid();
        if (na || nb)
            return na && !nb;
        return texts[a].compare(texts[b], Qt::CaseInsensitive) < 0;
    });
    set.setSort("[group] DESC, [text]");
    EXPECT_EQ(columnValues(set, 0), expectedIds);
}

// Long runs that share their first bytes ("Customer 00042 Ltd") are split on later bytes; the
// order must still be the plain case-insensitive one, ties in storage order, both directions.
TEST(Sort, ValuesWithACommonStartSortByTheirWholeText) {
    QRandomGenerator random(7);
    const QStringList endings = {" Ltd", " LTD", " ltd.", "", " Ltd and Sons of a very long name"};
    QList<QVariantList> rows;
    QList<QString> texts;
    for (int i = 0; i < 3000; ++i) {
        const QString text = (random.bounded(2) ? u"Customer %1"_s : "CUSTOMER %1")
                                 .arg(random.bounded(300), 5, 10, QChar(u'0')) +
                             endings[random.bounded(int(endings.size()))];
        rows << QVariantList{i, text};
        texts << text;
    }
    Recordset set = Recordset::fromRows(
        makeStore({column("id", DataType::Integer), column("name", DataType::VarWChar)}, rows));

    for (const bool descending : {false, true}) {
        const QVariantList expectedIds = idsSortedBy(3000, [&](int a, int b) {
            const int c = texts[a].compare(texts[b], Qt::CaseInsensitive);
            return descending ? c > 0 : c < 0;
        });
        set.setSort(descending ? "[name] DESC" : "[name] ASC");
        EXPECT_EQ(columnValues(set, 0), expectedIds) << (descending ? "descending" : "ascending");
    }
}
