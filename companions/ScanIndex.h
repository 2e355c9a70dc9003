#pragma once

#include "session/companions/VXScanIndex.h"

#include <memory>

namespace vx {

// The default indexing API. Init names a library, whose groups the library catalog lists (one
// INI section per library, one key per group naming its initialisation file); SelectGroup opens
// the group's repository on a connection of its own. DocumentIndex copies the document into the
// group's document folder under a new name (the new item id and the original extension, at most
// 20 characters) and writes KTItem, KTFile, the group-table row, keywords and KTSecurity rows in
// one transaction: on any failure nothing stays written, the copied file included. Staged values
// and lists apply to one document: DocumentIndex drops them.
class ScanIndex : public VXScanIndex {
    Q_OBJECT

public:
    explicit ScanIndex(QObject* parent = nullptr);
    ~ScanIndex() override;

    void Init(QString& library) override;
    bool RemoteIndex() const override;
    void setRemoteIndex(bool remote) override;
    // False when the library does not list the group or its repository does not know it;
    // throws vx::Error when the repository cannot be opened.
    bool SelectGroup(QString& group) override;
    void SetFieldContent(QString& column, const QVariant& value) override;
    std::shared_ptr<VXItemList> ExcludeUserIDList() const override;
    void setExcludeUserIDList(std::shared_ptr<VXItemList> list) override;
    std::shared_ptr<VXItemList> KeywordsList() const override;
    void setKeywordsList(std::shared_ptr<VXItemList> list) override;
    // A failure is shown to the user (owned by `owner`, title "DocumentIndex") and gives 0.
    qint32 DocumentIndex(QString& path, QWidget* owner, QString& user) override;

    // Why the last SelectGroup or DocumentIndex failed; empty after a success.
    QString lastError() const;

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx
