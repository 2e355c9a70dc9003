// Measures the table export's writing path: the FoxPro connection, CREATE TABLE and the table's
// row appender taking every row, against a plain file write of the same number of bytes in the
// same run.
//
//   vxbench_export [rows]     (default: 100000)
//   VX_BENCH_RUNS=N adds N runs, for a profiler to see more of the export than of the set-up.

#include "core/SampleContent.h"
#include "data/Connection.h"
#include "data/Error.h"
#include "data/RowAppender.h"
#include "operations/DataExportTable.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

using namespace vx;

namespace {

double secondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The export table of the sample group: the fixed columns and the form's.
const QStringList columnNames{
    QStringLiteral("itemid"),     QStringLiteral("idx_date"),  QStringLiteral("type_"),
    QStringLiteral("fileid"),     QStringLiteral("filename"),  QStringLiteral("fdate_"),
    QStringLiteral("fsize_"),     QStringLiteral("disklabel"), QStringLiteral("InvoiceNo"),
    QStringLiteral("Customer"),   QStringLiteral("Status"),    QStringLiteral("Amount"),
    QStringLiteral("InvoiceDat"), QStringLiteral("Paid"),      QStringLiteral("Categories"),
    QStringLiteral("Notes")};

QList<dataexport::FormColumn> formColumns() {
    return {{QStringLiteral("InvoiceNo"), QStringLiteral("InvoiceNo"), QStringLiteral(" CHAR(20)")},
            {QStringLiteral("Customer"), QStringLiteral("Customer"), QStringLiteral(" CHAR(50)")},
            {QStringLiteral("Status"), QStringLiteral("Status"), QStringLiteral(" CHAR(20)")},
            {QStringLiteral("Amount"), QStringLiteral("Amount"), QStringLiteral(" NUMERIC")},
            {QStringLiteral("InvoiceDate"), QStringLiteral("InvoiceDat"), QStringLiteral(" DATE")},
            {QStringLiteral("Paid"), QStringLiteral("Paid"), QStringLiteral(" BOOL")},
            {QStringLiteral("Categories"), QStringLiteral("Categories"), QStringLiteral(" MEMO")},
            {QStringLiteral("Notes"), QStringLiteral("Notes"), QStringLiteral(" MEMO")}};
}

std::vector<QVariantList> sampleRows(qint32 count) {
    std::vector<QVariantList> rows;
    rows.reserve(size_t(count));
    for (qint32 id = 1; id <= count; ++id) {
        const repo::sample::Document d = repo::sample::document(id, count);
        rows.push_back({id, d.indexed, 1, id, repo::sample::mainFileName(d.fileSlot), d.indexed,
                        qint32(1000 + id % 5000), d.volume, d.invoiceNo, d.customer, d.status,
                        d.amount, d.invoiceDate, d.paid, d.categories,
                        d.notes.isEmpty() ? QVariant() : QVariant(d.notes)});
    }
    return rows;
}

qint64 exportRows(const QString& folder, const std::vector<QVariantList>& rows) {
    Connection connection;
    dataexport::openExportConnection(connection, folder);
    connection.execute(dataexport::createTableText(QStringLiteral("Invoices"), 254, formColumns()));
    const std::unique_ptr<RowAppender> table =
        connection.appendRows(QStringLiteral("Invoices"), columnNames);
    for (const QVariantList& row : rows)
        table->append(std::span(row.constData(), size_t(row.size())));
    table->finish();
    connection.close();
    const QDir dir(folder);
    return QFileInfo(dir.filePath(QStringLiteral("Invoices.dbf"))).size() +
           QFileInfo(dir.filePath(QStringLiteral("Invoices.fpt"))).size();
}

void plainWrite(const QString& path, qint64 bytes) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw Error(ErrorNumber::Unspecified, file.errorString());
    const QByteArray chunk(64 * 1024, 'x');
    for (qint64 left = bytes; left > 0; left -= chunk.size())
        file.write(chunk.constData(), std::min<qint64>(left, chunk.size()));
    file.close();
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const qint32 count = argc > 1 ? QByteArray(argv[1]).toInt() : 100000;
    try {
        const std::vector<QVariantList> rows = sampleRows(count);
        double best = 1e300;
        double bestPlain = 1e300;
        qint64 bytes = 0;
        // The best of the runs, each writing fresh files in a fresh folder.
        const int runs = 3 + qEnvironmentVariableIntValue("VX_BENCH_RUNS");
        for (int run = 0; run < runs; ++run) {
            QTemporaryDir folder;
            best = std::min(best, secondsOf([&] { bytes = exportRows(folder.path(), rows); }));
            bestPlain = std::min(
                bestPlain, secondsOf([&] {
                    plainWrite(QDir(folder.path()).filePath(QStringLiteral("plain.bin")), bytes);
                }));
        }
        std::printf("export %d rows to a FoxPro table: %.3f s (%.2f us/row), %.1f MB\n", count,
                    best, best * 1e6 / count, double(bytes) / 1e6);
        std::printf("plain write of the same bytes:  %.3f s\n", bestPlain);
        std::printf("ratio export / plain write:      %.1fx (target within 3x)\n",
                    best / bestPlain);
    } catch (const Error& error) {
        std::fprintf(stderr, "failed: %s\n", qPrintable(error.description()));
        return 1;
    }
    return 0;
}
