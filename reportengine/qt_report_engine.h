#pragma once
// The report engine behind the editor's preview (the core's ReportEngine
// port): report objects that load a .cvr and run it on a database through
// QtSql, results that hold the laid-out pages, and a viewer. The screen
// engine shows a progress dialog while a report runs and the viewer window
// on Show; the headless engine records what would have been shown.
#include <memory>
#include <string>
#include <vector>

#include "reportengine/guard/limits.h"
#include "reportengine/paginator.h"
#include "reportengine/language/report_definition.h"
#include "reportengine/report_runner.h"
#include "reports/report_engine.h"

class QWidget;

namespace cvve::reportengine {

struct EngineSettings {
  std::string database;    // URL (see guard/guarded_connection.h); "" the demo database
  std::string user_where;  // the host's %USERWHERE% condition; "" stands for "1=1"
  QueryLimits limits;      // of each statement
};

// What a run produced: the rows and their pages.
class LaidOutResult : public ReportResult {
 public:
  LaidOutResult(ReportDefinition def, ReportData data, std::shared_ptr<const ReportLayout> layout,
                std::vector<std::string> variables);
  // Pages produced; 0 when the report selected no rows.
  int Count() const override;

  const ReportDefinition& Definition() const { return def_; }
  const ReportData& Data() const { return data_; }
  std::shared_ptr<const ReportLayout> Layout() const { return layout_; }
  // "$NAME=value" for each variable of the report, as the run used them.
  const std::vector<std::string>& Variables() const { return variables_; }

 private:
  ReportDefinition def_;
  ReportData data_;
  std::shared_ptr<const ReportLayout> layout_;
  std::vector<std::string> variables_;
};

class LiveReport;

// A run from the window: its viewer opens while later pages are still
// being laid out.
class LiveResult : public ReportResult {
 public:
  LiveResult(std::unique_ptr<LiveReport> live, std::vector<std::string> variables);
  ~LiveResult() override;
  // Pages so far; 0 when the run ended without rows.
  int Count() const override;
  LiveReport& Live() const { return *live_; }
  const std::vector<std::string>& Variables() const { return variables_; }

 private:
  std::unique_ptr<LiveReport> live_;
  std::vector<std::string> variables_;
};

class SqlReport : public Report {
 public:
  // In the background the statements run off this thread (the window stays
  // alive, its progress dialog's Cancel stops them at the database);
  // otherwise in this thread, with `progress`.
  SqlReport(EngineSettings settings, ProgressFunction progress, bool in_background = false,
            QWidget* window = nullptr);

  // Throws cvve::Error naming the file (line and column where they help).
  void Load(const std::string& path) override;
  // The report's variables (those its file declares), in file order.
  int VariableCount() const override;
  // Throws cvve::Error outside 1..VariableCount().
  std::string VariableName(int position) const override;
  std::string VariableValue(int position) const override;
  void SetVariableValue(int position, const std::string& value) override;
  // A LaidOutResult (Count 0 when no rows); in the background a LiveResult
  // as soon as the first page is laid out. Throws cvve::Error when nothing
  // is loaded or the run fails (BadVariable, GuardError: see RunReport),
  // Cancelled when the user stops it.
  std::unique_ptr<ReportResult> Run() override;

  // Warnings of the last run (variables without a value); in the background
  // those known when the first page came.
  const std::vector<std::string>& Warnings() const { return warnings_; }

 private:
  void CheckPosition(int position) const;

  EngineSettings settings_;
  ProgressFunction progress_;
  bool in_background_;
  QWidget* window_;
  bool loaded_ = false;
  ReportDefinition def_;
  std::vector<std::string> values_;
  std::vector<std::string> warnings_;
};

// On a screen: runs with a progress dialog, shows results in the viewer
// window (modal).
class QtReportEngine : public ReportEngine {
 public:
  explicit QtReportEngine(EngineSettings settings, QWidget* parent = nullptr);
  std::unique_ptr<Report> CreateReport() override;
  std::unique_ptr<ReportViewer> CreateViewer() override;

 private:
  EngineSettings settings_;
  QWidget* parent_;
};

// Without a screen: reports run the same; viewers record what they show.
class HeadlessReportEngine : public ReportEngine {
 public:
  struct Shown {
    std::string name;    // the report's name
    std::string source;  // its file
    int pages = 0;
    long long rows = 0;
    std::vector<std::string> variables;  // "$NAME=value" as the run used them
  };

  explicit HeadlessReportEngine(EngineSettings settings = {});
  std::unique_ptr<Report> CreateReport() override;
  std::unique_ptr<ReportViewer> CreateViewer() override;

  // Every Show so far, in order.
  const std::vector<Shown>& ShownReports() const { return *shown_; }

 private:
  EngineSettings settings_;
  std::shared_ptr<std::vector<Shown>> shown_;
};

}  // namespace cvve::reportengine
