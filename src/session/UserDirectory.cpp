#include "session/UserDirectory.h"

#include "data/Connection.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "data/SqlQuoting.h"
#include "session/Conversions.h"
#include "session/UiServices.h"

namespace vx {

qint32 userIdForName(const Connection& connection, const QString& userName) {
    try {
        Recordset users;
        users.open(QStringLiteral("select * from KTUsers where username = ") +
                       sqlTextLiteral(userName),
                   connection, CursorType::Keyset, LockType::Optimistic, CommandType::Text);
        if (users.eof())
            throw Error(ErrorNumber::NoCurrentRecord,
                        QStringLiteral("Either BOF or EOF is True, or the current record has "
                                       "been deleted."));
        users.moveFirst();
        const qint32 id = toInt32(users.value(QStringLiteral("UserID")));
        users.close();
        return id;
    } catch (const std::exception&) {
        ui().messageBox(QStringLiteral("Error retrieveing UserID for UserName: ") + userName,
                        MessageStyle::OkOnly, QString());
    }
    return 0;
}

} // namespace vx
