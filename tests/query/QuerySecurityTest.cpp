#include "QueryOnSample.h"
#include "core/SampleContent.h"
#include "data/Error.h"
#include "session/LibraryState.h"

#include <gtest/gtest.h>
#include <memory>
#include <optional>

using namespace vx;
using Document = vx::repo::sample::Document;

namespace {

// Texts a hostile user types or picks, meant to close the query's quotes or parentheses early.
const QStringList hostileTexts{
    QStringLiteral("x')) OR 1=1 OR ((keyword = 'y"),
    QStringLiteral("x') OR ('1'='1"),
    QStringLiteral("x' OR '1'='1"),
    QStringLiteral("\\' or 1=1 --"),
    QStringLiteral("\\') OR 1=1 OR ('\\"),
    QStringLiteral("*' OR itemid > 0 OR '"),
    QStringLiteral("x') UNION SELECT * FROM ktitem WHERE ('a'='a"),
    QStringLiteral("x'); DELETE FROM KTSecurity; --"),
};

// The query control on the sample, searched by a user whom KTSecurity keeps from some documents:
// whatever that user types or picks, none of those documents may come back. On PostgreSQL the
// database reads backslashes as escapes unless the session says otherwise.
class QuerySecurityTest : public test::QueryOnSample {
protected:
    qint32 user = 0;
    QList<qint32> hidden; // the documents the user may not see

    void SetUp() override {
        if (test::sampleEngine() == test::SampleEngine::Postgres) {
            Connection connection;
            connection.open(sample.connectionText());
            Recordset name;
            name.open(QStringLiteral("SELECT current_database() AS name"), connection);
            connection.execute(QStringLiteral("ALTER DATABASE \"%1\" SET "
                                              "standard_conforming_strings = off")
                                   .arg(name.value(0).toString()));
            Recordset setting;
            setting.open(QStringLiteral("SELECT count(*) FROM pg_db_role_setting s JOIN "
                                        "pg_database d ON d.oid = s.setdatabase WHERE "
                                        "d.datname = current_database() AND "
                                        "'standard_conforming_strings=off' = ANY(s.setconfig)"),
                         connection);
            ASSERT_EQ(setting.value(0).toInt(), 1);
        }
        QueryOnSample::SetUp();
        if (HasFatalFailure())
            return;

        const auto count = qint32(sample.expected().documents);
        for (qint32 id = 1; id <= count && user == 0; ++id) {
            const Document d = repo::sample::document(id, count);
            if (!d.excludedUserIds.isEmpty())
                user = d.excludedUserIds.first();
        }
        ASSERT_NE(user, 0) << "the sample should exclude someone from some documents";
        for (qint32 id = 1; id <= count; ++id) {
            if (repo::sample::document(id, count).excludedUserIds.contains(user))
                hidden << id;
        }
        library().securityTablePresent = true;
        control->setUserID(short(user));
    }

    // The ids the control's query returns; nothing when the control refuses the query or the
    // engine rejects it.
    std::optional<QList<qint32>> search() {
        try {
            return itemIds(control->queryString());
        } catch (const Error& error) {
            EXPECT_FALSE(error.description().isEmpty());
            return std::nullopt;
        }
    }

    void expectNoHiddenDocument(const QList<qint32>& ids, const QString& context) {
        for (const qint32 id : ids)
            EXPECT_FALSE(hidden.contains(id))
                << "document " << id << " shown to user " << user << ": " << context.toStdString();
    }
};

TEST_F(QuerySecurityTest, HostileKeywordsAreRefusedOrStayInsideTheRestriction) {
    // A widened keyword condition joins every row of the three tables with every other: fewer
    // documents keep that quick.
    {
        Connection connection;
        connection.open(sample.connectionText());
        for (const char* table : {"keywords", "Invoices", "KTItem"})
            connection.execute(QStringLiteral("DELETE FROM %1 WHERE itemid > 40").arg(table));
    }
    ASSERT_LE(hidden.first(), 40);
    // The customer of a hidden document, so that the plain search would find it.
    const auto count = qint32(sample.expected().documents);
    const Document target = repo::sample::document(hidden.first(), count);
    ASSERT_TRUE(selectField(QStringLiteral("Customer")));
    form->setFieldValue(target.customer);

    int refused = 0;
    int widened = 0;
    for (const QString& keyword : hostileTexts) {
        callMember(keywords, "ClearContents");
        callMember(keywords, "AddListItem", keyword);
        const auto ids = search();
        if (!ids) {
            ++refused;
            continue;
        }
        expectNoHiddenDocument(*ids, keyword);
        // A balanced OR still reaches every document the user may see: the restriction held
        // against a condition that really was widened.
        widened += ids->size() > 1 ? 1 : 0;
    }
    EXPECT_GE(refused, 4) << "texts that close the parentheses early are refused or rejected";
    EXPECT_GE(widened, 1);

    // The keyword from the report: refused with a message that says why.
    callMember(keywords, "ClearContents");
    callMember(keywords, "AddListItem", hostileTexts.first());
    try {
        control->queryString();
        ADD_FAILURE() << "the hostile keyword was accepted";
    } catch (const Error& error) {
        EXPECT_TRUE(error.description().contains(QStringLiteral("parenthesis")))
            << error.description().toStdString();
    }
}

TEST_F(QuerySecurityTest, HostileCriteriaInEveryFieldTypeMatchNothingHidden) {
    struct Case {
        QString column;
        bool text; // a text criterion: a hostile one matches no stored value at all
    };
    const QList<Case> cases{
        {QStringLiteral("InvoiceNo"), true},    {QStringLiteral("Customer"), true},
        {QStringLiteral("Status"), true},       {QStringLiteral("Amount"), false},
        {QStringLiteral("InvoiceDate"), false}, {QStringLiteral("Paid"), false},
        {QStringLiteral("Categories"), true},   {QStringLiteral("Notes"), true},
    };
    for (const Case& field : cases) {
        for (const QString& text : hostileTexts) {
            const std::string context = (field.column + QStringLiteral(": ") + text).toStdString();
            control->Refresh();
            ASSERT_TRUE(selectField(field.column)) << context;
            try {
                if (field.column == QLatin1String("Categories"))
                    form->AddFieldListItem(text);
                else
                    form->setFieldValue(text);
            } catch (const Error&) {
                EXPECT_FALSE(field.text) << context << ": a text field takes any text";
                continue;
            }
            const auto ids = search();
            if (!ids) {
                // Numbers and dates reject the text; a text criterion is always quoted.
                EXPECT_FALSE(field.text) << context;
                continue;
            }
            expectNoHiddenDocument(*ids, QString::fromStdString(context));
            if (field.text) {
                EXPECT_TRUE(ids->isEmpty()) << context;
            }
        }
    }
}

} // namespace
