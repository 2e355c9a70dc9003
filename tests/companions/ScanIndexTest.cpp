#include "companions/ScanIndex.h"

#include "companions/ItemList.h"
#include "data/Connection.h"
#include "data/Recordset.h"
#include "portable/QueryRows.h"
#include "portable/WithoutFileOverride.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <functional>
#include <gtest/gtest.h>

using namespace vx;
using vx::test::WithoutFileOverride;

namespace {

class ScanIndexTest : public ::testing::Test {
protected:
    test::TestEnvironment environment;
    test::SampleRepository sample;
    Connection connection;
    ScanIndex api;
    QString library = QStringLiteral("Main");
    QString group = QStringLiteral("Invoices");
    QString user = QStringLiteral("alice");

    void SetUp() override {
        connection.open(sample.connectionText());
        api.Init(library);
    }

    // The rows of `table` for one item.
    Recordset rowsOf(const char* table, qint32 id) {
        Recordset rows;
        rows.open(
            QStringLiteral("select * from %1 where itemid = %2").arg(QLatin1String(table)).arg(id),
            connection);
        return rows;
    }

    qint64 count(const QString& sql) { return test::rowsOf(connection, sql).value(0).toLongLong(); }

    QString document(const QString& name, const QByteArray& content) {
        return environment.writeFile(QStringLiteral("incoming/") + name, content);
    }

    void stage(QString column, const QVariant& value) { api.SetFieldContent(column, value); }

    static std::shared_ptr<VXItemList> listOf(const QStringList& items) {
        auto list = std::make_shared<ItemList>();
        for (QString item : items)
            list->AddItem(item);
        return list;
    }

    QStringList documentFiles() const {
        return QDir(sample.documentFolder()).entryList(QDir::Files, QDir::Name);
    }
};

} // namespace

TEST_F(ScanIndexTest, SelectGroupFindsGroupsThroughTheLibraryCatalog) {
    QString unknown = QStringLiteral("Letters");
    EXPECT_FALSE(api.SelectGroup(unknown));
    EXPECT_TRUE(api.lastError().contains(QStringLiteral("Letters")));
    QString otherLibrary = QStringLiteral("Archive");
    api.Init(otherLibrary);
    EXPECT_FALSE(api.SelectGroup(group)) << "the group belongs to library Main";
    api.Init(library);
    EXPECT_TRUE(api.SelectGroup(group));
    EXPECT_TRUE(api.lastError().isEmpty());
}

TEST_F(ScanIndexTest, DocumentIndexFilesTheDocumentAndEveryRow) {
    ASSERT_TRUE(api.SelectGroup(group));
    const qint64 lastId = count(QStringLiteral("SELECT MAX(itemid) FROM KTItem"));
    const QStringList filesBefore = documentFiles();

    const std::pair<const char*, QVariant> staged[] = {
        {"InvoiceNo", "INV-NEW"}, {"Customer", "O'Malley Bakery"},
        {"Amount", "1234"},       {"InvoiceDate", QDate(2024, 5, 17)},
        {"Paid", qint16(0)},      {"Categories", "Software;Travel"}};
    for (const auto& [column, value] : staged)
        stage(column, value);
    api.setKeywordsList(listOf({"urgent", "review"}));
    api.setExcludeUserIDList(listOf({"3", "4"}));
    QString path = document(QStringLiteral("scan of invoice.pdf"), "%PDF-1.4 test");

    const qint32 id = api.DocumentIndex(path, nullptr, user);
    ASSERT_EQ(id, lastId + 1) << api.lastError().toStdString();

    Recordset item = rowsOf("KTItem", id);
    ASSERT_FALSE(item.eof());
    EXPECT_EQ(item.value("username").toString(), user);
    EXPECT_EQ(item.value("groupid").toInt(), sample.groupId());
    EXPECT_EQ(item.value("tag").toString(), QStringLiteral(" "));
    EXPECT_FALSE(item.value("deleted").toBool());

    Recordset file = rowsOf("ktfile", id);
    ASSERT_FALSE(file.eof());
    const QString stored = file.value("fname").toString();
    EXPECT_EQ(stored, QString::number(id) + QStringLiteral(".pdf"));
    EXPECT_EQ(file.value("fsize").toInt(), 13);
    QFile copy(QDir(sample.documentFolder()).filePath(stored));
    ASSERT_TRUE(copy.open(QIODevice::ReadOnly));
    EXPECT_EQ(copy.readAll(), QByteArray("%PDF-1.4 test"));
    EXPECT_TRUE(QFile::exists(path)) << "the original stays where it was";

    Recordset row = rowsOf("Invoices", id);
    ASSERT_FALSE(row.eof());
    EXPECT_EQ(QStringList({row.value("Customer").toString(), row.value("Amount").toString(),
                           row.value("InvoiceDate").toDateTime().date().toString(Qt::ISODate),
                           row.value("Categories").toString()}),
              QStringList({"O'Malley Bakery", "1234", "2024-05-17", "Software;Travel"}));
    EXPECT_FALSE(row.value("Paid").toBool());
    EXPECT_TRUE(row.value("Notes").isNull()) << "an unstaged column stays empty";

    const QString where = QStringLiteral(" where itemid = ") + QString::number(id);
    EXPECT_EQ(count("select count(*) from keywords" + where), 2);
    EXPECT_EQ(count("select count(*) from KTSecurity" + where), 2);
    EXPECT_EQ(count("select count(*) from KTSecurity" + where + " and UserID = 4"), 1);
    EXPECT_EQ(documentFiles().size(), filesBefore.size() + 1);

    // Staged values belonged to that document: the next one starts empty, and a name already
    // taken in the folder is never overwritten.
    QFile squatter(QDir(sample.documentFolder()).filePath(QString::number(id + 1) + ".pdf"));
    ASSERT_TRUE(squatter.open(QIODevice::WriteOnly));
    squatter.write("someone else's");
    squatter.close();
    QString second = document(QStringLiteral("next.pdf"), "second");
    const qint32 next = api.DocumentIndex(second, nullptr, user);
    ASSERT_EQ(next, id + 1);
    Recordset nextRow = rowsOf("Invoices", next);
    EXPECT_TRUE(nextRow.value("Customer").isNull());
    EXPECT_EQ(count("select count(*) from keywords where itemid = " + QString::number(next)), 0);
    Recordset nextFile = rowsOf("ktfile", next);
    EXPECT_EQ(nextFile.value("fname").toString(), QString::number(next) + "_1.pdf");
    ASSERT_TRUE(squatter.open(QIODevice::ReadOnly));
    EXPECT_EQ(squatter.readAll(), QByteArray("someone else's"));
}

