#include "portable/MediaDialog.h"

#include "data/Error.h"
#include "session/Conversions.h"
#include "session/LibraryState.h"
#include "session/Settings.h"
#include "session/UiServices.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

namespace vx {

namespace {

const QString defaultBase = QStringLiteral("Veltran");
const QString notApplicable = QStringLiteral("N/A");
// Characters a CD volume label may not hold; the blank among them.
const QString refusedInBase = QStringLiteral("\\/:;*\"?<>| ");

bool isAcceptedBase(const QString& base) {
    if (base == notApplicable)
        return true;
    if (base.isEmpty())
        return false;
    for (QChar c : base) {
        if (refusedInBase.contains(c))
            return false;
    }
    return true;
}

// Whole numbers and decimals both count as numeric, as typed by the user.
bool readNumber(const QString& text, double& number) {
    bool ok = false;
    number = QLocale().toDouble(text.trimmed(), &ok);
    if (!ok)
        number = QLocale::c().toDouble(text.trimmed(), &ok);
    return ok;
}

} // namespace

MediaDialog::MediaDialog(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::WindowStaysOnTopHint) {
    setObjectName(QStringLiteral("pic_MediaType"));
    setWindowTitle(QStringLiteral("Export To Veltrane"));
    setModal(false);

    m_cancel = new QPushButton(QStringLiteral("&Cancel"), this);
    m_cancel->setObjectName(QStringLiteral("btn_Cancel"));
    m_ok = new QPushButton(QStringLiteral("OK"), this);
    m_ok->setObjectName(QStringLiteral("btn_Ok"));
    m_ok->setDefault(true);
    m_install = new QCheckBox(QStringLiteral("Include Veltrane Installation"), this);
    m_install->setObjectName(QStringLiteral("chkInstall"));
    m_archiveBox = new QCheckBox(QStringLiteral("Archive"), this);
    m_archiveBox->setObjectName(QStringLiteral("chkArchive"));
    m_volumeNumber = new QLineEdit(QStringLiteral("0000"), this);
    m_volumeNumber->setObjectName(QStringLiteral("txt_Volume"));
    m_volumeNumber->setReadOnly(true);
    m_base = new QLineEdit(defaultBase, this);
    m_base->setObjectName(QStringLiteral("txtBase"));
    // The label's limit: with the four-digit number it makes an 11-character CD label.
    m_base->setMaxLength(7);
    m_launch = new QCheckBox(QStringLiteral("Launch CD Authoring"), this);
    m_launch->setObjectName(QStringLiteral("chkToCD"));
    m_size = new QLineEdit(this);
    m_size->setObjectName(QStringLiteral("txt_Size"));
    m_mediaType = new QComboBox(this);
    m_mediaType->setObjectName(QStringLiteral("cmb_MediaType"));
    m_mediaType->addItems(mediaItems());
    m_mediaType->installEventFilter(this);
    auto* volumeLabel = new QLabel(QStringLiteral("Volume Name (Max. 7 characters)"), this);
    volumeLabel->setObjectName(QStringLiteral("Label2"));
    auto* sizeLabel = new QLabel(QStringLiteral("Size (MB)"), this);
    sizeLabel->setObjectName(QStringLiteral("Label3"));
    auto* typeLabel = new QLabel(QStringLiteral("Media Type"), this);
    typeLabel->setObjectName(QStringLiteral("Label1"));

    auto* fields = new QGridLayout;
    fields->addWidget(typeLabel, 0, 0);
    fields->addWidget(m_mediaType, 0, 1, 1, 2);
    fields->addWidget(sizeLabel, 1, 0);
    fields->addWidget(m_size, 1, 1, 1, 2);
    fields->addWidget(volumeLabel, 2, 0);
    fields->addWidget(m_base, 2, 1);
    fields->addWidget(m_volumeNumber, 2, 2);
    fields->setColumnStretch(1, 1);
    m_volumeNumber->setMaximumWidth(
        m_volumeNumber->fontMetrics().horizontalAdvance(QStringLiteral("destDrive")) + 16);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_ok);
    buttons->addWidget(m_cancel);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addWidget(m_launch);
    layout->addWidget(m_archiveBox);
    layout->addWidget(m_install);
    layout->addLayout(buttons);

    connect(m_mediaType, &QComboBox::currentTextChanged, this, [this] { applyFieldRules(); });
    connect(m_mediaType, &QComboBox::activated, this, [this] { applyFieldRules(); });
    connect(m_launch, &QCheckBox::toggled, this,
            [](bool checked) { library().launchAuthoring = checked; });
    connect(m_archiveBox, &QCheckBox::toggled, this, [this](bool checked) { m_archive = checked; });
    connect(m_install, &QCheckBox::toggled, this,
            [this](bool checked) { m_installFlag = checked; });
    connect(m_ok, &QPushButton::clicked, this, [this] { acceptChoices(); });
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);

    library().launchAuthoring = false;
    m_mediaType->setCurrentIndex(Cd650);
    applyFieldRules();
}

