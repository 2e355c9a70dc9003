#pragma once

#include <QLoggingCategory>

namespace vx {

// Every statement the data layer sends to an engine, as sent (after the dialect step).
// Silent by default; QT_LOGGING_RULES="vx.sql.debug=true" shows what each control asks for.
Q_DECLARE_LOGGING_CATEGORY(lcSql)

} // namespace vx
