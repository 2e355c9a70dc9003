#pragma once

#include "data/Connection.h"
#include "data/Error.h"
#include "data/ResultStream.h"

#include <QObject>
#include <VXUILib/vxdata_export.h>
#include <memory>
#include <optional>
#include <vector>

namespace vx {

// Reads the rest of a result on a thread of its own, in pieces that grow from a few thousand
// rows, while the rows already read are on screen. The owner's thread takes the pieces (when
// rowsReady arrives, or while it waits for the whole result) and appends them to its record set.
class VXDATA_EXPORT ResultLoader : public QObject {
    Q_OBJECT

public:
    // `connection` is the one the stream reads on; it stays open while the loader lives.
    ResultLoader(std::unique_ptr<ResultStream> stream, Connection connection,
                 QObject* parent = nullptr);
    // Cancels a read in progress and waits for the thread.
    ~ResultLoader() override;

    void start();
    // The pieces read since the last call, in order.
    std::vector<std::unique_ptr<RowStore>> take();
    // Reading has ended: at the end of the result, by a failure or by cancel.
    bool finished() const;
    // The engine's failure that ended reading early, if any.
    std::optional<Error> failure() const;
    qsizetype rowsRead() const;
    // Waits until a piece is ready or reading has ended, at most `milliseconds`.
    void wait(int milliseconds);
    // Stops reading and waits for the thread; pieces not taken are dropped.
    void cancel();

signals:
    // Pieces are ready to take, or reading has ended. Several pieces may be behind one signal.
    void rowsReady();

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx
