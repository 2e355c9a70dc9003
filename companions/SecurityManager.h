#pragma once

#include "session/companions/VXSecurity.h"

#include <memory>

namespace vx {

// The default security manager. Init opens its own connection from the group initialisation
// file. The rows of the selected item change in one transaction, from SelectItem to KillItem;
// an item left without KillItem (a new SelectItem, Done, destruction) is rolled back whole.
class SecurityManager : public VXSecurity {
    Q_OBJECT

public:
    explicit SecurityManager(QObject* parent = nullptr);
    ~SecurityManager() override;

    QString Init() const override;
    // Throws vx::Error when the connection cannot be opened.
    void setInit(const QString& initFilePath) override;
    // Throws vx::Error before Init.
    void SelectItem(qint32& itemId) override;
    void DeleteItemSecurity() override;
    // False (nothing written) when the row cannot be written or no item is selected.
    bool AddItemSecurity(qint32 userId, qint32 itemId) override;
    void KillItem() override;
    void Done() override;

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx
