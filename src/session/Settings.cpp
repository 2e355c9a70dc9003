#include "session/Settings.h"

#include "data/Error.h"

#include <QDir>
#include <QSettings>
#include <memory>

namespace vx {
namespace {

QString& overriddenDirectory() {
    static QString directory;
    return directory;
}

// QSettings nests on '/' and '\' and treats '%' as its own escape; names from the controls may
// hold any of them, so those three are escaped before QSettings sees a name.
QString encodeName(const QString& name) {
    QString encoded;
    encoded.reserve(name.size());
    for (QChar c : name) {
        if (c == u'%')
            encoded += QStringLiteral("%25");
        else if (c == u'/')
            encoded += QStringLiteral("%2F");
        else if (c == u'\\')
            encoded += QStringLiteral("%5C");
        else
            encoded += c;
    }
    return encoded;
}

QString decodeName(const QString& encoded) {
    QString name;
    name.reserve(encoded.size());
    for (qsizetype i = 0; i < encoded.size(); ++i) {
        const QStringView escape = QStringView(encoded).mid(i, 3);
        if (escape == u"%25")
            name += u'%';
        else if (escape == u"%2F")
            name += u'/';
        else if (escape == u"%5C")
            name += u'\\';
        else {
            name += encoded[i];
            continue;
        }
        i += 2;
    }
    return name;
}

std::unique_ptr<QSettings> openStore() {
    const QString directory = settingsDirectory();
    if (!directory.isEmpty())
        return std::make_unique<QSettings>(directory + QStringLiteral("/VXUILib.ini"),
                                           QSettings::IniFormat);
#ifdef Q_OS_WIN
    return std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                       applicationTitle(), applicationTitle());
#else
    return std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                       applicationTitle(), applicationTitle());
#endif
}

// The stored (encoded) spelling of a section, found without regard to case; empty when absent.
QString findSection(QSettings& store, const QString& section) {
    const QString wanted = encodeName(section);
    for (const QString& group : store.childGroups()) {
        if (group.compare(wanted, Qt::CaseInsensitive) == 0)
            return group;
    }
    return {};
}

// Inside the current group.
QString findKey(QSettings& store, const QString& key) {
    const QString wanted = encodeName(key);
    for (const QString& candidate : store.childKeys()) {
        if (candidate.compare(wanted, Qt::CaseInsensitive) == 0)
            return candidate;
    }
    return {};
}

void requireName(const QString& name) {
    if (name.isEmpty())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("Invalid procedure call or argument"));
}

void flush(QSettings& store) {
    store.sync();
    if (store.status() != QSettings::NoError)
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The settings could not be saved to \"%1\".")
                        .arg(QDir::toNativeSeparators(store.fileName())));
}

} // namespace

QString applicationTitle() {
    return QStringLiteral("VXUILib");
}

QString setSettingsDirectory(const QString& path) {
    QString previous = overriddenDirectory();
    overriddenDirectory() = path;
    return previous;
}

QString settingsDirectory() {
    if (!overriddenDirectory().isEmpty())
        return overriddenDirectory();
    return qEnvironmentVariable("VXUILIB_SETTINGS_DIR");
}

QString getSetting(const QString& section, const QString& key, const QString& defaultValue) {
    if (section.isEmpty() || key.isEmpty())
        return defaultValue;
    auto store = openStore();
    const QString group = findSection(*store, section);
    if (group.isEmpty())
        return defaultValue;
    store->beginGroup(group);
    const QString stored = findKey(*store, key);
    if (stored.isEmpty())
        return defaultValue;
    return store->value(stored).toString();
}

QHash<QString, QString> getSectionSettings(const QString& section) {
    QHash<QString, QString> values;
    if (section.isEmpty())
        return values;
    auto store = openStore();
    const QString group = findSection(*store, section);
    if (group.isEmpty())
        return values;
    store->beginGroup(group);
    for (const QString& key : store->childKeys())
        values.insert(decodeName(key).toLower(), store->value(key).toString());
    return values;
}

void saveSetting(const QString& section, const QString& key, const QString& value) {
    saveSettings(section, {{key, value}});
}

void saveSettings(const QString& section, const QList<QPair<QString, QString>>& values) {
    requireName(section);
    for (const auto& [key, value] : values)
        requireName(key);
    auto store = openStore();
    QString group = findSection(*store, section);
    store->beginGroup(group.isEmpty() ? encodeName(section) : group);
    bool changed = false;
    for (const auto& [key, value] : values) {
        const QString stored = findKey(*store, key);
        // Rewriting the whole store for a value it already holds is the expensive part.
        if (!stored.isEmpty() && store->value(stored).toString() == value)
            continue;
        store->setValue(stored.isEmpty() ? encodeName(key) : stored, value);
        changed = true;
    }
    store->endGroup();
    if (changed)
        flush(*store);
}

void deleteSetting(const QString& section) {
    if (section.isEmpty())
        return;
    auto store = openStore();
    // Every spelling goes, so a section edited by hand cannot come back on the next read.
    const QString wanted = encodeName(section);
    for (const QString& group : store->childGroups()) {
        if (group.compare(wanted, Qt::CaseInsensitive) == 0)
            store->remove(group);
    }
    flush(*store);
}

void deleteSetting(const QString& section, const QString& key) {
    if (section.isEmpty() || key.isEmpty())
        return;
    auto store = openStore();
    const QString wanted = encodeName(key);
    const QString sectionName = encodeName(section);
    for (const QString& group : store->childGroups()) {
        if (group.compare(sectionName, Qt::CaseInsensitive) != 0)
            continue;
        store->beginGroup(group);
        for (const QString& candidate : store->childKeys()) {
            if (candidate.compare(wanted, Qt::CaseInsensitive) == 0)
                store->remove(candidate);
        }
        store->endGroup();
    }
    flush(*store);
}

QStringList settingKeys(const QString& section) {
    QStringList keys;
    if (section.isEmpty())
        return keys;
    auto store = openStore();
    const QString group = findSection(*store, section);
    if (group.isEmpty())
        return keys;
    store->beginGroup(group);
    for (const QString& key : store->childKeys())
        keys.append(decodeName(key));
    return keys;
}

} // namespace vx
