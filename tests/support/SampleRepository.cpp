#include "support/SampleRepository.h"

#include "core/Repository.h"
#include "core/RepositoryRelocation.h"
#include "session/PrivateProfile.h"
#include "session/SystemFolder.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <stdexcept>

namespace vx::test {
namespace {

// The sample every copy is made from, built on first use and removed at exit.
struct CachedSample {
    QTemporaryDir folder;
    repo::SampleResult result;

    CachedSample() {
        if (!folder.isValid())
            throw std::runtime_error("cannot make a temporary folder for the sample");
        result = repo::createSample(folder.filePath(QStringLiteral("sample")));
    }
};

const CachedSample& cachedSample() {
    static const CachedSample sample;
    return sample;
}

// A plain copy: QFile::copy goes through a synced temporary file, which costs a disk flush per
// file, several seconds for a sample.
bool copyFile(const QString& from, const QString& to) {
    QFile source(from);
    QFile target(to);
    if (!source.open(QIODevice::ReadOnly) ||
        !target.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        return false;
    const QByteArray content = source.readAll();
    return target.write(content) == content.size();
}

void copyFolder(const QString& from, const QString& to) {
    QDir().mkpath(to);
    QDirIterator it(from, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                    QDirIterator::Subdirectories);
    const QDir source(from);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString target = to + u'/' + source.relativeFilePath(path);
        const bool copied = it.fileInfo().isDir() ? QDir().mkpath(target) : copyFile(path, target);
        if (!copied)
            throw std::runtime_error("cannot copy the sample: " + target.toStdString());
    }
}

} // namespace

SampleRepository::SampleRepository() {
    const CachedSample& cached = cachedSample();
    if (!m_folder.isValid())
        throw std::runtime_error("cannot make a temporary folder for a sample copy");
    copyFolder(cached.result.dir, dir());
    repo::relocateRepository(dir(), cached.result.dir);
    if (!qEnvironmentVariableIsEmpty("VXUILIB_SYSTEM_DIR"))
        registerInCatalog(libraryCatalogPath());
}

SampleRepository::~SampleRepository() = default;

QString SampleRepository::path(const QString& relative) const {
    return repo::storedPath(m_folder.path() + u'/' + relative);
}

QString SampleRepository::dir() const {
    return repo::storedPath(m_folder.path());
}
QString SampleRepository::initFilePath() const {
    return path(GroupName + ".ini");
}
QString SampleRepository::dataLinkPath() const {
    return path(GroupName + ".udl");
}
QString SampleRepository::databasePath() const {
    return path(QStringLiteral("repository.db"));
}

QString SampleRepository::formDefinitionPath() const {
    return path(QStringLiteral("config/") + GroupName + ".xml");
}

QString SampleRepository::queryFormPath() const {
    return path(QStringLiteral("config/") + GroupName + ".xqr");
}

QString SampleRepository::documentFolder() const {
    return path(QStringLiteral("documents/") + GroupName);
}

QString SampleRepository::connectionText() const {
    return QStringLiteral("File Name=") + dataLinkPath();
}

qint32 SampleRepository::groupId() const {
    return cachedSample().result.groupId;
}

const repo::SampleCounts& SampleRepository::expected() const {
    return cachedSample().result.counts;
}

void SampleRepository::registerInCatalog(const QString& catalogPath) const {
    QDir().mkpath(QFileInfo(catalogPath).path());
    writePrivateProfileString(catalogPath, LibraryName, GroupName, initFilePath());
}

} // namespace vx::test
