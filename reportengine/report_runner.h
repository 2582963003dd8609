#pragma once
// Running a report: its statements evaluated with the variables, run on the
// database, the rows formatted per column and summed per group.
#include <QDateTime>
#include <QString>
#include <functional>
#include <initializer_list>
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

// Receives a report's rows while they are read, so that pages can be laid
// out (and written) before the run ends. Calls come in this order: Begin;
// for each group that has rows BeginGroup, Row for each row, EndGroup (an
// ungrouped report has one group, even without rows); End.
class RowSink {
 public:
  virtual ~RowSink() = default;
  // The run's date and variables; no groups yet.
  virtual void Begin(const ReportData& header) = 0;
  // The group's value, display and heading; no cells.
  virtual void BeginGroup(const ReportGroup& group) = 0;
  // One formatted cell per report column.
  virtual void Row(const QString* cells) = 0;
  // The group's totals.
  virtual void EndGroup(const ReportGroup& group) = 0;
  // The report's totals and the warnings; no groups.
  virtual void End(const ReportData& summary) = 0;
};

// Keeps what the run gives: the whole report in memory, or (without
// `keep_rows`) only its header, groups' totals and report totals.
class RowCollector : public RowSink {
 public:
  explicit RowCollector(std::size_t width, bool keep_rows = true)
      : width_(width), keep_rows_(keep_rows) {}
  void Begin(const ReportData& header) override;
  void BeginGroup(const ReportGroup& group) override;
  void Row(const QString* cells) override;
  void EndGroup(const ReportGroup& group) override;
  void End(const ReportData& summary) override;
  const ReportData& Data() const { return data_; }
  ReportData Take() { return std::move(data_); }

 private:
  std::size_t width_;
  bool keep_rows_;
  ReportData data_;
};

// Hands every call on to each of its sinks, in order.
class RowTee : public RowSink {
 public:
  RowTee(std::initializer_list<RowSink*> sinks) : sinks_(sinks) {}
  void Begin(const ReportData& header) override;
  void BeginGroup(const ReportGroup& group) override;
  void Row(const QString* cells) override;
  void EndGroup(const ReportGroup& group) override;
  void End(const ReportData& summary) override;

 private:
  std::vector<RowSink*> sinks_;
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

// As RunReport, the rows handed to `sink` as they are read instead of being
// kept. The row limit holds for the whole run (the rows of all of a grouped
// report's statements together), not only for each statement.
void StreamReport(const ReportDefinition& def, GuardedConnection& db, const RunSettings& settings,
                  RowSink& sink);

// The statement text a report runs first (the group statement of a grouped
// report, else its statement), for tests and benchmarks.
std::string FirstStatement(const ReportDefinition& def, const RunSettings& settings);

// The lookup key of a variable name: upper case, with its "$".
std::string VariableKey(std::string_view name);

}  // namespace cvve::reportengine
