#include "operations/CopyMoveDialog.h"

#include "session/LibraryState.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace vx {

CopyMoveDialog::CopyMoveDialog(QWidget* owner)
    : QDialog(owner, Qt::Dialog | Qt::WindowStaysOnTopHint) {
    setObjectName(QStringLiteral("frmCopyMove"));
    setWindowTitle(QStringLiteral("Copy/Move Documents"));

    m_label = new QLabel(QStringLiteral("Copy or Move selected documents ?"), this);
    m_label->setObjectName(QStringLiteral("Label1"));
    m_copy = new QPushButton(QStringLiteral("&Copy"), this);
    m_copy->setObjectName(QStringLiteral("btnCopy"));
    m_move = new QPushButton(QStringLiteral("&Move"), this);
    m_move->setObjectName(QStringLiteral("btnMove"));
    m_cancel = new QPushButton(QStringLiteral("C&ancel"), this);
    m_cancel->setObjectName(QStringLiteral("btnCancel"));

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_copy);
    buttons->addWidget(m_move);
    buttons->addWidget(m_cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_label);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    connect(m_copy, &QPushButton::clicked, this, [this] { answer(QStringLiteral("copy")); });
    connect(m_move, &QPushButton::clicked, this, [this] { answer(QStringLiteral("move")); });
    connect(m_cancel, &QPushButton::clicked, this, [this] { answer(QStringLiteral("cancel")); });
    m_cancel->setFocus();
}

void CopyMoveDialog::reject() {
    answer(QStringLiteral("cancel"));
}

void CopyMoveDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    // Cancel is the safe answer to a bare Enter.
    m_cancel->setDefault(true);
    m_cancel->setFocus();
}

void CopyMoveDialog::answer(const QString& choice) {
    library().copyMoveChoice = choice;
    hide();
}

} // namespace vx
