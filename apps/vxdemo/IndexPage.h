#pragma once

#include "GroupSession.h"

#include <QStringList>
#include <QWidget>
#include <optional>

class QLabel;
class QLineEdit;
class QPushButton;

namespace vx::demo {

// The host's indexing window: choose a document file, fill the index form and keywords of the
// VXIndex control, file it through the indexing API, then start the next one.
class IndexPage : public QWidget {
    Q_OBJECT

public:
    explicit IndexPage(QWidget* parent = nullptr);
    ~IndexPage() override;

    // Hands the control the group's identity, Init and form; errors show inside the control.
    void openSession(const GroupSession& session);
    // Ends the control's session (Done).
    void closeSession();

    void setDocumentPath(const QString& path);
    QString documentPath() const;
    // Files the document; the new item id, or 0 when nothing was filed.
    qint32 fileDocument();
    // Clears the form and keywords for the next document.
    void nextDocument();
    // Applies an index hand-over file another program left, if any.
    void applyHandOver();

    // The VXIndex control, reached by its member names only.
    QWidget* indexControl() const { return m_index; }

    // True once the current document was filed and neither the file nor the form changed since.
    bool filed() const { return m_filedForm.has_value(); }

signals:
    void statusMessage(const QString& text);
    void documentFiled(qint32 itemId, const QString& documentPath);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void chooseDocument();
    void updateButtons();
    // The form's values and keywords as text, to see whether the user changed them.
    QStringList formSnapshot() const;
    void setFiled(bool filed);
    void reportInvalidForm();

    QWidget* m_index = nullptr;
    QLineEdit* m_document = nullptr;
    QPushButton* m_browse = nullptr;
    QPushButton* m_file = nullptr;
    QPushButton* m_next = nullptr;
    QLabel* m_result = nullptr;
    bool m_sessionOpen = false;
    std::optional<QStringList> m_filedForm; // the form as it was filed
};

} // namespace vx::demo
