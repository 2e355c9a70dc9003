#pragma once

#include <QString>
#include <memory>
#include <optional>

namespace vx {

// One section of a one-shot hand-over file left by another program ("~znindex", "~znfind").
// The caller deletes the file once it has applied every value.
class HandOverFile {
public:
    HandOverFile(const QString& path, const QString& section);
    ~HandOverFile();
    HandOverFile(const HandOverFile&) = delete;
    HandOverFile& operator=(const HandOverFile&) = delete;

    QString path() const;
    QString section() const;
    bool exists() const;
    // The value of a key, at most 259 characters; nullopt when missing or empty.
    std::optional<QString> value(const QString& key) const;
    // Deletes the file; true when it is gone afterwards.
    bool remove();

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx
