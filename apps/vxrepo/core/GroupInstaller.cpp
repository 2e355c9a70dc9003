#include "core/GroupInstaller.h"

#include "core/RepositorySchema.h"
#include "data/ConnectionProperties.h"
#include "data/Driver.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "session/PrivateProfile.h"
#include "session/Schema.h"
#include "session/SearchIndexes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

namespace vx::repo {
namespace {

// The init file's value is read into a 260-character buffer: a longer path would arrive cut.
constexpr int MaximumProfilePath = 259;

[[noreturn]] void fail(const QString& message) {
    throw Error(ErrorNumber::InvalidArgument, message);
}

void checkFields(const QList<FormField>& fields, const QString& formName, bool ranges) {
    if (fields.isEmpty())
        fail(QStringLiteral("%1 has no control elements.").arg(formName));
    QSet<QString> seen;
    for (qsizetype i = 0; i < fields.size(); ++i) {
        validateField(fields[i], formName);
        const QString key = fields[i].columnName.toLower();
        const bool rangeEnd =
            ranges && i > 0 && fields[i - 1].columnName.toLower() == key &&
            (fields[i].type == FieldType::Numeric || fields[i].type == FieldType::Date);
        if (seen.contains(key) && !rangeEnd)
            fail(QStringLiteral("%1: the column '%2' appears more than once.")
                     .arg(formName, fields[i].columnName));
        seen.insert(key);
    }
}

void checkQueryFields(const QList<FormField>& queryFields, const QList<FormField>& indexFields,
                      const QString& formName) {
    for (const FormField& field : queryFields) {
        const auto match = std::find_if(indexFields.begin(), indexFields.end(), [&](auto& f) {
            return f.columnName.compare(field.columnName, Qt::CaseInsensitive) == 0;
        });
        if (match == indexFields.end())
            fail(QStringLiteral("%1: the column '%2' is not a field of the index form.")
                     .arg(formName, field.columnName));
        if (match->type != field.type)
            fail(QStringLiteral("%1: the column '%2' is a %3 on the index form but a %4 here.")
                     .arg(formName, field.columnName, fieldTypeName(match->type),
                          fieldTypeName(field.type)));
    }
}

// Removes what an unfinished installation wrote.
class Undo {
public:
    ~Undo() {
        if (m_done)
            return;
        for (auto it = m_files.rbegin(); it != m_files.rend(); ++it)
            QFile::remove(*it);
        for (auto it = m_folders.rbegin(); it != m_folders.rend(); ++it)
            QDir().rmdir(*it);
    }
    void file(const QString& path) { m_files.append(path); }
    // Records the folders mkpath is about to create, deepest last.
    void makeFolder(const QString& path) {
        QStringList missing;
        for (QDir dir(path); !dir.exists(); dir.setPath(QFileInfo(dir.path()).path()))
            missing.prepend(dir.path());
        if (!QDir().mkpath(path))
            fail(QStringLiteral("Cannot create the folder %1.").arg(path));
        m_folders += missing;
    }
    void done() { m_done = true; }

private:
    QStringList m_files;
    QStringList m_folders;
    bool m_done = false;
};

} // namespace

InstalledGroup installGroup(Repository& repository, const GroupSetup& setup, FormDocument indexForm,
                            std::optional<FormDocument> queryForm) {
    if (!isPlainName(setup.name))
        fail(QStringLiteral("The group name '%1' must start with a letter and hold only letters, "
                            "digits and '_' (it names the group's table and files).")
                 .arg(setup.name));
    if (setup.library.trimmed().isEmpty())
        fail(QStringLiteral("A group needs the name of its library (--library)."));

    InstalledGroup group;
    group.fields = indexForm.fields();
    checkFields(group.fields, indexForm.name(), false);
    if (!queryForm)
        queryForm = indexForm.queryForm();
    const QList<FormField> queryFields = queryForm->fields();
    checkFields(queryFields, queryForm->name(), true);
    checkQueryFields(queryFields, group.fields, queryForm->name());

    const QString dir = repository.dir();
    group.initFilePath = storedPath(dir + u'/' + setup.name + QStringLiteral(".ini"));
    group.dataLinkPath = storedPath(dir + u'/' + setup.name + QStringLiteral(".udl"));
    group.formPath =
        storedPath(dir + QStringLiteral("/config/") + setup.name + QStringLiteral(".xml"));
    group.queryFormPath =
        storedPath(dir + QStringLiteral("/config/") + setup.name + QStringLiteral(".xqr"));
    group.documentFolder =
        storedPath(setup.documentFolder.isEmpty() ? dir + QStringLiteral("/documents/") + setup.name
                                                  : setup.documentFolder);
    if (group.dataLinkPath.size() > MaximumProfilePath)
        fail(QStringLiteral("The path %1 is longer than %2 characters; the controls could not "
                            "read it from the init file.")
                 .arg(group.dataLinkPath)
                 .arg(MaximumProfilePath));
    if (group.documentFolder.size() > 255)
        fail(QStringLiteral("The document folder %1 is longer than 255 characters.")
                 .arg(group.documentFolder));

    if (repository.hasTable(setup.name) ||
        repository
                .scalar(QStringLiteral("SELECT COUNT(*) AS [rows] FROM [KTGroup] WHERE [Name] "
                                       "= %1")
                            .arg(sqlText(setup.name)))
                .toLongLong() > 0)
        fail(QStringLiteral("The group '%1' already exists in the repository.").arg(setup.name));
    for (const QString& path :
         {group.initFilePath, group.dataLinkPath, group.formPath, group.queryFormPath}) {
        if (QFileInfo::exists(path))
            fail(QStringLiteral("%1 already exists; not overwriting it.").arg(path));
    }
    QStringList statements = groupTableStatements(setup.name, group.fields);
    for (const FormField& field : group.fields) {
        if (!hasHintTable(field))
            continue;
        const QString hints = hintTableName(setup.name, field.columnName);
        if (repository.hasTable(hints))
            fail(QStringLiteral("The hint table %1 already exists.").arg(hints));
        statements.append(hintTableStatement(setup.name, field));
        group.hintTables.append(hints);
    }

    Undo undo;
    indexForm.complete(setup.name);
    indexForm.setGroupDataLink(group.dataLinkPath);
    queryForm->complete(setup.name);
    queryForm->setGroupDataLink(group.dataLinkPath);
    undo.makeFolder(QFileInfo(group.formPath).path());
    undo.makeFolder(group.documentFolder);
    undo.file(group.formPath);
    indexForm.save(group.formPath);
    undo.file(group.queryFormPath);
    queryForm->save(group.queryFormPath);
    // The group's own data-link file names the repository's database.
    undo.file(group.dataLinkPath);
    if (!repository.initString().isEmpty())
        writeDataLinkFile(group.dataLinkPath, repository.initString());
    else if (!QFile::copy(repository.dataLinkPath(), group.dataLinkPath))
        fail(QStringLiteral("Cannot write %1.").arg(group.dataLinkPath));
    undo.file(group.initFilePath);
    writePrivateProfileString(group.initFilePath, QStringLiteral("datalinks"),
                              QStringLiteral("Group"), group.dataLinkPath);

    Connection& connection = repository.connection();
    {
        Transaction transaction(connection);
        for (const QString& statement : statements)
            connection.execute(statement);
        ensureSearchIndexes(connection, {setup.name});
        group.groupId = repository.nextId(table::Group, QStringLiteral("Groupid"));
        connection.driver().insertRow(
            table::Group,
            {QStringLiteral("Groupid"), QStringLiteral("Name"), QStringLiteral("Description"),
             QStringLiteral("Path"), QStringLiteral("Deleted")},
            {group.groupId, setup.name, setup.description, group.documentFolder, 0}, QString());
        // The first listed path, cut after its last separator, is where the portable export
        // finds config/<group>.xqr: keep DIR/documents in front.
        if (repository.count(table::Path) == 0)
            connection.driver().insertRow(table::Path, {QStringLiteral("Path")},
                                          {storedPath(dir + QStringLiteral("/documents"))},
                                          QString());
        if (repository
                .scalar(QStringLiteral("SELECT COUNT(*) AS [rows] FROM [KTPath] WHERE "
                                       "[Path] = %1")
                            .arg(sqlText(group.documentFolder)))
                .toLongLong() == 0)
            connection.driver().insertRow(table::Path, {QStringLiteral("Path")},
                                          {group.documentFolder}, QString());
        transaction.commit();
    }
    undo.done();

    if (!setup.catalogPath.isEmpty()) {
        try {
            QDir().mkpath(QFileInfo(setup.catalogPath).path());
            writePrivateProfileString(setup.catalogPath, setup.library.trimmed(), setup.name,
                                      group.initFilePath);
        } catch (const Error& error) {
            throw Error(error.number(),
                        QStringLiteral("The group '%1' was added, but the library catalog could "
                                       "not list it: %2")
                            .arg(setup.name, error.description()));
        }
    }
    return group;
}

} // namespace vx::repo
