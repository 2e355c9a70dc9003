#include "DbfReadBack.h"
#include "data/Connection.h"
#include "data/Error.h"
#include "data/Recordset.h"

#include <QDate>
#include <QDir>
#include <QTemporaryDir>
#include <QtEndian>
#include <gtest/gtest.h>

using namespace vx;
using namespace vx::test;

namespace {

QString connectionTextFor(const QString& folder) {
    return QStringLiteral("Provider=MSDASQL.1;Extended Properties=DSN=Visual FoxPro Tables;UID=;"
                          "SourceType=DBF;SourceDB=") +
           folder + QStringLiteral(";");
}

const QString allTypes = QStringLiteral(
    "CREATE TABLE people(itemid NUMERIC,born DATE,name CHAR(10),wide CHAR(254),notes MEMO,"
    "active BOOL,ratio NUMERIC(8,2));");

struct Person {
    QVariant itemid, born, name, wide, notes, active, ratio;
};

void append(Recordset& table, const Person& p) {
    table.addNew();
    table.setValue(QStringLiteral("itemid"), p.itemid);
    table.setValue(QStringLiteral("born"), p.born);
    table.setValue(QStringLiteral("name"), p.name);
    table.setValue(QStringLiteral("wide"), p.wide);
    table.setValue(QStringLiteral("notes"), p.notes);
    table.setValue(QStringLiteral("active"), p.active);
    table.setValue(QStringLiteral("ratio"), p.ratio);
    table.update();
}

quint32 headerRecordCount(const QByteArray& bytes) {
    return qFromLittleEndian<quint32>(bytes.constData() + 4);
}

class DbfDriverTest : public ::testing::Test {
protected:
    QTemporaryDir folder;
    Connection connection;

    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        connection.open(connectionTextFor(folder.path()));
    }
    QString path(const QString& name) const { return QDir(folder.path()).filePath(name); }
};

} // namespace

