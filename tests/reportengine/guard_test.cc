// The guarded connection on SQLite: every kind of write is refused before it
// runs and the file stays byte for byte the same; the time and row limits end
// a statement with messages that say how to raise them; Cancel stops a
// statement inside SQLite; the background runner delivers rows and cancels.
#include "reportengine/guard/guarded_connection.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <chrono>
#include <utility>
#include <filesystem>
#include <thread>

#include "report_test_support.h"
#include "reportengine/guard/background_runner.h"
#include "reportengine/report_runner.h"
#include "reportengine/value_format.h"

namespace cvve::reportengine {
namespace {

using testing::CvrShape;
using testing::Define;
using testing::SmallDatabase;
using testing::TempFolder;

// A statement SQLite computes for as long as it is let.
constexpr const char* kEndless =
    "WITH RECURSIVE r(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM r) SELECT count(*) FROM r";

std::string FileChecksum(const std::string& path) {
  QFile file(QString::fromStdString(path));
  if (!file.open(QIODevice::ReadOnly)) return "unreadable";
  return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256).toHex().toStdString();
}

// Each test works on its own copy: a guard that failed must not spoil the
// database the other tests read.
class GuardTest : public ::testing::Test {
 protected:
  GuardTest() {
    db_ = folder_.Path("dealer.db");
    std::filesystem::copy_file(SmallDatabase(), db_);
  }

  GuardError::Kind RefusalKind(GuardedConnection& connection, const std::string& statement,
                               std::string* message) {
    try {
      GuardedQuery query = connection.Execute(statement);
      while (query.Next()) {
      }
    } catch (const GuardError& e) {
      *message = e.what();
      return e.kind();
    } catch (const std::exception& e) {
      *message = e.what();
      ADD_FAILURE() << "not refused by the guard: " << e.what();
      return GuardError::Kind::kTimeout;
    }
    ADD_FAILURE() << "ran";
    return GuardError::Kind::kTimeout;
  }

  TempFolder folder_;
  std::string db_;
};

TEST_F(GuardTest, EveryKindOfWriteIsRefusedAndTheFileStaysTheSame) {
  const std::string before = FileChecksum(db_);
  const std::string copy = folder_.Path("copy.db");
  const std::string other = folder_.Path("other.db");
  const struct {
    std::string statement;
    std::string names;  // what the message must name
  } cases[] = {
      {"DELETE FROM ACCTS", "deleting from ACCTS"},
      {"UPDATE ACCTS SET Balance = 0", "writing into ACCTS (UPDATE)"},
      {"INSERT INTO ACCTS (AcctNum) VALUES (999999)", "writing into ACCTS (INSERT)"},
      {"INSERT INTO ACCTS (AcctNum) SELECT AcctNum + 100000 FROM ACCTS RETURNING AcctNum",
       "writing into ACCTS"},
      {"DELETE FROM ACCTS RETURNING AcctNum", "deleting from ACCTS"},
      {"WITH d AS (SELECT AcctNum FROM ACCTS) DELETE FROM ACCTS WHERE AcctNum IN d",
       "deleting from ACCTS"},
      {"DROP TABLE ACCTS", "schema"},
      {"CREATE TABLE X (a)", "schema"},
      {"CREATE TEMP TABLE X (a)", "schema"},
      {"CREATE INDEX ix ON ACCTS (Balance)", "schema"},
      {"ALTER TABLE ACCTS ADD COLUMN x", "ALTER TABLE"},
      {"SELECT 1; DELETE FROM ACCTS", "a second statement (DELETE FROM ACCTS)"},
      {"SELECT 1; SELECT 2", "a second statement (SELECT 2)"},
      {"SELECT AcctNum FROM ACCTS WHERE (DaysLate >= 0); DELETE FROM ACCTS; --) ORDER BY 1",
       "a second statement (DELETE FROM ACCTS; --) ORDER BY 1)"},
      {"SELECT 1 /* c */ ; -- note\n DROP TABLE ACCTS", "a second statement (DROP TABLE ACCTS)"},
      {"VACUUM INTO '" + copy + "'", "VACUUM"},
      {"VACUUM", "VACUUM"},
      {"ATTACH DATABASE '" + other + "' AS o", "ATTACH"},
      {"DETACH DATABASE main", "DETACH"},
      {"PRAGMA journal_mode = DELETE", "PRAGMA journal_mode = DELETE"},
      {"PRAGMA user_version = 7", "PRAGMA user_version = 7"},
      {"PRAGMA writable_schema = ON", "PRAGMA writable_schema"},
      {"BEGIN IMMEDIATE", "transaction"},
      {"SAVEPOINT s", "savepoint"},
      {"REINDEX", "REINDEX"},
      {"ANALYZE", "ANALYZE"},
      {"SELECT load_extension('/tmp/nothing')", "load_extension"},
  };
  GuardedConnection connection(db_);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.statement);
    std::string message;
    EXPECT_EQ(RefusalKind(connection, c.statement, &message), GuardError::Kind::kRefused);
    EXPECT_NE(message.find("reports only read the database"), std::string::npos) << message;
    EXPECT_NE(message.find(c.names), std::string::npos) << message;
  }
  EXPECT_EQ(FileChecksum(db_), before);
  EXPECT_FALSE(std::filesystem::exists(copy));
  EXPECT_FALSE(std::filesystem::exists(other));
  // Reads still work on the same connection, comments and a final ; too.
  GuardedQuery query = connection.Execute("-- accounts\nSELECT count(*) FROM ACCTS; /* end */ ;");
  ASSERT_TRUE(query.Next());
  EXPECT_EQ(query.Value(0).toInt(), 300);
}

