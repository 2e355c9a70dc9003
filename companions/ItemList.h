#pragma once

#include "session/companions/VXItemList.h"

namespace vx {

// The default item list: texts in the order they were added.
class ItemList : public VXItemList {
    Q_OBJECT

public:
    explicit ItemList(QObject* parent = nullptr);

    void ClearList() override;
    void AddItem(QString& text) override;
    int Count() const override;
    QString Item(int index) const override;
    QStringList items() const override;

private:
    QStringList m_items;
};

} // namespace vx
