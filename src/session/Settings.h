#pragma once

#include <QHash>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

namespace vx {

// Per-user settings under the application title "VXUILib". Sections and keys match without regard
// to case and may hold any characters (blanks, "@", digits-only names, slashes).
QString getSetting(const QString& section, const QString& key, const QString& defaultValue = {});
// Every value of a section in one read, by key in lower case (keys match without regard to case).
QHash<QString, QString> getSectionSettings(const QString& section);
void saveSetting(const QString& section, const QString& key, const QString& value);
// Several values of one section in one write; values already stored as given cost no write.
void saveSettings(const QString& section, const QList<QPair<QString, QString>>& values);
// Deletes a whole section.
void deleteSetting(const QString& section);
void deleteSetting(const QString& section, const QString& key);
// The keys of a section, in the store's order.
QStringList settingKeys(const QString& section);

// Moves the store into a folder (tests); an empty path returns to VXUILIB_SETTINGS_DIR or the
// platform's default place. Returns the folder set before (empty when there was none).
QString setSettingsDirectory(const QString& path);
// The folder in use, or empty for the platform's default place.
QString settingsDirectory();

// The application title the settings and untitled message boxes use: "VXUILib".
QString applicationTitle();

} // namespace vx
