#include "HostWindow.h"

#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QSysInfo>
#include <QVBoxLayout>
#include <VXUILib/Connection.h>
#include <VXUILib/Error.h>
#include <VXUILib/Recordset.h>
#include <VXUILib/VXDynaForm.h>
#include <VXUILib/VXHitList.h>
#include <VXUILib/VXQuery.h>
#include <cstdio>

namespace {

// The user's rights as the UserPermission bits: hint lists (1, 4), editing (8), deleting (32),
// moving (64), exporting (128).
constexpr qint32 AllRights = 1 | 4 | 8 | 32 | 64 | 128;

struct GroupFacts {
    qint32 groupId = 0;
    QStringList documentFolders;
};

// The group's id and the folders documents are filed in, read from the repository through the
// data-link file the init file names.
GroupFacts readGroup(const QString& initFilePath, const QString& groupName) {
    const QSettings init(initFilePath, QSettings::IniFormat);
    const QString dataLink = init.value(QStringLiteral("datalinks/Group")).toString();
    vx::Connection connection;
    connection.open(QStringLiteral("File Name=") + dataLink);
    vx::Recordset group;
    group.open(QStringLiteral("select Groupid from KTGroup where [Name] = '") + groupName + u'\'',
               connection);
    if (group.eof())
        throw vx::Error(vx::ErrorNumber::Unspecified,
                        QStringLiteral("The repository has no group \"%1\".").arg(groupName));
    GroupFacts facts;
    facts.groupId = group.value(0).toInt();
    vx::Recordset paths;
    paths.open(QStringLiteral("select Path from KTPath"), connection);
    for (; !paths.eof(); paths.moveNext())
        facts.documentFolders << QDir::fromNativeSeparators(paths.value(0).toString().trimmed());
    return facts;
}

} // namespace

HostWindow::HostWindow(QWidget* parent)
    : QWidget(parent)
    , m_query(new vx::VXQuery(this))
    , m_hitList(new vx::VXHitList(this))
    , m_search(new QPushButton(tr("&Search"), this))
    , m_status(new QLabel(this)) {
    setWindowTitle(tr("Minimal VXUILib host"));
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_status, 1);
    buttons->addWidget(m_search);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_query, 2);
    layout->addLayout(buttons);
    layout->addWidget(m_hitList, 3);

    // Direct connections: the control waits for the answer written into the arguments.
    connect(m_hitList, &vx::VXHitList::CurrentItemID, this, &HostWindow::onCurrentItemID,
            Qt::DirectConnection);
    connect(m_hitList, &vx::VXHitList::LocateDocumentFromID, this,
            &HostWindow::onLocateDocumentFromID, Qt::DirectConnection);
    connect(m_hitList, &vx::VXHitList::LocateDocumentToMove, this,
            &HostWindow::onLocateDocumentFromID, Qt::DirectConnection);
    connect(m_hitList, &vx::VXHitList::GetServerName, this, &HostWindow::onGetServerName,
            Qt::DirectConnection);
    connect(m_hitList, &vx::VXHitList::RecordAuditTrail, this, &HostWindow::onRecordAuditTrail,
            Qt::DirectConnection);
    connect(m_query, &vx::VXQuery::PerformQuery, this, &HostWindow::search);
    connect(m_search, &QPushButton::clicked, this, &HostWindow::search);
}

HostWindow::~HostWindow() {
    closeGroup();
}

