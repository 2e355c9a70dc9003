#include "HitListFixture.h"
#include "data/Connection.h"
#include "data/Recordset.h"
#include "session/GroupConnection.h"
#include "session/Settings.h"

#include <QComboBox>
#include <QPushButton>
#include <QTest>

using namespace vx;
using namespace vx::test;

namespace {

const QString Section = QStringLiteral("Invoices");

// Results larger than the first screen (every document ten times over, by a table of copy
// numbers), so that the rest arrives while the test looks at the grid.
class ResultLoadTest : public HitListTest {
protected:
    static constexpr int Copies = 10;

    void SetUp() override {
        HitListTest::SetUp();
        Connection connection = openGroupConnection(sample.initFilePath());
        connection.execute(QStringLiteral("CREATE TABLE Copies (n LONG)"));
        for (int n = 1; n <= Copies; ++n)
            connection.execute(QStringLiteral("INSERT INTO Copies (n) VALUES (%1)").arg(n));
        // Values that sort differently by engine and by the record set: nulls, case, accents.
        for (const char* sql : {
                 "UPDATE Invoices SET Amount = NULL WHERE itemid IN (3, 17, 42)",
                 "UPDATE Invoices SET InvoiceDate = NULL WHERE itemid IN (5, 18)",
                 "UPDATE Invoices SET Paid = NULL WHERE itemid = 7",
                 "UPDATE Invoices SET Customer = 'émile Zola' WHERE itemid = 2",
                 "UPDATE Invoices SET Customer = 'Émile Zola' WHERE itemid = 9",
                 "UPDATE Invoices SET Customer = 'acme tools' WHERE itemid = 11",
                 "UPDATE Invoices SET Customer = 'Zoë' WHERE itemid = 12",
                 "UPDATE Invoices SET Customer = NULL WHERE itemid = 13",
             })
            connection.execute(QString::fromUtf8(sql));
    }

    // The sample's query with each row ten times; `tieBreak` orders the copies of a document.
    static QString copiesQuery(const QString& criteria = {}, bool tieBreak = true) {
        QString sql = sampleResultQuery(criteria);
        sql.replace(QStringLiteral(" FROM ktitem, Invoices "),
                    QStringLiteral(", Copies.n AS [Copy] FROM ktitem, Invoices, Copies "));
        if (tieBreak)
            sql += QStringLiteral(", Copies.n");
        return sql;
    }

    void remember(const QString& column, const QString& direction) {
        saveSettings(Section, {{QStringLiteral("VXSortOrder"), column},
                               {QStringLiteral("VXSortBy"), direction}});
    }

    // The rows of `query` (item id * 100 + copy) as a plain open sorted by the record set gives
    // them.
    QList<qint32> fullyLoaded(const QString& query, const QString& column,
                              const QString& direction) {
        Connection connection = openGroupConnection(sample.initFilePath());
        Recordset rows;
        rows.open(query, connection, CursorType::Keyset, LockType::Optimistic);
        if (rows.fieldIndex(column) >= 0)
            rows.setSort('[' + column + "] " + direction);
        QList<qint32> ids;
        const int itemid = rows.fieldIndex(QStringLiteral("itemid"));
        const int copy = rows.fieldIndex(QStringLiteral("Copy"));
        for (qsizetype row = 0; row < rows.recordCount(); ++row)
            ids << rows.valueAt(row, itemid).toInt() * 100 + rows.valueAt(row, copy).toInt();
        return ids;
    }

