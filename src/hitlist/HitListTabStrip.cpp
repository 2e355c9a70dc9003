#include "hitlist/HitListTabStrip.h"

#include <QFrame>
#include <QTabBar>

namespace vx {

HitListTabStrip::HitListTabStrip(QWidget* parent)
    : QWidget(parent)
    , m_tabs(new QTabBar(this))
    , m_frame(new QFrame(this)) {
    setObjectName(QStringLiteral("TabStrip1"));
    m_tabs->setExpanding(false);
    m_tabs->setDrawBase(false);
    m_frame->setFrameShape(QFrame::StyledPanel);
    m_frame->lower();
    connect(m_tabs, &QTabBar::tabBarClicked, this, [this](int index) {
        if (index >= 0 && index != m_tabs->currentIndex())
            m_tabs->setCurrentIndex(index);
        emit clicked();
    });
}

HitListTabStrip::~HitListTabStrip() = default;

void HitListTabStrip::addTab(const QString& key, const QString& caption) {
    const int index = m_tabs->addTab(caption);
    m_tabs->setTabData(index, key);
    m_tabs->resize(m_tabs->sizeHint());
}

bool HitListTabStrip::hasTab(const QString& key) const {
    return indexOf(key) >= 0;
}

int HitListTabStrip::count() const {
    return m_tabs->count();
}

QString HitListTabStrip::caption(const QString& key) const {
    const int index = indexOf(key);
    return index < 0 ? QString() : m_tabs->tabText(index);
}

void HitListTabStrip::setCaption(const QString& key, const QString& caption) {
    const int index = indexOf(key);
    if (index < 0)
        return;
    m_tabs->setTabText(index, caption);
    m_tabs->resize(m_tabs->sizeHint());
}

QString HitListTabStrip::selectedKey() const {
    return m_tabs->tabData(m_tabs->currentIndex()).toString();
}

void HitListTabStrip::select(const QString& key) {
    const int index = indexOf(key);
    if (index >= 0)
        m_tabs->setCurrentIndex(index);
}

QRect HitListTabStrip::clientArea() const {
    const int top = m_tabs->sizeHint().height();
    const QRect inner = QRect(0, top, width(), qMax(0, height() - top)).adjusted(2, 2, -2, -2);
    return inner.translated(pos());
}

void HitListTabStrip::resizeEvent(QResizeEvent*) {
    const int top = m_tabs->sizeHint().height();
    m_tabs->setGeometry(0, 0, qMin(width(), m_tabs->sizeHint().width()), top);
    m_frame->setGeometry(0, top - 1, width(), qMax(0, height() - top + 1));
}

int HitListTabStrip::indexOf(const QString& key) const {
    for (int index = 0; index < m_tabs->count(); ++index)
        if (m_tabs->tabData(index).toString() == key)
            return index;
    return -1;
}

} // namespace vx
