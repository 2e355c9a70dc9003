#include "session/QtUiServices.h"

#include "session/Settings.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontMetrics>
#include <QGridLayout>
#include <QInputDialog>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QSpacerItem>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>
#include <QUrl>
#include <utility>
#include <vector>

#ifdef Q_OS_WIN
#include <shellapi.h>
#include <windows.h>
#endif

namespace vx {
namespace {

QString titleOrDefault(const QString& title) {
    return title.isEmpty() ? applicationTitle() : title;
}

std::vector<std::pair<QMessageBox::StandardButton, MessageAnswer>> buttonsFor(int style) {
    using B = QMessageBox;
    switch (MessageStyle::buttonsOf(style)) {
    case MessageStyle::OkCancel:
        return {{B::Ok, MessageAnswer::Ok}, {B::Cancel, MessageAnswer::Cancel}};
    case MessageStyle::AbortRetryIgnore:
        return {{B::Abort, MessageAnswer::Abort},
                {B::Retry, MessageAnswer::Retry},
                {B::Ignore, MessageAnswer::Ignore}};
    case MessageStyle::YesNoCancel:
        return {{B::Yes, MessageAnswer::Yes},
                {B::No, MessageAnswer::No},
                {B::Cancel, MessageAnswer::Cancel}};
    case MessageStyle::YesNo:
        return {{B::Yes, MessageAnswer::Yes}, {B::No, MessageAnswer::No}};
    case MessageStyle::RetryCancel:
        return {{B::Retry, MessageAnswer::Retry}, {B::Cancel, MessageAnswer::Cancel}};
    default:
        return {{B::Ok, MessageAnswer::Ok}};
    }
}

QMessageBox::Icon iconFor(int style) {
    switch (MessageStyle::iconOf(style)) {
    case MessageStyle::Critical:
        return QMessageBox::Critical;
    case MessageStyle::Question:
        return QMessageBox::Question;
    case MessageStyle::Exclamation:
        return QMessageBox::Warning;
    case MessageStyle::Information:
        return QMessageBox::Information;
    default:
        return QMessageBox::NoIcon;
    }
}

// A message box sizes itself to its text only, and window managers cut a longer title short:
// give the box room for the whole title (plus the frame's buttons and icon).
void makeRoomForTitle(QMessageBox& box) {
    auto* grid = qobject_cast<QGridLayout*>(box.layout());
    if (!grid)
        return;
    const int titleWidth = QFontMetrics(QApplication::font("QMdiSubWindowTitleBar"))
                               .horizontalAdvance(box.windowTitle());
    const int wanted = titleWidth + 160;
    grid->addItem(new QSpacerItem(wanted, 0, QSizePolicy::Minimum, QSizePolicy::Minimum),
                  grid->rowCount(), 0, 1, grid->columnCount());
}

} // namespace

MessageAnswer QtUiServices::messageBox(const QString& text, int style, const QString& title) {
    QMessageBox box(iconFor(style), titleOrDefault(title), text, QMessageBox::NoButton,
                    QApplication::activeWindow());
    const auto buttons = buttonsFor(style);
    for (const auto& [button, answer] : buttons)
        box.addButton(button);
    std::size_t defaultIndex = 0;
    if (style & MessageStyle::DefaultButton3)
        defaultIndex = 2;
    else if (style & MessageStyle::DefaultButton2)
        defaultIndex = 1;
    if (defaultIndex < buttons.size())
        box.setDefaultButton(buttons[defaultIndex].first);
    // Escape answers Cancel (or No, or the only button), as the platform's boxes do.
    for (auto wanted : {QMessageBox::Cancel, QMessageBox::No, QMessageBox::Ok}) {
        if (box.button(wanted)) {
            box.setEscapeButton(wanted);
            break;
        }
    }
    if (style & (MessageStyle::SystemModal | MessageStyle::Foreground))
        box.setWindowFlag(Qt::WindowStaysOnTopHint);
    makeRoomForTitle(box);
    const auto clicked = QMessageBox::StandardButton(box.exec());
    for (const auto& [button, answer] : buttons) {
        if (button == clicked)
            return answer;
    }
    return buttons.size() == 1 ? buttons.front().second : MessageAnswer::Cancel;
}

std::optional<QString> QtUiServices::inputBox(const QString& prompt, const QString& title,
                                              const QString& defaultText) {
    bool ok = false;
    QString text = QInputDialog::getText(QApplication::activeWindow(), titleOrDefault(title),
                                         prompt, QLineEdit::Normal, defaultText, &ok);
    if (!ok)
        return std::nullopt;
    return text;
}

QString QtUiServices::browseForFolder(QWidget* owner, const QString& title) {
    return QFileDialog::getExistingDirectory(owner ? owner : QApplication::activeWindow(),
                                             titleOrDefault(title));
}

void QtUiServices::setBusyCursor(bool busy) {
    // Nested busy spans share one override cursor.
    if (busy) {
        if (m_busyDepth++ == 0)
            QApplication::setOverrideCursor(Qt::WaitCursor);
    } else if (m_busyDepth > 0) {
        if (--m_busyDepth == 0)
            QApplication::restoreOverrideCursor();
    }
}

void QtUiServices::processEvents() {
    // Callers wait in loops on this (a modeless dialog's answer, a file to appear): run the event
    // loop for a short moment so the wait sleeps in the dispatcher instead of spinning.
    QEventLoop loop;
    QTimer::singleShot(15, &loop, &QEventLoop::quit);
    loop.exec();
}

void QtUiServices::sleep(int milliseconds) {
    if (milliseconds > 0)
        QThread::msleep(static_cast<unsigned long>(milliseconds));
}

bool QtUiServices::shellExecute(const QString& verb, const QString& file) {
    if (!QFileInfo::exists(file))
        return false;
    if (verb.compare(u"open", Qt::CaseInsensitive) == 0)
        return QDesktopServices::openUrl(QUrl::fromLocalFile(file));
    if (verb.compare(u"print", Qt::CaseInsensitive) == 0) {
#ifdef Q_OS_WIN
        const auto result = reinterpret_cast<INT_PTR>(
            ShellExecuteW(nullptr, L"print", reinterpret_cast<LPCWSTR>(file.utf16()), nullptr,
                          nullptr, SW_SHOWNORMAL));
        return result > 32;
#else
        const QString lp = QStandardPaths::findExecutable(QStringLiteral("lp"));
        return !lp.isEmpty() && QProcess::startDetached(lp, {file});
#endif
    }
    return false;
}

} // namespace vx
