#include "TestEnvironment.h"

#include "session/FormDefinition.h"
#include "session/LibraryState.h"
#include "session/Settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace vx::test {

struct TestEnvironment::Private {
    QTemporaryDir folder;
    ScriptedUiServices* ui = nullptr; // owned by the installed services slot
    std::unique_ptr<UiServices> previousUi;
    QString previousSettingsDirectory;
    bool hadSystemDir = false;
    QByteArray previousSystemDir;
    LibraryState previousState;
};

TestEnvironment::TestEnvironment()
    : d(std::make_unique<Private>()) {
    if (!d->folder.isValid())
        ADD_FAILURE() << "Cannot create a temporary folder: "
                      << d->folder.errorString().toStdString();
    QDir(d->folder.path()).mkpath(QStringLiteral("system/zn5000"));
    QDir(d->folder.path()).mkpath(QStringLiteral("settings"));

    d->hadSystemDir = qEnvironmentVariableIsSet("VXUILIB_SYSTEM_DIR");
    d->previousSystemDir = qgetenv("VXUILIB_SYSTEM_DIR");
    qputenv("VXUILIB_SYSTEM_DIR", QFile::encodeName(systemFolder()));
    d->previousSettingsDirectory = setSettingsDirectory(settingsFolder());

    auto scripted = std::make_unique<ScriptedUiServices>();
    d->ui = scripted.get();
    d->previousUi = installUiServices(std::move(scripted));

    d->previousState = library();
    resetLibraryState();
    clearFormDefinitionCache();
}

TestEnvironment::~TestEnvironment() {
    if (d->ui->pendingAnswers() > 0)
        ADD_FAILURE() << d->ui->pendingAnswers() << " scripted answer(s) were never asked for";
    clearFormDefinitionCache();
    library() = d->previousState;
    installUiServices(std::move(d->previousUi));
    setSettingsDirectory(d->previousSettingsDirectory);
    if (d->hadSystemDir)
        qputenv("VXUILIB_SYSTEM_DIR", d->previousSystemDir);
    else
        qunsetenv("VXUILIB_SYSTEM_DIR");
}

ScriptedUiServices& TestEnvironment::ui() const {
    return *d->ui;
}

QString TestEnvironment::path() const {
    return d->folder.path();
}

QString TestEnvironment::filePath(const QString& relativePath) const {
    return d->folder.filePath(relativePath);
}

QString TestEnvironment::systemFolder() const {
    return filePath(QStringLiteral("system"));
}

QString TestEnvironment::settingsFolder() const {
    return filePath(QStringLiteral("settings"));
}

QString TestEnvironment::writeFile(const QString& relativePath, const QByteArray& contents) const {
    const QString path = filePath(relativePath);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(contents) != contents.size())
        ADD_FAILURE() << "Cannot write " << path.toStdString();
    return path;
}

} // namespace vx::test
