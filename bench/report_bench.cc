// The report engine against the bare database: a demo report over a dealer
// database of 100,000 accounts run to PDF, and the same SQL statements run
// through the sqlite3 C API with every value read. The ratio of the two is
// printed at the end (target: at most 3), and the same for the engine without
// the PDF (run and layout only), which shows what the PDF writer costs.
//
//   report_bench [--accounts=N] [benchmark flags, e.g. --benchmark_repetitions=5]
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "reportengine/guard/guarded_connection.h"
#include "reportengine/demo_database.h"
#include "reportengine/page_renderer.h"
#include "reportengine/paginator.h"
#include "reportengine/language/report_definition.h"
#include "reportengine/language/report_expression.h"
#include "reportengine/report_runner.h"

namespace re = cvve::reportengine;

namespace {

int g_accounts = 100000;

struct Case {
  const char* label;
  const char* file;  // in the demo's Custom Reports
  std::map<std::string, std::string> variables;
};

const Case kCases[] = {
    {"CollectionsByCollector", "Collections By Collector.cvr", {}},
    {"PastDueAccounts",
     "Past Due Accounts.cvr",
     {{"$START_DATE", "2025-01-01"}, {"$END_DATE", "2026-12-31"}}},
};

const std::string& BenchDatabase() {
  static const std::string path = [] {
    const std::string file =
        re::CacheFolder() + "/bench-dealer-" + std::to_string(g_accounts) + "-v1.db";
    if (!std::filesystem::exists(file)) {
      std::fprintf(stderr, "report_bench: generating %s ...\n", file.c_str());
      re::DemoDatabaseOptions options;
      options.accounts = g_accounts;
      re::GenerateDemoDatabase(file, options);
    }
    return file;
  }();
  return path;
}

re::ReportDefinition Definition(const Case& c) {
  return re::LoadReportDefinition(std::string(CVVE_DEMO_DIR) + "/Custom Reports/" + c.file);
}

re::RunSettings Settings(const Case& c) {
  re::RunSettings settings;
  settings.variables = c.variables;
  return settings;
}

// The statements the report runs, as SQL text: the group statement and one
// statement per group, or the one statement.
std::vector<std::string> Statements(const Case& c, sqlite3* db) {
  const re::ReportDefinition def = Definition(c);
  re::ExpressionContext context;
  context.variable = [&c](std::string_view name) -> std::optional<std::string> {
    const auto it = c.variables.find(std::string(name));
    if (it == c.variables.end()) return std::nullopt;
    return it->second;
  };
  std::vector<std::string> statements;
  if (!def.grouped) {
    statements.push_back(
        re::PrepareStatement(re::EvaluateExpression(def.statement, context).value, ""));
    return statements;
  }
  const std::string groups =
      re::PrepareStatement(re::EvaluateExpression(def.group_statement, context).value, "");
  statements.push_back(groups);
  sqlite3_stmt* stmt = nullptr;
  sqlite3_prepare_v2(db, groups.c_str(), -1, &stmt, nullptr);
  std::vector<std::string> values;
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    const unsigned char* text = sqlite3_column_text(stmt, 0);
    values.emplace_back(text ? reinterpret_cast<const char*>(text) : "");
  }
  sqlite3_finalize(stmt);
  for (const std::string& value : values) {
    re::ExpressionContext grouped = context;
    grouped.fxa = [&value](std::string_view) -> std::optional<std::string> { return value; };
    statements.push_back(
        re::PrepareStatement(re::EvaluateExpression(def.statement, grouped).value, ""));
  }
  return statements;
}

void BM_ReportToPdf(benchmark::State& state, const Case* c) {
  const re::ReportDefinition def = Definition(*c);
  const re::RunSettings settings = Settings(*c);
  QTemporaryDir folder;
  const QString pdf = folder.filePath(QStringLiteral("report.pdf"));
  long long rows = 0;
  std::size_t pages = 0;
  for (auto _ : state) {
    re::GuardedConnection db(BenchDatabase());
    const re::ReportData data = re::RunReport(def, db, settings);
    const re::ReportLayout layout = re::Paginate(def, data);
    re::WritePdf(layout, pdf);
    rows = data.RowCount();
    pages = layout.pages.size();
  }
  state.counters["rows"] = static_cast<double>(rows);
  state.counters["pages"] = static_cast<double>(pages);
}

