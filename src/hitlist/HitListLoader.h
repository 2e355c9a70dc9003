#pragma once

#include "data/Connection.h"
#include "data/Recordset.h"

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

class QWidget;

namespace vx {

class ResultLoader;

// How DoQuery reads a result: the first screen of rows at once, already in the remembered
// order (the engine is asked for it), and the rest on a thread of its own, appended to the
// result set as it comes. Where the engine cannot order the rows as the record set would, the
// whole result is read and sorted first, as a plain open does.
//
// The rows are read on a second connection of the same repository, used for nothing else, so
// that the session's connection stays free for the hit list's own work meanwhile.
class HitListLoader : public QObject {
    Q_OBJECT

public:
    // `owner` carries the progress form; `failed` shows an engine failure part-way.
    HitListLoader(QWidget* owner, std::function<void(const QString&)> failed);
    ~HitListLoader() override;

    // Opens `query` on `session` sorted by `sort` ("[col] ASC") when the result has the column
    // `sortColumn`; rows beyond the first `firstRows` follow while loading().
    Recordset open(const QString& query, const Connection& session, const QString& sortColumn,
                   const QString& sort, qsizetype firstRows);
    bool loading() const;
    // Waits until every row is in the result set, with the progress form when that takes more
    // than a moment. Returns at once when nothing is loading.
    void finish();
    // Stops a load in progress; the rows already appended stay.
    void cancel();
    // The second connection is closed (the session ends).
    void close();

signals:
    // Rows were appended to the result set.
    void rowsAppended();

private:
    void takeRows();
    Recordset openWhole(const QString& query, const Connection& session, const QString& sortColumn,
                        const QString& sort);

    QWidget* m_owner;
    std::function<void(const QString&)> m_failed;
    Connection m_reader;
    std::unique_ptr<ResultLoader> m_loader;
    Recordset m_result;
};

} // namespace vx
