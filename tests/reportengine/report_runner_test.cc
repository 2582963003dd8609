#include "reportengine/report_runner.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "base/error.h"
#include "report_test_support.h"
#include "reportengine/database.h"

namespace cvve::reportengine {
namespace {

using testing::ColumnSpec;
using testing::CvrSpec;
using testing::CvrXml;
using testing::Grouped;
using testing::SmallDatabase;
using testing::SqlRows;
using testing::SqlValue;
using testing::TempFolder;

std::string Cents(long double value) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.2f", static_cast<double>(std::round(value * 100) / 100));
  return buffer;
}

class ReportRunnerTest : public ::testing::Test {
 protected:
  ReportDefinition Define(const CvrSpec& spec) {
    return LoadReportDefinition(folder_.Write(spec.name + ".cvr", CvrXml(spec)));
  }
  ReportData Run(const CvrSpec& spec, RunSettings settings = {}) {
    Database db(SmallDatabase());
    return RunReport(Define(spec), db, settings);
  }

  TempFolder folder_;
};

// Active accounts of the North lot: a text, a currency, an integer, a date
// and two computed columns.
CvrSpec NorthLot() {
  CvrSpec spec;
  spec.name = "North Lot";
  spec.statement =
      R"("CQ:SELECT ACCTS.AcctNum,CUST_INFO.LastName,ACCTS.Balance,ACCTS.DaysLate,ACCTS.Next_Pmt_Due )"
      R"(FROM ACCTS INNER JOIN CUST_INFO ON CUST_INFO.CustID=ACCTS.CustID )"
      R"(WHERE ACCTS.Status='A' AND ACCTS.Lot='North' AND %USERWHERE% ORDER BY ACCTS.AcctNum ASC")";
  spec.columns = {{"Line", "$LINE", "String"},
                  {"Account", "ACCTS.AcctNum", "String"},
                  {"Name", "CUST_INFO.LastName", "String"},
                  {"Notes", "$BLANK", "String"},
                  {"Balance", "ACCTS.Balance", "Currency", "Right"},
                  {"Days Late", "ACCTS.DaysLate", "Integer", "Right"},
                  {"Next Due", "ACCTS.Next_Pmt_Due", "Date"}};
  spec.totals = spec.averages = spec.line_count = true;
  return spec;
}

TEST_F(ReportRunnerTest, UngroupedRowsValuesAndTotalsMatchTheDatabase) {
  const ReportData data = Run(NorthLot());
  const std::string db = SmallDatabase();
  const auto expected = SqlRows(
      db,
      "SELECT A.AcctNum, C.LastName, printf('%.2f', A.Balance), A.DaysLate, "
      "substr(A.Next_Pmt_Due,6,2)||'/'||substr(A.Next_Pmt_Due,9,2)||'/"
      "'||substr(A.Next_Pmt_Due,1,4) "
      "FROM ACCTS A JOIN CUST_INFO C ON C.CustID=A.CustID WHERE A.Status='A' AND A.Lot='North' "
      "ORDER BY A.AcctNum");
  ASSERT_GT(expected.size(), 20u);
  ASSERT_EQ(data.groups.size(), 1u);
  const ReportGroup& group = data.groups[0];
  ASSERT_EQ(data.RowCount(), static_cast<long long>(expected.size()));
  ASSERT_EQ(group.cells.size(), expected.size() * 7);
  for (std::size_t r = 0; r < expected.size(); ++r) {
    SCOPED_TRACE(r);
    const QString* row = &group.cells[r * 7];
    EXPECT_EQ(row[0].toStdString(), std::to_string(r + 1));  // $LINE
    EXPECT_EQ(row[1].toStdString(), expected[r][0]);
    EXPECT_EQ(row[2].toStdString(), expected[r][1]);
    EXPECT_TRUE(row[3].isEmpty());  // other computed fields stay empty
    const std::string money = expected[r][2];
    EXPECT_EQ(row[4].toStdString(),
              money[0] == '-' ? "-$" + Grouped(money.substr(1)) : "$" + Grouped(money));
    EXPECT_EQ(row[5].toStdString(), expected[r][3]);
    EXPECT_EQ(row[6].toStdString(), expected[r][4]);
  }
  // Totals and averages to the cent, from the database's own arithmetic.
  EXPECT_EQ(Cents(data.totals.sum[4]),
            SqlValue(db,
                     "SELECT printf('%.2f', SUM(Balance)) FROM ACCTS WHERE Status='A' AND "
                     "Lot='North'"));
  EXPECT_EQ(Cents(data.totals.sum[4] / data.totals.count[4]),
            SqlValue(db,
                     "SELECT printf('%.2f', AVG(Balance)) FROM ACCTS WHERE Status='A' AND "
                     "Lot='North'"));
  EXPECT_EQ(Cents(data.totals.sum[5]),
            SqlValue(db,
                     "SELECT printf('%.2f', SUM(DaysLate)) FROM ACCTS WHERE Status='A' AND "
                     "Lot='North'"));
  EXPECT_EQ(data.totals.count[1], 0);  // text columns are not summed
  EXPECT_TRUE(data.warnings.empty());
}

