#include "SearchPane.h"

#include "HitListEvents.h"
#include "data/Error.h"
#include "server/ControlFactory.h"
#include "server/LateBinding.h"
#include "session/UiServices.h"

#include <QAbstractItemView>
#include <QHBoxLayout>
#include <QLabel>
#include <QMetaObject>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QVBoxLayout>

namespace vx::apps {

namespace {

// The search form scrolls its own fields; below this it would clip the keyword picker's buttons
// (the pane around it scrolls instead).
constexpr QSize QueryFormMinimumSize(560, 240);
// The tab bar above the form and the picker, with its frame.
constexpr int TabBarAllowance = 48;

[[noreturn]] void notSupported(const char* method) {
    throw Error(ErrorNumber::NotSupported,
                QStringLiteral("Object doesn't support this property or method: %1")
                    .arg(QString::fromLatin1(method)));
}

} // namespace

bool callWithTexts(QObject* control, const char* method, QString first) {
    bool result = false;
    if (!QMetaObject::invokeMethod(control, method, Qt::DirectConnection,
                                   Q_RETURN_ARG(bool, result), Q_ARG(QString&, first)))
        notSupported(method);
    return result;
}

bool callWithTexts(QObject* control, const char* method, QString first, QString second) {
    bool result = false;
    if (!QMetaObject::invokeMethod(control, method, Qt::DirectConnection,
                                   Q_RETURN_ARG(bool, result), Q_ARG(QString&, first),
                                   Q_ARG(QString&, second)))
        notSupported(method);
    return result;
}

SearchPane::SearchPane(QWidget* parent)
    : QWidget(parent) {
    m_query = ControlFactory::create(QStringLiteral("VXUILib.VXQuery"), this);
    m_query->setObjectName(QStringLiteral("VXQuery1"));
    m_favourites = ControlFactory::create(QStringLiteral("VXUILib.VXFavourites"), this);
    m_favourites->setObjectName(QStringLiteral("VXFavourites1"));
    // Made in the order Tab visits them: the form, the favourites, Clear and Search beneath
    // them, then the results.
    m_clear = new QPushButton(tr("C&lear"), this);
    m_clear->setObjectName(QStringLiteral("clearCriteria"));
    m_search = new QPushButton(tr("&Search"), this);
    m_search->setObjectName(QStringLiteral("search"));
    m_search->setDefault(true);
    m_hitList = ControlFactory::create(QStringLiteral("VXUILib.VXHitList"), this);
    m_hitList->setObjectName(QStringLiteral("VXHitList1"));

    m_side = new QVBoxLayout;
    m_side->addWidget(new QLabel(tr("Favourites"), this));
    m_side->addWidget(m_favourites, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_clear);
    buttons->addWidget(m_search);
    m_side->addLayout(buttons);

    // The form keeps the room its pages need and the pane scrolls below that.
    m_query->setMinimumSize(QueryFormMinimumSize);
    auto* queryArea = new QScrollArea(this);
    queryArea->setObjectName(QStringLiteral("queryArea"));
    queryArea->setWidgetResizable(true);
    queryArea->setFrameShape(QFrame::NoFrame);
    queryArea->setWidget(m_query);

    auto* top = new QWidget(this);
    auto* topLayout = new QHBoxLayout(top);
    topLayout->setContentsMargins(0, 0, 0, 0);
    topLayout->addWidget(queryArea, 3);
    topLayout->addLayout(m_side, 1);

    m_splitter = new QSplitter(Qt::Vertical, this);
    m_splitter->addWidget(top);
    m_splitter->addWidget(m_hitList);
    m_splitter->setStretchFactor(0, 2);
    m_splitter->setStretchFactor(1, 3);
    m_splitter->setSizes({380, 520});
    m_splitter->setChildrenCollapsible(false);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_splitter);

