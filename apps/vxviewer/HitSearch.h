#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

class QWidget;

namespace vx::viewer {

class ViewerSession;

// Search criteria given by column name, and keywords a document must carry (any of them).
struct SearchCriteria {
    QList<QPair<QString, QString>> fields; // column, value
    QStringList keywords;

    bool isEmpty() const { return fields.isEmpty() && keywords.isEmpty(); }
    // "COLUMN=VALUE" and "--keyword WORD" (or "--keyword=WORD"); throws vx::Error on anything
    // else.
    static SearchCriteria fromArguments(const QStringList& arguments);
};

// Searches an export the way the viewer's window does: the query control builds the text from
// its form and keyword picker.
namespace search {

// Clears the query control's form and picker, then types the criteria in: each field of the
// form with that column gets the value (both ends of a range, so a number or a date matches
// exactly); each keyword is picked. Throws vx::Error naming the form's columns when a column is
// not on the form.
void fill(QWidget* queryControl, const SearchCriteria& criteria);

// The query for the control's criteria: its QueryString; when the form holds no criteria but
// keywords are picked, every document of the group that carries one of them.
QString queryText(QWidget* queryControl, const ViewerSession& session);

// The item ids a query returns on the export, sorted, each once.
QList<qint32> itemIds(const ViewerSession& session, const QString& query);

} // namespace search

} // namespace vx::viewer
