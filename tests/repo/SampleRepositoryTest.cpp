#include "support/SampleRepository.h"

#include "RepoTestSupport.h"
#include "core/FormDocument.h"
#include "data/ConnectionProperties.h"
#include "session/FormDefinition.h"
#include "session/GroupConnection.h"
#include "session/PrivateProfile.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace vx;
using vx::test::SampleRepository;

namespace {

QSet<qint64> idSet(Connection& connection, const QString& sql) {
    QSet<qint64> ids;
    for (const QVariant& value : test::columnValues(connection, sql))
        ids.insert(value.toLongLong());
    return ids;
}

} // namespace

TEST(SampleRepository, OpensInTheSqliteShell) {
    const QString shell = QStandardPaths::findExecutable("sqlite3");
    if (shell.isEmpty())
        GTEST_SKIP() << "the sqlite3 command-line tool is not installed";
    SampleRepository sample;
    QProcess process;
    process.start(shell, {sample.databasePath(), "SELECT COUNT(*) FROM KTItem;"});
    ASSERT_TRUE(process.waitForFinished(30000));
    ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    EXPECT_EQ(process.readAllStandardOutput().trimmed(), "300");
}

TEST(SampleRepository, CountsThroughTheGroupConnection) {
    SampleRepository sample;
    // The way every control connects: init file -> data-link file -> database.
    Connection connection = openGroupConnection(sample.initFilePath());
    const auto& expected = sample.expected();

    // Fixed by the document count: every 10th has an attachment, every 25th is marked deleted,
    // every 20th from 3 has one version and from 13 two.
    EXPECT_EQ(expected.documents, 300);
    EXPECT_EQ(expected.fileRows, 330);
    EXPECT_EQ(expected.deletedDocuments, 12);
    EXPECT_EQ(expected.revisions, 45);
    EXPECT_EQ(expected.filesOnDisk, 300 + 30 + 45);
    EXPECT_GT(expected.keywords, 100);
    EXPECT_GT(expected.securityRows, 20);

    const std::pair<const char*, qint64> rows[] = {{"KTItem", expected.documents},
                                                   {"Invoices", expected.documents},
                                                   {"KTFile", expected.fileRows},
                                                   {"KTRevision", expected.revisions},
                                                   {"keywords", expected.keywords},
                                                   {"KTSecurity", expected.securityRows},
                                                   {"KTUsers", 5},
                                                   {"dictionary", 40},
                                                   {"KTPath", 2},
                                                   {"KTGroup", 1},
                                                   {"InvoicesCustomerHints", 13},
                                                   {"InvoicesCategoriesHints", 6},
                                                   // made empty; filing fills it
                                                   {"KTCounter", 0}};
    for (const auto& [table, count] : rows)
        EXPECT_EQ(test::rowCount(connection, table), count) << table;
    EXPECT_EQ(test::columnValues(connection, "SELECT COUNT(*) FROM KTItem WHERE deleted = -1")
                  .value(0)
                  .toLongLong(),
              expected.deletedDocuments);
    EXPECT_EQ(QFileInfo(sample.documentFolder()).isDir(), true);
    EXPECT_EQ(QDir(sample.documentFolder()).entryList(QDir::Files).size(), expected.filesOnDisk);
}

