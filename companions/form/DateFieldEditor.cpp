#include "companions/form/DateFieldEditor.h"

#include "session/Conversions.h"

#include <QCalendarWidget>
#include <QDateTime>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QToolButton>
#include <QWidgetAction>

namespace vx::form {

DateFieldEditor::DateFieldEditor(QWidget* parent)
    : FieldEditor(parent)
    , m_edit(new QLineEdit(this))
    , m_pick(new QToolButton(this))
    , m_popup(new QMenu(this))
    , m_calendar(new QCalendarWidget(m_popup)) {
    m_edit->setObjectName(QStringLiteral("date"));
    m_edit->setPlaceholderText(displayFormat());
    m_pick->setObjectName(QStringLiteral("pick"));
    m_pick->setText(QStringLiteral("..."));
    m_pick->setToolTip(tr("Pick a date from the calendar"));
    m_calendar->setObjectName(QStringLiteral("calendar"));
    m_calendar->setGridVisible(true);
    auto* action = new QWidgetAction(m_popup);
    action->setDefaultWidget(m_calendar);
    m_popup->addAction(action);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(m_edit, 1);
    layout->addWidget(m_pick);
    setFocusProxy(m_edit);

    connect(m_edit, &QLineEdit::textChanged, this, &FieldEditor::edited);
    connect(m_pick, &QToolButton::clicked, this, &DateFieldEditor::showCalendar);
    connect(m_calendar, &QCalendarWidget::activated, this, [this](QDate date) {
        setValue(date);
        m_popup->close();
    });
    connect(m_calendar, &QCalendarWidget::clicked, this, [this](QDate date) {
        setValue(date);
        m_popup->close();
    });
}

QString DateFieldEditor::displayFormat() {
    QString format = QLocale().dateFormat(QLocale::ShortFormat);
    // Two-digit years are ambiguous in a repository that spans decades.
    if (!format.contains(QStringLiteral("yyyy")))
        format.replace(QStringLiteral("yy"), QStringLiteral("yyyy"));
    return format;
}

std::optional<QDate> DateFieldEditor::typedDate() const {
    const QString text = m_edit->text().trimmed();
    const QDate shown = QLocale().toDate(text, displayFormat());
    if (shown.isValid())
        return shown;
    try {
        const QDateTime parsed = textToDate(text);
        if (parsed.isValid())
            return parsed.date();
    } catch (const std::exception&) {
    }
    return std::nullopt;
}

QVariant DateFieldEditor::value() const {
    const QString text = m_edit->text().trimmed();
    if (text.isEmpty())
        return {};
    if (const auto date = typedDate())
        return *date;
    return text;
}

void DateFieldEditor::setValue(const QVariant& value) {
    if (value.isNull() || value.toString().trimmed().isEmpty()) {
        m_edit->clear();
        return;
    }
    QDate date;
    if (value.typeId() == QMetaType::QDate)
        date = value.toDate();
    else if (value.typeId() == QMetaType::QDateTime)
        date = value.toDateTime().date();
    else
        date = textToDate(value.toString()).date(); // throws type mismatch
    m_edit->setText(QLocale().toString(date, displayFormat()));
}

void DateFieldEditor::clear() {
    m_edit->clear();
}

QString DateFieldEditor::problem() const {
    if (m_edit->text().trimmed().isEmpty() || typedDate())
        return {};
    return tr("\"%1\" is not a date; enter it as %2.")
        .arg(m_edit->text().trimmed(), displayFormat());
}

void DateFieldEditor::showCalendar() {
    const auto date = typedDate();
    m_calendar->setSelectedDate(date.value_or(QDate::currentDate()));
    m_popup->popup(m_edit->mapToGlobal(QPoint(0, m_edit->height())));
}

} // namespace vx::form
