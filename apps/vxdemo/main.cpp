#include "AppStartup.h"
#include "DemoWindow.h"
#include "HostSettings.h"
#include "Tour.h"
#include "companions/DefaultCompanions.h"
#include "core/SampleBuilder.h"
#include "data/Error.h"
#include "server/ControlFactory.h"
#include "session/Settings.h"
#include "session/UiServices.h"
#include "session/UnattendedUiServices.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <cstdio>

namespace {

QString defaultRepositoryDir() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/VXUILib/sample");
}

// The group initialisation file of the repository in dir, creating the sample there first.
QString repositoryInitFile(const QString& dir) {
    const QString existing = vx::demo::DemoWindow::initFileIn(dir);
    if (!existing.isEmpty())
        return existing;
    std::printf("Creating the sample repository in %s\n",
                qPrintable(QDir::toNativeSeparators(dir)));
    std::fflush(stdout);
    const auto result = vx::repo::createSample(dir);
    std::printf("%s\n", qPrintable(vx::repo::sampleSummary(result)));
    return result.initFilePath;
}

int runTour(const QString& outputDir, const QString& repositoryOption) {
    vx::apps::UnattendedWorkspace work;
    if (!work.isValid()) {
        std::fprintf(stderr, "vxdemo: cannot create a temporary folder for the tour\n");
        return 1;
    }
    const QString repository =
        repositoryOption.isEmpty() ? work.filePath(QStringLiteral("repository")) : repositoryOption;
    vx::demo::DemoWindow window;
    if (!window.openGroup(repositoryInitFile(repository)))
        return 1;
    vx::demo::Tour tour(window, work.ui(), QDir(outputDir).absolutePath(), work.path());
    const int saved = tour.run();
    std::printf("Saved %d screenshots in %s\n", saved,
                qPrintable(QDir::toNativeSeparators(QDir(outputDir).absolutePath())));
    for (const QString& failure : tour.failures())
        std::printf("  not done: %s\n", qPrintable(failure));
    return saved > 0 && tour.failures().isEmpty() ? 0 : 2;
}

} // namespace

int main(int argc, char** argv) {
    // The tour needs no display; otherwise, without one, say so instead of failing inside Qt.
    vx::apps::choosePlatform(argc, argv, {"--tour"});
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("vxdemo"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Sample host of the VXUILib controls, on the sample repository."));
    parser.addHelpOption();
    QCommandLineOption repositoryOption(
        QStringLiteral("repository"),
        QStringLiteral("Folder of the repository (the sample is created there on first start)."),
        QStringLiteral("DIR"));
    QCommandLineOption tourOption(
        QStringLiteral("tour"),
        QStringLiteral("Run a typical session unattended and save numbered screenshots in DIR."),
        QStringLiteral("DIR"));
    parser.addOption(repositoryOption);
    parser.addOption(tourOption);
    parser.process(app);

    vx::registerDefaultCompanions();
    vx::registerLibraryControls();
    try {
        const QString repositoryArgument = parser.isSet(repositoryOption)
                                               ? QDir::cleanPath(parser.value(repositoryOption))
                                               : QString();
        if (parser.isSet(tourOption))
            return runTour(parser.value(tourOption), repositoryArgument);

        if (!vx::apps::displayAvailable()) {
            std::printf("No display is available, so the demo window cannot open.\n"
                        "Run it in a desktop session, under xvfb-run (xvfb-run vxdemo), or run "
                        "the unattended tour:\n  vxdemo --tour DIR   (saves screenshots in DIR)\n");
            return 0;
        }
        // The last repository the user chose, else the per-user sample.
        const QString stored =
            vx::demo::hostSettings().value(QStringLiteral("Repository")).toString();
        const QString dir = !repositoryArgument.isEmpty() ? repositoryArgument
                            : !stored.isEmpty()           ? stored
                                                          : defaultRepositoryDir();
        const QString initFile = repositoryInitFile(dir);
        vx::demo::DemoWindow window;
        window.openGroup(initFile);
        window.show();
        return app.exec();
    } catch (const vx::Error& error) {
        std::fprintf(stderr, "vxdemo: %s\n", qPrintable(error.description()));
        return 1;
    }
}
