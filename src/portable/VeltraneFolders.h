#pragma once

#include <QString>
#include <QStringList>

namespace vx {

// Removes the first `count` folders of `createdFolders` (listed in creation order), last first:
// the files in each folder, then the folders themselves. Whatever cannot be removed stays;
// nothing is reported. Folders not in the list (and files in their subfolders that the export
// did not create) are never touched.
void RemoveVeltraneFolders(const QStringList& createdFolders, qint16 count);

} // namespace vx
