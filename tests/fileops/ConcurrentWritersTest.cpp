#include "FileOpsFixture.h"
#include "companions/FilingUser.h"
#include "operations/DocumentOperations.h"
#include "operations/VolumeLabelReader.h"
#include "portable/QueryRows.h"

#include <atomic>
#include <thread>

namespace vx::test {
namespace {

// Writes of different kinds by users working at the same moment, each on a connection of its
// own: none waits forever, none fails for the other's lock, nothing is lost.
class ConcurrentWritersTest : public FileOpsFixture {
protected:
    QStringList column(const QString& sql) { return rowsOf(hitList.connection(), sql); }
};

TEST_F(ConcurrentWritersTest, MarkingDeletedAndVolumeUpdateCompleteWhileAnotherUserFiles) {
    VolumeLabelOverride label([](const QString&) { return QStringLiteral("SHARED"); });
    const QString target = makeFolder(QStringLiteral("target"));
    const QList<qint32> marked{2, 3, 5, 7, 11, 13, 17, 19};
    const QList<qint32> relabelled{4, 6, 8, 10, 12, 14, 16, 18};

    // Another user files documents (one write transaction each) until told to stop, ten at least.
    std::atomic_bool stop = false;
    std::vector<qint32> filed;
    const QString document = environment.writeFile(QStringLiteral("incoming/other.txt"), "x");
    std::thread other([&] {
        filed = fileAsAnotherUser(document, QStringLiteral("other"), QStringLiteral("alongside"),
                                  [&](int done) { return !stop || done < 10; });
    });

    // Both operations write row by row while the filer holds the write lock again and again.
    for (int round = 0; round < 3; ++round) {
        hitList.selection = marked;
        ui().answerMessage(MessageAnswer::Yes);
        EXPECT_TRUE(markForDeletion(hitList)) << ui().messageTexts().join('\n').toStdString();
        hitList.selection = relabelled;
        ui().answerFolder(target);
        EXPECT_TRUE(updateVolume(hitList)) << ui().messageTexts().join('\n').toStdString();
        execute(QStringLiteral("UPDATE ktitem SET deleted = 0 WHERE itemid < 20"));
        execute(QStringLiteral("UPDATE ktfile SET volume = 'VOL001' WHERE itemid < 20"));
    }
    hitList.selection = marked;
    ui().answerMessage(MessageAnswer::Yes);
    EXPECT_TRUE(markForDeletion(hitList));
    hitList.selection = relabelled;
    ui().answerFolder(target);
    EXPECT_TRUE(updateVolume(hitList));
    stop = true;
    other.join();

    EXPECT_EQ(std::count(filed.begin(), filed.end(), 0), 0) << "filings refused";
    EXPECT_GE(filed.size(), 10u);
    EXPECT_EQ(column("SELECT count(*) FROM keywords WHERE keyword = 'alongside'"),
              QStringList{QString::number(filed.size())});
    const auto lines = [](const QList<qint32>& ids) {
        QStringList texts;
        for (const qint32 id : ids)
            texts << QString::number(id);
        return texts;
    };
    EXPECT_EQ(column("SELECT itemid FROM ktitem WHERE deleted <> 0 AND itemid < 20 ORDER BY "
                     "itemid"),
              lines(marked));
    EXPECT_EQ(column("SELECT DISTINCT itemid FROM ktfile WHERE volume = 'SHARED' AND itemid < 20 "
                     "ORDER BY itemid"),
              lines(relabelled));
}

} // namespace
} // namespace vx::test
