#include "companions/form/ListFieldEditor.h"

#include <QFontMetrics>
#include <QGridLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace vx::form {

namespace {

QToolButton* makeButton(const QString& name, const QString& text, const QString& tip,
                        QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setObjectName(name);
    button->setText(text);
    button->setToolTip(tip);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return button;
}

} // namespace

ListFieldEditor::ListFieldEditor(QWidget* parent)
    : FieldEditor(parent)
    , m_entry(new QLineEdit(this))
    , m_list(new QListWidget(this))
    , m_add(makeButton(QStringLiteral("add"), tr("Add"), tr("Add the typed entry"), this))
    , m_remove(
          makeButton(QStringLiteral("remove"), tr("Remove"), tr("Remove the selected entry"), this))
    , m_up(makeButton(QStringLiteral("up"), tr("Up"), tr("Move the selected entry up"), this))
    , m_down(makeButton(QStringLiteral("down"), tr("Down"), tr("Move the selected entry down"),
                        this)) {
    m_entry->setObjectName(QStringLiteral("entry"));
    m_entry->setPlaceholderText(tr("New entry"));
    m_list->setObjectName(QStringLiteral("list"));
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    const int rowHeight = QFontMetrics(m_list->font()).lineSpacing() + 4;
    m_list->setFixedHeight(rowHeight * 4 + 2 * m_list->frameWidth());

    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setHorizontalSpacing(4);
    layout->setVerticalSpacing(4);
    layout->addWidget(m_entry, 0, 0);
    layout->addWidget(m_add, 0, 1);
    layout->addWidget(m_list, 1, 0);
    auto* buttons = new QVBoxLayout;
    buttons->setSpacing(2);
    buttons->addWidget(m_remove);
    buttons->addWidget(m_up);
    buttons->addWidget(m_down);
    buttons->addStretch();
    layout->addLayout(buttons, 1, 1);
    setFocusProxy(m_entry);

    connect(m_entry, &QLineEdit::returnPressed, this, &ListFieldEditor::addTypedEntry);
    connect(m_entry, &QLineEdit::textChanged, this, [this] {
        updateButtons();
        emit edited();
    });
    connect(m_add, &QToolButton::clicked, this, &ListFieldEditor::addTypedEntry);
    connect(m_remove, &QToolButton::clicked, this, &ListFieldEditor::removeSelected);
    connect(m_up, &QToolButton::clicked, this, [this] { moveSelected(-1); });
    connect(m_down, &QToolButton::clicked, this, [this] { moveSelected(1); });
    connect(m_list, &QListWidget::currentRowChanged, this, &ListFieldEditor::updateButtons);
    connect(m_list, &QListWidget::itemChanged, this, &FieldEditor::edited);
    updateButtons();
}

QVariant ListFieldEditor::value() const {
    const QStringList all = entries();
    return all.isEmpty() ? QVariant() : QVariant(all.join(QLatin1Char(';')));
}

void ListFieldEditor::setValue(const QVariant& value) {
    clearEntries();
    if (value.isNull())
        return;
    const QStringList pieces = value.toString().split(QLatin1Char(';'), Qt::SkipEmptyParts);
    for (const QString& piece : pieces)
        addEntry(piece);
}

void ListFieldEditor::clear() {
    clearEntries();
}

QString ListFieldEditor::problem() const {
    for (const QString& entry : entries())
        if (entry.contains(QLatin1Char(';')))
            return tr("The entry \"%1\" contains \";\", which separates entries.").arg(entry);
    return {};
}

QStringList ListFieldEditor::entries() const {
    QStringList result;
    for (int row = 0; row < m_list->count(); ++row)
        result << m_list->item(row)->text();
    const QString typed = m_entry->text().trimmed();
    if (!typed.isEmpty())
        result << typed;
    return result;
}

void ListFieldEditor::clearEntries() {
    m_list->clear();
    m_entry->clear();
    updateButtons();
    emit edited();
}

void ListFieldEditor::addEntry(const QString& text) {
    auto* item = new QListWidgetItem(text, m_list);
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    updateButtons();
    emit edited();
}

void ListFieldEditor::addTypedEntry() {
    const QString text = m_entry->text().trimmed();
    if (text.isEmpty())
        return;
    {
        // The text moves from the line to the list: one change, not two.
        const QSignalBlocker blocker(m_entry);
        m_entry->clear();
    }
    addEntry(text);
    m_list->setCurrentRow(m_list->count() - 1);
}

void ListFieldEditor::removeSelected() {
    const int row = m_list->currentRow();
    if (row < 0)
        return;
    delete m_list->takeItem(row);
    updateButtons();
    emit edited();
}

void ListFieldEditor::moveSelected(int offset) {
    const int row = m_list->currentRow();
    const int target = row + offset;
    if (row < 0 || target < 0 || target >= m_list->count())
        return;
    QListWidgetItem* item = m_list->takeItem(row);
    m_list->insertItem(target, item);
    m_list->setCurrentRow(target);
    emit edited();
}

void ListFieldEditor::updateButtons() {
    const int row = m_list->currentRow();
    m_add->setEnabled(!m_entry->text().trimmed().isEmpty());
    m_remove->setEnabled(row >= 0);
    m_up->setEnabled(row > 0);
    m_down->setEnabled(row >= 0 && row < m_list->count() - 1);
}

} // namespace vx::form
