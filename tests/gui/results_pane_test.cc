// The results pane beside the statement: the rows of a system profile, and a
// slow statement that leaves the window responsive and is cancelled by the
// next change.
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <sqlite3.h>

#include "gui/results/results_pane.h"
#include "gui_fixture.h"

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

}  // namespace

class ResultsPaneTest : public QObject {
  Q_OBJECT

 private slots:
  void ShowsTheRowsOfASystemProfile();
  void ASlowStatementKeepsTheWindowAliveAndTheNextChangeCancelsIt();
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

QTEST_MAIN(ResultsPaneTest)
#include "results_pane_test.moc"
