#pragma once

#include "DocumentLocator.h"
#include "GroupSession.h"
#include "HostUiServices.h"

#include <QMainWindow>
#include <memory>
#include <optional>

class QFileSystemWatcher;
class QLabel;
class QTabWidget;
class QToolBar;

namespace vx::demo {

class AuditTrailPanel;
class DocumentCommands;
class IndexPage;
class SearchPage;

// The sample host: an Index page and a Search page with the library's controls, an audit-trail
// panel, and the answers a host gives to the hit list's events (where a document's file is,
// whether this is the server, what to log, what to open).
class DemoWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit DemoWindow(QWidget* parent = nullptr);
    ~DemoWindow() override;

    // Opens a group for every control; false (after telling the user) when it cannot be opened.
    bool openGroup(const QString& initFilePath);
    const GroupSession& session() const { return m_session; }

    IndexPage* indexPage() const { return m_indexPage; }
    SearchPage* searchPage() const { return m_searchPage; }
    AuditTrailPanel* auditTrail() const { return m_auditTrail; }
    QTabWidget* pages() const { return m_pages; }
    DocumentCommands* documentCommands() const { return m_commands; }
    QToolBar* documentsToolbar() const { return m_toolbar; }
    qint32 currentItemId() const { return m_currentItemId; }
    // The files opened for the user (LocateDocument, LocateRevisionDoc), latest last.
    QStringList openedFiles() const { return m_openedFiles; }

    // The answer to a locate event: the file's full path or "ERROR".
    QString locateDocument(qint32 itemId, const QString& storedName) const;

    // Applies the hand-over files other programs left (index, then query); also run when the
    // hand-over folder changes and when the application becomes active.
    void applyHandOvers();

    // Where the repository of a folder starts: its first *.ini file; empty when none.
    static QString initFileIn(const QString& folder);

    // Size, position, docks and splitters as the user left them; the first time, a size that
    // fits the screen's free area.
    void restoreWindowState();
    void saveWindowState() const;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    static void listInCatalog(const GroupSession& session);
    void buildMenus();
    void chooseRepositoryLocation();
    void chooseGroupInitFile();
    void showAbout();
    void answerLocate(qint32 itemId, const QString& file, const QString& volume, bool toMove);
    void answerServerName();
    void openFile(const QString& file, const QString& volume);
    void setCurrentItem(qint32 itemId);
    void recordAudit(const QString& action, const QList<qint32>& ids, const QString& description);
    void noteRevision(const QString& file, const QString& volume, const QString& version,
                      const QString& itemId);
    void watchVersionActivation();
    void openNotedRevision();
    void watchHandOverFolder();
    void showStatus(const QString& text);

    // First member: the controls' prompts go through it from the start.
    std::unique_ptr<HostUiServices::Installation> m_ui;
    GroupSession m_session;
    std::optional<DocumentLocator> m_locator;
    QTabWidget* m_pages = nullptr;
    IndexPage* m_indexPage = nullptr;
    SearchPage* m_searchPage = nullptr;
    AuditTrailPanel* m_auditTrail = nullptr;
    QLabel* m_currentItem = nullptr;
    DocumentCommands* m_commands = nullptr;
    QToolBar* m_toolbar = nullptr;
    struct Revision {
        QString file, volume, version, itemId;
    };
    std::optional<Revision> m_revision; // the version chosen in the versions view
    QFileSystemWatcher* m_handOverWatcher = nullptr;
    qint32 m_currentItemId = 0;
    QStringList m_openedFiles;
    QString m_startFolder; // current before a repository's folder was made current
};

} // namespace vx::demo
