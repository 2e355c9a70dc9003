#pragma once

#include <QString>

namespace vx {

// Turns the controls' SQL (bracketed names, Jet types, "#date#" literals, "WITH PRIMARY" ...)
// into what one engine accepts. The only place that knows how engines differ.
class SqlDialect {
public:
    virtual ~SqlDialect() = default;
    virtual QString rewrite(const QString& sql) const = 0;
};

} // namespace vx
