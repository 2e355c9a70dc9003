#include "hitlist/HitListLoader.h"

#include "data/Driver.h"
#include "data/Error.h"
#include "data/ResultLoader.h"
#include "operations/Progressbar.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>

namespace vx {

namespace {

Q_LOGGING_CATEGORY(lcLoad, "vx.hitlist.load", QtWarningMsg)

// A wait shorter than this shows no progress form.
constexpr int momentMs = 300;

int columnNamed(const ColumnList& columns, const QString& name) {
    for (qsizetype i = 0; i < columns.size(); ++i)
        if (columns[i].name.compare(name, Qt::CaseInsensitive) == 0)
            return int(i);
    return -1;
}

} // namespace

HitListLoader::HitListLoader(QWidget* owner, std::function<void(const QString&)> failed)
    : m_owner(owner)
    , m_failed(std::move(failed)) {}

HitListLoader::~HitListLoader() {
    cancel();
}

Recordset HitListLoader::openWhole(const QString& query, const Connection& session,
                                   const QString& sortColumn, const QString& sort) {
    Recordset result;
    result.open(query, session, CursorType::Keyset, LockType::Optimistic, CommandType::Text);
    // A remembered column the result lacks leaves the engine's order.
    if (result.fieldIndex(sortColumn) >= 0)
        result.setSort(sort);
    return result;
}

Recordset HitListLoader::open(const QString& query, const Connection& session,
                              const QString& sortColumn, const QString& sort, qsizetype firstRows) {
    cancel();
    QElapsedTimer took;
    took.start();
    std::unique_ptr<ResultStream> stream;
    try {
        if (!m_reader.isOpen())
            m_reader.open(session.connectionText());
        qCDebug(lcLoad) << "reader open after" << took.elapsed() << "ms";
        stream = m_reader.driver().openStream(query);
        qCDebug(lcLoad) << "statement described after" << took.elapsed() << "ms";
    } catch (const Error& error) {
        // The session's own connection says what is wrong with the query, if anything.
        qCDebug(lcLoad) << "no second reader:" << error.description();
        return openWhole(query, session, sortColumn, sort);
    }
    const ColumnList& columns = stream->columns();
    const int column = columnNamed(columns, sortColumn);
    if (column >= 0) {
        std::vector<SortColumn> order;
        try {
            order = parseSortText(
                sort, [&columns](const QString& name) { return columnNamed(columns, name); });
        } catch (const Error&) {
            return openWhole(query, session, sortColumn, sort);
        }
        if (!stream->orderBy(order)) {
            qCDebug(lcLoad) << "the engine cannot order by" << sort << "- reading it whole";
            return openWhole(query, session, sortColumn, sort);
        }
    }
    Recordset result;
    result.openRead(stream->read(firstRows), query, session, CursorType::Keyset,
                    LockType::Optimistic, column >= 0 ? sort : QString());
    qCDebug(lcLoad) << result.recordCount() << "first rows after" << took.elapsed() << "ms";
    if (!stream->atEnd()) {
        m_result = result;
        m_loader = std::make_unique<ResultLoader>(std::move(stream), m_reader);
        connect(m_loader.get(), &ResultLoader::rowsReady, this, &HitListLoader::takeRows);
        m_loader->start();
    }
    return result;
}

bool HitListLoader::loading() const {
    return m_loader != nullptr;
}

void HitListLoader::takeRows() {
    if (!m_loader)
        return;
    bool appended = false;
    for (const auto& piece : m_loader->take()) {
        try {
            if (m_result.isOpen()) {
                m_result.appendRows(*piece);
                appended = true;
            }
        } catch (const Error& error) {
            qCDebug(lcLoad) << "rows dropped:" << error.description();
        }
    }
    if (m_loader->finished()) {
        const std::optional<Error> failure = m_loader->failure();
        m_loader.reset();
        m_result = Recordset();
        if (failure) {
            if (m_failed)
                m_failed(failure->description());
        }
    }
    if (appended)
        emit rowsAppended();
}

void HitListLoader::finish() {
    if (!m_loader)
        return;
    QElapsedTimer waited;
    waited.start();
    std::unique_ptr<ProgressScope> progress;
    while (m_loader) {
        takeRows();
        if (!m_loader)
            break;
        m_loader->wait(50);
        if (!progress && waited.elapsed() > momentMs && m_owner)
            progress = std::make_unique<ProgressScope>(m_owner, 0);
        // The form shows it is busy; what the user types waits for the rows.
        if (progress)
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    }
}

void HitListLoader::cancel() {
    if (!m_loader)
        return;
    // Its statement ends with it; the connection serves the next query.
    m_loader.reset();
    m_result = Recordset();
}

void HitListLoader::close() {
    cancel();
    m_reader = Connection();
}

} // namespace vx
