#include "session/PrivateProfile.h"

#include "data/Error.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringDecoder>
#include <QStringEncoder>
#include <optional>

namespace vx {
namespace {

enum class Encoding { Utf8, Utf8WithBom, Utf16LE, Latin1 };

// One line of an INI file, kept whole so a rewrite changes only the line it means to.
struct Line {
    enum class Kind { Other, Section, Entry };
    Kind kind = Kind::Other;
    QString text;
    QString name;  // section name or key
    QString value; // entries only
};

struct IniText {
    QList<Line> lines;
    Encoding encoding = Encoding::Utf8;
};

QString decode(const QByteArray& bytes, Encoding& encoding) {
    if (bytes.startsWith("\xFF\xFE")) {
        encoding = Encoding::Utf16LE;
        QStringDecoder decoder(QStringDecoder::Utf16LE);
        return decoder.decode(bytes.mid(2));
    }
    if (bytes.startsWith("\xEF\xBB\xBF")) {
        encoding = Encoding::Utf8WithBom;
        return QString::fromUtf8(bytes.mid(3));
    }
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8.decode(bytes);
    if (!utf8.hasError()) {
        encoding = Encoding::Utf8;
        return text;
    }
    // Not UTF-8: an old single-byte file, read as Latin-1 rather than losing characters.
    encoding = Encoding::Latin1;
    return QString::fromLatin1(bytes);
}

Line parseLine(const QString& raw) {
    Line line;
    line.text = raw;
    const QString trimmed = raw.trimmed();
    if (trimmed.isEmpty() || trimmed.startsWith(u';'))
        return line;
    if (trimmed.startsWith(u'[')) {
        const qsizetype close = trimmed.lastIndexOf(u']');
        line.kind = Line::Kind::Section;
        line.name = (close > 0 ? trimmed.mid(1, close - 1) : trimmed.mid(1)).trimmed();
        return line;
    }
    line.kind = Line::Kind::Entry;
    const qsizetype equals = trimmed.indexOf(u'=');
    if (equals < 0) {
        line.name = trimmed;
        return line;
    }
    line.name = trimmed.left(equals).trimmed();
    line.value = trimmed.mid(equals + 1).trimmed();
    return line;
}

std::optional<IniText> load(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    IniText ini;
    const QString text = decode(file.readAll(), ini.encoding);
    qsizetype start = 0;
    while (start < text.size()) {
        qsizetype end = start;
        while (end < text.size() && text[end] != u'\r' && text[end] != u'\n')
            ++end;
        ini.lines.append(parseLine(text.mid(start, end - start)));
        if (end < text.size() && text[end] == u'\r' && end + 1 < text.size() &&
            text[end + 1] == u'\n')
            ++end;
        start = end + 1;
    }
    return ini;
}

bool sameName(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

// Index of the first header of the section, or -1.
qsizetype findSection(const IniText& ini, const QString& section) {
    for (qsizetype i = 0; i < ini.lines.size(); ++i) {
        if (ini.lines[i].kind == Line::Kind::Section && sameName(ini.lines[i].name, section))
            return i;
    }
    return -1;
}

// The entry lines of the section that starts at header, in order.
QList<qsizetype> sectionEntries(const IniText& ini, qsizetype header) {
    QList<qsizetype> entries;
    for (qsizetype i = header + 1; i < ini.lines.size(); ++i) {
        if (ini.lines[i].kind == Line::Kind::Section)
            break;
        if (ini.lines[i].kind == Line::Kind::Entry)
            entries.append(i);
    }
    return entries;
}

QString stripQuotes(const QString& value) {
    if (value.size() >= 2) {
        const QChar first = value.front();
        if ((first == u'"' || first == u'\'') && value.back() == first)
            return value.mid(1, value.size() - 2);
    }
    return value;
}

QByteArray encode(const QString& text, Encoding encoding) {
    switch (encoding) {
    case Encoding::Utf16LE: {
        QStringEncoder encoder(QStringEncoder::Utf16LE);
        return QByteArray("\xFF\xFE") + QByteArray(encoder.encode(text));
    }
    case Encoding::Utf8WithBom:
        return QByteArray("\xEF\xBB\xBF") + text.toUtf8();
    case Encoding::Latin1: {
        // Stay single-byte while every character fits, so the other lines keep their bytes.
        for (QChar c : text) {
            if (c.unicode() > 0xFF)
                return text.toUtf8();
        }
        return text.toLatin1();
    }
    case Encoding::Utf8:
        break;
    }
    return text.toUtf8();
}

void requireWritable(bool condition, const QString& what) {
    if (!condition)
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("Cannot write %1 to an INI file.").arg(what));
}

} // namespace

QString readPrivateProfileString(const QString& file, const QString& section, const QString& key,
                                 const QString& defaultValue, int bufferSize) {
    if (bufferSize <= 0)
        return {};
    // The platform drops trailing blanks of the default too.
    QString result = defaultValue;
    while (!result.isEmpty() && result.back().isSpace())
        result.chop(1);
    if (const auto ini = load(file)) {
        const qsizetype header = findSection(*ini, section);
        if (header >= 0) {
            for (qsizetype i : sectionEntries(*ini, header)) {
                if (sameName(ini->lines[i].name, key)) {
                    result = stripQuotes(ini->lines[i].value);
                    break;
                }
            }
        }
    }
    return result.left(bufferSize - 1);
}

QStringList privateProfileKeys(const QString& file, const QString& section) {
    QStringList keys;
    const auto ini = load(file);
    if (!ini)
        return keys;
    const qsizetype header = findSection(*ini, section);
    if (header < 0)
        return keys;
    for (qsizetype i : sectionEntries(*ini, header))
        keys.append(ini->lines[i].name);
    return keys;
}

void writePrivateProfileString(const QString& file, const QString& section, const QString& key,
                               const QString& value) {
    const auto hasLineBreak = [](const QString& text) {
        return text.contains(u'\r') || text.contains(u'\n');
    };
    requireWritable(!section.trimmed().isEmpty() && !hasLineBreak(section) &&
                        !section.contains(u']'),
                    QStringLiteral("the section name \"%1\"").arg(section));
    requireWritable(!key.trimmed().isEmpty() && !hasLineBreak(key) && !key.contains(u'=') &&
                        !key.trimmed().startsWith(u'[') && !key.trimmed().startsWith(u';'),
                    QStringLiteral("the key \"%1\"").arg(key));
    requireWritable(!hasLineBreak(value), QStringLiteral("a value with a line break"));

    IniText ini;
    if (QFileInfo::exists(file)) {
        auto loaded = load(file);
        if (!loaded)
            throw Error(ErrorNumber::Unspecified,
                        QStringLiteral("Cannot read \"%1\".").arg(QDir::toNativeSeparators(file)));
        ini = std::move(*loaded);
    }

    qsizetype header = findSection(ini, section);
    if (header < 0) {
        if (!ini.lines.isEmpty() && !ini.lines.back().text.trimmed().isEmpty())
            ini.lines.append(parseLine(QString()));
        ini.lines.append(parseLine(u'[' + section.trimmed() + u']'));
        header = ini.lines.size() - 1;
    }
    const QList<qsizetype> entries = sectionEntries(ini, header);
    qsizetype target = -1;
    for (qsizetype i : entries) {
        if (sameName(ini.lines[i].name, key)) {
            target = i;
            break;
        }
    }
    if (target >= 0) {
        ini.lines[target] = parseLine(ini.lines[target].name + u'=' + value);
    } else {
        const qsizetype after = entries.isEmpty() ? header : entries.back();
        ini.lines.insert(after + 1, parseLine(key.trimmed() + u'=' + value));
    }

    QString text;
    for (const Line& line : ini.lines)
        text += line.text + QStringLiteral("\r\n");

    const QFileInfo info(file);
    QDir().mkpath(info.absolutePath());
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly) || out.write(encode(text, ini.encoding)) < 0 ||
        !out.commit())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("Cannot write \"%1\": %2")
                        .arg(QDir::toNativeSeparators(file), out.errorString()));
}

} // namespace vx
