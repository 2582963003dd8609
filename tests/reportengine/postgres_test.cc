// Reports on PostgreSQL through Qt's QPSQL driver, on the throwaway cluster of
// postgres_cluster.h: the engine's sums against the server's own, and the
// guard: every kind of write refused with the content unchanged, the limits,
// Cancel at the server.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <chrono>
#include <optional>
#include <thread>

#include "postgres_cluster.h"
#include "report_test_support.h"
#include "reportengine/guard/background_runner.h"
#include "reportengine/guard/guarded_connection.h"
#include "reportengine/report_runner.h"

namespace cvve::reportengine {
namespace {

using testing::ActiveByCollector;
using testing::Cents;
using testing::CvrShape;
using testing::Define;
using testing::PostgresCluster;
using testing::SmallDatabase;
using testing::SqlRows;
using testing::TempFolder;

// The accounts of the small database in a new database of the cluster.
std::string LoadAccounts(PostgresCluster& cluster, const std::string& name) {
  const std::string db = cluster.CreateDatabase(name);
  EXPECT_EQ(cluster.Exec(db,
                         "CREATE TABLE ACCTS (AcctNum integer PRIMARY KEY, CustID integer, "
                         "StockNum text, Collector text, Status text, DaysLate integer, "
                         "Balance numeric(12,2), OpenDate date)"),
            "");
  EXPECT_EQ(cluster.Exec(db, "CREATE TABLE CUST_INFO (CustID integer PRIMARY KEY, LastName text)"),
            "");
  EXPECT_EQ(cluster.Exec(db, "CREATE TABLE INV_INFO (StockNum text PRIMARY KEY, Make text)"), "");
  std::string values;
  for (const auto& row :
       SqlRows(SmallDatabase(), "SELECT AcctNum, CustID, quote(StockNum), quote(Collector), "
                                "quote(Status), DaysLate, Balance, quote(OpenDate) FROM ACCTS")) {
    values += std::string(values.empty() ? "" : ",") + "(" + row[0] + "," + row[1] + "," + row[2] +
              "," + row[3] + "," + row[4] + "," + row[5] + "," + row[6] + "," + row[7] + ")";
  }
  EXPECT_EQ(cluster.Exec(db, "INSERT INTO ACCTS VALUES " + values), "");
  EXPECT_EQ(cluster.Exec(db, "INSERT INTO CUST_INFO SELECT DISTINCT CustID, 'Name' || CustID "
                             "FROM ACCTS"),
            "");
  EXPECT_EQ(cluster.Exec(db, "INSERT INTO INV_INFO SELECT DISTINCT StockNum, 'Make' FROM ACCTS "
                             "WHERE StockNum IS NOT NULL"),
            "");
  return db;
}

// The content and the shape of the database, as one text.
std::string Checksum(PostgresCluster& cluster, const std::string& db) {
  return cluster.Value(
      db,
      "SELECT (SELECT md5(string_agg(t::text, '|' ORDER BY t::text)) FROM ACCTS t) || ':' || "
      "(SELECT md5(string_agg(c.relname || c.relkind::text, ',' ORDER BY c.relname)) FROM pg_class c "
      "WHERE c.relnamespace = 'public'::regnamespace) || ':' || "
      "(SELECT count(*) FROM pg_proc WHERE pronamespace = 'public'::regnamespace)");
}

TEST(PostgresReportTest, GroupedReportMatchesTheServersSums) {
  PostgresCluster& cluster = PostgresCluster::Shared();
  CVVE_REQUIRE_POSTGRES(cluster);
  const std::string name = LoadAccounts(cluster, "sums");
  GuardedConnection db(cluster.Url(name));

  CvrShape shape = ActiveByCollector(R"( AND OpenDate >= '" + $SINCE + "')");
  shape.variables = {{"$SINCE", "Date"}};
  TempFolder folder;
  RunSettings settings;
  settings.variables = {{"$SINCE", "01/01/2025"}};
  const ReportData data = RunReport(Define(folder, shape), db, settings);

  // The expected values come from the server's own arithmetic.
  const auto expected = [&](const std::string& sql) { return cluster.Value(name, sql); };
  const std::string groups = expected(
      "SELECT string_agg(Collector || '/' || n || '/' || total || '/' || average || '/' || first, "
      "';' ORDER BY Collector) FROM (SELECT Collector, COUNT(*) AS n, "
      "to_char(SUM(Balance), 'FM999999990.00') AS total, "
      "to_char(round(AVG(Balance), 2), 'FM999999990.00') AS average, "
      "to_char(MIN(OpenDate), 'MM/DD/YYYY') AS first "
      "FROM ACCTS WHERE Status='A' AND OpenDate >= '2025-01-01' GROUP BY Collector) g");
  std::string actual;
  for (const ReportGroup& group : data.groups) {
    // Dates come back from the server as dates and are shown MM/DD/YYYY.
    QString first;
    for (std::size_t r = 1; r < group.cells.size(); r += 4) {
      if (first.isEmpty() || QDate::fromString(group.cells[r], QStringLiteral("MM/dd/yyyy")) <
                                 QDate::fromString(first, QStringLiteral("MM/dd/yyyy"))) {
        first = group.cells[r];
      }
    }
    actual += std::string(actual.empty() ? "" : ";") + group.value.toStdString() + "/" +
              std::to_string(group.totals.rows) + "/" + Cents(group.totals.sum[3]) + "/" +
              Cents(group.totals.sum[3] / group.totals.count[3]) + "/" + first.toStdString();
  }
  EXPECT_EQ(actual, groups);
  EXPECT_GE(data.groups.size(), 3u);
}

TEST(PostgresGuardTest, EveryKindOfWriteIsRefusedAndNothingChanges) {
  PostgresCluster& cluster = PostgresCluster::Shared();
  CVVE_REQUIRE_POSTGRES(cluster);
  const std::string name = LoadAccounts(cluster, "writes");
  // A function with a side effect, made by the superuser beforehand: calling
  // it from a SELECT must still change nothing.
  ASSERT_EQ(cluster.Exec(name,
                         "CREATE FUNCTION wipe_accounts() RETURNS integer LANGUAGE plpgsql "
                         "VOLATILE AS $$ BEGIN DELETE FROM ACCTS; RETURN 0; END $$"),
            "");
  const std::string before = Checksum(cluster, name);
  const struct {
    const char* statement;
    const char* names;  // what the message must name
  } cases[] = {
      {"DELETE FROM ACCTS", "a statement that returns no rows (DELETE)"},
      {"UPDATE ACCTS SET Balance = 0", "(UPDATE)"},
      {"INSERT INTO ACCTS (AcctNum) VALUES (999999)", "(INSERT)"},
      {"DROP TABLE ACCTS", "(DROP)"},
      {"CREATE TABLE x (a integer)", "(CREATE)"},
      {"ALTER TABLE ACCTS ADD COLUMN x integer", "(ALTER)"},
      {"TRUNCATE ACCTS", "(TRUNCATE)"},
      {"SELECT 1; DELETE FROM ACCTS", "a second statement"},
      {"SELECT AcctNum FROM ACCTS WHERE (DaysLate >= 0); DELETE FROM ACCTS; --) ORDER BY 1",
       "a second statement"},
      {"WITH d AS (DELETE FROM ACCTS RETURNING *) SELECT count(*) FROM d", "a write"},
      {"DELETE FROM ACCTS RETURNING AcctNum", "a write"},
      {"UPDATE ACCTS SET Balance = 0 RETURNING AcctNum", "a write"},
      {"SELECT wipe_accounts()", "a write"},
      {"EXPLAIN ANALYZE DELETE FROM ACCTS", "a write"},
      {"COPY ACCTS TO '/tmp/cvve-accounts.csv'", "(COPY)"},
      {"VACUUM", "(VACUUM)"},
      {"SET default_transaction_read_only = off", "(SET)"},
      {"COMMIT", "(COMMIT)"},
      {"CALL nothing()", nullptr},  // no such procedure: the server's own error
  };
  GuardedConnection db(cluster.Url(name));
  for (const auto& c : cases) {
    SCOPED_TRACE(c.statement);
    try {
      GuardedQuery query = db.Execute(c.statement);
      while (query.Next()) {
      }
      ADD_FAILURE() << "ran";
    } catch (const GuardError& e) {
      EXPECT_EQ(e.kind(), GuardError::Kind::kRefused);
      EXPECT_NE(c.names, nullptr) << e.what();
      if (c.names != nullptr) {
        EXPECT_NE(std::string(e.what()).find("reports only read the database"), std::string::npos)
            << e.what();
        EXPECT_NE(std::string(e.what()).find(c.names), std::string::npos) << e.what();
      }
    } catch (const Error& e) {
      EXPECT_EQ(c.names, nullptr) << e.what();
    }
  }
  // A read after all that, on the same connection, and the content as it was.
  GuardedQuery query = db.Execute("SELECT count(*) FROM ACCTS");
  ASSERT_TRUE(query.Next());
  EXPECT_EQ(query.Value(0).toInt(), 300);
  EXPECT_EQ(Checksum(cluster, name), before);
  EXPECT_EQ(cluster.Value(name, "SELECT count(*) FROM ACCTS"), "300");
}

TEST(PostgresGuardTest, LimitsAndCancelStopTheStatementAtTheServer) {
  PostgresCluster& cluster = PostgresCluster::Shared();
  CVVE_REQUIRE_POSTGRES(cluster);
  const std::string name = LoadAccounts(cluster, "limits");
  const auto sleeping = [&] {
    return cluster.Value(name,
                         "SELECT count(*) FROM pg_stat_activity WHERE state = 'active' AND "
                         "query LIKE 'SELECT pg_sleep%'");
  };
  {
    GuardedConnection db(cluster.Url(name), QueryLimits{300, 1'000'000});
    const auto start = std::chrono::steady_clock::now();
    try {
      GuardedQuery query = db.Execute("SELECT pg_sleep(20)");
      ADD_FAILURE() << "ran";
    } catch (const GuardError& e) {
      EXPECT_EQ(e.kind(), GuardError::Kind::kTimeout);
      EXPECT_NE(std::string(e.what()).find("time limit of 0.3 seconds"), std::string::npos)
          << e.what();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(sleeping(), "0");
  }
  {
    GuardedConnection db(cluster.Url(name), QueryLimits{60'000, 1000});
    GuardedQuery query = db.Execute("SELECT i FROM generate_series(1, 200000) i");
    long long rows = 0;
    try {
      while (query.Next()) ++rows;
      ADD_FAILURE() << "no limit";
    } catch (const GuardError& e) {
      EXPECT_EQ(e.kind(), GuardError::Kind::kRowLimit);
      EXPECT_NE(std::string(e.what()).find("row limit of 1000 rows"), std::string::npos);
    }
    EXPECT_EQ(rows, 1000);
  }
  // Cancel from another thread, through the background runner.
  BackgroundRunner runner(cluster.Url(name), QueryLimits{});
  std::optional<RunOutcome> outcome;
  QObject::connect(&runner, &BackgroundRunner::finished,
                   [&outcome](const RunOutcome& result) { outcome = result; });
  ASSERT_TRUE(runner.Start("SELECT pg_sleep(30)"));
  const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (sleeping() != "1" && std::chrono::steady_clock::now() < until) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_EQ(sleeping(), "1");
  runner.Cancel();
  ASSERT_TRUE(runner.Wait(10'000));
  QCoreApplication::processEvents();
  ASSERT_TRUE(outcome.has_value());
  EXPECT_EQ(outcome->status, RunOutcome::Status::kCancelled) << outcome->error;
  EXPECT_LT(outcome->elapsed_ms, 10'000);
  EXPECT_EQ(sleeping(), "0");
  // And the connection is usable after a cancel.
  GuardedConnection db(cluster.Url(name));
  std::thread canceller([&db] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    db.Cancel();
  });
  EXPECT_THROW(db.Execute("SELECT pg_sleep(30)"), Cancelled);
  canceller.join();
  GuardedQuery query = db.Execute("SELECT count(*) FROM ACCTS");
  ASSERT_TRUE(query.Next());
  EXPECT_EQ(query.Value(0).toInt(), 300);
}

TEST(PostgresReportTest, ServiceFileNamesTheWholeConnection) {
  PostgresCluster& cluster = PostgresCluster::Shared();
  CVVE_REQUIRE_POSTGRES(cluster);

  TempFolder folder;
  const std::string services =
      folder.Write("pg_service.conf", "[dealer]\nhost=" + cluster.Folder() + "\nport=" +
                                          std::to_string(cluster.Port()) +
                                          "\ndbname=postgres\nuser=cvve\n");
  ASSERT_EQ(setenv("PGSERVICEFILE", services.c_str(), 1), 0);
  {
    GuardedConnection db("postgresql:///?service=dealer");
    GuardedQuery query = db.Execute("SELECT current_user, current_database()");
    ASSERT_TRUE(query.Next());
    EXPECT_EQ(query.Value(0).toString(), QStringLiteral("cvve"));
    EXPECT_EQ(query.Value(1).toString(), QStringLiteral("postgres"));
  }
  unsetenv("PGSERVICEFILE");

  // Neither a database nor a service: no connection to guess at.
  EXPECT_THROW(GuardedConnection("postgresql://localhost/"), cvve::Error);
}

}  // namespace
}  // namespace cvve::reportengine
