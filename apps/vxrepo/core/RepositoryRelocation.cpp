#include "core/RepositoryRelocation.h"

#include "core/FormDocument.h"
#include "core/Repository.h"
#include "core/RepositorySchema.h"
#include "data/ConnectionProperties.h"
#include "data/Recordset.h"
#include "session/PrivateProfile.h"
#include "session/Schema.h"

#include <QDir>
#include <QFileInfo>

namespace vx::repo {
namespace {

class PathMap {
public:
    PathMap(const QString& from, const QString& to)
        : m_from(storedPath(from))
        , m_to(storedPath(to)) {}

    // The path moved when it lies in the old folder; otherwise unchanged.
    QString map(const QString& path) const {
        if (path == m_from)
            return m_to;
        const QString prefix = m_from + QDir::separator();
        if (path.startsWith(prefix))
            return m_to + QDir::separator() + path.mid(prefix.size());
        return path;
    }

private:
    QString m_from;
    QString m_to;
};

QString quoted(const QString& value) {
    if (!value.contains(u';') && !value.contains(u'"') && !value.contains(u'\''))
        return value;
    QString text = value;
    text.replace(u'"', QStringLiteral("\"\""));
    return u'"' + text + u'"';
}

void relocateDataLink(const QString& path, const PathMap& paths) {
    ConnectionProperties properties = readDataLinkFile(path);
    QStringList parts;
    for (const auto& [key, value] : properties.entries())
        parts.append(key + u'=' +
                     quoted(key.compare(QLatin1String("Data Source"), Qt::CaseInsensitive) == 0
                                ? paths.map(value)
                                : value));
    writeDataLinkFile(path, parts.join(u';'));
}

void relocateRows(Repository& repository, const QString& table, const QString& column,
                  const PathMap& paths) {
    Recordset rows;
    rows.open(QStringLiteral("SELECT [%1] FROM [%2]").arg(column, table), repository.connection());
    QStringList stored;
    for (; !rows.eof(); rows.moveNext())
        stored.append(rows.value(0).toString());
    rows.close();
    for (const QString& path : stored) {
        const QString moved = paths.map(path);
        if (moved != path)
            repository.connection().execute(
                QStringLiteral("UPDATE [%1] SET [%2] = %3 WHERE [%2] = %4")
                    .arg(table, column, sqlText(moved), sqlText(path)));
    }
}

} // namespace

void relocateRepository(const QString& dir, const QString& oldDir, const QString& repositoryName) {
    const PathMap paths(oldDir, dir);
    QDir folder(dir);
    for (const QFileInfo& file : folder.entryInfoList({QStringLiteral("*.udl")}, QDir::Files))
        relocateDataLink(file.filePath(), paths);
    const QString datalinks = QStringLiteral("datalinks");
    const QString group = QStringLiteral("Group");
    for (const QFileInfo& file : folder.entryInfoList({QStringLiteral("*.ini")}, QDir::Files)) {
        const QString link = readPrivateProfileString(file.filePath(), datalinks, group, {});
        if (!link.isEmpty())
            writePrivateProfileString(file.filePath(), datalinks, group, paths.map(link));
    }
    const QDir config(folder.filePath(QStringLiteral("config")));
    for (const QFileInfo& file :
         config.entryInfoList({QStringLiteral("*.xml"), QStringLiteral("*.xqr")}, QDir::Files)) {
        FormDocument form = FormDocument::load(file.filePath());
        form.setGroupDataLink(paths.map(form.groupDataLink()));
        form.save(file.filePath());
    }

    Repository repository = Repository::open(dir, repositoryName);
    Transaction transaction(repository.connection());
    relocateRows(repository, table::Path, QStringLiteral("Path"), paths);
    relocateRows(repository, table::Group, QStringLiteral("Path"), paths);
    transaction.commit();
}

} // namespace vx::repo
