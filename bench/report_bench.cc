// The report engine against the bare database, on the demo reports over a
// dealer database of 100,000 accounts (--accounts=N for another size):
//
// - ReportToPdf: the report run and written to PDF as `viewedit report
//   --pdf` does (pages written as they are laid out), against BareStatement,
//   the same SQL statements stepped through the sqlite3 C API with every
//   value read (target: at most 2x).
// - FirstPage: the window's preview from the start of the run to the first
//   page drawn in the viewer, against BareFirstRow, the bare statements up
//   to their first report row (target: at most 0.3 s more).
//
// With --rss it then runs `viewedit report --pdf` and the bare statements
// each in a process of its own and compares their peak resident memory
// (target: at most 2x plus 50 MB); with --instructions=N it runs both under
// callgrind on a database of N accounts and compares their instructions
// (target: at most 2x).
//
//   report_bench [--accounts=N] [--rss] [--instructions=N] [--only=LABEL,...]
//                [benchmark flags]
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <valgrind/callgrind.h>

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "reportengine/background_report.h"
#include "reportengine/demo_database.h"
#include "reportengine/guard/guarded_connection.h"
#include "reportengine/language/report_definition.h"
#include "reportengine/language/report_expression.h"
#include "reportengine/page_renderer.h"
#include "reportengine/report_runner.h"
#include "reportengine/report_viewer.h"

extern char** environ;

namespace re = cvve::reportengine;

namespace {

using Clock = std::chrono::steady_clock;

int g_accounts = 100000;
std::string g_only;  // --only=A,B: the cases --rss and --instructions run ("" all)

bool Chosen(const char* label) {
  return g_only.empty() || ("," + g_only + ",").find("," + std::string(label) + ",") != std::string::npos;
}

struct Case {
  const char* label;
  const char* file;  // in the demo's Custom Reports
  std::map<std::string, std::string> variables;
};

const std::map<std::string, std::string> kYears = {{"$START_DATE", "2025-01-01"},
                                                   {"$END_DATE", "2026-12-31"}};
const Case kCases[] = {
    {"CollectionsByCollector", "Collections By Collector.cvr", {}},
    {"PastDueAccounts", "Past Due Accounts.cvr", kYears},
    {"InventoryAging", "Inventory Aging.cvr", {}},
    {"ReceiptsByCashier", "Receipts By Cashier.cvr", kYears},
};

std::string DatabaseFor(int accounts) {
  const std::string file =
      re::CacheFolder() + "/bench-dealer-" + std::to_string(accounts) + "-v1.db";
  if (!std::filesystem::exists(file)) {
    std::fprintf(stderr, "report_bench: generating %s ...\n", file.c_str());
    re::DemoDatabaseOptions options;
    options.accounts = accounts;
    re::GenerateDemoDatabase(file, options);
  }
  return file;
}

const std::string& BenchDatabase() {
  static const std::string path = DatabaseFor(g_accounts);
  return path;
}

// The demo reports at a million accounts pass the default row limit; the
// benchmark measures, it does not guard.
re::QueryLimits Unlimited() {
  re::QueryLimits limits;
  limits.row_limit = 1'000'000'000;
  limits.timeout_ms = 100'000'000;
  return limits;
}

std::string ReportPath(const Case& c) {
  return std::string(CVVE_DEMO_DIR) + "/Custom Reports/" + c.file;
}

re::ReportDefinition Definition(const Case& c) { return re::LoadReportDefinition(ReportPath(c)); }

re::RunSettings Settings(const Case& c) {
  re::RunSettings settings;
  settings.variables = c.variables;
  return settings;
}

re::ExpressionContext Context(const Case& c) {
  re::ExpressionContext context;
  context.variable = [&c](std::string_view name) -> std::optional<std::string> {
    const auto it = c.variables.find(std::string(name));
    if (it == c.variables.end()) return std::nullopt;
    return it->second;
  };
  return context;
}

std::string Evaluated(const std::string& expression, const re::ExpressionContext& context) {
  return re::PrepareStatement(re::EvaluateExpression(expression, context).value, "");
}

std::vector<std::string> Column(sqlite3* db, const std::string& statement) {
  sqlite3_stmt* stmt = nullptr;
  sqlite3_prepare_v2(db, statement.c_str(), -1, &stmt, nullptr);
  std::vector<std::string> values;
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    const unsigned char* text = sqlite3_column_text(stmt, 0);
    values.emplace_back(text ? reinterpret_cast<const char*>(text) : "");
  }
  sqlite3_finalize(stmt);
  return values;
}

