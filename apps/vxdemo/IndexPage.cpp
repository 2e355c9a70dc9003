#include "IndexPage.h"

#include "data/Error.h"
#include "server/ControlFactory.h"
#include "server/LateBinding.h"
#include "session/UiServices.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace vx::demo {

IndexPage::IndexPage(QWidget* parent)
    : QWidget(parent) {
    setObjectName(QStringLiteral("indexPage"));
    // Mnemonics stay clear of the menu bar's (File, Documents, Help) and the page tabs'.
    auto* fileRow = new QHBoxLayout;
    auto* label = new QLabel(tr("Document fi&le:"), this);
    m_document = new QLineEdit(this);
    m_document->setObjectName(QStringLiteral("documentPath"));
    m_document->setPlaceholderText(tr("The file to index"));
    label->setBuddy(m_document);
    m_browse = new QPushButton(tr("&Choose..."), this);
    m_browse->setObjectName(QStringLiteral("chooseDocument"));
    fileRow->addWidget(label);
    fileRow->addWidget(m_document, 1);
    fileRow->addWidget(m_browse);

    m_index = ControlFactory::create(QStringLiteral("VXUILib.VXIndex"), this);
    m_index->setObjectName(QStringLiteral("VXIndex1"));

    auto* buttonRow = new QHBoxLayout;
    m_result = new QLabel(this);
    m_result->setObjectName(QStringLiteral("indexResult"));
    m_file = new QPushButton(tr("File d&ocument"), this);
    m_file->setObjectName(QStringLiteral("fileDocument"));
    m_file->setDefault(true);
    m_next = new QPushButton(tr("&Next document"), this);
    m_next->setObjectName(QStringLiteral("nextDocument"));
    buttonRow->addWidget(m_result, 1);
    buttonRow->addWidget(m_next);
    buttonRow->addWidget(m_file);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fileRow);
    layout->addWidget(m_index, 1);
    layout->addLayout(buttonRow);

    connect(m_browse, &QPushButton::clicked, this, &IndexPage::chooseDocument);
    connect(m_file, &QPushButton::clicked, this, [this] { fileDocument(); });
    connect(m_next, &QPushButton::clicked, this, &IndexPage::nextDocument);
    connect(m_document, &QLineEdit::textChanged, this, [this] {
        setFiled(false);
        updateButtons();
    });
    updateButtons();
}

IndexPage::~IndexPage() {
    qApp->removeEventFilter(this);
    closeSession();
}

void IndexPage::openSession(const GroupSession& session) {
    closeSession();
    // The order a host keeps: identity first, then Init, then the form.
    writeMember(m_index, "GroupName", session.groupName);
    writeMember(m_index, "GroupID", session.groupId);
    writeMember(m_index, "UserName", session.userName);
    writeMember(m_index, "CurrentLibrary", session.libraryName);
    writeMember(m_index, "UserPermission", session.userPermission);
    writeMember(m_index, "RemoteIndex", false);
    writeMember(m_index, "Init", session.initFilePath);
    writeMember(m_index, "GroupInitString", session.formPath);
    m_sessionOpen = true;
    m_result->clear();
    setFiled(false);
    updateButtons();
}

void IndexPage::closeSession() {
    if (!m_sessionOpen)
        return;
    m_sessionOpen = false;
    try {
        callMember(m_index, "Done");
    } catch (const Error&) {
        // Done ignores its own errors; a missing member only means nothing was open.
    }
    updateButtons();
}

void IndexPage::setDocumentPath(const QString& path) {
    m_document->setText(QDir::toNativeSeparators(path));
}

QString IndexPage::documentPath() const {
    return QDir::fromNativeSeparators(m_document->text());
}

