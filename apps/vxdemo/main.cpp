#include "RepositoryBrowser.h"

#include "core/SampleBuilder.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "session/GroupConnection.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTextStream>

#include <cstdio>

namespace {

QString defaultRepositoryDir() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/VXUILib/sample");
}

bool displayAvailable() {
    const QString platform = QGuiApplication::platformName();
    return platform != u"offscreen" && platform != u"minimal";
}

void printContents(QTextStream& out, vx::Connection& connection) {
    vx::Recordset tables = connection.openSchema(vx::SchemaKind::Tables);
    for (tables.moveFirst(); !tables.eof(); tables.moveNext()) {
        if (tables.value(QStringLiteral("TABLE_TYPE")).toString() != u"TABLE")
            continue;
        const QString name = tables.value(QStringLiteral("TABLE_NAME")).toString();
        vx::Recordset count;
        count.open(QStringLiteral("select count(*) as n from [%1]").arg(name), connection);
        out << QStringLiteral("  %1 %2 rows\n").arg(name, -24).arg(count.value(0).toLongLong());
    }
}

} // namespace

int main(int argc, char** argv) {
    // Without a display the window cannot open; say so instead of failing inside Qt.
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
        qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("vxdemo"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Sample host of the VXUILib controls, on the sample repository."));
    parser.addHelpOption();
    QCommandLineOption repositoryOption(
        QStringLiteral("repository"),
        QStringLiteral("Folder of the sample repository (created on first start)."),
        QStringLiteral("DIR"), defaultRepositoryDir());
    parser.addOption(repositoryOption);
    parser.process(app);

    QTextStream out(stdout);
    const QString dir = QDir::cleanPath(parser.value(repositoryOption));
    try {
        const QString initFile = dir + QStringLiteral("/Invoices.ini");
        if (!QFileInfo::exists(initFile)) {
            out << "Creating the sample repository in " << dir << "\n";
            out.flush();
            const auto result = vx::repo::createSample(dir);
            out << vx::repo::sampleSummary(result) << "\n";
        }
        vx::Connection connection = vx::openGroupConnection(initFile);
        out << "Sample repository " << dir << "\n";
        printContents(out, connection);
        out.flush();

        if (!displayAvailable()) {
            out << "\nNo display is available, so no window opens. Run it under a desktop "
                   "session or with xvfb-run.\n";
            return 0;
        }
        vx::demo::RepositoryBrowser window(connection, dir);
        window.show();
        return app.exec();
    } catch (const vx::Error& error) {
        std::fprintf(stderr, "vxdemo: %s\n", qPrintable(error.description()));
        return 1;
    }
}
