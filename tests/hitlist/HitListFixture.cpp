#include "HitListFixture.h"

#include "companions/DefaultCompanions.h"
#include "data/model/RecordsetModel.h"
#include "server/ControlFactory.h"

#include <QHeaderView>
#include <QMenu>
#include <QTest>
#include <QToolButton>

namespace vx::test {

void HitListTest::SetUpTestSuite() {
    registerDefaultCompanions();
    registerLibraryControls();
}

void HitListTest::SetUp() {
    hitList = std::make_unique<VXHitList>();
    hitList->resize(900, 600);
    hitList->show();
    QObject::connect(hitList.get(), &VXHitList::CurrentItemID, hitList.get(),
                     [this](qint32& id) { raised << id; });
    hitList->setGroupName(SampleRepository::GroupName);
    hitList->setGroupID(sample.groupId());
    hitList->setUserName(QStringLiteral("admin"));
    hitList->setUserPermission(0xFF);
    hitList->setGroupInitString(sample.formDefinitionPath());
    hitList->setInit(sample.initFilePath());
    ASSERT_TRUE(environment.ui().prompts().isEmpty())
        << environment.ui().prompts().first().text.toStdString();
}

void HitListTest::TearDown() {
    if (hitList)
        hitList->Done();
    hitList.reset();
}

void HitListTest::query(const QString& criteria) {
    hitList->setDoQuery(sampleResultQuery(criteria));
}

ResultsGrid* HitListTest::grid() const {
    return hitList->findChild<ResultsGrid*>(QStringLiteral("HitList"));
}

QToolBar* HitListTest::toolbar() const {
    return hitList->findChild<QToolBar*>(QStringLiteral("tbToolbar1"));
}

QAction* HitListTest::button(const char* key) const {
    return toolbar()->findChild<QAction*>(QString::fromLatin1(key));
}

void HitListTest::click(const char* key) {
    QWidget* widget = toolbar()->widgetForAction(button(key));
    ASSERT_NE(widget, nullptr) << key;
    QTest::mouseClick(widget, Qt::LeftButton);
}

void HitListTest::clickRow(int row) {
    ResultsGrid* view = grid();
    view->scrollTo(view->model()->index(row, 0));
    const QRect cell = view->visualRect(view->model()->index(row, 0));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, cell.center());
}

int HitListTest::rowOfItem(qint32 itemId) const {
    for (int row = 0; row < grid()->model()->rowCount(); ++row)
        if (itemAt(row) == itemId)
            return row;
    return -1;
}

int HitListTest::columnOf(const QString& caption) const {
    for (int column = 0; column < grid()->model()->columnCount(); ++column)
        if (grid()->model()->headerData(column, Qt::Horizontal).toString() == caption)
            return column;
    return -1;
}

qint32 HitListTest::itemAt(int row) const {
    const int column = columnOf(QStringLiteral("itemid"));
    return grid()->model()->index(row, column).data(Qt::EditRole).toInt();
}

void HitListTest::chooseColumnMenu(const QString& caption, int item) {
    const int column = columnOf(caption);
    ASSERT_GE(column, 0) << caption.toStdString();
    emit grid()->horizontalHeader()->sectionClicked(column);
    auto* menu = hitList->findChild<QMenu*>(QStringLiteral("mnuOption"));
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(menu->isVisible()) << "the column menu pops up";
    menu->hide();
    menu->actions().at(item)->trigger();
}

} // namespace vx::test
