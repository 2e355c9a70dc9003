#pragma once

#include "data/Driver.h"

namespace vx {

// The embedded engine: one repository file, opened in WAL mode with a busy timeout so that a
// second writer waits rather than fails. Connection keys: "Data Source" (the file),
// "Busy Timeout" (milliseconds, 10000 unless given), "Create If Missing" (True to create a new
// file; otherwise a missing file is an error), "Mode" ("Read" opens read-only), "Immutable"
// (True with "Mode=Read": the file is read without locks or journal files, for read-only media),
// "Synchronous" ("Off", "Normal", "Full" or "Extra": how often the engine waits for the disk;
// the engine's default unless given).
class SqliteDriver : public Driver {
public:
    SqliteDriver();
    ~SqliteDriver() override;

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
    void commitTransaction() override;
    void rollbackTransaction() override;
    int transactionLevel() const override;

    QList<TableEntry> tables() override;
    QList<ProviderTypeEntry> providerTypes() override;
    QStringList indexNames() override;

    QVariant insertRow(const QString& table, const QStringList& columns, const QVariantList& values,
                       const QString& autoIncrementColumn) override;
    qint64 updateRow(const QString& table, const QStringList& columns, const QVariantList& values,
                     const QStringList& keyColumns, const QVariantList& keyValues,
                     const QStringList& checkColumns = {},
                     const QVariantList& checkValues = {}) override;
    qint64 deleteRow(const QString& table, const QStringList& keyColumns,
                     const QVariantList& keyValues, const QStringList& checkColumns = {},
                     const QVariantList& checkValues = {}) override;

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx
