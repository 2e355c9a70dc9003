#pragma once

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

class QAction;
class QWidget;

namespace vx::demo {

class HostUiServices;

// The hit list's operations on the selected documents as host actions, for the menu and the
// host's toolbar: the table export the control's own Export button leaves to the host, and the
// others the control's toolbar hides in some views. Each is enabled by the permission bits of
// the control's button and only while there are results. After each one the host is told what
// happened, from the method's result and the audit record the control raised.
class DocumentCommands : public QObject {
    Q_OBJECT

public:
    DocumentCommands(QWidget* hitList, HostUiServices& ui, QObject* parent = nullptr);
    ~DocumentCommands() override;

    // In menu order; each carries an object name ("exportTable", "saveAsText", ...).
    QList<QAction*> actions() const;
    QAction* action(const QString& name) const;

    void setPermission(qint32 permission);
    void setResultsShown(bool shown);

    // The control's RecordAuditTrail, as the host received it.
    void noteAudit(const QString& action, const QList<qint32>& itemIds, const QString& description);
    // True while one of these commands runs (its status follows when it ends).
    bool running() const { return m_running; }
    // What an audit record says happened ("Copied 3 documents to ..."); empty for other actions.
    static QString auditOutcome(const QString& action, const QList<qint32>& itemIds,
                                const QString& description);

signals:
    void statusMessage(const QString& text);
    // An operation changed rows the results show (volume, deletion mark).
    void resultsChanged();

private:
    struct Command;
    void run(const Command& command);
    // `started`: when the command began; a file written since then counts as written.
    QString outcome(const Command& command, bool succeeded, int documents,
                    const QDateTime& started) const;
    void updateEnabled();

    QPointer<QWidget> m_hitList;
    HostUiServices& m_ui;
    QList<Command> m_commands;
    qint32 m_permission = 0;
    bool m_resultsShown = false;
    // The audit record of the operation running now.
    bool m_running = false;
    QString m_auditAction;
    QList<qint32> m_auditItems;
    QString m_auditDescription;
};

} // namespace vx::demo
