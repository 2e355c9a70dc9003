#include "RepositoryBrowser.h"

#include "data/Error.h"
#include "data/Recordset.h"
#include "data/model/RecordsetModel.h"

#include <QHeaderView>
#include <QLabel>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableView>

namespace vx::demo {

RepositoryBrowser::RepositoryBrowser(const Connection& connection, const QString& repositoryDir,
                                     QWidget* parent)
    : QMainWindow(parent)
    , m_connection(connection)
    , m_tabs(new QTabWidget(this)) {
    setWindowTitle(tr("VXUILib sample repository"));
    setCentralWidget(m_tabs);
    statusBar()->addWidget(new QLabel(repositoryDir, this));

    Recordset tables = m_connection.openSchema(SchemaKind::Tables);
    for (tables.moveFirst(); !tables.eof(); tables.moveNext()) {
        if (tables.value(QStringLiteral("TABLE_TYPE")).toString() == u"TABLE")
            addTable(tables.value(QStringLiteral("TABLE_NAME")).toString());
    }
    resize(1000, 640);
}

void RepositoryBrowser::addTable(const QString& table) {
    Recordset rows;
    rows.open(QStringLiteral("select * from [%1]").arg(table), m_connection, CursorType::Keyset,
              LockType::ReadOnly);
    auto* model = new RecordsetModel(this);
    model->setRecordset(rows);
    for (int column = 0; column < rows.fieldCount(); ++column) {
        if (rows.columnInfo(column).type == DataType::Boolean)
            model->setColumnFormat(column, QStringLiteral("Yes/No"));
        else if (rows.columnInfo(column).type == DataType::Date)
            model->setColumnFormat(column, QStringLiteral("Short Date"));
    }
    auto* view = new QTableView(m_tabs);
    view->setModel(model);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->horizontalHeader()->setStretchLastSection(true);
    view->setAlternatingRowColors(true);
    m_tabs->addTab(view, QStringLiteral("%1 (%2)").arg(table).arg(rows.recordCount()));
}

} // namespace vx::demo
