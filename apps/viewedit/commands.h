#pragma once
// The launcher's sub-commands. Each file registers its own on the CLI11 app;
// main.cc only puts them together. A command's callback reports a non-zero
// exit code by throwing CLI::RuntimeError(code) after printing its message.
#include <CLI/CLI.hpp>

#include "host/host_services.h"
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "results/results.h"

#if CVVE_WITH_QT
namespace cvve::reportengine {
struct EditorDatabase;
class GuardedSource;
}  // namespace cvve::reportengine
#endif

namespace viewedit {

// Options every editor-opening command shares.
struct HostOptions {
  std::string views_folder;    // --views-folder, default: the demo data
  std::string reports_folder;  // --reports-folder, default: the views folder
  std::string users;           // --users a,b,c (default: users.txt of the views folder)
  std::string database;        // --database URL for reports and the editor's rows
  std::string user_where = "1=1";  // --user-where: the current user's %USERWHERE% condition
  std::optional<double> timeout_seconds;  // --timeout: of each report statement
  std::optional<long long> row_limit;     // --row-limit: of each report statement
};

enum class EntryMethod { kAcct, kInv, kEod, kReport, kEdit };

// The host services the options describe (demo data where they say nothing).
// Throws std::runtime_error with a clear message for a folder that does not exist.
cvve::DefaultHostServices MakeHost(const HostOptions& options);
// Adds --views-folder, --reports-folder and --users to a (sub-)command.
void AddHostOptions(CLI::App& command, HostOptions& options);
// Adds --database, --user-where, --timeout and --row-limit, for commands
// that run reports or open the editor (which shows the rows of a profile).
void AddReportDatabaseOptions(CLI::App& command, HostOptions& options);

#if CVVE_WITH_QT
// Makes the (offscreen) Qt application object when there is none, one that
// can show windows with `widgets`. (headless_qt.cc)
void EnsureHeadlessQt(bool widgets = false);
// The editor's database the options name: --database, else the settings
// file's, else the demo database; with --user-where and the limits.
cvve::reportengine::EditorDatabase ResolveEditorDatabase(const HostOptions& options);

// The editor's database for headless commands, opened on the first run.
class LazyRowsSource : public cvve::results::Source {
 public:
  explicit LazyRowsSource(const HostOptions& options);
  ~LazyRowsSource() override;
  cvve::results::Table Run(const std::string& view_sql, const std::vector<std::string>& formats,
                           std::size_t keep_rows) override;
  cvve::results::Table RunReport(const std::string& definition, std::size_t keep_rows) override;

 private:
  cvve::reportengine::GuardedSource& Opened();

  const HostOptions& options_;
  std::unique_ptr<cvve::reportengine::GuardedSource> source_;
};
#endif

// Opens the editor window on a file set (files: VIEWS DEFAULTS SETUP for
// kEdit) and returns the exit code; without a display it says how to run it
// (under xvfb-run, or headless with `viewedit script`). (cmd_gui.cc)
int OpenEditor(EntryMethod method, const std::vector<std::string>& files,
               const HostOptions& options);

// acct | inv | eod | edit VIEWS DEFAULTS SETUP (cmd_gui.cc). With no
// sub-command main.cc opens the account views.
void RegisterGuiCommands(CLI::App& app, HostOptions& options);
// script FILE|- (cmd_script.cc)
void RegisterScriptCommand(CLI::App& app, HostOptions& options);
// sql [--profile NAME] FILESET... (cmd_sql.cc)
void RegisterSqlCommand(CLI::App& app, HostOptions& options);
// list FILESET [--profile NAME] [--limit N] [--csv|--json] (cmd_list.cc)
void RegisterListCommand(CLI::App& app, HostOptions& options);
// report [FILE.cvr ...] (cmd_report.cc): without a file it opens the editor in
// report mode through OpenEditor; and demo-db (cmd_demo_db.cc)
void RegisterReportCommands(CLI::App& app, HostOptions& options);

}  // namespace viewedit
