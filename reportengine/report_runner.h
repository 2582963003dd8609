#pragma once
// Running a report: its statements evaluated with the variables, run on the
// database, the rows formatted per column and summed per group.
#include <QDateTime>
#include <QString>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "base/error.h"
#include "reportengine/language/report_definition.h"

namespace cvve::reportengine {

class Database;

// Called now and then while a report runs or renders: `done` of `total`
// steps (total 0: unknown). Returning false cancels the run.
using ProgressFunction = std::function<bool(const QString& stage, long long done, long long total)>;

// Thrown when a progress function asked to stop.
class Cancelled : public Error {
 public:
  Cancelled() : Error("the report was cancelled") {}
};

// Sums of the totalled and averaged columns of a set of rows.
struct Aggregate {
  std::vector<long double> sum;  // per column
  std::vector<long long> count;  // numeric values seen per column
  long long rows = 0;

  void Add(const Aggregate& other);
};

struct ReportGroup {
  QString value;               // the group value as FXA gives it ("" ungrouped)
  QString display;             // the value in the group format
  QString heading;             // "GroupTitle: " + display ("" ungrouped)
  std::vector<QString> cells;  // row-major, one per report column
  Aggregate totals;
};

struct ReportData {
  std::vector<ReportGroup> groups;  // an ungrouped report has one
  Aggregate totals;                 // the whole report
  QDateTime run_at;
  std::vector<std::string> warnings;  // variables without a value, ...
  // The report's variables as they were run: caption and value in the
  // variable's type's format ("" for none), in definition order.
  struct Variable {
    QString caption;
    QString value;
  };
  std::vector<Variable> variables;

  long long RowCount() const { return totals.rows; }
};

struct RunSettings {
  // Values by name ("$" + name; matched without regard to case).
  std::map<std::string, std::string> variables;
  std::string user_where;  // %USERWHERE%; "" stands for "1=1"
  ProgressFunction progress;
};

// Throws cvve::Error naming the report file and the statement for an
// expression or SQL error (with the database's message), and Cancelled.
// Groups whose statement selects no rows are left out.
ReportData RunReport(const ReportDefinition& def, Database& db, const RunSettings& settings);

// The statement text a report runs first (the group statement of a grouped
// report, else its statement), for tests and benchmarks.
std::string FirstStatement(const ReportDefinition& def, const RunSettings& settings);

// The lookup key of a variable name: upper case, with its "$".
std::string VariableKey(std::string_view name);

}  // namespace cvve::reportengine
