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
    appendToLog(columns);
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

void AuditTrailPanel::appendToLog(const QStringList& columns) {
    if (m_logFile.isEmpty())
        return;
    QDir().mkpath(QFileInfo(m_logFile).absolutePath());
    QFile file(m_logFile);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        return; // the panel still holds the entry; a read-only log must not stop the work
    QStringList cleaned;
    for (QString column : columns)
        cleaned << column.replace(u'\t', u' ').replace(u'\n', u' ').replace(u'\r', u' ');
    QTextStream(&file) << cleaned.join(u'\t') << '\n';
}

} // namespace vx::demo
