#pragma once

#include "data/Driver.h"

namespace vx {

// FoxPro tables in one folder, for the table export: the connection text names the folder as
// "SourceDB" with "SourceType=DBF". CREATE TABLE makes a Visual FoxPro table, "select * from
// name" (or a table-direct open) reads one back, and a record set over it appends records.
// Records already in a table are never changed. Closing the connection flushes every table.
class DbfDriver : public Driver {
public:
    DbfDriver();
    ~DbfDriver() override;

    QString name() const override;
    void open(const ConnectionProperties& properties, const QString& user,
              const QString& password) override;
    void close() override;
    bool isOpen() const override;

    qint64 execute(const QString& sql) override;
    std::unique_ptr<RowStore> select(const QString& sql) override;
    std::unique_ptr<RowStore> selectTable(const QString& table) override;

    void beginTransaction() override;
    void commitTransaction() override;
    void rollbackTransaction() override;
    int transactionLevel() const override;

    QList<TableEntry> tables() override;
    QList<ProviderTypeEntry> providerTypes() override;

    QVariant insertRow(const QString& table, const QStringList& columns, const QVariantList& values,
                       const QString& autoIncrementColumn) override;
    qint64 updateRow(const QString& table, const QStringList& columns, const QVariantList& values,
                     const QStringList& keyColumns, const QVariantList& keyValues,
                     const QStringList& checkColumns = {},
                     const QVariantList& checkValues = {}) override;
    qint64 deleteRow(const QString& table, const QStringList& keyColumns,
                     const QVariantList& keyValues, const QStringList& checkColumns = {},
                     const QVariantList& checkValues = {}) override;
    // Records straight into the table's buffer, without a record set's row copies.
    std::unique_ptr<RowAppender> appendRows(const QString& table,
                                            const QStringList& columns) override;

    // The folder the connection opened on.
    QString folder() const;

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx
