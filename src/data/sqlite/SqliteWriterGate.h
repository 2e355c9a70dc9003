#pragma once

#include <QByteArray>
#include <QString>

namespace vx::sqlite {

// Lines up the writers of one repository file on this machine in the kernel, ahead of the
// engine's write lock. The engine lets a waiting writer only poll: with eight users filing at
// once, the lock lay idle between one writer's commit and the next one's poll for about as long
// as it was held. Through the gate, the next writer wakes as the last one leaves.
//
// The gate is a process-shared, robust mutex in a small file beside the database
// ("<database>-gate", removed by the last connection that leaves it, set up afresh by the first
// one): a writer that dies holding it leaves it to the next. Where no such file
// can be made or used (read-only folders, another platform, a file of an unknown shape), or a
// wait runs out (its holder hangs or the file was tampered with), the connection goes on
// without it and the engine's own wait applies, as it always does to writers from elsewhere.
class WriterGate {
public:
    WriterGate() = default;
    ~WriterGate();
    WriterGate(const WriterGate&) = delete;
    WriterGate& operator=(const WriterGate&) = delete;

    // Uses the gate of `databasePath`, creating it when missing. Never throws.
    void open(const QString& databasePath);
    void close();
    bool isOpen() const;

    // Waits at most `timeoutMs` to enter; false when the gate is not in use. Never throws.
    bool enter(int timeoutMs);
    // Leaves the gate when entered. Never throws.
    void leave();
    bool entered() const { return m_entered; }
    // The engine's write lock was taken after this thread's wait for the gate ran out: nobody
    // held the gate for writing, so it is broken (tampered with) and no longer used.
    void engineLockTaken();

private:
    struct Shared;
    void disable(const char* why);

    QByteArray m_path;
    Shared* m_shared = nullptr;
    int m_file = -1;
    bool m_entered = false;
    bool m_timedOut = false;
};

} // namespace vx::sqlite
