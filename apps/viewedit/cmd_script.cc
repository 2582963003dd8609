// `viewedit script FILE|-`: the editor driven headless, one command a line
// (docs/script.md). Output goes to stdout; the first failing line is reported
// on stderr as "line N: message" and the exit code is 1.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "commands.h"
#include "script/script_runner.h"

#if CVVE_WITH_QT
#include "reportengine/qt_report_engine.h"
#include "reportengine/results/guarded_source.h"
#include "reportengine/viewer_script/viewer_commands.h"
#endif

namespace viewedit {

namespace {

struct ScriptArguments {
  std::string file;
};

#if CVVE_WITH_QT
// The report engine for `click cmdPreviewReport`, without a screen: made on
// the first preview only, since it needs the Qt application object.
class LazyPreviewEngine : public cvve::ReportEngine {
 public:
  explicit LazyPreviewEngine(cvve::reportengine::EngineSettings settings)
      : settings_(std::move(settings)) {}
  std::unique_ptr<cvve::Report> CreateReport() override { return Engine().CreateReport(); }
  std::unique_ptr<cvve::ReportViewer> CreateViewer() override { return Engine().CreateViewer(); }

 private:
  cvve::ReportEngine& Engine() {
    if (!engine_) {
      // Widgets too: a script may open the report viewer after a preview.
      EnsureHeadlessQt(true);
      engine_ = std::make_unique<cvve::reportengine::HeadlessReportEngine>(settings_);
    }
    return *engine_;
  }

  cvve::reportengine::EngineSettings settings_;
  std::unique_ptr<cvve::reportengine::HeadlessReportEngine> engine_;
};
#endif

int RunScript(const ScriptArguments& args, const HostOptions& options) {
  const std::string& file = args.file;
  std::string text;
  if (file != "-") {
    std::error_code ec;
    if (std::filesystem::is_directory(file, ec)) {
      std::cerr << "viewedit script: '" << file << "' is a folder, not a script\n";
      return 2;
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
      std::cerr << "viewedit script: cannot read '" << file << "'\n";
      return 2;
    }
    std::stringstream content;
    content << in.rdbuf();
    text = content.str();
  }
  cvve::DefaultHostServices host = MakeHost(options);
#if CVVE_WITH_QT
  const cvve::reportengine::EngineSettings engine{
      options.database, options.user_where,
      cvve::reportengine::ResolveLimits(options.timeout_seconds, options.row_limit)};
  LazyPreviewEngine reports(engine);
  LazyRowsSource rows(options);
  cvve::reportengine::ViewerCommands viewer(engine, [] { EnsureHeadlessQt(true); });
  cvve::script::ScriptRunner runner(host, std::cout, &reports, &rows);
  runner.SetExtension(&viewer);
#else
  cvve::script::ScriptRunner runner(host, std::cout);
#endif
  try {
    // From standard input each line runs as it arrives.
    if (file == "-") {
      runner.Run(std::cin);
    } else {
      runner.Run(text);
    }
  } catch (const cvve::script::ScriptError& e) {
    std::cout.flush();
    std::cerr << e.what() << "\n";
    return 1;
  }
  std::cout.flush();
  return 0;
}

}  // namespace

void RegisterScriptCommand(CLI::App& app, HostOptions& options) {
  auto args = std::make_shared<ScriptArguments>();
  CLI::App* command = app.add_subcommand(
      "script",
      "Drive the editor without a display from a script (FILE, or - for stdin); see "
      "docs/script.md. Exit codes: 0 done, 1 a script line failed, 2 the script could not start.");
  command->add_option("FILE", args->file, "The script; - reads it from stdin")->required();
  AddHostOptions(*command, options);
  AddReportDatabaseOptions(*command, options);
  command->callback([args, &options] {
    int code = 0;
    try {
      code = RunScript(*args, options);
    } catch (const std::exception& e) {
      std::cerr << "viewedit script: " << e.what() << "\n";
      code = 2;
    }
    if (code != 0) throw CLI::RuntimeError(code);
  });
}

}  // namespace viewedit
