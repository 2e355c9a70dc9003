#pragma once

#include <QString>
#include <QVariantList>
#include <QWidget>
#include <VXUILib/Recordset.h>
#include <VXUILib/vxuilib_export.h>
#include <memory>

namespace vx {

// The result list of a search: a grid of documents with the commands that work on the selected
// ones, a record form for editing one document and a view of a document's earlier versions.
//
// Events carry their arguments by reference so that a directly connected slot can answer inside
// the event (LocateDocumentFromID is answered by writing DocumentToMove). Collections at the
// boundary are QVariantLists of item ids (ints): SelectedItems and the colID argument of
// RecordAuditTrail, which a host connects to by name as
// SIGNAL(RecordAuditTrail(QString&,QVariantList&,QString&)).
class VXUILIB_EXPORT VXHitList : public QWidget {
    Q_OBJECT
    Q_CLASSINFO("ClassName", "VXUILib.VXHitList")
    // clang-format off
    Q_CLASSINFO("Interface", "GroupName;GroupID;UserName;GroupInitString;Init;UserPermission;"
                             "DocumentToMove;ServerName;IsServer;CurrentItemID;SelectedItems;"
                             "DatabaseName;Recordset;DoQuery;Done;CloseList;Refresh;UpdateForm;"
                             "GetUserName;SaveData;GetUserId;MarkForDeletion;UpdateVolume;"
                             "MoveFilesAndUpdateVolume;CopyDocuments;ExportData;PrintData;"
                             "PropertyDocuments;ExportToVeltrane")
    Q_CLASSINFO("Events", "CurrentItemID;LocateDocument;SaveQuery;LocateRevisionDoc;"
                          "RecordAuditTrail;LocateDocumentFromID;LocateDocumentToMove;"
                          "GetServerName")
    Q_CLASSINFO("WriteOnly", "GroupName;GroupID;UserName;GroupInitString;Init;UserPermission;"
                             "DocumentToMove;ServerName;IsServer;DatabaseName;Recordset;DoQuery")
    // clang-format on
    Q_PROPERTY(QString GroupName READ writeOnlyText WRITE setGroupName)
    Q_PROPERTY(qint32 GroupID READ writeOnlyNumber WRITE setGroupID)
    Q_PROPERTY(QString UserName READ writeOnlyText WRITE setUserName)
    Q_PROPERTY(QString GroupInitString READ writeOnlyText WRITE setGroupInitString)
    Q_PROPERTY(QString Init READ writeOnlyText WRITE setInit)
    Q_PROPERTY(qint32 UserPermission READ writeOnlyNumber WRITE setUserPermission)
    Q_PROPERTY(QString DocumentToMove READ writeOnlyText WRITE setDocumentToMove)
    Q_PROPERTY(QString ServerName READ writeOnlyText WRITE setServerName)
    Q_PROPERTY(bool IsServer READ writeOnlyFlag WRITE setIsServer)
    Q_PROPERTY(qint32 CurrentItemID READ currentItemId)
    Q_PROPERTY(QVariantList SelectedItems READ selectedItems)
    Q_PROPERTY(QString DatabaseName READ writeOnlyText WRITE setDatabaseName)
    Q_PROPERTY(vx::Recordset Recordset READ writeOnlyRecordset WRITE setRecordset)
    Q_PROPERTY(QString DoQuery READ writeOnlyText WRITE setDoQuery)

public:
    explicit VXHitList(QWidget* parent = nullptr);
    ~VXHitList() override;

    // Non-empty: the caption of the "Group" tab (and the settings section); empty hides the tabs
    // and the record form.
    void setGroupName(const QString& name);
    void setGroupID(qint32 groupId);
    void setUserName(const QString& name);
    // The group's form-definition file: becomes the library-wide one and builds the record form.
    void setGroupInitString(const QString& path);
    // The group's initialisation file: opens the session.
    void setInit(const QString& initFilePath);
    // Enables the commands the permission bits allow (never disables).
    void setUserPermission(qint32 permission);
    void setDocumentToMove(const QString& path);
    void setServerName(const QString& name);
    void setIsServer(bool isServer);
    qint32 currentItemId() const;
    // The selected rows' item ids in selection order; the result set ends on the last of them.
    QVariantList selectedItems();
    // Accepted and ignored.
    void setDatabaseName(const QString& name);
    // Shows a result the host opened itself.
    void setRecordset(const vx::Recordset& recordset);
    // Runs a complete SELECT and shows its rows.
    void setDoQuery(const QString& query);

    Q_INVOKABLE void Done();
    Q_INVOKABLE void CloseList();
    Q_INVOKABLE void Refresh();
    Q_INVOKABLE void UpdateForm();
    Q_INVOKABLE QString GetUserName(short& intUserId);
    Q_INVOKABLE void SaveData();
    Q_INVOKABLE qint32 GetUserId(QString& strUserName);
    Q_INVOKABLE bool MarkForDeletion();
    Q_INVOKABLE bool UpdateVolume();
    Q_INVOKABLE bool MoveFilesAndUpdateVolume();
    Q_INVOKABLE bool CopyDocuments();
    Q_INVOKABLE bool ExportData();
    Q_INVOKABLE bool PrintData();
    Q_INVOKABLE bool PropertyDocuments();
    Q_INVOKABLE void ExportToVeltrane();

    // Readers of the write-only properties, for the meta-object system only.
    QString writeOnlyText() const { return {}; }
    qint32 writeOnlyNumber() const { return 0; }
    bool writeOnlyFlag() const { return false; }
    vx::Recordset writeOnlyRecordset() const { return {}; }

    // Places toolbar, grid, find and replace panel, tabs and pages.
    void layoutControl();

signals:
    void CurrentItemID(qint32& itemid);
    void LocateDocument(QString& sFile, QString& sVolume);
    void SaveQuery(QString& sName, QString& sQueryString);
    void LocateRevisionDoc(QString& sFile, QString& sVolume, QString& sVersion, QString& sItemID);
    void RecordAuditTrail(QString& sAction, QVariantList& colID, QString& sDescription);
    void LocateDocumentFromID(qint32& itemid, QString& sFile, QString& sVolume);
    void LocateDocumentToMove(qint32& itemid, QString& sFile, QString& sVolume);
    void GetServerName();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    // Rows DoQuery reads before it shows the result: a screenful and more.
    qsizetype firstScreenRows() const;
    // Lets the control see keys before the widget under it (and its later children).
    void watchKeys(QWidget* widget);

    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx
