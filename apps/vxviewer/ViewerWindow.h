#pragma once

#include <QMainWindow>
#include <memory>

class QAction;
class QLabel;
class QPushButton;

namespace vx::apps {
class SearchPane;
}

namespace vx::viewer {

class DocumentResolver;
class ViewerSession;
struct SearchCriteria;

// The viewer's window over one export: the search form (VXQuery over the export's
// "veltrane.xqr", with its keyword picker over the portable dictionary), the favourites of this
// export and the hit list, which offers no editing command. Opening a document finds its file
// on the right volume.
class ViewerWindow : public QMainWindow {
    Q_OBJECT

public:
    // stateRoot: where the viewer keeps what it knows about exports (never inside one).
    explicit ViewerWindow(const QString& stateRoot, QWidget* parent = nullptr);
    ~ViewerWindow() override;

    // Opens a volume folder or an export root; tells the user what is wrong otherwise.
    bool openExport(const QString& folder);
    void closeExport();
    bool isOpen() const;

    // Runs the filled form; false when it holds no criteria.
    bool search();
    // Types criteria into the form and picker, then searches.
    bool search(const SearchCriteria& criteria);
    // Opens the current document's file with the desktop's program; false when it has none.
    bool openCurrentDocument();

    QWidget* queryControl() const;
    QWidget* favouritesControl() const;
    QWidget* hitListControl() const;
    apps::SearchPane* searchPane() const { return m_pane; }
    ViewerSession* session() const { return m_session.get(); }
    qint32 currentItemId() const { return m_currentItem; }
    QAction* openDocumentAction() const { return m_openDocument; }

    // The permission value the hit list gets: no bit that enables an editing command.
    static constexpr qint32 ReadOnlyPermission = 0;

private:
    void setCurrentItem(qint32 itemId);
    void openFile(const QString& file, const QString& volume);
    void buildMenus();
    void chooseExport();
    void connectEvents();
    void answerLocate(qint32 itemId, const QString& file, const QString& volume);
    void showStatus(const QString& text);
    void tell(const QString& text, const QString& title);

    QString m_stateRoot;
    std::unique_ptr<ViewerSession> m_session;
    std::unique_ptr<DocumentResolver> m_resolver;
    apps::SearchPane* m_pane = nullptr;
    QPushButton* m_openButton = nullptr;
    QAction* m_openDocument = nullptr;
    QLabel* m_volumeLabel = nullptr;
    qint32 m_currentItem = 0;
};

} // namespace vx::viewer
