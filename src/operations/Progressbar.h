#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QPointer>
#include <QtGlobal>

class QLabel;
class QProgressBar;

namespace vx {

// The small wait window long operations show while they walk the selected documents. It has no
// logic of its own: callers set its range and position. One instance is kept per owner window
// and reused.
class Progressbar : public QDialog {
    Q_OBJECT
public:
    // The instance for `owner`'s window, created on first use.
    static Progressbar& instance(QWidget* owner);
    // The instance last handed out, or null (tests look at it).
    static Progressbar* current();

    // Range and position are 16-bit, as the form has always taken them.
    void setMinimum(qint16 value);
    void setMaximum(qint16 value);
    void setValue(qint16 value);
    qint16 minimum() const;
    qint16 maximum() const;
    qint16 value() const;

    // Shows the form and draws it (and the windows under it) before the caller's work goes on
    // without returning to the event loop.
    void showNow();
    // How often the form or its bar was drawn (the tests look at it).
    int paintCount() const { return m_paints; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit Progressbar(QWidget* owner);

    QProgressBar* m_bar = nullptr;
    QLabel* m_label = nullptr;
    QElapsedTimer m_sinceRepaint;
    qint16 m_value = 0; // the value last set; the bar may show an earlier one for a moment
    int m_paints = 0;
};

// The callers' pattern in one object: minimum 0, maximum the number of steps, value 0, shown
// without blocking; closed when the scope ends, on every path out of the operation.
class ProgressScope {
public:
    ProgressScope(QWidget* owner, qsizetype steps, const QString& caption = QString());
    ~ProgressScope();
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;

    // The 1-based position of the item reached. More steps than the form's 16-bit range are
    // scaled into it, so the bar keeps moving through a large selection.
    void setValue(qsizetype position);
    void close();

private:
    QPointer<Progressbar> m_form;
    qsizetype m_steps = 0;
};

} // namespace vx
