#include "companions/DynaForm.h"

#include "FormTestHelpers.h"
#include "data/Error.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTest>
#include <gtest/gtest.h>

using namespace vx;
using vx::test::moveToField;
using vx::test::setField;

namespace {

using DynaFormTest = test::FormOnSample;

const QStringList SampleColumns{"InvoiceNo",   "Customer", "Status",     "Amount",
                                "InvoiceDate", "Paid",     "Categories", "Notes"};

} // namespace

TEST_F(DynaFormTest, RendersOneLabelledEditorPerFieldAndWalksThemInFormOrder) {
    load(sample.formDefinitionPath());
    ASSERT_EQ(form.fieldCount(), 8);

    QStringList names;
    for (form.MoveFirstField(); !form.FieldEOF(); form.MoveNextField()) {
        names << form.FieldName();
        EXPECT_FALSE(form.FieldValue().isValid() || form.ListItemPresent()) << names.size();
    }
    EXPECT_EQ(names, SampleColumns);
    EXPECT_TRUE(form.FieldName().isEmpty()) << "past the last field";
    form.MoveFirstField();
    EXPECT_EQ(form.FieldCaption(), QStringLiteral("Invoice number"));

    // One editor of the field's kind.
    EXPECT_NE((input<QLineEdit>("field_InvoiceNo", "edit")), nullptr);
    EXPECT_NE((input<QLineEdit>("field_Amount", "number")), nullptr);
    EXPECT_NE((input<QLineEdit>("field_InvoiceDate", "date")), nullptr);
    EXPECT_NE((input<QListWidget>("field_Categories", "list")), nullptr);
    EXPECT_NE((input<QPlainTextEdit>("field_Notes", "memo")), nullptr);
    auto* paid = input<QCheckBox>("field_Paid", "check");
    ASSERT_NE(paid, nullptr);
    EXPECT_TRUE(paid->isTristate());
    EXPECT_EQ(paid->checkState(), Qt::PartiallyChecked);

    // Combo fields (their lists are FormEntryTest's) are editable and start with nothing picked.
    auto* customer = input<QComboBox>("field_Customer", "combo");
    ASSERT_NE(customer, nullptr);
    EXPECT_TRUE(customer->isEditable());
    EXPECT_TRUE(customer->currentText().isEmpty()) << "filling the list picks nothing";

    // The query form holds each numeric and date field twice, as a range.
    load(sample.queryFormPath());
    EXPECT_EQ(form.fieldCount(), 10);
    EXPECT_NE(form.findChild<QWidget*>("field_Amount_2"), nullptr);
    EXPECT_NE(form.findChild<QWidget*>("field_InvoiceDate_2"), nullptr);
    EXPECT_TRUE(form.FieldsValid()) << "nothing must be filled in on a search form";
    EXPECT_FALSE(form.findChild<QLabel*>("label_Customer")->text().contains('*'));
}

