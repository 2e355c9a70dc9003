#pragma once

#include "companions/DefaultCompanions.h"
#include "data/Connection.h"
#include "data/Recordset.h"
#include "query/VXQuery.h"
#include "server/ControlFactory.h"
#include "server/LateBinding.h"
#include "session/companions/VXDynaForm.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>
#include <memory>

namespace vx::test {

// The query control with the default companions on the sample's search form, initialised as a
// host does.
class QueryOnSample : public ::testing::Test {
protected:
    TestEnvironment environment;
    SampleRepository sample;
    std::unique_ptr<QWidget> widget;
    VXQuery* control = nullptr;
    VXDynaForm* form = nullptr;
    QWidget* keywords = nullptr;

    void SetUp() override {
        registerDefaultCompanions();
        widget.reset(ControlFactory::create(QStringLiteral("VXUILib.VXQuery")));
        control = qobject_cast<VXQuery*>(widget.get());
        ASSERT_NE(control, nullptr);
        form = control->findChild<VXDynaForm*>(QStringLiteral("Group"));
        keywords = control->findChild<QWidget*>(QStringLiteral("kss1"));
        ASSERT_TRUE(form && keywords);
        writeMember(control, "MethodInitString", sample.initFilePath());
        writeMember(control, "CurrentLibrary", sample.LibraryName);
        writeMember(control, "GroupName", sample.GroupName);
        QString path = sample.queryFormPath();
        ASSERT_TRUE(control->Init(path));
    }

    // Makes the form's field of that column the current one.
    bool selectField(const QString& column) {
        for (form->MoveFirstField(); !form->FieldEOF(); form->MoveNextField()) {
            if (form->FieldName().compare(column, Qt::CaseInsensitive) == 0)
                return true;
        }
        return false;
    }

    // The item ids a query returns on the sample, in the engine's order; throws vx::Error.
    QList<qint32> itemIds(const QString& query) const {
        Connection connection;
        connection.open(sample.connectionText());
        Recordset result;
        result.open(query, connection);
        QList<qint32> ids;
        for (; !result.eof(); result.moveNext())
            ids << result.value(QStringLiteral("itemid")).toInt();
        return ids;
    }
};

} // namespace vx::test
