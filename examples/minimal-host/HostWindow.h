#pragma once

#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QWidget>

class QLabel;
class QPushButton;

namespace vx {
class VXHitList;
class VXQuery;
} // namespace vx

// A search window: the query form above, the hit list below, and a Search button between.
class HostWindow : public QWidget {
    Q_OBJECT

public:
    explicit HostWindow(QWidget* parent = nullptr);
    ~HostWindow() override;

    // Opens the group named by a group initialisation file (the group is the file's base name,
    // its forms lie in the "config" folder beside it). False, with the reason shown, on failure.
    bool openGroup(const QString& initFilePath, const QString& userName);
    // Shows the result of a complete query, as the Search button does with the form's query.
    void showResult(const QString& query);
    // Shows every document of the group, each field in the column named by its caption.
    void showEveryDocument();

    QString groupName() const { return m_groupName; }
    qint32 currentItemId() const { return m_currentItemId; }

signals:
    void currentItemChanged(qint32 itemId);

private slots:
    // The hit list's events, answered inside the event through the by-reference arguments.
    void onCurrentItemID(qint32& itemid);
    // Both locate events: copying (FromID) and moving (ToMove) ask where a document lies.
    void onLocateDocumentFromID(qint32& itemid, QString& sFile, QString& sVolume);
    void onGetServerName();
    void onRecordAuditTrail(QString& sAction, QVariantList& colID, QString& sDescription);

private:
    void search();
    void closeGroup();

    vx::VXQuery* m_query = nullptr;
    vx::VXHitList* m_hitList = nullptr;
    QPushButton* m_search = nullptr;
    QLabel* m_status = nullptr;
    QString m_groupName;
    QStringList m_documentFolders;
    qint32 m_currentItemId = 0;
    bool m_open = false;
};
