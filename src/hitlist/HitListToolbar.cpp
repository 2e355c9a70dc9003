#include "hitlist/HitListToolbar.h"

#include <QAction>
#include <QStyle>
#include <QWidget>

namespace vx {

namespace {

struct ButtonDefinition {
    const char* key;
    bool check;
    const char* toolTip;
    QStyle::StandardPixmap icon;
    bool enabled;
    qint32 mask;
};

// In toolbar order.
const ButtonDefinition Buttons[] = {
    {"First", false, "Goto First Document", QStyle::SP_MediaSkipBackward, true, 0},
    {"Previous", false, "Goto Previous Document", QStyle::SP_MediaSeekBackward, true, 0},
    {"Next", false, "Goto Next Document", QStyle::SP_MediaSeekForward, true, 0},
    {"Last", false, "Goto Last Document", QStyle::SP_MediaSkipForward, true, 0},
    {"Edit", true, "Display Form for Editing", QStyle::SP_FileDialogDetailedView, false, 8},
    {"Archive", true, "Show previous versions of this item", QStyle::SP_FileDialogBack, false, 8},
    {"Save", false, "Save Changes for Document", QStyle::SP_DialogSaveButton, true, 0},
    {"Export", false, "Export Selected Items", QStyle::SP_DriveNetIcon, false, 128},
    {"Print", false, "Report/Print Selected Items", QStyle::SP_FileDialogContentsView, true, 0},
    {"Update", false, "Update Volume Information", QStyle::SP_BrowserReload, false, 8},
    {"Move", false, "Copy or Move Selected Documents", QStyle::SP_DirOpenIcon, false, 64},
    {"SaveQuery", false, "Add to favourites", QStyle::SP_DialogApplyButton, true, 0},
    {"Delete", false, "Mark Selected Items for Deletion", QStyle::SP_TrashIcon, false, 32},
    {"Properties", false, "Display properties for selected documents",
     QStyle::SP_FileDialogInfoView, true, 0},
    {"Veltrane", false, "Build Veltrane Library", QStyle::SP_DriveCDIcon, false, 128},
};

const QString ReturnToResults = QStringLiteral("Return to Search Results");

} // namespace

HitListToolbar::HitListToolbar(QWidget* parent)
    : QToolBar(parent) {
    setObjectName(QStringLiteral("tbToolbar1"));
    setMovable(false);
    setFloatable(false);
    setIconSize(QSize(20, 20));
    setToolButtonStyle(Qt::ToolButtonIconOnly);
    for (const ButtonDefinition& definition : Buttons) {
        QAction* action =
            addAction(style()->standardIcon(definition.icon), QString::fromLatin1(definition.key));
        action->setObjectName(QString::fromLatin1(definition.key));
        action->setToolTip(QString::fromLatin1(definition.toolTip));
        action->setCheckable(definition.check);
        action->setEnabled(definition.enabled);
        const QString key = action->objectName();
        connect(action, &QAction::triggered, this, [this, key] { emit buttonClick(key); });
        // Tab reaches every button and Space presses it: most commands have no key of their own.
        if (QWidget* widget = widgetForAction(action))
            widget->setFocusPolicy(Qt::TabFocus);
    }
    // Until Init finds the versions table.
    button(QStringLiteral("Archive"))->setVisible(false);
}

HitListToolbar::~HitListToolbar() = default;

const QStringList& HitListToolbar::keys() {
    static const QStringList all = [] {
        QStringList list;
        for (const ButtonDefinition& definition : Buttons)
            list << QString::fromLatin1(definition.key);
        return list;
    }();
    return all;
}

QAction* HitListToolbar::button(const QString& key) const {
    return findChild<QAction*>(key, Qt::FindDirectChildrenOnly);
}

bool HitListToolbar::isPressed(const QString& key) const {
    QAction* action = button(key);
    return action && action->isChecked();
}

void HitListToolbar::setPressed(const QString& key, bool pressed) {
    if (QAction* action = button(key))
        action->setChecked(pressed);
}

void HitListToolbar::enableByPermission(qint32 permission) {
    for (const ButtonDefinition& definition : Buttons)
        if (definition.mask != 0 && (permission & definition.mask) != 0)
            button(QString::fromLatin1(definition.key))->setEnabled(true);
}

void HitListToolbar::showResultsView(bool revisionTablePresent) {
    QAction* edit = button(QStringLiteral("Edit"));
    edit->setVisible(true);
    edit->setChecked(false);
    edit->setToolTip(QStringLiteral("Display Form for Editing"));
    QAction* archive = button(QStringLiteral("Archive"));
    archive->setChecked(false);
    archive->setVisible(revisionTablePresent);
    button(QStringLiteral("Save"))->setVisible(false);
    for (const char* key :
         {"Print", "Update", "Move", "Delete", "Properties", "SaveQuery", "Veltrane"})
        button(QString::fromLatin1(key))->setVisible(true);
}

void HitListToolbar::showEditView() {
    QAction* edit = button(QStringLiteral("Edit"));
    edit->setVisible(true);
    edit->setChecked(true);
    edit->setToolTip(ReturnToResults);
    button(QStringLiteral("Archive"))->setVisible(false);
    button(QStringLiteral("Save"))->setVisible(true);
    for (const char* key :
         {"Print", "Update", "Move", "Delete", "Properties", "SaveQuery", "Veltrane"})
        button(QString::fromLatin1(key))->setVisible(false);
}

void HitListToolbar::showVersionsView() {
    button(QStringLiteral("Edit"))->setVisible(false);
    QAction* archive = button(QStringLiteral("Archive"));
    archive->setVisible(true);
    archive->setChecked(true);
    archive->setToolTip(ReturnToResults);
    button(QStringLiteral("Save"))->setVisible(false);
    for (const char* key :
         {"Print", "Update", "Move", "Delete", "Properties", "SaveQuery", "Veltrane"})
        button(QString::fromLatin1(key))->setVisible(false);
}

} // namespace vx
