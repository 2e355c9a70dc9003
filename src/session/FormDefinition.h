#pragma once

#include <QList>
#include <QString>
#include <VXUILib/vxuilib_export.h>
#include <memory>
#include <utility>

namespace vx {

// The one reader of the form-definition file at library().formDefinitionPath: the wantTag text of
// the control whose matchTag text equals matchValue (letter case ignored), or "Not Found". A file
// that cannot be read shows its error (title "GetControlValuesFromXML") and gives "".
QString GetControlValuesFromXML(const QString& matchTag, const QString& matchValue,
                                const QString& wantTag);

// Table and column names go into SQL as a form definition states them, so a definition someone
// else wrote may name only plain identifiers: ASCII letters, digits and "_", not starting with a
// digit, at most 128 characters.
VXUILIB_EXPORT bool isPlainIdentifier(const QString& name);

// Drops the parsed documents kept by GetControlValuesFromXML; called whenever a form-definition
// path is set, so an edited file is read again.
void clearFormDefinitionCache();

// One control element of a form definition (the "//controls/control" elements), its child
// elements' texts; a missing child gives an empty text.
struct VXUILIB_EXPORT FormControl {
    QString type;
    QString caption;
    QString columnName;
    QString tableName;
    QString allowUpdate;
    QString initTableName;
    QString initColumnName;
    QString literalPrefix;
    QString literalSuffix;
    QString hintListType;

    // Every child element as (tag, text), in document order.
    QList<std::pair<QString, QString>> elements;

    // A child element's text by its tag, letter case ignored; empty when missing.
    QString value(const QString& tag) const;
};

// A parsed form-definition file, walked control by control in document order.
class VXUILIB_EXPORT FormDefinition {
public:
    FormDefinition();
    ~FormDefinition();
    FormDefinition(FormDefinition&&) noexcept;
    FormDefinition& operator=(FormDefinition&&) noexcept;

    // Throws vx::Error with the parser's description when the file is missing or not well-formed.
    static FormDefinition load(const QString& path);
    static FormDefinition fromText(const QString& xml);

    const QList<FormControl>& controls() const;
    // The control whose columnname matches without regard to case, or null.
    const FormControl* controlForColumn(const QString& columnName) const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace vx
