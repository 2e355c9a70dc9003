#include "companions/form/QueryTextBuilder.h"

#include "companions/form/SqlText.h"
#include "data/Error.h"
#include "session/Conversions.h"

#include <QDate>
#include <QDateTime>

namespace vx::form {

namespace {

bool isRangeType(FieldType type) {
    return type == FieldType::Numeric || type == FieldType::Date;
}

// The caption of a range's column: the query form labels its ends "<caption> from" and
// "<caption> to", the hit list knows the column by the plain caption.
QString rangeCaption(const QString& fromCaption) {
    static const QString suffix = QStringLiteral(" from");
    if (fromCaption.endsWith(suffix, Qt::CaseInsensitive) && fromCaption.size() > suffix.size())
        return fromCaption.left(fromCaption.size() - suffix.size()).trimmed();
    return fromCaption;
}

QString aliasOf(const QString& caption) {
    QString alias = caption;
    alias.remove(QLatin1Char('[')).remove(QLatin1Char(']'));
    return QLatin1Char('[') + alias + QLatin1Char(']');
}

Error badEntry(const FilledField& field, const QString& what) {
    return Error(ErrorNumber::TypeMismatch,
                 QStringLiteral("The entry \"%1\" in the field \"%2\" is not %3.")
                     .arg(field.value.toString(), field.description.caption, what));
}

std::optional<qint32> numberOf(const FilledField& field) {
    if (!field.value.isValid() || field.value.isNull())
        return std::nullopt;
    if (field.value.toString().trimmed().isEmpty())
        return std::nullopt;
    try {
        return toInt32(field.value);
    } catch (const Error&) {
        throw badEntry(field, QStringLiteral("a whole number"));
    }
}

std::optional<QDate> dateOf(const FilledField& field) {
    const QVariant& value = field.value;
    if (!value.isValid() || value.isNull() || value.toString().trimmed().isEmpty())
        return std::nullopt;
    if (value.typeId() == QMetaType::QDate)
        return value.toDate();
    if (value.typeId() == QMetaType::QDateTime)
        return value.toDateTime().date();
    try {
        const QDate date = textToDate(value.toString()).date();
        if (date.isValid())
            return date;
    } catch (const Error&) {
    }
    throw badEntry(field, QStringLiteral("a date"));
}

// Case-insensitive text match; * and ? are wildcards.
QString textCondition(const QString& column, const QString& text) {
    const QString lowered = text.toLower();
    const QString target = QStringLiteral("LOWER(") + column + QLatin1Char(')');
    const LikePattern like = likePattern(lowered);
    if (!like.hasWildcards)
        return target + QStringLiteral(" = ") + sqlText(lowered);
    return likeCondition(target, like.pattern, like.needsEscape);
}

// A stored list "a;b;c" matches an entry standing alone, first, last or in between.
QString listCondition(const QString& column, const QStringList& entries) {
    const QString target = QStringLiteral("LOWER(") + column + QLatin1Char(')');
    QStringList anyEntry;
    for (const QString& entry : entries) {
        const QString text = entry.trimmed().toLower();
        if (text.isEmpty())
            continue;
        const LikePattern like = likePattern(text);
        const QString p = like.pattern;
        const bool e = like.needsEscape;
        anyEntry << QLatin1Char('(') + likeCondition(target, p, e) + QStringLiteral(" OR ") +
                        likeCondition(target, p + QStringLiteral(";%"), e) +
                        QStringLiteral(" OR ") +
                        likeCondition(target, QStringLiteral("%;") + p, e) +
                        QStringLiteral(" OR ") +
                        likeCondition(target, QStringLiteral("%;") + p + QStringLiteral(";%"), e) +
                        QLatin1Char(')');
    }
    if (anyEntry.isEmpty())
        return {};
    if (anyEntry.size() == 1)
        return anyEntry.first();
    return QLatin1Char('(') + anyEntry.join(QStringLiteral(" OR ")) + QLatin1Char(')');
}

void addRange(QStringList& criteria, const QString& column, FieldType type, const FilledField& from,
              const FilledField* to) {
    if (type == FieldType::Numeric) {
        const auto low = numberOf(from);
        if (!to) {
            if (low)
                criteria << column + QStringLiteral(" = ") + QString::number(*low);
            return;
        }
        const auto high = numberOf(*to);
        if (low)
            criteria << column + QStringLiteral(" >= ") + QString::number(*low);
        if (high)
            criteria << column + QStringLiteral(" <= ") + QString::number(*high);
        return;
    }
    // Dates may carry a time of day: a day's end is the start of the next day.
    const auto low = dateOf(from);
    const auto high = to ? dateOf(*to) : low;
    if (low)
        criteria << column + QStringLiteral(" >= ") + sqlDate(*low);
    if (high)
        criteria << column + QStringLiteral(" < ") + sqlDate(high->addDays(1));
}

} // namespace

QString buildQueryText(const QString& groupTable, const QList<FilledField>& fields) {
    QStringList columns;
    QStringList criteria;
    for (qsizetype i = 0; i < fields.size(); ++i) {
        const FilledField& field = fields.at(i);
        const FieldDescription& description = field.description;
        const QString column = groupTable + QLatin1Char('.') + description.columnName;
        const FilledField* next = i + 1 < fields.size() ? &fields.at(i + 1) : nullptr;

        if (isRangeType(description.type)) {
            const bool range = next && next->description.type == description.type &&
                               next->description.columnName.compare(description.columnName,
                                                                    Qt::CaseInsensitive) == 0;
            columns << column + QStringLiteral(" AS ") +
                           aliasOf(range ? rangeCaption(description.caption) : description.caption);
            addRange(criteria, column, description.type, field, range ? next : nullptr);
            if (range)
                ++i;
            continue;
        }

        columns << column + QStringLiteral(" AS ") + aliasOf(description.caption);
        switch (description.type) {
        case FieldType::Check:
            if (field.value.isValid() && !field.value.isNull())
                criteria << column + (field.value.toBool() ? QStringLiteral(" = -1")
                                                           : QStringLiteral(" = 0"));
            break;
        case FieldType::List: {
            const QString condition = listCondition(column, field.entries);
            if (!condition.isEmpty())
                criteria << condition;
            break;
        }
        default: {
            const QString text =
                field.value.isValid() ? field.value.toString().trimmed() : QString();
            if (!text.isEmpty())
                criteria << textCondition(column, text);
            break;
        }
        }
    }
    if (criteria.isEmpty())
        return {};

    return QStringLiteral(
               "SELECT DISTINCT ktitem.itemid AS itemid, ktitem.idx_date AS IndexDate, ") +
           columns.join(QStringLiteral(", ")) + QStringLiteral(" FROM ktitem, ") + groupTable +
           QStringLiteral(" WHERE ktitem.itemid = ") + groupTable +
           QStringLiteral(".itemid AND ktitem.deleted = 0 AND ") +
           criteria.join(QStringLiteral(" AND ")) + QStringLiteral(" ORDER BY ktitem.itemid");
}

} // namespace vx::form
