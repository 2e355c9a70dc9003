#pragma once

#include <QString>
#include <VXUILib/vxuilib_export.h>
#include <memory>
#include <optional>

class QWidget;

namespace vx {

// Message box styles and answers, by the platform's numbers, so a style reads as the sum of its
// parts: Ok | Critical, YesNo | Question | DefaultButton2 ...
namespace MessageStyle {
inline constexpr int OkOnly = 0;
inline constexpr int OkCancel = 1;
inline constexpr int AbortRetryIgnore = 2;
inline constexpr int YesNoCancel = 3;
inline constexpr int YesNo = 4;
inline constexpr int RetryCancel = 5;
inline constexpr int Critical = 16;
inline constexpr int Question = 32;
inline constexpr int Exclamation = 48;
inline constexpr int Information = 64;
inline constexpr int DefaultButton2 = 256;
inline constexpr int DefaultButton3 = 512;
inline constexpr int SystemModal = 4096;
inline constexpr int Foreground = 65536;

inline constexpr int buttonsOf(int style) {
    return style & 0x7;
}
inline constexpr int iconOf(int style) {
    return style & 0x70;
}
} // namespace MessageStyle

enum class MessageAnswer { Ok = 1, Cancel = 2, Abort = 3, Retry = 4, Ignore = 5, Yes = 6, No = 7 };

// Everything that asks or tells the user goes through here, so hosts and tests can answer.
// The default implementation uses Qt dialogs; tests install a scripted one.
class VXUILIB_EXPORT UiServices {
public:
    virtual ~UiServices() = default;

    virtual MessageAnswer messageBox(const QString& text, int style, const QString& title) = 0;
    // The entered text, or nullopt when cancelled.
    virtual std::optional<QString> inputBox(const QString& prompt, const QString& title,
                                            const QString& defaultText) = 0;
    // The chosen folder, or an empty text when cancelled.
    virtual QString browseForFolder(QWidget* owner, const QString& title) = 0;
    virtual void setBusyCursor(bool busy) = 0;
    // Lets the event loop run once (waiting for a modeless dialog, a file to appear ...).
    virtual void processEvents() = 0;
    virtual void sleep(int milliseconds) = 0;
    // "open" or "print" with the desktop's program for the file; false when that failed.
    virtual bool shellExecute(const QString& verb, const QString& file) = 0;
};

// The services of the calling thread: the Qt dialogs unless something else was installed.
VXUILIB_EXPORT UiServices& ui();
// Installs services for the calling thread; returns the previous ones (null for the default).
VXUILIB_EXPORT std::unique_ptr<UiServices> installUiServices(std::unique_ptr<UiServices> services);

// Shows the busy cursor for its lifetime.
class BusyCursor {
public:
    BusyCursor() { ui().setBusyCursor(true); }
    ~BusyCursor() { ui().setBusyCursor(false); }
    BusyCursor(const BusyCursor&) = delete;
    BusyCursor& operator=(const BusyCursor&) = delete;
};

} // namespace vx
