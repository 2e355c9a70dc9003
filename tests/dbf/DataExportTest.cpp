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

using namespace Qt::StringLiterals;

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
            ids << result.value(u"itemid"_s).toInt();
        return ids;
    }

    // The row the export takes for a document: the first its join returns.
    Recordset documentRow(qint32 itemId) {
        Recordset row;
        row.open(dataexport::documentQuery(u"Invoices"_s, itemId), hitList.connection());
        return row;
    }

    ReadBack exportAndRead(const QString& table) {
        ui().answerFolder(target.path()).answerInput(table);
        EXPECT_TRUE(exportData(hitList));
        EXPECT_EQ(QDir::currentPath(), folderBefore);
        EXPECT_TRUE(ui().messageTexts().isEmpty()) << ui().messageTexts().join(u'|').toStdString();
        return readWithDbfread(tablePath(table + u".dbf"_s));
    }
};

QString isoDate(const QVariant& value) {
    return value.isNull() ? QString() : value.toDateTime().date().toString(Qt::ISODate);
}

} // namespace

TEST_F(DataExportTest, WholeSelectionBecomesOneRowPerDocumentWithTheFormsColumns) {
    hitList.selection = resultItemIds();
    ASSERT_GT(hitList.selection.size(), 3);
    const ReadBack read = exportAndRead(u"Invoices"_s);
    if (!read.skipReason.isEmpty())
        GTEST_SKIP() << read.skipReason.toStdString();
    ASSERT_TRUE(read.ok) << read.error.toStdString();

    const auto prompt = ui().prompts();
    ASSERT_GE(prompt.size(), 2);
    EXPECT_EQ(prompt[0].text, u"Select the Location to export the Data"_s);
    EXPECT_EQ(prompt[1].text, u"Please specify the name of the export table to create."_s);
    EXPECT_EQ(prompt[1].title, u"Export Table"_s);
    EXPECT_EQ(prompt[1].defaultText, u"Invoices"_s);

    QStringList layout;
    for (const QJsonValue& field : read.fields) {
        const QJsonObject f = field.toObject();
        layout << u"%1 %2(%3)"_s.arg(f.value(u"name"_s).toString(), f.value(u"type"_s).toString())
                      .arg(f.value(u"length"_s).toInt());
    }
    // fname and Categories are VARCHAR(255): CHAR(254); long field names are cut to 10 characters;
    // captions that differ from the field name find the column of the result all the same.
    EXPECT_EQ(layout.join(u' ').toStdString(),
              QStringLiteral("itemid N(20) idx_date D(8) type_ N(20) fileid N(20) filename C(254) "
                             "fdate_ D(8) fsize_ N(20) disklabel C(13) InvoiceNo C(20) "
                             "Customer C(50) Status C(20) Amount N(20) InvoiceDat D(8) Paid L(1) "
                             "Categories C(254) Notes M(4)")
                  .toStdString());

    // One record per document with files, for its first file, also when it has two.
    qsizetype withFiles = 0;
    qsizetype withTwoFiles = 0;
    for (const qint32 id : hitList.selection) {
        Recordset row = documentRow(id);
        if (row.eof())
            continue;
        withTwoFiles += row.recordCount() > 1;
        ASSERT_LT(withFiles, read.records.size());
        const QJsonObject record = read.records[withFiles++].toObject();
        SCOPED_TRACE(id);
        EXPECT_EQ(record.value(u"itemid"_s).toInt(), id);
        const QVariant type = row.value(u"type"_s);
        if (type.isNull()) {
            EXPECT_TRUE(record.value(u"type_"_s).isNull());
        } else {
            EXPECT_EQ(record.value(u"type_"_s).toDouble(), type.toDouble());
        }
        // (exported field, result column): numbers, dates, then texts.
        using Columns = std::initializer_list<std::pair<const char*, const char*>>;
        for (const auto& [field, column] : Columns{{"fileid", "fileid"}, {"fsize_", "fsize"}})
            EXPECT_EQ(record.value(QLatin1String(field)).toInt(), row.value(column).toInt());
        for (const auto& [field, column] :
             Columns{{"idx_date", "idx_date"}, {"fdate_", "fdate"}, {"InvoiceDat", "InvoiceDate"}})
            EXPECT_EQ(record.value(QLatin1String(field)).toString(), isoDate(row.value(column)));
        for (const auto& [field, column] : Columns{{"filename", "fname"},
                                                   {"disklabel", "volume"},
                                                   {"InvoiceNo", "InvoiceNo"},
                                                   {"Customer", "Customer"},
                                                   {"Categories", "Categories"},
                                                   {"Notes", "Notes"}})
            EXPECT_EQ(record.value(QLatin1String(field)).toString(), row.value(column).toString())
                << field;
        EXPECT_DOUBLE_EQ(record.value(u"Amount"_s).toDouble(), row.value(u"Amount"_s).toDouble());
        EXPECT_EQ(record.value(u"Paid"_s).toBool(), row.value(u"Paid"_s).toBool());
    }
    EXPECT_EQ(read.records.size(), withFiles);
    EXPECT_GT(withTwoFiles, 0) << "the sample has documents with an attachment";

    const Progressbar* progress = Progressbar::current();
    ASSERT_NE(progress, nullptr);
    EXPECT_EQ(progress->maximum(), hitList.selection.size());
    EXPECT_EQ(progress->value(), hitList.selection.size());
    EXPECT_FALSE(progress->isVisible());
}

