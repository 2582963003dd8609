#include "reportengine/report_runner.h"

#include <gtest/gtest.h>

#include <map>

#include "base/error.h"
#include "report_test_support.h"
#include "reportengine/guard/guarded_connection.h"

namespace cvve::reportengine {
namespace {

using testing::ActiveByCollector;
using testing::AllAccounts;
using testing::Cents;
using testing::CvrShape;
using testing::Define;
using testing::Money;
using testing::SmallDatabase;
using testing::SqlRows;
using testing::SqlValue;
using testing::TempFolder;

class ReportRunnerTest : public ::testing::Test {
 protected:
  ReportData Run(const CvrShape& shape, RunSettings settings = {}) {
    GuardedConnection db(SmallDatabase());
    return RunReport(Define(folder_, shape), db, settings);
  }

  TempFolder folder_;
};

TEST_F(ReportRunnerTest, UngroupedRowsValuesAndTotalsMatchTheDatabase) {
  const ReportData data = Run(AllAccounts());
  const std::string db = SmallDatabase();
  const auto expected =
      SqlRows(db,
              "SELECT A.AcctNum, C.LastName, printf('%.2f', A.Balance), A.DaysLate, "
              "substr(A.Next_Pmt_Due,6,2)||'/'||substr(A.Next_Pmt_Due,9,2)||'/"
              "'||substr(A.Next_Pmt_Due,1,4) "
              "FROM ACCTS A JOIN CUST_INFO C ON C.CustID=A.CustID ORDER BY A.AcctNum");
  ASSERT_EQ(expected.size(), 300u);
  ASSERT_EQ(data.groups.size(), 1u);
  ASSERT_EQ(data.RowCount(), 300);
  const std::vector<QString>& cells = data.groups[0].cells;
  ASSERT_EQ(cells.size(), 300u * 7);
  for (std::size_t r = 0; r < expected.size(); ++r) {
    SCOPED_TRACE(r);
    const QString* row = &cells[r * 7];
    EXPECT_EQ(row[0].toStdString(), std::to_string(r + 1));  // $LINE
    EXPECT_EQ(row[1].toStdString(), expected[r][0]);
    EXPECT_EQ(row[2].toStdString(), expected[r][1]);
    EXPECT_TRUE(row[3].isEmpty());  // other computed fields stay empty
    EXPECT_EQ(row[4].toStdString(), Money(expected[r][2]));
    EXPECT_EQ(row[5].toStdString(), expected[r][3]);
    EXPECT_EQ(row[6].toStdString(), expected[r][4]);
  }
  // Totals and averages to the cent, from the database's own arithmetic.
  const auto sums = SqlRows(db,
                            "SELECT printf('%.2f', SUM(Balance)), printf('%.2f', AVG(Balance)), "
                            "printf('%.2f', SUM(DaysLate)) FROM ACCTS")[0];
  EXPECT_EQ(Cents(data.totals.sum[4]), sums[0]);
  EXPECT_EQ(Cents(data.totals.sum[4] / data.totals.count[4]), sums[1]);
  EXPECT_EQ(Cents(data.totals.sum[5]), sums[2]);
  EXPECT_EQ(data.totals.count[1], 0);  // text columns are not summed
  EXPECT_TRUE(data.warnings.empty());

  // The user's filter narrows the rows.
  RunSettings settings;
  settings.user_where = "ACCTS.Collector='bob' AND ACCTS.Status='A'";
  EXPECT_EQ(std::to_string(Run(AllAccounts(), settings).RowCount()),
            SqlValue(db, "SELECT COUNT(*) FROM ACCTS WHERE Status='A' AND Collector='bob'"));
}

TEST_F(ReportRunnerTest, GroupedRowsTotalsAndAveragesPerGroup) {
  const ReportData data = Run(ActiveByCollector(" AND DaysLate > 0"));
  const char* sums =
      "COUNT(*), printf('%.2f', SUM(DaysLate)), printf('%.2f', AVG(DaysLate)), "
      "printf('%.2f', SUM(Balance)), printf('%.2f', AVG(Balance)) FROM ACCTS "
      "WHERE Status='A' AND DaysLate > 0";
  auto expected =
      SqlRows(SmallDatabase(), std::string("SELECT Collector, ") + sums + " GROUP BY 1 ORDER BY 1");
  ASSERT_EQ(data.groups.size(), expected.size());
  ASSERT_GE(expected.size(), 3u);
  auto check = [](const Aggregate& totals, const std::vector<std::string>& want) {
    EXPECT_EQ(std::to_string(totals.rows), want[1]);
    EXPECT_EQ(Cents(totals.sum[2]), want[2]);
    EXPECT_EQ(Cents(totals.sum[2] / totals.count[2]), want[3]);
    EXPECT_EQ(Cents(totals.sum[3]), want[4]);
    EXPECT_EQ(Cents(totals.sum[3] / totals.count[3]), want[5]);
  };
  for (std::size_t g = 0; g < expected.size(); ++g) {
    SCOPED_TRACE(expected[g][0]);
    EXPECT_EQ(data.groups[g].value.toStdString(), expected[g][0]);
    EXPECT_EQ(data.groups[g].heading.toStdString(), "Collector: " + expected[g][0]);
    check(data.groups[g].totals, expected[g]);
  }
  SCOPED_TRACE("overall");
  expected = SqlRows(SmallDatabase(), std::string("SELECT '', ") + sums);
  check(data.totals, expected[0]);
}

TEST_F(ReportRunnerTest, GroupValuesAreQuotedAndEmptyGroupsLeftOut) {
  // Last names include O'Brien: FXA doubles its quote inside the literal.
  const std::string obrien =
      SqlValue(SmallDatabase(), "SELECT COUNT(*) FROM CUST_INFO WHERE LastName='O''Brien'");
  ASSERT_NE(obrien, "0") << "the test database should hold an O'Brien";
  CvrShape shape;
  shape.grouped = true;
  shape.group_report_field = "INV_INFO.LastName";
  shape.group_title = "Name";
  shape.group_statement =
      R"("CQ:SELECT 'Nobody Here' UNION ALL SELECT DISTINCT LastName FROM CUST_INFO )"
      R"sql(WHERE LastName IN ('O''Brien', 'Smith')")sql";
  shape.statement =
      R"("CQ:SELECT CustID FROM CUST_INFO WHERE LastName='" + FXA([INV_INFO.LastName]) + "'")";
  shape.columns = {{"Customer", "CUST_INFO.CustID", "String"}};
  const ReportData data = Run(shape);
  std::map<std::string, long long> rows;
  for (const ReportGroup& group : data.groups) rows[group.value.toStdString()] = group.totals.rows;
  EXPECT_EQ(rows.count("Nobody Here"), 0u);
  EXPECT_EQ(std::to_string(rows["O'Brien"]), obrien);
  EXPECT_EQ(std::to_string(rows["Smith"]),
            SqlValue(SmallDatabase(), "SELECT COUNT(*) FROM CUST_INFO WHERE LastName='Smith'"));
}