TEST_F(DynaFormTest, ValuesReadBackByTypeAndUnconvertibleValuesAreRefused) {
    load(sample.formDefinitionPath());

    // (column, text given, value read back); Paid last, for the checks that follow.
    const std::tuple<const char*, QString, QVariant> values[] = {
        {"InvoiceNo", QStringLiteral("INV-9"), QStringLiteral("INV-9")},
        {"Amount", QStringLiteral("1250"), qint32(1250)},
        {"InvoiceDate", QStringLiteral("2024-03-15"), QDate(2024, 3, 15)},
        {"Notes", QStringLiteral("line 1\nline 2"), QStringLiteral("line 1\nline 2")},
        {"Paid", QStringLiteral("true"), true}};
    for (const auto& [column, text, value] : values)
        setField(form, column, text);
    setField(form, "Categories", QStringLiteral("Software;Travel"));
    for (const auto& [column, text, value] : values) {
        moveToField(form, column);
        EXPECT_EQ(form.FieldValue(), value) << column;
    }
    form.setFieldValue(0);
    EXPECT_EQ(form.FieldValue(), QVariant(false));
    form.setFieldValue(QVariant());
    EXPECT_FALSE(form.FieldValue().isValid()) << "a check box can be unset again";

    // The list cursor walks the entries; the list can be emptied and refilled.
    moveToField(form, "Categories");
    QStringList entries;
    for (form.MoveFirstListItem(); form.ListItemPresent(); form.MoveNextListItem())
        entries << form.ListItemText();
    EXPECT_EQ(entries, (QStringList{"Software", "Travel"}));
    form.ClearFieldList();
    EXPECT_FALSE(form.ListItemPresent());
    form.AddFieldListItem(QStringLiteral("a"));
    form.AddFieldListItem(QStringLiteral("b"));
    EXPECT_EQ(form.FieldValue(), QVariant(QStringLiteral("a;b")));
    // Text typed into the entry line but not yet added is not lost.
    input<QLineEdit>("field_Categories", "entry")->setText(QStringLiteral("c"));
    EXPECT_EQ(form.FieldValue(), QVariant(QStringLiteral("a;b;c")));

    // Values a field cannot hold raise the platform's errors.
    moveToField(form, "Amount");
    EXPECT_THROW(form.setFieldValue(QStringLiteral("twelve")), Error);
    EXPECT_EQ(form.FieldValue(), QVariant(qint32(1250))) << "a refused value changes nothing";
    moveToField(form, "InvoiceDate");
    EXPECT_THROW(form.setFieldValue(QStringLiteral("not a date")), Error);
    moveToField(form, "Paid");
    EXPECT_THROW(form.setFieldValue(QStringLiteral("maybe")), Error);

    // ResetFields and ClearForm empty every field and put the cursor back on the first.
    form.ResetFields();
    EXPECT_EQ(form.FieldName(), QStringLiteral("InvoiceNo"));
    for (; !form.FieldEOF(); form.MoveNextField())
        EXPECT_FALSE(form.FieldValue().isValid()) << form.FieldName().toStdString();
    setField(form, "Customer", QStringLiteral("Acme Tools"));
    form.ClearForm();
    moveToField(form, "Customer");
    EXPECT_FALSE(form.FieldValue().isValid());
    EXPECT_EQ(input<QComboBox>("field_Customer", "combo")->count(),
              sample.expected().customerHints);
}