// Rows are read through SQLite's own interface: every value must come out as
// QtSql's driver gave it, and every cell read in place must show and sum as
// that value does.
TEST_F(GuardTest, RowsReadInPlaceMatchQtSqlsDriver) {
  const std::string statement =
      "SELECT 42 AS \"quoted name\", -7.25, NULL, 'plain', x'3132', 'Ünïcödé', '', 1e300, "
      "9223372036854775807, -0.005, '2026-03-05', '2026-02-30', '  12.5 ', '1e3', 'n/a', "
      "'٢٠٢٦-٠٣-٠٥', 12345678901234.5, 0.1 + 0.2, 'a\"b', AcctNum, Balance, StockNum, Status "
      "FROM ACCTS ORDER BY AcctNum LIMIT 3";
  QSqlDatabase plain = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), "plain-reader");
  plain.setDatabaseName(QString::fromStdString(db_));
  plain.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
  ASSERT_TRUE(plain.open()) << plain.lastError().text().toStdString();
  {
    QSqlQuery classic(plain);
    classic.setForwardOnly(true);
    ASSERT_TRUE(classic.exec(QString::fromStdString(statement)))
        << classic.lastError().text().toStdString();
    GuardedConnection connection(db_);
    GuardedQuery query = connection.Execute(statement);
    ASSERT_TRUE(query.Native());
    ASSERT_EQ(query.ColumnCount(), classic.record().count());
    for (int c = 0; c < query.ColumnCount(); ++c) {
      EXPECT_EQ(query.ColumnName(c), classic.record().fieldName(c)) << c;
    }
    const ValueKind kinds[] = {ValueKind::kText, ValueKind::kDate, ValueKind::kCurrency,
                               ValueKind::kNumber, ValueKind::kInteger};
    int rows = 0;
    while (query.Next()) {
      ASSERT_TRUE(classic.next());
      ++rows;
      for (int c = 0; c < query.ColumnCount(); ++c) {
        SCOPED_TRACE("row " + std::to_string(rows) + " column " + std::to_string(c));
        const QVariant expected = classic.value(c);
        const QVariant value = query.Value(c);
        EXPECT_EQ(value.typeId(), expected.typeId());
        EXPECT_EQ(value.isNull(), expected.isNull());
        EXPECT_EQ(value, expected);
        const SqlValue raw = query.Raw(c);
        for (const ValueKind kind : kinds) {
          EXPECT_EQ(FormatCell(raw, kind), FormatCell(expected, kind)) << static_cast<int>(kind);
        }
        EXPECT_EQ(NumericValue(raw), NumericValue(expected));
      }
    }
    EXPECT_FALSE(classic.next());
    EXPECT_EQ(rows, 3);
  }
  plain.close();
  plain = QSqlDatabase();
  QSqlDatabase::removeDatabase("plain-reader");
}

