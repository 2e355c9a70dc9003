#include "FileOpsFixture.h"
#include "companions/ItemList.h"
#include "companions/ScanIndex.h"
#include "operations/DocumentOperations.h"
#include "operations/VolumeLabelReader.h"
#include "portable/QueryRows.h"
#include "session/UiServices.h"

#include <atomic>
#include <thread>

namespace vx::test {
namespace {

// Writes of different kinds by users working at the same moment, each on a connection of its
// own: none waits forever, none fails for the other's lock, nothing is lost.
class ConcurrentWritersTest : public FileOpsFixture {
protected:
    // Another user filing documents (one write transaction each) until told to stop, at least
    // `atLeast` of them; returns how many were filed and refused.
    struct Filed {
        int filed = 0;
        int refused = 0;
    };
    Filed fileUntil(const std::atomic_bool& stop, int atLeast) {
        std::unique_ptr<UiServices> previous =
            installUiServices(std::make_unique<ScriptedUiServices>());
        Filed result;
        ScanIndex api;
        QString library = QStringLiteral("Main");
        QString group = QStringLiteral("Invoices");
        api.Init(library);
        if (api.SelectGroup(group)) {
            const QString path = environment.writeFile(QStringLiteral("incoming/other.txt"), "x");
            QString user = QStringLiteral("other");
            while (!stop || result.filed + result.refused < atLeast) {
                auto keywords = std::make_shared<ItemList>();
                QString keyword = QStringLiteral("alongside");
                keywords->AddItem(keyword);
                api.setKeywordsList(keywords);
                QString document = path;
                if (api.DocumentIndex(document, nullptr, user) != 0)
                    ++result.filed;
                else
                    ++result.refused;
            }
        } else {
            ADD_FAILURE() << api.lastError().toStdString();
        }
        installUiServices(std::move(previous));
        return result;
    }

    QStringList column(const QString& sql) { return rowsOf(hitList.connection(), sql); }
};

TEST_F(ConcurrentWritersTest, MarkingDeletedAndVolumeUpdateCompleteWhileAnotherUserFiles) {
    VolumeLabelOverride label([](const QString&) { return QStringLiteral("SHARED"); });
    const QString target = makeFolder(QStringLiteral("target"));
    const QList<qint32> marked{2, 3, 5, 7, 11, 13, 17, 19};
    const QList<qint32> relabelled{4, 6, 8, 10, 12, 14, 16, 18};

    std::atomic_bool stop = false;
    Filed filed;
    std::thread other([&] { filed = fileUntil(stop, 10); });

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

    EXPECT_EQ(filed.refused, 0);
    EXPECT_GE(filed.filed, 10);
    EXPECT_EQ(column("SELECT count(*) FROM keywords WHERE keyword = 'alongside'"),
              QStringList{QString::number(filed.filed)});
    QStringList expectedMarked;
    for (const qint32 id : marked)
        expectedMarked << QString::number(id);
    EXPECT_EQ(column("SELECT itemid FROM ktitem WHERE deleted <> 0 AND itemid < 20 ORDER BY "
                     "itemid"),
              expectedMarked);
    QStringList expectedRelabelled;
    for (const qint32 id : relabelled)
        expectedRelabelled << QString::number(id);
    EXPECT_EQ(column("SELECT DISTINCT itemid FROM ktfile WHERE volume = 'SHARED' AND itemid < 20 "
                     "ORDER BY itemid"),
              expectedRelabelled);
}

} // namespace
} // namespace vx::test
