#include "DbfReadBack.h"

#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QStandardPaths>

namespace vx::test {

namespace {

const char* readerScript = R"(
import sys, json, datetime
import dbfread
table = dbfread.DBF(sys.argv[1], load=True, char_decode_errors='strict')
def plain(value):
    if isinstance(value, (datetime.date, datetime.datetime)):
        return value.isoformat()
    if isinstance(value, bytes):
        return value.decode('cp1252')
    return value
print(json.dumps({
    'fields': [{'name': f.name, 'type': f.type, 'length': f.length,
                'decimals': f.decimal_count} for f in table.fields],
    'records': [{k: plain(v) for k, v in r.items()} for r in table.records]}))
)";

// The system's interpreter first: the reader is a distribution package.
QString interpreterWithReader() {
    QStringList candidates{QStringLiteral("/usr/bin/python3")};
    const QString onPath = QStandardPaths::findExecutable(QStringLiteral("python3"));
    if (!onPath.isEmpty())
        candidates << onPath;
    for (const QString& candidate : candidates) {
        QProcess probe;
        probe.start(candidate, {QStringLiteral("-c"), QStringLiteral("import dbfread")});
        if (probe.waitForFinished(30000) && probe.exitStatus() == QProcess::NormalExit &&
            probe.exitCode() == 0)
            return candidate;
    }
    return {};
}

const QString& interpreter() {
    static const QString found = interpreterWithReader();
    return found;
}

} // namespace

QString dbfreadUnavailable() {
    return interpreter().isEmpty()
               ? QStringLiteral("python3 with dbfread (python3-dbfread) is not installed")
               : QString();
}

QJsonObject ReadBack::field(const QString& name) const {
    for (const QJsonValue& value : fields) {
        if (value.toObject().value(QStringLiteral("name")).toString() == name)
            return value.toObject();
    }
    return {};
}

ReadBack readWithDbfread(const QString& path) {
    ReadBack result;
    result.skipReason = dbfreadUnavailable();
    if (!result.skipReason.isEmpty())
        return result;
    QProcess process;
    process.start(interpreter(), {QStringLiteral("-c"), QString::fromUtf8(readerScript), path});
    if (!process.waitForFinished(60000) || process.exitCode() != 0) {
        result.error = QString::fromUtf8(process.readAllStandardError());
        return result;
    }
    QJsonParseError parseError;
    const QJsonDocument document =
        QJsonDocument::fromJson(process.readAllStandardOutput(), &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        result.error = parseError.errorString();
        return result;
    }
    result.fields = document.object().value(QStringLiteral("fields")).toArray();
    result.records = document.object().value(QStringLiteral("records")).toArray();
    result.ok = true;
    return result;
}

QByteArray fileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace vx::test
