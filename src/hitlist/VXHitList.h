#pragma once

#include <QString>
#include <QVariantList>
#include <QWidget>
#include <VXUILib/Recordset.h>
#include <VXUILib/vxuilib_export.h>
#include <memory>

namespace vx {

/// The result list of a search: a grid of documents with the commands that work on the selected
/// ones, a record form for editing one document and a view of a document's earlier versions.
///
/// Events carry their arguments by reference so that a directly connected slot can answer inside
/// the event (LocateDocumentFromID is answered by writing DocumentToMove). Collections at the
/// boundary are QVariantLists of item ids (ints): SelectedItems and the colID argument of
/// RecordAuditTrail, which a host connects to by name as
/// SIGNAL(RecordAuditTrail(QString&,QVariantList&,QString&)).
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
    /// Write-only: the group's name, caption of the "Group" tab and settings section of the
    /// column layout; empty hides the tabs and the record form.
    Q_PROPERTY(QString GroupName READ writeOnlyText WRITE setGroupName)
    /// Write-only: the group's id.
    Q_PROPERTY(qint32 GroupID READ writeOnlyNumber WRITE setGroupID)
    /// Write-only: the user's name; kept with the session.
    Q_PROPERTY(QString UserName READ writeOnlyText WRITE setUserName)
    /// Write-only: the group's form-definition file, from which the record form is built.
    Q_PROPERTY(QString GroupInitString READ writeOnlyText WRITE setGroupInitString)
    /// Write-only: the group initialisation file; writing it opens the control's session.
    Q_PROPERTY(QString Init READ writeOnlyText WRITE setInit)
    /// Write-only: the user's permission bits: 8 editing, 32 deleting, 64 moving, 128 exporting.
    Q_PROPERTY(qint32 UserPermission READ writeOnlyNumber WRITE setUserPermission)
    /// Write-only: the host's answer to LocateDocumentFromID and LocateDocumentToMove, written
    /// inside the event: the document file's full path, or "ERROR" when it cannot be reached.
    Q_PROPERTY(QString DocumentToMove READ writeOnlyText WRITE setDocumentToMove)
    /// Write-only: the server's name, written by the host inside GetServerName.
    Q_PROPERTY(QString ServerName READ writeOnlyText WRITE setServerName)
    /// Write-only: whether this machine is the server, written by the host inside GetServerName;
    /// moving documents and changing volumes are allowed only there.
    Q_PROPERTY(bool IsServer READ writeOnlyFlag WRITE setIsServer)
    /// The item id of the current row; 0 when there is none.
    Q_PROPERTY(qint32 CurrentItemID READ currentItemId)
    /// The item ids (ints) of the selected rows, in selection order.
    Q_PROPERTY(QVariantList SelectedItems READ selectedItems)
    /// Write-only: accepted and ignored.
    Q_PROPERTY(QString DatabaseName READ writeOnlyText WRITE setDatabaseName)
    /// Write-only: a result the host opened itself, shown as DoQuery shows its own.
    Q_PROPERTY(vx::Recordset Recordset READ writeOnlyRecordset WRITE setRecordset)
    /// Write-only: a complete SELECT (the query control's QueryString); writing it runs the
    /// query and shows its rows.
    Q_PROPERTY(QString DoQuery READ writeOnlyText WRITE setDoQuery)

public:
    /// An empty hit list with its toolbar, pages and pickers, not yet initialised.
    explicit VXHitList(QWidget* parent = nullptr);
    ~VXHitList() override;

    /// Writes #GroupName. Non-empty: the caption of the "Group" tab (and the settings section);
    /// empty hides the tabs and the record form.
    void setGroupName(const QString& name);
    /// Writes #GroupID.
    void setGroupID(qint32 groupId);
    /// Writes #UserName.
    void setUserName(const QString& name);
    /// Writes #GroupInitString: the group's form-definition file: becomes the library-wide one and
    /// builds the record form.
    void setGroupInitString(const QString& path);
    /// Writes #Init: the group's initialisation file; opens the session.
    void setInit(const QString& initFilePath);
    /// Writes #UserPermission and enables the commands the bits allow (never disables).
    void setUserPermission(qint32 permission);
    /// Writes #DocumentToMove.
    void setDocumentToMove(const QString& path);
    /// Writes #ServerName.
    void setServerName(const QString& name);
    /// Writes #IsServer.
    void setIsServer(bool isServer);
    /// Reads #CurrentItemID.
    qint32 currentItemId() const;
    /// Reads #SelectedItems: the selected rows' item ids in selection order; the result set ends on
    /// the last of them.
    QVariantList selectedItems();
    /// Writes #DatabaseName: accepted and ignored.
    void setDatabaseName(const QString& name);
    /// Writes #Recordset: shows a result the host opened itself.
    void setRecordset(const vx::Recordset& recordset);
    /// Writes #DoQuery: runs a complete SELECT and shows its rows.
    void setDoQuery(const QString& query);