// The database's refusals keep its words: one at preparing, and one at the
// first row, which fails where the statement is executed, as through QtSql.
TEST_F(GuardTest, TheDatabasesOwnErrorsKeepItsMessage) {
  GuardedConnection connection(db_);
  const std::pair<const char*, const char*> cases[] = {
      {"SELECT missing_column FROM ACCTS", "no such column: missing_column"},
      {"SELECT abs(-9223372036854775807 - 1) FROM ACCTS", "integer overflow"},
  };
  for (const auto& [statement, message] : cases) {
    try {
      connection.Execute(statement);
      ADD_FAILURE() << "ran: " << statement;
    } catch (const GuardError& e) {
      ADD_FAILURE() << e.what();
    } catch (const Error& e) {
      EXPECT_NE(std::string(e.what()).find(message), std::string::npos) << e.what();
    }
  }
  // The connection reads on afterwards.
  GuardedQuery query = connection.Execute("SELECT count(*) FROM ACCTS");
  ASSERT_TRUE(query.Next());
  EXPECT_EQ(query.Value(0).toInt(), 300);
  EXPECT_FALSE(query.Next());
}

TEST_F(GuardTest, LimitsEndAStatementWithTheirMessages) {
  {
    GuardedConnection connection(db_, QueryLimits{300, 1'000'000});
    const auto start = std::chrono::steady_clock::now();
    std::string message;
    EXPECT_EQ(RefusalKind(connection, kEndless, &message), GuardError::Kind::kTimeout);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_NE(message.find("time limit of 0.3 seconds"), std::string::npos) << message;
    EXPECT_NE(message.find("--timeout SECONDS"), std::string::npos) << message;
    EXPECT_NE(message.find("timeout_seconds in the [database] section of"), std::string::npos);
    // The connection is usable afterwards, with a fresh time allowance.
    GuardedQuery query = connection.Execute("SELECT count(*) FROM ACCTS");
    ASSERT_TRUE(query.Next());
    EXPECT_EQ(query.Value(0).toInt(), 300);
  }
  for (const long long limit : {299LL, 300LL}) {
    SCOPED_TRACE(limit);
    GuardedConnection connection(db_, QueryLimits{60'000, limit});
    GuardedQuery query = connection.Execute("SELECT AcctNum FROM ACCTS");
    long long rows = 0;
    try {
      while (query.Next()) ++rows;
      EXPECT_EQ(limit, 300);  // exactly the limit is allowed
    } catch (const GuardError& e) {
      EXPECT_EQ(limit, 299);
      EXPECT_EQ(e.kind(), GuardError::Kind::kRowLimit);
      EXPECT_NE(std::string(e.what()).find("row limit of 299 rows"), std::string::npos);
      EXPECT_NE(std::string(e.what()).find("--row-limit N"), std::string::npos);
    }
    EXPECT_EQ(rows, limit);
  }
}

TEST_F(GuardTest, CancelStopsTheStatementInsideTheDatabase) {
  GuardedConnection connection(db_);
  std::thread canceller([&connection] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    connection.Cancel();
  });
  const auto start = std::chrono::steady_clock::now();
  EXPECT_THROW(
      {
        GuardedQuery query = connection.Execute(kEndless);
        while (query.Next()) {
        }
      },
      Cancelled);
  canceller.join();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  GuardedQuery query = connection.Execute("SELECT count(*) FROM ACCTS");
  ASSERT_TRUE(query.Next());
  EXPECT_EQ(query.Value(0).toInt(), 300);
}

TEST_F(GuardTest, AReportWithAWritingStatementIsStoppedBeforeItRuns) {
  CvrShape shape;
  shape.statement = R"("DELETE FROM ACCTS WHERE 1=1 RETURNING AcctNum")";
  shape.columns = {{"Account", "AcctNum", "String"}};
  GuardedConnection connection(db_);
  const std::string before = FileChecksum(db_);
  try {
    RunReport(Define(folder_, shape), connection, {});
    ADD_FAILURE() << "ran";
  } catch (const GuardError& e) {
    EXPECT_EQ(e.kind(), GuardError::Kind::kRefused);
    EXPECT_NE(std::string(e.what()).find("Test Report.cvr: the Statement was stopped"),
              std::string::npos)
        << e.what();
  }
  EXPECT_EQ(FileChecksum(db_), before);
}

// Waits for the runner's outcome while the queued signals are delivered.
RunOutcome Finish(BackgroundRunner& runner, std::optional<RunOutcome>& outcome) {
  const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!outcome && std::chrono::steady_clock::now() < until) {
    QCoreApplication::processEvents();
    runner.Wait(10);
  }
  QCoreApplication::processEvents();
  if (!outcome) ADD_FAILURE() << "no outcome";
  return outcome.value_or(RunOutcome{});
}

