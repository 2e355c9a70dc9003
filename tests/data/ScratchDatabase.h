#pragma once

#include "data/Connection.h"
#include "data/ConnectionProperties.h"
#include "data/Driver.h"
#include "data/Error.h"
#include "data/RowStore.h"
#include "support/ErrorNumberOf.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace vx::test {

using namespace Qt::StringLiterals;

// An empty repository database in a temporary folder, named by a data-link file, as the
// controls reach one.
class ScratchDatabase {
public:
    ScratchDatabase() {
        writeDataLinkFile(dataLinkPath(), QStringLiteral("Provider=SQLite;Data Source=repo.db"));
    }
    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString dataLinkPath() const { return path(QStringLiteral("repo.udl")); }
    QString databasePath() const { return path(QStringLiteral("repo.db")); }
    QString connectionText() const {
        return QStringLiteral("File Name=") + dataLinkPath() +
               QStringLiteral(";Jet OLEDB:Database Password = ' morvantel'");
    }
    // The first connection creates the file.
    Connection connect(const QString& extra = {}) const {
        Connection connection;
        connection.open(connectionText() + QStringLiteral(";Create If Missing=True") + extra);
        return connection;
    }

private:
    QTemporaryDir m_folder;
};

} // namespace vx::test
