#include "DbfReadBack.h"
#include "data/Connection.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "support/ErrorNumberOf.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QtEndian>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace vx;
using namespace vx::test;

namespace {

quint32 headerRecordCount(const QByteArray& bytes) {
    return qFromLittleEndian<quint32>(bytes.constData() + 4);
}

class DbfDriverTest : public ::testing::Test {
protected:
    QTemporaryDir folder;
    Connection connection;

    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        connection.open(foxProConnectionText(folder.path()));
    }
    QString path(const QString& name) const { return QDir(folder.path()).filePath(name); }
};

} // namespace

TEST_F(DbfDriverTest, TableOfEveryTypeReadsBackThroughTheReferenceReader) {
    connection.execute(createPeople(u"people"_s));
    Recordset table;
    table.open(u"people"_s, connection, CursorType::Keyset, LockType::Optimistic,
               CommandType::TableDirect);
    const QString longMemo =
        u"Line one\r\nLine two with caf\u00e9 and \u20ac. "_s.repeated(8); // several 64-byte blocks
    const QString wide = u"w"_s.repeated(253) + u"!"_s;
    appendPerson(table, {7, QDate(2024, 2, 29), u"Ann"_s, wide, longMemo, true, 12.5});
    appendPerson(table, {-123456789, QDateTime(QDate(1999, 12, 31), QTime(23, 59)), u"\u00c5sa"_s,
                         u"short"_s, u"x"_s, false, -0.25});
    appendPerson(table, {});
    table.close();
    connection.close(); // flushes

    const QByteArray bytes = fileBytes(path(u"people.dbf"_s));
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

    const QByteArray memo = fileBytes(path(u"people.fpt"_s));
    ASSERT_GE(memo.size(), 512);
    EXPECT_EQ(qFromBigEndian<quint16>(memo.constData() + 6), 64);
    EXPECT_EQ(qint64(qFromBigEndian<quint32>(memo.constData())) * 64, memo.size())
        << "next free block follows the last memo";

    const ReadBack read = readWithDbfread(path(u"people.dbf"_s));
    if (!read.skipReason.isEmpty())
        GTEST_SKIP() << read.skipReason.toStdString();
    ASSERT_TRUE(read.ok) << read.error.toStdString();
    const std::tuple<const char*, const char*, int, int> layout[] = {
        {"itemid", "N", 20, 4}, {"born", "D", 8, 0},   {"name", "C", 10, 0}, {"wide", "C", 254, 0},
        {"notes", "M", 4, 0},   {"active", "L", 1, 0}, {"ratio", "N", 8, 2}};
    for (const auto& [name, type, length, decimals] : layout) {
        const QJsonObject field = read.field(QString::fromLatin1(name));
        EXPECT_EQ(field.value(u"type"_s).toString(), QString::fromLatin1(type)) << name;
        EXPECT_EQ(field.value(u"length"_s).toInt(), length) << name;
        EXPECT_EQ(field.value(u"decimals"_s).toInt(), decimals) << name;
    }

    ASSERT_EQ(read.records.size(), 3);
    const QJsonObject expected[] = {{{"itemid", 7},
                                     {"born", "2024-02-29"},
                                     {"name", "Ann"},
                                     {"wide", wide},
                                     {"notes", longMemo},
                                     {"active", true},
                                     {"ratio", 12.5}},
                                    {{"itemid", -123456789},
                                     {"born", "1999-12-31"},
                                     {"name", u"\u00c5sa"_s},
                                     {"wide", "short"},
                                     {"notes", "x"},
                                     {"active", false},
                                     {"ratio", -0.25}},
                                    {{"itemid", QJsonValue()},
                                     {"born", QJsonValue()},
                                     {"name", ""},
                                     {"wide", ""},
                                     {"notes", QJsonValue()},
                                     {"active", QJsonValue()},
                                     {"ratio", QJsonValue()}}};
    for (int r = 0; r < 3; ++r)
        EXPECT_EQ(QJsonDocument(read.records[r].toObject()).toJson(QJsonDocument::Compact),
                  QJsonDocument(expected[r]).toJson(QJsonDocument::Compact));
}

