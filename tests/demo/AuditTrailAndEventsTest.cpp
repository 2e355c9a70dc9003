#include "AuditTrailPanel.h"
#include "HitListEvents.h"
#include "support/SmallDisk.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QSignalSpy>
#include <QTableWidget>
#include <gtest/gtest.h>

namespace {

using vx::apps::HitListEvents;
using vx::demo::AuditTrailPanel;

TEST(AuditTrailPanel, ShowsEachEntryAndAppendsItToTheLog) {
    vx::test::TestEnvironment environment;
    AuditTrailPanel panel;
    panel.setLogFile(environment.filePath("logs/audit-trail.log"));
    const QDateTime when(QDate(2026, 3, 4), QTime(9, 15, 30));
    panel.record("Editing", {42}, "Record Data for Item: 42", when);
    panel.record("Moving", {3, 17, 42}, "Move items to: /archive\twith\na tab", when);
    panel.record("Exporting", {}, "nothing selected", when);

    EXPECT_EQ(panel.entryCount(), 3);
    auto* table = panel.findChild<QTableWidget*>("auditTrailTable");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->item(1, 0)->text(), "2026-03-04 09:15:30");
    EXPECT_EQ(table->item(1, 1)->text(), "Moving");
    EXPECT_EQ(table->item(1, 2)->text(), "3, 17, 42");

    QFile log(panel.logFile());
    ASSERT_TRUE(log.open(QIODevice::ReadOnly | QIODevice::Text));
    const QStringList lines = QString::fromUtf8(log.readAll()).split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3) << "a tab or line break in a description stays on its line";
    EXPECT_EQ(lines[0], "2026-03-04 09:15:30\tEditing\t42\tRecord Data for Item: 42");
    EXPECT_EQ(lines[1],
              "2026-03-04 09:15:30\tMoving\t3, 17, 42\tMove items to: /archive with a tab");
    EXPECT_EQ(lines[2], "2026-03-04 09:15:30\tExporting\t\tnothing selected");

    // A log that cannot be written leaves the panel working, and says so.
    QSignalSpy refused(&panel, &AuditTrailPanel::logNotWritten);
    panel.setLogFile(environment.filePath("logs"));
    panel.record("Copying", {1}, "Copy items to: /tmp", when);
    EXPECT_EQ(panel.entryCount(), 4);
    ASSERT_EQ(refused.size(), 1);
    EXPECT_TRUE(refused[0][0].toString().startsWith("The audit trail entry was not written to "))
        << refused[0][0].toString().toStdString();
}

TEST(AuditTrailPanel, ALogWithoutRoomKeepsWholeLinesOnly) {
    vx::test::TestEnvironment environment;
    vx::test::SmallDisk disk(8 * 1024);
    ASSERT_TRUE(disk.isReady());
    AuditTrailPanel panel;
    QSignalSpy refused(&panel, &AuditTrailPanel::logNotWritten);
    panel.setLogFile(disk.path("audit-trail.log"));
    const QDateTime when(QDate(2026, 3, 4), QTime(9, 15, 30));
    // Entries of 1,000 characters until one finds no room.
    for (int i = 0; i < 20 && refused.isEmpty(); ++i)
        panel.record("Editing", {i}, QString("d").repeated(1000), when);
    ASSERT_EQ(refused.size(), 1) << "the disk never filled";
    EXPECT_TRUE(refused[0][0].toString().contains(disk.cause))
        << refused[0][0].toString().toStdString();
    const int written = panel.entryCount() - 1;
    disk.lift();
    panel.record("Moving", {99}, "after", when); // may find room again (a size limit), or not

    QFile log(panel.logFile());
    ASSERT_TRUE(log.open(QIODevice::ReadOnly | QIODevice::Text));
    const QByteArray text = log.readAll();
    ASSERT_TRUE(text.isEmpty() || text.endsWith('\n')) << "no half line at the end";
    const QStringList lines = QString::fromUtf8(text).split(u'\n', Qt::SkipEmptyParts);
    ASSERT_GE(lines.size(), written);
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const bool last = i == written;
        EXPECT_TRUE(lines[i].startsWith(last ? "2026-03-04 09:15:30\tMoving\t99\t"
                                             : "2026-03-04 09:15:30\tEditing\t"))
            << lines[i].left(60).toStdString();
        EXPECT_TRUE(lines[i].endsWith(last ? "after" : QString("d").repeated(1000)));
    }
}

