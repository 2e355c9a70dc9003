#include "pickers/VXDictionary.h"

#include "data/Error.h"
#include "data/Recordset.h"
#include "data/model/RecordsetModel.h"
#include "pickers/DataGridView.h"
#include "pickers/NewRowProxyModel.h"
#include "session/GroupConnection.h"
#include "session/UiServices.h"

#include <QHeaderView>
#include <QVBoxLayout>

namespace vx {

namespace {

const QString DictionarySource = QStringLiteral("select * from dictionary order by WORDS");

template <typename Action>
void quietly(Action&& action) {
    try {
        action();
    } catch (...) {
        // Tear-down never troubles the host.
    }
}

} // namespace

struct VXDictionary::Private {
    Connection connection;
    Recordset recordset;
    RecordsetModel* records = nullptr;
    NewRowProxyModel* rows = nullptr;
    DataGridView* grid = nullptr;
};

VXDictionary::VXDictionary(QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<Private>()) {
    d->records = new RecordsetModel(this);
    d->rows = new NewRowProxyModel(d->records, this);

    d->grid = new DataGridView(this);
    d->grid->setObjectName(QStringLiteral("grdDataGrid"));
    d->grid->setModel(d->rows);
    d->grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    d->grid->setSelectionMode(QAbstractItemView::SingleSelection);
    d->grid->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                             QAbstractItemView::AnyKeyPressed);
    d->grid->horizontalHeader()->setStretchLastSection(true);
    d->grid->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);

    // The grid fills the control at every size.
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(d->grid);
    setFocusProxy(d->grid);

    connect(d->grid, &DataGridView::deleteRowRequested, this, &VXDictionary::confirmDelete);
    connect(d->records, &RecordsetModel::errorOccurred, this,
            [this](const QString& description) { showGridError(description); });
}

VXDictionary::~VXDictionary() {
    Done();
}

void VXDictionary::setInit(const QString& initFilePath) {
    try {
        bind(initFilePath);
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly, QString());
    } catch (const std::exception& error) {
        ui().messageBox(QString::fromLocal8Bit(error.what()), MessageStyle::OkOnly, QString());
    }
}

void VXDictionary::bind(const QString& initFilePath) {
    // A second Init replaces the connection; one that fails leaves the grid as it was.
    d->connection = Connection();
    d->connection = openGroupConnection(initFilePath);
    Recordset recordset;
    recordset.open(DictionarySource, d->connection, CursorType::Keyset, LockType::Optimistic,
                   CommandType::Text);
    d->recordset = recordset;
    d->records->setRecordset(recordset);
    d->grid->resizeColumnsToContents();
    d->grid->horizontalHeader()->setStretchLastSection(true);
}

void VXDictionary::Done() {
    quietly([this] { d->records->clear(); });
    quietly([this] {
        if (d->recordset.isOpen())
            d->recordset.close();
    });
    quietly([this] {
        if (d->connection.isOpen())
            d->connection.close();
    });
    d->recordset = Recordset();
    d->connection = Connection();
}

void VXDictionary::confirmDelete(int row) {
    if (row < 0 || row >= d->records->rowCount())
        return; // the empty new row holds nothing to delete
    MessageAnswer answer = MessageAnswer::No;
    try {
        answer = ui().messageBox(QStringLiteral("Delete Current Row?"),
                                 MessageStyle::YesNo | MessageStyle::Question, QString());
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("Confirm Delete"));
        return;
    } catch (const std::exception& error) {
        ui().messageBox(QString::fromLocal8Bit(error.what()),
                        MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("Confirm Delete"));
        return;
    }
    if (answer != MessageAnswer::Yes)
        return;
    // A failure comes back through the model's error signal.
    d->records->removeRows(row, 1);
}

void VXDictionary::showGridError(const QString& description) {
    // A rejected edit or delete: the grid already shows what the table holds.
    ui().messageBox(description, MessageStyle::OkOnly | MessageStyle::Exclamation, QString());
}

} // namespace vx
