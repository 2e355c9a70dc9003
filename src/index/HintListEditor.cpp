#include "index/HintListEditor.h"

#include "data/Error.h"
#include "data/Recordset.h"
#include "data/model/RecordsetModel.h"
#include "pickers/DataGridView.h"
#include "pickers/NewRowProxyModel.h"
#include "session/FormDefinition.h"
#include "session/Schema.h"
#include "session/UiServices.h"
#include "session/companions/VXDynaForm.h"

#include <QComboBox>
#include <QHeaderView>

namespace vx {

namespace {
// Pick-list permission bits of UserPermission.
constexpr qint32 HintEditBits = 1 | 4;
constexpr int Margin = 6;
} // namespace

struct HintListEditor::Private {
    Private(VXDynaForm* form, std::function<QString()> groupCaption,
            std::function<Connection()> connection)
        : form(form)
        , groupCaption(std::move(groupCaption))
        , connection(std::move(connection)) {}

    VXDynaForm* form;
    std::function<QString()> groupCaption;
    std::function<Connection()> connection;
    QComboBox* fields = nullptr;
    DataGridView* grid = nullptr;
    RecordsetModel* model = nullptr;
    NewRowProxyModel* rows = nullptr; // the model plus an empty row that adds a hint
    Recordset hints;
    bool hintsOpen = false;
};

HintListEditor::HintListEditor(VXDynaForm* form, std::function<QString()> groupCaption,
                               std::function<Connection()> connection, QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<Private>(form, std::move(groupCaption), std::move(connection))) {
    setObjectName(QStringLiteral("picTab3"));
    setFocusPolicy(Qt::StrongFocus);
    d->fields = new QComboBox(this);
    d->fields->setObjectName(QStringLiteral("cbFields"));
    d->fields->setPlaceholderText(QStringLiteral("Select a field for editing"));
    d->fields->setMinimumWidth(260);
    // A data grid: Enter moves down, the empty last row adds a hint, Delete (or the right
    // button's menu) removes one.
    d->grid = new DataGridView(this);
    d->grid->setObjectName(QStringLiteral("Hints"));
    d->grid->horizontalHeader()->setStretchLastSection(true);
    d->grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    d->grid->setSelectionMode(QAbstractItemView::SingleSelection);
    d->grid->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                             QAbstractItemView::AnyKeyPressed);
    d->model = new RecordsetModel(this);
    d->rows = new NewRowProxyModel(d->model, this);
    d->grid->setModel(d->rows);
    connect(d->grid, &DataGridView::deleteRowRequested, this, &HintListEditor::confirmDelete);
    connect(d->model, &RecordsetModel::errorOccurred, this,
            [this](const QString& description, qint32) {
                ui().messageBox(description, MessageStyle::OkOnly | MessageStyle::Critical,
                                QStringLiteral("Hints"));
            });
    // A change of the chosen text and a click on the same entry both (re)open the hint table.
    connect(d->fields, &QComboBox::currentTextChanged, this,
            [this](const QString&) { editHintsOfChosenField(); });
    connect(d->fields, qOverload<int>(&QComboBox::activated), this,
            [this](int) { editHintsOfChosenField(); });
}

HintListEditor::~HintListEditor() {
    try {
        releaseHints();
    } catch (...) {
    }
}

bool HintListEditor::hintAllowUpdate(const QString& column) {
    try {
        const QString type =
            GetControlValuesFromXML(QStringLiteral("ColumnName"), column, QStringLiteral("Type"));
        if (fieldTypeFromName(type) != FieldType::Combo)
            return false;
        const QString allow = GetControlValuesFromXML(QStringLiteral("ColumnName"), column,
                                                      QStringLiteral("AllowUpdate"));
        return allow.toLower() == QLatin1String("true");
    } catch (const Error& error) {
        ui().messageBox(
            QStringLiteral("Error: (%1) - %2").arg(error.number()).arg(error.description()),
            MessageStyle::OkOnly | MessageStyle::Critical, QStringLiteral("HintAllowUpdate"));
    }
    return false;
}

void HintListEditor::loadFields(qint32 userPermission) {
    const QSignalBlocker blocker(d->fields);
    d->fields->clear();
    if ((userPermission & HintEditBits) == 0 || !d->form)
        return;
    VXDynaForm& form = *d->form;
    for (form.MoveFirstField(); !form.FieldEOF(); form.MoveNextField()) {
        if (hintAllowUpdate(form.FieldName()))
            d->fields->addItem(form.FieldCaption());
    }
    d->fields->setCurrentIndex(-1);
}

void HintListEditor::releaseHints() {
    d->model->clear();
    if (d->hintsOpen) {
        d->hintsOpen = false;
        Recordset hints = d->hints;
        d->hints = Recordset();
        if (hints.isOpen()) {
            if (!hints.bof() && hints.recordCount() > 0)
                hints.moveFirst();
            hints.close();
        }
    }
}

bool HintListEditor::hasOpenHints() const {
    return d->hintsOpen;
}

void HintListEditor::editHintsOfChosenField() {
    QString table;
    try {
        releaseHints();
        const QString chosen = d->fields->currentText();
        if (chosen.isEmpty() || !d->form)
            return;
        VXDynaForm& form = *d->form;
        QString column;
        for (form.MoveFirstField(); !form.FieldEOF(); form.MoveNextField()) {
            if (form.FieldCaption() == chosen) {
                column = form.FieldName();
                break;
            }
        }
        if (column.isEmpty())
            return;
        table = hintTableName(d->groupCaption(), column);
        Recordset hints;
        try {
            hints.open(
                QStringLiteral("Select * from ") + table + QStringLiteral(" order by ") + column,
                d->connection(), CursorType::Keyset, LockType::Optimistic, CommandType::Text);
        } catch (const Error& error) {
            // A field without a hint table simply has nothing to edit.
            if (error.number() != ErrorNumber::TableNotFound)
                throw;
            if (hints.isOpen())
                hints.close();
            d->grid->hide();
            return;
        }
        d->hints = hints;
        d->hintsOpen = true;
        d->model->setRecordset(hints);
        d->grid->show();
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("Editing Hints table: ") + table);
    } catch (const std::exception& error) {
        ui().messageBox(QString::fromLocal8Bit(error.what()),
                        MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("Editing Hints table: ") + table);
    }
}

void HintListEditor::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    d->grid->setFocus();
}

void HintListEditor::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const QSize comboSize = d->fields->sizeHint();
    d->fields->setGeometry(Margin, Margin, qMax(comboSize.width(), 260), comboSize.height());
    const int top = d->fields->geometry().bottom() + 1 + Margin;
    d->grid->move(Margin, top);
    const int height = this->height() - top - Margin;
    // A page too small for the grid keeps the grid's last height.
    if (height > 0)
        d->grid->resize(qMax(0, width() - 2 * Margin), height);
    else
        d->grid->resize(qMax(0, width() - 2 * Margin), d->grid->height());
}

void HintListEditor::confirmDelete(int row) {
    if (row < 0 || row >= d->model->rowCount())
        return; // the empty new row holds nothing to delete
    if (ui().messageBox(QStringLiteral("Delete Current Row?"),
                        MessageStyle::YesNo | MessageStyle::Question,
                        QString()) == MessageAnswer::Yes)
        d->model->removeRows(row, 1); // a failure comes back through the model's error signal
}

} // namespace vx
