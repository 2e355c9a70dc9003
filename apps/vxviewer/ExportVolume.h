#pragma once

#include <QMap>
#include <QString>

namespace vx::viewer {

// One volume of a portable export as found on disk: a folder holding "veltrane.znl",
// "veltrane.xqr", "veltrane.udl" and "Document", plus the volumes found beside it (the other
// folders of the same export, or of other CDs in the same place).
struct ExportVolume {
    QString folder; // absolute, no trailing separator
    QString name;   // the folder's name, which is the volume name a CD export stores
    // Other volume folders beside this one, by folder name.
    QMap<QString, QString> neighbours;

    QString databasePath() const;
    QString queryFormPath() const;
    QString dataLinkPath() const;
    QString documentFolder() const;

    // A volume folder, or an export root (its first volume is opened). Throws vx::Error with a
    // message saying what was expected when the folder is neither, or when a volume lacks a
    // part of the export.
    static ExportVolume open(const QString& path);
    // True when the folder looks like a volume (holds any part of one).
    static bool looksLikeVolume(const QString& folder);
    // True when the folder holds the volume's database and document folder.
    static bool isCompleteVolume(const QString& folder);
};

} // namespace vx::viewer
