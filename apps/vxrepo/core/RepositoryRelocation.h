#pragma once

#include <QString>

namespace vx::repo {

// Points a repository folder that was copied from `oldDir` to `dir` at its new place: the data
// paths in its data-link files, the init files' "Group" values, the form definitions'
// groupdatalink elements and the KTPath and KTGroup paths. Paths outside oldDir stay as they are.
void relocateRepository(const QString& dir, const QString& oldDir,
                        const QString& repositoryName = QStringLiteral("repository"));

} // namespace vx::repo
