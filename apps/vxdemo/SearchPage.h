#pragma once

#include "GroupSession.h"

#include <QWidget>

class QPushButton;
class QSplitter;

namespace vx::demo {

class HitListEvents;

// The host's search window: the VXQuery form with the user's favourites beside it and the
// VXHitList below. "Search" hands the query text to the hit list; a favourite runs its saved
// query; a query the hit list saves becomes a favourite.
class SearchPage : public QWidget {
    Q_OBJECT

public:
    explicit SearchPage(QWidget* parent = nullptr);
    ~SearchPage() override;

    void openSession(const GroupSession& session);
    void closeSession();

    // Runs the filled form; false when it holds no criteria (nothing is run then).
    bool search();
    // Hands a complete query to the hit list.
    void runQuery(const QString& queryText);
    // Runs the last query again, after an operation changed what it shows.
    void rerunQuery();
    // Empties the form and the picked keywords.
    void clearCriteria();
    // Applies a query hand-over file another program left, if any (the search then runs).
    void applyHandOver();

    // The controls, reached by their member names only.
    QWidget* queryControl() const { return m_query; }
    QWidget* favouritesControl() const { return m_favourites; }
    QWidget* hitListControl() const { return m_hitList; }
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

    QWidget* m_query = nullptr;
    QWidget* m_favourites = nullptr;
    QWidget* m_hitList = nullptr;
    HitListEvents* m_events = nullptr;
    QPushButton* m_search = nullptr;
    QPushButton* m_clear = nullptr;
    QSplitter* m_splitter = nullptr;
    QStringList m_unconnected;
    QString m_groupName;
    QString m_lastQuery;
    bool m_sessionOpen = false;
};

} // namespace vx::demo
