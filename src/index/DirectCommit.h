#pragma once

#include "index/IndexSession.h"

namespace vx {

class Recordset;

// Writes the new document's rows straight into the repository (KTItem, the group table and
// keywords) under the item id the host gave. No transaction: rows saved before a failure stay.
class DirectCommit {
public:
    explicit DirectCommit(const IndexCommitContext& context);

    // True when every row was written.
    bool run();

    // The user's id by name, 0 (after a message) when there is none.
    static qint32 userId(const Connection& connection, const QString& userName);

private:
    void writeItemRow();
    void writeGroupRow();
    void writeKeywordRows();
    void setTextColumn(Recordset& rows, const QString& column, const QVariant& value);

    IndexCommitContext m_context;
};

} // namespace vx
