#include "operations/StoredFileName.h"

#include "session/ShownText.h"
#include "session/UiServices.h"

#include <QDir>
#include <QFileInfo>

namespace vx {

namespace {

// The longest name the usual file systems take, in bytes of the name as stored on the disk.
constexpr qsizetype MaxNameBytes = 255;

// Names Windows gives to devices whatever the folder and extension.
bool isDeviceName(const QString& name) {
    const QString stem = name.section(u'.', 0, 0).trimmed().toUpper();
    static const QStringList devices{QStringLiteral("CON"),    QStringLiteral("PRN"),
                                     QStringLiteral("AUX"),    QStringLiteral("NUL"),
                                     QStringLiteral("CONIN$"), QStringLiteral("CONOUT$")};
    if (devices.contains(stem))
        return true;
    return stem.size() == 4 &&
           (stem.startsWith(QLatin1String("COM")) || stem.startsWith(QLatin1String("LPT"))) &&
           stem.at(3) >= u'1' && stem.at(3) <= u'9';
}

} // namespace

QString storedNameProblem(const QString& name) {
    if (name.isEmpty())
        return QStringLiteral("it is empty");
    if (name == QLatin1String(".") || name == QLatin1String(".."))
        return QStringLiteral("it names a folder");
    for (const QChar c : name) {
        // Separators of every platform and drive letters, so that a name means the same
        // everywhere; control characters cannot be shown to the user anyway.
        if (c == u'/' || c == u'\\')
            return QStringLiteral("it holds a folder separator");
        if (c == u':')
            return QStringLiteral("it names a drive or stream");
        if (c.unicode() < 0x20 || (c.unicode() >= 0x7f && c.unicode() <= 0x9f))
            return QStringLiteral("it holds a control character");
    }
    if (name.toUtf8().size() > MaxNameBytes)
        return QStringLiteral("it is longer than %1 bytes").arg(MaxNameBytes);
    // Windows drops them, so the name would mean another file there.
    if (name.endsWith(u'.') || name.endsWith(u' '))
        return QStringLiteral("it ends in a dot or a space");
    if (isDeviceName(name))
        return QStringLiteral("it names a device");
    return {};
}

std::optional<QString> pathInsideFolder(const QString& folder, const QString& name) {
    if (!storedNameProblem(name).isEmpty())
        return std::nullopt;
    const QString base = QDir::cleanPath(QDir(folder).absolutePath());
    const QString path = QDir::cleanPath(base + u'/' + name);
    if (QFileInfo(path).absolutePath() != base)
        return std::nullopt;
    return path;
}

QString documentFileProblem(const QString& path) {
    const QFileInfo file(path);
    if (!file.isSymLink())
        return {};
    // A link to a file beside it (or below) stays the repository's; anything else does not.
    const QString folder = QFileInfo(file.absolutePath()).canonicalFilePath();
    const QString target = file.canonicalFilePath();
    if (target.isEmpty())
        return QStringLiteral("it is a symbolic link to nothing");
    if (folder.isEmpty() || !target.startsWith(folder + u'/'))
        return QStringLiteral("it is a symbolic link leading out of its folder");
    return {};
}

QString openingProblem(const QString& path) {
    // Types the desktops of either platform run, or hand to an interpreter, when opened.
    static const QStringList programs{
        QStringLiteral("exe"),        QStringLiteral("com"),      QStringLiteral("bat"),
        QStringLiteral("cmd"),        QStringLiteral("scr"),      QStringLiteral("pif"),
        QStringLiteral("cpl"),        QStringLiteral("msi"),      QStringLiteral("msp"),
        QStringLiteral("lnk"),        QStringLiteral("url"),      QStringLiteral("hta"),
        QStringLiteral("js"),         QStringLiteral("jse"),      QStringLiteral("vbs"),
        QStringLiteral("vbe"),        QStringLiteral("wsf"),      QStringLiteral("wsh"),
        QStringLiteral("ps1"),        QStringLiteral("psm1"),     QStringLiteral("reg"),
        QStringLiteral("jar"),        QStringLiteral("desktop"),  QStringLiteral("sh"),
        QStringLiteral("run"),        QStringLiteral("appimage"), QStringLiteral("py"),
        QStringLiteral("pl"),         QStringLiteral("command"),  QStringLiteral("app"),
        QStringLiteral("library-ms"), QStringLiteral("scf"),      QStringLiteral("inf")};
    const QFileInfo file(path);
    // Windows ignores trailing dots and blanks: "x.exe." runs as "x.exe".
    QString name = file.fileName();
    while (name.endsWith(u'.') || name.endsWith(u' '))
        name.chop(1);
    const QString suffix = name.section(u'.', -1).toLower();
    if (name.contains(u'.') && programs.contains(suffix))
        return QStringLiteral("a file of type \".%1\" runs as a program when opened").arg(suffix);
    return {};
}

bool FolderNames::claim(const QString& name) {
    const QString folded = name.normalized(QString::NormalizationForm_C).toCaseFolded();
    const auto claimed = m_byFolded.constFind(folded);
    if (claimed != m_byFolded.cend())
        return *claimed == name;
    m_byFolded.insert(folded, name);
    return true;
}

void SkippedDocuments::add(qint32 itemId, const QString& storedName, const QString& reason) {
    m_items.append({itemId, storedName, reason.isEmpty() ? storedNameProblem(storedName) : reason});
}

QString SkippedDocuments::message() const {
    QString text = QStringLiteral("These documents were skipped: their stored file names are not "
                                  "plain file names, so they would be written outside the chosen "
                                  "folder, or their files cannot be copied safely.\r\n");
    for (const Item& item : m_items) {
        text +=
            QStringLiteral("\r\nItem %1: \"%2\"").arg(item.itemId).arg(shownText(item.storedName));
        if (!item.reason.isEmpty())
            text += QStringLiteral(" (") + item.reason + u')';
    }
    return text;
}

void SkippedDocuments::report(const QString& title) const {
    if (!isEmpty())
        ui().messageBox(message(), MessageStyle::OkOnly | MessageStyle::Exclamation, title);
}

} // namespace vx
