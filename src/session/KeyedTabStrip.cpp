#include "session/KeyedTabStrip.h"

#include <QFrame>
#include <QTabBar>

namespace vx {

namespace {
constexpr int ClientMargin = 4;
}

KeyedTabStrip::KeyedTabStrip(QWidget* parent)
    : QWidget(parent)
    , m_tabs(new QTabBar(this))
    , m_frame(new QFrame(this)) {
    m_tabs->setObjectName(QStringLiteral("tabs"));
    m_tabs->setExpanding(false);
    m_tabs->setDrawBase(false);
    m_frame->setFrameShape(QFrame::StyledPanel);
    m_frame->lower();
    connect(m_tabs, &QTabBar::tabBarClicked, this, [this](int index) {
        if (index < 0)
            return;
        m_tabs->setCurrentIndex(index);
        emit clicked();
    });
}

KeyedTabStrip::~KeyedTabStrip() = default;

void KeyedTabStrip::addTab(const QString& key, const QString& caption) {
    const int index = m_tabs->addTab(caption);
    m_tabs->setTabData(index, key);
}

bool KeyedTabStrip::hasTab(const QString& key) const {
    return indexOf(key) >= 0;
}

int KeyedTabStrip::count() const {
    return m_tabs->count();
}

int KeyedTabStrip::indexOf(const QString& key) const {
    for (int i = 0; i < m_tabs->count(); ++i) {
        if (m_tabs->tabData(i).toString() == key)
            return i;
    }
    return -1;
}

QString KeyedTabStrip::caption(const QString& key) const {
    const int index = indexOf(key);
    return index < 0 ? QString() : m_tabs->tabText(index);
}

void KeyedTabStrip::setCaption(const QString& key, const QString& caption) {
    const int index = indexOf(key);
    if (index >= 0)
        m_tabs->setTabText(index, caption);
}

QString KeyedTabStrip::selectedKey() const {
    return m_tabs->tabData(m_tabs->currentIndex()).toString();
}

void KeyedTabStrip::select(const QString& key) {
    const int index = indexOf(key);
    if (index >= 0)
        m_tabs->setCurrentIndex(index);
}

QRect KeyedTabStrip::frameArea() const {
    // The frame tucks under the tabs' lower edge so the selected tab joins it.
    const int barHeight = m_tabs->sizeHint().height();
    return {0, barHeight - 1, width(), qMax(0, height() - barHeight + 1)};
}

QRect KeyedTabStrip::clientArea() const {
    // Worked out from the size rather than the frame's geometry: a hidden strip gets its resize
    // event only when shown, and the owner places the pages before that.
    const QRect inside =
        frameArea().adjusted(ClientMargin, ClientMargin, -ClientMargin, -ClientMargin);
    return inside.translated(pos());
}

QSize KeyedTabStrip::sizeHint() const {
    const QSize bar = m_tabs->sizeHint();
    return {qMax(bar.width(), 320), bar.height() + 240};
}

void KeyedTabStrip::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_tabs->setGeometry(0, 0, width(), m_tabs->sizeHint().height());
    m_frame->setGeometry(frameArea());
}

} // namespace vx
