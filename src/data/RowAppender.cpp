#include "data/RowAppender.h"

#include "data/Driver.h"
#include "data/Error.h"

#include <algorithm>

namespace vx {

InsertingRowAppender::InsertingRowAppender(Driver& driver, QString table, QStringList columns)
    : m_driver(driver)
    , m_table(std::move(table))
    , m_columns(std::move(columns)) {}

void InsertingRowAppender::append(std::span<const QVariant> values) {
    if (qsizetype(values.size()) != m_columns.size())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("Each column written needs one value."));
    m_values.resize(m_columns.size());
    std::copy(values.begin(), values.end(), m_values.begin());
    m_driver.insertRow(m_table, m_columns, m_values, QString());
}

} // namespace vx
