#include "Tour.h"

#include "DemoWindow.h"
#include "DocumentCommands.h"
#include "IndexPage.h"
#include "SearchPage.h"
#include "data/Error.h"
#include "server/LateBinding.h"
#include "session/UnattendedUiServices.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QListWidget>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <cstdio>

namespace vx::demo {

namespace {

void settle() {
    for (int round = 0; round < 3; ++round)
        QApplication::processEvents();
}

QWidget* requireChild(const QWidget* parent, const QString& name) {
    auto* child = parent->findChild<QWidget*>(name);
    if (!child)
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("%1 has no child named %2").arg(parent->objectName(), name));
    return child;
}

// Types values into a form control's fields by column name, through its public members.
void fillForm(QObject* form, const QList<std::pair<QString, QVariant>>& values) {
    callMember(form, "MoveFirstField");
    int filled = 0;
    while (!readMember(form, "FieldEOF").toBool()) {
        const QString column = readMember(form, "FieldName").toString();
        for (const auto& [name, value] : values) {
            if (column.compare(name, Qt::CaseInsensitive) == 0) {
                writeMember(form, "FieldValue", value);
                ++filled;
            }
        }
        callMember(form, "MoveNextField");
    }
    if (filled == 0)
        throw Error(ErrorNumber::Unspecified, QStringLiteral("no field of the form was filled"));
}

void selectTab(QWidget* control, const QString& caption) {
    auto* tabs = control->findChild<QTabBar*>(QStringLiteral("TabStrip1"));
    if (!tabs)
        throw Error(ErrorNumber::Unspecified, QStringLiteral("no TabStrip1"));
    for (int index = 0; index < tabs->count(); ++index) {
        if (tabs->tabText(index).remove(u'&') == caption) {
            tabs->setCurrentIndex(index);
            return;
        }
    }
    throw Error(ErrorNumber::Unspecified, QStringLiteral("no tab %1").arg(caption));
}

} // namespace

Tour::Tour(DemoWindow& window, UnattendedUiServices& ui, const QString& outputDir,
           const QString& workDir)
    : m_window(window)
    , m_ui(ui)
    , m_outputDir(outputDir)
    , m_workDir(workDir) {}

int Tour::run() {
    QDir().mkpath(m_outputDir);
    // The pictures show the window at one size, whatever the screen (offscreen: 800 x 600).
    m_window.resize(1280, 960);
    m_window.show();
    settle();
    indexDocument();
    searchAndSort();
    editRecord();
    exportResults();
    showVersions();
    useFavourite();
    return int(m_screenshots.size());
}

void Tour::step(const QString& name, const std::function<void()>& action) {
    std::printf("%02d %s\n", int(m_screenshots.size()) + 1, qPrintable(name));
    std::fflush(stdout);
    try {
        action();
    } catch (const std::exception& error) {
        const QString reason = QString::fromUtf8(error.what());
        m_failures << QStringLiteral("%1: %2").arg(name, reason);
        std::printf("  step failed: %s\n", qPrintable(reason));
    }
    settle();
    const QString file = QDir(m_outputDir)
                             .filePath(QStringLiteral("%1-%2.png")
                                           .arg(m_screenshots.size() + 1, 2, 10, QChar(u'0'))
                                           .arg(name));
    if (m_window.grab().save(file))
        m_screenshots << file;
    else
        m_failures << QStringLiteral("%1: cannot write %2").arg(name, file);
}

void Tour::indexDocument() {
    QWidget* index = m_window.indexPage()->indexControl();
    step(QStringLiteral("index-form"), [&] {
        m_window.pages()->setCurrentWidget(m_window.indexPage());
        m_window.indexPage()->setDocumentPath(writeTourDocument());
    });
    step(QStringLiteral("index-fields"), [&] {
        fillForm(requireChild(index, QStringLiteral("Group")),
                 {{QStringLiteral("InvoiceNo"), QStringLiteral("INV-0009001")},
                  {QStringLiteral("Customer"), QStringLiteral("Acme Tools")},
                  {QStringLiteral("Status"), QStringLiteral("Open")},
                  {QStringLiteral("Amount"), 1250},
                  {QStringLiteral("InvoiceDate"), QDate(2026, 1, 15)},
                  {QStringLiteral("Notes"), QStringLiteral("Filed during the demo tour.")}});
    });
    step(QStringLiteral("index-keywords"), [&] {
        selectTab(index, QStringLiteral("Keywords"));
        QWidget* keywords = requireChild(index, QStringLiteral("kss2"));
        callMember(keywords, "AddListItem", QStringLiteral("approved"));
        callMember(keywords, "AddListItem", QStringLiteral("contract"));
    });
    step(QStringLiteral("index-filed"), [&] {
        if (m_window.indexPage()->fileDocument() == 0)
            throw Error(ErrorNumber::Unspecified, QStringLiteral("the document was not filed"));
    });
}

