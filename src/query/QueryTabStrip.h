#pragma once

#include <QRect>
#include <QString>
#include <QWidget>

class QFrame;
class QTabBar;

namespace vx::query {

// The query control's tab strip: tabs identified by key with a framed client area below them.
// The pages are not its children: the owner places them on clientArea() and shows one.
class QueryTabStrip : public QWidget {
    Q_OBJECT

public:
    explicit QueryTabStrip(QWidget* parent = nullptr);
    ~QueryTabStrip() override;

    void addTab(const QString& key, const QString& caption);
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

} // namespace vx::query
