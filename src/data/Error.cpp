#include "data/Error.h"

namespace vx {

Error::Error(qint32 number, QString description, QString source)
    : m_number(number)
    , m_description(std::move(description))
    , m_source(std::move(source))
    , m_what(m_description.toStdString()) {}

} // namespace vx
