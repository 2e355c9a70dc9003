#include "session/SearchIndexes.h"

#include "data/Connection.h"
#include "data/ConnectionProperties.h"
#include "data/Recordset.h"
#include "session/GroupConnection.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QSet>
#include <gtest/gtest.h>

using namespace vx;

namespace {

// A repository made before the search indexes existed gets them the first time a control opens
// it; searches keep their results and, on a large repository, stop reading every row.
class SearchIndexesTest : public ::testing::Test {
protected:
    test::TestEnvironment environment;
    test::SampleRepository sample;

    // In lower case, without the table's name a server adds to keep index names apart.
    QSet<QString> groupIndexes(Connection& connection) const {
        QSet<QString> names;
        for (QString name : connection.indexNames()) {
            name = name.toLower();
            if (name.endsWith(QStringLiteral("_invoices")))
                name.chop(9);
            if (name.startsWith(QStringLiteral("ix_invoices_")))
                names.insert(name);
        }
        return names;
    }

    // The sample as an older tool left it: the group table without its search indexes.
    void dropSearchIndexes() {
        Connection connection;
        connection.open(sample.connectionText(), QString(), QString());
        ASSERT_FALSE(groupIndexes(connection).isEmpty())
            << "the repository tool makes them with the group";
        for (const QString& name : connection.indexNames())
            if (name.startsWith(QStringLiteral("ix_Invoices_"), Qt::CaseInsensitive))
                connection.execute(QStringLiteral("DROP INDEX [%1]").arg(name));
        ASSERT_TRUE(groupIndexes(connection).isEmpty());
    }

    QList<qint32> ids(Connection& connection, const QString& criteria) const {
        Recordset rows;
        rows.open(QStringLiteral("SELECT DISTINCT ktitem.itemid AS itemid FROM ktitem, Invoices "
                                 "WHERE ktitem.itemid = Invoices.itemid AND ktitem.deleted = 0 "
                                 "AND ") +
                      criteria + QStringLiteral(" ORDER BY ktitem.itemid"),
                  connection);
        QList<qint32> found;
        for (; !rows.eof(); rows.moveNext())
            found << rows.value(0).toInt();
        return found;
    }
};

TEST_F(SearchIndexesTest, AnOlderRepositoryGetsThemOnFirstOpenAndSearchesFindTheSameRows) {
    const QStringList criteria{
        QStringLiteral("LOWER(Invoices.Customer) = 'o''malley bakery'"),
        QStringLiteral("LOWER(Invoices.InvoiceNo) = 'inv-0000042'"),
        QStringLiteral("Invoices.Amount >= 1000 AND Invoices.Amount <= 3000"),
        QStringLiteral("Invoices.Status = 'Paid'"),
    };
    QList<QList<qint32>> before;
    {
        Connection connection;
        connection.open(sample.connectionText(), QString(), QString());
        for (const QString& c : criteria)
            before << ids(connection, c);
    }
    dropSearchIndexes();

    Connection connection = openGroupConnection(sample.initFilePath());
    // Numbers, dates and short text (as typed and in lower case); not the key, the Yes/No
    // column, the list column of 255 characters or the memo.
    EXPECT_EQ(groupIndexes(connection),
              (QSet<QString>{"ix_invoices_invoiceno", "ix_invoices_invoiceno_lower",
                             "ix_invoices_customer", "ix_invoices_customer_lower",
                             "ix_invoices_status", "ix_invoices_status_lower", "ix_invoices_amount",
                             "ix_invoices_invoicedate"}));
    for (qsizetype i = 0; i < criteria.size(); ++i) {
        EXPECT_FALSE(before[i].isEmpty()) << criteria[i].toStdString();
        EXPECT_EQ(ids(connection, criteria[i]), before[i]) << criteria[i].toStdString();
    }
    // Already there: a second pass makes nothing.
    EXPECT_TRUE(ensureSearchIndexes(connection).isEmpty());

    if (test::sampleEngine() == test::SampleEngine::Sqlite) {
        // The engine's own word that a case-insensitive search reads through the index.
        Recordset plan;
        plan.open(QStringLiteral("EXPLAIN QUERY PLAN SELECT itemid FROM Invoices WHERE "
                                 "LOWER(Invoices.InvoiceNo) = 'inv-0000042'"),
                  connection);
        QString steps;
        for (; !plan.eof(); plan.moveNext())
            steps += plan.value(QStringLiteral("detail")).toString() + u'\n';
        EXPECT_TRUE(steps.contains(QStringLiteral("ix_Invoices_InvoiceNo_lower")))
            << steps.toStdString();
    }
}

TEST_F(SearchIndexesTest, ARepositoryOpenedOnlyForReadingOpensWithoutThem) {
    if (test::sampleEngine() != test::SampleEngine::Sqlite)
        GTEST_SKIP() << "a read-only data link is a SQLite file's";
    dropSearchIndexes();
    writeDataLinkFile(sample.dataLinkPath(), QStringLiteral("Provider=SQLite;Data Source=\"") +
                                                 sample.databasePath() +
                                                 QStringLiteral("\";Mode=Read"));

    Connection connection = openGroupConnection(sample.initFilePath());
    EXPECT_TRUE(groupIndexes(connection).isEmpty());
    Recordset rows;
    rows.open(QStringLiteral("SELECT COUNT(*) FROM Invoices"), connection);
    EXPECT_EQ(rows.value(0).toInt(), sample.expected().documents);
    EXPECT_TRUE(environment.ui().prompts().isEmpty());
}

} // namespace