// Stands in for the hit list: the same event names and arguments, and the property the host
// answers in.
class FakeHitList : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString DocumentToMove READ documentToMove WRITE setDocumentToMove)

public:
    QString documentToMove() const { return m_document; }
    void setDocumentToMove(const QString& path) { m_document = path; }

signals:
    // Another argument list than the real event: must not connect.
    void CurrentItemID(QString& wrong);
    void LocateDocument(QString& sFile, QString& sVolume);
    void SaveQuery(QString& sName, QString& sQueryString);
    void LocateRevisionDoc(QString& sFile, QString& sVolume, QString& sVersion, QString& sItemID);
    void RecordAuditTrail(QString& sAction, QVariantList& colID, QString& sDescription);
    void LocateDocumentFromID(qint32& itemid, QString& sFile, QString& sVolume);
    void LocateDocumentToMove(qint32& itemid, QString& sFile, QString& sVolume);
    // No GetServerName at all.

private:
    QString m_document;
};

TEST(HitListEvents, ConnectsByNameAnswersInsideTheEventAndReportsWhatDidNotConnect) {
    FakeHitList hitList;
    HitListEvents events;
    EXPECT_EQ(events.connectTo(&hitList), QStringList({"CurrentItemID", "GetServerName"}));

    // The answer written by the handler is there when the event returns.
    QObject::connect(&events, &HitListEvents::locateRequested, &hitList,
                     [&](qint32 itemId, const QString& file, const QString&, bool toMove) {
                         hitList.setDocumentToMove(QStringLiteral("%1:%2:%3")
                                                       .arg(itemId)
                                                       .arg(file, toMove ? QStringLiteral("move")
                                                                         : QStringLiteral("copy")));
                     });
    qint32 itemId = 7;
    QString file = "inv0000007.txt";
    QString volume = "VOL001";
    emit hitList.LocateDocumentFromID(itemId, file, volume);
    EXPECT_EQ(hitList.documentToMove(), "7:inv0000007.txt:copy");
    emit hitList.LocateDocumentToMove(itemId, file, volume);
    EXPECT_EQ(hitList.documentToMove(), "7:inv0000007.txt:move");

    QSignalSpy audit(&events, &HitListEvents::auditTrail);
    QString action = "Deleting";
    QVariantList ids{3, QVariant(QStringLiteral("17")), qint64(42)};
    QString description = "Marking records for deletion";
    emit hitList.RecordAuditTrail(action, ids, description);
    ASSERT_EQ(audit.count(), 1);
    EXPECT_EQ(audit[0][0].toString(), "Deleting");
    EXPECT_EQ(audit[0][1].value<QList<qint32>>(), (QList<qint32>{3, 17, 42}));
    EXPECT_EQ(audit[0][2].toString(), "Marking records for deletion");

    QSignalSpy saved(&events, &HitListEvents::queryToSave);
    QString name = "Unpaid";
    QString query = "SELECT * FROM Invoices";
    emit hitList.SaveQuery(name, query);
    QString wrong = "7";
    QSignalSpy current(&events, &HitListEvents::currentItemChanged);
    emit hitList.CurrentItemID(wrong);
    ASSERT_EQ(saved.count(), 1);
    EXPECT_EQ(saved[0][1].toString(), query);
    EXPECT_EQ(current.count(), 0) << "an event with other arguments stays unconnected";
}

} // namespace

#include "AuditTrailAndEventsTest.moc"
