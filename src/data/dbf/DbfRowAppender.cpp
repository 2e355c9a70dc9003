#include "data/dbf/DbfRowAppender.h"

#include "data/dbf/DbfTableFile.h"

namespace vx::dbf {

DbfRowAppender::DbfRowAppender(std::shared_ptr<DbfTableFile> table, QList<int> fields)
    : m_table(std::move(table))
    , m_fields(std::move(fields)) {}

DbfRowAppender::~DbfRowAppender() {
    try {
        m_table->flush();
    } catch (...) { // let go after a failure: the caller is already reporting one
    }
}

void DbfRowAppender::append(std::span<const QVariant> values) {
    m_table->append(m_fields, values);
}

void DbfRowAppender::finish() {
    m_table->flush();
}

} // namespace vx::dbf
