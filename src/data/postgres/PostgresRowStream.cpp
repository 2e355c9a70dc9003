#include "data/postgres/PostgresRowStream.h"

#include "data/Error.h"
#include "data/postgres/PostgresResultReader.h"
#include "data/postgres/PostgresSession.h"

namespace vx::postgres {

RowStreamCursor::RowStreamCursor(Session& session, const QByteArray& query, QByteArray cursorName)
    : m_session(session)
    , m_name(std::move(cursorName)) {
    m_session.run("DECLARE " + m_name + " NO SCROLL CURSOR WITH HOLD FOR " + query);
    m_open = true;
}

RowStreamCursor::~RowStreamCursor() {
    closeCursor();
}

qsizetype RowStreamCursor::fetch(RowStore& into, qsizetype maxRows) {
    if (!m_open || maxRows <= 0)
        return 0;
    const ResultHandle result =
        m_session.run("FETCH FORWARD " + QByteArray::number(maxRows) + " FROM " + m_name);
    const qsizetype fetched = appendResultRows(result.get(), into);
    if (fetched < maxRows)
        closeCursor();
    return fetched;
}

void RowStreamCursor::closeCursor() noexcept {
    if (!m_open)
        return;
    m_open = false;
    try {
        if (m_session.isOpen())
            m_session.run("CLOSE " + m_name);
    } catch (const Error&) {
        // The session was reset or the transaction holding the cursor was rolled back: the
        // cursor is gone with it.
    }
}

} // namespace vx::postgres
