#include "core/SampleBuilder.h"

#include "core/GroupInstaller.h"
#include "core/Repository.h"
#include "core/RepositorySchema.h"
#include "core/SampleContent.h"
#include "core/ViewerFiles.h"
#include "data/Driver.h"
#include "data/Error.h"
#include "session/IdCounter.h"
#include "session/PrivateProfile.h"
#include "session/Schema.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTimeZone>
#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace vx::repo {
namespace {

using sample::Document;

// Sizes of the files written for each file slot, so file rows can state them.
struct FileSizes {
    std::vector<qint32> main;
    std::vector<qint32> attachment;
    std::vector<std::array<qint32, 3>> revision;
};

qint32 writeFile(const QString& path, const QByteArray& content, const QDateTime& modified) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly) ||
        file.write(content) != content.size())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot write %1: %2").arg(path, file.errorString()));
    file.setFileTime(modified, QFileDevice::FileModificationTime);
    return qint32(content.size());
}

FileSizes writeDocumentFiles(const QString& folder, qint32 fileSlots, SampleCounts& counts) {
    FileSizes sizes;
    sizes.main.resize(std::size_t(fileSlots) + 1);
    sizes.attachment.resize(std::size_t(fileSlots) + 1);
    sizes.revision.resize(std::size_t(fileSlots) + 1);
    for (qint32 slot = 1; slot <= fileSlots; ++slot) {
        const Document d = sample::document(slot, fileSlots);
        sizes.main[slot] = writeFile(folder + u'/' + sample::mainFileName(slot),
                                     sample::mainFileContent(d), d.indexed);
        ++counts.filesOnDisk;
        if (d.attachment) {
            sizes.attachment[slot] = writeFile(folder + u'/' + sample::attachmentFileName(slot),
                                               sample::attachmentFileContent(d), d.indexed);
            ++counts.filesOnDisk;
        }
        for (int version = 1; version <= d.versions; ++version) {
            sizes.revision[slot][version] =
                writeFile(folder + u'/' + sample::revisionFileName(slot, version),
                          sample::revisionFileContent(d, version), d.indexed.addDays(-7));
            ++counts.filesOnDisk;
        }
    }
    return sizes;
}

QVariant flag(bool value) {
    return value ? -1 : 0;
}
QVariant textOrNull(const QString& value) {
    return value.isEmpty() ? QVariant() : value;
}

// The rows of one document, through the driver's cached insert statements.
class DocumentWriter {
public:
    DocumentWriter(Driver& driver, const FileSizes& sizes, qint32 groupId, SampleCounts& counts)
        : m_driver(driver)
        , m_sizes(sizes)
        , m_groupId(groupId)
        , m_counts(counts) {}

    void write(const Document& d) {
        m_driver.insertRow(table::Item, m_itemColumns,
                           {d.itemId, d.indexed, d.userName, 1, d.description, m_groupId, 0,
                            QStringLiteral(" "), flag(d.attachment), flag(d.deleted)},
                           QString());
        m_driver.insertRow(sample::GroupName, m_groupColumns,
                           {d.itemId, d.invoiceNo, d.customer, d.status, d.amount,
                            QDateTime(d.invoiceDate, QTime(0, 0), Qt::UTC), flag(d.paid),
                            d.categories, textOrNull(d.notes)},
                           QString());
        ++m_counts.documents;
        m_counts.deletedDocuments += d.deleted ? 1 : 0;
        writeFile(d, sample::mainFileName(d.fileSlot), m_sizes.main[d.fileSlot]);
        if (d.attachment)
            writeFile(d, sample::attachmentFileName(d.fileSlot), m_sizes.attachment[d.fileSlot]);
        for (const QString& keyword : d.keywords) {
            m_driver.insertRow(table::Keywords, m_keywordColumns, {keyword, d.itemId}, QString());
            ++m_counts.keywords;
        }
        for (int version = 1; version <= d.versions; ++version) {
            m_driver.insertRow(table::Revision, m_revisionColumns,
                               {d.itemId, version, sample::revisionFileName(d.fileSlot, version),
                                d.indexed.addDays(-7 * (d.versions - version + 1)), d.volume,
                                d.userName, sample::revisionReason(d, version),
                                QStringLiteral("Version %1 of %2").arg(version).arg(d.invoiceNo)},
                               QString());
            ++m_counts.revisions;
        }
        for (qint32 userId : d.excludedUserIds) {
            m_driver.insertRow(table::Security, m_securityColumns, {d.itemId, userId}, QString());
            ++m_counts.securityRows;
        }
    }

private:
    void writeFile(const Document& d, const QString& name, qint32 size) {
        ++m_counts.fileRows;
        m_driver.insertRow(table::File, m_fileColumns,
                           {qint32(m_counts.fileRows), d.itemId, name, d.indexed, size,
                            flag(d.archived), d.volume},
                           QString());
    }

