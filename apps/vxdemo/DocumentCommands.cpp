#include "DocumentCommands.h"

#include "HostUiServices.h"
#include "data/Error.h"
#include "server/LateBinding.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QWidget>

namespace vx::demo {

struct DocumentCommands::Command {
    QString name;
    QString text;
    QString toolTip;
    const char* method;
    qint32 permissionMask; // 0: everyone
    QAction* action = nullptr;
};

namespace {

QString documents(int count) {
    return count == 1 ? QObject::tr("1 document") : QObject::tr("%1 documents").arg(count);
}

QString native(const QString& path) {
    return QDir::toNativeSeparators(QDir::cleanPath(path));
}

// "Copy items to: /x/" -> "/x/"
QString afterColon(const QString& description) {
    const qsizetype colon = description.indexOf(u':');
    return colon < 0 ? description : description.mid(colon + 1).trimmed();
}

} // namespace

DocumentCommands::DocumentCommands(QWidget* hitList, HostUiServices& ui, QObject* parent)
    : QObject(parent)
    , m_hitList(hitList)
    , m_ui(ui) {
    m_commands = {
        {QStringLiteral("exportTable"), tr("Export &table..."),
         tr("Export the index data of the selected documents to a FoxPro table"), "ExportData",
         128},
        {QStringLiteral("saveAsText"), tr("Save as te&xt..."),
         tr("Save the index data of the selected documents as a comma-separated text file"),
         "PrintData", 0},
        {QStringLiteral("portableExport"), tr("&Portable export..."),
         tr("Package the selected documents for the viewer, on CD-sized volumes or in a folder"),
         "ExportToVeltrane", 128},
        {QStringLiteral("copyDocuments"), tr("&Copy documents..."),
         tr("Copy the files of the selected documents to a folder"), "CopyDocuments", 64},
        {QStringLiteral("moveDocuments"), tr("&Move documents..."),
         tr("Move the files of the selected documents and record their new volume"),
         "MoveFilesAndUpdateVolume", 64},
        {QStringLiteral("updateVolume"), tr("&Update volume..."),
         tr("Record the volume the selected documents' files are on now"), "UpdateVolume", 8},
        {QStringLiteral("markForDeletion"), tr("Mark for &deletion..."),
         tr("Mark the selected documents as deleted"), "MarkForDeletion", 32},
        {QStringLiteral("properties"), tr("P&roperties"),
         tr("Number and total size of the selected documents' files"), "PropertyDocuments", 0},
    };
    for (Command& command : m_commands) {
        command.action = new QAction(command.text, this);
        command.action->setObjectName(command.name);
        command.action->setToolTip(command.toolTip);
        command.action->setStatusTip(command.toolTip);
        const QString name = command.name;
        connect(command.action, &QAction::triggered, this, [this, name] {
            for (const Command& each : std::as_const(m_commands)) {
                if (each.name == name)
                    run(each);
            }
        });
    }
    updateEnabled();
}

DocumentCommands::~DocumentCommands() = default;

QList<QAction*> DocumentCommands::actions() const {
    QList<QAction*> list;
    for (const Command& command : m_commands)
        list << command.action;
    return list;
}

QAction* DocumentCommands::action(const QString& name) const {
    for (const Command& command : m_commands) {
        if (command.name == name)
            return command.action;
    }
    return nullptr;
}

void DocumentCommands::setPermission(qint32 permission) {
    m_permission = permission;
    updateEnabled();
}

void DocumentCommands::setResultsShown(bool shown) {
    m_resultsShown = shown;
    updateEnabled();
}

void DocumentCommands::updateEnabled() {
    for (const Command& command : std::as_const(m_commands))
        command.action->setEnabled(
            m_resultsShown && !m_running &&
            (command.permissionMask == 0 || (m_permission & command.permissionMask) != 0));
}

void DocumentCommands::noteAudit(const QString& action, const QList<qint32>& itemIds,
                                 const QString& description) {
    if (!m_running)
        return;
    m_auditAction = action;
    m_auditItems = itemIds;
    m_auditDescription = description;
}

QString DocumentCommands::auditOutcome(const QString& action, const QList<qint32>& itemIds,
                                       const QString& description) {
    const int count = int(itemIds.size());
    if (action == u"Copying")
        return tr("Copied %1 to %2.").arg(documents(count), native(afterColon(description)));
    if (action == u"Moving")
        return tr("Moved %1 to %2.").arg(documents(count), native(afterColon(description)));
    if (action == u"Deleting")
        return tr("Marked %1 for deletion.").arg(documents(count));
    if (action == u"Exporting")
        return tr("Exported %1 for the viewer to %2.")
            .arg(documents(count), afterColon(description));
    if (action == u"Editing" && !itemIds.isEmpty())
        return tr("Saved the changes to item %1.").arg(itemIds.first());
    return {};
}

void DocumentCommands::run(const Command& command) {
    if (!m_hitList || m_running)
        return;
    m_running = true;
    updateEnabled();
    m_auditAction.clear();
    m_auditItems.clear();
    m_auditDescription.clear();
    m_ui.clearAnswers();
    bool succeeded = false;
    int selected = 0;
    // File times have whole seconds on some file systems.
    const QDateTime started = QDateTime::currentDateTime().addSecs(-1);
    try {
        // The control adds the current row when nothing is selected.
        selected = qMax(1, int(readMember(m_hitList, "SelectedItems").toList().size()));
        const QVariant result = callMember(m_hitList, command.method);
        succeeded = result.isValid() ? result.toBool() : !m_auditAction.isEmpty();
    } catch (const Error& error) {
        m_running = false;
        updateEnabled();
        emit statusMessage(error.description());
        return;
    }
    m_running = false;
    updateEnabled();
    const int count = m_auditItems.isEmpty() ? selected : int(m_auditItems.size());
    emit statusMessage(outcome(command, succeeded, count, started));
    if (succeeded && (command.name == u"updateVolume" || command.name == u"markForDeletion" ||
                      command.name == u"moveDocuments"))
        emit resultsChanged();
}

QString DocumentCommands::outcome(const Command& command, bool succeeded, int count,
                                  const QDateTime& started) const {
    const QString folder = native(m_ui.lastFolder());
    const QString name = m_ui.lastInput();
    if (command.name == u"exportTable")
        return succeeded ? tr("Exported %1 to %2.")
                               .arg(documents(count),
                                    native(QDir(folder).filePath(name + QStringLiteral(".dbf"))))
                         : tr("Nothing was exported.");
    if (command.name == u"saveAsText") {
        const QString path = QDir(folder).filePath(name);
        if (succeeded)
            return tr("Saved %1 as text to %2.").arg(documents(count), native(path));
        // The file is written before it is handed on to be opened or printed, which may fail.
        const QFileInfo written(path);
        if (!folder.isEmpty() && !name.isEmpty() && written.isFile() &&
            written.lastModified() >= started)
            return tr("Saved %1 as text to %2; it could not be opened or printed.")
                .arg(documents(count), native(path));
        return tr("No text file was written.");
    }
    if (command.name == u"portableExport")
        return succeeded ? tr("Exported %1 for the viewer to %2.")
                               .arg(documents(count), afterColon(m_auditDescription))
                         : tr("No portable export was made.");
    if (command.name == u"copyDocuments")
        return succeeded ? tr("Copied %1 to %2.")
                               .arg(documents(count), native(afterColon(m_auditDescription)))
                         : tr("Nothing was copied.");
    if (command.name == u"moveDocuments")
        return succeeded ? tr("Moved %1 to %2.")
                               .arg(documents(count), native(afterColon(m_auditDescription)))
                         : tr("Nothing was moved.");
    if (command.name == u"updateVolume")
        return succeeded ? tr("Updated the volume of %1.").arg(documents(count))
                         : tr("No volume was updated.");
    if (command.name == u"markForDeletion")
        return succeeded ? tr("Marked %1 for deletion.").arg(documents(count))
                         : tr("Nothing was marked for deletion.");
    return succeeded ? tr("Properties of %1 shown.").arg(documents(count))
                     : tr("No properties to show.");
}

} // namespace vx::demo
