// viewedit report: runs a custom report (.cvr) on a database and writes it
// as PDF, CSV or an Excel workbook without a screen, or shows it in the viewer; without a file
// it opens the editor in report mode. demo-db lives in cmd_demo_db.cc.
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "commands.h"

#if CVVE_WITH_QT
#include <QApplication>
#include <QGuiApplication>

#include "reportengine/background_report.h"
#include "reportengine/export/csv_writer.h"
#include "reportengine/export/xlsx_writer.h"
#include "reportengine/guard/guarded_connection.h"
#include "reportengine/page_renderer.h"
#include "reportengine/paginator.h"
#include "reportengine/language/report_definition.h"
#include "reportengine/report_runner.h"
#endif

namespace viewedit {

void RegisterDemoDbCommand(CLI::App& app);  // cmd_demo_db.cc

namespace {

constexpr int kReportError = 1;
constexpr int kUsageError = 2;  // also a variable's value that does not suit its type
constexpr int kRefused = 3;     // a statement that would not only read
constexpr int kLimit = 4;       // the time or row limit ended the run

struct ReportArguments {
  std::string file;
  std::vector<std::string> sets;
  std::string pdf;
  std::string csv;
  std::string xlsx;
  bool csv_display = false;
  bool progress = false;
};

[[noreturn]] void Fail(int code, const std::string& message) {
  std::cerr << "viewedit report: " << message << "\n";
  throw CLI::RuntimeError(code);
}

#if CVVE_WITH_QT

namespace re = cvve::reportengine;

bool HasDisplay() {
  const char* platform = std::getenv("QT_QPA_PLATFORM");
  if (platform != nullptr && *platform != '\0') {
    const std::string name = platform;
    return name.rfind("offscreen", 0) != 0 && name.rfind("minimal", 0) != 0;
  }
  const char* x11 = std::getenv("DISPLAY");
  const char* wayland = std::getenv("WAYLAND_DISPLAY");
  return (x11 != nullptr && *x11 != '\0') || (wayland != nullptr && *wayland != '\0');
}

// A progress line on stderr, rewritten in place at most a few times a second.
re::ProgressFunction StderrProgress() {
  auto last = std::make_shared<std::chrono::steady_clock::time_point>();
  return [last](const QString& stage, long long done, long long total) {
    const auto now = std::chrono::steady_clock::now();
    if (now - *last < std::chrono::milliseconds(200)) return true;
    *last = now;
    std::cerr << "\r" << stage.toStdString() << ": " << done;
    if (total > 0) std::cerr << " of " << total;
    std::cerr << "        " << std::flush;
    return true;
  };
}

int RunReportCommand(const ReportArguments& args, const HostOptions& options) {
  const bool to_files = !args.pdf.empty() || !args.csv.empty() || !args.xlsx.empty();
  if (!to_files && !HasDisplay()) {
    Fail(kReportError,
         "there is no display to show the report on; write it with --pdf, --csv or --xlsx OUT "
         "(or run under xvfb-run)");
  }
  std::map<std::string, std::string> values;
  for (const std::string& set : args.sets) {
    const std::size_t equals = set.find('=');
    if (equals == std::string::npos || equals == 0) {
      Fail(kUsageError, "--set '" + set + "' is not NAME=VALUE");
    }
    values[re::VariableKey(set.substr(0, equals))] = set.substr(equals + 1);
  }

  // Files need no screen: the offscreen platform has the fonts.
  static int argc = 1;
  static char name[] = "viewedit";
  static char* argv[] = {name, nullptr};
  std::unique_ptr<QCoreApplication> app;
  if (QCoreApplication::instance() == nullptr) {
    if (to_files) {
      if (std::getenv("QT_QPA_PLATFORM") == nullptr) setenv("QT_QPA_PLATFORM", "offscreen", 1);
      app = std::make_unique<QGuiApplication>(argc, argv);
    } else {
      app = std::make_unique<QApplication>(argc, argv);
    }
  }

  const bool show_progress = args.progress || isatty(STDERR_FILENO);
  try {
    const re::ReportDefinition def = re::LoadReportDefinition(args.file);
    re::RunSettings settings;
    settings.user_where = options.user_where;
    for (const auto& [key, value] : values) {
      bool declared = false;
      for (const re::ReportVariable& variable : def.variables) {
        declared = declared || re::VariableKey(variable.name) == key;
      }
      if (!declared) {
        std::cerr << "viewedit report: warning: the report declares no variable " << key << "\n";
      }
      settings.variables[key] = value;
    }
    if (show_progress) settings.progress = StderrProgress();
    re::CheckVariables(def, settings.variables);
    re::QueryLimits limits;
    try {
      limits = re::ResolveLimits(options.timeout_seconds, options.row_limit);
    } catch (const std::exception& e) {
      Fail(kUsageError, e.what());
    }

    if (!to_files) {
      // On a screen the viewer opens on the first page while the run goes on,
      // as the editor's preview does; the progress is the window's own.
      settings.progress = nullptr;
      re::LiveReport live(def, settings, options.database, limits);
      live.WaitForFirstPage(nullptr);
      re::ShowLiveReport(live, nullptr);
      if (live.Finished() && live.Outcome()->Ok()) {
        for (const std::string& warning : live.Data().warnings) {
          std::cerr << "viewedit report: warning: " << warning << "\n";
        }
        const int pages = live.Pages()->Count();
        std::cerr << "viewedit report: " << live.Data().RowCount() << " rows, " << pages
                  << (pages == 1 ? " page" : " pages") << "\n";
      }
      return 0;
    }
    re::GuardedConnection db(options.database, limits);
    if (!args.pdf.empty() && args.csv.empty() && args.xlsx.empty()) {
      // The PDF alone: pages are written as the rows come, nothing is held.
      const re::WrittenReport written =
          re::WriteReportPdf(def, db, settings, QString::fromStdString(args.pdf));
      for (const std::string& warning : written.warnings) {
        if (show_progress) std::cerr << "\r";
        std::cerr << "viewedit report: warning: " << warning << "\n";
      }
      if (show_progress) std::cerr << "\r";
      std::cerr << "viewedit report: " << written.rows << " rows, " << written.pages
                << (written.pages == 1 ? " page" : " pages") << " -> " << args.pdf << "\n";
      return 0;
    }
    const re::ReportData data = re::RunReport(def, db, settings);
    for (const std::string& warning : data.warnings) {
      if (show_progress) std::cerr << "\r";
      std::cerr << "viewedit report: warning: " << warning << "\n";
    }
    std::shared_ptr<const re::ReportLayout> layout;
    if (!args.pdf.empty()) {
      layout = std::make_shared<const re::ReportLayout>(re::Paginate(def, data, settings.progress));
    }
    if (!args.pdf.empty())
      re::WritePdf(*layout, QString::fromStdString(args.pdf), settings.progress);
    if (!args.csv.empty()) {
      re::WriteCsvFile(def, data, args.csv,
                       args.csv_display ? re::CsvForm::kDisplay : re::CsvForm::kValues);
    }
    if (!args.xlsx.empty()) re::WriteXlsxFile(def, data, args.xlsx);
    if (show_progress) std::cerr << "\r";
    std::cerr << "viewedit report: " << data.RowCount() << " rows";
    if (layout) {
      std::cerr << ", " << layout->pages.size() << (layout->pages.size() == 1 ? " page" : " pages");
    }
    if (!args.pdf.empty()) std::cerr << " -> " << args.pdf;
    if (!args.csv.empty()) std::cerr << " -> " << args.csv;
    if (!args.xlsx.empty()) std::cerr << " -> " << args.xlsx;
    std::cerr << "\n";
  } catch (const CLI::RuntimeError&) {
    throw;
  } catch (const re::BadVariable& e) {
    if (show_progress) std::cerr << "\n";
    Fail(kUsageError, e.what());
  } catch (const re::GuardError& e) {
    if (show_progress) std::cerr << "\n";
    Fail(e.kind() == re::GuardError::Kind::kRefused ? kRefused : kLimit, e.what());
  } catch (const std::exception& e) {
    if (show_progress) std::cerr << "\n";  // ends the progress line
    Fail(kReportError, e.what());
  }
  return 0;
}

#endif

}  // namespace

void RegisterReportCommands(CLI::App& app, HostOptions& options) {
  auto args = std::make_shared<ReportArguments>();
  CLI::App* command = app.add_subcommand(
      "report",
      "Run a custom report (.cvr) and write it as PDF (--pdf), CSV (--csv) or an Excel workbook "
      "(--xlsx), or show it in "
      "the report viewer. Without FILE, open the editor in report mode. Exit codes: 0 done, "
      "1 report error, 2 usage or a variable's value unfit for its type, 3 a statement "
      "refused (reports only read), 4 the time or row limit reached.");
  AddHostOptions(*command, options);
  command->add_option("FILE", args->file, "The report definition (.cvr)");
  command->add_option("--set", args->sets,
                      "A report variable: NAME=VALUE (NAME with or without its $); repeatable");
  AddReportDatabaseOptions(*command, options);
  command->add_option("--pdf", args->pdf, "Write the report as PDF to this file");
  command->add_option("--csv", args->csv,
                      "Write the report's rows as CSV to this file: UTF-8 with a byte-order mark, "
                      "plain numbers, ISO dates, totals rows marked in the first column");
  command->add_flag("--csv-display", args->csv_display,
                    "Write the CSV as the report shows its values (the old form: no byte-order "
                    "mark, no totals rows)");
  command->add_option("--xlsx", args->xlsx,
                      "Write the report's rows as an Excel workbook (.xlsx) to this file");
  command->add_flag("--progress", args->progress,
                    "Show progress on stderr even when it is not a terminal");
  command->callback([args, &options] {
    const int outputs = static_cast<int>(!args->pdf.empty()) +
                        static_cast<int>(!args->csv.empty()) +
                        static_cast<int>(!args->xlsx.empty());
    if (outputs > 1) {
      Fail(kUsageError, "give only one of --pdf, --csv and --xlsx");
    }
    if (args->csv_display && args->csv.empty()) Fail(kUsageError, "--csv-display needs --csv");
    if (args->file.empty()) {
      if (!args->pdf.empty() || !args->csv.empty() || !args->xlsx.empty() || !args->sets.empty()) {
        Fail(kUsageError, "--pdf, --csv, --xlsx and --set need a report FILE");
      }
      const int code = OpenEditor(EntryMethod::kReport, {}, options);
      if (code != 0) throw CLI::RuntimeError(code);
      return;
    }
#if CVVE_WITH_QT
    RunReportCommand(*args, options);
#else
    Fail(kReportError, "this build has no report engine (configure with -DCVVE_WITH_QT=ON)");
#endif
  });
  RegisterDemoDbCommand(app);
}

}  // namespace viewedit
