#pragma once

#include <QApplication>
#include <QDir>
#include <QTest>
#include <QWidget>

// With VX_SCREENSHOT_DIR set, tests save the controls they show as pictures to look at.
inline void saveScreenshot(QWidget& control, const QString& name) {
    const QString folder = qEnvironmentVariable("VX_SCREENSHOT_DIR");
    if (folder.isEmpty() || !QDir().mkpath(folder))
        return;
    control.show();
    if (QTest::qWaitForWindowExposed(&control))
        QApplication::processEvents();
    control.grab().save(QDir(folder).filePath(name + QStringLiteral(".png")));
}