void Tour::searchAndSort() {
    SearchPage* search = m_window.searchPage();
    step(QStringLiteral("search-form"), [&] {
        m_window.pages()->setCurrentWidget(search);
        fillForm(requireChild(search->queryControl(), QStringLiteral("Group")),
                 {{QStringLiteral("Customer"), QStringLiteral("Acme Tools")}});
    });
    step(QStringLiteral("search-results"), [&] {
        if (!search->search())
            throw Error(ErrorNumber::Unspecified, QStringLiteral("the form built no query"));
    });
    step(QStringLiteral("sorted-by-amount"), [&] {
        auto* grid = requireChild(hitList(), QStringLiteral("HitList"));
        auto* view = qobject_cast<QTableView*>(grid);
        if (!view || !view->model())
            throw Error(ErrorNumber::Unspecified, QStringLiteral("the result grid has no rows"));
        int amount = -1;
        for (int column = 0; column < view->model()->columnCount(); ++column) {
            if (view->model()->headerData(column, Qt::Horizontal).toString() == u"Amount")
                amount = column;
        }
        if (amount < 0)
            throw Error(ErrorNumber::Unspecified, QStringLiteral("no Amount column"));
        // A header click offers the sort menu; the user picks "Sort Descending".
        emit view->horizontalHeader()->sectionClicked(amount);
        auto* menu = hitList()->findChild<QMenu*>(QStringLiteral("mnuOption"));
        if (!menu || menu->actions().size() < 2)
            throw Error(ErrorNumber::Unspecified, QStringLiteral("no sort menu"));
        menu->hide();
        menu->actions().at(1)->trigger();
    });
    step(QStringLiteral("favourite-saved"), [&] {
        m_ui.queueInput(QStringLiteral("Acme Tools invoices"));
        pressToolbarButton(QStringLiteral("SaveQuery"));
    });
}

void Tour::editRecord() {
    step(QStringLiteral("record-form"), [&] { pressToolbarButton(QStringLiteral("Edit")); });
    step(QStringLiteral("record-saved"), [&] {
        fillForm(requireChild(hitList(), QStringLiteral("Group")),
                 {{QStringLiteral("Status"), QStringLiteral("Paid")},
                  {QStringLiteral("Notes"), QStringLiteral("Paid in full; checked in the tour.")}});
        pressToolbarButton(QStringLiteral("Save"));
        // Back to the results.
        if (toolbarButton(QStringLiteral("Edit"))->isChecked())
            pressToolbarButton(QStringLiteral("Edit"));
    });
}

