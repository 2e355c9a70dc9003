#pragma once

#include "core/FormField.h"

#include <QDomDocument>
#include <QList>
#include <QString>

namespace vx::repo {

// A form-definition file as the tool reads, completes and writes it: a document element holding a
// groupdatalink element and a controls element with one control element per field.
class FormDocument {
public:
    // Throws vx::Error naming the file (and the line, when it is not well-formed).
    static FormDocument load(const QString& path);
    static FormDocument fromText(const QString& xml, const QString& name);
    // A new definition with one control per field, every element filled in (see complete()).
    static FormDocument fromFields(const QString& groupName, const QList<FormField>& fields);

    // The name used in messages: the file name it was loaded from.
    const QString& name() const { return m_name; }

    // The fields in document order; throws vx::Error when a control has an unknown type.
    QList<FormField> fields() const;

    // Gives every control every element the library and form renderers read, keeping the ones
    // already there: the library's reader takes a missing element's value from another control.
    void complete(const QString& groupName);

    QString groupDataLink() const;
    // Sets the groupdatalink child of the document element, adding it when missing.
    void setGroupDataLink(const QString& path);

    // The query form: numeric and date fields appear twice, as the lower and upper end of a range.
    FormDocument queryForm() const;

    QString toText() const;
    // Written whole or not at all.
    void save(const QString& path) const;

private:
    QDomDocument m_document;
    QString m_name;
};

} // namespace vx::repo
