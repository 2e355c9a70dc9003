#pragma once

#include "companions/form/FieldEditor.h"

#include <QDate>
#include <optional>

class QCalendarWidget;
class QLineEdit;
class QMenu;
class QToolButton;

namespace vx::form {

// A date, typed in the user's short date format (four-digit year) or picked from a calendar;
// empty allowed.
class DateFieldEditor : public FieldEditor {
    Q_OBJECT

public:
    explicit DateFieldEditor(QWidget* parent = nullptr);

    // A QDate; the typed text when it is not a date (problem() then says why); invalid when empty.
    QVariant value() const override;
    void setValue(const QVariant& value) override;
    void clear() override;
    QString problem() const override;

    // The format dates are shown in.
    static QString displayFormat();

private:
    std::optional<QDate> typedDate() const;
    void showCalendar();

    QLineEdit* m_edit;
    QToolButton* m_pick;
    QMenu* m_popup;
    QCalendarWidget* m_calendar;
};

} // namespace vx::form
