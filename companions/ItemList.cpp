#include "companions/ItemList.h"

namespace vx {

ItemList::ItemList(QObject* parent)
    : VXItemList(parent) {}

void ItemList::ClearList() {
    m_items.clear();
}
void ItemList::AddItem(QString& text) {
    m_items.append(text);
}
int ItemList::Count() const {
    return int(m_items.size());
}
QString ItemList::Item(int index) const {
    return m_items.value(index);
}
QStringList ItemList::items() const {
    return m_items;
}

} // namespace vx