TEST_F(ReportRunnerTest, UserWhereNarrowsTheRows) {
  RunSettings settings;
  settings.user_where = "ACCTS.Collector='bob'";
  const ReportData data = Run(NorthLot(), settings);
  const std::string expected =
      SqlValue(SmallDatabase(),
               "SELECT COUNT(*) FROM ACCTS WHERE Status='A' AND Lot='North' AND Collector='bob'");
  EXPECT_EQ(std::to_string(data.RowCount()), expected);
  EXPECT_LT(data.RowCount(), Run(NorthLot()).RowCount());
}

CvrSpec LateByCollector() {
  CvrSpec spec;
  spec.name = "Late By Collector";
  spec.grouped = true;
  spec.group_report_field = "INV_INFO.Collector";
  spec.group_title = "Collector";
  spec.group_statement =
      R"("CQ:SELECT DISTINCT ACCTS.Collector FROM ACCTS WHERE ACCTS.Status='A' AND )"
      R"(ACCTS.DaysLate BETWEEN 1 AND 9999 ORDER BY ACCTS.Collector ASC")";
  spec.statement =
      R"("CQ:SELECT ACCTS.AcctNum,ACCTS.PastDueAmt,ACCTS.Balance FROM ACCTS WHERE ACCTS.Status='A' )"
      R"(AND ACCTS.DaysLate BETWEEN 1 AND 9999 AND ACCTS.Collector='" + FXA([INV_INFO.Collector]) + "' )"
      R"( ORDER BY ACCTS.DaysLate DESC")";
  spec.columns = {{"Account", "ACCTS.AcctNum", "String"},
                  {"Past Due", "ACCTS.PastDueAmt", "Currency", "Right"},
                  {"Balance", "ACCTS.Balance", "Currency", "Right"}};
  spec.totals = spec.averages = spec.line_count = true;
  return spec;
}

TEST_F(ReportRunnerTest, GroupedRowsTotalsAndAveragesPerGroup) {
  const ReportData data = Run(LateByCollector());
  const auto expected = SqlRows(
      SmallDatabase(),
      "SELECT Collector, COUNT(*), printf('%.2f', SUM(PastDueAmt)), printf('%.2f', "
      "AVG(PastDueAmt)), "
      "printf('%.2f', SUM(Balance)), printf('%.2f', AVG(Balance)) FROM ACCTS "
      "WHERE Status='A' AND DaysLate BETWEEN 1 AND 9999 GROUP BY Collector ORDER BY Collector");
  ASSERT_EQ(data.groups.size(), expected.size());
  ASSERT_GE(expected.size(), 3u);
  for (std::size_t g = 0; g < expected.size(); ++g) {
    const ReportGroup& group = data.groups[g];
    SCOPED_TRACE(expected[g][0]);
    EXPECT_EQ(group.value.toStdString(), expected[g][0]);
    EXPECT_EQ(group.heading.toStdString(), "Collector: " + expected[g][0]);
    EXPECT_EQ(std::to_string(group.totals.rows), expected[g][1]);
    EXPECT_EQ(Cents(group.totals.sum[1]), expected[g][2]);
    EXPECT_EQ(Cents(group.totals.sum[1] / group.totals.count[1]), expected[g][3]);
    EXPECT_EQ(Cents(group.totals.sum[2]), expected[g][4]);
    EXPECT_EQ(Cents(group.totals.sum[2] / group.totals.count[2]), expected[g][5]);
  }
  const auto overall = SqlRows(
      SmallDatabase(),
      "SELECT COUNT(*), printf('%.2f', SUM(Balance)), printf('%.2f', AVG(Balance)) FROM ACCTS "
      "WHERE Status='A' AND DaysLate BETWEEN 1 AND 9999");
  EXPECT_EQ(std::to_string(data.RowCount()), overall[0][0]);
  EXPECT_EQ(Cents(data.totals.sum[2]), overall[0][1]);
  EXPECT_EQ(Cents(data.totals.sum[2] / data.totals.count[2]), overall[0][2]);
}

TEST_F(ReportRunnerTest, GroupValuesAreQuotedAndEmptyGroupsLeftOut) {
  // Last names include O'Brien: FXA doubles its quote inside the literal.
  const std::string obrien =
      SqlValue(SmallDatabase(), "SELECT COUNT(*) FROM CUST_INFO WHERE LastName='O''Brien'");
  ASSERT_NE(obrien, "0") << "the test database should hold an O'Brien";
  CvrSpec spec;
  spec.grouped = true;
  spec.group_report_field = "INV_INFO.LastName";
  spec.group_title = "Name";
  spec.group_statement =
      R"("CQ:SELECT 'Nobody Here' UNION ALL SELECT DISTINCT LastName FROM CUST_INFO )"
      R"sql(WHERE LastName IN ('O''Brien', 'Smith')")sql";
  spec.statement =
      R"("CQ:SELECT CustID FROM CUST_INFO WHERE LastName='" + FXA([INV_INFO.LastName]) + "'")";
  spec.columns = {{"Customer", "CUST_INFO.CustID", "String"}};
  const ReportData data = Run(spec);
  std::map<std::string, long long> rows;
  for (const ReportGroup& group : data.groups) rows[group.value.toStdString()] = group.totals.rows;
  EXPECT_EQ(rows.count("Nobody Here"), 0u);
  EXPECT_EQ(std::to_string(rows["O'Brien"]), obrien);
  EXPECT_EQ(std::to_string(rows["Smith"]),
            SqlValue(SmallDatabase(), "SELECT COUNT(*) FROM CUST_INFO WHERE LastName='Smith'"));
}

