#include "core/GroupInstaller.h"

#include "RepoTestSupport.h"
#include "core/FormDocument.h"
#include "core/Repository.h"
#include "data/Error.h"
#include "session/FormDefinition.h"
#include "session/GroupConnection.h"
#include "session/PrivateProfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace vx;
using namespace vx::repo;

namespace {

// A hand-written form: only some of the elements, allowupdate in several letter cases.
const char* const LettersForm = R"(<?xml version="1.0"?>
<form>
  <controls>
    <control><caption>Title</caption><columnname>Title</columnname><type>EditField</type>
      <length>80</length></control>
    <control><caption>Supplier</caption><columnname>Supplier</columnname>
      <type>ComboField</type><allowupdate>TRUE</allowupdate></control>
    <control><caption>Region</caption><columnname>Region</columnname>
      <type>ComboField</type><allowupdate>false</allowupdate></control>
    <control><caption>Sender</caption><columnname>Sender</columnname>
      <type>ComboField</type></control>
    <control><caption>Pages</caption><columnname>Pages</columnname><type>NumericField</type>
      </control>
    <control><caption>Received</caption><columnname>Received</columnname>
      <type>DateField</type></control>
    <control><caption>Urgent</caption><columnname>Urgent</columnname><type>CheckField</type>
      </control>
    <control><caption>Tags</caption><columnname>Tags</columnname><type>ListField</type>
      <allowupdate>true</allowupdate></control>
    <control><caption>Summary</caption><columnname>Summary</columnname><type>MemoField</type>
      </control>
  </controls>
</form>)";

class GroupInstallerTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_folder.isValid());
        m_dir = storedPath(m_folder.path());
        m_catalog = m_folder.filePath("system/vxlibraries.ini");
    }

    GroupSetup setup(const QString& name) const {
        GroupSetup setup;
        setup.name = name;
        setup.library = "Mail";
        setup.catalogPath = m_catalog;
        return setup;
    }

    QTemporaryDir m_folder;
    QString m_dir;
    QString m_catalog;
};

} // namespace

TEST_F(GroupInstallerTest, MakesTheGroupTableHintTablesAndFiles) {
    Repository repository = Repository::create(m_dir);
    const InstalledGroup group = installGroup(repository, setup("Letters"),
                                              FormDocument::fromText(LettersForm, "Letters.xml"));

    // Only the combo whose allowupdate reads "true" (in any case) gets a hint table.
    const QStringList tables = test::tableNames(repository.connection());
    EXPECT_TRUE(tables.contains("Letters"));
    EXPECT_TRUE(tables.contains("LettersSupplierHints"));
    for (const char* absent : {"LettersRegionHints", "LettersSenderHints", "LettersTagsHints"})
        EXPECT_FALSE(tables.contains(absent)) << absent;
    EXPECT_EQ(group.hintTables, QStringList{"LettersSupplierHints"});

    Recordset table;
    table.open("SELECT * FROM Letters", repository.connection());
    ASSERT_EQ(table.fieldCount(), 10);
    const QList<std::pair<const char*, DataType>> columns{
        {"itemid", DataType::Integer},    {"Title", DataType::VarWChar},
        {"Supplier", DataType::VarWChar}, {"Region", DataType::VarWChar},
        {"Sender", DataType::VarWChar},   {"Pages", DataType::Integer},
        {"Received", DataType::Date},     {"Urgent", DataType::Boolean},
        {"Tags", DataType::VarWChar},     {"Summary", DataType::LongVarWChar}};
    for (int i = 0; i < table.fieldCount(); ++i) {
        EXPECT_EQ(table.field(i).name(), columns[i].first);
        EXPECT_EQ(table.field(i).type(), columns[i].second) << columns[i].first;
    }
    EXPECT_EQ(table.field("Title").definedSize(), 80);
    EXPECT_EQ(table.field("Supplier").definedSize(), 50);
    EXPECT_EQ(table.field("Tags").definedSize(), 255);

    Recordset row;
    row.open("SELECT * FROM KTGroup WHERE Name = 'Letters'", repository.connection());
    ASSERT_FALSE(row.eof());
    EXPECT_EQ(row.value("Groupid").toInt(), group.groupId);
    EXPECT_EQ(row.value("Path").toString(), QDir::toNativeSeparators(m_dir + "/documents/Letters"));
    EXPECT_TRUE(QFileInfo(group.documentFolder).isDir());
    EXPECT_EQ(test::columnValues(repository.connection(), "SELECT Path FROM KTPath"),
              (QVariantList{QDir::toNativeSeparators(m_dir + "/documents"), group.documentFolder}));

    // The init file leads a control's connection to the same database.
    EXPECT_EQ(readPrivateProfileString(group.initFilePath, "datalinks", "Group", {}),
              group.dataLinkPath);
    Connection viaInitFile = openGroupConnection(group.initFilePath);
    EXPECT_TRUE(test::tableNames(viaInitFile).contains("LettersSupplierHints"));
    EXPECT_EQ(readPrivateProfileString(m_catalog, "Mail", "Letters", {}), group.initFilePath);

    // The copied definitions are completed and point at the group's data link.
    const FormDefinition index = FormDefinition::load(group.formPath);
    ASSERT_EQ(index.controls().size(), 9);
    const FormControl* supplier = index.controlForColumn("Supplier");
    ASSERT_TRUE(supplier);
    EXPECT_EQ(supplier->tableName, "Letters");
    EXPECT_EQ(supplier->initTableName, "LettersSupplierHints");
    EXPECT_EQ(supplier->literalPrefix, "'");
    EXPECT_EQ(index.controlForColumn("Received")->literalPrefix, "#");
    EXPECT_EQ(index.controlForColumn("Pages")->literalSuffix, "");
    EXPECT_EQ(index.controlForColumn("Region")->allowUpdate, "false");
    EXPECT_EQ(FormDocument::load(group.formPath).groupDataLink(), group.dataLinkPath);
    QStringList queryColumns;
    const FormDefinition queryForm = FormDefinition::load(group.queryFormPath);
    for (const FormControl& control : queryForm.controls())
        queryColumns.append(control.columnName);
    EXPECT_EQ(queryColumns.count("Pages"), 2);
    EXPECT_EQ(queryColumns.count("Received"), 2);
    EXPECT_EQ(queryColumns.count("Title"), 1);
}