bool HostWindow::openGroup(const QString& initFilePath, const QString& userName) {
    closeGroup();
    const QFileInfo init(initFilePath);
    m_groupName = init.completeBaseName();
    const QDir config(init.absoluteDir().filePath(QStringLiteral("config")));
    GroupFacts facts;
    try {
        facts = readGroup(init.absoluteFilePath(), m_groupName);
    } catch (const vx::Error& error) {
        m_status->setText(error.description());
        return false;
    }
    m_documentFolders = facts.documentFolders;

    // Identity first, then the form-definition file, then Init, which opens the session.
    m_hitList->setGroupName(m_groupName);
    m_hitList->setGroupID(facts.groupId);
    m_hitList->setUserName(userName);
    m_hitList->setUserPermission(AllRights);
    m_hitList->setGroupInitString(config.filePath(m_groupName + QStringLiteral(".xml")));
    m_hitList->setInit(init.absoluteFilePath());

    m_query->setGroupName(m_groupName);
    m_query->setCurrentLibrary(QStringLiteral("Main"));
    m_query->setMethodInitString(init.absoluteFilePath());
    QString queryForm = config.filePath(m_groupName + QStringLiteral(".xqr"));
    // The controls report their own failures to the user; Init says whether the form loaded.
    m_open = m_query->Init(queryForm);
    m_status->setText(m_open ? tr("Group %1").arg(m_groupName)
                             : tr("The search form of %1 did not load.").arg(m_groupName));
    return m_open;
}

void HostWindow::showResult(const QString& query) {
    m_hitList->setDoQuery(query);
}

void HostWindow::showEveryDocument() {
    // The hit list's record form reads each field from the result column named by the field's
    // caption, the way the query form names them; the group's own column names would not do.
    auto* form = m_hitList->findChild<vx::VXDynaForm*>(QStringLiteral("Group"));
    if (!form)
        return;
    const QString table = QLatin1Char('[') + m_groupName + QLatin1Char(']');
    QStringList columns{QStringLiteral("ktitem.itemid AS itemid"),
                        QStringLiteral("ktitem.idx_date AS IndexDate")};
    for (form->MoveFirstField(); !form->FieldEOF(); form->MoveNextField())
        columns << QStringLiteral("%1.[%2] AS [%3]")
                       .arg(table, form->FieldName(), form->FieldCaption());
    showResult(QStringLiteral("SELECT %1 FROM ktitem, %2 WHERE ktitem.itemid = %2.itemid AND "
                              "ktitem.deleted = 0 ORDER BY ktitem.itemid")
                   .arg(columns.join(QStringLiteral(", ")), table));
}

void HostWindow::search() {
    QString query;
    try {
        query = m_query->queryString();
    } catch (const vx::Error& error) {
        m_status->setText(error.description());
        return;
    }
    if (query.trimmed().isEmpty()) {
        m_status->setText(tr("Fill in at least one search field or pick a keyword."));
        return;
    }
    showResult(query);
}

void HostWindow::closeGroup() {
    if (!m_open)
        return;
    m_open = false;
    m_hitList->Done();
}

void HostWindow::onCurrentItemID(qint32& itemid) {
    m_currentItemId = itemid;
    emit currentItemChanged(itemid);
}

void HostWindow::onLocateDocumentFromID(qint32& itemid, QString& sFile, QString& sVolume) {
    Q_UNUSED(itemid);
    Q_UNUSED(sVolume);
    // The host knows where documents lie; the library only asks. "ERROR" says not found.
    QString found = QStringLiteral("ERROR");
    for (const QString& folder : std::as_const(m_documentFolders)) {
        const QFileInfo file(QDir(folder).filePath(QFileInfo(sFile).fileName()));
        if (file.isFile()) {
            found = QDir::toNativeSeparators(file.absoluteFilePath());
            break;
        }
    }
    m_hitList->setDocumentToMove(found);
}

void HostWindow::onGetServerName() {
    // Moving documents and changing volumes are allowed on the server only; this host is one.
    m_hitList->setServerName(QSysInfo::machineHostName());
    m_hitList->setIsServer(true);
}

void HostWindow::onRecordAuditTrail(QString& sAction, QVariantList& colID, QString& sDescription) {
    std::fprintf(stderr, "audit: %s on %lld document(s): %s\n", qPrintable(sAction),
                 static_cast<long long>(colID.size()), qPrintable(sDescription));
}