TEST_F(DynaFormTest, KeyDownIsRaisedOnceForEveryKeyWithPlatformCodes) {
    load(sample.formDefinitionPath());
    form.show();
    auto* edit = input<QLineEdit>("field_InvoiceNo", "edit");
    ASSERT_NE(edit, nullptr);

    using Keys = QList<std::pair<short, short>>;
    Keys keys;
    Keys modifiers; // Shift, Ctrl and Alt going down are keys of their own (16, 17, 18)
    QObject::connect(&form, &VXDynaForm::KeyDown, [&](short& code, short& shift) {
        (code >= 16 && code <= 18 ? modifiers : keys).append({code, shift});
        if (code == 'X')
            code = 0; // swallow
    });
    QTest::keyClick(edit, Qt::Key_A, Qt::ShiftModifier);
    QTest::keyClick(edit, Qt::Key_Return);
    QTest::keyClick(edit, Qt::Key_Escape);
    QTest::keyClick(edit, Qt::Key_X);
    QTest::keyClick(edit, Qt::Key_B, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_EQ(modifiers.value(0), (std::pair<short, short>{16, 1}));
    EXPECT_EQ(keys, (Keys{{65, 1}, {13, 0}, {27, 0}, {88, 0}, {66, 6}}));
    EXPECT_TRUE(edit->text().startsWith(QLatin1Char('a'), Qt::CaseInsensitive));
    EXPECT_FALSE(edit->text().contains(QLatin1Char('x'), Qt::CaseInsensitive))
        << "the swallowed key never reached the edit";

    // Keys in the inner widgets of composite editors are raised too, but Enter in a multi-line
    // field is a new line there, not the form's key.
    keys.clear();
    auto* notes = input<QPlainTextEdit>("field_Notes", "memo");
    QTest::keyClick(input<QListWidget>("field_Categories", "list"), Qt::Key_Delete);
    QTest::keyClick(notes, Qt::Key_F2);
    QTest::keyClicks(notes, QStringLiteral("a"));
    QTest::keyClick(notes, Qt::Key_Return);
    QTest::keyClick(notes, Qt::Key_Enter);
    QTest::keyClicks(notes, QStringLiteral("b"));
    EXPECT_EQ(notes->toPlainText(), "a\n\nb");
    EXPECT_EQ(keys, (Keys{{46, 0}, {113, 0}, {65, 0}, {66, 0}}));
}

TEST_F(DynaFormTest, LoadFormReportsABadDefinitionAndReturnsFalse) {
    auto& ui = environment.ui();
    ui.answerMessage(MessageAnswer::Ok).answerMessage(MessageAnswer::Ok);
    QString missing = environment.filePath(QStringLiteral("missing.xml"));
    EXPECT_FALSE(form.LoadForm(missing));
    QString broken = environment.writeFile(QStringLiteral("broken.xml"), "<form><controls>");
    EXPECT_FALSE(form.LoadForm(broken));
    ASSERT_EQ(ui.prompts().size(), 2);
    EXPECT_EQ(ui.prompts().at(0).title, QStringLiteral("LoadForm"));
    EXPECT_TRUE(ui.prompts().at(0).text.contains(QStringLiteral("missing.xml")));
    EXPECT_EQ(ui.prompts().at(0).icon, MessageStyle::Critical);
    EXPECT_EQ(form.fieldCount(), 0);
}

TEST_F(DynaFormTest, SampleFormRendersWithAlignedLabelsAndEditors) {
    load(sample.formDefinitionPath());
    form.resize(720, 640);
    form.show();
    QCoreApplication::processEvents();
    // Every editor labelled by its caption; labels and editors each in one aligned column.
    const int lineHeight = QLineEdit().sizeHint().height();
    const int editorsLeft = form.findChild<QWidget*>("field_InvoiceNo")->x();
    const int labelsRight = form.findChild<QLabel*>("label_InvoiceNo")->geometry().right();
    int previousBottom = -1;
    for (const QString& column : SampleColumns) {
        auto* label = form.findChild<QLabel*>(QStringLiteral("label_") + column);
        auto* editor = form.findChild<QWidget*>(QStringLiteral("field_") + column);
        ASSERT_TRUE(label && editor) << column.toStdString();
        EXPECT_EQ(label->buddy(), editor);
        ASSERT_TRUE(label->isVisible() && editor->isVisible()) << column.toStdString();
        EXPECT_GE(label->width(), label->sizeHint().width()) << "caption not cut";
        EXPECT_LT(label->geometry().right(), editor->geometry().left());
        EXPECT_EQ(editor->x(), editorsLeft) << "editors share one column";
        EXPECT_EQ(label->geometry().right(), labelsRight) << "labels align on the right";
        EXPECT_GT(editor->y(), previousBottom) << "rows do not overlap";
        // The caption stands level with the editor's first line, also on tall editors.
        const int firstLine = editor->y() + qMin(editor->height(), lineHeight) / 2;
        EXPECT_LE(std::abs(label->geometry().center().y() - firstLine), 1) << column.toStdString();
        previousBottom = editor->geometry().bottom();
    }
}

// A definition someone else wrote names its columns and tables into the form's SQL: only plain
// names load, and the refusal shows the name escaped.
TEST_F(DynaFormTest, DefinitionsNamingMoreThanAColumnAreRefused) {
    QFile sampleForm(sample.queryFormPath());
    ASSERT_TRUE(sampleForm.open(QIODevice::ReadOnly));
    const QString original = QString::fromUtf8(sampleForm.readAll());
    const struct {
        QString from;
        QString to;
    } cases[] = {
        {"<columnname>Customer<", "<columnname>Customer = Customer OR Invoices.Status<"},
        {"<columnname>Status<", "<columnname>Status) OR (1=1<"},
        {"<tablename>Invoices<", "<tablename>Invoices, KTSecurity<"},
        {"<inittablename>Invoices<", "<inittablename>KTUsers -- <"},
        {"<initcolumnname>InvoiceNo<", "<initcolumnname>InvoiceNo\u202eon<"},
        {"<columnname>Notes<", "<columnname>[Notes]<"},
    };
    auto& ui = environment.ui();
    for (const auto& [from, to] : cases) {
        ASSERT_TRUE(original.contains(from)) << from.toStdString();
        QString text = original;
        text.replace(text.indexOf(from), from.size(), to);
        QString path = environment.writeFile("hostile.xqr", text.toUtf8());
        ui.clearPrompts();
        ui.answerMessage(MessageAnswer::Ok);
        EXPECT_FALSE(form.LoadForm(path)) << to.toStdString();
        ASSERT_EQ(ui.prompts().size(), 1) << to.toStdString();
        EXPECT_TRUE(ui.prompts().at(0).text.contains("is not a plain name"))
            << ui.prompts().at(0).text.toStdString();
        EXPECT_FALSE(ui.prompts().at(0).text.contains(QChar(0x202e)));
        EXPECT_EQ(form.fieldCount(), 0);
    }
    QString plain = sample.queryFormPath();
    EXPECT_TRUE(form.LoadForm(plain));
}
