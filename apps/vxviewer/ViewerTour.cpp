#include "ViewerTour.h"

#include "HitSearch.h"
#include "ViewerSession.h"
#include "ViewerWindow.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "session/UnattendedUiServices.h"

#include <QApplication>
#include <QDir>
#include <QMouseEvent>
#include <QPixmap>
#include <QTabBar>
#include <cstdio>

namespace vx::viewer {

namespace {

void settle() {
    for (int round = 0; round < 3; ++round)
        QApplication::processEvents();
}

// Clicks a tab of a control's tab strip, as the user would.
void selectTab(QWidget* control, const QString& caption) {
    auto* tabs = control->findChild<QTabBar*>();
    if (!tabs)
        return;
    for (int index = 0; index < tabs->count(); ++index) {
        if (tabs->tabText(index).remove(u'&') != caption)
            continue;
        const QPointF at = tabs->tabRect(index).center();
        const QPointF global = tabs->mapToGlobal(at);
        QMouseEvent press(QEvent::MouseButtonPress, at, global, Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        QMouseEvent release(QEvent::MouseButtonRelease, at, global, Qt::LeftButton, Qt::NoButton,
                            Qt::NoModifier);
        QApplication::sendEvent(tabs, &press);
        QApplication::sendEvent(tabs, &release);
        return;
    }
}

// A value of the first exported document that has a keyword, and that keyword.
std::pair<QString, QString> sampleCriteria(const ViewerSession& session) {
    Recordset rows;
    rows.open(QStringLiteral("select g.Customer, k.keyword from ") + session.groupName() +
                  QStringLiteral(" g, keywords k, KTFile f where k.itemid = g.itemid and "
                                 "f.itemid = g.itemid order by g.itemid, k.keyword"),
              session.connection());
    if (rows.eof())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("the export holds no document with a keyword"));
    return {rows.value(0).toString(), rows.value(1).toString()};
}

} // namespace

ViewerTour::ViewerTour(ViewerWindow& window, UnattendedUiServices& ui, const QString& outputDir)
    : m_window(window)
    , m_ui(ui)
    , m_outputDir(outputDir) {}

void ViewerTour::shoot(const QString& name) {
    settle();
    const QString path = QDir(m_outputDir).filePath(name + QStringLiteral(".png"));
    if (m_window.grab().save(path))
        ++m_saved;
    else
        m_failures << QStringLiteral("screenshot %1 could not be saved").arg(path);
}

void ViewerTour::step(const QString& what, const std::function<void()>& action) {
    std::printf("%s\n", qPrintable(what));
    std::fflush(stdout);
    try {
        action();
    } catch (const Error& error) {
        m_failures << what + QStringLiteral(": ") + error.description();
    }
}

int ViewerTour::run(const QString& exportFolder) {
    QDir().mkpath(m_outputDir);
    m_window.show();
    settle();
    if (!m_window.openExport(exportFolder)) {
        m_failures << QStringLiteral("the export %1 did not open").arg(exportFolder);
        return m_saved;
    }
    shoot(QStringLiteral("01-export-opened"));
    const auto criteriaValues = sampleCriteria(*m_window.session());
    const QString customer = criteriaValues.first;
    const QString keyword = criteriaValues.second;

    step(QStringLiteral("Searching by the customer %1").arg(customer), [&] {
        SearchCriteria criteria;
        criteria.fields.append({QStringLiteral("Customer"), customer});
        if (!m_window.search(criteria))
            throw Error(ErrorNumber::Unspecified, QStringLiteral("the search did not run"));
        shoot(QStringLiteral("02-search-by-field"));
    });
    step(QStringLiteral("Searching by the keyword %1").arg(keyword), [&] {
        SearchCriteria criteria;
        criteria.keywords << keyword;
        if (!m_window.search(criteria))
            throw Error(ErrorNumber::Unspecified, QStringLiteral("the search did not run"));
        selectTab(m_window.queryControl(), QStringLiteral("Keywords"));
        shoot(QStringLiteral("03-search-by-keyword"));
        selectTab(m_window.queryControl(), m_window.session()->groupName());
    });
    step(QStringLiteral("Opening the current document"), [&] {
        if (!m_window.openCurrentDocument())
            throw Error(ErrorNumber::Unspecified, QStringLiteral("no document was opened"));
        shoot(QStringLiteral("04-document-opened"));
    });
    return m_saved;
}

} // namespace vx::viewer
