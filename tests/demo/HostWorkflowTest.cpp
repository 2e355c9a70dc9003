#include "AuditTrailPanel.h"
#include "DemoWindow.h"
#include "DocumentCommands.h"
#include "IndexPage.h"
#include "SearchPage.h"
#include "companions/DefaultCompanions.h"
#include "data/Recordset.h"
#include "operations/Progressbar.h"
#include "portable/QueryRows.h"
#include "server/LateBinding.h"
#include "session/GroupConnection.h"
#include "support/SampleRepository.h"
#include "support/ScriptedUiServices.h"
#include "support/TestEnvironment.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

namespace {

using vx::demo::DemoWindow;

// The text input of a field of a dynamic form (line, combo, number, date or memo).
QWidget* fieldInput(QWidget* control, const QString& column) {
    auto* form = control->findChild<QWidget*>(QStringLiteral("Group"));
    auto* editor = form ? form->findChild<QWidget*>(QStringLiteral("field_") + column) : nullptr;
    if (!editor)
        return nullptr;
    if (auto* combo = editor->findChild<QComboBox*>())
        return combo->lineEdit();
    if (auto* memo = editor->findChild<QPlainTextEdit*>())
        return memo;
    return editor->findChild<QLineEdit*>();
}

// Replaces a field's text by typing, as a user would.
void typeInto(QWidget* control, const QString& column, const QString& text) {
    QWidget* input = fieldInput(control, column);
    ASSERT_NE(input, nullptr) << column.toStdString();
    input->setFocus();
    if (auto* line = qobject_cast<QLineEdit*>(input))
        line->clear();
    else if (auto* memo = qobject_cast<QPlainTextEdit*>(input))
        memo->clear();
    QTest::keyClicks(input, text);
}

// Runs a snippet with the system's python3 (which has Debian's python3-dbfread) on a file and
// returns what it printed.
QString python(const QString& code, const QString& file) {
    QProcess process;
    const QString system = QStringLiteral("/usr/bin/python3");
    process.start(QFile::exists(system) ? system : QStringLiteral("python3"),
                  {QStringLiteral("-c"), code, file});
    process.waitForFinished(60000);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed() +
           QString::fromUtf8(process.readAllStandardError()).trimmed();
}

QStringList column(const QString& initFile, const QString& sql) {
    return vx::test::rowsOf(vx::openGroupConnection(initFile), sql);
}

class HostWorkflowTest : public ::testing::Test {
protected:
    HostWorkflowTest()
        : previousFolder(QDir::currentPath()) {
        vx::registerDefaultCompanions();
    }
    ~HostWorkflowTest() override { QDir::setCurrent(previousFolder); }

    QString status() const { return window->statusBar()->currentMessage(); }
    QWidget* hitList() const { return window->searchPage()->hitListControl(); }
    QTableView* grid() const {
        return hitList()->findChild<QTableView*>(QStringLiteral("HitList"));
    }
    QAction* toolbarButton(const char* key) const {
        return hitList()->findChild<QAction*>(QString::fromLatin1(key));
    }
    // A command of the host's Documents menu.
    QAction* menuCommand(const char* name) const {
        auto* menu = window->menuBar()->findChild<QMenu*>(QStringLiteral("documentsMenu"));
        for (QAction* action : menu ? menu->actions() : QList<QAction*>()) {
            if (action->objectName() == QLatin1String(name))
                return action;
        }
        return nullptr;
    }
    void run(const char* name) {
        QAction* action = menuCommand(name);
        ASSERT_NE(action, nullptr) << name;
        ASSERT_TRUE(action->isEnabled()) << name;
        action->trigger();
    }
    // Types the criteria into the search form, picks the keywords and presses Enter in the last
    // field.
    void searchFor(const QList<std::pair<QString, QString>>& criteria,
                   const QStringList& keywords = {}) {
        QTest::mouseClick(window->searchPage()->findChild<QPushButton*>("clearCriteria"),
                          Qt::LeftButton);
        QWidget* query = window->searchPage()->queryControl();
        for (const QString& keyword : keywords)
            vx::callMember(query->findChild<QObject*>("kss1"), "AddListItem", keyword);
        for (const auto& [field, text] : criteria)
            typeInto(query, field, text);
        QTest::keyClick(fieldInput(query, criteria.last().first), Qt::Key_Return);
    }
    int rows() const { return grid()->model()->rowCount(); }

