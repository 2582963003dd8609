// The results pane beside the statement: the rows of a system profile, a
// slow statement that leaves the window responsive and is cancelled by the
// next change, a report's rows in report mode; in the window, a filter value
// that breaks the statement outlined until it is fixed, and the advanced
// filter dialog's Test.
#include <QComboBox>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTest>
#include <QToolTip>
#include <filesystem>
#include <sqlite3.h>

#include "gui/advanced_filter_dialog.h"
#include "gui/results/results_pane.h"
#include "gui/tree_model.h"
#include "gui/statement/statement_view.h"
#include "gui_fixture.h"
#include "reportengine/demo_database.h"
#include "reportengine/results/guarded_source.h"
#include "results/results.h"

using cvve::guitest::GuiEditor;

namespace {

// Accounts as the fixture's setup selects them: five open, one closed.
std::string MakeDatabase(const cvve::testing::TempDir& dir) {
  const std::string path = (dir.Path() / "accounts.db").string();
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  sqlite3_exec(db,
               "CREATE TABLE ACCTS (AcctNum TEXT, Balance REAL, LastName TEXT, Open INTEGER, "
               "Status TEXT, NextDue TEXT);"
               "INSERT INTO ACCTS VALUES ('A-5',1234.5,'Ng',1,'A','2026-03-01'),"
               "('A-2',20,'Li',1,'A','2026-04-01'),('A-9',0,'Ott',1,'C','2026-05-01'),"
               "('A-1',99.99,'Diaz',1,'A','2026-06-01'),('A-7',5,'Roe',1,'A','2026-07-01'),"
               "('A-3',7,'Kay',0,'A','2026-08-01');",
               nullptr, nullptr, nullptr);
  sqlite3_close(db);
  return path;
}

QStringList Column(const QTableWidget* table, int column) {
  QStringList values;
  for (int r = 0; r < table->rowCount(); ++r) {
    values << (table->item(r, column) ? table->item(r, column)->text() : QString());
  }
  return values;
}

// The window on `profile`, its rows from the accounts database.
cvve::gui::ResultsPane* OpenWithRows(GuiEditor& g, const char* profile) {
  g.Open(profile);
  g.window->ShowResults({MakeDatabase(g.dir), "", {}});
  return g.window->resultsPane();
}

// Whether the window drew its red outline of a failing value at `at`.
bool OutlinedAt(QWidget* widget, QPoint at) {
  const QColor pixel = widget->grab().toImage().pixelColor(at * widget->devicePixelRatioF());
  return pixel.red() > 150 && pixel.green() < 80 && pixel.blue() < 80;
}

// The tool tip the filter list shows over `at` of its viewport ("" none).
QString ToolTipAt(QTreeView* view, QPoint at) {
  QToolTip::hideText();  // hidden after a moment
  for (int wait = 0; wait < 100 && QToolTip::isVisible(); ++wait) QTest::qWait(10);
  QHelpEvent help(QEvent::ToolTip, at, view->viewport()->mapToGlobal(at));
  QCoreApplication::sendEvent(view->viewport(), &help);
  return QToolTip::isVisible() ? QToolTip::text() : QString();
}

}  // namespace

class ResultsPaneTest : public QObject {
  Q_OBJECT

 private slots:
  void ShowsTheRowsOfASystemProfile();
  void ASlowStatementKeepsTheWindowAliveAndTheNextChangeCancelsIt();
  void InTheWindowASlowStatementIsCancelledByTheNextEdit();
  void AFailingFilterValueIsOutlinedUntilItIsFixed();
  void AdvancedFilterTestShowsCountOrErrorAndCloseIsUnchanged();
  void InReportModeShowsTheReportsRows();
};

void ResultsPaneTest::ShowsTheRowsOfASystemProfile() {
  GuiEditor g;
  g.Open("Account Lookup");
  g.window->ShowResults({MakeDatabase(g.dir), "", {}});
  cvve::gui::ResultsPane* pane = g.window->resultsPane();
  QVERIFY(pane != nullptr);
  QTRY_VERIFY_WITH_TIMEOUT(pane->status()->text().startsWith("5 rows"), 5000);
  QCOMPARE(pane->table()->columnCount(), 1);
  QCOMPARE(pane->table()->horizontalHeaderItem(0)->text(), QString("Account #"));
  QCOMPARE(Column(pane->table(), 0), QStringList({"A-1", "A-2", "A-5", "A-7", "A-9"}));
  QVERIFY(pane->status()->text().contains(" ms"));
  QVERIFY(!pane->errorText()->isVisible());
  // Looking at the rows is no change to the profile.
  QVERIFY(!g->ProfileChanged);
  // Collapsed, it keeps its title row only.
  pane->SetCollapsed(true);
  QVERIFY(!pane->table()->isVisible());
  pane->SetCollapsed(false);
  QVERIFY(pane->table()->isVisible());
}

