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

private:
    void appendToLog(const QStringList& columns);

    QTableWidget* m_table = nullptr;
    QString m_logFile;
};

} // namespace vx::demo
