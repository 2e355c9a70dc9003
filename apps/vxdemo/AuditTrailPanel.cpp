#include "AuditTrailPanel.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QTableWidget>
#include <QTextStream>
#include <QVBoxLayout>

namespace vx::demo {

AuditTrailPanel::AuditTrailPanel(QWidget* parent)
    : QWidget(parent) {
    setObjectName(QStringLiteral("auditTrail"));
    m_table = new QTableWidget(0, 4, this);
    m_table->setObjectName(QStringLiteral("auditTrailTable"));
    m_table->setHorizontalHeaderLabels({tr("Time"), tr("Action"), tr("Items"), tr("Description")});
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->verticalHeader()->setVisible(false);
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setColumnWidth(0, 150);
    m_table->setColumnWidth(1, 90);
    m_table->setColumnWidth(2, 160);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_table);
}

void AuditTrailPanel::setLogFile(const QString& path) {
    m_logFile = path;
}

void AuditTrailPanel::record(const QString& action, const QList<qint32>& itemIds,
                             const QString& description, const QDateTime& when) {
    const QStringList columns{when.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")), action,
                              itemText(itemIds), description};
    const int row = m_table->rowCount();
    m_table->insertRow(row);
    for (int column = 0; column < columns.size(); ++column) {
        auto* item = new QTableWidgetItem(columns[column]);
        item->setToolTip(columns[column]);
        m_table->setItem(row, column, item);
    }
    m_table->scrollToBottom();
    const QString failure = appendToLog(columns);
    if (!failure.isEmpty())
        emit logNotWritten(tr("The audit trail entry was not written to %1: %2")
                               .arg(QDir::toNativeSeparators(m_logFile), failure));
}

int AuditTrailPanel::entryCount() const {
    return m_table->rowCount();
}

QString AuditTrailPanel::itemText(const QList<qint32>& itemIds) {
    QStringList texts;
    texts.reserve(itemIds.size());
    for (const qint32 id : itemIds)
        texts << QString::number(id);
    return texts.join(QStringLiteral(", "));
}

QString AuditTrailPanel::appendToLog(const QStringList& columns) {
    if (m_logFile.isEmpty())
        return {};
    QDir().mkpath(QFileInfo(m_logFile).absolutePath());
    QFile file(m_logFile);
    // Unbuffered: a line that did not fit is then on the disk only in part, and can be cut off.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text |
                   QIODevice::Unbuffered))
        return file.errorString();
    QStringList cleaned;
    for (QString column : columns)
        cleaned << column.replace(u'\t', u' ').replace(u'\n', u' ').replace(u'\r', u' ');
    const QByteArray line = (cleaned.join(u'\t') + u'\n').toUtf8();
    const qint64 before = file.size();
    // A short write is retried, so the system's own reason (a full disk) is what is reported.
    qint64 written = 0;
    for (qint64 step = 0; written < line.size(); written += step) {
        step = file.write(line.constData() + written, line.size() - written);
        if (step <= 0)
            break;
    }
    if (written == line.size())
        return {};
    const QString reason = file.errorString();
    file.resize(before);
    return reason;
}

} // namespace vx::demo