    vx::test::TestEnvironment environment;
    vx::test::SampleRepository sample;
    QString previousFolder;
    std::unique_ptr<DemoWindow> window;
};

TEST_F(HostWorkflowTest, FilesFindsEditsExportsAndShowsPropertiesThroughTheWindow) {
    window = std::make_unique<DemoWindow>();
    ASSERT_TRUE(window->openGroup(sample.initFilePath()));
    window->show();
    EXPECT_EQ(QDir(QDir::currentPath()).canonicalPath(), QDir(sample.dir()).canonicalPath())
        << "the viewer files are found from the current folder";
    const QString initFile = sample.initFilePath();
    const int itemsBefore = column(initFile, "select count(*) from KTItem").first().toInt();

    // File a document; an amount the column cannot take is named, not silently changed.
    vx::demo::IndexPage* index = window->indexPage();
    window->pages()->setCurrentWidget(index);
    QWidget* indexControl = index->indexControl();
    environment.ui().answerMessage(vx::MessageAnswer::Ok);
    EXPECT_EQ(index->fileDocument(), 0);
    EXPECT_EQ(environment.ui().messageTexts(),
              QStringList{"Choose the document file to index first."});
    const QString document = environment.writeFile("scan/harbour.txt", "INVOICE 9100");
    QTest::keyClicks(index->findChild<QLineEdit*>("documentPath"), document);
    typeInto(indexControl, "InvoiceNo", "INV-0009100");
    typeInto(indexControl, "Customer", "Harbour Lights");
    typeInto(indexControl, "InvoiceDate", "2026-01-15");
    typeInto(indexControl, "Amount", "12,50x");
    vx::callMember(indexControl->findChild<QObject*>("kss2"), "AddListItem",
                   QStringLiteral("approved"));
    auto* file = index->findChild<QPushButton*>("fileDocument");
    environment.ui().answerMessage(vx::MessageAnswer::Ok);
    QTest::mouseClick(file, Qt::LeftButton);
    ASSERT_FALSE(environment.ui().prompts().isEmpty());
    EXPECT_EQ(environment.ui().prompts().last().text,
              "The document was not filed. Correct these fields:\n\n"
              "Amount: \"12,50x\" is not a number.");
    EXPECT_EQ(status(), "Not filed: Amount: \"12,50x\" is not a number.");

    typeInto(indexControl, "Amount", "12.50");
    QTest::mouseClick(file, Qt::LeftButton);
    const QString itemId = column(initFile, "select max(itemid) from KTItem").first();
    EXPECT_EQ(status(), QStringLiteral("Filed harbour.txt as item %1.").arg(itemId));
    EXPECT_EQ(column(initFile, "select Amount from Invoices where itemid = " + itemId),
              QStringList{"12"});
    const QString stored =
        column(initFile, "select fname from KTFile where itemid = " + itemId).value(0);
    EXPECT_TRUE(QFileInfo(window->locateDocument(itemId.toInt(), stored)).isFile())
        << "the host finds the filed copy where the repository keeps its documents";
    EXPECT_EQ(window->auditTrail()->entryCount(), 1);
    QFile log(QDir(sample.dir()).filePath("audit-trail.log"));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    EXPECT_TRUE(log.readAll().contains("\tIndexing\t" + itemId.toUtf8() + "\tharbour.txt"));

    // Filing again is refused until the form changes.
    EXPECT_FALSE(file->isEnabled());
    QTest::mouseClick(file, Qt::LeftButton);
    EXPECT_EQ(column(initFile, "select count(*) from KTItem").first().toInt(), itemsBefore + 1);
    QTest::keyClicks(fieldInput(indexControl, "Notes"), "x");
    EXPECT_TRUE(file->isEnabled()) << "a changed form is a new document";
    QTest::mouseClick(index->findChild<QPushButton*>("nextDocument"), Qt::LeftButton);
    EXPECT_TRUE(index->documentPath().isEmpty());

    // Find it by a field and a keyword, Enter in the search form running the search.
    window->pages()->setCurrentWidget(window->searchPage());
    QWidget* query = window->searchPage()->queryControl();
    searchFor({{"Customer", "Harbour Lights"}}, {"approved"});
    ASSERT_EQ(rows(), 1) << vx::readMember(query, "QueryString").toString().toStdString();
    EXPECT_EQ(status(), "1 document found.");
    EXPECT_EQ(window->currentItemId(), itemId.toInt());

    // Edit and save; Enter in the notes is a new line, not a question.
    toolbarButton("Edit")->trigger();
    typeInto(hitList(), "Status", "Paid");
    QTest::keyClicks(fieldInput(hitList(), "Notes"), "first");
    QTest::keyClick(fieldInput(hitList(), "Notes"), Qt::Key_Return);
    QTest::keyClicks(fieldInput(hitList(), "Notes"), "second");
    toolbarButton("Save")->trigger();
    EXPECT_EQ(status(), QStringLiteral("Saved the changes to item %1.").arg(itemId));
    EXPECT_EQ(column(initFile, "select Status from Invoices where itemid = " + itemId),
              QStringList{"Paid"});
    EXPECT_EQ(column(initFile, "select Notes from Invoices where itemid = " + itemId),
              QStringList{"first\nsecond"});
    toolbarButton("Edit")->trigger();

    // A wildcard search, sorted by amount from the column header's menu.
    searchFor({{"Customer", "Acme*"}});
    const QString acmeRows = "from Invoices, KTItem where Invoices.itemid = KTItem.itemid and "
                             "KTItem.deleted = 0 and Customer = 'Acme Tools'";
    const int acme = column(initFile, "select count(*) " + acmeRows).first().toInt();
    ASSERT_EQ(rows(), acme);
    int amount = -1;
    for (int c = 0; c < grid()->model()->columnCount(); ++c)
        if (grid()->model()->headerData(c, Qt::Horizontal).toString() == "Amount")
            amount = c;
    ASSERT_GE(amount, 0);
    QHeaderView* header = grid()->horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      QPoint(header->sectionViewportPosition(amount) + 4, header->height() / 2));
    auto* sortMenu = hitList()->findChild<QMenu*>("mnuOption");
    ASSERT_TRUE(sortMenu && sortMenu->isVisible());
    sortMenu->hide();
    sortMenu->actions().at(1)->trigger(); // "Sort Descending"
    for (int row = 1; row < rows(); ++row)
        EXPECT_GE(grid()->model()->index(row - 1, amount).data().toInt(),
                  grid()->model()->index(row, amount).data().toInt());

