#include "session/FormDefinition.h"

#include "data/Error.h"
#include "session/LibraryState.h"
#include "session/Schema.h"
#include "support/TestEnvironment.h"

#include <QDateTime>
#include <QFile>
#include <QThread>
#include <gtest/gtest.h>

using namespace vx;

namespace {

const QByteArray invoiceForm = R"(<?xml version="1.0"?>
<form>
  <controls>
    <control>
      <type>EditField</type><caption>Customer</caption>
      <columnname>customer</columnname><allowupdate>TRUE</allowupdate>
    </control>
    <control>
      <type>NumericField</type><caption>Amount</caption>
      <columnname>Amount</columnname><allowupdate>false</allowupdate>
      <literalprefix>#</literalprefix>
    </control>
    <control>
      <type>DateField</type><caption>Due</caption>
      <columnname>Due</columnname><allowupdate>false</allowupdate>
    </control>
  </controls>
</form>
)";

// One control lacks <allowupdate>, so the counts differ.
const QByteArray unevenForm = R"(<controls>
  <control><columnname>a</columnname><allowupdate>first</allowupdate></control>
  <control><columnname>b</columnname></control>
  <control><columnname>c</columnname><allowupdate>third</allowupdate></control>
</controls>)";

} // namespace

TEST(GetControlValuesFromXML, FindsAFieldsPropertyByItsColumn) {
    test::TestEnvironment env;
    library().formDefinitionPath = env.writeFile("Invoices.xml", invoiceForm);

    EXPECT_EQ(GetControlValuesFromXML("ColumnName", "Customer", "Type"), "EditField");
    EXPECT_EQ(GetControlValuesFromXML("COLUMNNAME", "amount", "Type"), "NumericField");
    EXPECT_EQ(GetControlValuesFromXML("ColumnName", "due", "AllowUpdate"), "false");
    EXPECT_EQ(GetControlValuesFromXML("ColumnName", "Customer", "AllowUpdate"), "TRUE")
        << "the returned text keeps its case";
    EXPECT_EQ(GetControlValuesFromXML("ColumnName", "Nobody", "Type"), "Not Found");
    EXPECT_EQ(fieldTypeFromName(GetControlValuesFromXML("ColumnName", "Nobody", "Type")),
              FieldType::Unknown);
    // Only one control has the wanted element: it answers for every control.
    EXPECT_EQ(GetControlValuesFromXML("ColumnName", "Due", "LiteralPrefix"), "#");
    // No control has it: found, but empty.
    EXPECT_EQ(GetControlValuesFromXML("ColumnName", "Due", "HintListType"), "");
    EXPECT_TRUE(env.ui().prompts().isEmpty());

    // Uneven counts: the first wanted element answers.
    library().formDefinitionPath = env.writeFile("uneven.xml", unevenForm);
    EXPECT_EQ(GetControlValuesFromXML("columnname", "a", "allowupdate"), "first");
    EXPECT_EQ(GetControlValuesFromXML("columnname", "c", "allowupdate"), "first");
}

TEST(GetControlValuesFromXML, ReportsAnUnreadableFileAndReturnsEmpty) {
    test::TestEnvironment env;
    library().formDefinitionPath = env.filePath("missing.xml");
    env.ui().answerMessage(MessageAnswer::Ok);
    EXPECT_EQ(GetControlValuesFromXML("ColumnName", "Customer", "Type"), "");
    ASSERT_EQ(env.ui().prompts().size(), 1);
    const test::Prompt missing = env.ui().prompts().front();
    EXPECT_EQ(missing.title, "GetControlValuesFromXML");
    EXPECT_EQ(missing.icon, MessageStyle::Critical);
    EXPECT_EQ(missing.buttons, MessageStyle::OkOnly);
    EXPECT_TRUE(missing.text.contains("missing.xml")) << missing.text.toStdString();

    library().formDefinitionPath = env.writeFile("broken.xml", "<controls><control>");
    env.ui().answerMessage(MessageAnswer::Ok);
    EXPECT_EQ(GetControlValuesFromXML("ColumnName", "Customer", "Type"), "");
    ASSERT_EQ(env.ui().prompts().size(), 2);
    EXPECT_TRUE(env.ui().prompts()[1].text.contains("not well-formed"));
}

