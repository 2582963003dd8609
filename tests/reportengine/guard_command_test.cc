// `viewedit report` and `viewedit script` as a user runs them, on SQLite and
// on PostgreSQL: every refused statement ends with a non-zero exit code and
// our message (never "N rows"), bad variable values with exit code 2, the
// limits with exit code 4 from the command line or the settings file, and a
// filter value typed into a report's profile cannot delete anything.
#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QFile>
#include <filesystem>
#include <functional>

#include "postgres_cluster.h"
#include "report_test_support.h"

namespace cvve::reportengine {
namespace {

using testing::CvrShape;
using testing::CvrXml;
using testing::PostgresCluster;
using testing::RunCommand;
using testing::SmallDatabase;
using testing::TempFolder;

struct Case {
  std::string arguments;  // after `report FILE --database URL`
  std::string statement;  // the report's statement, as SQL
  int code;
  std::string message;
};

class GuardCommandTest : public ::testing::Test {
 protected:
  int Run(const std::string& arguments, std::string* output) {
    return RunCommand("QT_QPA_PLATFORM=offscreen XDG_CACHE_HOME='" + folder_.Path("cache") +
                          "' XDG_CONFIG_HOME='" + folder_.Path("config") + "' '" VIEWEDIT_PATH
                          "' " + arguments,
                      output);
  }

  // A report over ACCTS whose statement is `sql`, with a Date variable.
  std::string Report(const std::string& sql) {
    CvrShape shape;
    shape.statement = "\"" + ReplaceAll(sql, "\"", "\"\"") + "\"";
    shape.columns = {{"Account", "AcctNum", "String"}};
    shape.variables = {{"$START_DATE", "Date"}};
    return folder_.Write("Guarded " + std::to_string(++reports_) + ".cvr", CvrXml(shape));
  }

  void RunCases(const std::string& url, const std::vector<Case>& cases,
                const std::function<std::string()>& checksum) {
    const std::string before = checksum();
    for (const Case& c : cases) {
      SCOPED_TRACE(c.statement + " " + c.arguments);
      std::string output;
      const std::string csv = folder_.Path("out.csv");
      EXPECT_EQ(Run("report '" + Report(c.statement) + "' --database '" + url + "' --csv '" +
                        csv + "' " + c.arguments,
                    &output),
                c.code)
          << output;
      EXPECT_NE(output.find(c.message), std::string::npos) << output;
      if (c.code != 0) {
        EXPECT_EQ(output.find(" rows ->"), std::string::npos) << output;
      }
    }
    EXPECT_EQ(checksum(), before);
  }

  // A report profile built in report mode with `0); DELETE FROM ACCTS; --`
  // typed as the "Days late" filter's value, saved, then previewed.
  std::string InjectThroughAProfile(const std::string& url) {
    const std::string views = folder_.Path("views");
    RunCommand("cp -r '" CVVE_DEMO_DIR "' '" + views + "'");
    const std::string script = folder_.Write("inject.script",
                                             "open report\n"
                                             "input Injected\n"
                                             "click cmdNewProfile\n"
                                             "select cmbDataSet Accounts\n"
                                             "dblclick lstAvailColumns Account #\n"
                                             "check lstFilters 6 on\n"
                                             "cell lstFilters 6 Data1\n"
                                             "type 0); DELETE FROM ACCTS; --\n"
                                             "blur\n"
                                             "click cmdSaveProfile\n"
                                             "blur cmdSaveProfile\n"
                                             "click cmdPreviewReport\n"
                                             "messages\n"
                                             "click cmdCancel\n");
    std::string output;
    EXPECT_EQ(Run("--views-folder '" + views + "' script '" + script + "' --database '" + url +
                      "'",
                  &output),
              0)
        << output;
    std::string cvr;
    QFile file(QString::fromStdString(views + "/Custom Reports/Injected.cvr"));
    if (file.open(QIODevice::ReadOnly)) cvr = file.readAll().toStdString();
    EXPECT_NE(cvr.find("0); DELETE FROM ACCTS; --"), std::string::npos) << cvr;
    return output;
  }

  static std::string ReplaceAll(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
      text.replace(at, from.size(), to);
    }
    return text;
  }