TEST_F(DbfDriverTest, TableOfEveryTypeReadsBackThroughTheReferenceReader) {
    connection.execute(allTypes);
    Recordset table;
    table.open(QStringLiteral("people"), connection, CursorType::Keyset, LockType::Optimistic,
               CommandType::TableDirect);
    const QString longMemo = QStringLiteral("Line one\r\nLine two with caf\u00e9 and \u20ac. ")
                                 .repeated(8); // several 64-byte blocks
    const QString wide = QStringLiteral("w").repeated(253) + QStringLiteral("!");
    append(table, {7, QDate(2024, 2, 29), QStringLiteral("Ann"), wide, longMemo, true, 12.5});
    append(table,
           {-123456789, QDateTime(QDate(1999, 12, 31), QTime(23, 59)), QStringLiteral("\u00c5sa"),
            QStringLiteral("short"), QStringLiteral("x"), false, -0.25});
    append(table,
           {QVariant(), QVariant(), QVariant(), QVariant(), QVariant(), QVariant(), QVariant()});
    table.close();
    connection.close(); // flushes

    const QByteArray bytes = fileBytes(path(QStringLiteral("people.dbf")));
    ASSERT_GT(bytes.size(), 32);
    EXPECT_EQ(quint8(bytes[0]), 0x30);
    EXPECT_EQ(headerRecordCount(bytes), 3u);
    const QDate today = QDate::currentDate();
    EXPECT_EQ(quint8(bytes[1]), today.year() - 1900);
    EXPECT_EQ(quint8(bytes[2]), today.month());
    EXPECT_EQ(quint8(bytes[3]), today.day());
    const int headerLength = qFromLittleEndian<quint16>(bytes.constData() + 8);
    const int recordLength = qFromLittleEndian<quint16>(bytes.constData() + 10);
    EXPECT_EQ(headerLength, 32 + 7 * 32 + 1 + 263);
    EXPECT_EQ(recordLength, 1 + 20 + 8 + 10 + 254 + 4 + 1 + 8);
    EXPECT_EQ(bytes[32 + 7 * 32], '\x0D');
    EXPECT_EQ(bytes.mid(32 + 7 * 32 + 1, 263), QByteArray(263, '\0'));
    EXPECT_EQ(quint8(bytes[28]) & 0x02, 0x02) << "memo flag";
    EXPECT_EQ(bytes.size(), headerLength + 3 * recordLength + 1);
    EXPECT_EQ(bytes.back(), '\x1A');
    EXPECT_EQ(bytes[headerLength], ' ') << "deletion flag of the first record";

    const QByteArray memo = fileBytes(path(QStringLiteral("people.fpt")));
    ASSERT_GE(memo.size(), 512);
    EXPECT_EQ(qFromBigEndian<quint16>(memo.constData() + 6), 64);
    EXPECT_EQ(qint64(qFromBigEndian<quint32>(memo.constData())) * 64, memo.size())
        << "next free block follows the last memo";

    const ReadBack read = readWithDbfread(path(QStringLiteral("people.dbf")));
    if (!read.skipReason.isEmpty())
        GTEST_SKIP() << read.skipReason.toStdString();
    ASSERT_TRUE(read.ok) << read.error.toStdString();
    auto expectField = [&](const char* name, const char* type, int length, int decimals) {
        const QJsonObject field = read.field(QString::fromLatin1(name));
        EXPECT_EQ(field.value(QStringLiteral("type")).toString(), QString::fromLatin1(type))
            << name;
        EXPECT_EQ(field.value(QStringLiteral("length")).toInt(), length) << name;
        EXPECT_EQ(field.value(QStringLiteral("decimals")).toInt(), decimals) << name;
    };
    expectField("itemid", "N", 20, 4);
    expectField("born", "D", 8, 0);
    expectField("name", "C", 10, 0);
    expectField("wide", "C", 254, 0);
    expectField("notes", "M", 4, 0);
    expectField("active", "L", 1, 0);
    expectField("ratio", "N", 8, 2);

    ASSERT_EQ(read.records.size(), 3);
    const QJsonObject first = read.records[0].toObject();
    EXPECT_EQ(first.value(QStringLiteral("itemid")).toDouble(), 7.0);
    EXPECT_EQ(first.value(QStringLiteral("born")).toString(), QStringLiteral("2024-02-29"));
    EXPECT_EQ(first.value(QStringLiteral("name")).toString(), QStringLiteral("Ann"));
    EXPECT_EQ(first.value(QStringLiteral("wide")).toString(), wide);
    EXPECT_EQ(first.value(QStringLiteral("notes")).toString(), longMemo);
    EXPECT_EQ(first.value(QStringLiteral("active")).toBool(), true);
    EXPECT_EQ(first.value(QStringLiteral("ratio")).toDouble(), 12.5);

    const QJsonObject second = read.records[1].toObject();
    EXPECT_EQ(second.value(QStringLiteral("itemid")).toDouble(), -123456789.0);
    EXPECT_EQ(second.value(QStringLiteral("born")).toString(), QStringLiteral("1999-12-31"));
    EXPECT_EQ(second.value(QStringLiteral("name")).toString(), QStringLiteral("\u00c5sa"));
    EXPECT_EQ(second.value(QStringLiteral("notes")).toString(), QStringLiteral("x"));
    EXPECT_EQ(second.value(QStringLiteral("active")).toBool(true), false);
    EXPECT_EQ(second.value(QStringLiteral("ratio")).toDouble(), -0.25);

    const QJsonObject blank = read.records[2].toObject();
    for (const char* name : {"itemid", "born", "notes", "active", "ratio"})
        EXPECT_TRUE(blank.value(QString::fromLatin1(name)).isNull()) << name;
    EXPECT_EQ(blank.value(QStringLiteral("name")).toString(), QString());
}

TEST_F(DbfDriverTest, ReopenedTableReadsBackWithItsTypesAndTakesMoreRecords) {
    connection.execute(
        QStringLiteral("CREATE TABLE Log(n NUMERIC,d DATE,c CHAR(5),m MEMO,b BOOL);"));
    Recordset table;
    table.open(QStringLiteral("select * from Log"), connection, CursorType::Keyset,
               LockType::Optimistic);
    EXPECT_TRUE(table.eof());
    table.addNew();
    table.setValue(QStringLiteral("N"), 42);
    table.setValue(QStringLiteral("d"), QStringLiteral("2023-05-06"));
    table.setValue(QStringLiteral("c"), QStringLiteral("abc"));
    table.setValue(QStringLiteral("m"), QStringLiteral("memo text"));
    table.setValue(QStringLiteral("b"), true);
    table.update();
    table.close();
    connection.close();

    Connection again;
    again.open(connectionTextFor(folder.path()));
    Recordset reread;
    reread.open(QStringLiteral("select * from log;"), again, CursorType::Keyset,
                LockType::Optimistic);
    ASSERT_EQ(reread.recordCount(), 1);
    EXPECT_EQ(reread.field(QStringLiteral("n")).type(), DataType::Numeric);
    EXPECT_EQ(reread.field(QStringLiteral("d")).type(), DataType::Date);
    EXPECT_EQ(reread.field(QStringLiteral("c")).type(), DataType::WChar);
    EXPECT_EQ(reread.field(QStringLiteral("c")).definedSize(), 5);
    EXPECT_EQ(reread.field(QStringLiteral("m")).type(), DataType::LongVarWChar);
    EXPECT_EQ(reread.field(QStringLiteral("b")).type(), DataType::Boolean);
    EXPECT_EQ(reread.value(QStringLiteral("n")).toDouble(), 42.0);
    EXPECT_EQ(reread.value(QStringLiteral("d")).toDateTime().date(), QDate(2023, 5, 6));
    EXPECT_EQ(reread.value(QStringLiteral("c")).toString(), QStringLiteral("abc"));
    EXPECT_EQ(reread.value(QStringLiteral("m")).toString(), QStringLiteral("memo text"));
    EXPECT_TRUE(reread.value(QStringLiteral("b")).toBool());

    reread.addNew();
    reread.setValue(QStringLiteral("n"), 43);
    reread.setValue(QStringLiteral("m"), QStringLiteral("second memo"));
    reread.update();
    // A second record set sees the record the first appended, before any close.
    Recordset third;
    third.open(QStringLiteral("Log"), again, CursorType::Keyset, LockType::ReadOnly,
               CommandType::TableDirect);
    EXPECT_EQ(third.recordCount(), 2);
    again.close();

    EXPECT_EQ(headerRecordCount(fileBytes(path(QStringLiteral("Log.dbf")))), 2u);
    const ReadBack read = readWithDbfread(path(QStringLiteral("Log.dbf")));
    if (!read.skipReason.isEmpty())
        GTEST_SKIP() << read.skipReason.toStdString();
    ASSERT_TRUE(read.ok) << read.error.toStdString();
    ASSERT_EQ(read.records.size(), 2);
    EXPECT_EQ(read.records[0].toObject().value(QStringLiteral("m")).toString(),
              QStringLiteral("memo text"));
    EXPECT_EQ(read.records[1].toObject().value(QStringLiteral("m")).toString(),
              QStringLiteral("second memo"));
    EXPECT_EQ(read.records[1].toObject().value(QStringLiteral("n")).toDouble(), 43.0);
}

