#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>

namespace vx::test {

// A table as the reference reader (python3-dbfread) sees it: "fields" [{name, type, length,
// decimals}] and "records" [{field: value}], dates as ISO text, memos as text.
struct ReadBack {
    bool ok = false;
    QString skipReason; // set when the reader is not installed
    QString error;      // set when the reader failed on the table
    QJsonArray fields;
    QJsonArray records;

    QJsonObject field(const QString& name) const;
};

// Reads `path` with the reference reader.
ReadBack readWithDbfread(const QString& path);
// Why the reference reader cannot run here, or empty when it can.
QString dbfreadUnavailable();

QByteArray fileBytes(const QString& path);

} // namespace vx::test
