#include "query/QueryComposer.h"

#include "data/Error.h"
#include "support/ErrorNumberOf.h"

#include <gtest/gtest.h>

using namespace vx;
using vx::query::composeQuery;
using vx::query::keywordClause;

namespace {

const QString FormText = QStringLiteral("SELECT * FROM ktitem WHERE x = 1 ORDER BY y");

qint32 errorNumberOf(const QString& formText, const QString& clause) {
    return test::errorNumberOf([&] { composeQuery(formText, clause); });
}

} // namespace

TEST(QueryComposer, WorkedExamplesKeepEveryBlank) {
    EXPECT_EQ(composeQuery(FormText, QString()), "SELECT * FROM ktitem WHERE x = 1 ");
    // Without ORDER BY the whole condition stays.
    EXPECT_EQ(composeQuery("SELECT * FROM ktitem WHERE x = 1", keywordClause({"a"})),
              "SELECT * FROM ktitem ,keywords WHERE x = 1 and ktitem.itemid = keywords.itemid "
              "and keyword IN ('a') ");
    EXPECT_EQ(composeQuery("SELECT a FROM t", QString()), "SELECT a FROM t");
}

TEST(QueryComposer, KeywordClauseSkipsEmptyEntriesAndKeepsValuesAsTheyStand) {
    EXPECT_EQ(keywordClause({"", ""}), QString());
    EXPECT_EQ(keywordClause({"", "a", "", "b", ""}), "keyword IN ('a','b'");
    EXPECT_EQ(keywordClause({"O'Neil"}), "keyword IN ('O'Neil'");
}

TEST(QueryComposer, ClauseWordsAreCaseSensitive) {
    const QString lower = QStringLiteral("select * from ktitem where x = 1 order by y");
    EXPECT_EQ(composeQuery(lower, QString()), lower) << "lower-case order by is not cut";
    EXPECT_EQ(errorNumberOf(lower, keywordClause({"a"})), 5) << "lower-case where is not found";
    // The first seven characters become "SELECT " whatever they were.
    EXPECT_EQ(composeQuery("select * FROM ktitem WHERE x = 1 order by y", keywordClause({"a"})),
              "SELECT * FROM ktitem ,keywords WHERE x = 1 order by y and ktitem.itemid = "
              "keywords.itemid and keyword IN ('a') ");
}

TEST(QueryComposer, PositionsBeyond32767Overflow) {
    const auto padded = [](qsizetype blanks, const QString& tail) {
        return QStringLiteral("SELECT") + QString(blanks - 6, QLatin1Char(' ')) + tail;
    };
    // "ORDER BY" starting at position 32767 still fits, at 32768 it does not.
    const QString fits = padded(32766, QStringLiteral("ORDER BY y"));
    EXPECT_EQ(composeQuery(fits, QString()), fits.left(32766));
    EXPECT_EQ(errorNumberOf(padded(32767, QStringLiteral("ORDER BY y")), QString()),
              ErrorNumber::Overflow);

    const QString clause = keywordClause({"a"});
    EXPECT_EQ(errorNumberOf(padded(32767, QStringLiteral("WHERE x = 1")), clause),
              ErrorNumber::Overflow);
    EXPECT_NO_THROW(composeQuery(padded(32766, QStringLiteral("WHERE x = 1")), clause));
    // An ORDER BY far into the condition overflows as well, with and without keywords.
    const QString longCondition = QStringLiteral("SELECT * FROM t WHERE x = '") +
                                  QString(40000, QLatin1Char('z')) + QStringLiteral("' ORDER BY y");
    EXPECT_EQ(errorNumberOf(longCondition, clause), ErrorNumber::Overflow);
    EXPECT_EQ(errorNumberOf(longCondition, QString()), ErrorNumber::Overflow);
}
