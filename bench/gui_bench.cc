// The real editor window on a file set of 10,000 profiles whose data sets
// have 200 columns and 300 filters:
//  - a click on a profile that uses all 200 columns and saves all 300
//    filters, from the mouse click on the tree to the frame painted with the
//    profile shown (median and 99th percentile of the clicks);
//  - process start to the first painted window, against a process of the same
//    program that only parses the three files (the cold bare parse), both
//    timed from the spawn, alternately.
// Without a display it runs on the offscreen platform; under xvfb-run on X11.
//
//   cmake --preset bench && cmake --build --preset bench --target gui_bench
//   build-bench/bench/gui_bench                      # offscreen
//   xvfb-run -s '-screen 0 1280x1024x24' build-bench/bench/gui_bench
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QEvent>
#include <QTest>
#include <QTreeView>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "bench_support.h"
#include "gui/editor_window.h"
#include "gui/tree_model.h"

extern char** environ;

namespace cvve::bench {
namespace {

constexpr int kProfiles = 10000;

FileSetShape WideShape() {
  FileSetShape shape;
  shape.profiles = kProfiles;
  shape.columns = 200;
  shape.filters = 300;
  shape.wide_profiles = 2;
  return shape;
}

const FileSet& WideSet() {
  static const FileSet set = WriteFileSet(ScratchFolder("wide"), WideShape());
  return set;
}

// The set as a child process sees it: the folder from the command line.
FileSet SetIn(const char* folder) {
  FileSet set;
  set.folder = folder;
  for (int u = 0; u < WideShape().users; ++u) set.users.push_back("user" + std::to_string(u));
  return set;
}

std::int64_t MonotonicNanos() {
  timespec t{};
  clock_gettime(CLOCK_MONOTONIC, &t);
  return static_cast<std::int64_t>(t.tv_sec) * 1000000000 + t.tv_nsec;
}

// Counts the paint events of a widget.
class PaintCounter : public QObject {
 public:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint) ++paints;
    return false;
  }
  int paints = 0;
};

// The editor and its window, opened on a file set as the launcher does.
struct Window {
  explicit Window(const FileSet& set, opening::ReadAhead* read_ahead = nullptr)
      : h(set, read_ahead) {
    h.ed->SetReportMode(0);
    h.ed->LoadFiles(set.views, set.defaults, set.setup);
    h.ed->Show();
    window = std::make_unique<gui::EditorWindow>(*h.ed);
    window->resize(1024, 768);
    window->show();
  }
  HeadlessEditor h;
  std::unique_ptr<gui::EditorWindow> window;
};

double Percentile(std::vector<double> v, double p) {
  if (v.empty()) return 0;
  std::sort(v.begin(), v.end());
  const auto at = static_cast<std::size_t>(p * static_cast<double>(v.size() - 1) + 0.5);
  return v[std::min(at, v.size() - 1)];
}

void BM_WindowClick(benchmark::State& state) {
  const FileSet& set = WideSet();
  Window w(set);
  auto* tree = w.window->findChild<QTreeView*>("tvwViews");
  auto* model = tree ? dynamic_cast<gui::TreeModel*>(tree->model()) : nullptr;
  if (!model) {
    state.SkipWithError("no tree in the window");
    return;
  }
  const std::string second = ProfileName(std::stoi(set.user_profile.substr(8)) + 1);
  const ui::NodeId nodes[2] = {w.h.ed->tvwViews.FindKey(set.user_profile),
                               w.h.ed->tvwViews.FindKey(second)};
  if (nodes[0] == ui::kNoNode || nodes[1] == ui::kNoNode) {
    state.SkipWithError("profiles not in the tree");
    return;
  }
  PaintCounter painted;
  w.window->filterList()->viewport()->installEventFilter(&painted);
  std::vector<double> clicks;
  int next = 0, unpainted = 0;
  for (auto _ : state) {
    // Bring the node into view first, as the user's scrolling would.
    const QModelIndex index = model->IndexOf(nodes[next]);
    tree->scrollTo(index);
    QCoreApplication::processEvents();
    const QPoint at = tree->visualRect(index).center();
    const int paints_before = painted.paints;
    const auto start = Clock::now();
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, at);
    // The refresh and the repaint it asks for are queued events.
    for (int i = 0; i < 5; ++i) QCoreApplication::processEvents();
    const double seconds = Seconds(Clock::now() - start);
    state.SetIterationTime(seconds);
    clicks.push_back(1000 * seconds);
    if (painted.paints == paints_before) ++unpainted;
    next ^= 1;
  }
  if (w.h.ed->lstFilters.ItemCount() != 300 || w.h.ed->lstUsedColumns.ListCount() != 200) {
    state.SkipWithError("the profile did not load fully");
    return;
  }
  if (unpainted > 0) {
    state.SkipWithError("a click painted no frame");
    return;
  }
  state.counters["median_ms"] = Percentile(clicks, 0.5);
  state.counters["p99_ms"] = Percentile(clicks, 0.99);
  std::printf("click: median %.2f ms (target <= 4), p99 %.2f ms (target <= 8), %zu clicks on %s\n",
              Percentile(clicks, 0.5), Percentile(clicks, 0.99), clicks.size(),
              QGuiApplication::platformName().toUtf8().constData());
}
BENCHMARK(BM_WindowClick)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(400);

