#include "IndexFixture.h"
#include "companions/DefaultCompanions.h"
#include "server/LateBinding.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QTest>

using namespace vx;
using namespace vx::test;

namespace {

// The four pages on the sample repository with the real form, saved for looking at by eye.
class IndexScreenshotTest : public IndexFixture {
protected:
    static int defaultsFirst() {
        registerDefaultCompanions();
        return 0;
    }
    IndexScreenshotTest()
        : IndexFixture(defaultsFirst()) {}
};

TEST_F(IndexScreenshotTest, RendersEachPage) {
    startUp(1);
    index->resize(720, 480);
    index->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(index.get()));
    callMember(child("kss2"), "AddListItem", QStringLiteral("urgent"));
    const QString folder = QCoreApplication::applicationDirPath() + "/screenshots";
    ASSERT_TRUE(QDir().mkpath(folder));
    const char* names[] = {"group", "keywords", "dictionary", "hints"};
    for (int tab = 0; tab < 4; ++tab) {
        QTest::mouseClick(tabs(), Qt::LeftButton, {}, tabs()->tabRect(tab).center());
        if (tab == 3)
            index->findChild<QComboBox*>("cbFields")->setCurrentIndex(0);
        QTest::qWait(20);
        const QImage image = index->grab().toImage();
        EXPECT_EQ(image.size(), QSize(720, 480));
        EXPECT_TRUE(image.save(folder + "/index-" + names[tab] + ".png"));
    }
    EXPECT_TRUE(environment.ui().prompts().isEmpty());
}

} // namespace
