#pragma once

#include "data/RowAppender.h"

#include <QList>
#include <memory>

namespace vx::dbf {

class DbfTableFile;

// Appends records to one open table, the fields resolved once.
class DbfRowAppender : public RowAppender {
public:
    DbfRowAppender(std::shared_ptr<DbfTableFile> table, QList<int> fields);
    ~DbfRowAppender() override;

    void append(std::span<const QVariant> values) override;
    void finish() override;

private:
    std::shared_ptr<DbfTableFile> m_table;
    QList<int> m_fields;
};

} // namespace vx::dbf