TEST(SampleRepository, RowsReferToEachOtherAndToRealFiles) {
    SampleRepository sample;
    Connection connection = openGroupConnection(sample.initFilePath());

    const QStringList paths =
        QVariant(test::columnValues(connection, "SELECT Path FROM KTPath")).toStringList();
    ASSERT_FALSE(paths.isEmpty());
    EXPECT_EQ(paths.first(), QDir::toNativeSeparators(sample.dir() + "/documents"));
    // The portable export cuts the first path after its last separator to find config/.
    const QString root = paths.first().left(paths.first().lastIndexOf(QDir::separator()) + 1);
    EXPECT_TRUE(QFileInfo::exists(root + "config/Invoices.xqr"));

    auto existsUnderAPath = [&](const QString& name, qint64 size) {
        for (const QString& path : paths) {
            const QFileInfo file(path + QDir::separator() + name);
            if (file.isFile())
                return size < 0 || file.size() == size;
        }
        return false;
    };
    Recordset files;
    files.open("SELECT fname, fsize FROM KTFile", connection);
    for (; !files.eof(); files.moveNext()) {
        const QString name = files.value(0).toString();
        EXPECT_LE(name.size(), 20) << name.toStdString();
        EXPECT_TRUE(existsUnderAPath(name, files.value(1).toLongLong())) << name.toStdString();
    }
    for (const QVariant& name : test::columnValues(connection, "SELECT fname FROM KTRevision"))
        EXPECT_TRUE(existsUnderAPath(name.toString(), -1)) << name.toString().toStdString();

    const QSet<qint64> items = idSet(connection, "SELECT itemid FROM KTItem");
    EXPECT_EQ(idSet(connection, "SELECT itemid FROM Invoices"), items);
    // Every document has a file (the export takes the first one).
    EXPECT_EQ(idSet(connection, "SELECT itemid FROM KTFile"), items);
    for (const char* table : {"keywords", "KTSecurity", "KTRevision"})
        EXPECT_TRUE(items.contains(idSet(connection, QString("SELECT itemid FROM %1").arg(table))))
            << table;
    const QSet<qint64> users = idSet(connection, "SELECT UserID FROM KTUsers");
    const QSet<qint64> excluded = idSet(connection, "SELECT UserID FROM KTSecurity");
    EXPECT_TRUE(users.contains(excluded));
    EXPECT_FALSE(excluded.contains(1)) << "admin is never excluded";

    const QStringList words = QVariant(test::columnValues(connection, "SELECT words FROM "
                                                                      "dictionary"))
                                  .toStringList();
    for (const QVariant& keyword : test::columnValues(connection, "SELECT keyword FROM keywords"))
        EXPECT_TRUE(words.contains(keyword.toString())) << keyword.toString().toStdString();

    Recordset group;
    group.open("SELECT * FROM KTGroup", connection);
    EXPECT_EQ(group.value("Name").toString(), "Invoices");
    EXPECT_EQ(group.value("Path").toString(), sample.documentFolder());
    EXPECT_EQ(idSet(connection, "SELECT DISTINCT groupid FROM KTItem"),
              QSet<qint64>{group.value("Groupid").toLongLong()});
}

TEST(SampleRepository, FormsDescribeTheGroupTable) {
    SampleRepository sample;
    const FormDefinition index = FormDefinition::load(sample.formDefinitionPath());
    const FormDefinition query = FormDefinition::load(sample.queryFormPath());

    QSet<QString> types;
    for (const FormControl& control : index.controls())
        types.insert(control.type);
    EXPECT_EQ(types, (QSet<QString>{"MemoField", "EditField", "NumericField", "CheckField",
                                    "ComboField", "ListField", "DateField"}));

    // Every control carries every element (the library's reader relies on equal counts).
    const QStringList tags{"caption",       "columnname",    "type",           "allowupdate",
                           "tablename",     "inittablename", "initcolumnname", "literalprefix",
                           "literalsuffix", "hintlisttype",  "required",       "width"};
    for (const FormDefinition* form : {&index, &query}) {
        for (const FormControl& control : form->controls()) {
            QStringList present;
            for (const auto& element : control.elements)
                present.append(element.first);
            for (const QString& tag : tags)
                EXPECT_TRUE(present.contains(tag))
                    << control.columnName.toStdString() << " lacks " << tag.toStdString();
        }
    }
    for (const QString& path : {sample.formDefinitionPath(), sample.queryFormPath()})
        EXPECT_EQ(repo::FormDocument::load(path).groupDataLink(), sample.dataLinkPath());
    const FormControl* customer = index.controlForColumn("customer");
    const FormControl* status = index.controlForColumn("Status");
    ASSERT_TRUE(customer && status);
    EXPECT_EQ(customer->allowUpdate, "true");
    EXPECT_EQ(customer->initTableName, "InvoicesCustomerHints");
    EXPECT_EQ(status->allowUpdate, "false");
}

