#pragma once

#include "ScriptedUiServices.h"

#include <QByteArray>
#include <QString>
#include <memory>

namespace vx::test {

// Everything a test needs to run apart from the user's machine, for its lifetime: a temporary
// folder holding the system folder (VXUILIB_SYSTEM_DIR) and the settings store, the scripted UI
// installed, the library-wide values at their defaults and no cached form definitions. All of it
// is put back on destruction.
class TestEnvironment {
public:
    TestEnvironment();
    ~TestEnvironment();
    TestEnvironment(const TestEnvironment&) = delete;
    TestEnvironment& operator=(const TestEnvironment&) = delete;

    ScriptedUiServices& ui() const;
    // The temporary folder and paths inside it.
    QString path() const;
    QString filePath(const QString& relativePath) const;
    QString systemFolder() const;
    QString settingsFolder() const;

    // Writes a file (folders created), bytes as given; returns its full path.
    QString writeFile(const QString& relativePath, const QByteArray& contents) const;

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx::test
