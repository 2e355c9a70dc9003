#include "operations/DocumentProperty.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

namespace vx {

namespace {

thread_local DocumentProperty::ShowHook showHook;

} // namespace

QString megabytesText(qint64 bytes) {
    // Whole hundredths of a megabyte, worked out on the byte count so nothing is lost to binary
    // fractions: 2,675,000 bytes are 2.68 MB.
    const bool negative = bytes < 0;
    const quint64 magnitude = negative ? 0 - quint64(bytes) : quint64(bytes);
    const quint64 hundredths = (magnitude + 5'000) / 10'000;
    const quint64 whole = hundredths / 100;
    quint64 fraction = hundredths % 100;

    QString text = whole > 0 ? QString::number(whole) : QString();
    text += QLocale().decimalPoint();
    if (fraction > 0) {
        int digits = 2;
        if (fraction % 10 == 0) {
            fraction /= 10;
            digits = 1;
        }
        text += QStringLiteral("%1").arg(fraction, digits, 10, QLatin1Char('0'));
    }
    if (negative && hundredths > 0)
        text.prepend(u'-');
    return text;
}

DocumentProperty::DocumentProperty(QWidget* parent)
    : QDialog(parent)
    , m_countLabel(new QLabel(QStringLiteral("Count"), this))
    , m_sizeLabel(new QLabel(QStringLiteral("Size"), this))
    , m_ok(new QPushButton(QStringLiteral("OK"), this)) {
    setObjectName(QStringLiteral("DocumentProperty"));
    setWindowTitle(QStringLiteral("Documents Property"));
    setModal(true);
    m_countLabel->setObjectName(QStringLiteral("TotalCount1"));
    m_sizeLabel->setObjectName(QStringLiteral("TotalSize1"));
    m_ok->setObjectName(QStringLiteral("btn_Ok"));
    m_ok->setDefault(true);
    m_ok->setMinimumWidth(m_ok->fontMetrics().horizontalAdvance(QStringLiteral("OK")) * 4);
    for (QLabel* label : {m_countLabel, m_sizeLabel})
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_ok);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 12);
    layout->setSpacing(8);
    layout->addWidget(m_countLabel);
    layout->addWidget(m_sizeLabel);
    layout->addSpacing(8);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    // Wide enough for the largest total without the form changing size.
    m_sizeLabel->setMinimumWidth(m_sizeLabel->fontMetrics().horizontalAdvance(
        QStringLiteral("2147483647 number of bytes selected(2147.48 MB)")));

    connect(m_ok, &QPushButton::clicked, this, &QDialog::accept);
}

DocumentProperty::~DocumentProperty() = default;

void DocumentProperty::setTotalCount(qint32 count) {
    m_count = count;
    m_countLabel->setText(QString::number(count) + QStringLiteral(" documents selected."));
}

void DocumentProperty::setTotalSize(qint64 bytes) {
    m_size = bytes;
    m_sizeLabel->setText(QString::number(bytes) + QStringLiteral(" number of bytes selected(") +
                         megabytesText(bytes) + QStringLiteral(" MB)"));
}

void DocumentProperty::showModal() {
    if (!showHook) {
        exec();
        return;
    }
    show();
    showHook(*this);
    hide();
}

DocumentProperty::ShowHook DocumentProperty::setShowHook(ShowHook hook) {
    return std::exchange(showHook, std::move(hook));
}

} // namespace vx
