#include "operations/Progressbar.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QFrame>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QThread>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <limits>

namespace vx {

namespace {

thread_local QPointer<Progressbar> lastInstance;

qint16 clamp16(qsizetype value) {
    return qint16(std::clamp<qsizetype>(value, std::numeric_limits<qint16>::min(),
                                        std::numeric_limits<qint16>::max()));
}

} // namespace

Progressbar::Progressbar(QWidget* owner)
    : QDialog(owner, Qt::Dialog | Qt::WindowTitleHint | Qt::CustomizeWindowHint) {
    setObjectName(QStringLiteral("Progressbar"));
    setWindowTitle(QStringLiteral("Please Wait..."));
    setModal(false);

    auto* shape = new QFrame(this);
    shape->setObjectName(QStringLiteral("Shape1"));
    shape->setFrameShape(QFrame::Box);
    shape->setFrameShadow(QFrame::Sunken);

    m_label = new QLabel(QStringLiteral("Please Wait..."), shape);
    m_label->setObjectName(QStringLiteral("Label1"));
    m_label->setAlignment(Qt::AlignCenter);

    m_bar = new QProgressBar(shape);
    m_bar->setObjectName(QStringLiteral("ProgressBar1"));
    m_bar->setRange(0, 0);
    m_bar->setTextVisible(false);
    m_bar->setMinimumWidth(280);

    auto* inner = new QVBoxLayout(shape);
    inner->addWidget(m_label);
    inner->addWidget(m_bar);
    auto* outer = new QVBoxLayout(this);
    outer->addWidget(shape);
    setFixedSize(sizeHint());
    installEventFilter(this);
    m_bar->installEventFilter(this);
}

bool Progressbar::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Paint)
        ++m_paints;
    return QDialog::eventFilter(watched, event);
}

void Progressbar::showNow() {
    show();
    raise();
    // The work that follows never returns to the event loop: let the window system map this form
    // and take away dialogs just closed, then draw. Input stays queued, so nothing of the user's
    // runs in between; the wait for the window to appear is short and bounded.
    QElapsedTimer waited;
    waited.start();
    for (;;) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        const QWindow* handle = windowHandle();
        if ((handle && handle->isExposed()) || waited.elapsed() > 250)
            break;
        QThread::msleep(5);
    }
    repaint();
    m_sinceRepaint.start();
}

Progressbar& Progressbar::instance(QWidget* owner) {
    QWidget* window = owner ? owner->window() : nullptr;
    if (!lastInstance || lastInstance->parentWidget() != window)
        lastInstance = new Progressbar(window); // owned by the window (or deleted on close)
    if (!window)
        lastInstance->setAttribute(Qt::WA_DeleteOnClose);
    return *lastInstance;
}

Progressbar* Progressbar::current() {
    return lastInstance.data();
}

void Progressbar::setMinimum(qint16 value) {
    m_bar->setMinimum(value);
}

void Progressbar::setMaximum(qint16 value) {
    m_bar->setMaximum(value);
}

void Progressbar::setValue(qint16 value) {
    const int clamped = std::clamp<int>(value, m_bar->minimum(), m_bar->maximum());
    m_value = qint16(clamped);
    // Long work sets a value per item without returning to the event loop, and the bar paints
    // itself at once: show the value now, but not more often than the eye can follow (a repaint
    // per item cost more than many items). The first step and the last are always shown.
    constexpr qint64 repaintInterval = 40;
    const bool atAnEnd = clamped <= m_bar->minimum() + 1 || clamped == m_bar->maximum();
    if (clamped == m_bar->value() ||
        (!atAnEnd && m_sinceRepaint.isValid() && m_sinceRepaint.elapsed() < repaintInterval))
        return;
    m_bar->setValue(clamped);
    if (isVisible())
        m_bar->repaint();
    m_sinceRepaint.start();
}

qint16 Progressbar::minimum() const {
    return qint16(m_bar->minimum());
}

qint16 Progressbar::maximum() const {
    return qint16(m_bar->maximum());
}

qint16 Progressbar::value() const {
    return m_value;
}

ProgressScope::ProgressScope(QWidget* owner, qsizetype steps, const QString& caption)
    : m_form(&Progressbar::instance(owner))
    , m_steps(steps) {
    m_form->setWindowTitle(caption.isEmpty() ? QStringLiteral("Please Wait...") : caption);
    m_form->setMinimum(0);
    m_form->setMaximum(clamp16(steps));
    m_form->setValue(0);
    m_form->showNow();
}

ProgressScope::~ProgressScope() {
    close();
}

void ProgressScope::setValue(qsizetype position) {
    if (!m_form)
        return;
    constexpr qsizetype Range = std::numeric_limits<qint16>::max();
    if (m_steps > Range)
        position = qsizetype(double(position) * double(Range) / double(m_steps));
    m_form->setValue(clamp16(position));
}

void ProgressScope::close() {
    if (m_form)
        m_form->hide();
    m_form = nullptr;
}

} // namespace vx
