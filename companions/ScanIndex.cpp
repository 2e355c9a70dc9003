#include "companions/ScanIndex.h"

#include "companions/StagingFolder.h"
#include "companions/StoredDocument.h"
#include "companions/form/SqlText.h"
#include "data/Connection.h"
#include "data/Driver.h"
#include "data/Error.h"
#include "data/Field.h"
#include "data/Recordset.h"
#include "data/RetryTransient.h"
#include "session/Conversions.h"
#include "session/GroupConnection.h"
#include "session/IdCounter.h"
#include "session/PrivateProfile.h"
#include "session/SystemFolder.h"
#include "session/UiServices.h"
#include "session/companions/NativeHelpers.h"
#include "session/companions/VXItemList.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <limits>

namespace vx {

namespace {

int columnIndex(const RowStore& layout, const QString& name) {
    const ColumnList& columns = layout.columns();
    for (int i = 0; i < columns.size(); ++i) {
        if (columns[i].name.compare(name, Qt::CaseInsensitive) == 0)
            return i;
    }
    return -1;
}

} // namespace

struct ScanIndex::Private {
    QString library;
    bool remote = false;
    QString group;
    qint32 groupId = 0;
    QString documentFolder;
    bool securityTable = false;
    Connection connection;
    QList<std::pair<QString, QVariant>> staged;
    std::shared_ptr<VXItemList> excluded;
    std::shared_ptr<VXItemList> keywords;
    QString lastError;
    QString initFile; // of the open repository
    QString volume;   // of the document folder, read once: most folders have no label
    bool volumeRead = false;
    QString layoutGroup; // whose columns groupLayout holds
    std::unique_ptr<RowStore> groupLayout;
    StagingFolder staging; // where this session's copies are written

