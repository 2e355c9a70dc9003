#pragma once

#include "core/SampleBuilder.h"

#include <QString>
#include <QTemporaryDir>

namespace vx::test {

// The engine the samples live on: SQLite files, or databases on a throw-away PostgreSQL server
// when VX_TEST_ENGINE=postgres (the control suites run on both). Read when a process makes its
// first sample; every later copy stays on that engine.
enum class SampleEngine { Sqlite, Postgres };
SampleEngine sampleEngine();

// A fresh copy of the sample repository (group "Invoices" of library "Main") in a temporary
// folder of its own, removed with the object. The sample is built once per test process and
// copied, so each test may change its copy freely.
//
// When VXUILIB_SYSTEM_DIR is set (as TestEnvironment sets it), the copy is also listed in that
// system folder's library catalog; otherwise call registerInCatalog() with a catalog path.
class SampleRepository {
public:
    SampleRepository();
    ~SampleRepository();
    SampleRepository(const SampleRepository&) = delete;
    SampleRepository& operator=(const SampleRepository&) = delete;

    static inline const QString GroupName = QStringLiteral("Invoices");
    static inline const QString LibraryName = QStringLiteral("Main");

    QString dir() const;
    QString initFilePath() const { return path(GroupName + ".ini"); }
    QString dataLinkPath() const { return path(GroupName + ".udl"); }
    QString databasePath() const { return path(QStringLiteral("repository.db")); }
    // The index and query forms, DIR/config/Invoices.xml and .xqr.
    QString formDefinitionPath() const { return path("config/" + GroupName + ".xml"); }
    QString queryFormPath() const { return path("config/" + GroupName + ".xqr"); }
    QString documentFolder() const { return path("documents/" + GroupName); }
    // "File Name=" + the group's data-link file.
    QString connectionText() const { return "File Name=" + dataLinkPath(); }
    qint32 groupId() const;

    // Rows per table of the sample as built.
    const repo::SampleCounts& expected() const;

    // Lists this copy's group in a library catalog: section "Main", key "Invoices" = init file.
    void registerInCatalog(const QString& catalogPath) const;

private:
    QString path(const QString& relative) const;

    QTemporaryDir m_folder;
};

} // namespace vx::test
