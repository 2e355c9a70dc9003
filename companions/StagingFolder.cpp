#include "companions/StagingFolder.h"

#include "data/Error.h"

#include <QRandomGenerator>

namespace vx {

namespace {
constexpr int NameAttempts = 100;
}

StagingFolder::~StagingFolder() {
    release();
}

QString StagingFolder::in(const QDir& documentFolder) {
    const QString parent = documentFolder.absolutePath();
    if (!m_path.isEmpty() && parent == m_parent && QDir(m_path).exists())
        return m_path;
    release();
    for (int attempt = 0; attempt < NameAttempts; ++attempt) {
        const QString name =
            QStringLiteral(".filing-%1")
                .arg(QRandomGenerator::global()->generate64(), 16, 16, QLatin1Char('0'));
        // mkdir fails when the name exists: the folder is this session's alone.
        if (documentFolder.mkdir(name)) {
            m_parent = parent;
            m_path = documentFolder.filePath(name);
            return m_path;
        }
        if (!documentFolder.exists(name))
            break;
    }
    throw Error(ErrorNumber::Unspecified,
                QStringLiteral("The document folder \"%1\" does not take new files.")
                    .arg(QDir::toNativeSeparators(parent)));
}

void StagingFolder::release() {
    if (!m_path.isEmpty())
        QDir().rmdir(m_path); // only when empty: a copy still in it is someone's to find
    m_path.clear();
    m_parent.clear();
}

} // namespace vx
