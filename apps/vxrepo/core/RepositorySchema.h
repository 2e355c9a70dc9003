#pragma once

#include "core/FormField.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace vx::repo {

// The statements that make the fixed tables of an empty repository, in the controls' SQL (Jet
// type names, brackets); each engine's dialect step takes them from there.
QStringList fixedTableStatements();

// The fixed tables by name, in creation order.
QStringList fixedTableNames();

// The group table: itemid as key, then one column per field in form order.
QStringList groupTableStatements(const QString& groupName, const QList<FormField>& fields);

// A field's pick-list table: one column named like the field.
QString hintTableStatement(const QString& groupName, const FormField& field);

// A text literal for statements the tool builds itself: apostrophes doubled.
QString sqlText(const QString& value);

} // namespace vx::repo
