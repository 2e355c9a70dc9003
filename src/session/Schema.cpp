#include "session/Schema.h"

#include <array>
#include <utility>

namespace vx {
namespace {
const std::array<std::pair<FieldType, const char*>, 7> typeNames{{
    {FieldType::Memo, "MemoField"},
    {FieldType::Edit, "EditField"},
    {FieldType::Numeric, "NumericField"},
    {FieldType::Check, "CheckField"},
    {FieldType::Combo, "ComboField"},
    {FieldType::List, "ListField"},
    {FieldType::Date, "DateField"},
}};
} // namespace

QString fieldTypeName(FieldType type) {
    for (const auto& [candidate, name] : typeNames) {
        if (candidate == type)
            return QString::fromLatin1(name);
    }
    return {};
}

FieldType fieldTypeFromName(const QString& name) {
    for (const auto& [type, candidate] : typeNames) {
        if (name == QLatin1StringView(candidate))
            return type;
    }
    return FieldType::Unknown;
}

QString hintTableName(const QString& group, const QString& column) {
    return group + column + QStringLiteral("Hints");
}

} // namespace vx
