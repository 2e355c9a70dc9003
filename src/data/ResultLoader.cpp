#include "data/ResultLoader.h"

#include <QLoggingCategory>
#include <QMetaObject>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace vx {

namespace {

Q_LOGGING_CATEGORY(lcLoader, "vx.data", QtWarningMsg)

// Small first pieces put rows on screen soon; larger ones later keep the hand-overs few.
constexpr qsizetype firstPiece = 4096;
constexpr qsizetype largestPiece = 65536;

} // namespace

struct ResultLoader::Private {
    Connection connection; // declared before the stream: the stream reads on its driver
    std::unique_ptr<ResultStream> stream;
    std::thread thread;

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::unique_ptr<RowStore>> pieces;
    std::optional<Error> failure;
    qsizetype rowsRead = 0;
    bool finished = false;
    std::atomic<bool> cancelled{false};
    std::atomic<bool> signalPending{false};
};

ResultLoader::ResultLoader(std::unique_ptr<ResultStream> stream, Connection connection,
                           QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>()) {
    d->connection = std::move(connection);
    d->stream = std::move(stream);
}

ResultLoader::~ResultLoader() {
    cancel();
}

void ResultLoader::start() {
    if (d->thread.joinable() || !d->stream)
        return;
    auto tell = [this] {
        // One queued signal at a time: the owner takes everything that is there.
        if (!d->signalPending.exchange(true))
            QMetaObject::invokeMethod(
                this,
                [this] {
                    d->signalPending = false;
                    emit rowsReady();
                },
                Qt::QueuedConnection);
    };
    d->thread = std::thread([this, tell] {
        qsizetype piece = firstPiece;
        std::optional<Error> failure;
        try {
            while (!d->cancelled && !d->stream->atEnd()) {
                std::unique_ptr<RowStore> rows = d->stream->read(piece);
                const qsizetype count = rows->rowCount();
                if (count > 0) {
                    std::lock_guard lock(d->mutex);
                    d->rowsRead += count;
                    d->pieces.push_back(std::move(rows));
                }
                d->changed.notify_all();
                if (count > 0)
                    tell();
                piece = std::min(piece * 2, largestPiece);
            }
        } catch (const Error& error) {
            qCDebug(lcLoader) << "reading stopped:" << error.description();
            failure = error;
        } catch (const std::exception& error) {
            failure = Error(ErrorNumber::Unspecified, QString::fromLocal8Bit(error.what()));
        }
        {
            std::lock_guard lock(d->mutex);
            d->failure = failure;
            d->finished = true;
        }
        d->changed.notify_all();
        if (!d->cancelled)
            tell();
    });
}

std::vector<std::unique_ptr<RowStore>> ResultLoader::take() {
    std::lock_guard lock(d->mutex);
    return std::exchange(d->pieces, {});
}

bool ResultLoader::finished() const {
    std::lock_guard lock(d->mutex);
    return d->finished || !d->stream;
}

std::optional<Error> ResultLoader::failure() const {
    std::lock_guard lock(d->mutex);
    return d->failure;
}

qsizetype ResultLoader::rowsRead() const {
    std::lock_guard lock(d->mutex);
    return d->rowsRead;
}

void ResultLoader::wait(int milliseconds) {
    std::unique_lock lock(d->mutex);
    d->changed.wait_for(lock, std::chrono::milliseconds(milliseconds),
                        [this] { return d->finished || !d->pieces.empty(); });
}

void ResultLoader::cancel() {
    d->cancelled = true;
    if (d->thread.joinable())
        d->thread.join();
    std::lock_guard lock(d->mutex);
    d->pieces.clear();
    d->finished = true;
}

} // namespace vx
