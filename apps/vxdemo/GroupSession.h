#pragma once

#include <QString>

namespace vx::demo {

// What a host tells the controls about the open group and its user: the files that name the
// group and the identity values every control is given before Init.
struct GroupSession {
    QString repositoryDir;
    QString initFilePath;
    QString groupName;
    qint32 groupId = 0;
    QString libraryName = QStringLiteral("Main");
    QString userName = QStringLiteral("admin");
    qint32 userId = 1;
    // Every right: hint lists (1, 4), editing (8), deleting (32), moving (64), exporting (128).
    qint32 userPermission = 1 | 4 | 8 | 32 | 64 | 128;
    QString formPath;      // the index and record form: <dir>/config/<group>.xml
    QString queryFormPath; // the search form: <dir>/config/<group>.xqr

    // The session of the group named by an initialisation file: the group is the file's base
    // name, its forms lie in the "config" folder beside it, and its id comes from KTGroup.
    // Throws vx::Error when the group cannot be opened.
    static GroupSession fromInitFile(const QString& initFilePath);
};

} // namespace vx::demo