TEST_F(GroupInstallerTest, RefusesBadFormsAndLeavesNothingBehind) {
    Repository repository = Repository::create(m_dir);
    const QString valid = "<control><columnname>Title</columnname><type>EditField</type>"
                          "</control>";
    const QList<std::pair<QString, QString>> cases{
        {"<control><columnname>Title</columnname><type>Textfield</type></control>", "Textfield"},
        {"<control><columnname>Title</columnname><type>editfield</type></control>", "editfield"},
        {"<control><caption>No column</caption><type>EditField</type></control>", "columnname"},
        {valid + valid, "more than once"},
        {"<control><columnname>itemid</columnname><type>NumericField</type></control>", "itemid"},
        {"<control><columnname>Bad Name</columnname><type>EditField</type></control>", "Bad Name"},
        {"<control><columnname>Title</columnname><type>EditField</type><length>300</length>"
         "</control>",
         "300"},
    };
    for (const auto& [controls, mention] : cases) {
        const QString xml = "<form><controls>" + controls + "</controls></form>";
        try {
            installGroup(repository, setup("Broken"), FormDocument::fromText(xml, "Broken.xml"));
            ADD_FAILURE() << "accepted " << controls.toStdString();
        } catch (const Error& error) {
            EXPECT_TRUE(error.description().contains(mention)) << error.description().toStdString();
        }
    }
    // A query form naming a column the index form lacks.
    try {
        installGroup(
            repository, setup("Broken"),
            FormDocument::fromText("<form><controls>" + valid + "</controls></form>", "Broken.xml"),
            FormDocument::fromText("<form><controls><control><columnname>Other"
                                   "</columnname><type>EditField</type></control>"
                                   "</controls></form>",
                                   "Broken.xqr"));
        ADD_FAILURE() << "accepted a query form with a foreign column";
    } catch (const Error& error) {
        EXPECT_TRUE(error.description().contains("Other")) << error.description().toStdString();
    }
    EXPECT_THROW(FormDocument::fromText("<form><controls>", "Cut.xml"), Error);
    EXPECT_THROW(FormDocument::fromText("<form/>", "Empty.xml"), Error);

    EXPECT_FALSE(test::tableNames(repository.connection()).contains("Broken"));
    EXPECT_EQ(test::rowCount(repository.connection(), "KTGroup"), 0);
    // The open database's journal files aside, only the repository's own two files remain.
    QStringList left = QDir(m_dir).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    left.removeIf([](const QString& name) {
        return name.endsWith("-wal") || name.endsWith("-shm") || name.endsWith("-gate");
    });
    EXPECT_EQ(left, (QStringList{"repository.db", "repository.udl"}));
    EXPECT_FALSE(QFileInfo::exists(m_catalog));
}

TEST_F(GroupInstallerTest, ASecondGroupOfTheSameNameIsRefused) {
    Repository repository = Repository::create(m_dir);
    const InstalledGroup first = installGroup(repository, setup("Letters"),
                                              FormDocument::fromText(LettersForm, "Letters.xml"));
    QFile form(first.formPath);
    ASSERT_TRUE(form.open(QIODevice::ReadOnly));
    const QByteArray before = form.readAll();
    form.close();

    try {
        installGroup(repository, setup("letters"),
                     FormDocument::fromText(LettersForm, "Letters.xml"));
        ADD_FAILURE() << "a second Letters group was accepted";
    } catch (const Error& error) {
        EXPECT_TRUE(error.description().contains("already exists"))
            << error.description().toStdString();
    }
    ASSERT_TRUE(form.open(QIODevice::ReadOnly));
    EXPECT_EQ(form.readAll(), before);
    EXPECT_EQ(test::rowCount(repository.connection(), "KTGroup"), 1);

    // A different group shares the repository and gets the next id.
    const InstalledGroup second =
        installGroup(repository, setup("Memos"), FormDocument::fromText(LettersForm, "Memos.xml"));
    EXPECT_EQ(second.groupId, first.groupId + 1);
    EXPECT_EQ(privateProfileKeys(m_catalog, "Mail"), (QStringList{"Letters", "Memos"}));
}
