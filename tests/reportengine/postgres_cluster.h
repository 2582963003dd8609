#pragma once
// A throwaway PostgreSQL cluster for the tests, started once per test
// process in a temporary folder (as "nobody" when the tests run as root,
// since PostgreSQL refuses root), listening on a unix socket only. Tests
// load their data through a plain, writable connection of their own; the
// engine only ever gets the guarded URL.
#include <gtest/gtest.h>

#include <QSqlDatabase>
#include <QString>
#include <string>

namespace cvve::reportengine::testing {

class PostgresCluster {
 public:
  // The process's cluster, started on first use; Reason() is empty when it
  // runs.
  static PostgresCluster& Shared();
  const std::string& Reason() const { return reason_; }

  // postgresql://... of `database` on the cluster.
  std::string Url(const std::string& database = "postgres") const;
  // A new empty database; returns its name.
  std::string CreateDatabase(const std::string& name);
  // Runs `sql` as the cluster's superuser; returns "" or the error.
  std::string Exec(const std::string& database, const std::string& sql);
  // The first column of the first row of `sql`, as text.
  std::string Value(const std::string& database, const std::string& sql);
  // Where its socket lies and the port in the socket's name.
  const std::string& Folder() const { return folder_; }
  int Port() const { return port_; }

  ~PostgresCluster();

 private:
  PostgresCluster() = default;
  std::string Start();
  QSqlDatabase Admin(const std::string& database);

  std::string reason_;
  std::string folder_;
  std::string ctl_;
  int port_ = 0;
  bool started_ = false;
};

}  // namespace cvve::reportengine::testing

// Ends a test whose cluster could not start: skipped on a developer's
// machine without PostgreSQL, failed in CI (CI=true), where setup installs it
// and a skip would hide that nothing was checked.
#define CVVE_REQUIRE_POSTGRES(cluster)                                                  \
  do {                                                                                  \
    if (!(cluster).Reason().empty()) {                                                  \
      const char* ci = std::getenv("CI");                                               \
      if (ci != nullptr && std::string(ci) == "true") {                                 \
        FAIL() << "no PostgreSQL server in CI: " << (cluster).Reason();                 \
      }                                                                                 \
      GTEST_SKIP() << "no PostgreSQL server: " << (cluster).Reason();                   \
    }                                                                                   \
  } while (false)