  TempFolder folder_;
  int reports_ = 0;
};

std::vector<Case> CommonCases() {
  return {
      {"", "SELECT AcctNum FROM ACCTS ORDER BY 1", 0, "viewedit report: 300 rows"},
      {"", "DELETE FROM ACCTS", 3, "reports only read the database"},
      {"", "UPDATE ACCTS SET Balance = 0", 3, "reports only read the database"},
      {"", "DROP TABLE ACCTS", 3, "reports only read the database"},
      {"", "SELECT 1; DELETE FROM ACCTS", 3, "a second statement"},
      {"", "DELETE FROM ACCTS RETURNING AcctNum", 3, "reports only read the database"},
      {"--set START_DATE=13/45/2026", "SELECT AcctNum FROM ACCTS", 2,
       "the value '13/45/2026' of the variable $START_DATE is not a date"},
      {"--set START_DATE=02/31/2026", "SELECT AcctNum FROM ACCTS", 2, "'02/31/2026'"},
      {"--set START_DATE=tomorrow", "SELECT AcctNum FROM ACCTS", 2, "'tomorrow'"},
      {"--set START_DATE=02/28/2026", "SELECT AcctNum FROM ACCTS", 0, "300 rows"},
      {"--row-limit 5", "SELECT AcctNum FROM ACCTS", 4,
       "the statement returned more than the row limit of 5 rows and was stopped; raise it "
       "with --row-limit N"},
      {"--row-limit 300", "SELECT AcctNum FROM ACCTS", 0, "300 rows"},
  };
}

TEST_F(GuardCommandTest, SqliteExitCodes) {
  const std::string db = folder_.Path("dealer.db");
  std::filesystem::copy_file(SmallDatabase(), db);
  const auto checksum = [&db] {
    QFile file(QString::fromStdString(db));
    file.open(QIODevice::ReadOnly);
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256).toHex()
        .toStdString();
  };
  std::vector<Case> cases = CommonCases();
  const std::string copy = folder_.Path("copy.db");
  cases.push_back({"", "VACUUM INTO '" + copy + "'", 3, "VACUUM"});
  cases.push_back({"", "ATTACH DATABASE '" + folder_.Path("o.db") + "' AS o", 3, "ATTACH"});
  cases.push_back({"", "PRAGMA user_version = 3", 3, "PRAGMA user_version"});
  cases.push_back({"--timeout 0.3",
                   "WITH RECURSIVE r(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM r) "
                   "SELECT count(*) FROM r",
                   4, "the time limit of 0.3 seconds"});
  RunCases(db, cases, checksum);
  EXPECT_FALSE(std::filesystem::exists(copy));

  // The settings file sets the limits; the command line still wins.
  std::filesystem::create_directories(folder_.Path("config/cvviewedit"));
  folder_.Write("config/cvviewedit/cvviewedit.ini", "[database]\nrow_limit=7\n");
  RunCases(db,
           {{"", "SELECT AcctNum FROM ACCTS", 4,
             "row limit of 7 rows and was stopped; raise it with --row-limit N or row_limit in "
             "the [database] section of " +
                 folder_.Path("config/cvviewedit/cvviewedit.ini")},
            {"--row-limit 1000", "SELECT AcctNum FROM ACCTS", 0, "300 rows"}},
           checksum);
  folder_.Write("config/cvviewedit/cvviewedit.ini", "[database]\ntimeout_seconds=soon\n");
  RunCases(db, {{"", "SELECT AcctNum FROM ACCTS", 2, "timeout_seconds in the [database] section"}},
           checksum);
  std::filesystem::remove(folder_.Path("config/cvviewedit/cvviewedit.ini"));

  const std::string output = InjectThroughAProfile(db);
  EXPECT_NE(output.find("reports only read the database: a second statement (DELETE FROM ACCTS"),
            std::string::npos)
      << output;
  EXPECT_EQ(checksum().size(), 64u);
  EXPECT_EQ(testing::SqlValue(db, "SELECT count(*) FROM ACCTS"), "300");
}

TEST_F(GuardCommandTest, PostgresExitCodes) {
  PostgresCluster& cluster = PostgresCluster::Shared();
  CVVE_REQUIRE_POSTGRES(cluster);
  const std::string name = cluster.CreateDatabase("command");
  ASSERT_EQ(cluster.Exec(name, "CREATE TABLE ACCTS (AcctNum integer PRIMARY KEY, CustID integer, "
                               "StockNum text, Status text, DaysLate integer, Balance numeric)"),
            "");
  ASSERT_EQ(cluster.Exec(name, "CREATE TABLE CUST_INFO (CustID integer PRIMARY KEY)"), "");
  ASSERT_EQ(cluster.Exec(name, "CREATE TABLE INV_INFO (StockNum text PRIMARY KEY)"), "");
  ASSERT_EQ(cluster.Exec(name, "INSERT INTO CUST_INFO SELECT i FROM generate_series(1, 300) i"),
            "");
  ASSERT_EQ(cluster.Exec(name, "INSERT INTO ACCTS SELECT i, i, NULL, 'A', i % 90, i * 10.5 "
                               "FROM generate_series(1, 300) i"),
            "");
  ASSERT_EQ(cluster.Exec(name, "CREATE FUNCTION wipe() RETURNS integer LANGUAGE plpgsql "
                               "AS $$ BEGIN DELETE FROM ACCTS; RETURN 0; END $$"),
            "");
  const auto checksum = [&cluster, &name] {
    return cluster.Value(name, "SELECT md5(string_agg(t::text, '|' ORDER BY t::text)) FROM ACCTS t");
  };
  std::vector<Case> cases = CommonCases();
  cases.push_back({"", "WITH d AS (DELETE FROM ACCTS RETURNING *) SELECT count(*) FROM d", 3,
                   "a write"});
  cases.push_back({"", "SELECT wipe()", 3, "a write"});
  cases.push_back({"--timeout 0.3", "SELECT pg_sleep(20)", 4, "the time limit of 0.3 seconds"});
  RunCases(cluster.Url(name), cases, checksum);

  const std::string output = InjectThroughAProfile(cluster.Url(name));
  EXPECT_NE(output.find("reports only read the database: a second statement"), std::string::npos)
      << output;
  EXPECT_EQ(cluster.Value(name, "SELECT count(*) FROM ACCTS"), "300");
}

}  // namespace
}  // namespace cvve::reportengine
