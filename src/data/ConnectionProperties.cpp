#include "data/ConnectionProperties.h"

#include "data/Error.h"

#include <QFile>
#include <QSaveFile>
#include <QStringDecoder>
#include <QStringEncoder>

namespace vx {

namespace {

const QString dataLinkHeader = QStringLiteral("[oledb]");
const QString dataLinkComment =
    QStringLiteral("; Everything after this line is an OLE DB initstring");

// One value as written after "key=": quoted values keep their inner blanks, a doubled quote
// stands for one.
QString unquoteValue(const QString& raw, const QString& wholeText) {
    const QString value = raw.trimmed();
    if (value.isEmpty() || (value.front() != u'"' && value.front() != u'\''))
        return value;
    const QChar quote = value.front();
    QString result;
    qsizetype i = 1;
    for (; i < value.size(); ++i) {
        if (value[i] != quote) {
            result += value[i];
            continue;
        }
        if (i + 1 < value.size() && value[i + 1] == quote) {
            result += quote;
            ++i;
            continue;
        }
        break;
    }
    if (i >= value.size())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("The connection text has a value without its closing quote: %1")
                        .arg(wholeText));
    if (!value.mid(i + 1).trimmed().isEmpty())
        throw Error(
            ErrorNumber::InvalidArgument,
            QStringLiteral("The connection text has text after a quoted value: %1").arg(wholeText));
    return result;
}

// Splits at the semicolons that stand outside quoted values.
QStringList splitEntries(const QString& text) {
    QStringList parts;
    QString current;
    QChar quote;
    bool inValue = false; // after the '=' of the current entry
    bool valueStarted = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (!quote.isNull()) {
            current += c;
            if (c == quote) {
                if (i + 1 < text.size() && text[i + 1] == quote) {
                    current += text[++i];
                } else {
                    quote = QChar();
                }
            }
            continue;
        }
        if (c == u';') {
            parts << current;
            current.clear();
            inValue = valueStarted = false;
            continue;
        }
        current += c;
        if (c == u'=' && !inValue) {
            inValue = true;
        } else if (inValue && !valueStarted && !c.isSpace()) {
            valueStarted = true;
            if (c == u'"' || c == u'\'')
                quote = c;
        }
    }
    parts << current;
    return parts;
}

qsizetype indexOfKey(const QList<QPair<QString, QString>>& entries, const QString& key) {
    const QString wanted = key.trimmed();
    for (qsizetype i = 0; i < entries.size(); ++i) {
        if (entries[i].first.compare(wanted, Qt::CaseInsensitive) == 0)
            return i;
    }
    return -1;
}

QString decodeDataLink(const QByteArray& bytes) {
    if (bytes.startsWith("\xFF\xFE")) {
        QStringDecoder decoder(QStringDecoder::Utf16LE);
        return decoder.decode(bytes.mid(2));
    }
    if (bytes.startsWith("\xEF\xBB\xBF"))
        return QString::fromUtf8(bytes.mid(3));
    return QString::fromUtf8(bytes);
}

} // namespace

ConnectionProperties ConnectionProperties::parse(const QString& text) {
    ConnectionProperties properties;
    for (const QString& part : splitEntries(text)) {
        // A lone quote closes an extended-properties value written without its opening one
        // (the export connection text ends so); it carries nothing.
        if (part.trimmed().isEmpty() || part.trimmed() == QLatin1String("\""))
            continue;
        const qsizetype equals = part.indexOf(u'=');
        if (equals < 0)
            throw Error(ErrorNumber::InvalidArgument,
                        QStringLiteral("The connection text has an entry without '=': \"%1\"")
                            .arg(part.trimmed()));
        const QString key = part.left(equals).trimmed();
        if (key.isEmpty())
            throw Error(ErrorNumber::InvalidArgument,
                        QStringLiteral("The connection text has a value without a name: \"%1\"")
                            .arg(part.trimmed()));
        properties.set(key, unquoteValue(part.mid(equals + 1), text));
    }
    return properties;
}

bool ConnectionProperties::contains(const QString& key) const {
    return indexOfKey(m_entries, key) >= 0;
}

QString ConnectionProperties::value(const QString& key, const QString& fallback) const {
    const qsizetype index = indexOfKey(m_entries, key);
    return index < 0 ? fallback : m_entries[index].second;
}

void ConnectionProperties::set(const QString& key, const QString& value) {
    const qsizetype index = indexOfKey(m_entries, key);
    if (index < 0)
        m_entries.append({key.trimmed(), value});
    else
        m_entries[index].second = value;
}

void ConnectionProperties::mergeMissing(const ConnectionProperties& other) {
    for (const auto& [key, value] : other.m_entries) {
        if (!contains(key))
            m_entries.append({key, value});
    }
}

ConnectionProperties readDataLinkFile(const QString& path) {
    if (path.trimmed().isEmpty())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("No data-link file is named (the file name is empty)."));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot read the data-link file '%1': %2")
                        .arg(path, file.errorString()));
    const QString text = decodeDataLink(file.readAll());

    // The header and comment lines are optional; the first other non-empty line is the string.
    QString initString;
    for (const QString& line : text.split(u'\n')) {
        const QString trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith(u';') ||
            trimmed.compare(dataLinkHeader, Qt::CaseInsensitive) == 0)
            continue;
        initString = trimmed;
        break;
    }
    if (initString.isEmpty())
        throw Error(
            ErrorNumber::Unspecified,
            QStringLiteral("The data-link file '%1' holds no connection settings.").arg(path));
    try {
        return ConnectionProperties::parse(initString);
    } catch (const Error& error) {
        throw Error(error.number(), QStringLiteral("The data-link file '%1' cannot be used: %2")
                                        .arg(path, error.description()));
    }
}

void writeDataLinkFile(const QString& path, const QString& initString) {
    const QString text = dataLinkHeader + QStringLiteral("\r\n") + dataLinkComment +
                         QStringLiteral("\r\n") + initString + QStringLiteral("\r\n");
    QStringEncoder encoder(QStringEncoder::Utf16LE);
    QByteArray bytes("\xFF\xFE", 2);
    bytes += encoder.encode(text);

    // A password in the file is for its owner only; other files keep what the umask gives.
    const ConnectionProperties properties = ConnectionProperties::parse(initString);
    const bool holdsPassword = !properties.value(QStringLiteral("Password")).isEmpty() ||
                               !properties.value(QStringLiteral("PWD")).isEmpty();

    // Written aside and renamed, so a failure never leaves half a file behind.
    QSaveFile file(path);
    const bool opened =
        file.open(QIODevice::WriteOnly) &&
        (!holdsPassword || file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner));
    if (!opened || file.write(bytes) != bytes.size() || !file.commit())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot write the data-link file '%1': %2")
                        .arg(path, file.errorString()));
}

} // namespace vx
