#pragma once

#include <VXUILib/UiServices.h>
#include <VXUILib/vxuilib_export.h>

namespace vx {

/// The services a real user sees: Qt's standard dialogs and the desktop's programs.
class VXUILIB_EXPORT QtUiServices : public UiServices {
public:
    /// \cond internal
    MessageAnswer messageBox(const QString& text, int style, const QString& title) override;
    std::optional<QString> inputBox(const QString& prompt, const QString& title,
                                    const QString& defaultText) override;
    QString browseForFolder(QWidget* owner, const QString& title) override;
    void setBusyCursor(bool busy) override;
    void processEvents() override;
    void sleep(int milliseconds) override;
    bool shellExecute(const QString& verb, const QString& file) override;
    /// \endcond

private:
    int m_busyDepth = 0;
};

} // namespace vx
