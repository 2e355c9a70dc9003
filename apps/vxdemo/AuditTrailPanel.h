#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QWidget>

class QTableWidget;

namespace vx::demo {

// The host's record of what the hit list did to documents: one row per RecordAuditTrail event
// (time, action, item ids, description), also appended to a log file as tab-separated lines.
class AuditTrailPanel : public QWidget {
    Q_OBJECT

public:
    explicit AuditTrailPanel(QWidget* parent = nullptr);

    // An empty path keeps the trail in the panel only.
    void setLogFile(const QString& path);
    QString logFile() const { return m_logFile; }

    void record(const QString& action, const QList<qint32>& itemIds, const QString& description,
                const QDateTime& when = QDateTime::currentDateTime());
    int entryCount() const;

    // "3, 17, 42" for the panel and the log.
    static QString itemText(const QList<qint32>& itemIds);

signals:
    // An entry stayed out of the log file (a full disk, a read-only file); the panel has it.
    void logNotWritten(const QString& message);

private:
    // Whole lines only: a line the disk had no room for is taken back, so the next entry
    // starts a line of its own. Returns what went wrong, empty when written.
    QString appendToLog(const QStringList& columns);

    QTableWidget* m_table = nullptr;
    QString m_logFile;
};

} // namespace vx::demo