// The engine without the PDF: statements, values, sums and pages.
void BM_RunAndLayout(benchmark::State& state, const Case* c) {
  const re::ReportDefinition def = Definition(*c);
  const re::RunSettings settings = Settings(*c);
  for (auto _ : state) {
    re::GuardedConnection db(BenchDatabase());
    const re::ReportData data = re::RunReport(def, db, settings);
    const re::ReportLayout layout = re::Paginate(def, data);
    benchmark::DoNotOptimize(layout.pages.size());
  }
}

void BM_BareStatement(benchmark::State& state, const Case* c) {
  sqlite3* db = nullptr;
  if (sqlite3_open_v2(BenchDatabase().c_str(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
    state.SkipWithError("cannot open the database");
    return;
  }
  const std::vector<std::string> statements = Statements(*c, db);
  long long rows = 0;
  for (auto _ : state) {
    rows = 0;
    std::size_t bytes = 0;
    for (std::size_t s = 0; s < statements.size(); ++s) {
      sqlite3_stmt* stmt = nullptr;
      sqlite3_prepare_v2(db, statements[s].c_str(), -1, &stmt, nullptr);
      while (sqlite3_step(stmt) == SQLITE_ROW) {
        for (int col = 0; col < sqlite3_column_count(stmt); ++col) {
          const unsigned char* text = sqlite3_column_text(stmt, col);
          bytes += text ? std::strlen(reinterpret_cast<const char*>(text)) : 0;
        }
        if (s > 0 || statements.size() == 1) ++rows;
      }
      sqlite3_finalize(stmt);
    }
    benchmark::DoNotOptimize(bytes);
  }
  sqlite3_close(db);
  state.counters["rows"] = static_cast<double>(rows);
}

// Keeps the mean real time of every run so the ratios can be printed.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    // With repetitions the median stands for the benchmark.
    for (const Run& run : runs) {
      const std::string& name = run.run_name.function_name;
      if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
        medians_[name] = run.GetAdjustedRealTime();
      } else if (run.run_type == Run::RT_Iteration) {
        times_[name] = run.GetAdjustedRealTime();
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }
  double Time(const std::string& name) const {
    if (const auto it = medians_.find(name); it != medians_.end()) return it->second;
    const auto it = times_.find(name);
    return it == times_.end() ? 0 : it->second;
  }

 private:
  std::map<std::string, double> times_;
  std::map<std::string, double> medians_;
};

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--accounts=", 11) == 0) g_accounts = std::atoi(argv[i] + 11);
  }
  if (std::getenv("QT_QPA_PLATFORM") == nullptr) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QGuiApplication app(argc, argv);
  for (const Case& c : kCases) {
    benchmark::RegisterBenchmark((std::string("ReportToPdf/") + c.label).c_str(), BM_ReportToPdf,
                                 &c)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    benchmark::RegisterBenchmark((std::string("RunAndLayout/") + c.label).c_str(), BM_RunAndLayout,
                                 &c)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    benchmark::RegisterBenchmark((std::string("BareStatement/") + c.label).c_str(),
                                 BM_BareStatement, &c)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
  }
  std::vector<char*> args;
  for (int i = 0; i < argc; ++i) {
    if (std::strncmp(argv[i], "--accounts=", 11) != 0) args.push_back(argv[i]);
  }
  int count = static_cast<int>(args.size());
  benchmark::Initialize(&count, args.data());
  BenchDatabase();  // generated before the timings start
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  for (const Case& c : kCases) {
    const double report = reporter.Time(std::string("ReportToPdf/") + c.label);
    const double layout = reporter.Time(std::string("RunAndLayout/") + c.label);
    const double bare = reporter.Time(std::string("BareStatement/") + c.label);
    if (report > 0 && bare > 0) {
      std::printf("%s: report to PDF %.1f ms, bare statement %.1f ms, ratio %.2fx (target <= 3x)\n",
                  c.label, report, bare, report / bare);
    }
    if (layout > 0 && bare > 0) {
      std::printf("%s: run and layout without the PDF %.1f ms, ratio %.2fx\n", c.label, layout,
                  layout / bare);
    }
  }
  benchmark::Shutdown();
  return 0;
}
