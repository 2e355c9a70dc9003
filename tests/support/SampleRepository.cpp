#include "support/SampleRepository.h"

#include "core/Repository.h"
#include "core/RepositoryRelocation.h"
#include "data/ConnectionProperties.h"
#include "session/PrivateProfile.h"
#include "session/SystemFolder.h"
#include "support/PostgresServer.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <stdexcept>

namespace vx::test {
namespace {

// The sample every copy is made from, built on first use and removed at exit. On PostgreSQL
// its database is the template each copy's database is cloned from.
struct CachedSample {
    QTemporaryDir folder;
    repo::SampleResult result;
    QString templateDatabase;

    CachedSample() {
        if (!folder.isValid())
            throw std::runtime_error("cannot make a temporary folder for the sample");
        repo::SampleOptions options;
        if (sampleEngine() == SampleEngine::Postgres) {
            PostgresServer& server = PostgresServer::instance();
            if (!server.isRunning())
                throw std::runtime_error(
                    "the tests were asked to run on PostgreSQL, but: " +
                    (server.isAvailable() ? server.failure() : server.skipReason()).toStdString());
            options.server = server.createDatabase();
            templateDatabase = ConnectionProperties::parse(options.server).value("Database");
        }
        result = repo::createSample(folder.filePath(QStringLiteral("sample")), options);
    }
};

// Points every data-link file of a copied folder at another server database.
void retargetDataLinks(const QString& dir, const QString& database) {
    for (const QFileInfo& file : QDir(dir).entryInfoList({QStringLiteral("*.udl")}, QDir::Files)) {
        ConnectionProperties properties = readDataLinkFile(file.filePath());
        properties.set(QStringLiteral("Database"), database);
        QStringList parts;
        for (const auto& [key, value] : properties.entries())
            parts.append(key + u'=' + value);
        writeDataLinkFile(file.filePath(), parts.join(u';'));
    }
}

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

SampleEngine sampleEngine() {
    return qEnvironmentVariable("VX_TEST_ENGINE")
                       .compare(QLatin1String("postgres"), Qt::CaseInsensitive) == 0
               ? SampleEngine::Postgres
               : SampleEngine::Sqlite;
}

SampleRepository::SampleRepository() {
    const CachedSample& cached = cachedSample();
    if (!m_folder.isValid())
        throw std::runtime_error("cannot make a temporary folder for a sample copy");
    copyFolder(cached.result.dir, dir());
    if (!cached.templateDatabase.isEmpty()) {
        // The copy gets a database of its own before anything in it is touched.
        const QString copy = PostgresServer::instance().createDatabaseFrom(cached.templateDatabase);
        if (copy.isEmpty())
            throw std::runtime_error("cannot copy the sample database: " +
                                     PostgresServer::instance().failure().toStdString());
        retargetDataLinks(dir(), ConnectionProperties::parse(copy).value("Database"));
    }
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
