#include "companions/ReservedFile.h"

#include "data/Error.h"

#include <QByteArray>

namespace vx {

namespace {

constexpr int StoredNameLength = 20;
constexpr int MaximumSuffix = 10000;
constexpr qint64 CopyPiece = qint64(1) << 18;

QString candidateName(qint32 itemId, int attempt, const QString& extension) {
    QString base = QString::number(itemId);
    if (attempt > 0)
        base += QLatin1Char('_') + QString::number(attempt);
    QString name = base;
    if (!extension.isEmpty() && base.size() + 1 < StoredNameLength)
        name += QLatin1Char('.') + extension.left(StoredNameLength - base.size() - 1);
    return name;
}

Error copyError(const QString& source, const QString& target, const QString& reason) {
    return Error(
        ErrorNumber::Unspecified,
        QStringLiteral("The document \"%1\" cannot be copied to \"%2\": %3")
            .arg(QDir::toNativeSeparators(source), QDir::toNativeSeparators(target), reason));
}

} // namespace

ReservedFile::ReservedFile(const QDir& folder, qint32 itemId, const QString& extension) {
    for (int attempt = 0; attempt < MaximumSuffix; ++attempt) {
        const QString name = candidateName(itemId, attempt, extension);
        m_file.setFileName(folder.filePath(name));
        // NewOnly creates the file or fails when it exists, in one step.
        if (m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            m_name = name;
            return;
        }
        if (!m_file.exists())
            throw Error(
                ErrorNumber::Unspecified,
                QStringLiteral("The document folder \"%1\" does not take new files: %2")
                    .arg(QDir::toNativeSeparators(folder.absolutePath()), m_file.errorString()));
    }
    throw Error(ErrorNumber::Unspecified,
                QStringLiteral("No free name for item %1 in the document folder \"%2\".")
                    .arg(itemId)
                    .arg(QDir::toNativeSeparators(folder.absolutePath())));
}

ReservedFile::~ReservedFile() {
    if (m_kept || m_name.isEmpty())
        return;
    m_file.close();
    m_file.remove();
}

void ReservedFile::copyFrom(const QString& source) {
    QFile input(source);
    if (!input.open(QIODevice::ReadOnly))
        throw copyError(source, path(), input.errorString());
    QByteArray piece;
    piece.resize(qsizetype(std::min(CopyPiece, std::max<qint64>(input.size(), 1))));
    for (;;) {
        const qint64 read = input.read(piece.data(), piece.size());
        if (read < 0)
            throw copyError(source, path(), input.errorString());
        if (read == 0)
            break;
        if (m_file.write(piece.constData(), read) != read)
            throw copyError(source, path(), m_file.errorString());
    }
    if (!m_file.flush())
        throw copyError(source, path(), m_file.errorString());
}

void ReservedFile::keep() {
    m_kept = true;
    m_file.close();
}

} // namespace vx
