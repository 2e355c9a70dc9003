#pragma once

#include <QStringList>
#include <QVariant>
#include <QWidget>

namespace vx::form {

struct FieldDescription;

// The editor of one form field: a widget that wraps the inputs its kind of field needs and
// offers the form one way to read, write and check them.
class FieldEditor : public QWidget {
    Q_OBJECT

public:
    explicit FieldEditor(QWidget* parent = nullptr);
    ~FieldEditor() override;

    // The entered value; an invalid QVariant when the field is unset.
    virtual QVariant value() const = 0;
    // Shows a value; an invalid or null QVariant (or an empty text) unsets the field. Throws
    // vx::Error (type mismatch) for a value the field cannot hold.
    virtual void setValue(const QVariant& value) = 0;
    virtual void clear() = 0;
    // Why the entry does not pass the field's own checks; empty when it does.
    virtual QString problem() const { return {}; }

    // List fields hold several entries; other fields have none.
    virtual QStringList entries() const { return {}; }
    virtual void clearEntries() {}
    virtual void addEntry(const QString& text) { Q_UNUSED(text) }

    // Pick-list suggestions (combo fields).
    virtual void setSuggestions(const QStringList& suggestions) { Q_UNUSED(suggestions) }

signals:
    // The user or the program changed the entry.
    void edited();
};

// A new editor for the field's type, a child of `parent`; an unknown type gets a single-line
// text editor.
FieldEditor* createFieldEditor(const FieldDescription& field, QWidget* parent);

} // namespace vx::form
