#include "FormTestHelpers.h"
#include "data/Connection.h"
#include "portable/QueryRows.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>
#include <gtest/gtest.h>

using namespace vx;
using vx::test::setField;

namespace {

using FormEntryTest = test::FormOnSample;

TEST_F(FormEntryTest, NumberFieldTakesWhatAWholeNumberColumnTakesAndShowsWhatItRefuses) {
    load(sample.formDefinitionPath());
    form.show();
    auto* amount = input<QLineEdit>("field_Amount", "number");
    ASSERT_NE(amount, nullptr);
    struct Case {
        const char* typed;
        QVariant value;         // what the form hands on
        const char* problem;    // part of the reason given; empty when accepted
        const char* shownAfter; // the text once the field is left
    };
    const Case cases[] = {
        {"12.50", 12, "", "12"},
        {"13.5", 14, "", "14"}, // half to even, as the column rounds
        {"-7", -7, "", "-7"},
        {"2147483647", 2147483647, "", "2147483647"},
        {"12a", QStringLiteral("12a"), "\"12a\" is not a number.", "12a"},
        {"2147483648", QStringLiteral("2147483648"), "outside the range", "2147483648"},
        {"abc", QStringLiteral("abc"), "is not a number", "abc"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.typed);
        amount->clear();
        amount->setFocus();
        QTest::keyClicks(amount, QString::fromLatin1(c.typed));
        EXPECT_EQ(amount->text(), QString::fromLatin1(c.typed)) << "no character is dropped";
        ASSERT_TRUE(test::moveToField(form, "Amount"));
        EXPECT_EQ(form.FieldValue(), c.value);
        setField(form, "InvoiceNo", QStringLiteral("INV-1"));
        setField(form, "Customer", QStringLiteral("Acme Tools"));
        setField(form, "InvoiceDate", QDate(2024, 1, 31));
        const bool valid = form.FieldsValid();
        EXPECT_EQ(valid, QByteArray(c.problem).isEmpty());
        if (!valid) {
            EXPECT_TRUE(form.fieldProblems().startsWith("Amount: "))
                << form.fieldProblems().toStdString();
        }
        EXPECT_TRUE(form.fieldProblems().contains(QString::fromLatin1(c.problem)));
        emit amount->editingFinished();
        EXPECT_EQ(amount->text(), QString::fromLatin1(c.shownAfter));
    }
}

TEST_F(FormEntryTest, FailedCheckNamesEveryFailingFieldOnItsLabelAndClearsWithTheForm) {
    load(sample.formDefinitionPath());
    auto* amount = input<QLineEdit>("field_Amount", "number");
    auto* date = input<QLineEdit>("field_InvoiceDate", "date");
    amount->setText(QStringLiteral("1.2.3"));
    date->setText(QStringLiteral("31.31.2024"));
    EXPECT_FALSE(form.FieldsValid());
    const QStringList lines = form.fieldProblems().split(u'\n');
    ASSERT_EQ(lines.size(), 4) << form.fieldProblems().toStdString();
    EXPECT_EQ(lines.mid(0, 3),
              (QStringList{"Invoice number must be filled in.", "Customer must be filled in.",
                           "Amount: \"1.2.3\" is not a number."}));
    EXPECT_TRUE(lines[3].startsWith("Invoice date: \"31.31.2024\" is not a date"));
    for (const char* label : {"label_InvoiceNo", "label_InvoiceDate"})
        EXPECT_FALSE(form.findChild<QLabel*>(label)->toolTip().isEmpty()) << label;

    setField(form, "InvoiceNo", QStringLiteral("INV-1"));
    setField(form, "Customer", QStringLiteral("Acme Tools"));
    date->setText(QStringLiteral("2024-02-29"));
    amount->setText(QStringLiteral("-42"));
    EXPECT_TRUE(form.FieldsValid()) << form.fieldProblems().toStdString();
    EXPECT_TRUE(form.findChild<QLabel*>("label_InvoiceNo")->toolTip().isEmpty());
    amount->setText(QStringLiteral("x"));
    EXPECT_FALSE(form.FieldsValid());
    form.ClearForm();
    EXPECT_TRUE(form.fieldProblems().isEmpty());
}

TEST_F(FormEntryTest, PickListsComeFromTheSourceTheDefinitionNamesSorted) {
    load(sample.formDefinitionPath());
    const auto items = [&](const QString& field) {
        QStringList list;
        auto* combo = input<QComboBox>(field, "combo");
        for (int i = 0; combo && i < combo->count(); ++i)
            list << combo->itemText(i);
        return list;
    };
    const auto sorted = [](QStringList list) {
        list.removeAll(QString());
        list.removeDuplicates();
        std::sort(list.begin(), list.end(),
                  [](const QString& a, const QString& b) { return a.localeAwareCompare(b) < 0; });
        return list;
    };
    Connection connection;
    connection.open(sample.connectionText());
    // Status names the group table itself: its distinct values.
    const QStringList status = items("field_Status");
    EXPECT_FALSE(status.isEmpty());
    EXPECT_EQ(status, sorted(test::rowsOf(connection, "select distinct Status from Invoices")));
    // Customer has a hint table of its own.
    const QStringList customers = items("field_Customer");
    EXPECT_FALSE(customers.isEmpty());
    EXPECT_EQ(customers,
              sorted(test::rowsOf(connection, "select Customer from InvoicesCustomerHints")));
}

TEST_F(FormEntryTest, SearchFormTextFieldsSayThatAStarMatchesAnyText) {
    load(sample.queryFormPath());
    const QString hint = QStringLiteral("* matches any text");
    EXPECT_EQ(input<QLineEdit>("field_InvoiceNo", "edit")->placeholderText(), hint);
    EXPECT_EQ(input<QComboBox>("field_Customer", "combo")->lineEdit()->placeholderText(), hint);
    EXPECT_EQ(input<QPlainTextEdit>("field_Notes", "memo")->placeholderText(), hint);
    EXPECT_TRUE(input<QLineEdit>("field_Amount", "number")->placeholderText().isEmpty());
    // The index form is filled, not searched: no hint there.
    DynaForm indexForm;
    QString path = sample.formDefinitionPath();
    ASSERT_TRUE(indexForm.LoadForm(path));
    auto* editor = indexForm.findChild<form::FieldEditor*>("field_InvoiceNo");
    EXPECT_TRUE(editor->findChild<QLineEdit*>("edit")->placeholderText().isEmpty());
}

} // namespace
