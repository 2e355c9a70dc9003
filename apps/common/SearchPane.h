#pragma once

#include <QStringList>
#include <QWidget>
#include <functional>

class QPushButton;
class QSplitter;
class QVBoxLayout;

namespace vx::apps {

class HitListEvents;

// A host's search window: the VXQuery form with the user's favourites beside it and the
// VXHitList below. "Search" (or Enter in the form) hands the query text to the hit list; a
// favourite runs its saved query; a query the hit list saves becomes a favourite.
class SearchPane : public QWidget {
    Q_OBJECT

public:
    explicit SearchPane(QWidget* parent = nullptr);

    // Where Search takes the query text from; by default the form's QueryString. The source
    // throws vx::Error to refuse.
    void setQueryTextSource(std::function<QString()> source);
    // Places a widget below the Search and Clear buttons.
    void addSideWidget(QWidget* widget);
    void setSearchEnabled(bool enabled);
    // After the query control's Init: the form keeps the room its keyword picker needs.
    void fitQueryForm();
    // Done on the favourites (they save) and the hit list (it closes its connection).
    void doneControls();

    // Runs the filled form; false when it holds no criteria (nothing is run then).
    bool search();
    // Hands a complete query to the hit list.
    void runQuery(const QString& queryText);
    // Runs the last query again, after an operation changed what it shows.
    void rerunQuery();
    // Empties the form and the picked keywords.
    void clearCriteria();

    // The controls, reached by their member names only.
    QWidget* queryControl() const { return m_query; }
    QWidget* favouritesControl() const { return m_favourites; }
    QWidget* hitListControl() const { return m_hitList; }
    QSplitter* splitter() const { return m_splitter; }
    // The hit list's events, for the window to answer.
    HitListEvents* hitListEvents() const { return m_events; }
    // Events of the hit list that are not connected (empty when all are).
    QStringList unconnectedEvents() const { return m_unconnected; }

signals:
    void statusMessage(const QString& text);

private slots:
    // Connected by name to VXFavourites' SelectedItem and VXQuery's PerformQuery.
    void runFavourite(QString& name, QString& queryString);
    void performQuery();
    // Connected by name to VXQuery's KeyDown: Enter in the form searches.
    void queryKeyDown(short& keyCode, short& shift);

private:
    void addFavourite(const QString& name, const QString& queryString);
    void query(const QString& queryText);
    // "N documents found." while the result of the user's search comes in.
    void reportFound();

    QWidget* m_query = nullptr;
    QWidget* m_favourites = nullptr;
    QWidget* m_hitList = nullptr;
    HitListEvents* m_events = nullptr;
    QPushButton* m_search = nullptr;
    QPushButton* m_clear = nullptr;
    QVBoxLayout* m_side = nullptr;
    QSplitter* m_splitter = nullptr;
    std::function<QString()> m_queryText;
    QStringList m_unconnected;
    QString m_lastQuery;
    bool m_reportFound = false; // a search the user started is loading
};

// Calls a method whose arguments are one or two strings by reference, as VXFavourites and
// VXQuery take them; throws vx::Error when the control has no such method.
bool callWithTexts(QObject* control, const char* method, QString first);
bool callWithTexts(QObject* control, const char* method, QString first, QString second);

} // namespace vx::apps
