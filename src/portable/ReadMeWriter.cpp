#include "portable/ReadMeWriter.h"

#include "data/Error.h"
#include "session/LibraryState.h"
#include "session/UiServices.h"

#include <QDir>
#include <QSaveFile>

namespace vx {

namespace {

const QString ruler = QStringLiteral("============================");

} // namespace

QStringList readMeLines(const QString& exportKind, const QString& volumeName, bool customSize) {
    const bool toCD = exportKind == QLatin1String("ExportToCD");
    QStringList lines{ruler, QStringLiteral("Veltrane Data"), ruler};
    if (!toCD)
        lines << QStringLiteral("Export To FOLDER (Full-Export)");
    else if (customSize)
        lines << QStringLiteral("Export To CD (Custom Size)");
    else
        lines << QStringLiteral("Export To CD (Fixed Size)");
    lines << QStringLiteral("~~~~~~~~~~~~~~~~") << QStringLiteral("Your Veltrane data is")
          << QStringLiteral("available in the subfolder(s) shown")
          << QStringLiteral("in this folder.");
    if (toCD) {
        lines << QString() << QStringLiteral("In order to use the exported ")
              << QStringLiteral("Veltrane data you must create each of the CD's")
              << QStringLiteral("with a volume name respective")
              << QStringLiteral("to the folder name you are copying.") << QString()
              << QStringLiteral("(ie. the data in folder ") + volumeName
              << QStringLiteral("must be copied to the ROOT of a CD")
              << QStringLiteral("with volume name ") + volumeName + QStringLiteral(", etc...)")
              << QString() << QStringLiteral("NOTE: This folder and its contents")
              << QStringLiteral("can be removed after the data is")
              << QStringLiteral("transferred to a CD.");
    } else {
        lines << QString() << QStringLiteral("Veltrane [Export To FOLDER (Full-Export)]")
              << QStringLiteral("can only be used from the drive where it has")
              << QStringLiteral("been exported.");
    }
    lines << ruler;
    return lines;
}

bool WriteReadMe(const QString& root, const QString& exportKind, const QString& volumeName) {
    try {
        const QString path = QDir(root).filePath(QStringLiteral("ReadMe.txt"));
        QSaveFile file(path);
        QByteArray text;
        for (const QString& line : readMeLines(exportKind, volumeName, library().customSize))
            text += line.toLocal8Bit() + "\r\n";
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit())
            throw Error(ErrorNumber::Unspecified,
                        QStringLiteral("Cannot write %1: %2").arg(path, file.errorString()));
        return true;
    } catch (const Error& error) {
        ui().messageBox(QStringLiteral("Error: ") + QString::number(error.number()) +
                            QStringLiteral(" - ") + error.description(),
                        MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("WriteReadMe"));
    }
    return false;
}

} // namespace vx
