#include "data/sqlite/SqliteParameters.h"

#include "data/sqlite/SqliteSupport.h"

#include <QDateTime>

namespace vx::sqlite {

bool SqliteParameters::isDate(const QVariant& value) {
    const int type = value.typeId();
    return type == QMetaType::QDateTime || type == QMetaType::QDate || type == QMetaType::QTime;
}

namespace {

// "yyyy-MM-dd HH:mm:ss" written digit by digit: dates are bound for every row of a bulk write,
// and a format string is parsed again on every call. Years the pattern cannot hold go the long way.
QByteArray stampText(QDate date, QTime time) {
    int year = 0;
    int month = 0;
    int day = 0;
    date.getDate(&year, &month, &day);
    if (year < 1 || year > 9999)
        return QDateTime(date, time).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")).toLatin1();
    QByteArray text("0000-00-00 00:00:00");
    char* out = text.data();
    auto put = [&out](int value, int digits) {
        for (int at = digits - 1; at >= 0; --at, value /= 10)
            out[at] = char('0' + value % 10);
        out += digits + 1; // and the separator
    };
    put(year, 4);
    put(month, 2);
    put(day, 2);
    put(time.hour(), 2);
    put(time.minute(), 2);
    put(time.second(), 2);
    return text;
}

} // namespace

QByteArray SqliteParameters::dateText(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::QDate: {
        const QDate date = value.toDate();
        return date.isValid() ? stampText(date, QTime(0, 0)) : QByteArray();
    }
    case QMetaType::QTime: { // a time alone lies on the zero day, as the old engine keeps it
        const QTime time = value.toTime();
        return time.isValid() ? stampText(QDate(1899, 12, 30), time) : QByteArray();
    }
    default: {
        const QDateTime moment = value.toDateTime();
        return moment.isValid() ? stampText(moment.date(), moment.time()) : QByteArray();
    }
    }
}

void SqliteParameters::bind(int index, const QVariant& value) {
    int code = SQLITE_OK;
    switch (value.typeId()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        code = sqlite3_bind_null(m_statement, index);
        break;
    case QMetaType::Bool:
        code = sqlite3_bind_int(m_statement, index, value.toBool() ? -1 : 0);
        break;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        code = sqlite3_bind_int64(m_statement, index, value.toLongLong());
        break;
    case QMetaType::Double:
    case QMetaType::Float:
        code = sqlite3_bind_double(m_statement, index, value.toDouble());
        break;
    case QMetaType::QByteArray: {
        m_texts.append(value.toByteArray());
        const QByteArray& bytes = m_texts.back();
        code = sqlite3_bind_blob64(m_statement, index, bytes.constData(),
                                   sqlite3_uint64(bytes.size()), SQLITE_STATIC);
        break;
    }
    default: {
        QByteArray text = isDate(value) ? dateText(value) : value.toString().toUtf8();
        if (text.isEmpty() && isDate(value)) {
            code = sqlite3_bind_null(m_statement, index);
            break;
        }
        m_texts.append(std::move(text));
        const QByteArray& kept = m_texts.back();
        code = sqlite3_bind_text64(m_statement, index, kept.constData(),
                                   sqlite3_uint64(kept.size()), SQLITE_STATIC, SQLITE_UTF8);
    }
    }
    if (code != SQLITE_OK)
        fail(m_db, code);
}

} // namespace vx::sqlite