    m_queryText = [this] { return readMember(m_query, "QueryString").toString(); };
    m_events = new HitListEvents(this);
    m_unconnected = m_events->connectTo(m_hitList);
    connect(m_events, &HitListEvents::queryToSave, this, &SearchPane::addFavourite);
    connect(m_search, &QPushButton::clicked, this, [this] { search(); });
    connect(m_clear, &QPushButton::clicked, this, &SearchPane::clearCriteria);
    // A favourite chosen runs at once.
    connect(m_favourites, SIGNAL(SelectedItem(QString&, QString&)), this,
            SLOT(runFavourite(QString&, QString&)));
    connect(m_query, SIGNAL(PerformQuery()), this, SLOT(performQuery()));
    connect(m_query, SIGNAL(KeyDown(short&, short&)), this, SLOT(queryKeyDown(short&, short&)));
    // A large result comes in after its first screen: the count grows with it.
    if (const auto* grid = m_hitList->findChild<QAbstractItemView*>(QStringLiteral("HitList")))
        connect(grid->model(), &QAbstractItemModel::rowsInserted, this, &SearchPane::reportFound);
}

void SearchPane::setQueryTextSource(std::function<QString()> source) {
    m_queryText = std::move(source);
}

void SearchPane::addSideWidget(QWidget* widget) {
    m_side->addWidget(widget);
}

void SearchPane::setSearchEnabled(bool enabled) {
    m_search->setEnabled(enabled);
}

void SearchPane::fitQueryForm() {
    if (const auto* picker = m_query->findChild<QWidget*>(QStringLiteral("kss1")))
        m_query->setMinimumHeight(qMax(QueryFormMinimumSize.height(),
                                       picker->minimumSizeHint().height() + TabBarAllowance));
}

void SearchPane::doneControls() {
    for (QWidget* control : {m_favourites, m_hitList}) {
        try {
            callMember(control, "Done");
        } catch (const Error&) { // a control that never opened has nothing to save
        }
    }
}

bool SearchPane::search() {
    QString queryText;
    try {
        queryText = m_queryText();
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly | MessageStyle::Critical,
                        tr("Search"));
        return false;
    }
    if (queryText.trimmed().isEmpty()) {
        emit statusMessage(tr("Fill in at least one search field or pick a keyword."));
        return false;
    }
    runQuery(queryText);
    return true;
}

void SearchPane::runQuery(const QString& queryText) {
    m_reportFound = true;
    query(queryText);
    reportFound();
}

void SearchPane::query(const QString& queryText) {
    m_lastQuery = queryText;
    try {
        writeMember(m_hitList, "DoQuery", queryText);
    } catch (const Error& error) {
        m_reportFound = false;
        emit statusMessage(error.description());
    }
}

void SearchPane::rerunQuery() {
    // After a command: its own outcome stays in the status bar.
    m_reportFound = false;
    if (!m_lastQuery.isEmpty())
        query(m_lastQuery);
}

void SearchPane::reportFound() {
    const auto* grid = m_hitList->findChild<QAbstractItemView*>(QStringLiteral("HitList"));
    if (!m_reportFound || !grid || !grid->model())
        return;
    // An empty result leaves the earlier rows on screen but no current document.
    int found = grid->model()->rowCount();
    try {
        if (readMember(m_hitList, "CurrentItemID").toInt() == 0)
            found = 0;
    } catch (const Error&) {
    }
    emit statusMessage(found == 0   ? tr("No documents found.")
                       : found == 1 ? tr("1 document found.")
                                    : tr("%1 documents found.").arg(found));
}

void SearchPane::clearCriteria() {
    try {
        callMember(m_query, "Refresh");
    } catch (const Error& error) {
        emit statusMessage(error.description());
    }
}

void SearchPane::addFavourite(const QString& name, const QString& queryString) {
    try {
        if (callWithTexts(m_favourites, "AddItem", name, queryString))
            emit statusMessage(tr("Saved \"%1\" to the favourites.").arg(name));
        else
            ui().messageBox(tr("A favourite named \"%1\" exists already.").arg(name),
                            MessageStyle::OkOnly | MessageStyle::Exclamation, tr("Favourites"));
    } catch (const Error& error) {
        emit statusMessage(error.description());
    }
}

void SearchPane::runFavourite(QString& name, QString& queryString) {
    emit statusMessage(tr("Running the favourite \"%1\".").arg(name));
    runQuery(queryString);
}

void SearchPane::performQuery() {
    search();
}

void SearchPane::queryKeyDown(short& keyCode, short& shift) {
    constexpr short EnterKey = 13;
    if (keyCode != EnterKey || shift != 0)
        return;
    keyCode = 0; // taken: the field does not see it
    search();
}

} // namespace vx::apps
