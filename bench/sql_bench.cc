// The statements of every profile of a large file set, as `viewedit sql`
// builds them (open the set, then for each profile: load it, build the field
// list, where list, view and report statements), against the bare parse of
// the same three files in the same run. Printed at the end: the ratio to the
// parse at 10,000 profiles (target <= 3) and 20,000 against 10,000 (target
// <= 2.2).
//
//   cmake --preset bench && cmake --build --preset bench --target sql_bench
//   build-bench/bench/sql_bench
// It also writes the file set of N profiles it measures, so that the
// command itself can be timed and its output compared across versions:
//   build-bench/bench/sql_bench --write-fileset FOLDER N
//   viewedit sql FOLDER/acctviews.xml,FOLDER/acctviewsdef.xml,FOLDER/viewsetup.xml
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "bench_support.h"
#include "query/sql_builder.h"
#include "query/statement_batch.h"

namespace cvve::bench {
namespace {

// Every profile name of the two documents once, the defaults file's first.
std::vector<std::string> ProfileNames(frmAcctViewEdit& ed) {
  std::vector<std::string> names;
  std::set<std::string> seen;
  for (const DocumentCursor* doc : {&ed.DefaultsDoc, &ed.ViewsDoc}) {
    for (XmlNode p : SelectNodes(doc->Root(), "Profiles/Profile")) {
      std::string name = ChildText(p, "Name");
      if (!name.empty() && seen.insert(name).second) names.push_back(std::move(name));
    }
  }
  return names;
}

// Seconds for the whole command's work on the set; `bytes` gets the length
// of all the statements, so that none is skipped.
double AllStatementsSeconds(const FileSet& set, std::size_t& bytes) {
  const auto start = Clock::now();
  HeadlessEditor h(set);
  frmAcctViewEdit& ed = *h.ed;
  ed.SetReportMode(0);
  ed.LoadFiles(set.views, set.defaults, set.setup);
  bytes = 0;
  StatementBatch batch(ed);
  for (const std::string& name : ProfileNames(ed)) {
    h.prompter.ClearShown();
    ed.ProfileChanged = false;
    // As the command builds them: a failure is part of the output.
    const ProfileStatements built = batch.Next(name).statements;
    for (const BuiltStatement* s :
         {&built.field_list, &built.where_list, &built.view_sql, &built.report_sql}) {
      bytes += s->text.size();
    }
  }
  return Seconds(Clock::now() - start);
}

std::map<int, double>& SqlMillis() {
  static std::map<int, double> median;
  return median;
}
std::map<int, double>& ParseMillis() {
  static std::map<int, double> median;
  return median;
}

double Median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v.empty() ? 0 : v[v.size() / 2];
}

void BM_AllStatements(benchmark::State& state) {
  const int profiles = static_cast<int>(state.range(0));
  const FileSet& set = GeneratedSet(profiles);
  std::vector<double> sql, parse;
  std::size_t bytes = 0;
  for (auto _ : state) {
    // Parse and statements alternate, so both see the same machine load.
    parse.push_back(BareParseSeconds(set));
    sql.push_back(AllStatementsSeconds(set, bytes));
    state.SetIterationTime(sql.back());
  }
  if (bytes == 0) {
    state.SkipWithError("no statement was built");
    return;
  }
  SqlMillis()[profiles] = 1000 * Median(sql);
  ParseMillis()[profiles] = 1000 * Median(parse);
  state.counters["parse_ms"] = ParseMillis()[profiles];
  state.counters["sql_per_parse"] = SqlMillis()[profiles] / ParseMillis()[profiles];
  state.counters["statement_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_AllStatements)
    ->Arg(10000)
    ->Arg(20000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(9);

}  // namespace
}  // namespace cvve::bench

int main(int argc, char** argv) {
  if (argc == 4 && std::string(argv[1]) == "--write-fileset") {
    cvve::bench::FileSetShape shape;
    shape.profiles = std::stoi(argv[3]);
    cvve::bench::WriteFileSet(argv[2], shape);
    return 0;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  const auto& sql = cvve::bench::SqlMillis();
  const auto& parse = cvve::bench::ParseMillis();
  if (sql.count(10000)) {
    std::printf("sql 10000 / bare parse 10000 = %.2f (target <= 3)\n",
                sql.at(10000) / parse.at(10000));
  }
  if (sql.count(10000) && sql.count(20000)) {
    std::printf("sql 20000 / sql 10000 = %.2f (target <= 2.2)\n", sql.at(20000) / sql.at(10000));
  }
  benchmark::Shutdown();
  return 0;
}
