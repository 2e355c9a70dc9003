#pragma once

#include "GroupSession.h"

#include <QWidget>

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

signals:
    void statusMessage(const QString& text);
    void documentFiled(qint32 itemId, const QString& documentPath);

private:
    void chooseDocument();
    void updateButtons();

    QWidget* m_index = nullptr;
    QLineEdit* m_document = nullptr;
    QPushButton* m_browse = nullptr;
    QPushButton* m_file = nullptr;
    QPushButton* m_next = nullptr;
    QLabel* m_result = nullptr;
    bool m_sessionOpen = false;
};

} // namespace vx::demo
