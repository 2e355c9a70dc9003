#include "DbfReadBack.h"

#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

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
    for (const QString& candidate :
         {u"/usr/bin/python3"_s, QStandardPaths::findExecutable(u"python3"_s)}) {
        if (candidate.isEmpty())
            continue;
        QProcess probe;
        probe.start(candidate, {u"-c"_s, u"import dbfread"_s});
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
    return interpreter().isEmpty() ? u"python3 with dbfread (python3-dbfread) is not installed"_s
                                   : QString();
}

QJsonObject ReadBack::field(const QString& name) const {
    for (const QJsonValue& value : fields) {
        if (value.toObject().value(u"name"_s).toString() == name)
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
    process.start(interpreter(), {u"-c"_s, QString::fromUtf8(readerScript), path});
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
    result.fields = document.object().value(u"fields"_s).toArray();
    result.records = document.object().value(u"records"_s).toArray();
    result.ok = true;
    return result;
}

QByteArray fileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace vx::test
