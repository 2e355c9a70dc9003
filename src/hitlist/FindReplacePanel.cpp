#include "hitlist/FindReplacePanel.h"

#include "data/Error.h"
#include "hitlist/FieldTypeLookup.h"
#include "hitlist/FindReplaceSearch.h"
#include "hitlist/FindReplaceValues.h"
#include "hitlist/FindReplacement.h"
#include "operations/HitListContext.h"
#include "session/UiServices.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

namespace vx {

namespace {

QLabel* makeLabel(QWidget* parent, const char* name, const QString& caption) {
    auto* label = new QLabel(caption, parent);
    label->setObjectName(QString::fromLatin1(name));
    return label;
}

QComboBox* makeEntryList(QWidget* parent, const char* name) {
    auto* box = new QComboBox(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setEditable(true);
    // Entries are remembered by the panel once a value was used, not on every Enter.
    box->setInsertPolicy(QComboBox::NoInsert);
    box->setMinimumContentsLength(24);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    return box;
}

QPushButton* makeButton(QWidget* parent, const char* name, const QString& caption) {
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(QString::fromLatin1(name));
    button->setAutoDefault(false);
    return button;
}

void rememberText(QComboBox* box) {
    const QString text = box->currentText();
    if (!text.isEmpty() && box->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive) < 0)
        box->addItem(text);
    box->setEditText(text);
}

// Runs one of the panel's commands; its failure is shown, never passed on to the hit list.
template <typename Command>
void guarded(const QString& title, Command&& command) {
    try {
        command();
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly | MessageStyle::Critical, title);
    } catch (const std::exception& error) {
        ui().messageBox(QString::fromLocal8Bit(error.what()),
                        MessageStyle::OkOnly | MessageStyle::Critical, title);
    }
}

} // namespace

struct FindReplacePanel::Private {
    explicit Private(HitListContext& context)
        : hitList(context)
        , search(context)
        , replacement(context) {}

    HitListContext& hitList;
    FindReplaceSearch search;
    FindReplacement replacement;

    QLabel* lblFind = nullptr;
    QComboBox* cmbFindWhat = nullptr;
    QLabel* lblReplaceWith = nullptr;
    QComboBox* cmbReplaceWith = nullptr;
    QPushButton* btnFindNext = nullptr;
    QPushButton* btnReplace = nullptr;
    QPushButton* btnReplaceAll = nullptr;
    QPushButton* btnCancel = nullptr;
    QLabel* Label1 = nullptr;

    ColumnFieldType searchedColumn() {
        return GetFieldType(hitList.form(), hitList.clickedColumnCaption());
    }

    void SetReplaceEnabled(bool enabled) {
        lblReplaceWith->setEnabled(enabled);
        cmbReplaceWith->setEnabled(enabled);
        btnReplace->setEnabled(enabled);
        btnReplaceAll->setEnabled(enabled);
    }

    void RememberEntries(bool withReplace) {
        rememberText(cmbFindWhat);
        if (withReplace)
            rememberText(cmbReplaceWith);
    }

    // Refuses memo and list columns; otherwise sets the replace controls for the column.
    bool takeColumn() {
        const QString caption = hitList.clickedColumnCaption();
        const ColumnFieldType column = searchedColumn();
        const QString refusal = findReplaceRefusal(column.type);
        if (!refusal.isEmpty()) {
            ui().messageBox(refusal, MessageStyle::OkOnly, QStringLiteral("Listfield Selected"));
            return false;
        }
        SetReplaceEnabled(replaceAllowedFor(caption, column.type));
        return true;
    }

    void FindNext() {
        hitList.waitForWholeResult();
        const QString caption = hitList.clickedColumnCaption();
        const ColumnFieldType column = searchedColumn();
        const QVariant findValue = ValidateValue(cmbFindWhat->currentText(), column.type, true);
        if (isRefusedValue(findValue))
            return;
        if (search.findNext(caption, column.type, findValue))
            RememberEntries(false);
    }

    void ReplaceValues(bool replaceAll) {
        hitList.waitForWholeResult();
        FindReplacement::Request request;
        request.caption = hitList.clickedColumnCaption();
        request.type = searchedColumn().type;
        request.findText = cmbFindWhat->currentText();
        request.replaceText = cmbReplaceWith->currentText();
        request.findValue = ValidateValue(request.findText, request.type, true);
        if (isRefusedValue(request.findValue))
            return;
        request.replaceValue = ValidateValue(request.replaceText, request.type, false);
        if (isRefusedValue(request.replaceValue))
            return;
        RememberEntries(true);
        if (replaceAll)
            replacement.replaceAll(request, [this] { cmbFindWhat->setFocus(); });
        else
            replacement.replaceOne(request);
    }
};

