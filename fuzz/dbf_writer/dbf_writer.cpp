// The FoxPro table writer: a table statement, records of any values, read back; and tables
// found on disk opened and read (a corrupted header or memo pointer must fail cleanly).
#include "FuzzInput.h"
#include "data/Error.h"
#include "data/RowStore.h"
#include "data/dbf/CreateTableStatement.h"
#include "data/dbf/DbfTableFile.h"

#include <QFile>
#include <cstdlib>

namespace {

using namespace vx;

QVariant valueFrom(fuzz::Input& input) {
    switch (input.byte() % 7) {
    case 0:
        return {};
    case 1:
        return QVariant(input.text(300));
    case 2:
        return QVariant(input.number<double>());
    case 3:
        return QVariant(input.number<qint32>());
    case 4:
        return QVariant(bool(input.byte() & 1));
    case 5:
        return QVariant(QDate::fromJulianDay(input.number<qint32>()));
    default:
        return QVariant(QDateTime(QDate::fromJulianDay(input.number<qint32>()),
                                  QTime::fromMSecsSinceStartOfDay(input.number<qint32>())));
    }
}

void removeTable(const QString& path) {
    QFile::remove(path);
    QFile::remove(dbf::memoPathFor(path));
}

void writeAndReadBack(fuzz::Input& input) {
    dbf::CreateTableStatement statement;
    try {
        statement = dbf::CreateTableStatement::parse(input.text(200));
    } catch (const Error&) {
        statement = dbf::CreateTableStatement::parse(QStringLiteral(
            "CREATE TABLE t(n NUMERIC,d DATE,c CHAR(12),m MEMO,b BOOL,r NUMERIC(8,2));"));
    }
    const QString path = QDir(fuzz::scratch().path()).filePath(QStringLiteral("t.dbf"));
    removeTable(path);
    try {
        std::unique_ptr<dbf::DbfTableFile> table =
            dbf::DbfTableFile::create(path, statement.layout);
        QList<int> fields;
        for (int i = 0; i < statement.layout.fields().size(); ++i)
            fields << i;
        quint32 appended = 0;
        for (int row = 0; row < 64 && !input.empty(); ++row) {
            QVariantList values;
            for (int i = 0; i < fields.size(); ++i)
                values << valueFrom(input);
            try {
                table->append(fields, {values.constData(), size_t(values.size())});
                ++appended;
            } catch (const Error&) { // a value that does not convert appends nothing
            }
        }
        const auto rows = table->readAll(QStringLiteral("t"));
        if (quint32(rows->rowCount()) != appended || table->recordCount() != appended)
            std::abort();
        table->close();
    } catch (const Error&) {
    }
    removeTable(path);
}

void openFound(fuzz::Input& input) {
    const QByteArray memo = input.raw(input.number<quint16>());
    const QString path = fuzz::writeScratchFile(QStringLiteral("found.dbf"), input.rest());
    fuzz::writeScratchFile(QStringLiteral("found.fpt"), memo);
    try {
        std::unique_ptr<dbf::DbfTableFile> table = dbf::DbfTableFile::open(path);
        table->readAll(QStringLiteral("found"));
        table->close();
    } catch (const Error&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    if (input.byte() == 'F')
        openFound(input);
    else
        writeAndReadBack(input);
    return 0;
}
