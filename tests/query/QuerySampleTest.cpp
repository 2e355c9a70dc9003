#include "QueryOnSample.h"
#include "core/SampleContent.h"
#include "session/LibraryState.h"

#include <QTabBar>
#include <QTest>
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

using namespace vx;
using Document = vx::repo::sample::Document;

namespace {

// The query control with the default companions on the sample's search form: the texts it
// returns must run and select exactly the documents the sample describes.
class QuerySampleTest : public test::QueryOnSample {
protected:
    void setField(const QString& column, const QVariant& value) {
        if (!selectField(column))
            FAIL() << "no field " << column.toStdString();
        form->setFieldValue(value);
    }

    QList<qint32> run(const QString& query) const {
        QList<qint32> ids = itemIds(query);
        std::sort(ids.begin(), ids.end());
        return ids;
    }

    QList<Document> documents() const {
        const auto count = qint32(sample.expected().documents);
        QList<Document> all;
        for (qint32 id = 1; id <= count; ++id)
            all << repo::sample::document(id, count);
        return all;
    }

    QList<qint32> expected(const std::function<bool(const Document&)>& match) const {
        QList<qint32> ids;
        for (const Document& document : documents()) {
            if (!document.deleted && match(document))
                ids << document.itemId;
        }
        return ids;
    }
};

TEST_F(QuerySampleTest, QueryTextsSelectTheSampleRowsWithAndWithoutSecurity) {
    const QString customer = QStringLiteral("Acme Tools");
    setField(QStringLiteral("Customer"), customer);
    const auto ofCustomer = [&](const Document& d) { return d.customer == customer; };
    const QList<qint32> customerRows = expected(ofCustomer);
    ASSERT_GT(customerRows.size(), 2);
    EXPECT_EQ(run(control->queryString()), customerRows);
    EXPECT_FALSE(control->queryString().contains(QStringLiteral("ORDER BY")));
    Recordset result = control->queryResult();
    ASSERT_TRUE(result.isOpen());
    EXPECT_EQ(result.recordCount(), customerRows.size());

    // Two keywords carried by the customer's documents, one of them by a document kept from a
    // user: either keyword selects a document.
    QStringList words;
    qint32 user = 0;
    for (const Document& d : documents()) {
        if (ofCustomer(d) && !d.deleted && !d.keywords.isEmpty() && !d.excludedUserIds.isEmpty()) {
            words << d.keywords.first();
            user = d.excludedUserIds.first();
            break;
        }
    }
    for (const Document& d : documents()) {
        if (ofCustomer(d) && !d.deleted && !d.keywords.isEmpty() &&
            !words.contains(d.keywords.first()))
            words << d.keywords.first();
        if (words.size() == 2)
            break;
    }
    ASSERT_EQ(words.size(), 2);
    ASSERT_NE(user, 0) << "the sample should exclude someone from these documents";
    callMember(keywords, "AddListItem", words.at(0));
    callMember(keywords, "AddListItem", words.at(1));
    const auto withKeywords = [&](const Document& d) {
        return ofCustomer(d) &&
               (d.keywords.contains(words.at(0)) || d.keywords.contains(words.at(1)));
    };
    const QList<qint32> keywordRows = expected(withKeywords);
    ASSERT_FALSE(keywordRows.isEmpty());
    ASSERT_NE(keywordRows, customerRows) << "the keywords should narrow the search";
    EXPECT_EQ(run(control->queryString()), keywordRows);

    // The user kept away from one of those documents no longer finds it.
    library().securityTablePresent = true;
    control->setUserID(short(user));
    const QList<qint32> visible = expected(
        [&](const Document& d) { return withKeywords(d) && !d.excludedUserIds.contains(user); });
    ASSERT_LT(visible.size(), keywordRows.size());
    EXPECT_EQ(run(control->queryString()), visible);
}

TEST_F(QuerySampleTest, BothTabsLayOutWithinTheControl) {
    control->resize(560, 420);
    control->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(control));
    auto* tabs = control->findChild<QTabBar*>();
    ASSERT_NE(tabs, nullptr);
    EXPECT_EQ(tabs->tabText(0), sample.GroupName);
    EXPECT_TRUE(form->isVisible());
    EXPECT_TRUE(control->rect().contains(form->geometry()));

    QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(1).center());
    EXPECT_TRUE(keywords->isVisible());
    EXPECT_FALSE(form->isVisible());
    EXPECT_EQ(keywords->geometry(), form->geometry());
    EXPECT_GE(form->geometry().top(), tabs->geometry().bottom());

    QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(0).center());
    EXPECT_TRUE(form->isVisible());
    EXPECT_FALSE(keywords->isVisible());
}

} // namespace
