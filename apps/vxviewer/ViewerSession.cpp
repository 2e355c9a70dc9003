#include "ViewerSession.h"

#include "data/ConnectionProperties.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "session/PrivateProfile.h"
#include "session/Settings.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>
#include <optional>

namespace vx::viewer {

namespace {

// The fixed tables of a portable database; the group table is the other one with an itemid.
const QStringList FixedTables{QStringLiteral("ktitem"), QStringLiteral("ktfile"),
                              QStringLiteral("ktgroup"), QStringLiteral("keywords"),
                              QStringLiteral("dictionary")};

// Enough of the database to tell exports apart; every volume of an export holds the same file.
constexpr qint64 IdentityBytes = 64 * 1024 * 1024;

bool isTrue(const QString& text) {
    const QString value = text.trimmed().toLower();
    return value == u"true" || value == u"-1" || value == u"yes" || value == u"1";
}

QString exportIdentity(const QString& databasePath) {
    QFile file(databasePath);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The export's database %1 cannot be read: %2")
                        .arg(QDir::toNativeSeparators(databasePath), file.errorString()));
    QCryptographicHash hash(QCryptographicHash::Sha1);
    qint64 left = IdentityBytes;
    while (left > 0) {
        const QByteArray chunk = file.read(qMin<qint64>(left, 1 << 20));
        if (chunk.isEmpty())
            break;
        hash.addData(chunk);
        left -= chunk.size();
    }
    hash.addData(QByteArray::number(file.size()));
    return QString::fromLatin1(hash.result().toHex().left(16));
}

// True when the volume's data link opens the database beside it without writing.
bool linkOpensBesideReadOnly(const ExportVolume& volume) {
    try {
        const ConnectionProperties link = readDataLinkFile(volume.dataLinkPath());
        if (link.value(QStringLiteral("Provider")).compare(u"SQLite", Qt::CaseInsensitive) != 0)
            return false;
        const QString source = link.value(QStringLiteral("Data Source")).trimmed();
        const QString resolved = QDir(volume.folder).absoluteFilePath(source);
        return QFileInfo(resolved) == QFileInfo(volume.databasePath()) &&
               link.value(QStringLiteral("Mode")).trimmed().compare(u"Read", Qt::CaseInsensitive) ==
                   0 &&
               isTrue(link.value(QStringLiteral("Immutable")));
    } catch (const Error&) {
        return false;
    }
}

void writeText(const QString& path, const QByteArray& text) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot write %1: %2")
                        .arg(QDir::toNativeSeparators(path), file.errorString()));
}

// A copy of the search form whose data link is the given one.
void writeQueryFormCopy(const QString& source, const QString& target, const QString& dataLink) {
    QFile file(source);
    QDomDocument form;
    if (!file.open(QIODevice::ReadOnly) || !form.setContent(&file))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The export's search form %1 cannot be read.")
                        .arg(QDir::toNativeSeparators(source)));
    QDomElement root = form.documentElement();
    for (QDomElement link = root.firstChildElement(QStringLiteral("groupdatalink")); !link.isNull();
         link = link.nextSiblingElement(QStringLiteral("groupdatalink"))) {
        while (link.hasChildNodes())
            link.removeChild(link.firstChild());
        link.appendChild(form.createTextNode(dataLink));
    }
    writeText(target, form.toByteArray());
}

QString childText(const QDomElement& element, const QString& name) {
    return element.firstChildElement(name).text().trimmed();
}

