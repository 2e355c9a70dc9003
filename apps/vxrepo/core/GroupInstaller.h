#pragma once

#include "core/FormDocument.h"
#include "core/Repository.h"

#include <QString>
#include <QStringList>
#include <optional>

namespace vx::repo {

struct GroupSetup {
    QString name;
    QString library;
    QString description;
    QString documentFolder; // empty: DIR/documents/<name>
    QString catalogPath;    // the library catalog to list the group in; empty: none
};

struct InstalledGroup {
    qint32 groupId = 0;
    QString initFilePath;
    QString dataLinkPath;
    QString formPath;
    QString queryFormPath;
    QString documentFolder;
    QList<FormField> fields;
    QStringList hintTables;
};

// Adds a group to a repository: its table (itemid and one column per field), hint tables for the
// updatable combos, the KTGroup row, the group's data-link and init files, the form definitions
// in DIR/config and a line in the library catalog. Without a query form one is derived from the
// index form. Everything is checked before anything is written; on failure nothing is left.
InstalledGroup installGroup(Repository& repository, const GroupSetup& setup, FormDocument indexForm,
                            std::optional<FormDocument> queryForm = std::nullopt);

} // namespace vx::repo
