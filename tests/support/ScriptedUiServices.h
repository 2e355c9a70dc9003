#pragma once

#include "session/UiServices.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <deque>
#include <functional>
#include <optional>

namespace vx::test {

// One question or message the code under test put to the user.
struct Prompt {
    enum class Kind { MessageBox, InputBox, FolderBrowser };
    Kind kind = Kind::MessageBox;
    QString text;  // message, input prompt or browser title
    QString title; // window title (message and input boxes)
    int style = 0; // the whole message box style
    int buttons = 0;
    int icon = 0;
    QString defaultText; // input boxes
};

QString kindName(Prompt::Kind kind);

// Answers prompts from a queue filled by the test and records everything in order. A prompt with
// no answer queued fails the running test, naming the prompt, and is answered neutrally (Ok for an
// OK-only box, No for Yes/No, Cancel otherwise; a cancelled input box; no folder).
class ScriptedUiServices : public UiServices {
public:
    // Queue answers, consumed in order by prompts of the matching kind.
    ScriptedUiServices& answerMessage(MessageAnswer answer);
    ScriptedUiServices& answerInput(const QString& text);
    ScriptedUiServices& cancelInput();
    ScriptedUiServices& answerFolder(const QString& folder);
    int pendingAnswers() const { return int(m_answers.size()); }

    const QList<Prompt>& prompts() const { return m_prompts; }
    // Only the message boxes' texts, in order.
    QStringList messageTexts() const;
    std::optional<Prompt> lastPrompt() const;
    void clearPrompts() { m_prompts.clear(); }

    const QList<int>& sleeps() const { return m_sleeps; }
    const QList<std::pair<QString, QString>>& shellCalls() const { return m_shellCalls; }
    void setShellExecuteResult(bool result) { m_shellResult = result; }
    bool busy() const { return m_busyDepth > 0; }
    // Called on each processEvents(), after the real event processing: lets a test act as the
    // user of a modeless dialog the code is waiting for.
    void onProcessEvents(std::function<void()> hook) { m_processEventsHook = std::move(hook); }

    MessageAnswer messageBox(const QString& text, int style, const QString& title) override;
    std::optional<QString> inputBox(const QString& prompt, const QString& title,
                                    const QString& defaultText) override;
    QString browseForFolder(QWidget* owner, const QString& title) override;
    void setBusyCursor(bool busy) override;
    void processEvents() override;
    void sleep(int milliseconds) override;
    bool shellExecute(const QString& verb, const QString& file) override;

private:
    struct Answer {
        Prompt::Kind kind;
        MessageAnswer message = MessageAnswer::Ok;
        std::optional<QString> text;
    };
    // The next answer when it is of the prompt's kind; fails the test otherwise.
    std::optional<Answer> takeAnswer(const Prompt& prompt);

    std::deque<Answer> m_answers;
    QList<Prompt> m_prompts;
    QList<int> m_sleeps;
    QList<std::pair<QString, QString>> m_shellCalls;
    bool m_shellResult = true;
    int m_busyDepth = 0;
    std::function<void()> m_processEventsHook;
};

} // namespace vx::test