    /// Closes the session: stops a running load, closes the connection and releases the
    /// security manager.
    Q_INVOKABLE void Done();
    /// Empties and hides the list; the session stays open.
    Q_INVOKABLE void CloseList();
    /// Repaints the grid and empties both pickers.
    Q_INVOKABLE void Refresh();
    /// Fills the record form, the keywords and the excluded users from the current row.
    Q_INVOKABLE void UpdateForm();
    /// The name of the user with that id.
    Q_INVOKABLE QString GetUserName(short& intUserId);
    /// Writes the record form, the keywords and the excluded users back to the current
    /// document; a row changed by someone else since it was shown is not overwritten.
    Q_INVOKABLE void SaveData();
    /// The id of the user of that name, 0 when there is none.
    Q_INVOKABLE qint32 GetUserId(QString& strUserName);
    /// Marks the selected documents deleted after the user confirms; true when marked.
    Q_INVOKABLE bool MarkForDeletion();
    /// Records, for the selected documents, the volume of a folder the user picks (their files
    /// were moved by other means); server only.
    Q_INVOKABLE bool UpdateVolume();
    /// Moves the selected documents' files to a folder the user picks and records its volume;
    /// server only.
    Q_INVOKABLE bool MoveFilesAndUpdateVolume();
    /// Copies the selected documents' files to a folder the user picks; the repository is not
    /// changed.
    Q_INVOKABLE bool CopyDocuments();
    /// Exports the selected documents' index data to a FoxPro table in a folder the user picks.
    Q_INVOKABLE bool ExportData();
    /// Writes the selected documents' index data to a comma-separated text file and opens (or
    /// prints) it with the desktop's program.
    Q_INVOKABLE bool PrintData();
    /// Shows the number and total size of the selected documents' files.
    Q_INVOKABLE bool PropertyDocuments();
    /// Packages the selected documents for the portable viewer: on media of a chosen size or
    /// into one folder, with the viewer's files, a portable database and the document files.
    Q_INVOKABLE void ExportToVeltrane();

    /// \cond internal
    // Readers of the write-only properties, for the meta-object system only.
    QString writeOnlyText() const { return {}; }
    qint32 writeOnlyNumber() const { return 0; }
    bool writeOnlyFlag() const { return false; }
    vx::Recordset writeOnlyRecordset() const { return {}; }
    /// \endcond

    /// Places toolbar, grid, find and replace panel, tabs and pages in the control's area.
    void layoutControl();

signals:
    /// A query was loaded or the current row changed: the current row's item id.
    void CurrentItemID(qint32& itemid);
    /// Part of the event interface hosts bind to; this control never raises it.
    void LocateDocument(QString& sFile, QString& sVolume);
    /// The user saved the current result under a name: the name and the query string, in the
    /// form the favourites control's AddItem takes.
    void SaveQuery(QString& sName, QString& sQueryString);
    /// The current row of the versions view changed: that version's file, volume, version and
    /// item id, for the host to show.
    void LocateRevisionDoc(QString& sFile, QString& sVolume, QString& sVersion, QString& sItemID);
    /// An operation changed or used documents: a word for the action, the item ids concerned
    /// and a description, for the host's audit trail.
    void RecordAuditTrail(QString& sAction, QVariantList& colID, QString& sDescription);
    /// Asks where a document's file is (copying, properties, portable export): the item id and
    /// the stored file and volume names. The host answers inside the event through
    /// DocumentToMove.
    void LocateDocumentFromID(qint32& itemid, QString& sFile, QString& sVolume);
    /// Asks where a document's file is before moving it; answered as LocateDocumentFromID.
    void LocateDocumentToMove(qint32& itemid, QString& sFile, QString& sVolume);
    /// Asks whether this machine is the server: the host answers inside the event through
    /// ServerName and IsServer.
    void GetServerName();

    /// \cond internal
protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    /// \endcond

private:
    /// Rows DoQuery reads before it shows the result: a screenful and more.
    qsizetype firstScreenRows() const;
    /// Lets the control see keys before the widget under it (and its later children).
    void watchKeys(QWidget* widget);

    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx
