#include "session/HandOverFile.h"

#include "session/PrivateProfile.h"

#include <QFile>
#include <QFileInfo>

namespace vx {

struct HandOverFile::Private {
    QString path;
    QString section;
};

HandOverFile::HandOverFile(const QString& path, const QString& section)
    : d(std::make_unique<Private>(Private{path, section})) {}

HandOverFile::~HandOverFile() = default;

QString HandOverFile::path() const {
    return d->path;
}

QString HandOverFile::section() const {
    return d->section;
}

bool HandOverFile::exists() const {
    const QFileInfo info(d->path);
    return info.exists() && info.isFile();
}

std::optional<QString> HandOverFile::value(const QString& key) const {
    // The writing program cannot tell "empty" from "not given": both leave the field alone.
    QString text = readPrivateProfileString(d->path, d->section, key, QString(), 260);
    if (text.isEmpty())
        return std::nullopt;
    return text;
}

bool HandOverFile::remove() {
    if (QFile::exists(d->path))
        QFile::remove(d->path);
    return !QFile::exists(d->path);
}

} // namespace vx
