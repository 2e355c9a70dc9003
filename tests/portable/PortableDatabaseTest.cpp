#include "PortableFixture.h"
#include "data/Error.h"
#include "portable/QueryFormRewriter.h"

#include <QDomDocument>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>

using namespace vx;
using namespace vx::test;

namespace {

QDomDocument loadXml(const QString& path) {
    QFile file(path);
    QDomDocument document;
    if (file.open(QIODevice::ReadOnly))
        document.setContent(&file);
    return document;
}

// child `tag` of every control, in order.
QStringList controlValues(const QDomDocument& document, const QString& tag) {
    QStringList values;
    const QDomNodeList controls = document.elementsByTagName("control");
    for (int i = 0; i < controls.size(); ++i)
        values << controls.at(i).firstChildElement(tag).text();
    return values;
}

class PortableDatabaseTest : public PortableFixture {
protected:
    QString copyOfQueryForm() {
        const QString copy = destination + "/veltrane.xqr";
        QFile::copy(sample.queryFormPath(), copy);
        return copy;
    }
};

TEST_F(PortableDatabaseTest, QueryFormPointsAtTheViewerAndNamesItsHintTables) {
    const QString copy = copyOfQueryForm();
    const QStringList hints = rewriteQueryForm(copy);
    EXPECT_EQ(hints, QStringList{"InvoicesCategoriesHints=Categories"});

    const QDomDocument form = loadXml(copy);
    EXPECT_EQ(form.documentElement().firstChildElement("groupdatalink").text(), "veltrane.udl");
    // Invoice number, Customer, Status, Amount x2, date x2, Paid, Categories, Notes.
    EXPECT_EQ(controlValues(form, "inittablename"),
              QStringList({"Invoices", "Invoices", "Invoices", "Invoices", "Invoices", "Invoices",
                           "Invoices", "Invoices", "InvoicesCategoriesHints", "Invoices"}));
    EXPECT_EQ(controlValues(form, "initcolumnname"),
              QStringList({"InvoiceNo", "Customer", "Status", "Amount", "Amount", "InvoiceDate",
                           "InvoiceDate", "Paid", "Categories", "Notes"}));
    EXPECT_EQ(controlValues(form, "literalprefix"),
              QStringList({"'", "'", "'", "", "", "#", "#", "", "'", "'"}));
    EXPECT_EQ(controlValues(form, "literalsuffix"), controlValues(form, "literalprefix"));
    EXPECT_EQ(controlValues(form, "hintlisttype"),
              QStringList({"0", "2", "2", "0", "0", "0", "0", "0", "1", "0"}));
}

TEST_F(PortableDatabaseTest, ControlsWithoutATypeKeepThePreviousControlsValues) {
    const QString path = destination + "/carry.xqr";
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<form><groupdatalink>old.udl</groupdatalink><controls>"
               "<control><type>ListField</type><tablename>Letters</tablename>"
               "<columnname>Sender</columnname><inittablename>x</inittablename>"
               "<initcolumnname>y</initcolumnname></control>"
               "<control><columnname>To</columnname><inittablename>z</inittablename>"
               "<literalprefix>#</literalprefix></control>"
               "<control><type>DateField</type><inittablename>w</inittablename>"
               "<literalprefix/></control>"
               "</controls><other><control><type>ComboField</type></control></other></form>");
    file.close();
    // The second control is still a list field; the one outside "controls" is not a control.
    EXPECT_EQ(rewriteQueryForm(path),
              QStringList({"LettersSenderHints=Sender", "LettersToHints=To"}));
    const QDomDocument form = loadXml(path);
    EXPECT_EQ(controlValues(form, "inittablename"), QStringList({"x", "z", "Letters", ""}));
    EXPECT_EQ(controlValues(form, "initcolumnname"), QStringList({"y", "", "", ""}));
    EXPECT_EQ(controlValues(form, "literalprefix"), QStringList({"", "'", "#", ""}));
    EXPECT_EQ(form.documentElement().firstChildElement("groupdatalink").text(), "veltrane.udl");

    file.open(QIODevice::WriteOnly);
    file.write("<form><controls>");
    file.close();
    EXPECT_THROW(rewriteQueryForm(path), Error);

    // The export reads and creates the hint tables by these names: a form someone else wrote
    // may not slip SQL into them.
    for (const char* table : {"KTUsers --", "Letters]; DROP TABLE KTItem", "Let ters"}) {
        file.open(QIODevice::WriteOnly | QIODevice::Truncate);
        file.write(QByteArray("<form><controls><control><type>ListField</type><tablename>") +
                   table +
                   "</tablename><columnname>Sender</columnname><inittablename>x</inittablename>"
                   "</control></controls></form>");
        file.close();
        EXPECT_THROW(rewriteQueryForm(path), Error) << table;
    }
}

