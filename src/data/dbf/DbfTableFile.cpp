#include "data/dbf/DbfTableFile.h"

#include "data/Error.h"
#include "data/RowStore.h"
#include "data/dbf/ChunkWriter.h"
#include "data/dbf/Cp1252.h"
#include "data/dbf/DbfValues.h"
#include "data/dbf/FptMemoFile.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstring>
#include <limits>

namespace vx::dbf {

namespace {

// Pieces handed to the writer: small enough to stay in the processor's cache while they are
// filled, large enough that the system calls do not count.
constexpr qsizetype pendingLimit = 1 << 18;
constexpr char deletedMark = '*';

Error fileError(const QFile& file, const QString& what) {
    return Error(ErrorNumber::Unspecified, QStringLiteral("Cannot %1 the table '%2': %3")
                                               .arg(what, file.fileName(), file.errorString()));
}

// How a field reads back through a record set: the types the platform's ODBC layer reports.
ColumnInfo columnFor(const FieldDescriptor& field, const QString& tableName) {
    ColumnInfo column;
    column.name = field.name;
    column.baseTable = tableName;
    column.baseColumn = field.name;
    switch (field.type) {
    case 'C':
        column.type = DataType::WChar;
        column.definedSize = field.length;
        break;
    case 'N':
        column.type = DataType::Numeric;
        column.definedSize = field.length;
        break;
    case 'D':
        column.type = DataType::Date;
        column.definedSize = 8;
        break;
    case 'L':
        column.type = DataType::Boolean;
        column.definedSize = 2;
        break;
    default: // memo and types this driver only carries along
        column.type = DataType::LongVarWChar;
        column.definedSize = std::numeric_limits<qint32>::max();
        break;
    }
    return column;
}

} // namespace

struct DbfTableFile::Private {
    QString path;
    TableLayout layout;
    QFile file;
    ChunkWriter writer{file}; // after the file: finishes its writes before the file closes
    FptMemoFile memo;
    quint32 flushedCount = 0; // records on disk
    quint32 pendingCount = 0;
    QByteArray pending;
    QByteArray blankRecord; // blanks, and block 0 in memo fields

    // Room for a full buffer up front: growing it record by record costs more than the records.
    void reserveBuffer() { pending.reserve(pendingLimit + layout.recordLength()); }

    void prepare() {
        reserveBuffer();
        blankRecord = QByteArray(layout.recordLength(), ' ');
        for (const FieldDescriptor& field : layout.fields()) {
            if (field.type == 'M')
                writeMemoBlock(blankRecord.data() + field.offset, 0);
        }
    }

    void writeAt(qint64 position, const char* bytes, qsizetype size) {
        if (!file.seek(position) || file.write(bytes, size) != size)
            throw fileError(file, QStringLiteral("write"));
    }