void ResultsPaneTest::ASlowStatementKeepsTheWindowAliveAndTheNextChangeCancelsIt() {
  GuiEditor g;
  g.Open();
  cvve::gui::ResultsPane pane({MakeDatabase(g.dir), "", {}});
  pane.show();
  // Counting to a billion takes SQLite far longer than ten seconds.
  const std::string slow =
      "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c WHERE x<1000000000) "
      "SELECT count(*) FROM c";
  pane.Show(slow, {}, {"Count"}, {"Integer"});
  QTRY_VERIFY_WITH_TIMEOUT(pane.Busy(), 2000);
  // The event loop keeps turning while it runs: no gap between ticks of a
  // 20 ms timer comes near the statement's time.
  QElapsedTimer clock;
  clock.start();
  qint64 last = 0, longest = 0;
  QTimer tick;
  QObject::connect(&tick, &QTimer::timeout, [&] {
    longest = std::max(longest, clock.elapsed() - last);
    last = clock.elapsed();
  });
  tick.start(20);
  QTest::qWait(1000);
  tick.stop();
  QVERIFY2(longest < 500, qPrintable(QString("the loop stalled %1 ms").arg(longest)));
  QVERIFY(pane.Busy());
  QVERIFY(pane.cancelButton()->isVisible());
  QVERIFY(pane.status()->text().startsWith("Running"));

  // The next change: the slow statement stops and the new one shows soon.
  clock.restart();
  pane.Show("SELECT AcctNum, Balance, LastName FROM ACCTS WHERE Open=1 ORDER BY AcctNum", {},
            {"Account #", "Balance", "Last Name"}, {"String", "Currency", "String"});
  QTRY_VERIFY_WITH_TIMEOUT(pane.status()->text().startsWith("5 rows"), 5000);
  QVERIFY2(clock.elapsed() < 5000, "the slow statement was not cancelled");
  QVERIFY(!pane.cancelButton()->isVisible());
  QCOMPARE(Column(pane.table(), 1), QStringList({"$99.99", "$20.00", "$1,234.50", "$5.00", "$0.00"}));
  QCOMPARE(pane.table()->horizontalHeaderItem(2)->text(), QString("Last Name"));

  // A statement the database refuses: its message and the place it names.
  pane.Show("SELECT AcctNum FROM ACCTS WHERE Balance > abc", {}, {"Account #"}, {"String"});
  QTRY_VERIFY_WITH_TIMEOUT(pane.errorText()->isVisible(), 5000);
  QVERIFY(pane.errorText()->toPlainText().contains("no such column: abc"));
  QCOMPARE(pane.lastStatement().substr(static_cast<std::size_t>(pane.errorPosition()), 3),
           std::string("abc"));

  // Cancel stops a slow one and leaves it stopped.
  pane.Show(slow, {}, {"Count"}, {"Integer"});
  QTRY_VERIFY_WITH_TIMEOUT(pane.cancelButton()->isVisible(), 3000);
  QTest::mouseClick(pane.cancelButton(), Qt::LeftButton);
  QTRY_COMPARE_WITH_TIMEOUT(pane.status()->text(), QString("Cancelled"), 5000);
  QVERIFY(!pane.Busy());
}

void ResultsPaneTest::InTheWindowASlowStatementIsCancelledByTheNextEdit() {
  GuiEditor g;
  cvve::gui::ResultsPane* pane = OpenWithRows(g, "My Accounts");
  QTRY_VERIFY_WITH_TIMEOUT(pane->status()->text().contains(" ms"), 5000);
  const QString easy_rows = pane->status()->text().section(" · ", 0, 0);

  // An advanced filter far slower than ten seconds, typed in its dialog.
  QTest::mouseClick(g.Find<QRadioButton>("optFilter(1)"), Qt::LeftButton);
  g.Settle();
  g.dialogs.on_dialog_shown = [](cvve::gui::ModelDialog& dialog) {
    dialog.findChild<QPlainTextEdit*>("txtSQL")->setPlainText(
        "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c WHERE x<1000000000) "
        "SELECT count(*) FROM c");
    QTest::mouseClick(dialog.findChild<QPushButton*>("cmdClose"), Qt::LeftButton);
  };
  g.ClickButton("cmdAdvancedFilter");
  QTRY_VERIFY_WITH_TIMEOUT(pane->cancelButton()->isVisible(), 3000);

  // The window goes on answering: a click on the filter list is handled at once.
  QElapsedTimer clock;
  clock.start();
  g.ClickFilterCell(2, 0);
  QVERIFY2(clock.elapsed() < 500, qPrintable(QString("the click took %1 ms").arg(clock.elapsed())));
  QVERIFY(pane->Busy());

  // The next edit, back to the easy filter: the slow run stops and the
  // easy filter's rows are shown again.
  clock.restart();
  QTest::mouseClick(g.Find<QRadioButton>("optFilter(0)"), Qt::LeftButton);
  g.Settle();
  QTRY_VERIFY_WITH_TIMEOUT(!pane->Busy() && pane->status()->text().startsWith(easy_rows), 5000);
  QVERIFY2(clock.elapsed() < 5000, "the slow statement was not cancelled");
  QVERIFY(!pane->cancelButton()->isVisible());
}

