#pragma once

#include "data/Connection.h"
#include "data/Recordset.h"
#include "index/VXIndex.h"
#include "server/ControlFactory.h"
#include "server/LateBinding.h"
#include "session/PromptText.h"
#include "support/SampleFormFields.h"
#include "support/SampleRepository.h"
#include "support/SpyCompanions.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QTabBar>
#include <gtest/gtest.h>
#include <memory>

namespace vx::test {

// An index control made through the factory, on its own copy of the sample repository, with
// spy companions (only those named by `spyKinds`; the rest are the registered defaults).
class IndexFixture : public ::testing::Test {
protected:
    explicit IndexFixture(int spyKinds = SpyCompanions::All)
        : spies(spyKinds) {
        spies.answers().fields = sampleFormFields();
    }

    TestEnvironment environment;
    SampleRepository sample;
    SpyCompanions spies;
    std::unique_ptr<VXIndex> index;

    void createIndex() {
        QWidget* control = ControlFactory::create(QStringLiteral("VXUILib.VXIndex"));
        index.reset(qobject_cast<VXIndex*>(control));
        ASSERT_NE(index, nullptr);
        index->setObjectName(QStringLiteral("index1"));
    }

    // The host's usual start-up: identity, Init, then the form definition.
    void startUp(qint32 permission = 1) {
        createIndex();
        index->setGroupName(SampleRepository::GroupName);
        index->setGroupId(sample.groupId());
        index->setUserName(QStringLiteral("alice"));
        index->setCurrentLibrary(SampleRepository::LibraryName);
        index->setUserPermission(permission);
        index->setInit(sample.initFilePath());
        index->setGroupInitString(sample.formDefinitionPath());
    }

    SpyDynaForm* form() const { return index->findChild<SpyDynaForm*>(QStringLiteral("Group")); }
    SpyField& field(const QString& column) {
        for (SpyField& f : form()->fields())
            if (f.name == column)
                return f;
        ADD_FAILURE() << "no field " << column.toStdString();
        return form()->fields().first();
    }
    QWidget* child(const char* name) const { return index->findChild<QWidget*>(name); }
    QTabBar* tabs() const { return index->findChild<QTabBar*>(QStringLiteral("TabStrip1")); }

    void pickKeyword(const QString& word) { callMember(child("kss2"), "AddListItem", word); }

    Connection openRepository() const {
        Connection connection;
        connection.open(sample.connectionText());
        return connection;
    }

    // The first row of a query as (column -> value), empty when there is none.
    QVariantMap firstRow(const QString& sql) const {
        Recordset rows;
        rows.open(sql, openRepository());
        QVariantMap values;
        if (!rows.eof())
            for (int i = 0; i < rows.fieldCount(); ++i)
                values.insert(rows.field(i).name().toLower(), rows.value(i));
        return values;
    }

    // Spy calls of the indexing API, the item lists and the security manager, in order.
    QStringList companionCalls() const {
        QStringList calls;
        for (const QString& call : spies.callsWithoutReads())
            if (!call.startsWith(QLatin1String("VXDynaForm.")))
                calls << call;
        return calls;
    }
};

} // namespace vx::test
