#pragma once

#include <QString>
#include <QVariantList>
#include <QWidget>
#include <VXUILib/vxuilib_export.h>
#include <memory>

namespace vx {

// The data-entry control for indexing a new document of a group: the group's index form, the
// keyword picker, the dictionary editor and the hint-list editor on four tabs, and the two ways
// of filing the entries (through the indexing API, or straight into the repository).
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
    Q_PROPERTY(QString Init READ init WRITE setInit)
    Q_PROPERTY(QString GroupInitString READ groupInitString WRITE setGroupInitString)
    Q_PROPERTY(QString GroupName READ groupName WRITE setGroupName)
    Q_PROPERTY(qint32 GroupID READ groupId WRITE setGroupId)
    Q_PROPERTY(QString UserName READ userName WRITE setUserName)
    Q_PROPERTY(qint32 CurItemID READ curItemId WRITE setCurItemId)
    Q_PROPERTY(qint32 CurFileType READ curFileType WRITE setCurFileType)
    Q_PROPERTY(qint32 UserPermission READ userPermission WRITE setUserPermission)
    Q_PROPERTY(QString CurrentLibrary READ currentLibrary WRITE setCurrentLibrary)
    Q_PROPERTY(QString DocumentPath READ documentPath WRITE setDocumentPath)
    Q_PROPERTY(QString GetItemID READ getItemId)
    Q_PROPERTY(QVariantList UserIDs READ userIds WRITE setUserIds)
    Q_PROPERTY(bool RemoteIndex READ remoteIndex WRITE setRemoteIndex)

public:
    explicit VXIndex(QWidget* parent = nullptr);
    ~VXIndex() override;

    QString init() const;
    void setInit(const QString& initFilePath);
    QString groupInitString() const;
    void setGroupInitString(const QString& formDefinitionPath);
    QString groupName() const;
    void setGroupName(const QString& name);
    qint32 groupId() const;
    void setGroupId(qint32 id);
    QString userName() const;
    void setUserName(const QString& name);
    qint32 curItemId() const;
    void setCurItemId(qint32 id);
    qint32 curFileType() const;
    void setCurFileType(qint32 type);
    qint32 userPermission() const;
    void setUserPermission(qint32 permission);
    QString currentLibrary() const;
    void setCurrentLibrary(const QString& library);
    QString documentPath() const;
    void setDocumentPath(const QString& path);
    QString getItemId() const;
    QVariantList userIds() const;
    void setUserIds(const QVariantList& ids);
    bool remoteIndex() const;
    void setRemoteIndex(bool remote);

    Q_INVOKABLE bool UpdateRecordAPI();
    Q_INVOKABLE qint32 GetUserId(QString& strUserName);
    Q_INVOKABLE bool UpdateRecord();
    Q_INVOKABLE void RefreshFormContent();
    Q_INVOKABLE void Refresh();
    Q_INVOKABLE void Done();

    // Whether Init completed (the session is open).
    bool isInitialised() const;

signals:
    void KeyDown(short& KeyCode, short& Shift);
    // Part of the event interface hosts bind to; this control never raises it.
    void CommitIndex();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void showPageOfSelectedTab();
    void selectGroupTab();
    void layOutPages();
    QString groupTabCaption() const;

    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx
