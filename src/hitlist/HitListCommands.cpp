#include "hitlist/HitListCommands.h"

#include "data/Error.h"
#include "hitlist/FieldTypeLookup.h"
#include "hitlist/FindReplacePanel.h"
#include "hitlist/HitListSession.h"
#include "hitlist/HitListToolbar.h"
#include "hitlist/RecordForm.h"
#include "hitlist/ResultsGrid.h"
#include "hitlist/VXHitList.h"
#include "operations/DocumentOperations.h"
#include "portable/PortableExport.h"
#include "session/Conversions.h"
#include "session/KeyedTabStrip.h"
#include "session/LibraryState.h"
#include "session/Settings.h"
#include "session/UiServices.h"
#include "session/companions/KeyCodes.h"
#include "session/companions/VXDynaForm.h"

#include <QAction>
#include <QCursor>
#include <QMenu>

namespace vx {

namespace {

const QString GroupTab = QStringLiteral("Group");
const QString KeywordsTab = QStringLiteral("Keywords");
const QString SecurityTab = QStringLiteral("Document Security");

const QString VersionsQuery =
    QStringLiteral("select [itemid] AS [Item ID], [Version], [fname] AS [File Name], "
                   "[idx_date] AS [Index Date], [volume] AS [Volume Name], "
                   "[username] AS [User Name], [res_desc] AS [Modified], "
                   "[rel_desc] AS [Description] from KTRevision where itemid=");

bool isNavigation(const QString& key) {
    return key == QLatin1String("First") || key == QLatin1String("Previous") ||
           key == QLatin1String("Next") || key == QLatin1String("Last");
}

void showIfAlive(QWidget* widget, bool visible) {
    if (widget)
        widget->setVisible(visible);
}

} // namespace

HitListCommands::HitListCommands(HitListSession& session, QObject* parent)
    : QObject(parent)
    , m_session(session)
    , m_parts(session.parts) {}

HitListCommands::~HitListCommands() = default;

void HitListCommands::buttonClick(const QString& key) {
    try {
        if (m_parts.findReplace && !m_parts.findReplace->isHidden()) {
            m_parts.findReplace->closePanel();
            m_session.layoutControl();
        }
        if (!m_session.currentValid) {
            // Nothing to work on yet: a check button goes back to how it was.
            if (QAction* button = m_parts.toolbar->button(key); button && button->isCheckable())
                button->setChecked(!button->isChecked());
            return;
        }
        if (!isNavigation(key)) {
            // Commands work on the whole result, not on the part read so far.
            m_session.waitForWholeResult();
            m_session.selection = m_session.selectedItems();
            m_session.selectCurrentRow();
        }
        if (isNavigation(key))
            navigate(key);
        else if (key == QLatin1String("Print"))
            printData(m_session);
        else if (key == QLatin1String("Move"))
            chooseCopyOrMove(m_session);
        else if (key == QLatin1String("Properties"))
            propertyDocuments(m_session);
        else if (key == QLatin1String("Edit"))
            edit();
        else if (key == QLatin1String("Archive"))
            archive();
        else if (key == QLatin1String("Save"))
            save();
        else if (key == QLatin1String("Delete")) {
            if (markForDeletion(m_session))
                m_session.requeryList();
        } else if (key == QLatin1String("Update")) {
            if (updateVolume(m_session))
                m_session.requeryList();
        } else if (key == QLatin1String("SaveQuery"))
            saveQuery();
        else if (key == QLatin1String("Veltrane"))
            exportToVeltrane(m_session);
        m_parts.grid->viewport()->update();
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("tbToolbar1_ButtonClick"));
    } catch (const std::exception& error) {
        ui().messageBox(QString::fromLocal8Bit(error.what()),
                        MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("tbToolbar1_ButtonClick"));
    }
}

void HitListCommands::pressAndRun(const QString& key, bool pressed) {
    m_parts.toolbar->setPressed(key, pressed);
    buttonClick(key);
}

