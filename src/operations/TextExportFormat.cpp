#include "operations/TextExportFormat.h"

#include "session/Conversions.h"

#include <QDateTime>

namespace vx::textexport {
namespace {

QString cleanedText(QString text) {
    text.remove(QLatin1Char('\r'));
    text.remove(QLatin1Char('\n'));
    text.remove(QLatin1Char('"'));
    return text;
}

QString dateTimeText(const QDateTime& value) {
    QString text = formatDateTime(value, QStringLiteral("Short Date"));
    if (value.time() != QTime(0, 0))
        text += QLatin1Char(' ') + formatDateTime(value, QStringLiteral("hh:nn:ss"));
    return text;
}

} // namespace

QString headerLine(const QStringList& fieldNames) {
    return fieldNames.join(QLatin1Char(','));
}

QString valueText(const QVariant& value) {
    if (value.isNull())
        return QString();
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    case QMetaType::QDateTime:
        return dateTimeText(value.toDateTime());
    case QMetaType::QDate:
        return dateTimeText(value.toDate().startOfDay());
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::number(value.toDouble(), 'g', 15);
    default:
        return cleanedText(value.toString());
    }
}

QString valueLine(const QList<QVariant>& values) {
    QString line;
    for (qsizetype i = 0; i < values.size(); ++i) {
        if (i > 0)
            line += QLatin1Char(',');
        line += QLatin1Char('"') + valueText(values.at(i)) + QLatin1Char('"');
    }
    return line;
}

} // namespace vx::textexport
