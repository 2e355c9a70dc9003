#pragma once

#include <QStringList>
#include <QVariant>
#include <memory>
#include <span>

namespace vx {

class Driver;

// Fills one table wholesale (exports, packages): the columns are resolved once and the engine
// may buffer the rows, where a record set's per-row bookkeeping would cost far more than the
// writing itself. Values convert as the engine converts them in an insert. finish() writes out
// everything appended so far; an appender let go without it still writes what it can, silently.
class RowAppender {
public:
    virtual ~RowAppender() = default;
    // One value per column, in the order the columns were given.
    virtual void append(std::span<const QVariant> values) = 0;
    virtual void finish() = 0;
};

// The appender of any engine: one insert per row through the driver, whose prepared statement
// is reused while the columns stay the same.
class InsertingRowAppender : public RowAppender {
public:
    InsertingRowAppender(Driver& driver, QString table, QStringList columns);
    void append(std::span<const QVariant> values) override;
    void finish() override {}

private:
    Driver& m_driver;
    QString m_table;
    QStringList m_columns;
    QVariantList m_values;
};

} // namespace vx