TEST(SampleRepository, EachCopyLivesInItsOwnFolder) {
    SampleRepository first;
    SampleRepository second;
    ASSERT_NE(first.dir(), second.dir());
    EXPECT_EQ(readPrivateProfileString(second.initFilePath(), "datalinks", "Group", {}),
              second.dataLinkPath());
    EXPECT_EQ(readDataLinkFile(second.dataLinkPath()).value("Data Source"), second.databasePath());

    Connection one = openGroupConnection(first.initFilePath());
    Connection two = openGroupConnection(second.initFilePath());
    for (const QVariant& path : test::columnValues(two, "SELECT Path FROM KTPath"))
        EXPECT_TRUE(path.toString().startsWith(second.dir())) << path.toString().toStdString();
    EXPECT_EQ(test::columnValues(two, "SELECT Path FROM KTGroup").value(0).toString(),
              second.documentFolder());

    one.execute("DELETE FROM keywords");
    EXPECT_EQ(test::rowCount(one, "keywords"), 0);
    EXPECT_EQ(test::rowCount(two, "keywords"), second.expected().keywords);
}

// (The query-text tests check the rows against the document model they follow.)
TEST(SampleRepository, RowsRepeatFromOneBuildToTheNext) {
    QTemporaryDir folder;
    repo::SampleOptions options;
    options.documents = 25;
    const repo::SampleResult a = repo::createSample(folder.filePath("a"), options);
    const repo::SampleResult b = repo::createSample(folder.filePath("b"), options);

    Connection first;
    first.open("File Name=" + a.dataLinkPath);
    Connection second;
    second.open("File Name=" + b.dataLinkPath);
    for (const char* sql :
         {"SELECT * FROM Invoices ORDER BY itemid", "SELECT * FROM KTItem ORDER BY itemid",
          "SELECT keyword, itemid FROM keywords ORDER BY itemid, keyword",
          "SELECT * FROM KTSecurity ORDER BY itemid, UserID"}) {
        Recordset x;
        x.open(sql, first);
        Recordset y;
        y.open(sql, second);
        ASSERT_EQ(x.recordCount(), y.recordCount()) << sql;
        for (; !x.eof(); x.moveNext(), y.moveNext()) {
            for (int c = 0; c < x.fieldCount(); ++c)
                EXPECT_EQ(x.value(c), y.value(c)) << sql;
        }
    }
}

TEST(SampleRepository, LargeSamplesShareTheFilesOnDisk) {
    QTemporaryDir folder;
    repo::SampleOptions options;
    options.documents = 1210;
    const repo::SampleResult result = repo::createSample(folder.filePath("big"), options);
    EXPECT_EQ(result.counts.documents, 1210);
    EXPECT_EQ(result.counts.fileRows, 1210 + 121);
    const QDir documents(result.documentFolder);
    EXPECT_EQ(documents.entryList(QDir::Files).size(), result.counts.filesOnDisk);
    EXPECT_LT(result.counts.filesOnDisk, 1210);

    Connection connection;
    connection.open("File Name=" + result.dataLinkPath);
    Recordset files;
    files.open("SELECT itemid, fname, fsize FROM KTFile WHERE itemid > 500", connection);
    EXPECT_GT(files.recordCount(), 700);
    for (; !files.eof(); files.moveNext()) {
        const QFileInfo file(documents.filePath(files.value(1).toString()));
        ASSERT_TRUE(file.isFile()) << files.value(1).toString().toStdString();
        EXPECT_EQ(file.size(), files.value(2).toLongLong());
    }
    for (const QVariant& name : test::columnValues(connection, "SELECT fname FROM KTRevision"))
        EXPECT_TRUE(documents.exists(name.toString())) << name.toString().toStdString();
}
