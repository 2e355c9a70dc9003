#pragma once

#include "session/Schema.h"

#include <QList>
#include <QString>

namespace vx::form {

// One field of a form as the renderer needs it.
struct FieldDescription {
    QString caption;
    QString columnName;
    QString tableName; // the group table the column belongs to
    FieldType type = FieldType::Unknown;
    bool allowUpdate = false;
    bool required = false;
    int width = 0;  // editor width in pixels; 0 takes the type's default
    int length = 0; // most characters a text column holds; 0 when unlimited
    // Where a pick list comes from: a hint table, or the group table itself (its distinct
    // values); empty when the definition does not say.
    QString initTableName;
    QString initColumnName;
};

// What a form-definition file says about a whole form.
struct FormDescription {
    QList<FieldDescription> fields; // form order
    // The data-link file named by the groupdatalink element, made absolute against the
    // definition's folder; empty when the definition names none.
    QString dataLinkPath;
    // The group table: the first field's table, else the definition's base name.
    QString groupTable;

    // Throws vx::Error naming the file when it cannot be read or is not well-formed.
    static FormDescription load(const QString& path);
    static FormDescription fromText(const QString& xml, const QString& path);
};

} // namespace vx::form