TEST(GetControlValuesFromXML, RefusesHostileDocumentsWithItsMessageInsteadOfCrashing) {
    const QByteArray control = "<control><columnname>a</columnname><type>EditField</type>"
                               "</control>";
    QByteArray laughs = R"(<?xml version="1.0"?><!DOCTYPE f [<!ENTITY l0 "lol">)";
    for (int i = 1; i < 10; ++i)
        laughs += "<!ENTITY l" + QByteArray::number(i) + " \"" +
                  ("&l" + QByteArray::number(i - 1) + ";").repeated(10) + "\">";
    laughs += "]><controls>" + control + "<x>&l9;</x></controls>";
    const struct {
        const char* name;
        QByteArray xml;
        const char* says; // empty: the document is read
    } cases[] = {
        {"nested far too deep", QByteArray("<a>").repeated(200000), "levels deep"},
        {"nested just too deep",
         "<controls>" + control + QByteArray("<b>").repeated(256) +
             QByteArray("</b>").repeated(256) + "</controls>",
         "levels deep"},
        {"nested to the limit",
         "<controls>" + control + QByteArray("<b>").repeated(254) +
             QByteArray("</b>").repeated(254) + "</controls>",
         ""},
        {"entity bomb", laughs, "declares entities"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        test::TestEnvironment env;
        library().formDefinitionPath = env.writeFile("hostile.xml", c.xml);
        clearFormDefinitionCache();
        if (*c.says != 0)
            env.ui().answerMessage(MessageAnswer::Ok);
        const QString type = GetControlValuesFromXML("ColumnName", "a", "Type");
        if (*c.says == 0) {
            EXPECT_EQ(type, "EditField");
            EXPECT_TRUE(env.ui().prompts().isEmpty());
            continue;
        }
        EXPECT_EQ(type, "");
        ASSERT_EQ(env.ui().prompts().size(), 1);
        EXPECT_EQ(env.ui().prompts()[0].title, "GetControlValuesFromXML");
        EXPECT_TRUE(env.ui().prompts()[0].text.contains(QLatin1String(c.says)))
            << env.ui().prompts()[0].text.toStdString();
    }
}

TEST(GetControlValuesFromXML, CacheIsDroppedOnRequestAndWhenTheFileChanges) {
    test::TestEnvironment env;
    const QString path = env.writeFile("Invoices.xml", invoiceForm);
    library().formDefinitionPath = path;
    ASSERT_EQ(GetControlValuesFromXML("ColumnName", "Due", "Type"), "DateField");

    // Same size and, on a coarse clock, the same time stamp: only clearing the cache shows it.
    QByteArray edited = invoiceForm;
    edited.replace("<type>DateField</type>", "<type>MemoField</type>");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const QDateTime stamp = file.fileTime(QFileDevice::FileModificationTime);
    file.write(edited);
    file.flush(); // the stamp must be set after the bytes reach the file
    file.setFileTime(stamp, QFileDevice::FileModificationTime);
    file.close();
    EXPECT_EQ(GetControlValuesFromXML("ColumnName", "Due", "Type"), "DateField");
    clearFormDefinitionCache();
    EXPECT_EQ(GetControlValuesFromXML("ColumnName", "Due", "Type"), "MemoField");

    // A new path is a different file.
    library().formDefinitionPath = env.writeFile("uneven.xml", unevenForm);
    EXPECT_EQ(GetControlValuesFromXML("ColumnName", "Due", "Type"), "Not Found");
}

TEST(FormDefinition, ListsControlsInDocumentOrder) {
    test::TestEnvironment env;
    const FormDefinition form = FormDefinition::load(env.writeFile("f.xml", invoiceForm));
    ASSERT_EQ(form.controls().size(), 3);
    EXPECT_EQ(form.controls()[0].columnName, "customer");
    EXPECT_EQ(form.controls()[1].type, "NumericField");
    EXPECT_EQ(form.controls()[1].literalPrefix, "#");
    EXPECT_EQ(form.controls()[2].caption, "Due");
    EXPECT_EQ(form.controls()[2].value("CAPTION"), "Due");
    ASSERT_NE(form.controlForColumn("CUSTOMER"), nullptr);
    EXPECT_EQ(form.controlForColumn("CUSTOMER")->allowUpdate, "TRUE");
    EXPECT_EQ(form.controlForColumn("nobody"), nullptr);

    // A control outside a controls element is not a form field.
    const FormDefinition stray = FormDefinition::fromText(
        "<form><control><columnname>x</columnname></control><controls/></form>");
    EXPECT_TRUE(stray.controls().isEmpty());
    EXPECT_THROW(FormDefinition::fromText("<controls>"), Error);
    EXPECT_THROW(FormDefinition::load(env.filePath("none.xml")), Error);
}

TEST(Schema, FieldTypeNamesAreExact) {
    EXPECT_EQ(fieldTypeFromName("ComboField"), FieldType::Combo);
    EXPECT_EQ(fieldTypeFromName("editfield"), FieldType::Unknown);
    EXPECT_EQ(fieldTypeFromName("EditField "), FieldType::Unknown);
    EXPECT_EQ(fieldTypeFromName(""), FieldType::Unknown);
    EXPECT_EQ(hintTableName("Invoices", "Customer"), "InvoicesCustomerHints");
}

TEST(LibraryState, EachThreadHasItsOwnValues) {
    test::TestEnvironment env;
    library().securityTablePresent = true;
    library().formDefinitionPath = "main.xml";
    bool otherSawSecurity = true;
    QString otherPath = "unset";
    std::unique_ptr<QThread> thread(QThread::create([&] {
        otherSawSecurity = library().securityTablePresent;
        otherPath = library().formDefinitionPath;
        library().securityTablePresent = true;
    }));
    thread->start();
    thread->wait();
    EXPECT_FALSE(otherSawSecurity);
    EXPECT_EQ(otherPath, "");
    resetLibraryState();
    EXPECT_FALSE(library().securityTablePresent);
    EXPECT_EQ(library().mediaSizeMB, 0);
}
