#include "DbfReadBack.h"
#include "companions/DefaultCompanions.h"
#include "data/Recordset.h"
#include "operations/DataExportTable.h"
#include "operations/DocumentOperations.h"
#include "operations/Progressbar.h"
#include "support/FakeHitListContext.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace vx;
using namespace vx::test;

namespace {

class DataExportTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { registerDefaultCompanions(); }

    TestEnvironment environment;
    SampleRepository sample;
    FakeHitListContext hitList{sample};
    QTemporaryDir target;
    QString folderBefore = QDir::currentPath();

    void TearDown() override { QDir::setCurrent(folderBefore); }

    ScriptedUiServices& ui() { return environment.ui(); }
    QString tablePath(const QString& name) const { return QDir(target.path()).filePath(name); }

    QList<qint32> resultItemIds() {
        QList<qint32> ids;
        Recordset result = hitList.resultSet();
        for (result.moveFirst(); !result.eof(); result.moveNext())
            ids << result.value(QStringLiteral("itemid")).toInt();
        return ids;
    }

    // The row the export takes for a document: the first its join returns.
    Recordset documentRow(qint32 itemId) {
        Recordset row;
        row.open(dataexport::documentQuery(QStringLiteral("Invoices"), itemId),
                 hitList.connection());
        return row;
    }

    ReadBack exportAndRead(const QString& table) {
        ui().answerFolder(target.path()).answerInput(table);
        EXPECT_TRUE(exportData(hitList));
        EXPECT_EQ(QDir::currentPath(), folderBefore);
        EXPECT_TRUE(ui().messageTexts().isEmpty()) << ui().messageTexts().join(u'|').toStdString();
        return readWithDbfread(tablePath(table + QStringLiteral(".dbf")));
    }
};

QString isoDate(const QVariant& value) {
    return value.isNull() ? QString() : value.toDateTime().date().toString(Qt::ISODate);
}

} // namespace

TEST_F(DataExportTest, WholeSelectionBecomesOneRowPerDocumentWithTheFormsColumns) {
    hitList.selection = resultItemIds();
    ASSERT_GT(hitList.selection.size(), 3);
    const ReadBack read = exportAndRead(QStringLiteral("Invoices"));
    if (!read.skipReason.isEmpty())
        GTEST_SKIP() << read.skipReason.toStdString();
    ASSERT_TRUE(read.ok) << read.error.toStdString();

    const auto prompt = ui().prompts();
    ASSERT_GE(prompt.size(), 2);
    EXPECT_EQ(prompt[0].text, QStringLiteral("Select the Location to export the Data"));
    EXPECT_EQ(prompt[1].text,
              QStringLiteral("Please specify the name of the export table to create."));
    EXPECT_EQ(prompt[1].title, QStringLiteral("Export Table"));
    EXPECT_EQ(prompt[1].defaultText, QStringLiteral("Invoices"));

    QStringList layout;
    for (const QJsonValue& field : read.fields) {
        const QJsonObject f = field.toObject();
        layout << QStringLiteral("%1 %2(%3)")
                      .arg(f.value(QStringLiteral("name")).toString(),
                           f.value(QStringLiteral("type")).toString())
                      .arg(f.value(QStringLiteral("length")).toInt());
    }
    // fname and Categories are VARCHAR(255): CHAR(254); long field names are cut to 10 characters;
    // captions that differ from the field name find the column of the result all the same.
    EXPECT_EQ(layout.join(u' ').toStdString(),
              QStringLiteral("itemid N(20) idx_date D(8) type_ N(20) fileid N(20) filename C(254) "
                             "fdate_ D(8) fsize_ N(20) disklabel C(13) InvoiceNo C(20) "
                             "Customer C(50) Status C(20) Amount N(20) InvoiceDat D(8) Paid L(1) "
                             "Categories C(254) Notes M(4)")
                  .toStdString());
    ;

    qsizetype withFiles = 0;
    for (const qint32 id : hitList.selection) {
        Recordset row = documentRow(id);
        if (row.eof())
            continue;
        ASSERT_LT(withFiles, read.records.size());
        const QJsonObject record = read.records[withFiles++].toObject();
        SCOPED_TRACE(id);
        EXPECT_EQ(record.value(QStringLiteral("itemid")).toInt(), id);
        EXPECT_EQ(record.value(QStringLiteral("idx_date")).toString(),
                  isoDate(row.value(QStringLiteral("idx_date"))));
        const QVariant type = row.value(QStringLiteral("type"));
        if (type.isNull()) {
            EXPECT_TRUE(record.value(QStringLiteral("type_")).isNull());
        } else {
            EXPECT_EQ(record.value(QStringLiteral("type_")).toDouble(), type.toDouble());
        }
        EXPECT_EQ(record.value(QStringLiteral("fileid")).toInt(),
                  row.value(QStringLiteral("fileid")).toInt());
        EXPECT_EQ(record.value(QStringLiteral("filename")).toString(),
                  row.value(QStringLiteral("fname")).toString());
        EXPECT_EQ(record.value(QStringLiteral("fdate_")).toString(),
                  isoDate(row.value(QStringLiteral("fdate"))));
        EXPECT_EQ(record.value(QStringLiteral("fsize_")).toInt(),
                  row.value(QStringLiteral("fsize")).toInt());
        EXPECT_EQ(record.value(QStringLiteral("disklabel")).toString(),
                  row.value(QStringLiteral("volume")).toString());
        EXPECT_EQ(record.value(QStringLiteral("InvoiceNo")).toString(),
                  row.value(QStringLiteral("InvoiceNo")).toString());
        EXPECT_EQ(record.value(QStringLiteral("Customer")).toString(),
                  row.value(QStringLiteral("Customer")).toString());
        EXPECT_DOUBLE_EQ(record.value(QStringLiteral("Amount")).toDouble(),
                         row.value(QStringLiteral("Amount")).toDouble());
        EXPECT_EQ(record.value(QStringLiteral("InvoiceDat")).toString(),
                  isoDate(row.value(QStringLiteral("InvoiceDate"))));
        EXPECT_EQ(record.value(QStringLiteral("Paid")).toBool(),
                  row.value(QStringLiteral("Paid")).toBool());
        EXPECT_EQ(record.value(QStringLiteral("Categories")).toString(),
                  row.value(QStringLiteral("Categories")).toString());
        EXPECT_EQ(record.value(QStringLiteral("Notes")).toString(),
                  row.value(QStringLiteral("Notes")).toString());
    }
    EXPECT_EQ(read.records.size(), withFiles);

    const Progressbar* progress = Progressbar::current();
    ASSERT_NE(progress, nullptr);
    EXPECT_EQ(progress->maximum(), hitList.selection.size());
    EXPECT_EQ(progress->value(), hitList.selection.size());
    EXPECT_FALSE(progress->isVisible());
}

