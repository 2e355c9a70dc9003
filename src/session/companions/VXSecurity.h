#pragma once

#include <QObject>
#include <QString>
#include <VXUILib/vxuilib_export.h>

namespace vx {

// The document-security manager ("VXAdmin.VXSecurity"): maintains the access list (KTSecurity
// rows) of one selected item. Calling order: Init, SelectItem, DeleteItemSecurity,
// AddItemSecurity per user, KillItem, Done.
class VXUILIB_EXPORT VXSecurity : public QObject {
    Q_OBJECT
    // clang-format off
    Q_CLASSINFO("ClassName", "VXAdmin.VXSecurity")
    Q_CLASSINFO("Interface", "Init;SelectItem;DeleteItemSecurity;AddItemSecurity;KillItem;Done")
    // clang-format on
    // Write-only in use; the reader returns what was written.
    Q_PROPERTY(QString Init READ Init WRITE setInit)

public:
    explicit VXSecurity(QObject* parent = nullptr)
        : QObject(parent) {}
    ~VXSecurity() override = default;

    // Path of the group initialisation file.
    virtual QString Init() const = 0;
    virtual void setInit(const QString& initFilePath) = 0;

    Q_INVOKABLE virtual void SelectItem(qint32& itemId) = 0;
    Q_INVOKABLE virtual void DeleteItemSecurity() = 0;
    Q_INVOKABLE virtual bool AddItemSecurity(qint32 userId, qint32 itemId) = 0;
    Q_INVOKABLE virtual void KillItem() = 0;
    Q_INVOKABLE virtual void Done() = 0;
};

} // namespace vx
