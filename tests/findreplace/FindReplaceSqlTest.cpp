#include "hitlist/FindReplaceSql.h"

#include "data/Connection.h"
#include "data/Error.h"
#include "hitlist/FindReplaceValues.h"
#include "session/PromptText.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QDateTime>
#include <gtest/gtest.h>

using namespace vx;

namespace {

TEST(FindReplaceValues, RefusedValuesShowTheirMessageTitledAfterTheirBox) {
    test::TestEnvironment environment;
    auto& prompts = environment.ui();
    const int warning = MessageStyle::OkOnly | MessageStyle::Exclamation;
    struct Case {
        QString text, type, message;
    };
    const QList<Case> cases{
        {"abc", "NumericField", "Invalid number entered!"},
        {"true", "CheckField",
         "Invalid value entered! Please enter in a value of either Yes or No"},
        {"1", "CheckField", "Invalid value entered! Please enter in a value of either Yes or No"},
        {"not a date", "DateField", "Invalid date entered!"},
    };
    int shown = 0;
    for (const bool isFindWhat : {true, false}) {
        for (const Case& c : cases) {
            prompts.answerMessage(MessageAnswer::Ok);
            const QVariant value = ValidateValue(c.text, c.type, isFindWhat);
            EXPECT_TRUE(isRefusedValue(value)) << c.text.toStdString();
            EXPECT_EQ(value.toString(), "!@#*1ERROR1*&^%");
            EXPECT_EQ(
                test::promptTexts(prompts).value(shown++),
                test::promptText(isFindWhat ? "Find What" : "Replace With", c.message, warning));
        }
    }
    EXPECT_EQ(prompts.prompts().size(), shown);
}

TEST(FindReplaceValues, SearchedValuesAndCellsMeetInOneCompareForm) {
    test::TestEnvironment environment;
    const auto same = [](const QString& type, const QString& typed, const QVariant& cell) {
        return FormatForCompare(type, ValidateValue(typed, type, true)) ==
               FormatForCompare(type, cell);
    };
    EXPECT_TRUE(same("NumericField", " 1200 ", QVariant(1200)));
    EXPECT_FALSE(same("NumericField", "1200.5", QVariant(1200)));
    EXPECT_TRUE(same("CheckField", "YES", QVariant(true)));
    EXPECT_TRUE(same("CheckField", "no", QVariant(false)));
    EXPECT_FALSE(same("CheckField", "No", QVariant(true)));
    // Dates meet by their day; the time of day never matters.
    EXPECT_TRUE(same("DateField", "2022-03-15", QDateTime(QDate(2022, 3, 15), QTime(17, 45))));
    EXPECT_FALSE(same("DateField", "2022-03-15", QDateTime(QDate(2022, 3, 16), QTime(0, 0))));
    for (const QString type : {"EditField", "ComboField", "MemoField", "ListField"})
        EXPECT_TRUE(same(type, "o'MALLEY bakery", QString("O'Malley Bakery")));
    EXPECT_FALSE(same("EditField", "O'Malley", QString("O'Malley Bakery")));
    EXPECT_EQ(FormatForCompare("EditField", QVariant()), "");
    EXPECT_EQ(FormatForCompare("Unknown", QString("x")), "");
}

// Quotes and the query restriction are checked on data by the panel's tests; this is about the
// statement's form.
TEST(FindReplaceSql, ReplaceAllDoublesQuotesAndNumbersStandBare) {
    EXPECT_EQ(EscapeQuotes("O'Malley's ''x"), "O''Malley''s ''''x");
    ReplaceAllTerms terms;
    terms.groupTable = "Invoices";
    terms.column = "Amount";
    terms.findText = "120";
    terms.replaceText = "130";
    terms.queryWhere = GetQueryWhere("SELECT itemid FROM Invoices WHERE Status = 'Open'");
    const ReplaceAllStatements sql = buildReplaceAll(terms);
    const QString condition = " WHERE Invoices.Amount=120 AND itemid IN (SELECT Invoices.itemid "
                              "FROM KTITEM, Invoices WHERE Status = 'Open')";
    EXPECT_EQ(sql.update, "UPDATE Invoices SET Invoices.Amount=130" + condition);
    EXPECT_EQ(sql.count, "SELECT * FROM Invoices" + condition);
}

TEST(FindReplaceSql, QueryConditionStartsAtTheUpperCaseWhere) {
    EXPECT_EQ(GetQueryWhere("SELECT a FROM t, [Somewhere] WHERE x = 'where' ORDER BY a"),
              "WHERE x = 'where' ORDER BY a");
    try {
        GetQueryWhere("select a from t where x = 1");
        ADD_FAILURE() << "a query without WHERE was taken";
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), ErrorNumber::InvalidArgument);
        EXPECT_FALSE(error.description().isEmpty());
    }
}

TEST(FindReplaceSql, LiteralAffixesComeFromTheProviderTypes) {
    test::TestEnvironment environment;
    test::SampleRepository sample;
    Connection connection;
    connection.open(sample.connectionText());
    const QString prefix = "LITERAL_PREFIX";
    const QString suffix = "LITERAL_SUFFIX";
    // Variable-length text is looked up as fixed-length text.
    EXPECT_EQ(GetLiteralAffix(connection, 202, prefix), "'");
    EXPECT_EQ(GetLiteralAffix(connection, 200, suffix), "'");
    EXPECT_EQ(GetLiteralAffix(connection, 130, suffix), "'");
    EXPECT_EQ(GetLiteralAffix(connection, 7, prefix), "#");
    EXPECT_EQ(GetLiteralAffix(connection, 3, prefix), "");
    EXPECT_EQ(GetLiteralAffix(connection, 3, suffix), "");
    EXPECT_EQ(GetLiteralAffix(connection, 9999, prefix), "");
}

} // namespace
