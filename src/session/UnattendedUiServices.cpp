#include "session/UnattendedUiServices.h"

#include <QCoreApplication>
#include <QThread>

namespace vx {

MessageAnswer UnattendedUiServices::messageBox(const QString& text, int style,
                                               const QString& title) {
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

std::optional<QString> UnattendedUiServices::inputBox(const QString& prompt, const QString& title,
                                                      const QString& defaultText) {
    const QString answer = m_inputs.isEmpty() ? defaultText : m_inputs.takeFirst();
    note(QStringLiteral("input \"%1\": %2 -> %3").arg(title, prompt, answer));
    return answer;
}

QString UnattendedUiServices::browseForFolder(QWidget* owner, const QString& title) {
    Q_UNUSED(owner)
    const QString folder = m_folders.isEmpty() ? QString() : m_folders.takeFirst();
    note(QStringLiteral("folder \"%1\": %2")
             .arg(title, folder.isEmpty() ? QStringLiteral("cancelled") : folder));
    return folder;
}

void UnattendedUiServices::setBusyCursor(bool busy) {
    Q_UNUSED(busy)
}

void UnattendedUiServices::processEvents() {
    QCoreApplication::processEvents();
    if (m_hook)
        m_hook();
}

void UnattendedUiServices::sleep(int milliseconds) {
    QThread::msleep(qMax(0, milliseconds));
}

bool UnattendedUiServices::shellExecute(const QString& verb, const QString& file) {
    note(QStringLiteral("%1 %2").arg(verb, file));
    m_opened << file;
    return true;
}

void UnattendedUiServices::note(const QString& line) {
    m_log << line;
    if (m_stream) {
        std::fprintf(m_stream, "  [%s]\n", qPrintable(line));
        std::fflush(m_stream);
    }
}

} // namespace vx
