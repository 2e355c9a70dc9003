#include "companions/DefaultCompanions.h"
#include "data/Error.h"
#include "server/ControlFactory.h"
#include "server/TypeLibrary.h"

#include <QCoreApplication>
#include <QStringList>
#include <QTextStream>
#include <cstdio>

// vxtypelib [CLASS ...]: every control's interface, or only those named ("VXIndex" or
// "VXUILib.VXIndex").
int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.contains(QStringLiteral("--help")) || arguments.contains(QStringLiteral("-h"))) {
        std::printf("Usage: vxtypelib [CLASS ...]\n"
                    "Prints the dispatch interface (properties and methods in dispatch order) and "
                    "the events of\nthe library's controls, or of the named ones only.\n");
        return 0;
    }
    vx::registerDefaultCompanions();
    vx::registerLibraryControls();
    QTextStream out(stdout);
    try {
        if (arguments.isEmpty()) {
            out << vx::typeLibraryText();
            return 0;
        }
        for (const QString& name : std::as_const(arguments))
            out << vx::typeLibraryText(name) << '\n';
    } catch (const vx::Error& error) {
        out.flush();
        std::fprintf(stderr, "vxtypelib: %s\n", qPrintable(error.description()));
        return 1;
    }
    return 0;
}
