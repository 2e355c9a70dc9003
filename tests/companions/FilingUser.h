#pragma once

#include "companions/ItemList.h"
#include "companions/ScanIndex.h"
#include "session/UiServices.h"
#include "support/SampleRepository.h"
#include "support/ScriptedUiServices.h"

#include <functional>
#include <gtest/gtest.h>
#include <vector>

namespace vx::test {

// Another user filing copies of `document` into the sample group through an indexing API (and
// so a connection) of their own, each tagged with `keyword`, for as long as `more(filed so far)`
// says; `stage(api, n)` sets the n-th document's fields. Any message fails the test. Returns
// the item ids, 0 for each filing refused.
inline std::vector<qint32>
fileAsAnotherUser(const QString& document, QString user, const QString& keyword,
                  const std::function<bool(int)>& more,
                  const std::function<void(VXScanIndex&, int)>& stage = {}) {
    std::unique_ptr<UiServices> previous =
        installUiServices(std::make_unique<ScriptedUiServices>());
    ScanIndex api;
    QString library = SampleRepository::LibraryName;
    QString group = SampleRepository::GroupName;
    api.Init(library);
    std::vector<qint32> ids;
    if (!api.SelectGroup(group))
        ADD_FAILURE() << api.lastError().toStdString();
    else
        while (more(int(ids.size()))) {
            if (stage)
                stage(api, int(ids.size()));
            auto keywords = std::make_shared<ItemList>();
            QString word = keyword;
            keywords->AddItem(word);
            api.setKeywordsList(keywords);
            QString path = document;
            ids.push_back(api.DocumentIndex(path, nullptr, user));
        }
    installUiServices(std::move(previous));
    return ids;
}

} // namespace vx::test