    int rows() const { return grid()->model()->rowCount(); }
    QList<qint32> shownItems() const {
        QList<qint32> ids;
        const int copy = columnOf(QStringLiteral("Copy"));
        for (int row = 0; row < rows(); ++row)
            ids << itemAt(row) * 100 + grid()->model()->index(row, copy).data().toInt();
        return ids;
    }
    // Lets the reading thread's rows in until the grid holds `count` of them.
    bool loaded(qsizetype count) {
        return QTest::qWaitFor([&] { return rows() == count; }, 30000);
    }
};

TEST_F(ResultLoadTest, EverySortShowsTheRowsAndOrderOfAFullLoad) {
    const QString query = copiesQuery();
    struct Case {
        const char* column;
        const char* direction;
    };
    const Case cases[] = {{"ITEMID", "ASC"},    {"itemid", "DESC"},      {"Amount", "ASC"},
                          {"Amount", "DESC"},   {"Invoice date", "ASC"}, {"Invoice date", "DESC"},
                          {"Paid", "ASC"},      {"Paid", "DESC"},        {"Customer", "ASC"},
                          {"Customer", "DESC"}, {"IndexDate", "DESC"},   {"NoSuchColumn", "ASC"}};
    for (const Case& sort : cases) {
        const QString what = QString::fromLatin1(sort.column) + ' ' + sort.direction;
        remember(sort.column, sort.direction);
        const QList<qint32> expected = fullyLoaded(query, sort.column, sort.direction);
        ASSERT_GT(expected.size(), 2500);
        raised.clear();
        hitList->setDoQuery(query);
        ASSERT_EQ(raised, QList<qint32>{expected.first() / 100}) << what.toStdString();
        ASSERT_TRUE(loaded(expected.size())) << what.toStdString() << ": " << rows() << " rows";
        EXPECT_EQ(shownItems(), expected) << what.toStdString();
        EXPECT_EQ(hitList->currentItemId(), expected.first() / 100) << what.toStdString();
        const QString sortText = grid()->boundRecordset().sort();
        if (QString::fromLatin1(sort.column) != QLatin1String("NoSuchColumn"))
            EXPECT_EQ(sortText, '[' + what.section(' ', 0, -2) + "] " + sort.direction);
        else
            EXPECT_TRUE(sortText.isEmpty());
    }
    EXPECT_TRUE(environment.ui().prompts().isEmpty());
}

TEST_F(ResultLoadTest, TheFirstScreenIsShownBeforeTheRestIsRead) {
    const QList<qint32> expected = fullyLoaded(copiesQuery(), "ITEMID", "ASC");
    hitList->setDoQuery(copiesQuery());
    ASSERT_LT(rows(), expected.size()) << "the rest is still on its way";
    ASSERT_GE(rows(), 500);
    EXPECT_EQ(shownItems(), expected.first(rows()));
    EXPECT_EQ(raised, QList<qint32>{expected.first() / 100});
    EXPECT_EQ(grid()->currentIndex().row(), 0);
    ASSERT_TRUE(loaded(expected.size()));
    EXPECT_EQ(shownItems(), expected);
    EXPECT_EQ(raised, QList<qint32>{expected.first() / 100}) << "appended rows raise nothing";
}

TEST_F(ResultLoadTest, WholeResultCommandsWaitForTheLoad) {
    const QList<qint32> all = fullyLoaded(copiesQuery(), "ITEMID", "ASC");
    const auto start = [&] {
        hitList->setDoQuery(copiesQuery());
        ASSERT_LT(rows(), all.size()) << "still loading";
    };

    start();
    click("Last");
    EXPECT_EQ(rows(), all.size()) << "Last";
    EXPECT_EQ(hitList->currentItemId(), all.last() / 100);

    start();
    chooseColumnMenu(QStringLiteral("Amount"), 1);
    EXPECT_EQ(shownItems(), fullyLoaded(copiesQuery(), "Amount", "DESC")) << "header sort";

    remember("ITEMID", "ASC");
    start();
    QTest::keyClick(grid(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(hitList->selectedItems().size(), all.size()) << "select all";

    start();
    clickRow(3);
    const int current = 3;
    emit grid()->dblClick();
    EXPECT_EQ(hitList->selectedItems().size(), all.size() - current) << "to the last row";
}

TEST_F(ResultLoadTest, ReplaceAllDuringALoadChangesTheWholeResult) {
    const QString status = QStringLiteral("Disputed");
    QList<qint32> disputed;
    {
        Connection connection = openGroupConnection(sample.initFilePath());
        Recordset rows;
        rows.open(sampleResultQuery(QStringLiteral("Invoices.Status = 'Disputed'")), connection);
        for (; !rows.eof(); rows.moveNext())
            disputed << rows.value(QStringLiteral("itemid")).toInt();
    }
    // Without the copies' tie-break: Replace All reads the query's conditions and order.
    hitList->setDoQuery(copiesQuery({}, false));
    const qint32 lastShown = itemAt(rows() - 1);
    ASSERT_GT(disputed.last(), lastShown) << "some matches are not read yet";
    chooseColumnMenu(QStringLiteral("Status"), 2);
    hitList->findChild<QComboBox*>(QStringLiteral("cmbFindWhat"))->setEditText(status);
    hitList->findChild<QComboBox*>(QStringLiteral("cmbReplaceWith"))->setEditText("Settled");
    environment.ui().answerMessage(MessageAnswer::Yes).answerMessage(MessageAnswer::Ok);
    hitList->findChild<QPushButton*>(QStringLiteral("btnReplaceAll"))->click();
    ASSERT_EQ(environment.ui().prompts().size(), 2);
    EXPECT_EQ(environment.ui().prompts().last().text,
              QString::number(disputed.size()) + " Change(s) Made");
    // The list read again holds every document, none of them still disputed.
    EXPECT_EQ(rows(), fullyLoaded(copiesQuery(), "ITEMID", "ASC").size());
    const int column = columnOf(QStringLiteral("Status"));
    for (int row = 0; row < rows(); ++row)
        ASSERT_NE(grid()->model()->index(row, column).data().toString(), status) << row;
}

TEST_F(ResultLoadTest, ANewQueryOrCloseListCancelsTheLoadWithNoStaleRows) {
    const QString paid = QStringLiteral("Invoices.Paid = -1");
    const QList<qint32> expected = fullyLoaded(copiesQuery(paid), "ITEMID", "ASC");
    ASSERT_GT(expected.size(), 100);
    hitList->setDoQuery(copiesQuery());
    ASSERT_LT(rows(), fullyLoaded(copiesQuery(), "ITEMID", "ASC").size());
    hitList->setDoQuery(copiesQuery(paid));
    ASSERT_TRUE(loaded(expected.size()));
    // Anything the first reading had left would arrive with these events.
    QTest::qWait(0);
    QCoreApplication::processEvents();
    EXPECT_EQ(shownItems(), expected);

    hitList->setDoQuery(copiesQuery());
    hitList->CloseList();
    QCoreApplication::processEvents();
    EXPECT_EQ(rows(), 0);
    EXPECT_EQ(hitList->currentItemId(), 0);
    EXPECT_FALSE(grid()->isVisible());
    raised.clear();
    click("Next");
    EXPECT_TRUE(raised.isEmpty()) << "no command runs without a current row";
}

TEST_F(ResultLoadTest, AnEngineErrorPartWayShowsResultsAndKeepsTheRowsShown) {
    // The last copies of the last documents fail as the engine reaches them; without an order
    // to ask for, the engine returns the first rows before it gets there.
    remember("NoSuchColumn", "ASC");
    const QString failing =
        sampleEngine() == SampleEngine::Postgres
            ? QStringLiteral("1 / (ktitem.itemid - ktitem.itemid)")
            : QStringLiteral("abs(ktitem.itemid * 0 - 9223372036854775807 - 1)");
    QString sql = copiesQuery({}, false);
    sql.chop(QStringLiteral(" ORDER BY ktitem.itemid").size());
    // Nor a DISTINCT, which would read every row before the first one comes.
    sql.replace(QStringLiteral("SELECT DISTINCT"), QStringLiteral("SELECT"));
    sql.replace(QStringLiteral(" FROM ktitem"),
                ", CASE WHEN Copies.n = 10 AND ktitem.itemid > 250 THEN " + failing +
                    " ELSE 0 END AS Probe FROM ktitem");
    environment.ui().answerMessage(MessageAnswer::Ok);
    hitList->setDoQuery(sql);
    ASSERT_TRUE(environment.ui().prompts().isEmpty()) << "the first screen came";
    const int firstScreen = rows();
    ASSERT_GT(firstScreen, 0);
    const qint32 first = hitList->currentItemId();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !environment.ui().prompts().isEmpty(); }, 30000));
    const Prompt prompt = environment.ui().prompts().first();
    EXPECT_EQ(prompt.title, QStringLiteral("Results"));
    EXPECT_EQ(prompt.style,
              MessageStyle::OkOnly | MessageStyle::Information | MessageStyle::Foreground);
    EXPECT_FALSE(prompt.text.isEmpty());
    EXPECT_GE(rows(), firstScreen) << "the rows shown stay";
    EXPECT_EQ(hitList->currentItemId(), first);
    click("Last");
    EXPECT_EQ(hitList->currentItemId(), itemAt(rows() - 1)) << "the list stays usable";
}

} // namespace
