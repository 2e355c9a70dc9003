#pragma once

#include <QString>

namespace vx::bench {

// A repository of `documents` documents for measuring: KTItem and the group table "Invoices",
// one row each per document, written straight through the engine's C API.
struct BenchRepository {
    static void build(const QString& databasePath, int documents);
    // The hit list's kind of query: the group table joined to KTItem, ~10 columns.
    static QString hitListQuery();
    static QString sortColumn() { return QStringLiteral("Customer"); }
};

} // namespace vx::bench