TEST_F(GuardTest, BackgroundRunnerDeliversBatchesAndCancelsAtTheDatabase) {
  BackgroundRunner runner(db_, QueryLimits{});
  QStringList columns;
  std::vector<int> batches;
  long long seen = 0;
  std::optional<RunOutcome> outcome;
  QObject::connect(&runner, &BackgroundRunner::columnsReady,
                   [&columns](const QStringList& names) { columns = names; });
  QObject::connect(&runner, &BackgroundRunner::rowsReady,
                   [&batches, &seen](const QList<QVariantList>& rows) {
                     batches.push_back(static_cast<int>(rows.size()));
                     for (const QVariantList& row : rows) seen += row.value(0).toLongLong();
                   });
  QObject::connect(&runner, &BackgroundRunner::finished,
                   [&outcome](const RunOutcome& result) { outcome = result; });

  ASSERT_TRUE(runner.Start("SELECT AcctNum AS Account, Balance FROM ACCTS ORDER BY 1", 64));
  RunOutcome done = Finish(runner, outcome);
  EXPECT_EQ(done.status, RunOutcome::Status::kDone) << done.error;
  EXPECT_EQ(done.rows, 300);
  EXPECT_EQ(columns, (QStringList{"Account", "Balance"}));
  EXPECT_EQ(batches, (std::vector<int>{64, 64, 64, 64, 44}));
  EXPECT_EQ(std::to_string(seen),
            testing::SqlValue(db_, "SELECT sum(AcctNum) FROM ACCTS"));

  outcome.reset();
  ASSERT_TRUE(runner.Start(kEndless));
  // One at a time: checked on a statement that cannot finish meanwhile (a
  // short one may be done before the next line on a loaded machine).
  EXPECT_FALSE(runner.Start("SELECT 1"));
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  EXPECT_TRUE(runner.Running());
  runner.Cancel();
  const RunOutcome cancelled = Finish(runner, outcome);
  EXPECT_EQ(cancelled.status, RunOutcome::Status::kCancelled) << cancelled.error;
  EXPECT_LT(cancelled.elapsed_ms, 10'000);

  // The runner is usable afterwards; refusals and limits come as outcomes.
  const struct {
    const char* statement;
    QueryLimits limits;
    RunOutcome::Status status;
  } cases[] = {
      {"SELECT count(*) FROM ACCTS", {}, RunOutcome::Status::kDone},
      {"DELETE FROM ACCTS", {}, RunOutcome::Status::kRefused},
      {kEndless, {200, 10}, RunOutcome::Status::kTimeout},
      {"SELECT AcctNum FROM ACCTS", {60'000, 10}, RunOutcome::Status::kRowLimit},
      {"SELECT missing_column FROM ACCTS", {}, RunOutcome::Status::kFailed},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.statement);
    BackgroundRunner other(db_, c.limits);
    outcome.reset();
    QObject::connect(&other, &BackgroundRunner::finished,
                     [&outcome](const RunOutcome& result) { outcome = result; });
    ASSERT_TRUE(other.Start(c.statement));
    EXPECT_EQ(Finish(other, outcome).status, c.status) << outcome->error;
  }
  EXPECT_EQ(testing::SqlValue(db_, "SELECT count(*) FROM ACCTS"), "300");
}

}  // namespace
}  // namespace cvve::reportengine
