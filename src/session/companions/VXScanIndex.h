#pragma once

#include <QObject>
#include <QString>
#include <QVariant>
#include <VXUILib/vxuilib_export.h>
#include <memory>

class QWidget;

namespace vx {

class VXItemList;

/// The indexing API ("VXIntegrate.VXScanIndex"): files a new document with its index values into
/// a group's repository and document store.
class VXUILIB_EXPORT VXScanIndex : public QObject {
    Q_OBJECT
    // clang-format off
    Q_CLASSINFO("ClassName", "VXIntegrate.VXScanIndex")
    Q_CLASSINFO("Interface", "Init;RemoteIndex;SelectGroup;SetFieldContent;ExcludeUserIDList;KeywordsList;DocumentIndex")
    // clang-format on
    /// The index control's RemoteIndex value, written after Init and before SelectGroup.
    Q_PROPERTY(bool RemoteIndex READ RemoteIndex WRITE setRemoteIndex)

public:
    /// An API not yet prepared for a library; Init does that.
    explicit VXScanIndex(QObject* parent = nullptr)
        : QObject(parent) {}
    ~VXScanIndex() override = default;

    /// Prepares the API for a library (a collection of groups).
    Q_INVOKABLE virtual void Init(QString& library) = 0;

    /// Whether the document is indexed from a remote place, as the host said.
    virtual bool RemoteIndex() const = 0;
    /// Sets #RemoteIndex.
    virtual void setRemoteIndex(bool remote) = 0;

    /// Selects the group new documents go to; false when it cannot be selected.
    Q_INVOKABLE virtual bool SelectGroup(QString& group) = 0;
    /// Stages one index value of the next document.
    Q_INVOKABLE virtual void SetFieldContent(QString& column, const QVariant& value) = 0;

    /// Users associated with the next document for document security (user-id texts).
    virtual std::shared_ptr<VXItemList> ExcludeUserIDList() const = 0;
    /// Sets the users associated with the next document.
    virtual void setExcludeUserIDList(std::shared_ptr<VXItemList> list) = 0;
    /// Keywords of the next document.
    virtual std::shared_ptr<VXItemList> KeywordsList() const = 0;
    /// Sets the keywords of the next document.
    virtual void setKeywordsList(std::shared_ptr<VXItemList> list) = 0;

    /// Stores the document at `path` with the staged values for `user`; the new item id, 0 on
    /// failure. `owner` is the index control's window.
    Q_INVOKABLE virtual qint32 DocumentIndex(QString& path, QWidget* owner, QString& user) = 0;
};

} // namespace vx
