#include "BenchRepository.h"

#include <QByteArray>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sqlite3.h>

namespace vx::bench {

namespace {

[[noreturn]] void die(sqlite3* db, const char* what) {
    std::fprintf(stderr, "%s: %s\n", what, db ? sqlite3_errmsg(db) : "cannot open");
    std::exit(1);
}

void run(sqlite3* db, const char* sql) {
    if (sqlite3_exec(db, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        die(db, sql);
}

// Deterministic values, so every run measures the same data.
struct Random {
    quint64 state = 0x2545F4914F6CDD1DULL;
    quint32 next() {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        return quint32(state >> 33);
    }
};

} // namespace

QString BenchRepository::hitListQuery() {
    return QStringLiteral("SELECT * FROM Invoices, KTItem WHERE Invoices.itemid = KTItem.itemid "
                          "AND KTItem.deleted = 0");
}

void BenchRepository::build(const QString& databasePath, int documents) {
    sqlite3* raw = nullptr;
    if (sqlite3_open_v2(databasePath.toUtf8().constData(), &raw,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX,
                        nullptr) != SQLITE_OK)
        die(raw, "open");
    std::unique_ptr<sqlite3, int (*)(sqlite3*)> db(raw, sqlite3_close_v2);
    run(raw, "PRAGMA journal_mode=WAL");
    // Tables as the repository declares them (text columns compare without regard to case).
    run(raw, "CREATE TABLE KTItem (itemid LONG NOT NULL, idx_date DATETIME, "
             "username VARCHAR(50) COLLATE NOCASE, type LONG, groupid LONG, deleted YESNO, "
             "CONSTRAINT pk_KTItem PRIMARY KEY (itemid))");
    run(raw, "CREATE TABLE Invoices (itemid LONG NOT NULL, Customer VARCHAR(50) COLLATE NOCASE, "
             "InvoiceNo LONG, Region VARCHAR(20) COLLATE NOCASE, Paid YESNO, "
             "CONSTRAINT pk_Invoices PRIMARY KEY (itemid))");
    run(raw, "BEGIN");
    sqlite3_stmt* item = nullptr;
    sqlite3_stmt* invoice = nullptr;
    if (sqlite3_prepare_v2(raw, "INSERT INTO KTItem VALUES (?, ?, ?, ?, 1, ?)", -1, &item,
                           nullptr) != SQLITE_OK ||
        sqlite3_prepare_v2(raw, "INSERT INTO Invoices VALUES (?, ?, ?, ?, ?)", -1, &invoice,
                           nullptr) != SQLITE_OK)
        die(raw, "prepare");
    static const char* const regions[] = {"North", "South",  "East",    "West",    "Central",
                                          "Coast", "Inland", "Islands", "Harbour", "Valley"};
    Random random;
    char text[64];
    for (int id = 1; id <= documents; ++id) {
        sqlite3_bind_int(item, 1, id);
        const int len =
            std::snprintf(text, sizeof text, "20%02u-%02u-%02u %02u:%02u:%02u", random.next() % 25,
                          random.next() % 12 + 1, random.next() % 28 + 1, random.next() % 24,
                          random.next() % 60, random.next() % 60);
        sqlite3_bind_text(item, 2, text, len, SQLITE_TRANSIENT);
        const int user = std::snprintf(text, sizeof text, "user%02u", random.next() % 20);
        sqlite3_bind_text(item, 3, text, user, SQLITE_TRANSIENT);
        sqlite3_bind_int(item, 4, int(random.next() % 8));
        sqlite3_bind_int(item, 5, random.next() % 50 == 0 ? -1 : 0);
        if (sqlite3_step(item) != SQLITE_DONE)
            die(raw, "insert KTItem");
        sqlite3_reset(item);

        sqlite3_bind_int(invoice, 1, id);
        const int customer =
            std::snprintf(text, sizeof text, "Customer %05u Ltd", random.next() % 20000);
        sqlite3_bind_text(invoice, 2, text, customer, SQLITE_TRANSIENT);
        sqlite3_bind_int(invoice, 3, int(random.next() % 1000000));
        sqlite3_bind_text(invoice, 4, regions[random.next() % 10], -1, SQLITE_STATIC);
        sqlite3_bind_int(invoice, 5, random.next() % 2 ? -1 : 0);
        if (sqlite3_step(invoice) != SQLITE_DONE)
            die(raw, "insert Invoices");
        sqlite3_reset(invoice);
    }
    sqlite3_finalize(item);
    sqlite3_finalize(invoice);
    run(raw, "COMMIT");
    run(raw, "PRAGMA wal_checkpoint(TRUNCATE)");
}

} // namespace vx::bench
