#include "data/Error.h"
#include "operations/DocumentOperations.h"
#include "operations/HitListContext.h"
#include "operations/Progressbar.h"
#include "operations/TextExportFormat.h"
#include "operations/TextFilePrinter.h"
#include "session/Conversions.h"
#include "session/UiServices.h"
#include "session/companions/NativeHelpers.h"
#include "session/companions/VXDynaForm.h"

#include <QDir>
#include <QSaveFile>

namespace vx {
namespace {

QStringList formFieldNames(VXDynaForm& form) {
    QStringList names;
    form.MoveFirstField();
    while (!form.FieldEOF()) {
        names.append(form.FieldName());
        form.MoveNextField();
    }
    return names;
}

void writeLine(QSaveFile& file, const QString& line) {
    const QByteArray bytes = line.toUtf8() + textexport::LineEnd;
    if (file.write(bytes) != bytes.size())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot write %1: %2").arg(file.fileName(), file.errorString()));
}

// Writes the text file: the header, then a line for every selected document the group table
// holds. The file replaces an older one of the same name only once it is complete.
void writeTextFile(HitListContext& hitList, const QList<qint32>& selection, const QString& path) {
    VXDynaForm* form = hitList.form();
    if (!form)
        throw Error(ErrorNumber::Unspecified, QStringLiteral("The record form is not loaded."));
    const QStringList fieldNames = formFieldNames(*form);

    ProgressScope progress(hitList.controlWidget(), selection.size());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot create %1: %2").arg(path, file.errorString()));
    writeLine(file, textexport::headerLine(fieldNames));

    const QString query = QStringLiteral("select * from ") + hitList.groupTableName() +
                          QStringLiteral(" where itemid =");
    for (qsizetype position = 0; position < selection.size(); ++position) {
        progress.setValue(position + 1);
        Recordset row;
        row.open(query + numberToText(qint64(selection.at(position))), hitList.connection());
        if (!row.eof()) {
            QList<QVariant> values;
            values.reserve(fieldNames.size());
            for (const QString& name : fieldNames)
                values.append(row.value(name));
            writeLine(file, textexport::valueLine(values));
        }
        row.close();
    }
    if (!file.commit())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot write %1: %2").arg(path, file.errorString()));
}

} // namespace

bool printData(HitListContext& hitList) {
    try {
        const QList<qint32> selection = hitList.selectionForCommand();
        QString buffer;
        const qint16 length = KTBrowsePath(hitList.controlWidget(), buffer,
                                           QStringLiteral("Select the Location to create the "
                                                          "text file"));
        if (length == 0)
            return false;
        const QString folder = buffer.left(length);

        const std::optional<QString> name = ui().inputBox(
            QStringLiteral("Please specify the name of the text file to create. (csv file)"),
            QStringLiteral("Export Table"), QString());
        if (!name || name->isEmpty())
            return false;
        const QString path = folder + QDir::separator() + *name;

        {
            BusyCursor busy;
            writeTextFile(hitList, selection, path);
        }
        if (!ui().shellExecute(QStringLiteral("open"), path))
            TextFilePrinter::print(path);
        return true;
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly, QString());
    } catch (const std::exception& error) {
        ui().messageBox(QString::fromLocal8Bit(error.what()), MessageStyle::OkOnly, QString());
    }
    return false;
}

} // namespace vx