void Tour::exportResults() {
    // A new run writes afresh: the export refuses a table name that exists.
    QDir(outputsDir()).removeRecursively();
    QDir().mkpath(outputsDir());
    step(QStringLiteral("table-exported"), [&] {
        auto* grid = qobject_cast<QTableView*>(requireChild(hitList(), QStringLiteral("HitList")));
        if (!grid)
            throw Error(ErrorNumber::Unspecified, QStringLiteral("no result grid"));
        grid->selectAll();
        m_ui.queueFolder(outputsDir());
        m_ui.queueInput(QStringLiteral("TourInvoices"));
        triggerHostAction(QStringLiteral("exportTable"));
        if (!QFileInfo::exists(QDir(outputsDir()).filePath(QStringLiteral("TourInvoices.dbf"))))
            throw Error(ErrorNumber::Unspecified, QStringLiteral("no table was written"));
    });
    step(QStringLiteral("text-exported"), [&] {
        m_ui.queueFolder(outputsDir());
        m_ui.queueInput(QStringLiteral("tour-invoices.csv"));
        triggerHostAction(QStringLiteral("saveAsText"));
        if (!QFileInfo::exists(QDir(outputsDir()).filePath(QStringLiteral("tour-invoices.csv"))))
            throw Error(ErrorNumber::Unspecified, QStringLiteral("no text file was written"));
    });
    step(QStringLiteral("portable-exported"), [&] {
        const QString destination = QDir(outputsDir()).filePath(QStringLiteral("portable"));
        QDir().mkpath(destination);
        // The user picks the export to a folder in the media dialog and confirms it.
        m_ui.onProcessEvents([] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                if (widget->objectName() != u"pic_MediaType" || !widget->isVisible())
                    continue;
                auto* media = widget->findChild<QComboBox*>(QStringLiteral("cmb_MediaType"));
                auto* ok = widget->findChild<QPushButton*>(QStringLiteral("btn_Ok"));
                if (!media || !ok)
                    continue;
                media->setCurrentIndex(
                    media->findText(QStringLiteral("FULL-EXPORT"), Qt::MatchStartsWith));
                ok->click();
            }
        });
        m_ui.queueFolder(destination);
        triggerHostAction(QStringLiteral("portableExport"));
        m_ui.onProcessEvents({});
        if (QDir(destination).entryList(QDir::Dirs | QDir::NoDotAndDotDot).isEmpty())
            throw Error(ErrorNumber::Unspecified, QStringLiteral("no export folder was made"));
    });
}

void Tour::showVersions() {
    SearchPage* search = m_window.searchPage();
    step(QStringLiteral("versions"), [&] {
        search->clearCriteria();
        fillForm(requireChild(search->queryControl(), QStringLiteral("Group")),
                 {{QStringLiteral("InvoiceNo"), QStringLiteral("INV-0000013")}});
        if (!search->search())
            throw Error(ErrorNumber::Unspecified, QStringLiteral("the form built no query"));
        settle();
        pressToolbarButton(QStringLiteral("Archive"));
        // Choosing a version names its file in the status bar; Enter would open it.
        auto* grid = requireChild(hitList(), QStringLiteral("HitList"));
        grid->setFocus();
        QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
        QApplication::sendEvent(grid, &down);
    });
}

void Tour::useFavourite() {
    step(QStringLiteral("favourite-run"), [&] {
        if (toolbarButton(QStringLiteral("Archive"))->isChecked())
            pressToolbarButton(QStringLiteral("Archive"));
        auto* list = m_window.searchPage()->favouritesControl()->findChild<QListWidget*>(
            QStringLiteral("ButtonBar"));
        if (!list || list->count() == 0)
            throw Error(ErrorNumber::Unspecified, QStringLiteral("no favourite to choose"));
        list->setCurrentRow(list->count() - 1);
        // A double click on the favourite runs it.
        const QRect item = list->visualItemRect(list->currentItem());
        QMouseEvent click(QEvent::MouseButtonDblClick, item.center(),
                          list->viewport()->mapToGlobal(item.center()), Qt::LeftButton,
                          Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(list->viewport(), &click);
    });
}

void Tour::triggerHostAction(const QString& name) {
    QAction* action = m_window.documentCommands()->action(name);
    if (!action || !action->isEnabled())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("the menu command %1 is not available").arg(name));
    action->trigger();
    settle();
}

QString Tour::outputsDir() const {
    return QDir(m_outputDir).filePath(QStringLiteral("outputs"));
}

QWidget* Tour::hitList() const {
    return m_window.searchPage()->hitListControl();
}

QAction* Tour::toolbarButton(const QString& key) const {
    auto* action = hitList()->findChild<QAction*>(key);
    if (!action)
        throw Error(ErrorNumber::Unspecified, QStringLiteral("no toolbar button %1").arg(key));
    return action;
}

void Tour::pressToolbarButton(const QString& key) {
    QAction* action = toolbarButton(key);
    if (!action->isEnabled() || !action->isVisible())
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("the toolbar button %1 is not available").arg(key));
    action->trigger();
    settle();
}

QString Tour::writeTourDocument() const {
    const QString path = QDir(m_workDir).filePath(QStringLiteral("tour-invoice.txt"));
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
        file.write("INVOICE INV-0009001\nAcme Tools\n1 x Service contract   1250.00\n");
    return path;
}

} // namespace vx::demo