void ResultsPaneTest::AFailingFilterValueIsOutlinedUntilItIsFixed() {
  GuiEditor g;
  cvve::gui::ResultsPane* pane = OpenWithRows(g, "My Accounts");
  QTRY_VERIFY_WITH_TIMEOUT(pane->status()->text().contains(" ms"), 5000);
  QVERIFY(!pane->errorText()->isVisible());

  // Tick "Balance" and type a word where a number belongs.
  g.ClickFilterCell(2, 0);
  g.filters->setFocus();
  g.Press(g.filters, Qt::Key_Space);
  QVERIFY(g->lstFilters.Item(2).checked);
  g.ClickFilterCell(2, 2);
  QTest::keyClicks(g.window->valueEditor(1), "abc");
  g.Press(g.window->valueEditor(1), Qt::Key_Return);
  QTRY_VERIFY_WITH_TIMEOUT(pane->errorText()->isVisible(), 5000);
  const QString message = pane->errorMessage();
  QVERIFY2(message.contains("no such column: abc"), qPrintable(message));

  // The value's cell is outlined and tells the database's message; the
  // cells beside it are not.
  const QRect cell = g.FilterCellRect(2, 2);
  const QPoint edge(cell.left() + 1, cell.center().y());
  QVERIFY(OutlinedAt(g.filters->viewport(), edge));
  QCOMPARE(ToolTipAt(g.filters, cell.center()), message);
  QVERIFY(!OutlinedAt(g.filters->viewport(), QPoint(g.FilterCellRect(2, 1).left() + 1, edge.y())));
  QVERIFY(ToolTipAt(g.filters, g.FilterCellRect(1, 2).center()) != message);
  // The statement pane underlines the word the database named.
  const auto marks = g.window->statementPane()->marks();
  QCOMPARE(marks.size(), std::size_t{1});
  QCOMPARE(g.window->statementPane()->toPlainText().mid(marks.front().start, marks.front().length),
           QString("abc"));
  QCOMPARE(marks.front().tip, message);

  // Fixed, the outline, the tool tip and the underline go and the rows come back.
  g.ClickFilterCell(2, 2);
  QTest::keyClicks(g.window->valueEditor(1), "50");
  g.Press(g.window->valueEditor(1), Qt::Key_Return);
  QCOMPARE(g->lstFilters.SubItem(2, 2), std::string("50"));
  QTRY_VERIFY_WITH_TIMEOUT(!pane->errorText()->isVisible(), 5000);
  QTRY_VERIFY_WITH_TIMEOUT(pane->status()->text().contains(" ms"), 5000);
  QVERIFY(pane->table()->rowCount() > 0);
  QVERIFY(!OutlinedAt(g.filters->viewport(), edge));
  QVERIFY(ToolTipAt(g.filters, cell.center()) != message);
  QVERIFY(g.window->statementPane()->marks().empty());
}