TEST_F(PortableDatabaseTest, TablesAndColumnsComeInTheirOrderAndReadWithTheEngineTool) {
    const QString path = destination + "/veltrane.znl";
    createPortableDatabaseFile(path);
    EXPECT_THROW(createPortableDatabaseFile(path), Error);
    ASSERT_TRUE(CreatePortableTables(path, "Invoices", hitList->connection(),
                                     {"InvoicesCategoriesHints=Categories", "Odd=Na=me"}));
    // A missing group table, or one whose name needs brackets, fails quietly.
    hitList->connection().execute("CREATE TABLE [Odd Group] ([itemid] LONG, [x] VARCHAR(5))");
    for (const char* group : {"NoSuchGroup", "Odd Group"}) {
        createPortableDatabaseFile(destination + "/" + group + ".znl");
        EXPECT_FALSE(CreatePortableTables(destination + "/" + group + ".znl", group,
                                          hitList->connection(), {}));
    }
    EXPECT_TRUE(environment.ui().prompts().isEmpty());

    const QString tool = QStandardPaths::findExecutable("sqlite3");
    if (tool.isEmpty())
        GTEST_SKIP() << "the sqlite3 command-line tool is not installed (Debian package sqlite3)";
    auto query = [&](const QString& sql) {
        QProcess process;
        process.start(tool, {"-batch", path, sql});
        process.waitForFinished(30000);
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed().split('\n');
    };
    EXPECT_EQ(query("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY rowid"),
              QStringList({"Invoices", "dictionary", "keywords", "KTFile", "KTGroup", "KTItem",
                           "InvoicesCategoriesHints", "Odd"}));
    auto columns = [&](const QString& table) {
        return query("SELECT name || ' ' || type FROM pragma_table_info('" + table + "')");
    };
    EXPECT_EQ(columns("Invoices"),
              QStringList({"itemid LONG", "InvoiceNo VARCHAR(20)", "Customer VARCHAR(50)",
                           "Status VARCHAR(20)", "Amount LONG", "InvoiceDate DATETIME", "Paid BIT",
                           "Categories VARCHAR(255)", "Notes LONGTEXT"}));
    EXPECT_EQ(columns("KTFile"),
              QStringList({"fileid LONG", "itemid LONG", "fname VARCHAR(20)", "fdate DATETIME",
                           "fsize LONG", "archive BIT", "volume VARCHAR(11)"}));
    EXPECT_EQ(columns("KTItem"),
              QStringList({"itemid LONG", "idx_date DATETIME", "username VARCHAR(20)", "type LONG",
                           "description LONGTEXT", "groupid LONG", "lockcount LONG",
                           "tag VARCHAR(25)", "attachment BIT", "deleted BIT"}));
    EXPECT_EQ(columns("KTGroup"),
              QStringList({"Groupid LONG", "Name VARCHAR(25)", "Description VARCHAR(100)",
                           "Path VARCHAR(50)", "Deleted BIT"}));
    EXPECT_EQ(columns("dictionary"), QStringList{"words LONGTEXT"});
    EXPECT_EQ(columns("keywords"), QStringList({"keyword LONGTEXT", "itemid LONG"}));
    EXPECT_EQ(columns("InvoicesCategoriesHints"), QStringList{"Categories VARCHAR(20)"});
    // Split at the first "=" only.
    EXPECT_EQ(columns("Odd"), QStringList{"Na=me VARCHAR(20)"});
    // One unique primary index per keyed table.
    EXPECT_EQ(query("SELECT tbl_name FROM sqlite_master WHERE type = 'index' AND sql LIKE "
                    "'CREATE UNIQUE INDEX%' ORDER BY tbl_name"),
              QStringList({"Invoices", "KTFile", "KTGroup", "KTItem"}));
}

TEST_F(PortableDatabaseTest, ThePortableDatabaseIsWrittenWithoutWaitingForTheDisk) {
    const QString path = destination + "/veltrane.znl";
    createPortableDatabaseFile(path);
    Connection portable;
    portable.open(portableConnectionText(path));
    EXPECT_EQ(rowsOf(portable, "PRAGMA synchronous"), QStringList{"0"});
    // Still a WAL database, as the viewer has always been given.
    EXPECT_EQ(rowsOf(portable, "PRAGMA journal_mode"), QStringList{"wal"});
    portable.close();

    // The engine's own default stays for every other connection; a wrong level is refused.
    Connection plain;
    plain.open("Provider=SQLite;Data Source=\"" + path + "\"");
    EXPECT_EQ(rowsOf(plain, "PRAGMA synchronous"), QStringList{"2"});
    plain.close();
    try {
        plain.open("Provider=SQLite;Data Source=\"" + path + "\";Synchronous=Sometimes");
        ADD_FAILURE() << "a wrong level was taken";
    } catch (const Error& error) {
        EXPECT_TRUE(error.description().contains("Sometimes")) << error.description().toStdString();
    }
    EXPECT_FALSE(plain.isOpen());
}

} // namespace