// The hit list's record form shows one field per column, where the search form has both ends of
// a number or date range; an export carries only the search form, so the record form is made
// from it: the second end dropped, the first one captioned like the result's column.
QList<QPair<QString, QString>> writeRecordForm(const QString& searchForm, const QString& target,
                                               const QString& dataLink) {
    QFile file(searchForm);
    QDomDocument form;
    if (!file.open(QIODevice::ReadOnly) || !form.setContent(&file))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The export's search form %1 cannot be read.")
                        .arg(QDir::toNativeSeparators(searchForm)));
    static const QString fromSuffix = QStringLiteral(" from");
    // It lies in the state folder: a link relative to the export would not be found from there.
    for (QDomElement link =
             form.documentElement().firstChildElement(QStringLiteral("groupdatalink"));
         !link.isNull(); link = link.nextSiblingElement(QStringLiteral("groupdatalink"))) {
        while (link.hasChildNodes())
            link.removeChild(link.firstChild());
        link.appendChild(form.createTextNode(dataLink));
    }
    QList<QPair<QString, QString>> columns;
    const QDomNodeList controls = form.elementsByTagName(QStringLiteral("control"));
    QList<QDomElement> all;
    for (int i = 0; i < controls.size(); ++i)
        all << controls.at(i).toElement();
    for (qsizetype i = 0; i < all.size(); ++i) {
        QDomElement control = all.at(i);
        const QString type = childText(control, QStringLiteral("type"));
        const QString column = childText(control, QStringLiteral("columnname"));
        const bool range = type == u"NumericField" || type == u"DateField";
        QDomElement caption = control.firstChildElement(QStringLiteral("caption"));
        QString text = caption.text().trimmed();
        if (range && i + 1 < all.size() &&
            childText(all.at(i + 1), QStringLiteral("type")) == type &&
            childText(all.at(i + 1), QStringLiteral("columnname"))
                    .compare(column, Qt::CaseInsensitive) == 0) {
            all.at(i + 1).parentNode().removeChild(all.at(i + 1));
            ++i;
            if (text.endsWith(fromSuffix, Qt::CaseInsensitive) && text.size() > fromSuffix.size())
                text = text.left(text.size() - fromSuffix.size()).trimmed();
            while (caption.hasChildNodes())
                caption.removeChild(caption.firstChild());
            caption.appendChild(form.createTextNode(text));
        }
        columns.append({column, text});
    }
    writeText(target, form.toByteArray());
    return columns;
}

} // namespace

struct ViewerSession::Private {
    ExportVolume volume;
    QString stateFolder;
    QString initFilePath;
    QString dataLinkPath;
    QString queryFormPath;
    QString recordFormPath;
    QList<QPair<QString, QString>> formColumns;
    QString groupName;
    qint32 groupId = 0;
    Connection connection;
    std::optional<QString> previousSettings;

    QString volumesFile() const {
        return QDir(stateFolder).filePath(QStringLiteral("volumes.ini"));
    }

    void findGroup() {
        QStringList tables;
        Recordset schema = connection.openSchema(SchemaKind::Tables);
        for (; !schema.eof(); schema.moveNext())
            if (schema.value(QStringLiteral("TABLE_TYPE")).toString() == u"TABLE")
                tables << schema.value(QStringLiteral("TABLE_NAME")).toString();
        QStringList lacking;
        for (const QString& fixed : FixedTables) {
            if (!tables.contains(fixed, Qt::CaseInsensitive))
                lacking << fixed;
        }
        if (!lacking.isEmpty())
            throw notExportDatabase(QStringLiteral("it lacks the tables ") +
                                    lacking.join(QStringLiteral(", ")));

        Recordset groups;
        groups.open(QStringLiteral("select * from KTGroup"), connection);
        QString named;
        if (!groups.eof()) {
            named = groups.value(QStringLiteral("Name")).toString().trimmed();
            groupId = groups.value(QStringLiteral("Groupid")).toInt();
        }
        QStringList candidates;
        for (const QString& table : std::as_const(tables)) {
            if (FixedTables.contains(table, Qt::CaseInsensitive))
                continue;
            if (!named.isEmpty() && table.compare(named, Qt::CaseInsensitive) == 0) {
                groupName = table;
                return;
            }
            if (!table.endsWith(QStringLiteral("Hints")))
                candidates << table;
        }
        if (candidates.size() != 1)
            throw notExportDatabase(QStringLiteral("it holds no document group table"));
        groupName = candidates.first();
    }

    Error notExportDatabase(const QString& why) const {
        return Error(ErrorNumber::Unspecified,
                     QStringLiteral("The database %1 is not a portable export's database: %2.")
                         .arg(QDir::toNativeSeparators(volume.databasePath()), why));
    }
};

