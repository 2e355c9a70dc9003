#pragma once

#include <QRect>
#include <QString>
#include <QWidget>

class QFrame;
class QTabBar;

namespace vx {

// The hit list's tab strip ("TabStrip1"): tabs identified by key over a framed client area. The
// pages (record form and pickers) are the control's children placed on clientArea().
class HitListTabStrip : public QWidget {
    Q_OBJECT

public:
    explicit HitListTabStrip(QWidget* parent = nullptr);
    ~HitListTabStrip() override;

    void addTab(const QString& key, const QString& caption);
    bool hasTab(const QString& key) const;
    int count() const;
    QString caption(const QString& key) const;
    void setCaption(const QString& key, const QString& caption);
    QString selectedKey() const;
    void select(const QString& key);
    // The area inside the frame below the tabs, in the parent's coordinates.
    QRect clientArea() const;

signals:
    // A tab was clicked (also when it was already selected).
    void clicked();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    int indexOf(const QString& key) const;

    QTabBar* const m_tabs;
    QFrame* const m_frame;
};

} // namespace vx
