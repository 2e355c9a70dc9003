#include "data/Error.h"
#include "data/RowAppender.h"
#include "operations/DataExportTable.h"
#include "operations/DocumentOperations.h"
#include "operations/HitListContext.h"
#include "operations/Progressbar.h"
#include "session/UiServices.h"
#include "session/companions/NativeHelpers.h"
#include "session/companions/VXDynaForm.h"

#include <QDir>
#include <QFileInfo>
#include <optional>

namespace vx {

namespace {

const QString errorTitle = QStringLiteral("Export_Data");

// Puts the process's current folder back however the export ends.
class CurrentFolderRestorer {
public:
    explicit CurrentFolderRestorer(QString folder)
        : m_folder(std::move(folder)) {}
    ~CurrentFolderRestorer() { QDir::setCurrent(m_folder); }
    CurrentFolderRestorer(const CurrentFolderRestorer&) = delete;
    CurrentFolderRestorer& operator=(const CurrentFolderRestorer&) = delete;

private:
    QString m_folder;
};

bool validateTableName(const QString& name) {
    const QChar invalid = dataexport::firstInvalidTableNameCharacter(name);
    if (invalid.isNull())
        return true;
    ui().messageBox(dataexport::invalidTableNameMessage(invalid),
                    MessageStyle::OkOnly | MessageStyle::Exclamation, QString());
    return false;
}

// Table files are found without regard to case, as the driver finds them.
bool tableFileExists(const QString& folder, const QString& name) {
    const QString wanted = name + QStringLiteral(".dbf");
    for (const QString& entry : QDir(folder).entryList(QDir::Files)) {
        if (entry.compare(wanted, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

// The table name, asked until it is valid and new; empty when the user gives none.
QString askTableName(const QString& folder, const QString& defaultName) {
    for (;;) {
        const std::optional<QString> answer =
            ui().inputBox(QStringLiteral("Please specify the name of the export table to create."),
                          QStringLiteral("Export Table"), defaultName);
        if (!answer || answer->isEmpty())
            return {};
        if (!validateTableName(*answer))
            continue;
        if (tableFileExists(folder, *answer)) {
            ui().messageBox(dataexport::fileExistsMessage(*answer),
                            MessageStyle::OkOnly | MessageStyle::Exclamation, QString());
            continue;
        }
        return *answer;
    }
}

// The first of `names` the record set has, or -1.
int firstColumn(const Recordset& rows, std::initializer_list<QString> names) {
    for (const QString& name : names) {
        const int index = rows.fieldIndex(name);
        if (index >= 0)
            return index;
    }
    return -1;
}

QVariant valueOf(const Recordset& rows, std::initializer_list<QString> names) {
    const int index = firstColumn(rows, names);
    if (index < 0)
        throw Error(ErrorNumber::ItemNotFound,
                    QStringLiteral("Item cannot be found in the collection corresponding to the "
                                   "requested name or ordinal: %1")
                        .arg(*names.begin()));
    return rows.value(index);
}

// The export table's columns: the document's fixed ones, then the form's.
QStringList exportColumnNames(const QList<dataexport::FormColumn>& columns) {
    QStringList names{QStringLiteral("itemid"),   QStringLiteral("idx_date"),
                      QStringLiteral("type_"),    QStringLiteral("fileid"),
                      QStringLiteral("filename"), QStringLiteral("fdate_"),
                      QStringLiteral("fsize_"),   QStringLiteral("disklabel")};
    for (const dataexport::FormColumn& column : columns)
        names << column.columnName;
    return names;
}

// The export row of one document from its first joined row, in exportColumnNames() order.
QVariantList documentRow(const Recordset& document, const QString& groupTable,
                         const QList<dataexport::FormColumn>& columns) {
    const QString prefix = groupTable + QStringLiteral(".");
    QVariantList row{
        valueOf(document, {prefix + QStringLiteral("itemid"), QStringLiteral("itemid")}),
        valueOf(document, {QStringLiteral("idx_date"), QStringLiteral("ktitem.idx_date")}),
        valueOf(document, {QStringLiteral("type"), QStringLiteral("ktitem.type")}),
        valueOf(document, {QStringLiteral("fileid"), QStringLiteral("ktfile.fileid")}),
        valueOf(document, {QStringLiteral("fname"), QStringLiteral("ktfile.fname")}),
        valueOf(document, {QStringLiteral("fdate"), QStringLiteral("ktfile.fdate")}),
        valueOf(document, {QStringLiteral("fsize"), QStringLiteral("ktfile.fsize")}),
        valueOf(document, {QStringLiteral("volume"), QStringLiteral("ktfile.volume")})};
    // Fields without a column in the table are left out here as in the table statement.
    for (const dataexport::FormColumn& column : columns)
        row << valueOf(document, {prefix + column.fieldName, column.fieldName});
    return row;
}

struct ExportState {
    Connection exportConnection;
    Recordset ktfile;
    Recordset document;
    std::unique_ptr<RowAppender> table;

    void closeAll() {
        table.reset(); // writes out the rows appended so far
        document.close();
        ktfile.close();
        exportConnection.close();
    }
};

} // namespace

bool exportData(HitListContext& hitList) {
    std::optional<ProgressScope> progress;
    std::optional<BusyCursor> busy;
    ExportState state;
    try {
        const QList<qint32> selection = hitList.selectionForCommand();

        QString buffer;
        const qint16 length =
            KTBrowsePath(hitList.controlWidget(), buffer,
                         QStringLiteral("Select the Location to export the Data"));
        const QString folder = buffer.left(length);
        CurrentFolderRestorer restorer(QDir::currentPath());
        if (folder.isEmpty())
            return false;

        if (!QDir::setCurrent(folder))
            throw Error(ErrorNumber::Unspecified,
                        QStringLiteral("Cannot open the folder '%1'.").arg(folder));
        // Forward-only: only the columns are wanted, and the rows are then never read.
        state.ktfile.open(QStringLiteral("ktfile"), hitList.connection(), CursorType::ForwardOnly,
                          LockType::ReadOnly, CommandType::TableDirect);
        const int fileNameColumn = state.ktfile.fieldIndex(QStringLiteral("fname"));
        if (fileNameColumn < 0)
            throw Error(ErrorNumber::ItemNotFound,
                        QStringLiteral("The table ktfile has no column fname."));
        const qint32 fileNameSize = state.ktfile.columnInfo(fileNameColumn).definedSize - 1;

        const QString tableName = askTableName(folder, hitList.groupTableName());
        if (tableName.isEmpty())
            return false;

        busy.emplace();
        progress.emplace(hitList.controlWidget(), selection.size());
        dataexport::openExportConnection(state.exportConnection, folder);

        VXDynaForm* form = hitList.form();
        if (!form)
            throw Error(ErrorNumber::Unspecified, QStringLiteral("The record form is not loaded."));
        const QList<dataexport::FormColumn> columns =
            dataexport::formColumns(*form, hitList.resultSet());
        state.exportConnection.execute(
            dataexport::createTableText(tableName, fileNameSize, columns));
        state.ktfile.close();

        const QString groupTable = hitList.groupTableName();
        state.table = state.exportConnection.appendRows(tableName, exportColumnNames(columns));
        for (qsizetype position = 0; position < selection.size(); ++position) {
            progress->setValue(position + 1);
            state.document.open(dataexport::documentQuery(groupTable, selection.at(position)),
                                hitList.connection());
            // Only the first row: the document's first file.
            if (!state.document.eof()) {
                const QVariantList row = documentRow(state.document, groupTable, columns);
                state.table->append(std::span(row.constData(), size_t(row.size())));
            }
            state.document.close();
        }
        state.table->finish();
        state.table.reset();

        state.exportConnection.close();
        progress.reset();
        busy.reset();
        return true;
    } catch (const std::exception& failure) {
        progress.reset();
        const auto* error = dynamic_cast<const Error*>(&failure);
        const QString description =
            error ? error->description() : QString::fromLocal8Bit(failure.what());
        if (!description.isEmpty())
            ui().messageBox(description, MessageStyle::OkOnly | MessageStyle::Critical, errorTitle);
        try {
            state.closeAll(); // the rows written so far stay in the table
        } catch (...) {       // already reporting the first failure
        }
        busy.reset();
        return false;
    }
}

} // namespace vx
