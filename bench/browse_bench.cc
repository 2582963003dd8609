// Opening a large file set (LoadFiles: the three documents, the tree, the
// data sets and the first profile) against the bare parse of the same three
// files, and one profile switch on a data set with 200 columns and 300
// filters.
//
//   cmake -S . -B build-bench -G Ninja -DCVVE_WITH_QT=OFF -DCVVE_WITH_BENCH=ON
//         -DCMAKE_BUILD_TYPE=Release
//   cmake --build build-bench --target browse_bench
//   build-bench/bench/browse_bench
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

#include "bench_support.h"

namespace cvve::bench {
namespace {

const FileSet& OpenSet(int profiles) { return GeneratedSet(profiles); }

// Mean milliseconds of the last run of each size, for the ratio printed at the end.
std::map<int, double>& OpenMillis() {
  static std::map<int, double> mean;
  return mean;
}
std::map<int, double>& ParseMillis() {
  static std::map<int, double> mean;
  return mean;
}

void BM_OpenFileSet(benchmark::State& state) {
  const int profiles = static_cast<int>(state.range(0));
  const FileSet& set = OpenSet(profiles);
  HeadlessEditor h(set);
  double open_total = 0, parse_total = 0;
  std::int64_t runs = 0;
  for (auto _ : state) {
    // Parse and open alternate, so both see the same machine load.
    parse_total += BareParseSeconds(set);
    const auto start = Clock::now();
    h.ed->SetReportMode(0);
    h.ed->LoadFiles(set.views, set.defaults, set.setup);
    const double open = Seconds(Clock::now() - start);
    state.SetIterationTime(open);
    open_total += open;
    ++runs;
  }
  if (h.ed->tvwViews.Count() < profiles || h.ed->CurrentProfileName.empty()) {
    state.SkipWithError("the file set did not open fully");
    return;
  }
  const double open_ms = 1000 * open_total / static_cast<double>(runs);
  const double parse_ms = 1000 * parse_total / static_cast<double>(runs);
  OpenMillis()[profiles] = open_ms;
  ParseMillis()[profiles] = parse_ms;
  state.counters["parse_ms"] = parse_ms;
  state.counters["open_per_parse"] = open_ms / parse_ms;
  state.counters["nodes"] = h.ed->tvwViews.Count();
}
BENCHMARK(BM_OpenFileSet)
    ->Arg(10000)
    ->Arg(20000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->MinTime(3.0);

// One click on another profile: the data set, its 200 columns and 300
// filters reload, then the profile's 200 used columns and 300 saved filter
// entries are applied.
void BM_SwitchProfile(benchmark::State& state) {
  static const FileSet set = [] {
    FileSetShape shape;
    shape.profiles = 200;
    shape.data_sets = 2;
    shape.columns = 200;
    shape.filters = 300;
    shape.used_columns = 200;
    shape.saved_filters = 300;
    return WriteFileSet(ScratchFolder("switch"), shape);
  }();
  HeadlessEditor h(set);
  h.ed->SetReportMode(0);
  h.ed->LoadFiles(set.views, set.defaults, set.setup);
  // Two user profiles on different data sets.
  const ui::NodeId nodes[2] = {
      h.ed->tvwViews.FindKey(set.user_profile),
      h.ed->tvwViews.FindKey(
          ProfileName(std::stoi(set.user_profile.substr(set.user_profile.size() - 6)) + 1))};
  if (nodes[0] == ui::kNoNode || nodes[1] == ui::kNoNode) {
    state.SkipWithError("profiles not in the tree");
    return;
  }
  int next = 0;
  for (auto _ : state) {
    h.ed->tvwViews.UserSelect(nodes[next]);
    next ^= 1;
  }
  if (h.ed->lstFilters.ItemCount() != 300 || h.ed->lstUsedColumns.ListCount() != 200 ||
      h.ed->ProfileChanged) {
    state.SkipWithError("the profile did not load fully");
  }
  state.counters["filters"] = h.ed->lstFilters.ItemCount();
  state.counters["used_columns"] = h.ed->lstUsedColumns.ListCount();
}
BENCHMARK(BM_SwitchProfile)->Unit(benchmark::kMillisecond)->MinTime(2.0);

}  // namespace
}  // namespace cvve::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  const auto& open = cvve::bench::OpenMillis();
  const auto& parse = cvve::bench::ParseMillis();
  if (open.count(10000) && open.count(20000)) {
    std::printf("open 20000 / open 10000 = %.2f (target <= 2.3); bare parse 20000 / 10000 = %.2f\n",
                open.at(20000) / open.at(10000), parse.at(20000) / parse.at(10000));
  }
  benchmark::Shutdown();
  return 0;
}
