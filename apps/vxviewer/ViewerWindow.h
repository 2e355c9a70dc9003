#pragma once

#include <QMainWindow>
#include <memory>

class QAction;
class QLabel;
class QPushButton;

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

    QWidget* queryControl() const { return m_query; }
    QWidget* favouritesControl() const { return m_favourites; }
    QWidget* hitListControl() const { return m_hitList; }
    ViewerSession* session() const { return m_session.get(); }
    qint32 currentItemId() const { return m_currentItem; }
    QAction* openDocumentAction() const { return m_openDocument; }

    // The permission value the hit list gets: no bit that enables an editing command.
    static constexpr qint32 ReadOnlyPermission = 0;

public slots:
    // The hit list's events, connected by name.
    void CurrentItemID(qint32& itemid);
    void LocateDocument(QString& sFile, QString& sVolume);
    void SaveQuery(QString& sName, QString& sQueryString);
    void LocateDocumentFromID(qint32& itemid, QString& sFile, QString& sVolume);
    void LocateDocumentToMove(qint32& itemid, QString& sFile, QString& sVolume);
    // VXFavourites' SelectedItem and VXQuery's PerformQuery.
    void runFavourite(QString& sName, QString& sString);
    void performQuery();

private:
    void buildMenus();
    void chooseExport();
    void connectEvents();
    void answerLocate(qint32 itemId, const QString& file, const QString& volume);
    void runQuery(const QString& query);
    void showStatus(const QString& text);
    void tell(const QString& text, const QString& title);

    QString m_stateRoot;
    std::unique_ptr<ViewerSession> m_session;
    std::unique_ptr<DocumentResolver> m_resolver;
    QWidget* m_query = nullptr;
    QWidget* m_favourites = nullptr;
    QWidget* m_hitList = nullptr;
    QPushButton* m_searchButton = nullptr;
    QPushButton* m_clearButton = nullptr;
    QPushButton* m_openButton = nullptr;
    QAction* m_openDocument = nullptr;
    QLabel* m_volumeLabel = nullptr;
    qint32 m_currentItem = 0;
};

} // namespace vx::viewer
