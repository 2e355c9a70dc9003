#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <VXUILib/vxuilib_export.h>

namespace vx {

/// An ordered list of texts handed to the indexing API ("VXIntegrate.VXItemList").
class VXUILIB_EXPORT VXItemList : public QObject {
    Q_OBJECT
    // clang-format off
    Q_CLASSINFO("ClassName", "VXIntegrate.VXItemList")
    Q_CLASSINFO("Interface", "ClearList;AddItem;Count;Item")
    // clang-format on

public:
    /// An empty list.
    explicit VXItemList(QObject* parent = nullptr)
        : QObject(parent) {}
    ~VXItemList() override = default;

    /// Empties the list.
    Q_INVOKABLE virtual void ClearList() = 0;
    /// Appends a text.
    Q_INVOKABLE virtual void AddItem(QString& text) = 0;

    /// The number of entries, for the API that receives the list.
    Q_INVOKABLE virtual int Count() const = 0;
    /// The entry at a 0-based position; empty when out of range.
    Q_INVOKABLE virtual QString Item(int index) const = 0;
    /// Every entry, in the order added.
    virtual QStringList items() const = 0;
};

} // namespace vx
