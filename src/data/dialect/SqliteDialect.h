#pragma once

#include "data/dialect/SqlDialect.h"

namespace vx {

// The embedded engine's dialect: it takes [brackets] and keeps Jet type names as declared types,
// but has no "WITH PRIMARY", database-wide index names, no "#date#" literals and no TRUE/FALSE
// as -1/0, and compares text by case unless told otherwise.
class SqliteDialect : public SqlDialect {
public:
    QString rewrite(const QString& sql) const override;
};

} // namespace vx
