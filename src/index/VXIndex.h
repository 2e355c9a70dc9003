#pragma once

#include <QString>
#include <QVariantList>
#include <QWidget>
#include <VXUILib/vxuilib_export.h>
#include <memory>

namespace vx {

/// The data-entry control for indexing a new document of a group: the group's index form, the
/// keyword picker, the dictionary editor and the hint-list editor on four tabs, and the two ways
/// of filing the entries (through the indexing API, or straight into the repository).
class VXUILIB_EXPORT VXIndex : public QWidget {
    Q_OBJECT
    Q_CLASSINFO("ClassName", "VXUILib.VXIndex")
    Q_CLASSINFO("Interface",
                "Init;GroupInitString;GroupName;GroupID;UserName;CurItemID;CurFileType;"
                "UserPermission;CurrentLibrary;DocumentPath;GetItemID;UserIDs;RemoteIndex;"
                "UpdateRecordAPI;GetUserId;UpdateRecord;RefreshFormContent;Refresh;Done")
    Q_CLASSINFO("Events", "KeyDown;CommitIndex")
    Q_CLASSINFO("WriteOnly", "Init;GroupInitString;GroupName;GroupID;UserName;CurItemID;"
                             "CurFileType;UserPermission;CurrentLibrary;DocumentPath;UserIDs;"
                             "RemoteIndex")
    // Readers of write-only properties give back what was written; hosts cannot rely on them.
    /// The group initialisation file; writing it opens the control's session (its own connection,
    /// the indexing API and, where the repository has document security, the security manager) and
    /// hands the file to the dictionary editor and keyword picker.
    Q_PROPERTY(QString Init READ init WRITE setInit)
    /// The group's form-definition file: becomes the library-wide one and builds the index form.
    Q_PROPERTY(QString GroupInitString READ groupInitString WRITE setGroupInitString)
    /// The group's name: caption of the "Group" tab and name of the group table.
    Q_PROPERTY(QString GroupName READ groupName WRITE setGroupName)
    /// The group's id, written to each new item.
    Q_PROPERTY(qint32 GroupID READ groupId WRITE setGroupId)
    /// The user's name, written to each new item and handed to the indexing API.
    Q_PROPERTY(QString UserName READ userName WRITE setUserName)
    /// The item id of the document being indexed: UpdateRecord files under it, UpdateRecordAPI sets
    /// it to the id the API gave.
    Q_PROPERTY(qint32 CurItemID READ curItemId WRITE setCurItemId)
    /// The file type of the document being indexed.
    Q_PROPERTY(qint32 CurFileType READ curFileType WRITE setCurFileType)
    /// The user's permission bits; 1 or 4 let the user edit hint lists.
    Q_PROPERTY(qint32 UserPermission READ userPermission WRITE setUserPermission)
    /// The library (collection of groups): handed to the indexing API, and the first half of the
    /// hand-over section name.
    Q_PROPERTY(QString CurrentLibrary READ currentLibrary WRITE setCurrentLibrary)
    /// Full path of the document file being indexed, handed to the indexing API.
    Q_PROPERTY(QString DocumentPath READ documentPath WRITE setDocumentPath)
    /// A stored item-id text; this control never assigns it, so it reads empty.
    Q_PROPERTY(QString GetItemID READ getItemId)
    /// The users associated with the new document for document security (user ids, see GetUserId);
    /// Init sets it to the single marker "empty".
    Q_PROPERTY(QVariantList UserIDs READ userIds WRITE setUserIds)
    /// Handed unchanged to the indexing API before each UpdateRecordAPI.
    Q_PROPERTY(bool RemoteIndex READ remoteIndex WRITE setRemoteIndex)

public:
    /// An index control with its pages and child controls, not yet initialised.
    explicit VXIndex(QWidget* parent = nullptr);
    /// Drops the hint rows and closes the connection.
    ~VXIndex() override;

    /// Reads #Init (what was written).
    QString init() const;
    /// Writes #Init.
    void setInit(const QString& initFilePath);
    /// Reads #GroupInitString (what was written).
    QString groupInitString() const;
    /// Writes #GroupInitString.
    void setGroupInitString(const QString& formDefinitionPath);
    /// Reads #GroupName (what was written).
    QString groupName() const;
    /// Writes #GroupName.
    void setGroupName(const QString& name);
    /// Reads #GroupID (what was written).
    qint32 groupId() const;
    /// Writes #GroupID.
    void setGroupId(qint32 id);
    /// Reads #UserName (what was written).
    QString userName() const;
    /// Writes #UserName.
    void setUserName(const QString& name);
    /// Reads #CurItemID (what was written).
    qint32 curItemId() const;
    /// Writes #CurItemID.
    void setCurItemId(qint32 id);
    /// Reads #CurFileType (what was written).
    qint32 curFileType() const;
    /// Writes #CurFileType.
    void setCurFileType(qint32 type);
    /// Reads #UserPermission (what was written).
    qint32 userPermission() const;
    /// Writes #UserPermission.
    void setUserPermission(qint32 permission);
    /// Reads #CurrentLibrary (what was written).
    QString currentLibrary() const;
    /// Writes #CurrentLibrary.
    void setCurrentLibrary(const QString& library);
    /// Reads #DocumentPath (what was written).
    QString documentPath() const;
    /// Writes #DocumentPath.
    void setDocumentPath(const QString& path);
    /// Reads #GetItemID.
    QString getItemId() const;
    /// Reads #UserIDs (what was written).
    QVariantList userIds() const;
    /// Writes #UserIDs.
    void setUserIds(const QVariantList& ids);
    /// Reads #RemoteIndex (what was written).
    bool remoteIndex() const;
    /// Writes #RemoteIndex.
    void setRemoteIndex(bool remote);

    /// Files the new document through the indexing API with the form's values, the keywords and
    /// the document security; true when the API gave an item id, which CurItemID then holds.
    /// Failures are shown to the user.
    Q_INVOKABLE bool UpdateRecordAPI();
    /// The id of the user of that name, 0 when there is none.
    Q_INVOKABLE qint32 GetUserId(QString& strUserName);
    /// Writes the new document's rows (item, group table, keywords) straight into the
    /// repository under CurItemID; true when all were written. Failures are shown to the user.
    Q_INVOKABLE bool UpdateRecord();
    /// Fills the form from the index hand-over file, if one waits for this library and group,
    /// and deletes the file.
    Q_INVOKABLE void RefreshFormContent();
    /// Empties the form and the picked keywords for the next document.
    Q_INVOKABLE void Refresh();
    /// Closes the session: the connection, the security manager and the item lists.
    Q_INVOKABLE void Done();

    /// Whether Init completed (the session is open).
    bool isInitialised() const;

signals:
    /// A key went down while the control itself had the focus: the platform key code and shift
    /// state, which a directly connected slot may change.
    void KeyDown(short& KeyCode, short& Shift);
    /// Part of the event interface hosts bind to; this control never raises it.
    void CommitIndex();

    /// \cond internal
protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    /// \endcond

private:
    void showPageOfSelectedTab();
    void selectGroupTab();
    void layOutPages();
    QString groupTabCaption() const;

    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx
