#pragma once

#include <QRect>
#include <QString>
#include <QWidget>

class QFrame;
class QTabBar;

namespace vx {

// A control's tab strip ("TabStrip1" of the query control and the hit list): tabs identified by
// key with a framed client area below them. The pages are not its children: the owner places
// them on clientArea() and shows one.
class KeyedTabStrip : public QWidget {
    Q_OBJECT

public:
    explicit KeyedTabStrip(QWidget* parent = nullptr);
    ~KeyedTabStrip() override;

    void addTab(const QString& key, const QString& caption);
    bool hasTab(const QString& key) const;
    int count() const;
    QString caption(const QString& key) const;
    void setCaption(const QString& key, const QString& caption);
    QString selectedKey() const;
    void select(const QString& key);

    // The area inside the frame below the tabs, in the parent's coordinates.
    QRect clientArea() const;

    QSize sizeHint() const override;

signals:
    // A tab was clicked (also when it was already selected).
    void clicked();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    int indexOf(const QString& key) const;
    QRect frameArea() const;

    QTabBar* const m_tabs; // child, owned by Qt
    QFrame* const m_frame; // child, owned by Qt
};

} // namespace vx