    // Everything found goes out: a FoxPro table, a text file and a portable export.
    grid()->setFocus();
    QTest::keyClick(grid(), Qt::Key_A, Qt::ControlModifier);
    const QString out = environment.filePath("out");
    QDir().mkpath(out);
    environment.ui().answerFolder(out).answerInput("AcmeInvoices");
    run("exportTable");
    const QString table = QDir(out).filePath("AcmeInvoices.dbf");
    EXPECT_EQ(status(), QStringLiteral("Exported %1 documents to %2.")
                            .arg(acme)
                            .arg(QDir::toNativeSeparators(table)));
    QStringList ids = column(initFile, "select Invoices.itemid " + acmeRows);
    std::sort(ids.begin(), ids.end());
    EXPECT_EQ(python("import sys, dbfread\n"
                     "t = dbfread.DBF(sys.argv[1])\n"
                     "print(','.join(sorted(str(int(r[t.field_names[0]])) for r in t)))",
                     table)
                  .toStdString(),
              ids.join(',').toStdString());
    const vx::Progressbar* progress = vx::Progressbar::current();
    ASSERT_NE(progress, nullptr);
    const int paintsAfterTable = progress->paintCount();
    EXPECT_GT(paintsAfterTable, 0) << "the progress form was drawn while the table was written";