MediaDialog::~MediaDialog() = default;

QStringList MediaDialog::mediaItems() {
    return {QStringLiteral("650MB/74MIN (To CD)"), QStringLiteral("700MB/80MIN (To CD)"),
            QStringLiteral("FULL-EXPORT (To Folder)"), QStringLiteral("CUSTOM (To CD)")};
}

bool MediaDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_mediaType) {
        // The pick list is chosen from, never typed into: characters are refused, while the
        // arrows, Tab, Enter and Escape still choose, move on, accept and cancel.
        if (event->type() == QEvent::KeyPress) {
            const auto* key = static_cast<QKeyEvent*>(event);
            const bool editing = key->key() == Qt::Key_Backspace || key->key() == Qt::Key_Delete;
            const bool character = !key->text().isEmpty() && key->text().front().isPrint() &&
                                   !(key->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
            if (editing || character)
                return true;
        }
        if (event->type() == QEvent::KeyRelease)
            applyFieldRules();
    }
    return QDialog::eventFilter(watched, event);
}

void MediaDialog::applyFieldRules() {
    if (m_applyingRules)
        return;
    m_applyingRules = true;
    m_size->setEnabled(false);
    m_volumeNumber->setEnabled(false);
    m_base->setEnabled(true);
    m_base->setText(defaultBase);
    m_volumeNumber->setText(QStringLiteral("0000"));

    const QString chosen = m_mediaType->currentText().trimmed().toLower();
    const QStringList items = mediaItems();
    qsizetype item = -1;
    for (qsizetype i = 0; i < items.size() && item < 0; ++i) {
        if (items[i].toLower() == chosen)
            item = i;
    }
    switch (item) {
    case Cd650:
        m_size->setText(QStringLiteral("650"));
        break;
    case Cd700:
        m_size->setText(QStringLiteral("700"));
        break;
    case FullExport:
        m_size->setText(notApplicable);
        m_base->setText(notApplicable);
        m_base->setEnabled(false);
        m_volumeNumber->setText(QStringLiteral("destDrive"));
        break;
    case CustomCd:
        m_size->clear();
        m_size->setEnabled(true);
        m_size->setFocus();
        break;
    default:
        // Nothing matched: back to the first medium.
        m_mediaType->setCurrentIndex(Cd650);
        m_size->setText(QStringLiteral("650"));
        break;
    }
    m_applyingRules = false;
}

void MediaDialog::refuseSize(const QString& message) {
    ui().messageBox(message, MessageStyle::OkOnly, applicationTitle());
    applyFieldRules();
    m_size->setEnabled(true);
    m_size->setFocus();
}

void MediaDialog::acceptChoices() {
    const QString chosen = m_mediaType->currentText().trimmed().toLower();
    double number = 0;
    if (!readNumber(m_size->text(), number)) {
        if (chosen != mediaItems().at(FullExport).toLower()) {
            refuseSize(QStringLiteral("Please enter valid Media Size. (numeric)"));
            return;
        }
        library().mediaSizeMB = 999999999;
    } else {
        qint32 size = 0;
        try {
            size = toInt32(number);
        } catch (const Error&) {
            refuseSize(QStringLiteral("Please enter valid Media Size. (numeric)"));
            return;
        }
        if (size < 10) {
            refuseSize(QStringLiteral("Minimum Media Size is 10 MB."));
            return;
        }
        library().mediaSizeMB = size;
    }

    const QString base = m_base->text().trimmed();
    if (!isAcceptedBase(base)) {
        ui().messageBox(QStringLiteral("Incorrect CD Volume label") + QLatin1Char('\r') +
                            QStringLiteral("Not allowed \\ / : ; * ? \" < > |"),
                        MessageStyle::OkOnly | MessageStyle::Exclamation, applicationTitle());
        if (m_base->isEnabled()) {
            m_base->setFocus();
            m_base->selectAll();
        }
        return;
    }
    try {
        saveSetting(QStringLiteral("Settings"), QStringLiteral("strCDLabel"), base);
    } catch (const Error& error) {
        // Only the next export's suggestion is lost: this one goes on.
        ui().messageBox(error.description(), MessageStyle::OkOnly | MessageStyle::Exclamation,
                        applicationTitle());
    }
    accept();
}

void MediaDialog::done(int result) {
    LibraryState& state = library();
    // Cancel, Escape and the window's close box all cancel the export.
    if (result == QDialog::Rejected)
        state.exportCancelled = true;
    state.exportDialogDone = true;
    state.exportKind = m_mediaType->currentIndex() == FullExport ? QStringLiteral("ExportToFolder")
                                                                 : QStringLiteral("ExportToCD");
    if (m_mediaType->currentIndex() == CustomCd)
        state.customSize = true;
    QDialog::done(result);
}

} // namespace vx