TEST_F(ReportRunnerTest, DateVariablesAreTakenInEitherForm) {
  CvrSpec spec;
  spec.statement =
      R"("CQ:SELECT AcctNum FROM ACCTS WHERE OpenDate BETWEEN '" + $START_DATE + "' AND '" + $END_DATE + "'")";
  spec.columns = {{"Account", "ACCTS.AcctNum", "String"}};
  spec.variables = {{"$START_DATE", "Date"}, {"$END_DATE", "Date"}};
  const std::string expected =
      SqlValue(SmallDatabase(),
               "SELECT COUNT(*) FROM ACCTS WHERE OpenDate BETWEEN '2025-06-01' AND '2026-03-16'");
  ASSERT_NE(expected, "0");
  for (const auto& [start, end] :
       {std::pair{"06/01/2025", "3/16/2026"}, std::pair{"2025-06-01", "2026-03-16"}}) {
    RunSettings settings;
    settings.variables = {{"$start_date", start}, {"END_DATE", end}};
    EXPECT_EQ(std::to_string(Run(spec, settings).RowCount()), expected) << start;
  }
  // A missing variable is empty, with a warning.
  RunSettings settings;
  settings.variables = {{"$START_DATE", "2025-06-01"}};
  const ReportData data = Run(spec, settings);
  EXPECT_EQ(data.RowCount(), 0);
  ASSERT_EQ(data.warnings.size(), 1u);
  EXPECT_EQ(data.warnings[0], "the variable $END_DATE has no value; it is taken as empty");
}

TEST_F(ReportRunnerTest, FailuresNameTheReportAndTheStatement) {
  struct Case {
    const char* name;
    std::string statement;
    std::vector<ColumnSpec> columns;
    std::vector<std::string> parts;
  };
  const Case cases[] = {
      {"Bad Sql",
       R"("CQ:SELECT Nope FROM ACCTS")",
       {{"A", "ACCTS.Nope", "String"}},
       {"Bad Sql.cvr: the Statement failed on ", "no such column: Nope",
        "The statement was: SELECT Nope FROM ACCTS"}},
      {"Too Few",
       R"("CQ:SELECT AcctNum FROM ACCTS")",
       {{"A", "ACCTS.AcctNum", "String"}, {"B", "ACCTS.Balance", "Currency"}},
       {"Too Few.cvr: the Statement returns 1 columns, but the report has 2 columns from the "
        "database"}},
      {"Bad Expression",
       R"("CQ:SELECT 1" + )",
       {{"A", "X.A", "String"}},
       {"Bad Expression.cvr: Statement: position 17: expected a term after '+'"}},
      {"Only Prefix",
       R"("CQ:")",
       {{"A", "X.A", "String"}},
       {"Only Prefix.cvr: Statement: the statement is empty"}},
      {"Fxa Ungrouped",
       R"("CQ:SELECT '" + FXA([INV_INFO.A]) + "'")",
       {{"A", "X.A", "String"}},
       {"Fxa Ungrouped.cvr: Statement: position 17: FXA([INV_INFO.A]) has no value here"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    CvrSpec spec;
    spec.name = c.name;
    spec.statement = c.statement;
    spec.columns = c.columns;
    try {
      Run(spec);
      ADD_FAILURE() << "ran";
    } catch (const Error& e) {
      const std::string message = e.what();
      for (const std::string& part : c.parts) {
        EXPECT_NE(message.find(part), std::string::npos) << message;
      }
    }
  }
}

TEST_F(ReportRunnerTest, ProgressCanCancel) {
  RunSettings settings;
  int calls = 0;
  settings.progress = [&calls](const QString&, long long, long long) { return ++calls < 2; };
  EXPECT_THROW(Run(LateByCollector(), settings), Cancelled);
  EXPECT_EQ(calls, 2);
}

TEST_F(ReportRunnerTest, DatabaseUrls) {
  EXPECT_NO_THROW(Database("sqlite://" + SmallDatabase()));
  for (const std::string& url :
       {std::string("/no/such/dealer.db"), std::string("sqlite:///no/such/dealer.db")}) {
    try {
      Database db(url);
      ADD_FAILURE() << url;
    } catch (const Error& e) {
      EXPECT_EQ(std::string(e.what()), "the database file '/no/such/dealer.db' does not exist");
    }
  }
  try {
    Database db("postgresql://u:secret@");
    ADD_FAILURE() << "no database name";
  } catch (const Error& e) {
    EXPECT_EQ(std::string(e.what()).find("secret"), std::string::npos) << e.what();
  }
}

}  // namespace
}  // namespace cvve::reportengine