    // Hands the buffered records to the writer; flush() waits for them.
    void writeTail() {
        const qint64 end =
            qint64(layout.headerLength()) + qint64(flushedCount) * layout.recordLength();
        if (!pending.isEmpty()) {
            pending = writer.submit(end, std::move(pending));
            reserveBuffer();
        }
        flushedCount += pendingCount;
        pendingCount = 0;
    }
};

DbfTableFile::DbfTableFile()
    : d(std::make_unique<Private>()) {}

DbfTableFile::~DbfTableFile() {
    try {
        close();
    } catch (...) { // nobody to report to while tearing down; close() reports otherwise
    }
}

QString memoPathFor(const QString& tablePath) {
    const QFileInfo info(tablePath);
    return info.dir().filePath(info.completeBaseName() + QStringLiteral(".fpt"));
}

std::unique_ptr<DbfTableFile> DbfTableFile::create(const QString& path, const TableLayout& layout) {
    std::unique_ptr<DbfTableFile> table(new DbfTableFile);
    Private& p = *table->d;
    p.path = path;
    p.layout = layout;
    p.file.setFileName(path);
    if (!p.file.open(QIODevice::ReadWrite | QIODevice::NewOnly))
        throw Error(ErrorNumber::Unspecified,
                    QFileInfo::exists(path) ? QStringLiteral("File '%1' already exists.").arg(path)
                                            : QStringLiteral("Cannot create the table '%1': %2")
                                                  .arg(path, p.file.errorString()));
    try {
        QByteArray start = layout.encodeHeader(0, QDate::currentDate());
        start += EndOfFile;
        p.writeAt(0, start.constData(), start.size());
        if (layout.hasMemo())
            p.memo.create(memoPathFor(path));
        if (!p.file.flush())
            throw fileError(p.file, QStringLiteral("write"));
    } catch (...) {
        // Nothing half-made stays behind.
        p.file.remove();
        throw;
    }
    p.prepare();
    return table;
}

std::unique_ptr<DbfTableFile> DbfTableFile::open(const QString& path) {
    std::unique_ptr<DbfTableFile> table(new DbfTableFile);
    Private& p = *table->d;
    p.path = path;
    p.file.setFileName(path);
    if (!p.file.open(QIODevice::ReadWrite))
        throw fileError(p.file, QStringLiteral("open"));
    const QByteArray head = p.file.read(32 * 256 + 300);
    p.layout = TableLayout::decodeHeader(head, path, &p.flushedCount);
    if (p.layout.hasMemo())
        p.memo.openExisting(memoPathFor(path));
    p.prepare();
    return table;
}

const QString& DbfTableFile::path() const {
    return d->path;
}

const TableLayout& DbfTableFile::layout() const {
    return d->layout;
}

quint32 DbfTableFile::recordCount() const {
    return d->flushedCount + d->pendingCount;
}

void DbfTableFile::append(const QList<int>& fields, std::span<const QVariant> values) {
    if (!d->file.isOpen())
        throw Error(ErrorNumber::ObjectClosed,
                    QStringLiteral("The table '%1' is closed.").arg(d->path));
    if (qsizetype(values.size()) != fields.size())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("Each column written needs one value."));
    const qsizetype start = d->pending.size();
    d->pending.resize(start + d->blankRecord.size());
    char* record = d->pending.data() + start;
    std::memcpy(record, d->blankRecord.constData(), size_t(d->blankRecord.size()));
    const QList<FieldDescriptor>& layoutFields = d->layout.fields();
    try {
        for (qsizetype i = 0; i < fields.size(); ++i) {
            const FieldDescriptor& field = layoutFields[fields[i]];
            if (field.type != 'M')
                writeFieldValue(record + field.offset, field, values[size_t(i)]);
        }
    } catch (...) {
        d->pending.truncate(start);
        throw;
    }
    // Memos last, once the rest of the record has converted.
    for (qsizetype i = 0; i < fields.size(); ++i) {
        const FieldDescriptor& field = layoutFields[fields[i]];
        if (field.type != 'M')
            continue;
        const QVariant& value = values[size_t(i)];
        const int type = value.typeId();
        if (type == QMetaType::UnknownType || type == QMetaType::Nullptr ||
            (type != QMetaType::QString && value.isNull()))
            continue;
        quint32 block = 0;
        if (type == QMetaType::QString)
            block = d->memo.append(QStringView(*static_cast<const QString*>(value.constData())));
        else
            block = d->memo.append(QStringView(value.toString()));
        writeMemoBlock(record + field.offset, block);
    }
    ++d->pendingCount;
    if (d->pending.size() >= pendingLimit)
        d->writeTail();
}

void DbfTableFile::flush() {
    if (!d->file.isOpen())
        return;
    d->memo.flush();
    d->writeTail();
    d->writer.drain();
    const qint64 end =
        qint64(d->layout.headerLength()) + qint64(d->flushedCount) * d->layout.recordLength();
    d->writeAt(end, &EndOfFile, 1);
    const QByteArray update = encodeLastUpdate(QDate::currentDate());
    d->writeAt(LastUpdateOffset, update.constData(), update.size());
    char count[4];
    writeMemoBlock(count, d->flushedCount); // the same little-endian 32 bits
    d->writeAt(RecordCountOffset, count, 4);
    if (!d->file.flush())
        throw fileError(d->file, QStringLiteral("write"));
}

void DbfTableFile::close() {
    if (!d->file.isOpen())
        return;
    flush();
    d->memo.close();
    d->file.close();
}

std::unique_ptr<RowStore> DbfTableFile::readAll(const QString& tableName) {
    flush();
    ColumnList columns;
    for (const FieldDescriptor& field : d->layout.fields())
        columns << columnFor(field, tableName);
    auto rows = std::make_unique<RowStore>(columns);
    rows->reserve(d->flushedCount);

    const int recordLength = d->layout.recordLength();
    if (!d->file.seek(d->layout.headerLength()))
        throw fileError(d->file, QStringLiteral("read"));
    const QByteArray records = d->file.read(qint64(d->flushedCount) * recordLength);
    const qsizetype count = records.size() / recordLength;
    for (qsizetype r = 0; r < count; ++r) {
        const char* record = records.constData() + r * recordLength;
        if (*record == deletedMark)
            continue;
        for (const FieldDescriptor& field : d->layout.fields()) {
            const QVariant value = readFieldValue(record, field);
            if (!value.isValid()) {
                rows->appendNull();
            } else if (field.type == 'M') {
                const QByteArray text = d->memo.read(value.toUInt());
                if (value.toUInt() == 0)
                    rows->appendNull();
                else
                    rows->appendText(fromCp1252(text.constData(), text.size()));
            } else if (field.type == 'N') {
                rows->appendReal(value.toDouble());
            } else if (field.type == 'D') {
                rows->appendDateTime(packDateTime(value.toDateTime()));
            } else if (field.type == 'L') {
                rows->appendInteger(value.toBool() ? -1 : 0);
            } else {
                rows->appendText(value.toString());
            }
        }
        rows->endRow();
    }
    return rows;
}

} // namespace vx::dbf