    qint32 fileDocument(const QString& path, const QString& user);
    qint32 fileOnce(const QFileInfo& source, StoredDocument& document, const QString& user);
    void insertGroupRow(qint32 itemId);
};

ScanIndex::ScanIndex(QObject* parent)
    : VXScanIndex(parent)
    , d(std::make_unique<Private>()) {}

ScanIndex::~ScanIndex() = default;

void ScanIndex::Init(QString& library) {
    d->library = library;
    d->group.clear();
}

bool ScanIndex::RemoteIndex() const {
    return d->remote;
}
void ScanIndex::setRemoteIndex(bool remote) {
    d->remote = remote;
}

bool ScanIndex::SelectGroup(QString& group) {
    d->group.clear();
    d->lastError.clear();

    const QString catalog = libraryCatalogPath();
    QString initFile = readPrivateProfileString(catalog, d->library, group, QString());
    if (initFile.isEmpty()) {
        d->lastError = QStringLiteral("The library \"%1\" lists no group \"%2\" in %3.")
                           .arg(d->library, group, QDir::toNativeSeparators(catalog));
        return false;
    }
    if (QFileInfo(initFile).isRelative())
        initFile = QFileInfo(catalog).absoluteDir().absoluteFilePath(initFile);

    // The index control selects the group before every document: the repository stays open
    // while the group's initialisation file is the same, and what was learnt about it stays.
    const bool sameRepository = d->connection.isOpen() && initFile == d->initFile;
    if (!sameRepository) {
        d->connection = Connection();
        d->initFile.clear();
        d->layoutGroup.clear();
        d->connection = openGroupConnection(initFile);
        // Before any filing's transaction: made inside one, the id sequences would hold the
        // other filers until it ended.
        IdCounter::prepare(d->connection);
        d->initFile = initFile;
        d->securityTable = false;
        Recordset tables = d->connection.openSchema(SchemaKind::Tables);
        for (; !tables.eof(); tables.moveNext())
            if (tables.value(QStringLiteral("TABLE_NAME"))
                        .toString()
                        .compare(QLatin1String("KTSecurity"), Qt::CaseInsensitive) == 0 &&
                tables.value(QStringLiteral("TABLE_TYPE")).toString() == QLatin1String("TABLE"))
                d->securityTable = true;
    }

    Recordset row;
    row.open(QStringLiteral("select * from KTGroup where [Name] = ") + form::sqlText(group),
             d->connection);
    if (row.eof()) {
        d->lastError = QStringLiteral("The repository of library \"%1\" has no group \"%2\".")
                           .arg(d->library, group);
        return false;
    }
    d->groupId = toInt32(row.value(QStringLiteral("Groupid")));
    const QString folder = row.value(QStringLiteral("Path")).toString().trimmed();
    if (folder != d->documentFolder) {
        d->volume.clear();
        d->volumeRead = false;
    }
    d->documentFolder = folder;
    if (d->layoutGroup != group) {
        d->groupLayout = d->connection.driver().tableStructure(group);
        d->layoutGroup = group;
    }
    d->group = group;
    return true;
}

void ScanIndex::SetFieldContent(QString& column, const QVariant& value) {
    for (auto& [name, staged] : d->staged) {
        if (name.compare(column, Qt::CaseInsensitive) == 0) {
            staged = value;
            return;
        }
    }
    d->staged.append({column, value});
}

std::shared_ptr<VXItemList> ScanIndex::ExcludeUserIDList() const {
    return d->excluded;
}
void ScanIndex::setExcludeUserIDList(std::shared_ptr<VXItemList> list) {
    d->excluded = std::move(list);
}
std::shared_ptr<VXItemList> ScanIndex::KeywordsList() const {
    return d->keywords;
}
void ScanIndex::setKeywordsList(std::shared_ptr<VXItemList> list) {
    d->keywords = std::move(list);
}

QString ScanIndex::lastError() const {
    return d->lastError;
}

qint32 ScanIndex::DocumentIndex(QString& path, QWidget* owner, QString& user) {
    Q_UNUSED(owner) // the user interface services own their dialogs
    d->lastError.clear();
    qint32 itemId = 0;
    try {
        itemId = d->fileDocument(path, user);
    } catch (const Error& error) {
        d->lastError = error.description();
    }
    d->staged.clear();
    d->excluded.reset();
    d->keywords.reset();
    if (itemId == 0)
        ui().messageBox(QStringLiteral("The document was not filed.\n") + d->lastError,
                        MessageStyle::Critical | MessageStyle::OkOnly,
                        QStringLiteral("DocumentIndex"));
    return itemId;
}

qint32 ScanIndex::Private::fileDocument(const QString& path, const QString& user) {
    if (group.isEmpty() || !connection.isOpen())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("No group is selected; call SelectGroup first."));
    const QFileInfo source(path);
    if (!source.isFile())
        throw Error(ErrorNumber::Unspecified, QStringLiteral("The document \"%1\" does not exist.")
                                                  .arg(QDir::toNativeSeparators(path)));
    if (documentFolder.isEmpty())
        throw Error(
            ErrorNumber::Unspecified,
            QStringLiteral("The group \"%1\" has no document folder (KTGroup.Path).").arg(group));
    if (source.size() > std::numeric_limits<qint32>::max())
        throw Error(ErrorNumber::Overflow,
                    QStringLiteral("The document \"%1\" is larger than 2 GB.")
                        .arg(QDir::toNativeSeparators(path)));

    QDir folder(documentFolder);
    if (!folder.exists() && !QDir().mkpath(documentFolder))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The document folder \"%1\" cannot be created.")
                        .arg(QDir::toNativeSeparators(documentFolder)));
    if (!volumeRead) {
        KTVolumeLabel(volume, folder.absolutePath());
        volumeRead = true;
    }

    // The copy is made before the filing's transaction, which stays short: several users file
    // at once and each waits for the others' transactions, not for their copies.
    StoredDocument document(folder, source.absoluteFilePath(), staging.in(folder));

    // A filing that lost a race for an id, a lock or a row is run again whole; each run leaves
    // nothing behind when it fails.
    RetryPolicy policy;
    policy.retryOn = RetryOn::ConflictsAndDuplicates;
    const qint32 itemId =
        retryTransient([&] { return fileOnce(source, document, user); }, policy,
                       [this](const Error& error) {
                           if (error.conflict() != Conflict::UniqueViolation)
                               return;
                           try {
                               IdCounter::catchUp(connection);
                           } catch (const Error&) { // the next run says what is wrong
                           }
                       });
    document.keep();
    return itemId;
}