void ResultsPaneTest::AdvancedFilterTestShowsCountOrErrorAndCloseIsUnchanged() {
  // The same session with and without the database: Test is the only
  // difference, and what Close leaves behind is the same.
  struct Left {
    std::string statement;
    bool changed = false;
    QString statement_pane;
  };
  auto session = [](bool with_database, QStringList* told) {
    GuiEditor g;
    if (with_database) g.dialogs.database = cvve::reportengine::EditorDatabase{MakeDatabase(g.dir), "", {}};
    g.Open("My Accounts");
    QTest::mouseClick(g.Find<QRadioButton>("optFilter(1)"), Qt::LeftButton);
    g.Settle();
    g->ProfileChanged = false;  // from here only the dialog may change it
    const std::string before = g->DataSetSQL;
    g.dialogs.on_dialog_shown = [&](cvve::gui::ModelDialog& shown) {
      auto* dialog = dynamic_cast<cvve::gui::AdvancedFilterDialog*>(&shown);
      QVERIFY(dialog);
      QCOMPARE(dialog->testButton() != nullptr, with_database);
      auto run = [&](const QString& text) {
        dialog->sqlBox()->setPlainText(text);
        if (!with_database) return;
        QTest::mouseClick(dialog->testButton(), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(dialog->testButton()->isEnabled(), 5000);
        *told << dialog->testResult()->text();
        // Testing changes neither the profile's statement nor ProfileChanged.
        QCOMPARE(g->DataSetSQL, before);
        QVERIFY(!g->ProfileChanged);
      };
      run("SELECT AcctNum FROM ACCTS WHERE Open=1 AND Balance > 10");
      run("SELECT AcctNum FROM ACCTS WHERE Balnce > 5");
      QTest::mouseClick(dialog->findChild<QPushButton*>("cmdClose"), Qt::LeftButton);
    };
    g.ClickButton("cmdAdvancedFilter");
    return Left{g->DataSetSQL, g->ProfileChanged, g.window->statementPane()->toPlainText()};
  };
  QStringList told;
  const Left plain = session(false, nullptr);
  const Left tested = session(true, &told);
  QCOMPARE(told.size(), 2);
  QVERIFY2(told[0].startsWith("3 rows · "), qPrintable(told[0]));
  QVERIFY2(told[1].contains("no such column: Balnce"), qPrintable(told[1]));
  QCOMPARE(tested.statement, plain.statement);
  QCOMPARE(tested.statement, std::string("SELECT AcctNum FROM ACCTS WHERE Balnce > 5"));
  QCOMPARE(tested.changed, plain.changed);
  QCOMPARE(tested.statement_pane, plain.statement_pane);
}

void ResultsPaneTest::InReportModeShowsTheReportsRows() {
  GuiEditor g;
  // The demo's custom reports on a small generated dealer database.
  namespace fs = std::filesystem;
  fs::copy(fs::path(CVVE_DEMO_DIR) / "Custom Reports", g.dir.Path() / "Custom Reports");
  fs::copy_file(fs::path(CVVE_DEMO_DIR) / "reportsetup.xml", g.dir.Path() / "reportsetup.xml");
  const std::string database = (g.dir.Path() / "dealer.db").string();
  cvve::reportengine::DemoDatabaseOptions options;
  options.accounts = 120;
  options.seed = 3;
  options.schema_path = std::string(CVVE_DEMO_DIR) + "/schema.sql";
  cvve::reportengine::GenerateDemoDatabase(database, options);

  g->SetReportMode(-1);
  g->LoadFiles(g.dir.Path().string() + "/Custom Reports/", "", "reportsetup.xml");
  g->Show();
  g.window = std::make_unique<cvve::gui::EditorWindow>(*g.ed);
  g.window->show();
  g.filters = g.window->filterList();
  g.window->ShowResults({database, "", {}});
  // Report nodes have no key of their own: clicked by their text.
  const auto& found = g->tvwViews.FindText("Collections By Collector");
  QCOMPARE(found.size(), std::size_t(1));
  auto* tree = g.Find<QTreeView>("tvwViews");
  const QModelIndex node = static_cast<cvve::gui::TreeModel*>(tree->model())->IndexOf(found.front());
  tree->scrollTo(node);
  QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(node).center());
  g.Settle();
  QCOMPARE(QString::fromStdString(g->txtCurrProf.Text()), QString("Collections By Collector"));
  cvve::gui::ResultsPane* pane = g.window->resultsPane();
  QTRY_VERIFY_WITH_TIMEOUT(pane->status()->text().contains(" ms"), 10000);
  QVERIFY2(!pane->errorText()->isVisible(), qPrintable(pane->errorText()->toPlainText()));

  // What the script's results give for the same report: the report
  // engine's rows, checked there against the database group by group.
  cvve::reportengine::GuardedSource source({database, "", {}});
  const cvve::results::Table expected = cvve::results::RunProfile(*g.ed, source, 200);
  QVERIFY(expected.error.empty());
  QVERIFY(expected.count > 0);
  QVERIFY(pane->status()->text().startsWith(QString("%1 row").arg(expected.count)));
  QCOMPARE(pane->table()->columnCount(), static_cast<int>(expected.columns.size()));
  for (int c = 0; c < pane->table()->columnCount(); ++c) {
    QCOMPARE(pane->table()->horizontalHeaderItem(c)->text().toStdString(), expected.columns[c]);
  }
  QCOMPARE(pane->table()->rowCount(), static_cast<int>(expected.shown.size()));
  for (int r = 0; r < pane->table()->rowCount(); ++r) {
    for (int c = 0; c < pane->table()->columnCount(); ++c) {
      const QTableWidgetItem* item = pane->table()->item(r, c);
      QCOMPARE(item ? item->text().toStdString() : std::string(),
               expected.shown[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)]);
    }
  }
  // The report's group key leads and its amounts are shown as money.
  QCOMPARE(pane->table()->horizontalHeaderItem(0)->text(), QString("Collector"));
  QVERIFY(!g->ProfileChanged);
}

QTEST_MAIN(ResultsPaneTest)
#include "results_pane_test.moc"
