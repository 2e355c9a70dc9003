#include "data/recordset/SortText.h"

#include "data/recordset/RecordsetErrors.h"

#include <QStringList>

namespace vx {
namespace {

// Splits on commas outside brackets, so "[a, b] DESC" stays one item.
QStringList splitItems(const QString& text) {
    QStringList items;
    QString current;
    bool inBrackets = false;
    for (const QChar c : text) {
        if (c == QLatin1Char('['))
            inBrackets = true;
        else if (c == QLatin1Char(']'))
            inBrackets = false;
        if (c == QLatin1Char(',') && !inBrackets) {
            items << current;
            current.clear();
        } else {
            current += c;
        }
    }
    items << current;
    return items;
}

bool endsWithWord(const QString& item, QLatin1String word) {
    if (!item.endsWith(word, Qt::CaseInsensitive))
        return false;
    const qsizetype before = item.size() - word.size() - 1;
    return before >= 0 && item.at(before).isSpace();
}

} // namespace

std::vector<SortColumn> parseSortText(const QString& text,
                                      const std::function<int(const QString&)>& columnIndex) {
    std::vector<SortColumn> columns;
    if (text.trimmed().isEmpty())
        return columns;
    for (QString item : splitItems(text)) {
        item = item.trimmed();
        SortColumn column;
        if (endsWithWord(item, QLatin1String("DESC"))) {
            column.descending = true;
            item.chop(4);
        } else if (endsWithWord(item, QLatin1String("ASC"))) {
            item.chop(3);
        }
        item = item.trimmed();
        if (item.size() >= 2 && item.startsWith(QLatin1Char('[')) &&
            item.endsWith(QLatin1Char(']')))
            item = item.mid(1, item.size() - 2);
        column.column = item.isEmpty() ? -1 : columnIndex(item);
        if (column.column < 0)
            throw errors::itemNotFound();
        columns.push_back(column);
    }
    return columns;
}

} // namespace vx
