#include "operations/StoredFileName.h"

#include "session/UiServices.h"

#include <QDir>
#include <QFileInfo>

namespace vx {

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
        if (c.unicode() < 0x20)
            return QStringLiteral("it holds a control character");
    }
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

void SkippedDocuments::add(qint32 itemId, const QString& storedName) {
    m_items.append({itemId, storedName});
}

QString SkippedDocuments::message() const {
    QString text = QStringLiteral("These documents were skipped: their stored file names are not "
                                  "plain file names, so they would be written outside the chosen "
                                  "folder.\r\n");
    for (const auto& [itemId, storedName] : m_items) {
        const QString problem = storedNameProblem(storedName);
        text += QStringLiteral("\r\nItem %1: \"%2\"").arg(itemId).arg(storedName);
        if (!problem.isEmpty())
            text += QStringLiteral(" (") + problem + u')';
    }
    return text;
}

void SkippedDocuments::report(const QString& title) const {
    if (!isEmpty())
        ui().messageBox(message(), MessageStyle::OkOnly | MessageStyle::Exclamation, title);
}

} // namespace vx