std::string GroupStatement(const re::ReportDefinition& def, const Case& c,
                           const std::string& value) {
  re::ExpressionContext grouped = Context(c);
  grouped.fxa = [&value](std::string_view) -> std::optional<std::string> { return value; };
  return Evaluated(def.statement, grouped);
}

sqlite3* Open() {
  sqlite3* db = nullptr;
  if (sqlite3_open_v2(BenchDatabase().c_str(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
    std::fprintf(stderr, "report_bench: cannot open %s\n", BenchDatabase().c_str());
    std::exit(1);
  }
  return db;
}

// Every statement of the report with every value read, as the engine must
// at the least; the rows of the report's statements.
// The report's statements as SQL: a grouped report's group statement is run
// (every value read) for the statement of each group.
std::vector<std::string> ReportStatements(const Case& c, sqlite3* db) {
  const re::ReportDefinition def = Definition(c);
  std::vector<std::string> statements;
  if (def.grouped) {
    for (const std::string& value : Column(db, Evaluated(def.group_statement, Context(c)))) {
      statements.push_back(GroupStatement(def, c, value));
    }
  } else {
    statements.push_back(Evaluated(def.statement, Context(c)));
  }
  return statements;
}

long long BareRun(const Case& c) {
  sqlite3* db = Open();
  const std::vector<std::string> statements = ReportStatements(c, db);
  long long rows = 0;
  std::size_t bytes = 0;
  for (const std::string& statement : statements) {
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db, statement.c_str(), -1, &stmt, nullptr);
    while (sqlite3_step(stmt) == SQLITE_ROW) {
      for (int col = 0; col < sqlite3_column_count(stmt); ++col) {
        const unsigned char* text = sqlite3_column_text(stmt, col);
        bytes += text ? std::strlen(reinterpret_cast<const char*>(text)) : 0;
      }
      ++rows;
    }
    sqlite3_finalize(stmt);
  }
  benchmark::DoNotOptimize(bytes);
  sqlite3_close(db);
  return rows;
}

// The bare statements up to the report's first row: a grouped report's
// group values all, then its groups' statements until one gives a row.
void BareFirstRow(const Case& c) {
  sqlite3* db = Open();
  const std::vector<std::string> statements = ReportStatements(c, db);
  for (const std::string& statement : statements) {
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db, statement.c_str(), -1, &stmt, nullptr);
    const bool row = sqlite3_step(stmt) == SQLITE_ROW;
    if (row) benchmark::DoNotOptimize(sqlite3_column_text(stmt, 0));
    sqlite3_finalize(stmt);
    if (row) break;
  }
  sqlite3_close(db);
}

re::WrittenReport ReportPdf(const Case& c, const QString& pdf) {
  re::GuardedConnection db(BenchDatabase(), Unlimited());
  return re::WriteReportPdf(Definition(c), db, Settings(c), pdf);
}

void BM_ReportToPdf(benchmark::State& state, const Case* c) {
  QTemporaryDir folder;
  const QString pdf = folder.filePath(QStringLiteral("report.pdf"));
  re::WrittenReport written;
  for (auto _ : state) written = ReportPdf(*c, pdf);
  state.counters["rows"] = static_cast<double>(written.rows);
  state.counters["pages"] = written.pages;
}

void BM_BareStatement(benchmark::State& state, const Case* c) {
  long long rows = 0;
  for (auto _ : state) rows = BareRun(*c);
  state.counters["rows"] = static_cast<double>(rows);
}

// From the start of the window's run to the first page drawn in the viewer;
// the rest of the run is cancelled, untimed.
void BM_FirstPage(benchmark::State& state, const Case* c) {
  const re::ReportDefinition def = Definition(*c);
  for (auto _ : state) {
    const Clock::time_point start = Clock::now();
    re::LiveReport live(def, Settings(*c), BenchDatabase(), Unlimited());
    live.WaitForFirstPage(nullptr);
    {
      re::ReportViewerWindow window(live.Pages(), [&live] { live.Cancel(); });
      if (window.ShownImage().isNull() || window.PageCount() == 0) {
        state.SkipWithError("no page shown");
        return;
      }
      state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    }
    live.Cancel();
    live.WaitForEnd(-1);
  }
}

