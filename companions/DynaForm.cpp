#include "companions/DynaForm.h"

#include "companions/form/FieldEditor.h"
#include "companions/form/FormDescription.h"
#include "companions/form/QueryTextBuilder.h"
#include "data/Error.h"
#include "session/UiServices.h"
#include "session/companions/KeyCodes.h"

#include <QFileInfo>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QScrollArea>
#include <QSet>
#include <QVBoxLayout>

namespace vx {

namespace {

struct FormField {
    form::FieldDescription description;
    form::FieldEditor* editor = nullptr; // owned by the page
    QLabel* label = nullptr;             // owned by the page
};

const QString ErrorColor = QStringLiteral("#b00020");

} // namespace

struct DynaForm::Private {
    QScrollArea* scroll = nullptr;
    QWidget* page = nullptr;
    QFormLayout* layout = nullptr;
    QList<FormField> fields;
    int fieldCursor = 0;
    int entryCursor = 0;
    form::FormDescription description;
    Connection connection;
    // Required fields are marked missing only after a check failed, not on an empty new form.
    bool showMissing = false;
    const QEvent* lastKeyPress = nullptr; // identity only, never dereferenced
    QPointer<QWidget> lastKeyTarget;

    const FormField* current() const {
        return fieldCursor >= 0 && fieldCursor < fields.size() ? &fields.at(fieldCursor) : nullptr;
    }

    // Empty when the field passes its checks.
    QString problemOf(const FormField& field) const {
        const QString problem = field.editor->problem();
        if (!problem.isEmpty())
            return problem;
        if (field.description.required && !field.editor->value().isValid())
            return QObject::tr("%1 must be filled in.").arg(field.description.caption);
        return {};
    }

    void showProblem(const FormField& field) const {
        QString problem = field.editor->problem();
        if (problem.isEmpty() && showMissing)
            problem = problemOf(field);
        field.label->setStyleSheet(problem.isEmpty() ? QString()
                                                     : QStringLiteral("color: ") + ErrorColor);
        field.label->setToolTip(problem);
        field.editor->setToolTip(problem);
    }

    void clearFields() {
        while (layout->rowCount() > 0)
            layout->removeRow(0); // deletes the label and editor
        fields.clear();
        fieldCursor = 0;
        entryCursor = 0;
    }

    Connection& repository() {
        if (!connection.isOpen()) {
            if (description.dataLinkPath.isEmpty())
                throw Error(ErrorNumber::Unspecified,
                            QObject::tr("The form definition names no data-link file "
                                        "(groupdatalink), so the form cannot reach its "
                                        "repository."));
            connection.open(QStringLiteral("File Name=") + description.dataLinkPath);
        }
        return connection;
    }