TEST_F(DataExportTest, DocumentWithTwoFilesGivesOneRowForTheFirstFile) {
    Recordset twoFiles;
    twoFiles.open(QStringLiteral("select itemid from ktfile group by itemid having count(*) > 1"),
                  hitList.connection());
    ASSERT_FALSE(twoFiles.eof()) << "the sample has documents with an attachment";
    const qint32 id = twoFiles.value(0).toInt();
    hitList.selection = {id};

    const ReadBack read = exportAndRead(QStringLiteral("Two"));
    if (!read.skipReason.isEmpty())
        GTEST_SKIP() << read.skipReason.toStdString();
    ASSERT_TRUE(read.ok) << read.error.toStdString();
    ASSERT_EQ(read.records.size(), 1);
    Recordset first = documentRow(id);
    EXPECT_EQ(read.records[0].toObject().value(QStringLiteral("fileid")).toInt(),
              first.value(QStringLiteral("fileid")).toInt());
    EXPECT_EQ(read.records[0].toObject().value(QStringLiteral("itemid")).toInt(), id);
}

TEST_F(DataExportTest, TableNameIsAskedAgainUntilValidAndNew) {
    {
        QFile taken(tablePath(QStringLiteral("Taken.dbf")));
        ASSERT_TRUE(taken.open(QIODevice::WriteOnly));
        taken.write("keep me");
    }
    ui().answerFolder(target.path())
        .answerInput(QStringLiteral("My Table"))
        .answerMessage(MessageAnswer::Ok)
        .answerInput(QStringLiteral("my_table"))
        .answerMessage(MessageAnswer::Ok)
        .answerInput(QStringLiteral("my-table"))
        .answerMessage(MessageAnswer::Ok)
        .answerInput(QStringLiteral("Taken"))
        .answerMessage(MessageAnswer::Ok)
        .answerInput(QStringLiteral("taken"))
        .answerMessage(MessageAnswer::Ok)
        .answerInput(QStringLiteral("Fresh2"));
    EXPECT_TRUE(exportData(hitList));

    const QStringList expected{
        QStringLiteral(
            "Invalid character [ ] in Table Name.\rPlease change the name and try again."),
        QStringLiteral(
            "Invalid character [_] in Table Name.\rPlease change the name and try again."),
        QStringLiteral(
            "Invalid character [-] in Table Name.\rPlease change the name and try again."),
        QStringLiteral("File already exists: Taken.dbf\r\n\r\nChoose a different name."),
        QStringLiteral("File already exists: taken.dbf\r\n\r\nChoose a different name.")};
    EXPECT_EQ(ui().messageTexts(), expected);
    for (const Prompt& prompt : ui().prompts()) {
        if (prompt.kind == Prompt::Kind::MessageBox) {
            EXPECT_EQ(prompt.icon, MessageStyle::Exclamation);
        }
    }
    EXPECT_EQ(fileBytes(tablePath(QStringLiteral("Taken.dbf"))), QByteArray("keep me"));
    EXPECT_TRUE(QFileInfo::exists(tablePath(QStringLiteral("Fresh2.dbf"))));
    EXPECT_EQ(QDir::currentPath(), folderBefore);
}