void BM_BareFirstRow(benchmark::State& state, const Case* c) {
  for (auto _ : state) {
    const Clock::time_point start = Clock::now();
    BareFirstRow(*c);
    state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
  }
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

struct ChildRun {
  double seconds = 0;
  long peak_kb = 0;
  int status = -1;
};

// Runs a program to its end; its wall time and peak resident memory. The
// peak is GNU time's: a process forked from this one would start with this
// process's peak (Linux keeps the peak across exec), time's own is small.
ChildRun RunChild(const std::vector<std::string>& command, const std::string& peak_file = "") {
  std::vector<std::string> args;
  if (!peak_file.empty()) args = {"/usr/bin/time", "-f", "%M", "-o", peak_file};
  args.insert(args.end(), command.begin(), command.end());
  std::vector<char*> argv;
  for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
  argv.push_back(nullptr);
  ChildRun run;
  const Clock::time_point start = Clock::now();
  pid_t pid = 0;
  if (posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ) != 0) return run;
  int status = 0;
  waitpid(pid, &status, 0);
  run.seconds = std::chrono::duration<double>(Clock::now() - start).count();
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  if (!peak_file.empty()) {
    std::ifstream in(peak_file);
    in >> run.peak_kb;
  }
  return run;
}

std::vector<std::string> ViewEditPdf(const Case& c, const std::string& database,
                                     const std::string& pdf) {
  std::vector<std::string> args = {CVVE_VIEWEDIT,  "report",      ReportPath(c), "--pdf",
                                   pdf,            "--database",  database,      "--row-limit",
                                   "1000000000",   "--timeout",   "100000"};
  for (const auto& [name, value] : c.variables) {
    args.push_back("--set");
    args.push_back(name + "=" + value);
  }
  return args;
}

void CompareMemory(const char* self) {
  QTemporaryDir folder;
  const std::string pdf = folder.filePath(QStringLiteral("report.pdf")).toStdString();
  for (std::size_t i = 0; i < std::size(kCases); ++i) {
    const Case& c = kCases[i];
    if (!Chosen(c.label)) continue;
    const std::string peak = folder.filePath(QStringLiteral("peak")).toStdString();
    const ChildRun bare = RunChild(
        {self, "--bare-child=" + std::to_string(i), "--accounts=" + std::to_string(g_accounts)},
        peak);
    const ChildRun report = RunChild(ViewEditPdf(c, BenchDatabase(), pdf), peak);
    if (bare.status != 0 || report.status != 0) {
      std::printf("%s: a child failed (bare %d, viewedit %d)\n", c.label, bare.status,
                  report.status);
      continue;
    }
    const double bare_mb = bare.peak_kb / 1024.0;
    const double report_mb = report.peak_kb / 1024.0;
    std::printf(
        "%s: peak RSS of viewedit report --pdf %.1f MB (%.2f s), bare statements %.1f MB "
        "(%.2f s); limit 2x + 50 MB = %.1f MB: %s\n",
        c.label, report_mb, report.seconds, bare_mb, bare.seconds, 2 * bare_mb + 50,
        report_mb <= 2 * bare_mb + 50 ? "met" : "NOT met");
    std::fflush(stdout);
  }
}

// The instructions of the subject alone: counted between the start and the
// dump (callgrind's client requests; nothing outside valgrind).
int InstructionsChild(const std::string& which) {
  const std::size_t colon = which.find(':');
  const Case& c = kCases[std::stoul(which.substr(0, colon))];
  const bool pdf = which.substr(colon + 1) == "pdf";
  QTemporaryDir folder;
  const QString file = folder.filePath(QStringLiteral("report.pdf"));
  const re::ReportDefinition def = Definition(c);
  BenchDatabase();
  CALLGRIND_ZERO_STATS;
  if (pdf) {
    ReportPdf(c, file);
  } else {
    BareRun(c);
  }
  CALLGRIND_DUMP_STATS_AT("subject");
  return 0;
}

long long CallgrindTotal(const std::string& prefix) {
  // The dump named "subject" is the second file: prefix.1 (prefix itself holds the rest).
  std::ifstream in(prefix + ".1");
  std::string line;
  const std::regex totals("^(summary|totals): ([0-9]+)");
  std::smatch match;
  while (std::getline(in, line)) {
    if (std::regex_search(line, match, totals)) return std::stoll(match[2]);
  }
  return -1;
}

