#pragma once

#include <QObject>
#include <QString>
#include <VXUILib/vxuilib_export.h>

namespace vx {

/// The document-security manager ("VXAdmin.VXSecurity"): maintains the access list (KTSecurity
/// rows) of one selected item. Calling order: Init, SelectItem, DeleteItemSecurity,
/// AddItemSecurity per user, KillItem, Done.
class VXUILIB_EXPORT VXSecurity : public QObject {
    Q_OBJECT
    // clang-format off
    Q_CLASSINFO("ClassName", "VXAdmin.VXSecurity")
    Q_CLASSINFO("Interface", "Init;SelectItem;DeleteItemSecurity;AddItemSecurity;KillItem;Done")
    // clang-format on
    /// The group initialisation file the manager works on (the owning control's own Init
    /// value). Write-only in use; the reader returns what was written.
    Q_PROPERTY(QString Init READ Init WRITE setInit)

public:
    /// A manager not yet prepared for a group; writing Init does that.
    explicit VXSecurity(QObject* parent = nullptr)
        : QObject(parent) {}
    ~VXSecurity() override = default;

    /// Path of the group initialisation file.
    virtual QString Init() const = 0;
    /// Prepares the manager for the group of that initialisation file.
    virtual void setInit(const QString& initFilePath) = 0;

    /// Selects the item whose access list is edited.
    Q_INVOKABLE virtual void SelectItem(qint32& itemId) = 0;
    /// Removes every user from the selected item's list.
    Q_INVOKABLE virtual void DeleteItemSecurity() = 0;
    /// Adds one user to the item's list; true on success.
    Q_INVOKABLE virtual bool AddItemSecurity(qint32 userId, qint32 itemId) = 0;
    /// Called after the last AddItemSecurity of the selected item.
    Q_INVOKABLE virtual void KillItem() = 0;
    /// Releases what the manager holds.
    Q_INVOKABLE virtual void Done() = 0;
};

} // namespace vx
