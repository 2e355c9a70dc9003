#include "TourUiServices.h"

#include <QCoreApplication>
#include <QThread>
#include <cstdio>

namespace vx::demo {

MessageAnswer TourUiServices::messageBox(const QString& text, int style, const QString& title) {
    note(QStringLiteral("message \"%1\": %2").arg(title, QString(text).replace(u'\n', u' ')));
    switch (MessageStyle::buttonsOf(style)) {
    case MessageStyle::AbortRetryIgnore:
        return MessageAnswer::Abort;
    case MessageStyle::YesNoCancel:
    case MessageStyle::YesNo:
        return MessageAnswer::Yes;
    case MessageStyle::RetryCancel:
        return MessageAnswer::Retry;
    default:
        return MessageAnswer::Ok;
    }
}

std::optional<QString> TourUiServices::inputBox(const QString& prompt, const QString& title,
                                                const QString& defaultText) {
    const QString answer = m_inputs.isEmpty() ? defaultText : m_inputs.takeFirst();
    note(QStringLiteral("input \"%1\": %2 -> %3").arg(title, prompt, answer));
    return answer;
}

QString TourUiServices::browseForFolder(QWidget* owner, const QString& title) {
    Q_UNUSED(owner)
    const QString folder = m_folders.isEmpty() ? QString() : m_folders.takeFirst();
    note(QStringLiteral("folder \"%1\": %2")
             .arg(title, folder.isEmpty() ? QStringLiteral("cancelled") : folder));
    return folder;
}

void TourUiServices::setBusyCursor(bool busy) {
    Q_UNUSED(busy)
}

void TourUiServices::processEvents() {
    QCoreApplication::processEvents();
    if (m_processEventsHook)
        m_processEventsHook();
}

void TourUiServices::sleep(int milliseconds) {
    QThread::msleep(qMax(0, milliseconds));
}

bool TourUiServices::shellExecute(const QString& verb, const QString& file) {
    note(QStringLiteral("%1 %2").arg(verb, file));
    return true;
}

void TourUiServices::note(const QString& line) {
    m_log << line;
    std::printf("  [%s]\n", qPrintable(line));
    std::fflush(stdout);
}

} // namespace vx::demo