ViewerSession::ViewerSession(const ExportVolume& volume, const QString& stateRoot)
    : d(std::make_unique<Private>()) {
    d->volume = volume;
    d->stateFolder = QDir(stateRoot).filePath(QStringLiteral("exports/") +
                                              exportIdentity(volume.databasePath()));
    if (!QDir().mkpath(d->stateFolder))
        throw Error(ErrorNumber::Unspecified, QStringLiteral("Cannot create the viewer's folder %1")
                                                  .arg(QDir::toNativeSeparators(d->stateFolder)));

    if (linkOpensBesideReadOnly(volume)) {
        d->dataLinkPath = volume.dataLinkPath();
        d->queryFormPath = volume.queryFormPath();
    } else {
        // The volume's link would open the database for writing (or elsewhere): read it through
        // a link of our own, and give the search form that link too.
        d->dataLinkPath = QDir(d->stateFolder).filePath(QStringLiteral("veltrane.udl"));
        writeDataLinkFile(d->dataLinkPath,
                          QStringLiteral("Provider=SQLite;Data Source=\"") +
                              QString(volume.databasePath()).replace(u'"', QStringLiteral("\"\"")) +
                              QStringLiteral("\";Mode=Read;Immutable=True"));
        d->queryFormPath = QDir(d->stateFolder).filePath(QStringLiteral("veltrane.xqr"));
        writeQueryFormCopy(volume.queryFormPath(), d->queryFormPath, d->dataLinkPath);
    }

    try {
        d->connection.open(QStringLiteral("File Name=") + d->dataLinkPath);
    } catch (const Error& error) {
        throw Error(error.number(),
                    QStringLiteral("The export's database %1 cannot be read: %2\nCopy the volume "
                                   "again from the export or its CD.")
                        .arg(QDir::toNativeSeparators(volume.databasePath()), error.description()));
    }

    d->findGroup();
    d->recordFormPath = QDir(d->stateFolder).filePath(QStringLiteral("record-form.xml"));
    d->formColumns = writeRecordForm(d->queryFormPath, d->recordFormPath, d->dataLinkPath);
    d->initFilePath = QDir(d->stateFolder).filePath(d->groupName + QStringLiteral(".ini"));
    writePrivateProfileString(d->initFilePath, QStringLiteral("datalinks"), QStringLiteral("Group"),
                              d->dataLinkPath);
}

ViewerSession::~ViewerSession() {
    if (d->previousSettings)
        setSettingsDirectory(*d->previousSettings);
}

const ExportVolume& ViewerSession::volume() const {
    return d->volume;
}

Connection ViewerSession::connection() const {
    return d->connection;
}

QString ViewerSession::groupName() const {
    return d->groupName;
}

qint32 ViewerSession::groupId() const {
    return d->groupId;
}

QString ViewerSession::initFilePath() const {
    return d->initFilePath;
}

QString ViewerSession::dataLinkPath() const {
    return d->dataLinkPath;
}

QString ViewerSession::queryFormPath() const {
    return d->queryFormPath;
}

QString ViewerSession::recordFormPath() const {
    return d->recordFormPath;
}

QList<QPair<QString, QString>> ViewerSession::formColumns() const {
    return d->formColumns;
}

QString ViewerSession::stateFolder() const {
    return d->stateFolder;
}

QString ViewerSession::rememberedVolume(const QString& name) const {
    const QSettings volumes(d->volumesFile(), QSettings::IniFormat);
    return volumes.value(QStringLiteral("Volumes/") + name).toString();
}

void ViewerSession::rememberVolume(const QString& name, const QString& folder) {
    QSettings volumes(d->volumesFile(), QSettings::IniFormat);
    volumes.setValue(QStringLiteral("Volumes/") + name, folder);
}

void ViewerSession::useExportSettings() {
    const QString previous =
        setSettingsDirectory(QDir(d->stateFolder).filePath(QStringLiteral("settings")));
    if (!d->previousSettings)
        d->previousSettings = previous;
}

} // namespace vx::viewer