void CompareInstructions(const char* self, int accounts) {
  QTemporaryDir folder;
  DatabaseFor(accounts);
  for (std::size_t i = 0; i < std::size(kCases); ++i) {
    if (!Chosen(kCases[i].label)) continue;
    long long counts[2] = {0, 0};
    for (int side = 0; side < 2; ++side) {
      const std::string out = folder.filePath(QStringLiteral("cg.%1.%2").arg(i).arg(side)).toStdString();
      RunChild({"/usr/bin/valgrind", "--tool=callgrind", "--callgrind-out-file=" + out, self,
                "--accounts=" + std::to_string(accounts),
                "--instructions-child=" + std::to_string(i) + (side == 0 ? ":pdf" : ":bare")});
      counts[side] = CallgrindTotal(out);
    }
    std::printf("%s at %d accounts: instructions to PDF %lld, bare statements %lld, ratio %.2fx "
                "(target <= 2x)\n",
                kCases[i].label, accounts, counts[0], counts[1],
                counts[1] > 0 ? static_cast<double>(counts[0]) / static_cast<double>(counts[1])
                              : 0.0);
    std::fflush(stdout);
  }
}

}  // namespace

int main(int argc, char** argv) {
  bool rss = false;
  int instructions = 0;
  std::string bare_child;
  std::string instructions_child;
  std::vector<char*> args;
  for (int i = 0; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg.rfind("--accounts=", 0) == 0) {
      g_accounts = std::atoi(argv[i] + 11);
    } else if (arg.rfind("--only=", 0) == 0) {
      g_only = arg.substr(7);
    } else if (arg == "--rss") {
      rss = true;
    } else if (arg.rfind("--instructions=", 0) == 0) {
      instructions = std::atoi(argv[i] + 15);
    } else if (arg.rfind("--bare-child=", 0) == 0) {
      bare_child = arg.substr(13);
    } else if (arg.rfind("--instructions-child=", 0) == 0) {
      instructions_child = arg.substr(21);
    } else {
      args.push_back(argv[i]);
    }
  }
  // The bare side of the memory comparison: no Qt at all.
  if (!bare_child.empty()) {
    BareRun(kCases[std::stoul(bare_child)]);
    return 0;
  }
  if (std::getenv("QT_QPA_PLATFORM") == nullptr) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication app(argc, argv);
  if (!instructions_child.empty()) return InstructionsChild(instructions_child);
  for (const Case& c : kCases) {
    const std::string label = c.label;
    benchmark::RegisterBenchmark(("ReportToPdf/" + label).c_str(), BM_ReportToPdf, &c)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    benchmark::RegisterBenchmark(("BareStatement/" + label).c_str(), BM_BareStatement, &c)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    benchmark::RegisterBenchmark(("FirstPage/" + label).c_str(), BM_FirstPage, &c)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime();
    benchmark::RegisterBenchmark(("BareFirstRow/" + label).c_str(), BM_BareFirstRow, &c)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime();
  }
  int count = static_cast<int>(args.size());
  benchmark::Initialize(&count, args.data());
  BenchDatabase();  // generated before the timings start
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  for (const Case& c : kCases) {
    const std::string label = c.label;
    const double report = reporter.Time("ReportToPdf/" + label);
    const double bare = reporter.Time("BareStatement/" + label);
    if (report > 0 && bare > 0) {
      std::printf("%s at %d accounts: report to PDF %.1f ms, bare statements %.1f ms, ratio "
                  "%.2fx (target <= 2x)\n",
                  c.label, g_accounts, report, bare, report / bare);
    }
    const double first = reporter.Time("FirstPage/" + label);
    const double first_row = reporter.Time("BareFirstRow/" + label);
    if (first > 0 && first_row > 0) {
      std::printf("%s at %d accounts: first page in the viewer %.1f ms, bare first row %.1f ms, "
                  "%.1f ms more (target <= 300 ms more)\n",
                  c.label, g_accounts, first, first_row, first - first_row);
    }
  }
  if (rss) CompareMemory(argv[0]);
  if (instructions > 0) CompareInstructions(argv[0], instructions);
  benchmark::Shutdown();
  return 0;
}
