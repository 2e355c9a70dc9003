#include "GroupSession.h"

#include "data/Error.h"
#include "data/Recordset.h"
#include "data/SqlQuoting.h"
#include "session/GroupConnection.h"

#include <QDir>
#include <QFileInfo>

namespace vx::demo {

GroupSession GroupSession::fromInitFile(const QString& initFilePath) {
    const QFileInfo init(initFilePath);
    if (!init.isFile())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The group initialisation file \"%1\" does not exist.")
                        .arg(QDir::toNativeSeparators(initFilePath)));
    GroupSession session;
    session.initFilePath = init.absoluteFilePath();
    session.repositoryDir = init.absolutePath();
    session.groupName = init.completeBaseName();
    const QDir config(init.absoluteDir().filePath(QStringLiteral("config")));
    session.formPath = config.filePath(session.groupName + QStringLiteral(".xml"));
    session.queryFormPath = config.filePath(session.groupName + QStringLiteral(".xqr"));

    Connection connection = openGroupConnection(session.initFilePath);
    Recordset group;
    group.open(QStringLiteral("select * from KTGroup where [Name] = ") +
                   sqlTextLiteral(session.groupName),
               connection);
    if (group.eof())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The repository has no group \"%1\".").arg(session.groupName));
    session.groupId = group.value(QStringLiteral("Groupid")).toInt();
    Recordset user;
    user.open(QStringLiteral("select * from KTUsers where username = ") +
                  sqlTextLiteral(session.userName),
              connection);
    if (!user.eof())
        session.userId = user.value(QStringLiteral("UserID")).toInt();
    return session;
}

} // namespace vx::demo