FindReplacePanel::FindReplacePanel(HitListContext& hitList, QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<Private>(hitList)) {
    setObjectName(QStringLiteral("PicFindReplace"));

    d->lblFind = makeLabel(this, "lblFind", QStringLiteral("Find What:"));
    d->cmbFindWhat = makeEntryList(this, "cmbFindWhat");
    d->lblReplaceWith = makeLabel(this, "lblReplaceWith", QStringLiteral("Replace With:"));
    d->cmbReplaceWith = makeEntryList(this, "cmbReplaceWith");
    d->btnFindNext = makeButton(this, "btnFindNext", QStringLiteral("&Find Next"));
    d->btnReplace = makeButton(this, "btnReplace", QStringLiteral("&Replace"));
    d->btnReplaceAll = makeButton(this, "btnReplaceAll", QStringLiteral("Replace &All"));
    d->btnCancel = makeButton(this, "btnCancel", QStringLiteral("&Cancel"));
    d->Label1 = makeLabel(
        this, "Label1", QStringLiteral("* For shortcuts use Shift+Ctrl and the underlined letter"));
    d->lblFind->setBuddy(d->cmbFindWhat);
    d->lblReplaceWith->setBuddy(d->cmbReplaceWith);

    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(6, 4, 6, 4);
    layout->setHorizontalSpacing(6);
    layout->setVerticalSpacing(3);
    layout->addWidget(d->lblFind, 0, 0);
    layout->addWidget(d->cmbFindWhat, 0, 1);
    layout->addWidget(d->btnFindNext, 0, 2);
    layout->addWidget(d->btnReplace, 0, 3);
    layout->addWidget(d->lblReplaceWith, 1, 0);
    layout->addWidget(d->cmbReplaceWith, 1, 1);
    layout->addWidget(d->btnReplaceAll, 1, 2);
    layout->addWidget(d->btnCancel, 1, 3);
    layout->addWidget(d->Label1, 2, 0, 1, 4);
    layout->setColumnStretch(1, 1);
    // The hit list stacks the grid below the panel by its height, so the height never changes.
    setFixedHeight(layout->sizeHint().height());

    connect(d->btnFindNext, &QPushButton::clicked, this,
            [this] { guarded(QStringLiteral("FindNext"), [this] { d->FindNext(); }); });
    connect(d->btnReplace, &QPushButton::clicked, this, [this] {
        guarded(QStringLiteral("ReplaceValues"), [this] { d->ReplaceValues(false); });
    });
    connect(d->btnReplaceAll, &QPushButton::clicked, this, [this] {
        guarded(QStringLiteral("ReplaceValues"), [this] { d->ReplaceValues(true); });
    });
    connect(d->btnCancel, &QPushButton::clicked, this, [this] { closePanel(); });

    hide();
}

FindReplacePanel::~FindReplacePanel() = default;

void FindReplacePanel::openForClickedColumn() {
    guarded(QStringLiteral("OpenFindReplace"), [this] {
        if (!d->takeColumn())
            return;
        show();
        d->hitList.layoutControl();
        d->cmbFindWhat->setFocus();
    });
}

void FindReplacePanel::clickedColumnChanged() {
    if (isHidden())
        return;
    guarded(QStringLiteral("OpenFindReplace"), [this] { d->takeColumn(); });
}

bool FindReplacePanel::handleShortcut(int key, Qt::KeyboardModifiers modifiers) {
    const Qt::KeyboardModifiers held =
        modifiers & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (held != (Qt::ShiftModifier | Qt::ControlModifier) || isHidden())
        return false;
    QPushButton* button = nullptr;
    switch (key) {
    case Qt::Key_R:
        button = d->btnReplace;
        break;
    case Qt::Key_A:
        button = d->btnReplaceAll;
        break;
    case Qt::Key_F:
        button = d->btnFindNext;
        break;
    case Qt::Key_C:
        button = d->btnCancel;
        break;
    default:
        return false;
    }
    if (!button->isEnabled())
        return false;
    button->click();
    if (button != d->btnCancel)
        button->setFocus();
    return true;
}

void FindReplacePanel::closePanel() {
    hide();
    d->hitList.layoutControl();
}

} // namespace vx