    void loadSuggestions();
};

// Pick lists come from hint tables that exist; a form without a reachable repository still
// works, only without suggestions.
void DynaForm::Private::loadSuggestions() {
    bool anyCombo = false;
    for (const FormField& field : std::as_const(fields))
        anyCombo = anyCombo || field.description.type == FieldType::Combo;
    if (!anyCombo || description.dataLinkPath.isEmpty())
        return;
    try {
        Connection& connection = repository();
        QSet<QString> tables;
        Recordset schema = connection.openSchema(SchemaKind::Tables);
        for (; !schema.eof(); schema.moveNext())
            tables.insert(schema.value(QStringLiteral("TABLE_NAME")).toString().toLower());
        for (const FormField& field : std::as_const(fields)) {
            const form::FieldDescription& field_ = field.description;
            if (field_.type != FieldType::Combo)
                continue;
            const QString group =
                field_.tableName.isEmpty() ? description.groupTable : field_.tableName;
            const QString table = hintTableName(group, field_.columnName);
            if (!tables.contains(table.toLower()))
                continue;
            Recordset hints;
            hints.open(QStringLiteral("Select * from ") + table + QStringLiteral(" order by ") +
                           field_.columnName,
                       connection);
            QStringList suggestions;
            const int column = hints.fieldIndex(field_.columnName);
            for (; !hints.eof(); hints.moveNext()) {
                const QString text = hints.value(column < 0 ? 0 : column).toString();
                if (!text.isEmpty())
                    suggestions << text;
            }
            field.editor->setSuggestions(suggestions);
        }
    } catch (const Error&) {
        // Suggestions are a convenience; the search reports an unreachable repository itself.
    }
}

DynaForm::DynaForm(QWidget* parent)
    : VXDynaForm(parent)
    , d(std::make_unique<Private>()) {
    d->scroll = new QScrollArea(this);
    d->scroll->setObjectName(QStringLiteral("scroll"));
    d->scroll->setWidgetResizable(true);
    d->scroll->setFrameShape(QFrame::NoFrame);
    d->page = new QWidget;
    d->page->setObjectName(QStringLiteral("page"));
    d->layout = new QFormLayout(d->page);
    d->layout->setObjectName(QStringLiteral("layout"));
    // Labels sit at the top of their row, level with the first line of tall editors.
    d->layout->setLabelAlignment(Qt::AlignRight | Qt::AlignTop);
    d->layout->setFormAlignment(Qt::AlignLeft | Qt::AlignTop);
    d->layout->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    d->layout->setRowWrapPolicy(QFormLayout::DontWrapRows);
    d->layout->setContentsMargins(12, 12, 12, 12);
    d->layout->setHorizontalSpacing(12);
    d->layout->setVerticalSpacing(8);
    d->scroll->setWidget(d->page);
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(d->scroll);
    installEventFilter(this);
}

DynaForm::~DynaForm() = default;

int DynaForm::fieldCount() const {
    return int(d->fields.size());
}

bool DynaForm::LoadForm(QString& path) {
    try {
        form::FormDescription description = form::FormDescription::load(path);
        // A search form (".xqr") is made from the index form; nothing on it must be filled in.
        if (QFileInfo(path).suffix().compare(QLatin1String("xqr"), Qt::CaseInsensitive) == 0) {
            for (form::FieldDescription& field : description.fields)
                field.required = false;
        }
        d->clearFields();
        d->connection = Connection(); // the new definition may name another repository
        d->description = std::move(description);
        d->showMissing = false;

        const int lineHeight = QLineEdit().sizeHint().height();
        QHash<QString, int> seen;
        for (const form::FieldDescription& description : std::as_const(d->description.fields)) {
            const int occurrence = ++seen[description.columnName.toLower()];
            const QString suffix =
                occurrence > 1 ? QStringLiteral("_%1").arg(occurrence) : QString();

            FormField field;
            field.description = description;
            field.editor = form::createFieldEditor(description, d->page);
            field.editor->setObjectName(QStringLiteral("field_") + description.columnName + suffix);
            field.label = new QLabel(d->page);
            field.label->setObjectName(QStringLiteral("label_") + description.columnName + suffix);
            field.label->setTextFormat(Qt::RichText);
            QString text = description.caption.toHtmlEscaped();
            if (description.required)
                text += QStringLiteral(" <span style=\"color:%1\">*</span>").arg(ErrorColor);
            field.label->setText(text);
            field.label->setBuddy(field.editor);
            field.label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
            field.label->setFixedHeight(lineHeight);
            if (description.type != FieldType::Check && description.width > 0)
                field.editor->setFixedWidth(
                    qMax(description.width, field.editor->minimumSizeHint().width()));
            d->layout->addRow(field.label, field.editor);

            field.editor->installEventFilter(this);
            for (QWidget* child : field.editor->findChildren<QWidget*>())
                child->installEventFilter(this);
            const int index = int(d->fields.size());
            connect(field.editor, &form::FieldEditor::edited, this, [this, index] {
                if (index < d->fields.size())
                    d->showProblem(d->fields.at(index));
            });
            d->fields.append(field);
        }
        d->loadSuggestions();
        return true;
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::Critical | MessageStyle::OkOnly,
                        QStringLiteral("LoadForm"));
        return false;
    }
}

QString DynaForm::QueryText() const {
    QList<form::FilledField> filled;
    filled.reserve(d->fields.size());
    for (const FormField& field : std::as_const(d->fields))
        filled.append({field.description, field.editor->value(), field.editor->entries()});
    return form::buildQueryText(d->description.groupTable, filled);
}

