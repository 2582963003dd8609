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
#include "reportengine/guard/guarded_connection.h"
#include "reportengine/language/report_definition.h"

namespace cvve::reportengine {

// Called now and then while a report runs or renders: `done` of `total`
// steps (total 0: unknown). Returning false cancels the run.
using ProgressFunction = std::function<bool(const QString& stage, long long done, long long total)>;

// Thrown before anything runs when a variable's value does not suit its type;
// the message names the variable and the value.
class BadVariable : public Error {
 public:
  using Error::Error;
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

// Throws BadVariable for a value that does not suit its variable's type
// (values by VariableKey; variables the report does not declare and empty
// values are not checked).
void CheckVariables(const ReportDefinition& def, const std::map<std::string, std::string>& values);

// Checks the variables, then runs. Throws BadVariable; GuardError for a
// statement the guard refused or a run it stopped at a limit, and cvve::Error
// for an expression or SQL error (with the database's message), each naming
// the report file and the statement; and Cancelled. Groups whose statement
// selects no rows are left out.
ReportData RunReport(const ReportDefinition& def, GuardedConnection& db,
                     const RunSettings& settings);

// The statement text a report runs first (the group statement of a grouped
// report, else its statement), for tests and benchmarks.
std::string FirstStatement(const ReportDefinition& def, const RunSettings& settings);

// The lookup key of a variable name: upper case, with its "$".
std::string VariableKey(std::string_view name);

}  // namespace cvve::reportengine
