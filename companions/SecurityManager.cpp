#include "companions/SecurityManager.h"

#include "data/Connection.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "session/GroupConnection.h"

#include <optional>

namespace vx {

struct SecurityManager::Private {
    QString initFilePath;
    Connection connection;
    std::unique_ptr<Transaction> transaction; // open from SelectItem to KillItem
    std::optional<qint32> item;

    void abandonItem() noexcept {
        transaction.reset(); // rolls back
        item.reset();
    }

    Connection& requireConnection() {
        if (!connection.isOpen())
            throw Error(ErrorNumber::ObjectClosed,
                        QStringLiteral("The security manager has no group: set Init to the "
                                       "group initialisation file first."));
        return connection;
    }
};

SecurityManager::SecurityManager(QObject* parent)
    : VXSecurity(parent)
    , d(std::make_unique<Private>()) {}

SecurityManager::~SecurityManager() {
    d->abandonItem();
}

QString SecurityManager::Init() const {
    return d->initFilePath;
}

void SecurityManager::setInit(const QString& initFilePath) {
    d->abandonItem();
    d->connection = Connection();
    d->initFilePath = initFilePath;
    d->connection = openGroupConnection(initFilePath);
}

void SecurityManager::SelectItem(qint32& itemId) {
    d->abandonItem();
    d->transaction = std::make_unique<Transaction>(d->requireConnection());
    d->item = itemId;
}

void SecurityManager::DeleteItemSecurity() {
    if (!d->item)
        throw Error(ErrorNumber::NoCurrentRecord,
                    QStringLiteral("No item is selected; call SelectItem first."));
    d->requireConnection().execute(QStringLiteral("DELETE FROM KTSecurity WHERE itemid = ") +
                                   QString::number(*d->item));
}

bool SecurityManager::AddItemSecurity(qint32 userId, qint32 itemId) {
    if (!d->item || !d->connection.isOpen())
        return false;
    try {
        Recordset existing;
        existing.open(QStringLiteral("SELECT itemid FROM KTSecurity WHERE itemid = ") +
                          QString::number(itemId) + QStringLiteral(" AND UserID = ") +
                          QString::number(userId),
                      d->connection);
        if (!existing.eof())
            return true; // already on the list
        d->connection.execute(QStringLiteral("INSERT INTO KTSecurity (itemid, UserID) VALUES (") +
                              QString::number(itemId) + QStringLiteral(", ") +
                              QString::number(userId) + QLatin1Char(')'));
        return true;
    } catch (const Error&) {
        return false;
    }
}

void SecurityManager::KillItem() {
    if (d->transaction)
        d->transaction->commit();
    d->transaction.reset();
    d->item.reset();
}

void SecurityManager::Done() {
    d->abandonItem();
    d->connection = Connection(); // the session closes with its last reference
}

} // namespace vx
