#include "core/CommandLine.h"
#include "session/SystemFolder.h"

#include <QCoreApplication>

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    const int code = vx::repo::runRepositoryTool(arguments, out, err, vx::libraryCatalogPath());
    out.flush();
    err.flush();
    return code;
}
