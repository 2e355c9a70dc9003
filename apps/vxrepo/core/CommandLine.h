#pragma once

#include <QStringList>
#include <QTextStream>

namespace vx::repo {

// Exit codes of the tool.
inline constexpr int ExitOk = 0;
inline constexpr int ExitFailed = 1;
inline constexpr int ExitUsage = 2;

// Runs one command of the repository tool: `arguments` without the program name. Reports go to
// `out`, errors and usage to `err`. `defaultCatalogPath` is the library catalog used unless
// --catalog names another.
int runRepositoryTool(const QStringList& arguments, QTextStream& out, QTextStream& err,
                      const QString& defaultCatalogPath);

QString usageText();

} // namespace vx::repo
