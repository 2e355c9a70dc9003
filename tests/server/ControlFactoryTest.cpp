#include "data/Error.h"
#include "server/LateBinding.h"
#include "server/TypeLibrary.h"

#include <QWidget>
#include <gtest/gtest.h>

namespace {

// A small control with the shape of the library's controls: a write-only property, a read-only
// one, methods and an event, with its dispatch order given as class information.
class SampleControl : public QWidget {
    Q_OBJECT
    Q_CLASSINFO("ClassName", "VXUILib.SampleControl")
    Q_CLASSINFO("Interface", "Init;Count;Reset;AddItem;Missing")
    Q_CLASSINFO("Events", "Changed")
    Q_CLASSINFO("WriteOnly", "Init")
    Q_PROPERTY(QString Init READ init WRITE setInit)
    Q_PROPERTY(int Count READ count)

public:
    using QWidget::QWidget;
    QString init() const { return m_init; }
    void setInit(const QString& value) { m_init = value; }
    int count() const { return int(m_items.size()); }
    Q_INVOKABLE void Reset() { m_items.clear(); }
    Q_INVOKABLE bool AddItem(const QString& item) {
        m_items << item;
        emit Changed(m_items.size());
        return !item.isEmpty();
    }

signals:
    void Changed(qsizetype count);

private:
    QString m_init;
    QStringList m_items;
};

TEST(LateBinding, ReachesMembersByNameAndFailsOnMissingOnes) {
    SampleControl control;
    vx::writeMember(&control, "Init", QStringLiteral("/tmp/group.ini"));
    EXPECT_EQ(control.init(), "/tmp/group.ini");
    EXPECT_EQ(vx::callMember(&control, "AddItem", QStringLiteral("alpha")).toBool(), true);
    EXPECT_EQ(vx::callMember(&control, "AddItem", QString()).toBool(), false);
    EXPECT_EQ(vx::readMember(&control, "Count").toInt(), 2);
    vx::callMember(&control, "Reset");
    EXPECT_EQ(vx::readMember(&control, "Count").toInt(), 0);
    EXPECT_THROW(vx::readMember(&control, "Nothing"), vx::Error);
    EXPECT_THROW(vx::callMember(&control, "Nothing"), vx::Error);
}

TEST(TypeLibrary, ListsTheInterfaceInDispatchOrder) {
    const QString text = vx::typeLibraryText(SampleControl::staticMetaObject);
    const QStringList lines = text.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_GE(lines.size(), 9);
    EXPECT_EQ(lines[0], "SampleControl (VXUILib.SampleControl)");
    EXPECT_EQ(lines[2].trimmed(), "property QString Init [put]");
    EXPECT_EQ(lines[3].trimmed(), "property int Count [get]");
    EXPECT_EQ(lines[4].trimmed(), "method void Reset()");
    EXPECT_EQ(lines[5].trimmed(), "method bool AddItem(QString item)");
    EXPECT_EQ(lines[6].trimmed(), "missing Missing");
    EXPECT_EQ(lines[8].trimmed(), "event Changed(qsizetype count)");
}

} // namespace

#include "ControlFactoryTest.moc"
