#pragma once

#include <QByteArray>
#include <QVariant>
#include <optional>

namespace vx::postgres {

struct CatalogColumn;

// A value as the text the server reads for `column` (which may be null when unknown); an
// empty optional is SQL null. Booleans go in as -1/0 for Yes/No columns and as t/f for native
// boolean ones; numbers in their shortest exact form, so that a value read back compares equal.
std::optional<QByteArray> parameterText(const QVariant& value, const CatalogColumn* column);

} // namespace vx::postgres
