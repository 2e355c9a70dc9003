#include "AppStartup.h"
#include "HitPrinter.h"
#include "SampleExport.h"
#include "ViewerTour.h"
#include "ViewerWindow.h"
#include "companions/DefaultCompanions.h"
#include "data/Error.h"
#include "server/ControlFactory.h"
#include "session/Settings.h"
#include "session/UiServices.h"
#include "session/UnattendedUiServices.h"

#include <QApplication>
#include <QDir>
#include <QStandardPaths>
#include <QTextStream>
#include <cstdio>

namespace {

const char* const Usage =
    "Usage: vxviewer [FOLDER]\n"
    "       vxviewer --print-hits FOLDER [COLUMN=VALUE ...] [--keyword WORD ...]\n"
    "       vxviewer --tour DIR [FOLDER]\n"
    "\n"
    "Opens a portable export read-only: FOLDER is a volume folder (holding veltrane.znl,\n"
    "veltrane.xqr and Document) or an export folder (holding ReadMe.txt and volume folders).\n"
    "--print-hits prints the item ids the search finds, sorted, one a line.\n"
    "--tour saves screenshots of opening an export, searching it and opening a document in DIR\n"
    "(without FOLDER it exports the repository tool's sample first).\n";

// What the viewer keeps about exports (favourites, found volumes); never inside an export.
QString stateRoot() {
    const QString given = qEnvironmentVariable("VXVIEWER_STATE_DIR");
    if (!given.isEmpty())
        return given;
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/VXUILib/vxviewer");
}

int runTour(const QStringList& arguments) {
    if (arguments.isEmpty()) {
        std::fprintf(stderr, "vxviewer: --tour needs the folder for the screenshots.\n%s", Usage);
        return 2;
    }
    vx::apps::UnattendedWorkspace work;
    if (!work.isValid()) {
        std::fprintf(stderr, "vxviewer: cannot create a temporary folder for the tour\n");
        return 1;
    }

    const QString outputDir = QDir(arguments.first()).absolutePath();
    QString exportFolder = arguments.size() > 1 ? arguments.at(1) : QString();
    try {
        if (exportFolder.isEmpty()) {
            std::printf("Exporting the sample repository to a folder\n");
            vx::viewer::SampleExport sample(work.ui());
            exportFolder = sample.make(work.filePath(QStringLiteral("sample")),
                                       work.filePath(QStringLiteral("export")));
        }
    } catch (const vx::Error& error) {
        std::fprintf(stderr, "vxviewer: %s\n", qPrintable(error.description()));
        return 1;
    }
    vx::viewer::ViewerWindow window(work.filePath(QStringLiteral("state")));
    vx::viewer::ViewerTour tour(window, work.ui(), outputDir);
    const int saved = tour.run(exportFolder);
    std::printf("Saved %d screenshots in %s\n", saved,
                qPrintable(QDir::toNativeSeparators(outputDir)));
    for (const QString& failure : tour.failures())
        std::printf("  not done: %s\n", qPrintable(failure));
    return saved > 0 && tour.failures().isEmpty() ? 0 : 2;
}

} // namespace

int main(int argc, char** argv) {
    vx::apps::choosePlatform(argc, argv, {"--tour", "--print-hits", "--help", "-h"});
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("vxviewer"));
    QStringList arguments = QApplication::arguments().mid(1);

    if (!arguments.isEmpty() && (arguments.first() == u"--help" || arguments.first() == u"-h")) {
        std::printf("%s", Usage);
        return 0;
    }
    vx::registerDefaultCompanions();
    vx::registerLibraryControls();

    if (!arguments.isEmpty() && arguments.first() == u"--print-hits") {
        // Whatever the controls would ask goes to the error stream, answered neutrally.
        vx::installUiServices(std::make_unique<vx::UnattendedUiServices>(stderr));
        QTextStream out(stdout);
        QTextStream err(stderr);
        return vx::viewer::printHits(arguments.mid(1), stateRoot(), out, err);
    }
    if (!arguments.isEmpty() && arguments.first() == u"--tour")
        return runTour(arguments.mid(1));
    if (arguments.size() > 1 || (!arguments.isEmpty() && arguments.first().startsWith(u'-'))) {
        std::fprintf(stderr, "%s", Usage);
        return 2;
    }
    if (!vx::apps::displayAvailable()) {
        std::printf("No display is available, so the viewer window cannot open.\n"
                    "Run it in a desktop session or under xvfb-run, or search from the command "
                    "line:\n  vxviewer --print-hits FOLDER COLUMN=VALUE\n");
        return 0;
    }
    vx::viewer::ViewerWindow window(stateRoot());
    window.show();
    if (!arguments.isEmpty())
        window.openExport(arguments.first());
    else
        QMetaObject::invokeMethod(
            &window,
            [&window] {
                // Without a folder the viewer asks for one, as its File menu does.
                if (QAction* open = window.findChild<QAction*>(QStringLiteral("openExportAction")))
                    open->trigger();
            },
            Qt::QueuedConnection);
    return app.exec();
}
