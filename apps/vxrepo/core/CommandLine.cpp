#include "core/CommandLine.h"

#include "core/FormDocument.h"
#include "core/GroupInstaller.h"
#include "core/Repository.h"
#include "core/SampleBuilder.h"
#include "data/Error.h"

#include <QElapsedTimer>
#include <QHash>
#include <QSet>
#include <optional>

namespace vx::repo {
namespace {

struct UsageError {
    QString message;
};

// "COMMAND POSITIONAL... --option value --option=value".
struct Arguments {
    QString command;
    QStringList positional;
    QHash<QString, QString> options;

    QString option(const QString& name, const QString& fallback = {}) const {
        return options.value(name, fallback);
    }
    QString required(const QString& name) const {
        const QString value = options.value(name);
        if (value.isEmpty())
            throw UsageError{QStringLiteral("%1 needs --%2.").arg(command, name)};
        return value;
    }
};

Arguments parse(const QStringList& arguments, const QSet<QString>& known) {
    Arguments parsed;
    if (arguments.isEmpty())
        throw UsageError{QStringLiteral("No command given.")};
    parsed.command = arguments.first();
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (!argument.startsWith(QLatin1String("--"))) {
            parsed.positional.append(argument);
            continue;
        }
        QString name = argument.mid(2);
        QString value;
        const qsizetype equals = name.indexOf(u'=');
        if (equals >= 0) {
            value = name.mid(equals + 1);
            name = name.left(equals);
        } else if (i + 1 < arguments.size()) {
            value = arguments[++i];
        } else {
            throw UsageError{QStringLiteral("--%1 needs a value.").arg(name)};
        }
        if (!known.contains(name))
            throw UsageError{
                QStringLiteral("%1 does not take the option --%2.").arg(parsed.command, name)};
        parsed.options.insert(name, value);
    }
    return parsed;
}

void expectPositional(const Arguments& arguments, qsizetype count, const QString& form) {
    if (arguments.positional.size() != count)
        throw UsageError{QStringLiteral("Usage: vxrepo %1").arg(form)};
}

int create(const QStringList& list, QTextStream& out) {
    const Arguments arguments = parse(list, {QStringLiteral("name"), QStringLiteral("server")});
    expectPositional(arguments, 1, QStringLiteral("create DIR [--name NAME] [--server SERVER]"));
    Repository repository = Repository::create(
        arguments.positional[0], arguments.option(QStringLiteral("name"), Repository::DefaultName),
        arguments.option(QStringLiteral("server")));
    out << "Created the repository " << repository.name() << " in " << repository.dir()
        << "\n  data link: " << repository.dataLinkPath() << "\n";
    if (repository.isOnServer())
        out << "  database:  " << Repository::describeServer(repository.initString()) << "\n";
    return ExitOk;
}

int addGroup(const QStringList& list, QTextStream& out, const QString& catalog) {
    const Arguments arguments = parse(
        list, {QStringLiteral("form"), QStringLiteral("query-form"), QStringLiteral("name"),
               QStringLiteral("library"), QStringLiteral("path"), QStringLiteral("description"),
               QStringLiteral("repository"), QStringLiteral("catalog"), QStringLiteral("server")});
    expectPositional(arguments, 1,
                     QStringLiteral("add-group DIR --form FORM.xml [--query-form FORM.xqr] "
                                    "--name GROUP --library LIB [--path DOCFOLDER]"));
    GroupSetup setup;
    setup.name = arguments.required(QStringLiteral("name"));
    setup.library = arguments.required(QStringLiteral("library"));
    setup.documentFolder = arguments.option(QStringLiteral("path"));
    setup.description = arguments.option(QStringLiteral("description"));
    setup.catalogPath = arguments.option(QStringLiteral("catalog"), catalog);
    FormDocument form = FormDocument::load(arguments.required(QStringLiteral("form")));
    std::optional<FormDocument> queryForm;
    if (arguments.options.contains(QStringLiteral("query-form")))
        queryForm = FormDocument::load(arguments.option(QStringLiteral("query-form")));
    const InstalledGroup group = [&] {
        try {
            Repository repository = Repository::open(
                arguments.positional[0],
                arguments.option(QStringLiteral("repository"), Repository::DefaultName),
                arguments.option(QStringLiteral("server")));
            return installGroup(repository, setup, std::move(form), queryForm);
        } catch (const Error& error) {
            // The engine's words alone ("disk I/O error") do not say what was being done.
            throw Error(error.number(),
                        QStringLiteral("Cannot add the group %1 to %2: %3")
                            .arg(setup.name, arguments.positional[0], error.description()),
                        error.source());
        }
    }();
    out << "Added the group " << setup.name << " (id " << group.groupId << ", library "
        << setup.library << ", " << group.fields.size() << " fields)\n"
        << "  init file: " << group.initFilePath << "\n  data link: " << group.dataLinkPath
        << "\n  forms:     " << group.formPath << "\n             " << group.queryFormPath
        << "\n  documents: " << group.documentFolder << "\n  hint tables: "
        << (group.hintTables.isEmpty() ? QStringLiteral("none")
                                       : group.hintTables.join(QStringLiteral(", ")))
        << "\n";
    if (!setup.catalogPath.isEmpty())
        out << "  catalog:   " << setup.catalogPath << "\n";
    return ExitOk;
}

int addOne(const QStringList& list, QTextStream& out) {
    const Arguments arguments =
        parse(list, {QStringLiteral("repository"), QStringLiteral("server")});
    const QString what = arguments.command.mid(4).toUpper();
    expectPositional(arguments, 2, arguments.command + QStringLiteral(" DIR ") + what);
    Repository repository =
        Repository::open(arguments.positional[0],
                         arguments.option(QStringLiteral("repository"), Repository::DefaultName),
                         arguments.option(QStringLiteral("server")));
    const QString value = arguments.positional[1];
    if (arguments.command == QLatin1String("add-user")) {
        const qint32 id = repository.addUser(value);
        out << "Added the user " << value.trimmed() << " (id " << id << ")\n";
    } else if (arguments.command == QLatin1String("add-path")) {
        repository.addPath(value);
        out << "Added the path " << storedPath(value) << "\n";
    } else {
        repository.addWord(value);
        out << "Added the word " << value.trimmed() << "\n";
    }
    return ExitOk;
}

int createSampleCommand(const QStringList& list, QTextStream& out, const QString& catalog) {
    const Arguments arguments = parse(
        list, {QStringLiteral("documents"), QStringLiteral("catalog"), QStringLiteral("server")});
    expectPositional(arguments, 1, QStringLiteral("create-sample DIR [--documents N]"));
    SampleOptions options;
    if (arguments.options.contains(QStringLiteral("documents"))) {
        bool ok = false;
        options.documents = arguments.option(QStringLiteral("documents")).toInt(&ok);
        if (!ok)
            throw UsageError{QStringLiteral("--documents needs a whole number.")};
    }
    options.catalogPath = arguments.option(QStringLiteral("catalog"), catalog);
    options.server = arguments.option(QStringLiteral("server"));
    options.progress = [&out](qint32 done) {
        out << "  " << done << " documents written\n";
        out.flush();
    };
    QElapsedTimer timer;
    timer.start();
    const SampleResult result = createSample(arguments.positional[0], options);
    out << sampleSummary(result)
        << QStringLiteral("  time:        %1 s\n").arg(double(timer.elapsed()) / 1000.0, 0, 'f', 1);
    return ExitOk;
}

} // namespace

