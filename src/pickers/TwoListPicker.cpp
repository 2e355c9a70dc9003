#include "pickers/TwoListPicker.h"

#include "data/Error.h"
#include "data/Recordset.h"
#include "session/GroupConnection.h"
#include "session/UiServices.h"

#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace vx {

struct TwoListPicker::Private {
    Connection connection;
    // The cursor starts at the end: a reader that forgets MoveFirst sees nothing.
    bool eof = true;
    QString currentValue;
    QListWidget* sourceList = nullptr;
    QListWidget* pickedList = nullptr;
    QString shownColumn;
    QString sourceQuery;
};

const TwoListPicker::Definition& TwoListPicker::keywordDefinition() {
    static const Definition definition{QStringLiteral("Dictionary"),
                                       QStringLiteral("Keywords"),
                                       QStringLiteral("Dictionary"),
                                       QStringLiteral("Associated Keywords"),
                                       QStringLiteral("SELECT * FROM dictionary ORDER BY words"),
                                       QStringLiteral("words")};
    return definition;
}

const TwoListPicker::Definition& TwoListPicker::userDefinition() {
    static const Definition definition{QStringLiteral("lstUsers"),
                                       QStringLiteral("lstAscUsers"),
                                       QStringLiteral("Users"),
                                       QStringLiteral("Excluded Users"),
                                       QStringLiteral("SELECT * FROM KTUsers ORDER BY username"),
                                       QStringLiteral("UserName")};
    return definition;
}

namespace {

QListWidget* makeList(const QString& name, QWidget* parent) {
    auto* list = new QListWidget(parent);
    list->setObjectName(name);
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    // Items are texts to pick, never to edit in place.
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    return list;
}

QLabel* makeCaption(const QString& text, QListWidget* list, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setBuddy(list);
    return label;
}

QPushButton* makeButton(const QString& name, const QString& text, const QString& tip,
                        QWidget* parent) {
    auto* button = new QPushButton(text, parent);
    button->setObjectName(name);
    button->setToolTip(tip);
    button->setAutoDefault(false);
    return button;
}

} // namespace

TwoListPicker::TwoListPicker(const Definition& definition, QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<Private>()) {
    d->shownColumn = definition.shownColumn;
    d->sourceQuery = definition.sourceQuery;
    d->sourceList = makeList(definition.sourceListName, this);
    d->pickedList = makeList(definition.pickedListName, this);

    auto* pick = makeButton(QStringLiteral("Command1"), tr("Add >"),
                            tr("Add the selected entry to %1").arg(definition.pickedCaption), this);
    auto* remove =
        makeButton(QStringLiteral("Command2"), tr("< Remove"),
                   tr("Remove the selected entry from %1").arg(definition.pickedCaption), this);

    auto* buttons = new QVBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(pick);
    buttons->addWidget(remove);
    buttons->addStretch(1);

    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(makeCaption(definition.sourceCaption, d->sourceList, this), 0, 0);
    layout->addWidget(makeCaption(definition.pickedCaption, d->pickedList, this), 0, 2);
    layout->addWidget(d->sourceList, 1, 0);
    layout->addLayout(buttons, 1, 1);
    layout->addWidget(d->pickedList, 1, 2);
    layout->setColumnStretch(0, 1);
    layout->setColumnStretch(2, 1);
    layout->setRowStretch(1, 1);

    connect(pick, &QPushButton::clicked, this, &TwoListPicker::pickSelected);
    connect(remove, &QPushButton::clicked, this, &TwoListPicker::removeSelected);
    connect(d->sourceList, &QListWidget::itemDoubleClicked, this, &TwoListPicker::pickSelected);
    connect(d->pickedList, &QListWidget::itemDoubleClicked, this, &TwoListPicker::removeSelected);
}

TwoListPicker::~TwoListPicker() {
    done();
}

void TwoListPicker::init(const QString& initFilePath) {
    try {
        fillSourceList(initFilePath);
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly, QString());
    } catch (const std::exception& error) {
        ui().messageBox(QString::fromLocal8Bit(error.what()), MessageStyle::OkOnly, QString());
    }
}

void TwoListPicker::fillSourceList(const QString& initFilePath) {
    // A second Init replaces the connection; the first one closes with its last reference.
    d->connection = Connection();
    d->connection = openGroupConnection(initFilePath);

    Recordset source;
    source.open(d->sourceQuery, d->connection, CursorType::Keyset, LockType::Optimistic,
                CommandType::Text);
    d->sourceList->clear();
    const int column = source.field(d->shownColumn).index();
    // Each row goes in as it is read, so a failure part way keeps what came before it.
    while (!source.eof()) {
        d->sourceList->addItem(source.value(column).toString());
        source.moveNext();
    }
    source.close();
}

void TwoListPicker::done() {
    try {
        if (d->connection.isOpen())
            d->connection.close();
    } catch (...) {
        // Tear-down never troubles the host.
    }
    d->connection = Connection();
}

bool TwoListPicker::isEof() const {
    return d->eof;
}

QString TwoListPicker::currentListValue() const {
    return d->currentValue;
}

void TwoListPicker::moveFirst() {
    if (d->pickedList->count() == 0) {
        d->eof = true;
        return;
    }
    d->pickedList->setCurrentRow(0);
    d->currentValue = d->pickedList->item(0)->text();
    d->eof = false;
}

void TwoListPicker::moveNext() {
    const int next = d->pickedList->currentRow() + 1;
    if (next >= d->pickedList->count()) {
        // The last item stays selected and current; only a new item clears EOF again.
        d->eof = true;
        return;
    }
    d->pickedList->setCurrentRow(next);
    d->currentValue = d->pickedList->item(next)->text();
}

void TwoListPicker::clearContents() {
    d->pickedList->clear();
}

void TwoListPicker::addListItem(const QString& item) {
    // Owners refill the list from stored rows; they are trusted, duplicates included.
    d->pickedList->addItem(item);
    d->eof = false;
}

void TwoListPicker::pickSelected() {
    QListWidgetItem* selected = d->sourceList->currentItem();
    const QString text = selected && selected->isSelected() ? selected->text() : QString();
    if (!text.isEmpty()) {
        bool alreadyPicked = false;
        for (int row = 0; row < d->pickedList->count() && !alreadyPicked; ++row)
            alreadyPicked =
                d->pickedList->item(row)->text().compare(text, Qt::CaseInsensitive) == 0;
        if (!alreadyPicked) {
            d->pickedList->addItem(text);
            // Ready for the next pick without another click.
            const int next = d->sourceList->row(selected) + 1;
            if (next < d->sourceList->count())
                d->sourceList->setCurrentRow(next);
        }
    }
    d->eof = false;
}

void TwoListPicker::removeSelected() {
    const int row = d->pickedList->currentRow();
    if (row < 0 || !d->pickedList->item(row)->isSelected())
        return;
    delete d->pickedList->takeItem(row);
    const int remaining = d->pickedList->count();
    if (remaining > 0)
        d->pickedList->setCurrentRow(remaining - 1);
    else
        d->eof = true;
}

QListWidget* TwoListPicker::sourceList() const {
    return d->sourceList;
}

QListWidget* TwoListPicker::pickedList() const {
    return d->pickedList;
}

} // namespace vx
