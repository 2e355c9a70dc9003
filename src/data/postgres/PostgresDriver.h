#pragma once

#include "data/Driver.h"

namespace vx {

// The server engine, over libpq. Connection keys: "Host" (a name, an address or a socket
// folder), "Port", "Database", "User ID" and "Password" (the open's user and password serve
// when these are missing), "Connect Timeout" (seconds, 15 unless given) and "SSL Mode".
class PostgresDriver : public Driver {
public:
    PostgresDriver();
    ~PostgresDriver() override;

    QString name() const override;
    void open(const ConnectionProperties& properties, const QString& user,
              const QString& password) override;
    void close() override;
    bool isOpen() const override;

    qint64 execute(const QString& sql) override;
    std::unique_ptr<RowStore> select(const QString& sql) override;
    std::unique_ptr<ResultStream> openStream(const QString& sql) override;
    std::unique_ptr<RowStore> selectTable(const QString& table) override;
    std::unique_ptr<RowStore> tableStructure(const QString& table) override;
    std::unique_ptr<ResultStream> streamTable(const QString& table) override;

    void beginTransaction() override;
    void beginAllOrNothingTransaction() override;
    void commitTransaction() override;
    void rollbackTransaction() override;
    int transactionLevel() const override;

    QList<TableEntry> tables() override;
    QList<ProviderTypeEntry> providerTypes() override;
    QStringList indexNames() override;

    bool hasSequences() const override { return true; }
    void raiseSequence(const QString& sequence, const QString& table,
                       const QString& column) override;
    qint64 nextSequenceValue(const QString& sequence) override;

    QVariant insertRow(const QString& table, const QStringList& columns, const QVariantList& values,
                       const QString& autoIncrementColumn) override;
    qint64 updateRow(const QString& table, const QStringList& columns, const QVariantList& values,
                     const QStringList& keyColumns, const QVariantList& keyValues,
                     const QStringList& checkColumns = {},
                     const QVariantList& checkValues = {}) override;
    qint64 deleteRow(const QString& table, const QStringList& keyColumns,
                     const QVariantList& keyValues, const QStringList& checkColumns = {},
                     const QVariantList& checkValues = {}) override;

    // True when text columns compare without regard to case (the server has ICU collations).
    bool caseInsensitiveText() const;

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

std::unique_ptr<Driver> createPostgresDriver();

} // namespace vx
