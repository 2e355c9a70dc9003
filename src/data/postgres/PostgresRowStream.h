#pragma once

#include "data/RowStream.h"

#include <QByteArray>

namespace vx::postgres {

class Session;

// The rows of a query read through a server-side cursor, one FETCH per piece. The cursor is held
// across transactions, so a reader may write between pieces; it is closed once the rows are
// exhausted or the stream is dropped.
class RowStreamCursor : public RowStream {
public:
    RowStreamCursor(Session& session, const QByteArray& query, QByteArray cursorName);
    ~RowStreamCursor() override;
    RowStreamCursor(const RowStreamCursor&) = delete;
    RowStreamCursor& operator=(const RowStreamCursor&) = delete;

    qsizetype fetch(RowStore& into, qsizetype maxRows) override;

private:
    void closeCursor() noexcept;

    Session& m_session;
    QByteArray m_name;
    bool m_open = false;
};

} // namespace vx::postgres
