#pragma once

#include <QString>
#include <VXUILib/vxuilib_export.h>
#include <memory>
#include <optional>

class QWidget;

namespace vx {

/// Message box styles and answers, by the platform's numbers, so a style reads as the sum of its
/// parts: Ok | Critical, YesNo | Question | DefaultButton2 ...
namespace MessageStyle {
inline constexpr int OkOnly = 0;           ///< An OK button.
inline constexpr int OkCancel = 1;         ///< OK and Cancel buttons.
inline constexpr int AbortRetryIgnore = 2; ///< Abort, Retry and Ignore buttons.
inline constexpr int YesNoCancel = 3;      ///< Yes, No and Cancel buttons.
inline constexpr int YesNo = 4;            ///< Yes and No buttons.
inline constexpr int RetryCancel = 5;      ///< Retry and Cancel buttons.
inline constexpr int Critical = 16;        ///< The critical-error icon.
inline constexpr int Question = 32;        ///< The question icon.
inline constexpr int Exclamation = 48;     ///< The warning icon.
inline constexpr int Information = 64;     ///< The information icon.
inline constexpr int DefaultButton2 = 256; ///< The second button is the default.
inline constexpr int DefaultButton3 = 512; ///< The third button is the default.
inline constexpr int SystemModal = 4096;   ///< Blocks every window until answered.
inline constexpr int Foreground = 65536;   ///< Brought to the front.

/// The button part of a style (OkOnly ... RetryCancel).
inline constexpr int buttonsOf(int style) {
    return style & 0x7;
}
/// The icon part of a style (0, Critical, Question, Exclamation or Information).
inline constexpr int iconOf(int style) {
    return style & 0x70;
}
} // namespace MessageStyle

/// The button that answered a message box, by the platform's numbers.
enum class MessageAnswer {
    Ok = 1,     ///< OK.
    Cancel = 2, ///< Cancel, or the box was closed.
    Abort = 3,  ///< Abort.
    Retry = 4,  ///< Retry.
    Ignore = 5, ///< Ignore.
    Yes = 6,    ///< Yes.
    No = 7      ///< No.
};

/// Everything that asks or tells the user goes through here, so hosts and tests can answer.
/// The default implementation uses Qt dialogs; tests install a scripted one.
class VXUILIB_EXPORT UiServices {
public:
    virtual ~UiServices() = default;

    /// Shows a message with the buttons and icon of `style` (MessageStyle) and returns the
    /// button chosen.
    virtual MessageAnswer messageBox(const QString& text, int style, const QString& title) = 0;
    /// The entered text, or nullopt when cancelled.
    virtual std::optional<QString> inputBox(const QString& prompt, const QString& title,
                                            const QString& defaultText) = 0;
    /// The chosen folder, or an empty text when cancelled.
    virtual QString browseForFolder(QWidget* owner, const QString& title) = 0;
    /// Shows (true) or takes away (false) the busy cursor; calls nest.
    virtual void setBusyCursor(bool busy) = 0;
    /// Lets the event loop run once (waiting for a modeless dialog, a file to appear ...).
    virtual void processEvents() = 0;
    /// Waits before the next attempt of something that is still in progress.
    virtual void sleep(int milliseconds) = 0;
    /// "open" or "print" with the desktop's program for the file; false when that failed.
    virtual bool shellExecute(const QString& verb, const QString& file) = 0;
};

/// The services of the calling thread: the Qt dialogs unless something else was installed.
VXUILIB_EXPORT UiServices& ui();
/// Installs services for the calling thread; returns the previous ones (null for the default).
VXUILIB_EXPORT std::unique_ptr<UiServices> installUiServices(std::unique_ptr<UiServices> services);

/// Shows the busy cursor for its lifetime.
class BusyCursor {
public:
    BusyCursor() { ui().setBusyCursor(true); }
    ~BusyCursor() { ui().setBusyCursor(false); }
    BusyCursor(const BusyCursor&) = delete;
    BusyCursor& operator=(const BusyCursor&) = delete;
};

} // namespace vx