TEST_F(DataExportTest, TableNameIsAskedAgainUntilValidAndNew) {
    {
        QFile taken(tablePath(u"Taken.dbf"_s));
        ASSERT_TRUE(taken.open(QIODevice::WriteOnly));
        taken.write("keep me");
    }
    ui().answerFolder(target.path())
        .answerInput(u"My Table"_s)
        .answerMessage(MessageAnswer::Ok)
        .answerInput(u"my_table"_s)
        .answerMessage(MessageAnswer::Ok)
        .answerInput(u"my-table"_s)
        .answerMessage(MessageAnswer::Ok)
        .answerInput(u"Taken"_s)
        .answerMessage(MessageAnswer::Ok)
        .answerInput(u"taken"_s)
        .answerMessage(MessageAnswer::Ok)
        .answerInput(u"Fresh2"_s);
    EXPECT_TRUE(exportData(hitList));

    QStringList expected;
    for (const char* character : {" ", "_", "-"})
        expected
            << u"Invalid character [%1] in Table Name.\rPlease change the name and try again."_s
                   .arg(QLatin1String(character));
    for (const char* name : {"Taken", "taken"})
        expected << u"File already exists: %1.dbf\r\n\r\nChoose a different name."_s.arg(
            QLatin1String(name));
    EXPECT_EQ(ui().messageTexts(), expected);
    for (const Prompt& prompt : ui().prompts()) {
        if (prompt.kind == Prompt::Kind::MessageBox) {
            EXPECT_EQ(prompt.icon, MessageStyle::Exclamation);
        }
    }
    EXPECT_EQ(fileBytes(tablePath(u"Taken.dbf"_s)), QByteArray("keep me"));
    EXPECT_TRUE(QFileInfo::exists(tablePath(u"Fresh2.dbf"_s)));
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
    ASSERT_TRUE(QDir(target.path()).mkdir(u"Broken.fpt"_s));
    ui().clearPrompts();
    ui().answerFolder(target.path()).answerInput(u"Broken"_s).answerMessage(MessageAnswer::Ok);
    EXPECT_FALSE(exportData(hitList));
    ASSERT_EQ(ui().messageTexts().size(), 1);
    const Prompt shown = *ui().lastPrompt();
    EXPECT_EQ(shown.title, u"Export_Data"_s);
    EXPECT_EQ(shown.icon, MessageStyle::Critical);
    EXPECT_FALSE(QFileInfo::exists(tablePath(u"Broken.dbf"_s)));
    EXPECT_EQ(QDir::currentPath(), folderBefore);
}

TEST(DataExportTable, StatementAndConnectionTextsAreBuiltFromTheirPieces) {
    const QList<dataexport::FormColumn> columns{
        {u"Description"_s, u"Descriptio"_s, dataexport::columnTypeText(DataType::VarWChar, 255)},
        {u"Code"_s, u"Code"_s, dataexport::columnTypeText(DataType::VarWChar, 12)}};
    EXPECT_EQ(dataexport::createTableText(u"T1"_s, 254, columns),
              QStringLiteral("CREATE TABLE T1(itemid NUMERIC,idx_date DATE,type_ NUMERIC,"
                             "fileid NUMERIC,filename CHAR(254),fdate_ DATE,fsize_ NUMERIC,"
                             "disklabel CHAR(13),Descriptio CHAR(254),Code CHAR(12));"));
    EXPECT_EQ(dataexport::columnTypeText(DataType::LongVarWChar, 0), u" MEMO"_s);
    EXPECT_EQ(dataexport::columnTypeText(DataType::Integer, 4), u" NUMERIC"_s);
    EXPECT_EQ(dataexport::columnTypeText(DataType::Double, 8), u" NUMERIC"_s);
    EXPECT_EQ(dataexport::columnTypeText(DataType::DBTimeStamp, 8), u" DATE"_s);
    EXPECT_EQ(dataexport::columnTypeText(DataType::Boolean, 2), u" BOOL"_s);
    EXPECT_TRUE(dataexport::columnTypeText(DataType::Currency, 8).isEmpty());
    EXPECT_TRUE(dataexport::columnTypeText(DataType::WChar, 8).isEmpty());

    EXPECT_EQ(dataexport::exportConnectionText(u"/x/y"_s),
              QStringLiteral("Provider=MSDASQL.1;Persist Security Info=False;Mode=ReadWrite;"
                             "Extended Properties=DSN=Visual FoxPro Tables;UID=;SourceType=DBF;"
                             "Exclusive=Yes;BackgroundFetch=Yes;Collate=Machine;Null=Yes;"
                             "Deleted=Yes;SourceDB=/x/y;\""));
    EXPECT_EQ(dataexport::documentQuery(u"G"_s, 12),
              QStringLiteral("select ktfile.*,G.*,ktitem.itemid,ktitem.idx_date,ktitem.type from "
                             "ktfile,ktitem,G where ktfile.itemid =G.itemid and "
                             "ktfile.itemid=ktitem.itemid and ktfile.itemid= 12"));
    EXPECT_TRUE(dataexport::firstInvalidTableNameCharacter(u"abcXYZ09"_s).isNull());
    EXPECT_EQ(dataexport::firstInvalidTableNameCharacter(u"ab\u00e9c"_s), u'\u00e9');
}
