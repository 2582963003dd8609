#pragma once
// The editor's database for the rows of the profile on screen: the same
// guarded, read-only, bounded connection the reports use, and the same
// preparation of the statement (%USERWHERE%, "CQ:", dates in hash marks).
#include <QVariant>
#include <memory>
#include <string>

#include "reportengine/guard/limits.h"
#include "results/results.h"

namespace cvve::reportengine {

class GuardedConnection;

struct EditorDatabase {
  std::string url;         // as GuardedConnection takes it
  std::string user_where;  // %USERWHERE%; "" stands for "1=1"
  QueryLimits limits;
};

// The statement that runs for a view statement: PrepareStatement's.
std::string RunnableStatement(const std::string& view_sql, const std::string& user_where);

// A database value as the results keep it.
results::Cell CellOf(const QVariant& value);

// A report's rows as Source::RunReport gives them: `definition` parsed and
// run by RunReport on `db`, the groups' rows one after another, the first
// `keep_rows` kept and all counted. Failures come back in `error` (a refused
// statement with its place and the statement it is in); only Cancelled is
// thrown, so that a background run ends as cancelled.
results::Table RunReportTable(const std::string& definition, GuardedConnection& db,
                              const std::string& user_where, std::size_t keep_rows);

// Runs on the calling thread (headless commands and scripts); the connection
// opens on the first run and stays open.
class GuardedSource : public results::Source {
 public:
  explicit GuardedSource(EditorDatabase database);
  ~GuardedSource() override;
  results::Table Run(const std::string& view_sql, const std::vector<std::string>& formats,
                     std::size_t keep_rows) override;
  results::Table RunReport(const std::string& definition, std::size_t keep_rows) override;

 private:
  GuardedConnection& Connection();

  EditorDatabase database_;
  std::unique_ptr<GuardedConnection> connection_;
};

}  // namespace cvve::reportengine