void HitListCommands::navigate(const QString& key) {
    const bool versions = m_session.versionsShown();
    Recordset set = versions ? m_session.versions : m_session.result;
    if (!set.isOpen())
        return;
    // The last row, or the row after the last one read so far, waits for the rest.
    if (!versions &&
        (key == QLatin1String("Last") || (key == QLatin1String("Next") && !set.eof() &&
                                          !set.bof() && set.position() == set.recordCount() - 1)))
        m_session.waitForWholeResult();
    // The move makes the grid follow, and its row change raises CurrentItemID. Moving past an
    // end comes back to the same row, which the grid does not see as a change.
    bool pastEnd = false;
    if (key == QLatin1String("First")) {
        if (set.bof())
            return;
        m_parts.grid->clearSelection();
        set.moveFirst();
    } else if (key == QLatin1String("Previous")) {
        if (set.bof())
            return;
        m_parts.grid->clearSelection();
        set.movePrevious();
        if (set.bof()) {
            set.moveFirst();
            pastEnd = true;
        }
    } else if (key == QLatin1String("Next")) {
        if (set.eof())
            return;
        m_parts.grid->clearSelection();
        set.moveNext();
        if (set.eof()) {
            set.moveLast();
            pastEnd = true;
        }
    } else {
        if (set.eof())
            return;
        m_parts.grid->clearSelection();
        set.moveLast();
    }
    {
        // The row moved to is the selected one, as a click on it would make it.
        FlagScope guard(m_session.rowChangeGuard);
        m_parts.grid->followRecordset(true);
    }
    // The versions list reports its end version again when asked to move beyond it; the
    // results stay silent, their current document did not change.
    if (pastEnd && versions)
        m_session.rowColChange();
}

void HitListCommands::hidePages() {
    m_parts.tabStrip->hide();
    showIfAlive(m_parts.form, false);
    showIfAlive(m_parts.keywords, false);
    showIfAlive(m_parts.users, false);
}

void HitListCommands::showResultsView() {
    m_parts.grid->show();
    hidePages();
    m_parts.toolbar->showResultsView(library().revisionTablePresent);
}

bool HitListCommands::requireOneDocument(const QString& key, const QString& title) {
    if (m_session.selection.isEmpty()) {
        const qint32 current = m_session.resultRowItemId();
        if (current != 0) {
            m_session.selection << current;
            m_session.selectCurrentRow();
        }
    }
    if (m_session.selection.size() <= 1)
        return true;
    ui().messageBox(QStringLiteral("Multiple items selected.\rPlease select one item only."),
                    MessageStyle::OkOnly | MessageStyle::Exclamation, title);
    m_parts.toolbar->setPressed(key, false);
    return false;
}

void HitListCommands::edit() {
    if (!m_parts.toolbar->isPressed(QStringLiteral("Edit"))) {
        // Unsaved changes in the form are dropped: the next row change refills it.
        showResultsView();
        return;
    }
    if (!requireOneDocument(QStringLiteral("Edit"), QStringLiteral("Edit Document")))
        return;
    m_parts.grid->hide();
    m_parts.tabStrip->show();
    if (m_session.groupIdValue != 0) {
        m_parts.tabStrip->select(GroupTab);
        showIfAlive(m_parts.form, true);
        showIfAlive(m_parts.keywords, false);
        showIfAlive(m_parts.users, false);
    } else {
        m_parts.tabStrip->hide();
        showIfAlive(m_parts.keywords, true);
        showIfAlive(m_parts.users, true);
    }
    m_parts.toolbar->showEditView();
    m_session.layoutControl();
}

void HitListCommands::archive() {
    if (m_parts.toolbar->isPressed(QStringLiteral("Archive")))
        enterVersionsView();
    else
        leaveVersionsView();
}

