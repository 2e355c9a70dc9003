#pragma once

#include <QString>
#include <VXUILib/vxuilib_export.h>

namespace vx {

// Names of the repository's fixed tables. The engine matches them without regard to case.
namespace table {
inline const QString Item = QStringLiteral("KTItem");
inline const QString File = QStringLiteral("KTFile");
inline const QString Group = QStringLiteral("KTGroup");
inline const QString Users = QStringLiteral("KTUsers");
inline const QString Path = QStringLiteral("KTPath");
inline const QString Revision = QStringLiteral("KTRevision");
inline const QString Security = QStringLiteral("KTSecurity");
inline const QString Keywords = QStringLiteral("keywords");
inline const QString Dictionary = QStringLiteral("dictionary");
// The last ids handed out for new items and files (see IdCounter).
inline const QString Counter = QStringLiteral("KTCounter");
} // namespace table

// The seven kinds of index field a group's form can hold.
enum class FieldType { Memo, Edit, Numeric, Check, Combo, List, Date, Unknown };

// "MemoField", "EditField" ...; an empty text for Unknown.
QString fieldTypeName(FieldType type);
// Exact, case-sensitive: "memofield" or "Not Found" give Unknown.
VXUILIB_EXPORT FieldType fieldTypeFromName(const QString& name);

// The pick-list table of a field: group + column + "Hints", without separators.
VXUILIB_EXPORT QString hintTableName(const QString& group, const QString& column);

} // namespace vx
