#include "session/GroupConnection.h"

#include "session/PrivateProfile.h"
#include "session/SearchIndexes.h"

namespace vx {

QString groupConnectionText(const QString& initFilePath) {
    // The platform read this into a 260-character buffer, so at most 259 characters survive.
    const QString dataLinkPath = readPrivateProfileString(initFilePath, QStringLiteral("datalinks"),
                                                          QStringLiteral("Group"), QString(), 260);
    return QStringLiteral("File Name=") + dataLinkPath +
           QStringLiteral(";Jet OLEDB:Database Password = ' morvantel'");
}

Connection openGroupConnection(const QString& initFilePath) {
    Connection connection;
    const QString text = groupConnectionText(initFilePath);
    connection.open(text, QString(), QString());
    ensureSearchIndexesOnce(connection, text);
    return connection;
}

} // namespace vx