void HitListCommands::enterVersionsView() {
    if (!requireOneDocument(QStringLiteral("Archive"),
                            QStringLiteral("View Previous Document Versions")))
        return;
    m_parts.grid->show();
    hidePages();
    m_session.versionsReady = false;
    Recordset versions;
    try {
        versions.open(VersionsQuery + numberToText(qint64(m_session.resultRowItemId())),
                      m_session.session, CursorType::Keyset, LockType::ReadOnly, CommandType::Text);
    } catch (...) {
        m_parts.toolbar->setPressed(QStringLiteral("Archive"), false);
        throw;
    }
    if (versions.recordCount() == 0) {
        versions.close();
        m_parts.toolbar->setPressed(QStringLiteral("Archive"), false);
        return;
    }
    versions.moveFirst();
    m_session.versions = versions;
    m_session.bindGrid(versions, true);
    m_session.applyColumnLayout();
    m_parts.grid->viewport()->update();
    m_parts.toolbar->showVersionsView();
    m_session.versionsReady = true;
}

void HitListCommands::leaveVersionsView() {
    showResultsView();
    m_parts.toolbar->button(QStringLiteral("Archive"))
        ->setToolTip(QStringLiteral("View Previous Document Versions"));
    m_session.versionsReady = false;
    m_session.bindGrid(m_session.result, true);
    m_session.versions.close();
    m_session.versions = Recordset();
    m_session.applyColumnLayout();
    m_parts.grid->viewport()->update();
}

void HitListCommands::save() {
    // The list is read again whether or not the save went through.
    try {
        if (m_parts.recordForm)
            m_parts.recordForm->SaveData();
    } catch (const Error&) {
    }
    m_session.requeryList();
}

void HitListCommands::saveQuery() {
    const std::optional<QString> answer =
        ui().inputBox(QStringLiteral("Please enter a Name to save the result under."),
                      QStringLiteral("Query Name"), QStringLiteral("Result"));
    if (!answer || answer->isEmpty())
        return;
    QString name = *answer;
    QString query = m_session.query;
    emit m_parts.control->SaveQuery(name, query);
}

void HitListCommands::sortByColumn(const QString& direction) {
    BusyCursor busy;
    m_session.waitForWholeResult();
    ResultsGrid* grid = m_parts.grid;
    try {
        if (!m_session.versionsShown()) {
            const QString caption = m_session.clickedColumnCaption();
            const QString type = GetFieldType(m_parts.form, caption).type;
            grid->hide();
            if (type == QLatin1String("MemoField")) {
                ui().messageBox(QStringLiteral("Can't sort by Memofield"), MessageStyle::OkOnly,
                                QStringLiteral("Not Allowed"));
            } else if (type == QLatin1String("ListField")) {
                ui().messageBox(QStringLiteral("Can't sort by Listfield"), MessageStyle::OkOnly,
                                QStringLiteral("Not Allowed"));
            } else if (!caption.isEmpty()) {
                m_session.result.setSort(QLatin1Char('[') + caption + QLatin1String("] ") +
                                         direction);
                const QString section = m_session.settingsSection();
                saveSettings(section, {{QStringLiteral("VXSortOrder"), caption},
                                       {QStringLiteral("VXSortBy"), direction}});
            }
        } else {
            m_session.versions.setSort(QStringLiteral("[Item ID] ASC"));
        }
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("mnuOptionVal_Click"));
    }
    {
        FlagScope guard(m_session.rowChangeGuard);
        grid->followRecordset(true);
    }
    // A new order starts on its first row: the host hears of it when that is another document.
    if (!m_session.versionsShown() && m_session.resultRowItemId() != 0 &&
        m_session.resultRowItemId() != m_session.itemId)
        m_session.currentRowChanged();
    m_session.applyColumnLayout();
    grid->viewport()->update();
    grid->show();
}

void HitListCommands::headClick(int column) {
    headClick(column, QCursor::pos());
}