TEST_F(DbfDriverTest, RefusesWhatItCannotWriteAndKeepsTheTableWhole) {
    auto errorOf = [&](const QString& sql) {
        try {
            connection.execute(sql);
        } catch (const Error& error) {
            return error.number();
        }
        return 0;
    };
    EXPECT_EQ(errorOf(QStringLiteral("CREATE TABLE t1(a CHAR(255));")), ErrorNumber::SyntaxError);
    EXPECT_EQ(errorOf(QStringLiteral("CREATE TABLE t2(a CHAR(4),A NUMERIC);")),
              ErrorNumber::SyntaxError);
    EXPECT_EQ(errorOf(QStringLiteral("CREATE TABLE t3(a VARCHAR(4));")), ErrorNumber::SyntaxError);
    EXPECT_EQ(errorOf(QStringLiteral("CREATE TABLE t4(elevenchars DATE);")),
              ErrorNumber::SyntaxError);
    EXPECT_EQ(errorOf(QStringLiteral("DROP TABLE t1")), ErrorNumber::NotSupported);
    EXPECT_TRUE(QDir(folder.path()).entryList(QDir::Files).isEmpty()) << "nothing half-made";

    connection.execute(QStringLiteral("CREATE TABLE t5(n NUMERIC(4,1),m MEMO);"));
    EXPECT_NE(errorOf(QStringLiteral("CREATE TABLE T5(x DATE);")), 0) << "exists, any case";

    Recordset table;
    table.open(QStringLiteral("t5"), connection, CursorType::Keyset, LockType::Optimistic,
               CommandType::TableDirect);
    table.addNew();
    table.setValue(QStringLiteral("n"), 123456.0); // wider than N(4,1)
    table.setValue(QStringLiteral("m"), QStringLiteral("must not be stored"));
    EXPECT_THROW(table.update(), Error);
    table.cancelUpdate();
    table.addNew();
    table.setValue(QStringLiteral("n"), 99.5);
    table.update();
    EXPECT_THROW(table.deleteCurrent(), Error);

    Recordset missing;
    try {
        missing.open(QStringLiteral("select * from nosuch"), connection);
        ADD_FAILURE() << "a missing table opened";
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), ErrorNumber::TableNotFound);
    }
    EXPECT_THROW(missing.open(QStringLiteral("select n from t5"), connection), Error);
    connection.close();

    EXPECT_EQ(headerRecordCount(fileBytes(path(QStringLiteral("t5.dbf")))), 1u);
    // The refused record left no memo behind: the memo file holds only its header.
    EXPECT_EQ(fileBytes(path(QStringLiteral("t5.fpt"))).size(), 512);

    Connection noFolder;
    EXPECT_THROW(noFolder.open(QStringLiteral("Provider=MSDASQL.1;SourceType=DBF;SourceDB=") +
                               path(QStringLiteral("absent")) + QStringLiteral(";")),
                 Error);
    EXPECT_THROW(noFolder.open(QStringLiteral("Provider=MSDASQL.1;SourceDB=") + folder.path()),
                 Error);
}
