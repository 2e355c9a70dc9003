#pragma once

#include "companions/form/FormDescription.h"

#include <QList>
#include <QStringList>
#include <QVariant>

namespace vx::form {

// One field of a filled form, as the search sees it.
struct FilledField {
    FieldDescription description;
    QVariant value;      // the editor's value; invalid when unset
    QStringList entries; // list fields
};

// Builds the search over a group from a filled form:
//   SELECT DISTINCT ktitem.itemid AS itemid, ktitem.idx_date AS IndexDate,
//          <group>.<column> AS [<caption>], ... FROM ktitem, <group>
//   WHERE ktitem.itemid = <group>.itemid AND ktitem.deleted = 0 AND <criteria>
//   ORDER BY ktitem.itemid
// Every field is a result column named by its caption; two consecutive numeric or date fields
// of one column are a from/to range and one column. Text matches ignore letter case and take
// * and ? as wildcards; list fields match when any entry matches one of the stored entries.
// Returns an empty text when no field holds a criterion. Throws vx::Error naming the field when
// a number or date entry is not one.
QString buildQueryText(const QString& groupTable, const QList<FilledField>& fields);

} // namespace vx::form