void HitListCommands::headClick(int column, const QPoint& globalPosition) {
    m_session.clickedColumn = column;
    if (m_parts.findReplace && !m_parts.findReplace->isHidden()) {
        m_parts.findReplace->clickedColumnChanged();
        return;
    }
    if (!m_session.versionsShown() && m_parts.optionMenu)
        m_parts.optionMenu->popup(globalPosition);
}

void HitListCommands::dblClick() {
    m_session.waitForWholeResult();
    ResultsGrid* grid = m_parts.grid;
    FlagScope walk(m_session.selectionWalk);
    grid->setUpdatesEnabled(false);
    grid->selectRowsFrom(grid->currentIndex().row());
    grid->setUpdatesEnabled(true);
}

void HitListCommands::switchTab() {
    const QString key = m_parts.tabStrip->selectedKey();
    QWidget* shown = nullptr;
    if (key == GroupTab)
        shown = m_parts.form;
    else if (key == KeywordsTab)
        shown = m_parts.keywords;
    else if (key == SecurityTab)
        shown = m_parts.users;
    for (QWidget* page :
         {static_cast<QWidget*>(m_parts.form), m_parts.keywords.data(), m_parts.users.data()})
        showIfAlive(page, page == shown);
}

bool HitListCommands::keyDown(int key, Qt::KeyboardModifiers modifiers) {
    const Qt::KeyboardModifiers mods =
        modifiers & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier);
    if (mods == (Qt::ShiftModifier | Qt::ControlModifier) &&
        (key == Qt::Key_R || key == Qt::Key_A || key == Qt::Key_F || key == Qt::Key_C)) {
        if (m_parts.findReplace && !m_parts.findReplace->isHidden())
            return m_parts.findReplace->handleShortcut(key, modifiers);
        return false;
    }
    if (mods == Qt::ControlModifier && key == Qt::Key_A) {
        // Select all means every row of the result; the grid selects them once they are in.
        m_session.waitForWholeResult();
        return false;
    }
    const bool editKey = (mods == Qt::ControlModifier && key == Qt::Key_E) || key == Qt::Key_F2;
    if (editKey) {
        QAction* editButton = m_parts.toolbar->button(QStringLiteral("Edit"));
        // The key is the button: without the right to edit there is nothing to press.
        if (!editButton->isChecked() && editButton->isEnabled() && editButton->isVisible())
            pressAndRun(QStringLiteral("Edit"), true);
        return true;
    }
    if (mods == Qt::ControlModifier && key == Qt::Key_End) {
        buttonClick(QStringLiteral("Last"));
        return true;
    }
    if (mods == Qt::ControlModifier && key == Qt::Key_Home) {
        buttonClick(QStringLiteral("First"));
        return true;
    }
    return false;
}

bool HitListCommands::gridKeyDown(int key, Qt::KeyboardModifiers modifiers) {
    const Qt::KeyboardModifiers mods =
        modifiers & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier);
    if (mods != Qt::NoModifier || (key != Qt::Key_Down && key != Qt::Key_Up) ||
        !m_session.versionsShown() || !m_session.versionsReady || !m_session.versions.isOpen())
        return false;
    // An arrow past either end of the versions reports that end's version again, as the
    // buttons do; the grid itself would not move.
    const qsizetype position = m_session.versions.position();
    const qsizetype last = m_session.versions.recordCount() - 1;
    if ((key == Qt::Key_Down && position == last) || (key == Qt::Key_Up && position == 0)) {
        m_session.rowColChange();
        return true;
    }
    return false;
}

void HitListCommands::formKeyDown(short keyCode, short) {
    if (keyCode == KeyCode::Return) {
        if (ui().messageBox(QStringLiteral("Save Changes to the Record?"), MessageStyle::YesNo,
                            QStringLiteral("Confirm Commit")) == MessageAnswer::Yes)
            save();
    } else if (keyCode == KeyCode::Escape) {
        pressAndRun(QStringLiteral("Edit"), false);
    }
}

} // namespace vx
