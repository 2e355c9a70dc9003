#include "data/SqlLog.h"

namespace vx {

Q_LOGGING_CATEGORY(lcSql, "vx.sql", QtWarningMsg)

} // namespace vx