    Driver& m_driver;
    const FileSizes& m_sizes;
    qint32 m_groupId;
    SampleCounts& m_counts;
    // Kept whole so the driver finds its prepared statement for each table at once.
    const QStringList m_itemColumns =
        QStringLiteral(
            "itemid idx_date username type description groupid lockcount tag attachment deleted")
            .split(u' ');
    const QStringList m_groupColumns =
        QStringLiteral("itemid InvoiceNo Customer Status Amount InvoiceDate Paid Categories Notes")
            .split(u' ');
    const QStringList m_fileColumns =
        QStringLiteral("fileid itemid fname fdate fsize archive volume").split(u' ');
    const QStringList m_keywordColumns{QStringLiteral("keyword"), QStringLiteral("itemid")};
    const QStringList m_revisionColumns =
        QStringLiteral("itemid Version fname idx_date volume username res_desc rel_desc")
            .split(u' ');
    const QStringList m_securityColumns{QStringLiteral("itemid"), QStringLiteral("UserID")};
};

void insertList(Driver& driver, const QString& table, const QString& column,
                const QStringList& values, qint64& count) {
    for (const QString& value : values) {
        driver.insertRow(table, {column}, {value}, QString());
        ++count;
    }
}

QStringList sampleTableNames() {
    QStringList names = fixedTableNames();
    names << sample::GroupName << hintTableName(sample::GroupName, QStringLiteral("Customer"))
          << hintTableName(sample::GroupName, QStringLiteral("Categories"));
    return names;
}

// What a sample writes into DIR; none of it may be there before.
QStringList samplePaths(const QString& dir) {
    const QString group = sample::GroupName;
    return {Repository::databasePath(dir, Repository::DefaultName),
            Repository::dataLinkPath(dir, Repository::DefaultName),
            storedPath(dir + u'/' + group + QStringLiteral(".ini")),
            storedPath(dir + u'/' + group + QStringLiteral(".udl")),
            storedPath(dir + QStringLiteral("/config/") + group + QStringLiteral(".xml")),
            storedPath(dir + QStringLiteral("/config/") + group + QStringLiteral(".xqr")),
            storedPath(dir + QStringLiteral("/documents/") + group),
            storedPath(dir + u'/' + ViewerFolderName)};
}

void removeSample(const QString& dir, bool folderExisted) {
    if (!folderExisted) {
        QDir(dir).removeRecursively();
        return;
    }
    const QStringList paths = samplePaths(dir);
    for (const QString& path : paths) {
        if (QFileInfo(path).isDir())
            QDir(path).removeRecursively();
        else
            QFile::remove(path);
    }
    for (const QString& suffix : {QStringLiteral("-wal"), QStringLiteral("-shm"),
                                  QStringLiteral("-journal"), QStringLiteral("-gate")})
        QFile::remove(paths.first() + suffix);
    QDir(dir).rmdir(QStringLiteral("config"));
    QDir(dir).rmdir(QStringLiteral("documents"));
}

} // namespace

