#include "server/ControlFactory.h"
#include "server/LateBinding.h"
#include "server/TypeLibrary.h"
#include "support/TestEnvironment.h"

#include <QListWidget>
#include <gtest/gtest.h>
#include <memory>

using namespace vx;

namespace {

struct PickerKind {
    const char* className;
    const char* pickedList;
};

void PrintTo(const PickerKind& kind, std::ostream* out) {
    *out << kind.className;
}

// Both pickers are reached the way their owners reach them: created by class name, driven only
// through their public members.
class PickerCursorTest : public ::testing::TestWithParam<PickerKind> {
protected:
    test::TestEnvironment environment;
    std::unique_ptr<QWidget> picker{ControlFactory::create(GetParam().className)};

    QListWidget* picked() const { return picker->findChild<QListWidget*>(GetParam().pickedList); }
    bool eof() const { return readMember(picker.get(), "EOF").toBool(); }
    QString current() const { return readMember(picker.get(), "CurrentListValue").toString(); }
    void add(const QString& item) { callMember(picker.get(), "AddListItem", item); }

    // How the owning controls read the picked list.
    QStringList walk() {
        QStringList seen;
        callMember(picker.get(), "MoveFirst");
        while (!eof() && seen.size() < 100) {
            seen << current();
            callMember(picker.get(), "MoveNext");
        }
        return seen;
    }
};

} // namespace

TEST_P(PickerCursorTest, WalkReadsEveryItemOnceAndLeavesTheLastSelected) {
    ASSERT_NE(picked(), nullptr);
    EXPECT_TRUE(eof());
    EXPECT_TRUE(walk().isEmpty()) << "an empty list is at EOF at once";
    EXPECT_EQ(current(), "");

    add("A");
    EXPECT_FALSE(eof());
    add("B");
    add("C");
    EXPECT_EQ(walk(), QStringList({"A", "B", "C"}));
    EXPECT_TRUE(eof());
    EXPECT_EQ(current(), "C");
    EXPECT_EQ(picked()->currentRow(), 2);
    EXPECT_TRUE(picked()->item(2)->isSelected());
}

TEST_P(PickerCursorTest, OnlyMoveFirstAndAddingClearEof) {
    add("A");
    add("A");
    EXPECT_EQ(walk(), QStringList({"A", "A"})) << "duplicates are added as given";

    // The user moves the selection back: MoveNext follows it but stays at EOF.
    picked()->setCurrentRow(0);
    callMember(picker.get(), "MoveNext");
    EXPECT_EQ(picked()->currentRow(), 1);
    EXPECT_TRUE(eof());

    callMember(picker.get(), "ClearContents");
    EXPECT_EQ(picked()->count(), 0);
    EXPECT_TRUE(eof());
    add("B");
    callMember(picker.get(), "ClearContents");
    EXPECT_FALSE(eof()) << "clearing leaves EOF as it was";
    callMember(picker.get(), "MoveFirst");
    EXPECT_TRUE(eof());
    EXPECT_EQ(current(), "A") << "an empty list leaves the last value read";
}

TEST_P(PickerCursorTest, TypeLibraryListsTheInterfaceInOrder) {
    const QStringList lines =
        typeLibraryText(*ControlFactory::metaObjectOf(GetParam().className)).split(u'\n');
    ASSERT_GE(lines.size(), 11);
    EXPECT_TRUE(lines[0].endsWith(QStringLiteral("(%1)").arg(GetParam().className)));
    QStringList members;
    for (int i = 2; i < 10; ++i)
        members << lines[i].trimmed();
    EXPECT_EQ(members.join(u'|'),
              "property QString Init [put]|method void Done()|property bool EOF [get]|"
              "property QString CurrentListValue [get]|method void MoveFirst()|"
              "method void MoveNext()|method void ClearContents()|"
              "method void AddListItem(QString sItem)");
}

INSTANTIATE_TEST_SUITE_P(
    Pickers, PickerCursorTest,
    ::testing::Values(PickerKind{"VXUILib.VXKeywords", "Keywords"},
                      PickerKind{"VXUILib.VXDocSec", "lstAscUsers"}),
    [](const auto& info) {
        return QString::fromLatin1(info.param.className).section(u'.', 1).toStdString();
    });