    environment.ui().answerFolder(out).answerInput("acme.csv");
    run("saveAsText");
    const QString text = QDir(out).filePath("acme.csv");
    EXPECT_EQ(status(), QStringLiteral("Saved %1 documents as text to %2.")
                            .arg(acme)
                            .arg(QDir::toNativeSeparators(text)));
    QFile csv(text);
    ASSERT_TRUE(csv.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = csv.readAll().trimmed().split('\n');
    EXPECT_EQ(lines.size(), acme + 1);
    EXPECT_TRUE(lines.first().startsWith("InvoiceNo,Customer,Status,Amount"));

    const QString portable = QDir(out).filePath("portable");
    QDir().mkpath(portable);
    environment.ui().onProcessEvents([] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == "pic_MediaType" && widget->isVisible()) {
                auto* media = widget->findChild<QComboBox*>("cmb_MediaType");
                media->setCurrentIndex(media->findText("FULL-EXPORT", Qt::MatchStartsWith));
                widget->findChild<QPushButton*>("btn_Ok")->click();
            }
        }
    });
    environment.ui().answerFolder(portable);
    run("portableExport");
    environment.ui().onProcessEvents({});
    const QStringList roots = QDir(portable).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    ASSERT_EQ(roots.size(), 1);
    const QDir root(QDir(portable).filePath(roots.first()));
    const QStringList volumes = root.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    ASSERT_EQ(volumes.size(), 1);
    const QString volume = root.filePath(volumes.first());
    EXPECT_EQ(status(), QStringLiteral("Exported %1 documents for the viewer to %2.")
                            .arg(acme)
                            .arg(QDir::toNativeSeparators(volume)));
    for (const char* viewerFile : {"veltrane.exe", "veltrane.udl", "veltrane.chm"})
        EXPECT_TRUE(QFile::exists(QDir(volume).filePath(viewerFile))) << viewerFile;
    QProcess sqlite;
    sqlite.start("sqlite3", {"-readonly", QDir(volume).filePath("veltrane.znl"),
                             "select count(*) from KTItem where itemid <> 0; "
                             "select count(*) from KTFile;"});
    ASSERT_TRUE(sqlite.waitForFinished(60000));
    EXPECT_EQ(QString::fromUtf8(sqlite.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts),
              (QStringList{QString::number(acme), QString::number(acme)}))
        << sqlite.readAllStandardError().toStdString();
    EXPECT_GE(progress->paintCount(), paintsAfterTable + 2)
        << "drawn when shown and at the last step";

    // Properties: the form is closed as soon as it shows.
    QString shown;
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [&] {
        if (QWidget* modal = QApplication::activeModalWidget()) {
            for (auto* label : modal->findChildren<QLabel*>())
                shown += label->text() + ' ';
            modal->close();
        }
    });
    closer.start(10);
    run("properties");
    closer.stop();
    EXPECT_TRUE(shown.contains(QString::number(acme))) << shown.toStdString();
    EXPECT_EQ(status(), QStringLiteral("Properties of %1 documents shown.").arg(acme));
    EXPECT_EQ(environment.ui().pendingAnswers(), 0);
    window.reset();
    EXPECT_EQ(QDir::currentPath(), previousFolder) << "the repository's folder is left behind";
}

TEST_F(HostWorkflowTest, CommandsFollowThePermissionBitsAndTheResults) {
    window = std::make_unique<DemoWindow>();
    ASSERT_TRUE(window->openGroup(sample.initFilePath()));
    const char* const all[] = {"exportTable",   "saveAsText",   "portableExport",  "copyDocuments",
                               "moveDocuments", "updateVolume", "markForDeletion", "properties"};
    for (const char* name : all)
        EXPECT_FALSE(menuCommand(name)->isEnabled()) << name << ": no results yet";
    searchFor({{"Customer", "Kestrel*"}});
    ASSERT_GT(rows(), 0);
    for (const char* name : all)
        EXPECT_TRUE(menuCommand(name)->isEnabled()) << name;

    struct Case {
        qint32 permission;
        QStringList enabled;
    };
    const Case cases[] = {
        {0, {"saveAsText", "properties"}},
        {128, {"exportTable", "saveAsText", "portableExport", "properties"}},
        {64, {"saveAsText", "copyDocuments", "moveDocuments", "properties"}},
        {8 | 32, {"saveAsText", "updateVolume", "markForDeletion", "properties"}},
    };
    for (const Case& c : cases) {
        window->documentCommands()->setPermission(c.permission);
        for (const char* name : all)
            EXPECT_EQ(menuCommand(name)->isEnabled(), c.enabled.contains(name))
                << name << " with permission " << c.permission;
    }
    // The control's own buttons are reported in the status bar too, from their audit records.
    grid()->selectRow(0);
    environment.ui().answerMessage(vx::MessageAnswer::Yes);
    toolbarButton("Delete")->trigger();
    EXPECT_EQ(status(), "Marked 1 document for deletion.");

    // A search that finds nothing leaves the earlier rows on screen, but nothing to work on.
    environment.ui().answerMessage(vx::MessageAnswer::Ok);
    searchFor({{"Customer", "Nobody by this name"}});
    EXPECT_EQ(environment.ui().messageTexts().last(), "No results found.");
    EXPECT_GT(rows(), 0);
    EXPECT_EQ(status(), "No documents found.");
    for (const char* name : all)
        EXPECT_FALSE(menuCommand(name)->isEnabled()) << name << " after an empty result";
}