QString usageText() {
    return QStringLiteral(
        "Usage: vxrepo COMMAND DIR [arguments]\n"
        "  create DIR [--name NAME]\n"
        "      an empty repository: DIR/NAME.db and its data-link file DIR/NAME.udl\n"
        "      (NAME defaults to \"repository\")\n"
        "  add-group DIR --form FORM.xml [--query-form FORM.xqr] --name GROUP --library LIB\n"
        "            [--path DOCFOLDER] [--description TEXT]\n"
        "      the group's table, hint tables, KTGroup row, DIR/GROUP.ini, DIR/GROUP.udl,\n"
        "      DIR/config/GROUP.xml and .xqr (derived from the index form when not given)\n"
        "      and a line in the library catalog\n"
        "  add-user DIR NAME | add-path DIR PATH | add-word DIR WORD\n"
        "      one row in KTUsers, KTPath or dictionary\n"
        "  create-sample DIR [--documents N]\n"
        "      a complete sample repository (group \"Invoices\" of library \"Main\", 300\n"
        "      documents unless told otherwise)\n"
        "Options: --repository NAME (the repository in DIR, default \"repository\"),\n"
        "         --catalog FILE (add-group, create-sample: the library catalog to write),\n"
        "         --server SERVER (every command: the database on a PostgreSQL server,\n"
        "           \"Host=...;Port=...;Database=...;User ID=...\" or a data-link file naming\n"
        "           one; documents and files still go under DIR)\n"
        "Passwords: leave Password out of --server and set PGPASSWORD or a line in\n"
        "  ~/.pgpass (mode 0600) instead: a command line is visible to every user of the\n"
        "  machine. The data-link files then carry no password either, and each user's\n"
        "  own PGPASSWORD or .pgpass supplies it. A data-link file that does hold a\n"
        "  password is written readable by its owner only.\n");
}

int runRepositoryTool(const QStringList& arguments, QTextStream& out, QTextStream& err,
                      const QString& defaultCatalogPath) {
    const QString command = arguments.value(0);
    try {
        if (command == QLatin1String("create"))
            return create(arguments, out);
        if (command == QLatin1String("add-group"))
            return addGroup(arguments, out, defaultCatalogPath);
        if (command == QLatin1String("add-user") || command == QLatin1String("add-path") ||
            command == QLatin1String("add-word"))
            return addOne(arguments, out);
        if (command == QLatin1String("create-sample"))
            return createSampleCommand(arguments, out, defaultCatalogPath);
        if (command == QLatin1String("help") || command == QLatin1String("--help")) {
            out << usageText();
            return ExitOk;
        }
        throw UsageError{command.isEmpty() ? QStringLiteral("No command given.")
                                           : QStringLiteral("Unknown command '%1'.").arg(command)};
    } catch (const UsageError& error) {
        err << "vxrepo: " << error.message << "\n" << usageText();
        return ExitUsage;
    } catch (const Error& error) {
        err << "vxrepo: " << error.description() << "\n";
        return ExitFailed;
    } catch (const std::exception& error) {
        err << "vxrepo: " << error.what() << "\n";
        return ExitFailed;
    }
}

} // namespace vx::repo
