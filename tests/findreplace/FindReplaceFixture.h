#pragma once

#include "companions/DefaultCompanions.h"
#include "data/Connection.h"
#include "data/Recordset.h"
#include "hitlist/FindReplacePanel.h"
#include "support/FakeHitListContext.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <gtest/gtest.h>
#include <memory>

namespace vx::test {

// The panel over a sample hit list, inside a plain host widget, with the scripted UI.
class FindReplaceFixture : public ::testing::Test {
protected:
    TestEnvironment environment;
    SampleRepository sample;
    std::unique_ptr<FakeHitListContext> hitList;
    QWidget host;
    FindReplacePanel* panel = nullptr;

    static void SetUpTestSuite() { registerDefaultCompanions(); }

    void SetUp() override { useQuery(sampleResultQuery()); }

    // A hit list showing `query`, with a fresh panel.
    void useQuery(const QString& query) {
        delete panel;
        hitList = std::make_unique<FakeHitListContext>(sample, query);
        panel = new FindReplacePanel(*hitList, &host);
        panel->move(150, 0);
        host.resize(900, 160);
        host.show();
    }

    ScriptedUiServices& ui() { return environment.ui(); }

    template <typename T>
    T* child(const char* name) {
        T* found = panel->findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    QComboBox* findWhat() { return child<QComboBox>("cmbFindWhat"); }
    QComboBox* replaceWith() { return child<QComboBox>("cmbReplaceWith"); }
    void click(const char* button) { child<QPushButton>(button)->click(); }

    // Opens the panel on a column and fills both boxes.
    void openOn(const QString& caption, const QString& find = {}, const QString& replace = {}) {
        hitList->clickedCaption = caption;
        panel->openForClickedColumn();
        findWhat()->setEditText(find);
        replaceWith()->setEditText(replace);
    }

    // Reads the repository through a connection of its own.
    Recordset read(const QString& sql) {
        Connection connection;
        connection.open(sample.connectionText());
        Recordset rows;
        rows.open(sql, connection);
        return rows;
    }
    // Item ids of the group table's documents whose customer is `customer` (any case).
    QList<qint32> itemsOfCustomer(const QString& customer, const QString& criteria = "1=1") {
        QList<qint32> ids;
        Recordset rows = read("SELECT Invoices.itemid AS itemid, Invoices.Customer AS Customer "
                              "FROM ktitem, Invoices WHERE ktitem.itemid = Invoices.itemid AND " +
                              criteria + " ORDER BY Invoices.itemid");
        for (; !rows.eof(); rows.moveNext())
            if (rows.value("Customer").toString().compare(customer, Qt::CaseInsensitive) == 0)
                ids << rows.value("itemid").toInt();
        return ids;
    }
    QString customerOf(qint32 itemId) {
        Recordset rows =
            read("SELECT Customer FROM Invoices WHERE itemid = " + QString::number(itemId));
        return rows.eof() ? QString() : rows.value("Customer").toString();
    }
    // Item ids of the hit list's result, in its order.
    QList<qint32> resultItems() {
        QList<qint32> ids;
        Recordset result = hitList->resultSet();
        const int column = result.fieldIndex("itemid");
        for (qsizetype row = 0; row < result.recordCount(); ++row)
            ids << result.valueAt(row, column).toInt();
        return ids;
    }
};

} // namespace vx::test
