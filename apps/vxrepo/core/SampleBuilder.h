#pragma once

#include <QString>
#include <functional>

namespace vx::repo {

// Above this many documents the file rows share the first documents' files on disk.
inline constexpr qint32 SampleFilesOnDiskLimit = 500;
// Stored file names carry seven digits of the item id.
inline constexpr qint32 SampleDocumentLimit = 9'999'999;

struct SampleOptions {
    qint32 documents = 300;
    // How many documents get files of their own on disk; the others' file rows name those
    // files again. Raise it to the document count for a file per document.
    qint32 filesOnDiskLimit = SampleFilesOnDiskLimit;
    // A PostgreSQL server for the database (see Repository::create); empty: SQLite in DIR.
    QString server;
    // The library catalog to list the sample's group in; empty: none.
    QString catalogPath;
    // Called now and then while documents are written, with the number written so far.
    std::function<void(qint32)> progress;
};

// Rows per table as written (and, for files, what lies on disk).
struct SampleCounts {
    qint64 documents = 0;
    qint64 deletedDocuments = 0;
    qint64 fileRows = 0;
    qint64 filesOnDisk = 0;
    qint64 users = 0;
    qint64 words = 0;
    qint64 keywords = 0;
    qint64 revisions = 0;
    qint64 securityRows = 0;
    qint64 paths = 0;
    qint64 customerHints = 0;
    qint64 categoryHints = 0;
};

struct SampleResult {
    QString dir;
    QString databasePath;
    QString initFilePath;
    QString dataLinkPath;
    QString formPath;
    QString queryFormPath;
    QString documentFolder;
    QString catalogPath;
    qint32 groupId = 0;
    SampleCounts counts;
};

// A complete sample in DIR: repository, group "Invoices" of library "Main", users, dictionary,
// keywords, hint tables, revisions, security rows and document files, all the same on every run.
// Refuses a folder that already holds any part of one; leaves nothing behind when it fails.
SampleResult createSample(const QString& dir, const SampleOptions& options = {});

// What was made, for people.
QString sampleSummary(const SampleResult& result);

} // namespace vx::repo