// Spawns this program with `mode` on the set's folder and returns the
// seconds from the spawn to the moment the child reports; < 0 on failure.
double SpawnedSeconds(const char* self, const char* mode, const FileSet& set) {
  int out[2];
  if (pipe(out) != 0) return -1;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, out[0]);
  std::string folder = set.folder;
  char* argv[] = {const_cast<char*>(self), const_cast<char*>(mode), folder.data(), nullptr};
  pid_t child = 0;
  const std::int64_t start = MonotonicNanos();
  const int spawned = posix_spawn(&child, self, &actions, nullptr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(out[1]);
  if (spawned != 0) {
    close(out[0]);
    return -1;
  }
  char buffer[64] = {};
  const ssize_t got = read(out[0], buffer, sizeof buffer - 1);
  close(out[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (got <= 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0) return -1;
  return static_cast<double>(std::atoll(buffer) - start) / 1e9;
}

std::string& Self() {
  static std::string self;
  return self;
}

void BM_StartToFirstFrame(benchmark::State& state) {
  const FileSet& set = WideSet();
  std::vector<double> frame, parse;
  for (auto _ : state) {
    const double p = SpawnedSeconds(Self().c_str(), "--bare-parse", set);
    const double f = SpawnedSeconds(Self().c_str(), "--first-frame", set);
    if (p < 0 || f < 0) {
      state.SkipWithError("a child process failed");
      return;
    }
    parse.push_back(p);
    frame.push_back(f);
    state.SetIterationTime(f);
  }
  const double ratio = Percentile(frame, 0.5) / Percentile(parse, 0.5);
  state.counters["parse_ms"] = 1000 * Percentile(parse, 0.5);
  state.counters["frame_per_parse"] = ratio;
  std::printf("start to first frame %.1f ms / cold bare parse %.1f ms = %.2f (target <= 1.5)\n",
              1000 * Percentile(frame, 0.5), 1000 * Percentile(parse, 0.5), ratio);
}
BENCHMARK(BM_StartToFirstFrame)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(11);

// The child processes: each writes the monotonic clock, in nanoseconds, when
// it is done, and exits without tearing down.
[[noreturn]] void Report() {
  std::printf("%lld\n", static_cast<long long>(MonotonicNanos()));
  std::fflush(stdout);
  std::_Exit(0);
}

[[noreturn]] void BareParseChild(const char* folder) {
  BareParseSeconds(SetIn(folder));
  Report();
}

[[noreturn]] void FirstFrameChild(int argc, char** argv, const char* folder) {
  // As the launcher starts: the files are read on another thread meanwhile.
  const FileSet set = SetIn(folder);
  const std::string at = set.folder + "/";
  opening::ReadAhead read_ahead(at + set.views, at + set.defaults, at + set.setup);
  QApplication app(argc, argv);
  Window w(set, &read_ahead);
  w.window->repaint();
  Report();
}

}  // namespace
}  // namespace cvve::bench

int main(int argc, char** argv) {
  if (std::getenv("DISPLAY") == nullptr && std::getenv("QT_QPA_PLATFORM") == nullptr) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
  }
  if (argc == 3 && std::strcmp(argv[1], "--bare-parse") == 0) {
    cvve::bench::BareParseChild(argv[2]);
  }
  if (argc == 3 && std::strcmp(argv[1], "--first-frame") == 0) {
    int qt_argc = 1;
    cvve::bench::FirstFrameChild(qt_argc, argv, argv[2]);
  }
  cvve::bench::Self() = argv[0];
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
