// viewedit, viewedit acct|inv|eod and viewedit edit VIEWS DEFAULTS SETUP: the
// editor window on a file set, as the host's entry methods open it. Without a
// display the commands say how to run them instead of letting Qt abort.
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "commands.h"
#include "component/editor_environment.h"
#include "cvviewedit/cls_view_edit.h"

#if CVVE_WITH_QT
#include <QApplication>
#include <QPixmap>
#include <QTimer>

#include "component/frm_acct_view_edit.h"
#include "gui/editor_window.h"
#include "gui/qt_screen.h"
#include "opening/read_ahead.h"
#include "reportengine/qt_report_engine.h"
#include "reportengine/results/guarded_source.h"
#endif

namespace viewedit {

namespace {

constexpr int kFailed = 1;
constexpr int kBadOption = 2;
constexpr int kNoDisplay = 3;

// Hidden: grab the editor window to a PNG once it is shown, then close it
// without saving (documentation and the launcher's own test).
std::string& ScreenshotPath() {
  static std::string path;
  return path;
}

// Hidden too: the profile (node text) to select before the grab.
std::string& ScreenshotNode() {
  static std::string node;
  return node;
}

// How long after the window shows the grab is taken: long enough for the
// layout to settle, or for the results pane to show what it ran.
int& ScreenshotDelay() {
  static int milliseconds = 400;
  return milliseconds;
}

void AddScreenshotOption(CLI::App& command) {
  command.add_option("--screenshot", ScreenshotPath(), "Save the window as PNG and close it")
      ->group("");
  command.add_option("--screenshot-select", ScreenshotNode(), "Select this node first")->group("");
  command.add_option("--screenshot-delay", ScreenshotDelay(), "Milliseconds before the grab")
      ->check(CLI::Range(0, 600000))
      ->group("");
}

[[maybe_unused]] const char* EntryName(EntryMethod method) {
  switch (method) {
    case EntryMethod::kAcct:
      return "AcctViewEdit";
    case EntryMethod::kInv:
      return "InvViewEdit";
    case EntryMethod::kEod:
      return "EODViewEdit";
    case EntryMethod::kReport:
      return "ReportEdit";
    case EntryMethod::kEdit:
      return "ViewEdit";
  }
  return "";
}

// The views, defaults and setup files the entry method will read (views and
// defaults "" for the reports, which are no such set; all "" when the method
// names none).
struct FileNames {
  std::string views, defaults, setup;
};
[[maybe_unused]] FileNames FileNamesOf(EntryMethod method,
                                       const std::vector<std::string>& files) {
  switch (method) {
    case EntryMethod::kAcct:
      return {"acctviews.xml", "acctviewsdef.xml", "viewsetup.xml"};
    case EntryMethod::kInv:
      return {"v_invviews.xml", "v_invdef.xml", "v_invsetup.xml"};
    case EntryMethod::kEod:
      return {"eodviews.xml", "eoddef.xml", "eodsetup.xml"};
    case EntryMethod::kReport:
      return {"", "", "reportsetup.xml"};
    case EntryMethod::kEdit:
      if (files.size() == 3) return {files[0], files[1], files[2]};
      return {};
  }
  return {};
}

}  // namespace

int OpenEditor(EntryMethod method, const std::vector<std::string>& files,
               const HostOptions& options) {
#if CVVE_WITH_QT
  cvve::DefaultHostServices host;
  try {
    host = MakeHost(options);
  } catch (const std::exception& e) {
    std::cerr << "viewedit: " << e.what() << "\n";
    return kBadOption;
  }
  if (!cvve::gui::HasDisplay()) {
    std::cerr << "viewedit: there is no display to open the editor window on (DISPLAY and "
                 "WAYLAND_DISPLAY are not set).\n"
                 "  Run it under a virtual display:   xvfb-run viewedit ...\n"
                 "  or drive the editor without one:  viewedit script FILE  (see viewedit "
                 "script --help)\n";
    return kNoDisplay;
  }
  if (method == EntryMethod::kEdit && files.size() != 3) {
    std::cerr << "viewedit edit: give the three files VIEWS DEFAULTS SETUP\n";
    return kBadOption;
  }
  const FileNames names = FileNamesOf(method, files);
  const std::string& setup = names.setup;
  const std::string folder = host.ViewFilesFolder() + "/";
  // The files are read and parsed on another thread while the window's
  // toolkit starts; the editor takes them as its own load would leave them.
  std::unique_ptr<cvve::opening::ReadAhead> read_ahead;
  if (!names.views.empty()) {
    read_ahead = std::make_unique<cvve::opening::ReadAhead>(
        folder + names.views, folder + names.defaults, folder + setup);
  }
  std::error_code ec;
  if (!setup.empty() &&
      !std::filesystem::is_regular_file(host.view_files_folder + "/" + setup, ec)) {
    std::cerr << "viewedit: warning: " << setup << " is not in " << host.view_files_folder
              << "; the editor will offer no data sets\n";
  }

  static int argc = 1;
  static char name[] = "viewedit";
  static char* argv[] = {name, nullptr};
  std::unique_ptr<QApplication> app;
  if (QApplication::instance() == nullptr) app = std::make_unique<QApplication>(argc, argv);
  QApplication::setApplicationName("cvViewEdit");

  cvve::reportengine::EngineSettings engine;
  const cvve::reportengine::EditorDatabase database = ResolveEditorDatabase(options);
  engine.database = database.url;
  engine.user_where = database.user_where;
  engine.limits = database.limits;
  cvve::gui::QtScreen screen(std::make_unique<cvve::reportengine::QtReportEngine>(engine));
  screen.qt_dialogs().database = database;
  cvve::EditorEnvironment env{host, screen.prompter(), screen.dialogs(), screen.reports(),
                              read_ahead.get()};

  int code = 0;
  const std::string screenshot = ScreenshotPath();
  if (!screenshot.empty()) {
    const std::string select = ScreenshotNode();
    screen.qt_dialogs().on_editor_shown = [screenshot, select,
                                           &code](cvve::gui::EditorWindow& window) {
      if (!select.empty()) {
        window.binder().Act([&window, &select] {
          cvve::ui::TreeView& tree = window.editor().tvwViews;
          const auto& found = tree.FindText(select);
          if (!found.empty()) tree.UserSelect(found.front());
        });
      }
      // Let the layout settle and paint before the grab.
      QTimer::singleShot(ScreenshotDelay(), &window, [&window, screenshot, &code] {
        if (!window.grab().save(QString::fromStdString(screenshot), "PNG")) {
          std::cerr << "viewedit: cannot write the screenshot " << screenshot << "\n";
          code = kFailed;
        }
        window.binder().Act([&window] { window.editor().cmdCancel.Click(); });
      });
    };
  }

  cvve::clsViewEdit component(env);
  try {
    switch (method) {
      case EntryMethod::kAcct:
        component.AcctViewEdit();
        break;
      case EntryMethod::kInv:
        component.InvViewEdit();
        break;
      case EntryMethod::kEod:
        component.EODViewEdit();
        break;
      case EntryMethod::kReport:
        component.ReportEdit();
        break;
      case EntryMethod::kEdit:
        component.ViewEdit(files[0], files[1], files[2]);
        break;
    }
  } catch (const std::exception& e) {
    std::cerr << "viewedit: " << EntryName(method) << " failed: " << e.what() << "\n";
    return kFailed;
  }
  return code;
#else
  (void)method;
  (void)files;
  (void)options;
  std::cerr << "viewedit: this build has no editor window (configure with -DCVVE_WITH_QT=ON); "
               "drive the editor with `viewedit script FILE`\n";
  return kNoDisplay;
#endif
}

void RegisterGuiCommands(CLI::App& app, HostOptions& options) {
  AddScreenshotOption(app);
  AddReportDatabaseOptions(app, options);
  app.footer(
      "Without a sub-command viewedit opens the account views, as `viewedit acct` does. The "
      "editor window needs a display: without one run it as `xvfb-run viewedit`, or drive the "
      "editor with `viewedit script`. Exit codes of the editor commands: 0 closed, 1 the entry "
      "call failed, 2 a bad option, 3 no display.");
  const struct {
    const char* name;
    EntryMethod method;
    const char* help;
  } kViews[] = {
      {"acct", EntryMethod::kAcct,
       "Edit the account views (acctviews.xml, acctviewsdef.xml, viewsetup.xml)"},
      {"inv", EntryMethod::kInv,
       "Edit the inventory views (v_invviews.xml, v_invdef.xml, v_invsetup.xml)"},
      {"eod", EntryMethod::kEod,
       "Edit the end-of-day views (eodviews.xml, eoddef.xml, eodsetup.xml)"},
  };
  for (const auto& view : kViews) {
    CLI::App* command = app.add_subcommand(view.name, view.help);
    AddHostOptions(*command, options);
    AddReportDatabaseOptions(*command, options);
    AddScreenshotOption(*command);
    const EntryMethod method = view.method;
    command->callback([method, &options] {
      const int code = OpenEditor(method, {}, options);
      if (code != 0) throw CLI::RuntimeError(code);
    });
  }
  auto files = std::make_shared<std::vector<std::string>>();
  CLI::App* edit = app.add_subcommand(
      "edit",
      "Edit the views of any file set: VIEWS DEFAULTS SETUP, file names in the views "
      "folder");
  AddHostOptions(*edit, options);
  AddReportDatabaseOptions(*edit, options);
  AddScreenshotOption(*edit);
  edit->add_option("FILES", *files, "The views, defaults and setup file")->expected(3)->required();
  edit->callback([files, &options] {
    const int code = OpenEditor(EntryMethod::kEdit, *files, options);
    if (code != 0) throw CLI::RuntimeError(code);
  });
}

}  // namespace viewedit