TEST_F(HostWorkflowTest, VersionsOpenOnDoubleClickOrEnterNotOnSelection) {
    window = std::make_unique<DemoWindow>();
    ASSERT_TRUE(window->openGroup(sample.initFilePath()));
    window->show();
    window->pages()->setCurrentWidget(window->searchPage());
    searchFor({{"InvoiceNo", "INV-0000013"}});
    ASSERT_EQ(rows(), 1);
    toolbarButton("Archive")->trigger();
    ASSERT_TRUE(toolbarButton("Archive")->isChecked());
    ASSERT_GT(rows(), 1);
    QTest::keyClick(grid(), Qt::Key_Down);
    EXPECT_TRUE(window->openedFiles().isEmpty()) << "choosing a version opens nothing";
    EXPECT_TRUE(status().startsWith("Version ")) << status().toStdString();
    EXPECT_TRUE(status().contains("double-click or Enter opens it"));

    QTest::keyClick(grid(), Qt::Key_Return);
    EXPECT_EQ(window->openedFiles().size(), 1);
    const QRect cell = grid()->visualRect(grid()->currentIndex());
    // What the window system sends for a double click.
    QTest::mouseClick(grid()->viewport(), Qt::LeftButton, {}, cell.center());
    EXPECT_EQ(window->openedFiles().size(), 1) << "a single click opens nothing";
    QTest::mouseDClick(grid()->viewport(), Qt::LeftButton, {}, cell.center());
    QTest::mouseRelease(grid()->viewport(), Qt::LeftButton, {}, cell.center());
    EXPECT_EQ(window->openedFiles().size(), 2);

    // Back in the results, activating a row opens no version.
    toolbarButton("Archive")->trigger();
    QTest::keyClick(grid(), Qt::Key_Return);
    EXPECT_EQ(window->openedFiles().size(), 2);
}

TEST_F(HostWorkflowTest, WindowStateIsKeptUnderTheHostsNameAndTheFirstWindowFitsTheScreen) {
    // Also run at QT_SCALE_FACTOR=1.5: the free area in device-independent pixels shrinks.
    const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
    const QSize chosen = available.size() * 0.75;
    QByteArray splitterState;
    {
        DemoWindow first;
        first.show();
        EXPECT_TRUE(available.contains(first.frameGeometry()))
            << "first window within the free area";
        first.resize(chosen);
        auto* splitter = first.searchPage()->findChild<QSplitter*>("searchSplitter");
        splitter->setSizes({100, 300});
        splitterState = splitter->saveState();
        first.close();
    }
    EXPECT_TRUE(QFile::exists(QDir(environment.settingsFolder()).filePath("vxdemo.ini")));
    DemoWindow second;
    EXPECT_EQ(second.size(), chosen);
    EXPECT_EQ(second.searchPage()->findChild<QSplitter*>("searchSplitter")->saveState(),
              splitterState);
}

TEST_F(HostWorkflowTest, SearchPaneGivesTheKeywordPickerItsRoom) {
    window = std::make_unique<DemoWindow>();
    ASSERT_TRUE(window->openGroup(sample.initFilePath()));
    window->resize(900, 600); // smaller than the first window
    window->show();
    window->pages()->setCurrentWidget(window->searchPage());
    QWidget* query = window->searchPage()->queryControl();
    auto* tabs = query->findChild<QTabBar*>();
    ASSERT_NE(tabs, nullptr);
    for (int tab = 0; tab < tabs->count(); ++tab)
        if (tabs->tabText(tab).remove('&') == "Keywords")
            QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(tab).center());
    QApplication::processEvents();
    auto* picker = query->findChild<QWidget*>("kss1");
    ASSERT_TRUE(picker && picker->isVisible());
    EXPECT_GE(picker->height(), picker->minimumSizeHint().height());
    const auto buttons = picker->findChildren<QPushButton*>();
    ASSERT_FALSE(buttons.isEmpty());
    for (QPushButton* button : buttons) {
        const QRect inPicker(button->mapTo(picker, QPoint(0, 0)), button->size());
        EXPECT_TRUE(picker->rect().contains(inPicker)) << button->text().toStdString();
    }
}

} // namespace