qint32 ScanIndex::Private::fileOnce(const QFileInfo& source, StoredDocument& document,
                                    const QString& user) {
    // Any failure rolls the filing back whole: no statement needs undoing on its own.
    Transaction transaction(connection, TransactionKind::AllOrNothing);
    // Taken inside the filing's transaction: a counter row raised for it rolls back with it.
    const qint32 itemId = IdCounter::next(connection, IdCounter::Kind::Item);
    const qint32 fileId = IdCounter::next(connection, IdCounter::Kind::File);
    const QString storedName = document.placeAs(itemId, source.suffix());
    auto withdraw = qScopeGuard([&] { document.withdraw(); });

    Driver& driver = connection.driver();
    const QDateTime now = QDateTime::currentDateTime();
    driver.insertRow(QStringLiteral("KTItem"),
                     {QStringLiteral("itemid"), QStringLiteral("idx_date"),
                      QStringLiteral("username"), QStringLiteral("type"),
                      QStringLiteral("description"), QStringLiteral("groupid"),
                      QStringLiteral("lockcount"), QStringLiteral("tag"),
                      QStringLiteral("attachment"), QStringLiteral("deleted")},
                     {itemId, now.addMSecs(-now.time().msec()), user, 0, QString(), groupId, 0,
                      QStringLiteral(" "), false, false},
                     QString());

    const QDateTime modified = source.lastModified();
    driver.insertRow(QStringLiteral("KTFile"),
                     {QStringLiteral("fileid"), QStringLiteral("itemid"), QStringLiteral("fname"),
                      QStringLiteral("fdate"), QStringLiteral("fsize"), QStringLiteral("archive"),
                      QStringLiteral("volume")},
                     {fileId, itemId, storedName, modified.addMSecs(-modified.time().msec()),
                      qint32(source.size()), false, volume},
                     QString());

    insertGroupRow(itemId);

    if (keywords) {
        QStringList written;
        for (const QString& keyword : keywords->items()) {
            if (keyword.isEmpty() || written.contains(keyword, Qt::CaseInsensitive))
                continue;
            driver.insertRow(QStringLiteral("keywords"),
                             {QStringLiteral("keyword"), QStringLiteral("itemid")},
                             {keyword, itemId}, QString());
            written << keyword;
        }
    }

    // Without a KTSecurity table the repository has no document security to record.
    if (excluded && securityTable) {
        QList<qint32> written;
        for (const QString& text : excluded->items()) {
            const qint32 userId = toInt32(text);
            if (written.contains(userId))
                continue;
            driver.insertRow(QStringLiteral("KTSecurity"),
                             {QStringLiteral("itemid"), QStringLiteral("UserID")}, {itemId, userId},
                             QString());
            written << userId;
        }
    }

    transaction.commit();
    withdraw.dismiss();
    return itemId;
}

// One row of the group table: itemid and the staged values, each converted to its column's type.
void ScanIndex::Private::insertGroupRow(qint32 itemId) {
    const RowStore& layout = *groupLayout;
    QStringList columns{QStringLiteral("itemid")};
    QVariantList values{itemId};
    for (const auto& [column, value] : std::as_const(staged)) {
        const int index = columnIndex(layout, column);
        if (index < 0)
            throw Error(
                ErrorNumber::ColumnNotFound,
                QStringLiteral("The group table \"%1\" has no column \"%2\".").arg(group, column));
        if (value.isNull())
            continue;
        const ColumnInfo& info = layout.columns().at(index);
        columns << (info.baseColumn.isEmpty() ? info.name : info.baseColumn);
        try {
            values << convertForColumn(value, info);
        } catch (const Error& error) {
            throw Error(error.number(), QStringLiteral("The value \"%1\" does not fit the column "
                                                       "\"%2\" of the group table: %3")
                                            .arg(value.toString(), column, error.description()));
        }
    }
    connection.driver().insertRow(group, columns, values, QString());
}

} // namespace vx
