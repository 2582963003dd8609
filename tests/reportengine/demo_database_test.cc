#include "reportengine/demo_database.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <cstdlib>
#include <filesystem>

#include "base/error.h"
#include "report_test_support.h"
#include "reportengine/guard/guarded_connection.h"

namespace cvve::reportengine {
namespace {

using testing::SmallDatabase;
using testing::SqlRows;
using testing::SqlValue;
using testing::TempFolder;

TEST(DemoDatabaseTest, TablesHangTogether) {
  const std::string db = SmallDatabase();
  EXPECT_EQ(SqlValue(db, "SELECT COUNT(*) FROM ACCTS"), "300");
  // Every reference finds its row.
  const char* orphans[] = {
      "SELECT COUNT(*) FROM ACCTS WHERE CustID NOT IN (SELECT CustID FROM CUST_INFO)",
      "SELECT COUNT(*) FROM ACCTS WHERE DealID NOT IN (SELECT DealID FROM DEAL_INFO)",
      "SELECT COUNT(*) FROM ACCTS WHERE StockNum NOT IN (SELECT StockNum FROM INV_INFO)",
      "SELECT COUNT(*) FROM DEAL_INFO WHERE StockNum NOT IN (SELECT StockNum FROM INV_INFO)",
      "SELECT COUNT(*) FROM FIN_INFO WHERE DealID NOT IN (SELECT DealID FROM DEAL_INFO)",
      "SELECT COUNT(*) FROM ACCT_HISTORY WHERE AcctNum NOT IN (SELECT AcctNum FROM ACCTS)",
      "SELECT COUNT(*) FROM PTP WHERE AcctNum NOT IN (SELECT AcctNum FROM ACCTS)",
      "SELECT COUNT(*) FROM NOTES WHERE AcctNum NOT IN (SELECT AcctNum FROM ACCTS)",
      // Financed deals have an account, cash and bank deals none.
      "SELECT COUNT(*) FROM DEAL_INFO D WHERE (DealType='BHPH') <> "
      "EXISTS (SELECT 1 FROM ACCTS A WHERE A.DealID=D.DealID)",
      // Sold vehicles carry the deal's date.
      "SELECT COUNT(*) FROM DEAL_INFO D JOIN INV_INFO I ON I.StockNum=D.StockNum "
      "WHERE I.DateSold IS NOT D.DealDate",
  };
  for (const char* sql : orphans) EXPECT_EQ(SqlValue(db, sql), "0") << sql;
}

TEST(DemoDatabaseTest, BadInputLeavesNoFile) {
  TempFolder folder;
  const std::string path = folder.Path("x.db");
  DemoDatabaseOptions options;
  options.accounts = 10;
  options.schema_path = folder.Write("schema.sql", "CREATE TABLE ACCTS (oops");
  EXPECT_THROW(GenerateDemoDatabase(path, options), Error);
  options.schema_path = folder.Path("none.sql");
  EXPECT_THROW(GenerateDemoDatabase(path, options), Error);
  options.schema_path.clear();
  options.today = "03/16/2026";
  EXPECT_THROW(GenerateDemoDatabase(path, options), Error);
  for (const auto& entry : std::filesystem::directory_iterator(folder.Path(""))) {
    EXPECT_EQ(entry.path().filename().string().rfind("x.db", 0), std::string::npos) << entry.path();
  }
}

TEST(DemoDatabaseTest, DefaultDatabaseIsMadeOnceInTheCache) {
  TempFolder folder;
  const char* old = std::getenv("XDG_CACHE_HOME");
  const std::string saved = old ? old : "";
  setenv("XDG_CACHE_HOME", folder.Path("cache").c_str(), 1);
  const std::string first = DefaultDemoDatabase();
  const auto made = std::filesystem::last_write_time(first);
  const std::string second = DefaultDemoDatabase();
  const bool opens = GuardedConnection("").Execute("SELECT 1").Next();  // an empty URL is this
  if (old) {
    setenv("XDG_CACHE_HOME", saved.c_str(), 1);
  } else {
    unsetenv("XDG_CACHE_HOME");
  }
  EXPECT_EQ(first, second);
  EXPECT_EQ(std::filesystem::last_write_time(second), made);
  EXPECT_EQ(first.rfind(folder.Path("cache/cvviewedit/dealer-2000-1-"), 0), 0u) << first;
  EXPECT_EQ(SqlValue(first, "SELECT COUNT(*) FROM ACCTS"), "2000");
  EXPECT_TRUE(opens);
}

}  // namespace
}  // namespace cvve::reportengine