TEST_F(ScanIndexTest, AFailedFilingLeavesNoRowAndNoFileAndIsShownOnce) {
    ASSERT_TRUE(api.SelectGroup(group));
    const QString folder = sample.documentFolder();
    const QString moved = folder + QStringLiteral(".away");
    const auto plainFolder = [&] {
        QFile::remove(folder);
        QDir().rename(moved, folder);
    };
    struct Case {
        const char* name;
        QString staged;  // InvoiceNo
        QString mention; // part of the error
        std::function<void()> breakIt;
        std::function<void()> repair;
    };
    // Each fails after the item and file rows were written. The read-only folder is tried by a
    // thread without root's file-access override, as users are.
    const Case cases[] = {
        {"a staged column the group table lacks", "INV-X", "NoSuchColumn",
         [&] { stage("NoSuchColumn", QStringLiteral("x")); }, [] {}},
        {"a value too long for its column", QString(30, QLatin1Char('9')), "\"InvoiceNo\"", [] {},
         [] {}},
        {"a read-only document folder", "INV-R", "",
         [&] { QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner); },
         [&] {
             QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
         }},
        {"the document folder replaced by a file", "INV-F", "",
         [&] {
             QFile plain(folder);
             ASSERT_TRUE(QDir().rename(folder, moved) && plain.open(QIODevice::WriteOnly));
         },
         plainFolder},
        {"a missing group table", "INV-Y", "",
         [&] { connection.execute(QStringLiteral("DROP TABLE Invoices")); }, [] {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const qint64 items = count(QStringLiteral("select count(*) from KTItem"));
        const qint64 files = count(QStringLiteral("select count(*) from KTFile"));
        const QStringList filesBefore = documentFiles();
        environment.ui().clearPrompts();
        environment.ui().answerMessage(MessageAnswer::Ok);
        stage("InvoiceNo", c.staged);
        api.setKeywordsList(listOf({"urgent"}));
        QString path = document(QStringLiteral("a.txt"), "a");
        {
            WithoutFileOverride owner;
            ASSERT_TRUE(owner.ok());
            c.breakIt();
            EXPECT_EQ(api.DocumentIndex(path, nullptr, user), 0);
        }
        c.repair();
        EXPECT_TRUE(api.lastError().contains(c.mention)) << api.lastError().toStdString();
        EXPECT_FALSE(api.lastError().isEmpty());
        EXPECT_EQ(count(QStringLiteral("select count(*) from KTItem")), items);
        EXPECT_EQ(count(QStringLiteral("select count(*) from KTFile")), files);
        EXPECT_EQ(documentFiles(), filesBefore);
        ASSERT_EQ(environment.ui().prompts().size(), 1);
        EXPECT_EQ(environment.ui().prompts().first().title, QStringLiteral("DocumentIndex"));
    }
    EXPECT_EQ(count(QStringLiteral("select count(*) from keywords where itemid > 300")), 0);
}