TEST_F(DbfDriverTest, ReopenedTableReadsBackWithItsTypesAndTakesMoreRecords) {
    connection.execute(u"CREATE TABLE Log(n NUMERIC,d DATE,c CHAR(5),m MEMO,b BOOL);"_s);
    Recordset table;
    table.open(u"select * from Log"_s, connection, CursorType::Keyset, LockType::Optimistic);
    EXPECT_TRUE(table.eof());
    table.addNew();
    const std::pair<const char*, QVariant> values[] = {
        {"N", 42}, {"d", u"2023-05-06"_s}, {"c", u"abc"_s}, {"m", u"memo text"_s}, {"b", true}};
    for (const auto& [column, value] : values)
        table.setValue(QString::fromLatin1(column), value);
    table.update();
    table.close();
    connection.close();

    Connection again;
    again.open(foxProConnectionText(folder.path()));
    Recordset reread;
    reread.open(u"select * from log;"_s, again, CursorType::Keyset, LockType::Optimistic);
    ASSERT_EQ(reread.recordCount(), 1);
    const DataType types[] = {DataType::Numeric, DataType::Date, DataType::WChar,
                              DataType::LongVarWChar, DataType::Boolean};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(reread.field(i).type(), types[i]) << i;
    EXPECT_EQ(reread.field(u"c"_s).definedSize(), 5);
    EXPECT_EQ(reread.value(u"n"_s).toDouble(), 42.0);
    EXPECT_EQ(reread.value(u"d"_s).toDateTime().date(), QDate(2023, 5, 6));
    EXPECT_EQ(reread.value(u"c"_s).toString(), u"abc"_s);
    EXPECT_EQ(reread.value(u"m"_s).toString(), u"memo text"_s);
    EXPECT_TRUE(reread.value(u"b"_s).toBool());

    reread.addNew();
    reread.setValue(u"n"_s, 43);
    reread.setValue(u"m"_s, u"second memo"_s);
    reread.update();
    // A second record set sees the record the first appended, before any close.
    Recordset third;
    third.open(u"Log"_s, again, CursorType::Keyset, LockType::ReadOnly, CommandType::TableDirect);
    EXPECT_EQ(third.recordCount(), 2);
    again.close();

    EXPECT_EQ(headerRecordCount(fileBytes(path(u"Log.dbf"_s))), 2u);
    const ReadBack read = readWithDbfread(path(u"Log.dbf"_s));
    if (!read.skipReason.isEmpty())
        GTEST_SKIP() << read.skipReason.toStdString();
    ASSERT_TRUE(read.ok) << read.error.toStdString();
    ASSERT_EQ(read.records.size(), 2);
    EXPECT_EQ(read.records[0].toObject().value(u"m"_s).toString(), u"memo text"_s);
    EXPECT_EQ(read.records[1].toObject().value(u"m"_s).toString(), u"second memo"_s);
    EXPECT_EQ(read.records[1].toObject().value(u"n"_s).toDouble(), 43.0);
}

TEST_F(DbfDriverTest, RefusesWhatItCannotWriteAndKeepsTheTableWhole) {
    auto errorOf = [&](const QString& sql) {
        return errorNumberOf([&] { connection.execute(sql); });
    };
    for (const char* sql :
         {"CREATE TABLE t1(a CHAR(255));", "CREATE TABLE t2(a CHAR(4),A NUMERIC);",
          "CREATE TABLE t3(a VARCHAR(4));", "CREATE TABLE t4(elevenchars DATE);"})
        EXPECT_EQ(errorOf(QString::fromLatin1(sql)), ErrorNumber::SyntaxError) << sql;
    EXPECT_EQ(errorOf(u"DROP TABLE t1"_s), ErrorNumber::NotSupported);
    EXPECT_TRUE(QDir(folder.path()).entryList(QDir::Files).isEmpty()) << "nothing half-made";

    connection.execute(u"CREATE TABLE t5(n NUMERIC(4,1),m MEMO);"_s);
    EXPECT_NE(errorOf(u"CREATE TABLE T5(x DATE);"_s), 0) << "exists, any case";

    Recordset table;
    table.open(u"t5"_s, connection, CursorType::Keyset, LockType::Optimistic,
               CommandType::TableDirect);
    table.addNew();
    table.setValue(u"n"_s, 123456.0); // wider than N(4,1)
    table.setValue(u"m"_s, u"must not be stored"_s);
    EXPECT_THROW(table.update(), Error);
    table.cancelUpdate();
    table.addNew();
    table.setValue(u"n"_s, 99.5);
    table.update();
    EXPECT_THROW(table.deleteCurrent(), Error);

    Recordset missing;
    EXPECT_EQ(errorNumberOf([&] { missing.open(u"select * from nosuch"_s, connection); }),
              ErrorNumber::TableNotFound);
    EXPECT_THROW(missing.open(u"select n from t5"_s, connection), Error);
    connection.close();

    EXPECT_EQ(headerRecordCount(fileBytes(path(u"t5.dbf"_s))), 1u);
    // The refused record left no memo behind: the memo file holds only its header.
    EXPECT_EQ(fileBytes(path(u"t5.fpt"_s)).size(), 512);

    Connection noFolder;
    EXPECT_THROW(noFolder.open(foxProConnectionText(path(u"absent"_s))), Error);
    EXPECT_THROW(noFolder.open(u"Provider=MSDASQL.1;SourceDB="_s + folder.path()), Error);
}

// A table handed over by someone else: a memo claiming more bytes than its file holds is
// refused with its block named, before any room is taken for it.
TEST_F(DbfDriverTest, AMemoLongerThanItsFileIsRefused) {
    connection.execute(u"CREATE TABLE Notes(n NUMERIC,m MEMO);"_s);
    Recordset table;
    table.open(u"select * from Notes"_s, connection, CursorType::Keyset, LockType::Optimistic);
    table.addNew();
    table.setValue(u"n"_s, 1);
    table.setValue(u"m"_s, u"short"_s);
    table.update();
    table.close();
    connection.close();

    for (const quint32 claimed : {quint32(1000), quint32(0x7ffffff0), quint32(0xffffffff)}) {
        QFile memo(path(u"Notes.fpt"_s));
        ASSERT_TRUE(memo.open(QIODevice::ReadWrite));
        ASSERT_TRUE(memo.seek(512 + 4)); // the first memo's length, after the header
        uchar length[4];
        qToBigEndian(claimed, length);
        ASSERT_EQ(memo.write(reinterpret_cast<const char*>(length), 4), 4);
        memo.close();

        Connection again;
        again.open(foxProConnectionText(folder.path()));
        Recordset reread;
        try {
            reread.open(u"select * from Notes"_s, again, CursorType::Keyset, LockType::ReadOnly);
            ADD_FAILURE() << claimed << " bytes read from a memo file of 576";
        } catch (const Error& error) {
            EXPECT_TRUE(error.description().contains(
                u"the memo at block 8 claims %1 bytes, more than the file holds"_s.arg(claimed)))
                << error.description().toStdString();
        }
    }
}