SampleResult createSample(const QString& dir, const SampleOptions& options) {
    if (options.documents < 1 || options.documents > SampleDocumentLimit)
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("A sample holds 1 to %1 documents.").arg(SampleDocumentLimit));
    if (options.filesOnDiskLimit < 1)
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("A sample needs at least one document file on disk."));
    SampleResult result;
    result.dir = storedPath(dir);
    for (const QString& path : samplePaths(result.dir)) {
        if (QFileInfo::exists(path))
            throw Error(ErrorNumber::Unspecified,
                        QStringLiteral("%1 already exists; a sample is made only where none is. "
                                       "Choose another folder.")
                            .arg(path));
    }
    const bool folderExisted = QFileInfo::exists(result.dir);

    std::optional<Repository> created;
    try {
        created.emplace(Repository::create(result.dir, Repository::DefaultName, options.server));
        Repository& repository = *created;
        GroupSetup setup;
        setup.name = sample::GroupName;
        setup.library = sample::LibraryName;
        setup.description = QStringLiteral("Sample invoices");
        const FormDocument form = FormDocument::fromFields(sample::GroupName, sample::fields());
        const InstalledGroup group = installGroup(repository, setup, form);

        result.databasePath = repository.isOnServer()
                                  ? Repository::describeServer(repository.initString())
                                  : Repository::databasePath(result.dir, Repository::DefaultName);
        result.initFilePath = group.initFilePath;
        result.dataLinkPath = group.dataLinkPath;
        result.formPath = group.formPath;
        result.queryFormPath = group.queryFormPath;
        result.documentFolder = group.documentFolder;
        result.groupId = group.groupId;

        SampleCounts& counts = result.counts;
        const qint32 fileSlots = std::min(options.documents, options.filesOnDiskLimit);
        const FileSizes sizes = writeDocumentFiles(group.documentFolder, fileSlots, counts);
        writeViewerFiles(result.dir);

        Connection& connection = repository.connection();
        Driver& driver = connection.driver();
        Transaction transaction(connection);
        // The list field's pick list, under the name the portable export copies it from.
        const QList<FormField> fields = sample::fields();
        const FormField categories = *std::find_if(
            fields.begin(), fields.end(), [](auto& f) { return f.type == FieldType::List; });
        connection.execute(hintTableStatement(sample::GroupName, categories));
        for (qsizetype i = 0; i < sample::userNames().size(); ++i) {
            driver.insertRow(table::Users, {QStringLiteral("UserID"), QStringLiteral("UserName")},
                             {qint32(i + 1), sample::userNames()[i]}, QString());
            ++counts.users;
        }
        insertList(driver, table::Dictionary, QStringLiteral("words"), sample::dictionaryWords(),
                   counts.words);
        insertList(driver, hintTableName(sample::GroupName, QStringLiteral("Customer")),
                   QStringLiteral("Customer"), sample::customers(), counts.customerHints);
        insertList(driver, hintTableName(sample::GroupName, categories.columnName),
                   categories.columnName, sample::categories(), counts.categoryHints);
        DocumentWriter writer(driver, sizes, group.groupId, counts);
        for (qint32 id = 1; id <= options.documents; ++id) {
            writer.write(sample::document(id, fileSlots));
            if (options.progress && id % 100'000 == 0)
                options.progress(id);
        }
        counts.paths = repository.count(table::Path);
        // Filings continue after the sample's own ids.
        IdCounter::catchUp(connection);
        transaction.commit();
    } catch (...) {
        // A database on a server outlives the folder: take back the tables made here (only
        // once created, so a database that already held some is never touched).
        if (created && created->isOnServer())
            created->dropTablesQuietly(sampleTableNames());
        created.reset();
        removeSample(result.dir, folderExisted);
        throw;
    }

    if (!options.catalogPath.isEmpty()) {
        QDir().mkpath(QFileInfo(options.catalogPath).path());
        writePrivateProfileString(options.catalogPath, sample::LibraryName, sample::GroupName,
                                  result.initFilePath);
        result.catalogPath = options.catalogPath;
    }
    return result;
}

QString sampleSummary(const SampleResult& r) {
    const SampleCounts& c = r.counts;
    QString text;
    text += QStringLiteral("Sample repository created in %1\n").arg(r.dir);
    text += QStringLiteral("  database:    %1\n").arg(r.databasePath);
    text += QStringLiteral("  group:       %1 (library %2, group id %3)\n")
                .arg(sample::GroupName, sample::LibraryName)
                .arg(r.groupId);
    text += QStringLiteral("  init file:   %1\n  data link:   %2\n")
                .arg(r.initFilePath, r.dataLinkPath);
    text +=
        QStringLiteral("  forms:       %1\n               %2\n").arg(r.formPath, r.queryFormPath);
    text += QStringLiteral("  documents:   %1 (%2 marked deleted), %3 file rows, %4 files in %5\n")
                .arg(c.documents)
                .arg(c.deletedDocuments)
                .arg(c.fileRows)
                .arg(c.filesOnDisk)
                .arg(r.documentFolder);
    text += QStringLiteral("  rows:        %1 users, %2 dictionary words, %3 keywords, %4 "
                           "revisions, %5 security rows, %6 paths\n")
                .arg(c.users)
                .arg(c.words)
                .arg(c.keywords)
                .arg(c.revisions)
                .arg(c.securityRows)
                .arg(c.paths);
    text += QStringLiteral("  hint tables: %1 (%2 rows), %3 (%4 rows)\n")
                .arg(hintTableName(sample::GroupName, QStringLiteral("Customer")))
                .arg(c.customerHints)
                .arg(hintTableName(sample::GroupName, QStringLiteral("Categories")))
                .arg(c.categoryHints);
    if (!r.catalogPath.isEmpty())
        text += QStringLiteral("  catalog:     %1 lists [%2] %3\n")
                    .arg(r.catalogPath, sample::LibraryName, sample::GroupName);
    return text;
}

} // namespace vx::repo