Recordset DynaForm::QueryRecordset() {
    const QString text = QueryText();
    Recordset result;
    if (text.isEmpty())
        return result;
    result.open(text, d->repository(), CursorType::Static, LockType::ReadOnly);
    return result;
}

QString DynaForm::FieldName() const {
    const FormField* field = d->current();
    return field ? field->description.columnName : QString();
}

QVariant DynaForm::FieldValue() const {
    const FormField* field = d->current();
    return field ? field->editor->value() : QVariant();
}

void DynaForm::setFieldValue(const QVariant& value) {
    if (const FormField* field = d->current())
        field->editor->setValue(value);
}

bool DynaForm::FieldEOF() const {
    return d->fieldCursor >= d->fields.size();
}

bool DynaForm::ListItemPresent() const {
    const FormField* field = d->current();
    return field && d->entryCursor < field->editor->entries().size();
}

void DynaForm::ResetFields() {
    for (const FormField& field : std::as_const(d->fields))
        field.editor->clear();
    d->fieldCursor = 0;
    d->entryCursor = 0;
}

void DynaForm::MoveFirstField() {
    d->fieldCursor = 0;
    d->entryCursor = 0;
}

void DynaForm::MoveNextField() {
    if (d->fieldCursor < d->fields.size())
        ++d->fieldCursor;
    d->entryCursor = 0;
}

void DynaForm::MoveFirstListItem() {
    d->entryCursor = 0;
}

void DynaForm::MoveNextListItem() {
    ++d->entryCursor;
}

QString DynaForm::ListItemText() const {
    const FormField* field = d->current();
    return field ? field->editor->entries().value(d->entryCursor) : QString();
}

QString DynaForm::FieldCaption() const {
    const FormField* field = d->current();
    return field ? field->description.caption : QString();
}

void DynaForm::ClearFieldList() {
    if (const FormField* field = d->current())
        field->editor->clearEntries();
    d->entryCursor = 0;
}

void DynaForm::AddFieldListItem(const QString& text) {
    if (const FormField* field = d->current())
        field->editor->addEntry(text);
}

bool DynaForm::FieldsValid() const {
    const FormField* firstProblem = nullptr;
    for (const FormField& field : std::as_const(d->fields)) {
        if (!firstProblem && !d->problemOf(field).isEmpty())
            firstProblem = &field;
    }
    if (!firstProblem)
        return true;
    // The callers write nothing and say nothing while the form is not valid: the form shows
    // what is wrong and takes the user to it.
    d->showMissing = true;
    for (const FormField& field : std::as_const(d->fields))
        d->showProblem(field);
    d->scroll->ensureWidgetVisible(firstProblem->editor);
    firstProblem->editor->setFocus(Qt::OtherFocusReason);
    return false;
}

void DynaForm::ClearForm() {
    d->showMissing = false;
    for (const FormField& field : std::as_const(d->fields)) {
        field.editor->clear();
        d->showProblem(field);
    }
    d->fieldCursor = 0;
    d->entryCursor = 0;
    // Pick lists may have been edited since the form was built.
    d->loadSuggestions();
}

bool DynaForm::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyRelease) {
        d->lastKeyPress = nullptr;
    } else if (event->type() == QEvent::KeyPress) {
        // A key the focused editor ignores travels on to its parents as the same event: raise it
        // once, where it began. (A new key may reuse the address of the last one, but it starts
        // again at a widget that is not a parent of the last.)
        auto* widget = qobject_cast<QWidget*>(watched);
        const bool travelling = event == d->lastKeyPress && widget && d->lastKeyTarget &&
                                widget->isAncestorOf(d->lastKeyTarget);
        d->lastKeyPress = event;
        d->lastKeyTarget = widget;
        const auto* key = static_cast<QKeyEvent*>(event);
        short keyCode = platformKeyCode(*key);
        short shift = platformShiftState(*key);
        if (!travelling && keyCode != 0) {
            emit KeyDown(keyCode, shift);
            // A handler that sets the key code to 0 swallows the key.
            if (keyCode == 0)
                return true;
        }
    }
    return VXDynaForm::eventFilter(watched, event);
}

} // namespace vx
