#include "data/Driver.h"

#include "data/Error.h"
#include "data/LocalTimeZone.h"
#include "data/MaterialisedResultStream.h"
#include "data/dbf/DbfDriver.h"
#include "data/postgres/PostgresDriver.h"
#include "data/sqlite/SqliteDriver.h"

#include <QMutex>
#include <QMutexLocker>
#include <mutex>

namespace vx {

std::unique_ptr<RowStore> Driver::tableStructure(const QString& table) {
    return emptyLike(*selectTable(table));
}

std::unique_ptr<ResultStream> Driver::streamTable(const QString& table) {
    return std::make_unique<MaterialisedResultStream>(selectTable(table));
}

void Driver::raiseSequence(const QString&, const QString&, const QString&) {
    throw Error(ErrorNumber::NotSupported,
                QStringLiteral("The %1 engine has no sequences.").arg(name()));
}

qint64 Driver::nextSequenceValue(const QString&) {
    throw Error(ErrorNumber::NotSupported,
                QStringLiteral("The %1 engine has no sequences.").arg(name()));
}

namespace {

struct Registry {
    QMutex mutex;
    QList<QPair<QString, DriverFactory>> factories;
};

Registry& registry() {
    static Registry instance;
    return instance;
}

// Built-in drivers are registered on first use: a static library's self-registering objects
// would be dropped by the linker when nothing else refers to them.
void registerBuiltins() {
    static std::once_flag once;
    std::call_once(once, [] {
        keepLocalTimeZoneLoaded();
        registerDriver(QStringLiteral("SQLite"), [] { return std::make_unique<SqliteDriver>(); });
        registerDriver(QStringLiteral("PostgreSQL"), [] { return createPostgresDriver(); });
        registerDriver(QStringLiteral("MSDASQL.1"), [] { return std::make_unique<DbfDriver>(); });
    });
}

} // namespace

std::unique_ptr<ResultStream> Driver::openStream(const QString& sql) {
    return std::make_unique<MaterialisedResultStream>(select(sql));
}

void registerDriver(const QString& provider, DriverFactory factory) {
    Registry& reg = registry();
    QMutexLocker lock(&reg.mutex);
    for (auto& entry : reg.factories) {
        if (entry.first.compare(provider, Qt::CaseInsensitive) == 0) {
            entry.second = std::move(factory);
            return;
        }
    }
    reg.factories.append({provider, std::move(factory)});
}

QStringList registeredProviders() {
    registerBuiltins();
    Registry& reg = registry();
    QMutexLocker lock(&reg.mutex);
    QStringList names;
    for (const auto& entry : reg.factories)
        names << entry.first;
    return names;
}

std::unique_ptr<Driver> createDriver(const QString& provider) {
    registerBuiltins();
    DriverFactory factory;
    {
        Registry& reg = registry();
        QMutexLocker lock(&reg.mutex);
        for (const auto& entry : reg.factories) {
            if (entry.first.compare(provider.trimmed(), Qt::CaseInsensitive) == 0)
                factory = entry.second;
        }
    }
    if (factory)
        return factory();

    const QString supported = registeredProviders().join(QStringLiteral(", "));
    if (provider.trimmed().isEmpty())
        throw Error(ErrorNumber::ProviderNotFound,
                    QStringLiteral("The connection settings name no provider. "
                                   "Supported providers: %1.")
                        .arg(supported));
    throw Error(ErrorNumber::ProviderNotFound,
                QStringLiteral("Provider cannot be found: '%1' is not supported. "
                               "Supported providers: %2.")
                    .arg(provider, supported));
}

} // namespace vx
