#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace vx {

// The media dialog of the portable export ("pic_MediaType"): the kind of export, the medium size
// and the volume name base. Shown without blocking and always on top; it answers only through
// the library's export settings and the saved "strCDLabel", and sets ExportDialogDone however
// it closes.
class MediaDialog : public QDialog {
    Q_OBJECT
public:
    enum MediaItem { Cd650 = 0, Cd700 = 1, FullExport = 2, CustomCd = 3 };

    explicit MediaDialog(QWidget* parent = nullptr);
    ~MediaDialog() override;

    // The pick list's texts, by index.
    static QStringList mediaItems();

    // The flags of the two check boxes no operation reads.
    bool archive() const { return m_archive; }
    bool install() const { return m_installFlag; }

    // Every way of closing ends here: records the export kind and that the dialog is done.
    void done(int result) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void applyFieldRules();
    void acceptChoices();
    void refuseSize(const QString& message);

    QPushButton* m_cancel = nullptr;
    QPushButton* m_ok = nullptr;
    QCheckBox* m_install = nullptr;
    QCheckBox* m_archiveBox = nullptr;
    QLineEdit* m_volumeNumber = nullptr;
    QLineEdit* m_base = nullptr;
    QCheckBox* m_launch = nullptr;
    QLineEdit* m_size = nullptr;
    QComboBox* m_mediaType = nullptr;
    bool m_archive = false;
    bool m_installFlag = false;
    bool m_applyingRules = false;
};

} // namespace vx
