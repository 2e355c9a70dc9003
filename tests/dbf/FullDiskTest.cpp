// A table export that runs out of room stays a table every reader can trust.
#include "DbfReadBack.h"
#include "data/Connection.h"
#include "data/Error.h"
#include "data/RowAppender.h"
#include "support/SmallDisk.h"

#include <QDir>
#include <QtEndian>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace vx;
using namespace vx::test;

namespace {

struct Shape {
    const char* name;
    const char* create;
    bool memo;
};

QVariantList rowFor(int i, bool memo) {
    QVariantList row{i, u"name %1"_s.arg(i), u"w"_s.repeated(100 + i % 100)};
    if (memo)
        row << (i % 5 == 0 ? QVariant() : QVariant(u"memo %1 "_s.arg(i).repeated(10 + i % 40)));
    return row;
}

} // namespace

TEST(FullDisk, AnExportThatRunsOutOfRoomLeavesTheWholeRecordsWrittenAsAValidTable) {
    if (const QString why = dbfreadUnavailable(); !why.isEmpty())
        GTEST_SKIP() << why.toStdString();
    const Shape shapes[] = {
        {"plain", "CREATE TABLE t(itemid NUMERIC,name CHAR(20),wide CHAR(200));", false},
        {"with memo", "CREATE TABLE t(itemid NUMERIC,name CHAR(20),wide CHAR(200),notes MEMO);",
         true},
    };
    for (const Shape& shape : shapes) {
        SCOPED_TRACE(shape.name);
        SmallDisk disk(1024 * 1024);
        ASSERT_TRUE(disk.isReady());
        QString failure;
        int appended = 0;
        {
            Connection connection;
            connection.open(foxProConnectionText(disk.folder()));
            connection.execute(QString::fromLatin1(shape.create));
            QStringList columns{u"itemid"_s, u"name"_s, u"wide"_s};
            if (shape.memo)
                columns << u"notes"_s;
            try {
                auto appender = connection.appendRows(u"t"_s, columns);
                for (; appended < 100000; ++appended) {
                    const QVariantList row = rowFor(appended + 1, shape.memo);
                    appender->append({row.constData(), size_t(row.size())});
                }
                appender->finish();
            } catch (const Error& error) {
                failure = error.description();
            }
            try {
                connection.close();
            } catch (const Error&) { // the failure was reported above; closing adds nothing
            }
        }
        disk.lift();
        ASSERT_FALSE(failure.isEmpty()) << "the disk never filled up";
        EXPECT_TRUE(failure.contains(disk.cause)) << failure.toStdString();
        EXPECT_FALSE(failure.contains(u"Unknown error"_s)) << failure.toStdString();

        // The header's count and the end mark describe exactly the whole records on disk.
        const QByteArray bytes = fileBytes(disk.path(u"t.dbf"_s));
        ASSERT_GE(bytes.size(), 32);
        const quint32 count = qFromLittleEndian<quint32>(bytes.constData() + 4);
        const int headerLength = qFromLittleEndian<quint16>(bytes.constData() + 8);
        const int recordLength = qFromLittleEndian<quint16>(bytes.constData() + 10);
        EXPECT_GT(count, 0u);
        EXPECT_LT(qint64(count), appended);
        EXPECT_EQ(bytes.size(), qint64(headerLength) + qint64(count) * recordLength + 1);
        EXPECT_EQ(bytes.back(), '\x1a');

        const ReadBack table = readWithDbfread(disk.path(u"t.dbf"_s));
        ASSERT_TRUE(table.ok) << table.error.toStdString();
        ASSERT_EQ(table.records.size(), qsizetype(count));
        for (qsizetype r = 0; r < table.records.size(); ++r) {
            const QJsonObject record = table.records[r].toObject();
            const QVariantList row = rowFor(int(r + 1), shape.memo);
            ASSERT_EQ(record[u"itemid"_s].toInt(), r + 1);
            EXPECT_EQ(record[u"name"_s].toString(), row[1].toString());
            if (shape.memo) {
                EXPECT_EQ(record[u"notes"_s].toString(), row[3].toString()) << "record " << r;
            }
        }
    }
}