TEST_F(ReportRunnerTest, DateVariablesAreTakenInEitherForm) {
  CvrShape shape;
  shape.statement =
      R"("CQ:SELECT AcctNum FROM ACCTS WHERE OpenDate BETWEEN '" + $START_DATE + "' AND '" + $END_DATE + "'")";
  shape.columns = {{"Account", "ACCTS.AcctNum", "String"}};
  shape.variables = {{"$START_DATE", "Date"}, {"$END_DATE", "Date"}};
  const std::string expected =
      SqlValue(SmallDatabase(),
               "SELECT COUNT(*) FROM ACCTS WHERE OpenDate BETWEEN '2025-06-01' AND '2026-03-16'");
  ASSERT_NE(expected, "0");
  for (const auto& [start, end] :
       {std::pair{"06/01/2025", "3/16/2026"}, std::pair{"2025-06-01", "2026-03-16"}}) {
    RunSettings settings;
    settings.variables = {{"$start_date", start}, {"END_DATE", end}};
    EXPECT_EQ(std::to_string(Run(shape, settings).RowCount()), expected) << start;
  }
  // A missing variable is empty, with a warning.
  RunSettings settings;
  settings.variables = {{"$START_DATE", "2025-06-01"}};
  const ReportData data = Run(shape, settings);
  EXPECT_EQ(data.RowCount(), 0);
  ASSERT_EQ(data.warnings.size(), 1u);
  EXPECT_EQ(data.warnings[0], "the variable $END_DATE has no value; it is taken as empty");
}

TEST_F(ReportRunnerTest, FailuresNameTheReportAndTheStatement) {
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      // statement, message parts
      {R"("CQ:SELECT Nope FROM ACCTS")",
       {"Broken.cvr: the Statement failed on ", "no such column: Nope",
        "The statement was: SELECT Nope FROM ACCTS"}},
      {R"("CQ:SELECT AcctNum FROM ACCTS")",
       {"Broken.cvr: the Statement returns 1 columns, but the report has 2 columns from the "
        "database"}},
      {R"("CQ:SELECT 1" + )", {"Broken.cvr: Statement: position 17: expected a term after '+'"}},
      {R"("CQ:")", {"Broken.cvr: Statement: the statement is empty"}},
      {R"("CQ:SELECT '" + FXA([INV_INFO.A]) + "'")",
       {"Broken.cvr: Statement: position 17: FXA([INV_INFO.A]) has no value here"}},
  };
  for (const auto& [statement, parts] : cases) {
    SCOPED_TRACE(statement);
    CvrShape shape;
    shape.name = "Broken";
    shape.statement = statement;
    shape.columns = {{"A", "ACCTS.AcctNum", "String"}, {"B", "ACCTS.Balance", "Currency"}};
    try {
      Run(shape);
      ADD_FAILURE() << "ran";
    } catch (const Error& e) {
      for (const std::string& part : parts) {
        EXPECT_NE(std::string(e.what()).find(part), std::string::npos) << e.what();
      }
    }
  }
}

TEST_F(ReportRunnerTest, ProgressCanCancel) {
  RunSettings settings;
  int calls = 0;
  settings.progress = [&calls](const QString&, long long, long long) { return ++calls < 2; };
  EXPECT_THROW(Run(ActiveByCollector(), settings), Cancelled);
  EXPECT_EQ(calls, 2);
}

TEST_F(ReportRunnerTest, DatabaseUrls) {
  EXPECT_NO_THROW(GuardedConnection("sqlite://" + SmallDatabase()));
  const std::pair<const char*, const char*> cases[] = {
      {"/no/such/dealer.db", "the database file '/no/such/dealer.db' does not exist"},
      {"sqlite:///no/such/dealer.db", "the database file '/no/such/dealer.db' does not exist"},
      {"postgresql://u:secret@", nullptr},  // no database name; the password is not shown
  };
  for (const auto& [url, message] : cases) {
    try {
      GuardedConnection db(url);
      ADD_FAILURE() << url;
    } catch (const Error& e) {
      if (message) {
        EXPECT_STREQ(e.what(), message);
      }
      EXPECT_EQ(std::string(e.what()).find("secret"), std::string::npos) << e.what();
    }
  }
}

}  // namespace
}  // namespace cvve::reportengine
