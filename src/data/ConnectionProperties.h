#pragma once

#include <QList>
#include <QPair>
#include <QString>

namespace vx {

// An initialisation string "key=value;key2='va;lue'": keys are matched without regard to case,
// values may stand in "..." or '...' with the quote doubled inside. Keys and values are trimmed.
class ConnectionProperties {
public:
    static ConnectionProperties parse(const QString& text);

    bool contains(const QString& key) const;
    QString value(const QString& key, const QString& fallback = {}) const;
    void set(const QString& key, const QString& value);
    // Adds the other's keys that this one lacks (a data-link file's keys under the text's own).
    void mergeMissing(const ConnectionProperties& other);
    const QList<QPair<QString, QString>>& entries() const { return m_entries; }

private:
    QList<QPair<QString, QString>> m_entries;
};

// Reads a data-link file: UTF-16LE with byte-order mark, "[oledb]", the comment line and the
// init string; or plain UTF-8 with or without those lines. Throws vx::Error when unreadable.
ConnectionProperties readDataLinkFile(const QString& path);
// Writes one in the UTF-16LE form.
void writeDataLinkFile(const QString& path, const QString& initString);

} // namespace vx
