#pragma once

#include "hitlist/ResultsGrid.h"
#include "hitlist/VXHitList.h"
#include "session/PromptText.h"
#include "support/FakeHitListContext.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QAction>
#include <QList>
#include <QToolBar>
#include <gtest/gtest.h>
#include <memory>

namespace vx::test {

// A hit list on a fresh sample, set up as a host does (identity, form, Init), with every
// CurrentItemID and SaveQuery event recorded.
class HitListTest : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    void SetUp() override;
    void TearDown() override;

    TestEnvironment environment;
    SampleRepository sample;
    std::unique_ptr<VXHitList> hitList;
    QList<qint32> raised;

    void query(const QString& criteria = QString());
    ResultsGrid* grid() const;
    QToolBar* toolbar() const;
    QAction* button(const char* key) const;
    // Clicks the toolbar button of `key` as a user would.
    void click(const char* key);
    // Makes `row` the grid's current (and only selected) row as a click would.
    void clickRow(int row);
    int rowOfItem(qint32 itemId) const;
    int columnOf(const QString& caption) const;
    // Item id shown in a row of the grid.
    qint32 itemAt(int row) const;
    // The column menu's item 0, 1 or 2 after a click on the header of `caption`.
    void chooseColumnMenu(const QString& caption, int item);
};

} // namespace vx::test
