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
#include <QPlainTextEdit>
#include <QPointer>
#include <QScrollArea>
#include <QSet>
#include <QVBoxLayout>
#include <algorithm>

namespace vx {

namespace {

struct FormField {
    form::FieldDescription description;
    form::FieldEditor* editor = nullptr; // owned by the page
    QLabel* label = nullptr;             // owned by the page
};

const QString ErrorColor = QStringLiteral("#b00020");
const QString WildcardHint = QObject::tr("* matches any text");

// Text fields of a search form match whole values unless the user types a wildcard: say so.
void showWildcardHint(FieldType type, QWidget* editor) {
    if (type != FieldType::Edit && type != FieldType::Combo && type != FieldType::Memo &&
        type != FieldType::Unknown)
        return;
    for (auto* line : editor->findChildren<QLineEdit*>())
        line->setPlaceholderText(WildcardHint);
    for (auto* text : editor->findChildren<QPlainTextEdit*>())
        text->setPlaceholderText(WildcardHint);
    editor->setToolTip(QObject::tr("Text fields match whole values; * matches any text, "
                                   "? any one character."));
}

bool isInsideMultiLineText(QWidget* widget) {
    for (QWidget* at = widget; at; at = at->parentWidget()) {
        if (qobject_cast<QPlainTextEdit*>(at))
            return !static_cast<QPlainTextEdit*>(at)->isReadOnly();
        if (qobject_cast<form::FieldEditor*>(at))
            return false;
    }
    return false;
}

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
    bool queryForm = false;
    mutable QStringList problems;         // of the last failed check
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

    // "Amount: "x" is not a number." or "Customer must be filled in."; empty when it passes.
    QString problemLine(const FormField& field) const {
        const QString problem = field.editor->problem();
        if (!problem.isEmpty())
            return field.description.caption + QStringLiteral(": ") + problem;
        return problemOf(field);
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

// Pick lists come from where the definition says (a hint table, or the group table's own
// values), sorted; a form without a reachable repository still works, only without suggestions.
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
            const QString table = !field_.initTableName.isEmpty()
                                      ? field_.initTableName
                                      : hintTableName(group, field_.columnName);
            const QString column =
                field_.initColumnName.isEmpty() ? field_.columnName : field_.initColumnName;
            if (!tables.contains(table.toLower()))
                continue;
            // The group table holds every document's value: its distinct ones make the list.
            const bool ofGroup = table.compare(group, Qt::CaseInsensitive) == 0;
            QStringList suggestions;
            try {
                Recordset hints;
                hints.open(
                    (ofGroup ? QStringLiteral("Select distinct ") : QStringLiteral("Select ")) +
                        column + QStringLiteral(" from ") + table,
                    connection);
                const int index = hints.fieldIndex(column);
                QSet<QString> seen;
                for (; !hints.eof(); hints.moveNext()) {
                    const QString text = hints.value(index < 0 ? 0 : index).toString().trimmed();
                    if (!text.isEmpty() && !seen.contains(text.toLower())) {
                        seen.insert(text.toLower());
                        suggestions << text;
                    }
                }
            } catch (const Error&) {
                continue; // a named column that is not there: this field goes without
            }
            std::sort(
                suggestions.begin(), suggestions.end(),
                [](const QString& a, const QString& b) { return a.localeAwareCompare(b) < 0; });
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
        d->queryForm =
            QFileInfo(path).suffix().compare(QLatin1String("xqr"), Qt::CaseInsensitive) == 0;
        if (d->queryForm) {
            for (form::FieldDescription& field : description.fields)
                field.required = false;
        }
        d->clearFields();
        d->connection = Connection(); // the new definition may name another repository
        d->description = std::move(description);
        d->showMissing = false;

        const bool queryForm = d->queryForm;
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
            if (queryForm)
                showWildcardHint(description.type, field.editor);
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

QString DynaForm::fieldProblems() const {
    return d->problems.join(u'\n');
}

bool DynaForm::FieldsValid() const {
    d->problems.clear();
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
    d->problems.clear();
    for (const FormField& field : std::as_const(d->fields)) {
        d->showProblem(field);
        const QString line = d->problemLine(field);
        if (!line.isEmpty())
            d->problems << line;
    }
    d->scroll->ensureWidgetVisible(firstProblem->editor);
    firstProblem->editor->setFocus(Qt::OtherFocusReason);
    return false;
}

void DynaForm::ClearForm() {
    d->showMissing = false;
    d->problems.clear();
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
        // Enter in a multi-line text is a new line, not a command to the form's owner.
        const bool newLine = (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) &&
                             isInsideMultiLineText(widget);
        if (!travelling && keyCode != 0 && !newLine) {
            emit KeyDown(keyCode, shift);
            // A handler that sets the key code to 0 swallows the key.
            if (keyCode == 0)
                return true;
        }
    }
    return VXDynaForm::eventFilter(watched, event);
}

} // namespace vx