TEST_F(DataExportTest, CancellingEndsSilentlyAndFailuresAreReportedWithTheFolderRestored) {
    ui().answerFolder(QString());
    EXPECT_FALSE(exportData(hitList));
    ui().answerFolder(target.path()).cancelInput();
    EXPECT_FALSE(exportData(hitList));
    ui().answerFolder(target.path()).answerInput(QString());
    EXPECT_FALSE(exportData(hitList));
    EXPECT_TRUE(ui().messageTexts().isEmpty());
    EXPECT_TRUE(QDir(target.path()).entryList(QDir::Files).isEmpty());
    EXPECT_EQ(QDir::currentPath(), folderBefore);
    EXPECT_EQ(ui().pendingAnswers(), 0);

    // The memo file cannot be made: the error is shown and no table is left half-made.
    ASSERT_TRUE(QDir(target.path()).mkdir(QStringLiteral("Broken.fpt")));
    ui().clearPrompts();
    ui().answerFolder(target.path())
        .answerInput(QStringLiteral("Broken"))
        .answerMessage(MessageAnswer::Ok);
    EXPECT_FALSE(exportData(hitList));
    ASSERT_EQ(ui().messageTexts().size(), 1);
    const Prompt shown = *ui().lastPrompt();
    EXPECT_EQ(shown.title, QStringLiteral("Export_Data"));
    EXPECT_EQ(shown.icon, MessageStyle::Critical);
    EXPECT_FALSE(QFileInfo::exists(tablePath(QStringLiteral("Broken.dbf"))));
    EXPECT_EQ(QDir::currentPath(), folderBefore);
}

TEST(DataExportTable, StatementAndConnectionTextsAreBuiltFromTheirPieces) {
    const QList<dataexport::FormColumn> columns{
        {QStringLiteral("Description"), QStringLiteral("Descriptio"),
         dataexport::columnTypeText(DataType::VarWChar, 255)},
        {QStringLiteral("Code"), QStringLiteral("Code"),
         dataexport::columnTypeText(DataType::VarWChar, 12)}};
    EXPECT_EQ(dataexport::createTableText(QStringLiteral("T1"), 254, columns),
              QStringLiteral("CREATE TABLE T1(itemid NUMERIC,idx_date DATE,type_ NUMERIC,"
                             "fileid NUMERIC,filename CHAR(254),fdate_ DATE,fsize_ NUMERIC,"
                             "disklabel CHAR(13),Descriptio CHAR(254),Code CHAR(12));"));
    EXPECT_EQ(dataexport::columnTypeText(DataType::LongVarWChar, 0), QStringLiteral(" MEMO"));
    EXPECT_EQ(dataexport::columnTypeText(DataType::Integer, 4), QStringLiteral(" NUMERIC"));
    EXPECT_EQ(dataexport::columnTypeText(DataType::Double, 8), QStringLiteral(" NUMERIC"));
    EXPECT_EQ(dataexport::columnTypeText(DataType::DBTimeStamp, 8), QStringLiteral(" DATE"));
    EXPECT_EQ(dataexport::columnTypeText(DataType::Boolean, 2), QStringLiteral(" BOOL"));
    EXPECT_TRUE(dataexport::columnTypeText(DataType::Currency, 8).isEmpty());
    EXPECT_TRUE(dataexport::columnTypeText(DataType::WChar, 8).isEmpty());

    EXPECT_EQ(dataexport::exportConnectionText(QStringLiteral("/x/y")),
              QStringLiteral("Provider=MSDASQL.1;Persist Security Info=False;Mode=ReadWrite;"
                             "Extended Properties=DSN=Visual FoxPro Tables;UID=;SourceType=DBF;"
                             "Exclusive=Yes;BackgroundFetch=Yes;Collate=Machine;Null=Yes;"
                             "Deleted=Yes;SourceDB=/x/y;\""));
    EXPECT_EQ(dataexport::documentQuery(QStringLiteral("G"), 12),
              QStringLiteral("select ktfile.*,G.*,ktitem.itemid,ktitem.idx_date,ktitem.type from "
                             "ktfile,ktitem,G where ktfile.itemid =G.itemid and "
                             "ktfile.itemid=ktitem.itemid and ktfile.itemid= 12"));
    EXPECT_TRUE(dataexport::firstInvalidTableNameCharacter(QStringLiteral("abcXYZ09")).isNull());
    EXPECT_EQ(dataexport::firstInvalidTableNameCharacter(QStringLiteral("ab\u00e9c")), u'\u00e9');
}
