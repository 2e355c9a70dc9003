#include "ScriptedUiServices.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

namespace vx::test {

QString kindName(Prompt::Kind kind) {
    switch (kind) {
    case Prompt::Kind::MessageBox:
        return QStringLiteral("message box");
    case Prompt::Kind::InputBox:
        return QStringLiteral("input box");
    case Prompt::Kind::FolderBrowser:
        return QStringLiteral("folder browser");
    }
    return {};
}

ScriptedUiServices& ScriptedUiServices::answerMessage(MessageAnswer answer) {
    m_answers.push_back({Prompt::Kind::MessageBox, answer, std::nullopt});
    return *this;
}

ScriptedUiServices& ScriptedUiServices::answerInput(const QString& text) {
    m_answers.push_back({Prompt::Kind::InputBox, MessageAnswer::Ok, text});
    return *this;
}

ScriptedUiServices& ScriptedUiServices::cancelInput() {
    m_answers.push_back({Prompt::Kind::InputBox, MessageAnswer::Cancel, std::nullopt});
    return *this;
}

ScriptedUiServices& ScriptedUiServices::answerFolder(const QString& folder) {
    m_answers.push_back({Prompt::Kind::FolderBrowser, MessageAnswer::Ok, folder});
    return *this;
}

QStringList ScriptedUiServices::messageTexts() const {
    QStringList texts;
    for (const Prompt& prompt : m_prompts) {
        if (prompt.kind == Prompt::Kind::MessageBox)
            texts.append(prompt.text);
    }
    return texts;
}

std::optional<Prompt> ScriptedUiServices::lastPrompt() const {
    return m_prompts.isEmpty() ? std::nullopt : std::optional<Prompt>(m_prompts.back());
}

std::optional<ScriptedUiServices::Answer> ScriptedUiServices::takeAnswer(const Prompt& prompt) {
    m_prompts.append(prompt);
    if (m_answers.empty()) {
        ADD_FAILURE() << "Unexpected " << kindName(prompt.kind).toStdString() << ": \""
                      << prompt.text.toStdString() << "\" (title \"" << prompt.title.toStdString()
                      << "\")";
        return std::nullopt;
    }
    if (m_answers.front().kind != prompt.kind) {
        ADD_FAILURE() << "Expected a " << kindName(m_answers.front().kind).toStdString()
                      << " but got a " << kindName(prompt.kind).toStdString() << ": \""
                      << prompt.text.toStdString() << "\"";
        return std::nullopt;
    }
    const Answer answer = m_answers.front();
    m_answers.pop_front();
    return answer;
}

MessageAnswer ScriptedUiServices::messageBox(const QString& text, int style, const QString& title) {
    Prompt prompt;
    prompt.kind = Prompt::Kind::MessageBox;
    prompt.text = text;
    prompt.title = title;
    prompt.style = style;
    prompt.buttons = MessageStyle::buttonsOf(style);
    prompt.icon = MessageStyle::iconOf(style);
    if (const auto answer = takeAnswer(prompt))
        return answer->message;
    if (prompt.buttons == MessageStyle::OkOnly)
        return MessageAnswer::Ok;
    return prompt.buttons == MessageStyle::YesNo ? MessageAnswer::No : MessageAnswer::Cancel;
}

std::optional<QString> ScriptedUiServices::inputBox(const QString& text, const QString& title,
                                                    const QString& defaultText) {
    Prompt prompt;
    prompt.kind = Prompt::Kind::InputBox;
    prompt.text = text;
    prompt.title = title;
    prompt.defaultText = defaultText;
    const auto answer = takeAnswer(prompt);
    return answer ? answer->text : std::nullopt;
}

QString ScriptedUiServices::browseForFolder(QWidget*, const QString& title) {
    Prompt prompt;
    prompt.kind = Prompt::Kind::FolderBrowser;
    prompt.text = title;
    const auto answer = takeAnswer(prompt);
    return answer ? answer->text.value_or(QString()) : QString();
}

void ScriptedUiServices::setBusyCursor(bool busy) {
    if (busy)
        ++m_busyDepth;
    else if (m_busyDepth > 0)
        --m_busyDepth;
}

void ScriptedUiServices::processEvents() {
    QCoreApplication::processEvents();
    if (m_processEventsHook)
        m_processEventsHook();
}

void ScriptedUiServices::sleep(int milliseconds) {
    m_sleeps.append(milliseconds);
}

bool ScriptedUiServices::shellExecute(const QString& verb, const QString& file) {
    m_shellCalls.append({verb, file});
    return m_shellResult;
}

} // namespace vx::test
