#pragma once

#include "support/ScriptedUiServices.h"

#include <QStringList>

namespace vx::test {

// A prompt as "title | text | style", so that one comparison checks all three and a failure shows
// them side by side.
inline QString promptText(const QString& title, const QString& text, int style) {
    return title + " | " + text + " | " + QString::number(style);
}

inline QString promptText(const Prompt& prompt) {
    return promptText(prompt.title, prompt.text, prompt.style);
}

// Every prompt shown so far, in order.
inline QStringList promptTexts(const ScriptedUiServices& ui) {
    QStringList texts;
    for (const Prompt& prompt : ui.prompts())
        texts << promptText(prompt);
    return texts;
}

} // namespace vx::test
