// A minimal host of the VXUILib controls: a search form and its results on one group.
//   minimal-host GROUP_INIT_FILE [--user NAME] [--check]
// --check opens the group, shows every document of it without a window and prints the current
// item id, for unattended builds.
#include "HostWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <VXUILib/ControlFactory.h>
#include <VXUILib/DefaultCompanions.h>
#include <VXUILib/QtUiServices.h>
#include <cstdio>

namespace {

// Unattended runs answer every question on the console instead of waiting for a click.
class ConsoleUi : public vx::QtUiServices {
public:
    vx::MessageAnswer messageBox(const QString& text, int style, const QString& title) override {
        std::fprintf(stderr, "message \"%s\": %s\n", qPrintable(title), qPrintable(text));
        const int buttons = vx::MessageStyle::buttonsOf(style);
        return buttons == vx::MessageStyle::YesNo || buttons == vx::MessageStyle::YesNoCancel
                   ? vx::MessageAnswer::No
                   : vx::MessageAnswer::Ok;
    }
    std::optional<QString> inputBox(const QString& prompt, const QString&,
                                    const QString&) override {
        std::fprintf(stderr, "input \"%s\" cancelled\n", qPrintable(prompt));
        return std::nullopt;
    }
    QString browseForFolder(QWidget*, const QString&) override { return {}; }
};

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Minimal host of the VXUILib controls."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("init-file"),
                                 QStringLiteral("The group initialisation file."));
    const QCommandLineOption userOption(QStringLiteral("user"), QStringLiteral("The user name."),
                                        QStringLiteral("NAME"), QStringLiteral("admin"));
    const QCommandLineOption checkOption(QStringLiteral("check"),
                                         QStringLiteral("Open, query and quit, without a window."));
    parser.addOption(userOption);
    parser.addOption(checkOption);
    parser.process(app);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(2);

    // Before the first control: the companions (dynamic form, indexing API, ...) and the
    // controls' classes, which the controls create their children from.
    vx::registerDefaultCompanions();
    vx::registerLibraryControls();
    if (parser.isSet(checkOption))
        vx::installUiServices(std::make_unique<ConsoleUi>());

    HostWindow window;
    if (!window.openGroup(parser.positionalArguments().constFirst(), parser.value(userOption)))
        return 1;
    if (!parser.isSet(checkOption)) {
        window.resize(900, 700);
        window.show();
        return app.exec();
    }
    const QString group = window.groupName();
    window.showEveryDocument();
    std::printf("group %s, current item %d\n", qPrintable(group), window.currentItemId());
    return window.currentItemId() > 0 ? 0 : 1;
}