qint32 IndexPage::fileDocument() {
    const QString path = documentPath().trimmed();
    if (filed()) {
        emit statusMessage(tr("This document is filed already. Choose the next document file or "
                              "change the form to file again."));
        return 0;
    }
    if (!QFileInfo(path).isFile()) {
        ui().messageBox(tr("Choose the document file to index first."),
                        MessageStyle::OkOnly | MessageStyle::Exclamation, tr("File document"));
        return 0;
    }
    try {
        writeMember(m_index, "DocumentPath", QDir::toNativeSeparators(path));
        writeMember(m_index, "CurFileType", 0);
        if (!callMember(m_index, "UpdateRecordAPI").toBool()) {
            reportInvalidForm();
            return 0;
        }
        // The API path leaves the new item id in CurItemID.
        const qint32 itemId = readMember(m_index, "CurItemID").toInt();
        m_result->setText(tr("Filed %1 as item %2.").arg(QFileInfo(path).fileName()).arg(itemId));
        setFiled(true);
        emit statusMessage(m_result->text());
        emit documentFiled(itemId, path);
        return itemId;
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly | MessageStyle::Critical,
                        tr("File document"));
        return 0;
    }
}

void IndexPage::nextDocument() {
    try {
        callMember(m_index, "Refresh");
    } catch (const Error& error) {
        emit statusMessage(error.description());
    }
    m_document->clear();
    m_result->clear();
    setFiled(false);
}

void IndexPage::applyHandOver() {
    if (!m_sessionOpen)
        return;
    try {
        callMember(m_index, "RefreshFormContent");
    } catch (const Error& error) {
        emit statusMessage(error.description());
    }
}

void IndexPage::chooseDocument() {
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Document to index"), documentPath());
    if (!path.isEmpty())
        setDocumentPath(path);
}

void IndexPage::updateButtons() {
    m_file->setEnabled(m_sessionOpen && !filed() && !m_document->text().trimmed().isEmpty());
    m_next->setEnabled(m_sessionOpen);
}

void IndexPage::reportInvalidForm() {
    // The default form says which fields fail and why; another form may not.
    QString problems;
    if (QObject* form = m_index->findChild<QObject*>(QStringLiteral("Group"))) {
        try {
            problems = readMember(form, "FieldProblems").toString().trimmed();
        } catch (const Error&) {
        }
    }
    if (problems.isEmpty()) {
        m_result->setText(tr("Not filed."));
        emit statusMessage(m_result->text());
        return;
    }
    m_result->setText(tr("Not filed: %1").arg(problems.section(u'\n', 0, 0)));
    emit statusMessage(m_result->text());
    ui().messageBox(tr("The document was not filed. Correct these fields:\n\n%1").arg(problems),
                    MessageStyle::OkOnly | MessageStyle::Exclamation, tr("File document"));
}

QStringList IndexPage::formSnapshot() const {
    QStringList values;
    try {
        if (QObject* form = m_index->findChild<QObject*>(QStringLiteral("Group"))) {
            callMember(form, "MoveFirstField");
            while (!readMember(form, "FieldEOF").toBool()) {
                values << readMember(form, "FieldValue").toString();
                if (readMember(form, "ListItemPresent").toBool()) {
                    callMember(form, "MoveFirstListItem");
                    while (readMember(form, "ListItemPresent").toBool()) {
                        values << readMember(form, "ListItemText").toString();
                        callMember(form, "MoveNextListItem");
                    }
                }
                callMember(form, "MoveNextField");
            }
        }
        if (QObject* keywords = m_index->findChild<QObject*>(QStringLiteral("kss2"))) {
            values << QStringLiteral("\x1fkeywords");
            callMember(keywords, "MoveFirst");
            while (!readMember(keywords, "EOF").toBool()) {
                values << readMember(keywords, "CurrentListValue").toString();
                callMember(keywords, "MoveNext");
            }
        }
    } catch (const Error&) {
        // A form that cannot be walked counts as changed on every key.
        values << QString::number(QDateTime::currentMSecsSinceEpoch());
    }
    return values;
}

void IndexPage::setFiled(bool filed) {
    if (filed == this->filed())
        return;
    if (filed) {
        m_filedForm = formSnapshot();
        // Keys and clicks anywhere in the index control may change the form: look after each.
        qApp->installEventFilter(this);
    } else {
        m_filedForm.reset();
        qApp->removeEventFilter(this);
    }
    updateButtons();
}

bool IndexPage::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (filed() && (type == QEvent::KeyRelease || type == QEvent::MouseButtonRelease)) {
        auto* widget = qobject_cast<QWidget*>(watched);
        if (widget && m_index->isAncestorOf(widget) && formSnapshot() != *m_filedForm) {
            setFiled(false);
            m_result->setText(tr("The form changed; it can be filed as a new document."));
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace vx::demo
