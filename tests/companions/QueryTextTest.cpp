#include "FormTestHelpers.h"
#include "companions/DynaForm.h"
#include "core/SampleContent.h"
#include "data/Connection.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QLineEdit>
#include <functional>
#include <gtest/gtest.h>

using namespace vx;
using vx::test::setField;
using Document = vx::repo::sample::Document;

namespace {

// The query form of the sample, filled by each test; results are checked against the sample's
// own description of its documents.
class QueryTextTest : public ::testing::Test {
protected:
    test::TestEnvironment environment;
    test::SampleRepository sample;
    DynaForm form;

    void SetUp() override {
        QString path = sample.queryFormPath();
        ASSERT_TRUE(form.LoadForm(path));
    }

    QList<qint32> run() {
        Connection connection;
        connection.open(sample.connectionText());
        Recordset result;
        result.open(form.QueryText(), connection);
        QList<qint32> ids;
        for (; !result.eof(); result.moveNext())
            ids << result.value(QStringLiteral("itemid")).toInt();
        return ids;
    }

    QList<qint32> expected(const std::function<bool(const Document&)>& match) const {
        const qint32 count = qint32(sample.expected().documents);
        QList<qint32> ids;
        for (qint32 id = 1; id <= count; ++id) {
            const Document document = repo::sample::document(id, count);
            if (!document.deleted && match(document))
                ids << id;
        }
        return ids;
    }

    void expectRows(const std::function<bool(const Document&)>& match, const char* what) {
        const QList<qint32> want = expected(match);
        EXPECT_FALSE(want.isEmpty()) << what << ": the sample should hold matching documents";
        EXPECT_EQ(run(), want) << what << "\n" << form.QueryText().toStdString();
        form.ClearForm();
    }
};

bool hasEntry(const Document& d, const QString& entry) {
    return d.categories.split(QLatin1Char(';')).contains(entry);
}

} // namespace

TEST_F(QueryTextTest, TextMatchesIgnoreCaseTakeWildcardsAndQuoteApostrophes) {
    // An empty form, blanks alone or an unset check box build no query.
    EXPECT_FALSE(form.QueryRecordset().isOpen());
    setField(form, "InvoiceNo", QStringLiteral("   "));
    EXPECT_TRUE(form.QueryText().isEmpty());

    setField(form, "Customer", QStringLiteral("acme TOOLS"));
    expectRows([](const Document& d) { return d.customer == "Acme Tools"; }, "exact, any case");

    setField(form, "Customer", QStringLiteral("o'malley*"));
    expectRows([](const Document& d) { return d.customer == "O'Malley Bakery"; }, "apostrophe");

    setField(form, "Customer", QStringLiteral("?irchwood*"));
    expectRows([](const Document& d) { return d.customer == "Birchwood Ltd"; }, "? and *");

    setField(form, "Notes", QStringLiteral("*5%*"));
    expectRows([](const Document& d) { return d.notes.contains("5%"); }, "literal %");

    // A literal _ must not act as a one-character wildcard.
    setField(form, "InvoiceNo", QStringLiteral("INV_0000001"));
    EXPECT_TRUE(run().isEmpty());
    form.ClearForm();

    setField(form, "Customer", QStringLiteral("Acme"));
    EXPECT_TRUE(run().isEmpty()) << "without a wildcard the whole value must match";
}

TEST_F(QueryTextTest, RangesChecksAndListsSelectExactlyTheMatchingDocuments) {
    setField(form, "Amount", 1000, 1);
    setField(form, "Amount", 2000, 2);
    expectRows([](const Document& d) { return d.amount >= 1000 && d.amount <= 2000; }, "both ends");

    setField(form, "Amount", 9000, 1);
    expectRows([](const Document& d) { return d.amount >= 9000; }, "from only");
    setField(form, "Amount", 800, 2);
    expectRows([](const Document& d) { return d.amount <= 800; }, "to only");

    // Both ends of a date range are included, whatever the time of day stored.
    const QDate to = repo::sample::document(17, 300).invoiceDate;
    const QDate from = to.addDays(-20);
    setField(form, "InvoiceDate", from, 1);
    setField(form, "InvoiceDate", to, 2);
    expectRows([&](const Document& d) { return d.invoiceDate >= from && d.invoiceDate <= to; },
               "date range");

    setField(form, "Paid", true);
    expectRows([](const Document& d) { return d.paid; }, "checked");
    setField(form, "Paid", false);
    expectRows([](const Document& d) { return !d.paid; }, "cleared");

    // A list field matches documents holding any of its entries, wherever they stand.
    test::moveToField(form, "Categories");
    form.AddFieldListItem(QStringLiteral("software"));
    expectRows([](const Document& d) { return hasEntry(d, "Software"); }, "one entry");
    test::moveToField(form, "Categories");
    form.AddFieldListItem(QStringLiteral("Travel"));
    form.AddFieldListItem(QStringLiteral("Licences"));
    expectRows([](const Document& d) { return hasEntry(d, "Travel") || hasEntry(d, "Licences"); },
               "any of two entries");

    // Criteria of several fields all apply.
    setField(form, "Status", QStringLiteral("open"));
    setField(form, "Amount", 5000, 1);
    expectRows([](const Document& d) { return d.status == "Open" && d.amount >= 5000; },
               "combined");
}

TEST_F(QueryTextTest, ResultColumnsAreNamedByCaptionAndBadEntriesAreReported) {
    setField(form, "Amount", 100, 1);
    const Recordset result = form.QueryRecordset();
    ASSERT_TRUE(result.isOpen());
    QStringList names;
    for (int i = 0; i < result.fieldCount(); ++i)
        names << result.field(i).name();
    EXPECT_EQ(names, (QStringList{"itemid", "IndexDate", "Invoice number", "Customer", "Status",
                                  "Amount", "Invoice date", "Paid", "Categories", "Notes"}));
    const QString text = form.QueryText();
    EXPECT_TRUE(text.startsWith("SELECT DISTINCT ktitem.itemid AS itemid, ktitem.idx_date AS "
                                "IndexDate, Invoices.InvoiceNo AS [Invoice number]"));
    EXPECT_TRUE(text.contains(" FROM ktitem, Invoices WHERE ktitem.itemid = Invoices.itemid AND "
                              "ktitem.deleted = 0 AND "));
    EXPECT_TRUE(text.endsWith(" ORDER BY ktitem.itemid"));

    form.findChild<QWidget*>("field_Amount_2")->findChild<QLineEdit*>("number")->setText("12a");
    try {
        (void)form.QueryText();
        FAIL() << "a number that is not one must not be searched for";
    } catch (const Error& error) {
        EXPECT_TRUE(error.description().contains(QStringLiteral("Amount to")))
            << error.description().toStdString();
    }
}
