#include "data/dbf/DbfTableFile.h"

#include "data/Error.h"
#include "data/RowStore.h"
#include "data/dbf/ChunkWriter.h"
#include "data/dbf/Cp1252.h"
#include "data/dbf/DbfValues.h"
#include "data/dbf/FileWrites.h"
#include "data/dbf/FptMemoFile.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
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
    // After the file: finishes its writes before the file closes.
    ChunkWriter writer{file, [this](qint64 end) { markEnd(end); }};
    FptMemoFile memo;
    quint32 flushedCount = 0; // records handed to the writer
    quint32 durableCount = 0; // records the header counts
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
        writeOrThrow(file, position, bytes, size, QStringLiteral("table"));
    }

    qint64 endOf(quint32 records) const {
        return qint64(layout.headerLength()) + qint64(records) * layout.recordLength();
    }

    void writeCount(quint32 records) {
        char count[4];
        writeMemoBlock(count, records); // the same little-endian 32 bits
        writeAt(RecordCountOffset, count, 4);
    }

    // On the writer thread, after records up to `end` are in the file: the mark, then the count.
    void markEnd(qint64 end) {
        writeAt(end, &EndOfFile, 1);
        writeCount(quint32((end - layout.headerLength()) / layout.recordLength()));
    }

    // Hands the buffered records to the writer; flush() waits for them.
    void writeTail() {
        if (!pending.isEmpty()) {
            // The memos these records point at go first, so no record points past the memo file.
            if (layout.hasMemo())
                memo.flush();
            pending = writer.submit(endOf(flushedCount), std::move(pending));
            reserveBuffer();
        }
        flushedCount += pendingCount;
        pendingCount = 0;
    }

    bool pointsPastMemos(const char* record, quint32 memoBlocks) const {
        for (const FieldDescriptor& field : layout.fields()) {
            if (field.type == 'M' && readMemoBlock(record + field.offset) >= memoBlocks)
                return true;
        }
        return false;
    }

    // After a failed write: the files are cut back to the whole records (whose memos are whole
    // too) and their headers rewritten. Best effort; the failure itself is what gets reported.
    void recover() {
        const quint32 memoBlocks = layout.hasMemo() ? memo.recover() : 0;
        writer.settle();
        // Pieces went out in order with nothing after a failed one: every whole record in the
        // file was written, including those of a piece the system took only part of.
        const qint64 whole =
            std::max<qint64>(0, file.size() - layout.headerLength()) / layout.recordLength();
        quint32 records = quint32(std::min<qint64>(whole, flushedCount));
        if (layout.hasMemo()) {
            QByteArray record(layout.recordLength(), ' ');
            while (records > 0 && file.seek(endOf(records - 1)) &&
                   file.read(record.data(), record.size()) == record.size() &&
                   pointsPastMemos(record.constData(), memoBlocks))
                --records;
        }
        // The mark needs one byte of room: on a full disk, give up records until it fits.
        for (;;) {
            file.resize(endOf(records));
            if (writeFully(file, endOf(records), &EndOfFile, 1).isEmpty() || records == 0)
                break;
            --records;
        }
        try {
            writeCount(records);
        } catch (const Error&) {
        }
        pending.clear();
        reserveBuffer();
        pendingCount = 0;
        flushedCount = durableCount = records;
    }

    // Runs a step that writes; a failure recovers the files before it is reported.
    template <typename Step>
    void writing(Step step) {
        try {
            step();
        } catch (const Error&) {
            recover();
            throw;
        }
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
    // Unbuffered: a write the system refuses fails there and then, with its cause.
    if (!p.file.open(QIODevice::ReadWrite | QIODevice::NewOnly | QIODevice::Unbuffered))
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
    } catch (...) {
        // Nothing half-made stays behind.
        p.file.remove();
        if (layout.hasMemo())
            QFile::remove(memoPathFor(path));
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
    if (!p.file.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
        throw fileError(p.file, QStringLiteral("open"));
    const QByteArray head = p.file.read(32 * 256 + 300);
    p.layout = TableLayout::decodeHeader(head, path, &p.flushedCount);
    p.durableCount = p.flushedCount;
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
        d->writing([&] {
            try {
                if (type == QMetaType::QString)
                    block = d->memo.append(
                        QStringView(*static_cast<const QString*>(value.constData())));
                else
                    block = d->memo.append(QStringView(value.toString()));
            } catch (...) {
                d->pending.truncate(start); // this record is not appended
                throw;
            }
        });
        writeMemoBlock(record + field.offset, block);
    }
    ++d->pendingCount;
    if (d->pending.size() >= pendingLimit)
        d->writing([&] { d->writeTail(); });
}

void DbfTableFile::flush() {
    if (!d->file.isOpen())
        return;
    // Nothing new since the header was last written (also after a recovered failure).
    if (d->pendingCount == 0 && d->flushedCount == d->durableCount)
        return;
    d->writing([&] {
        d->writeTail();
        d->writer.drain();
        const QByteArray update = encodeLastUpdate(QDate::currentDate());
        d->writeAt(LastUpdateOffset, update.constData(), update.size());
        d->markEnd(d->endOf(d->flushedCount));
        d->durableCount = d->flushedCount;
    });
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

    const int recordLength = d->layout.recordLength();
    if (!d->file.seek(d->layout.headerLength()))
        throw fileError(d->file, QStringLiteral("read"));
    // A damaged header may claim more records than the file holds: read only what is there.
    const qint64 onDisk = qMax<qint64>(0, d->file.size() - d->layout.headerLength());
    const qint64 wanted = qMin(qint64(d->flushedCount), onDisk / qMax(1, recordLength));
    const QByteArray records = d->file.read(wanted * recordLength);
    const qsizetype count = records.size() / recordLength;
    rows->reserve(count);
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
