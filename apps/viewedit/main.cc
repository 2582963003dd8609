// viewedit: the stand-in for the host application. It opens the profile
// editor on a file set, drives it headless from a script, prints a profile's
// statements, runs reports and makes the demo database.
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>

#include "commands.h"
#include "cvviewedit/host_settings.h"

#if CVVE_WITH_QT
#include <QString>
#include <QtGlobal>

namespace {

// Qt warns on every start in a session without a runtime folder (a root
// shell, cron, CI) and then uses one of its own: the warning only alarms.
// Everything else goes on to Qt's own handler.
QtMessageHandler g_qt_handler = nullptr;

void QtMessages(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR not set"))) return;
  g_qt_handler(type, context, message);
}

}  // namespace
#endif

int main(int argc, char** argv) {
#if CVVE_WITH_QT
  g_qt_handler = qInstallMessageHandler(QtMessages);
#endif
  CLI::App app{"cvViewEdit: the editor of list and report profiles", "viewedit"};
  app.require_subcommand(0, 1);
  app.set_version_flag("--version", std::string("viewedit (cvViewEdit) ") + cvve::Version());
  viewedit::HostOptions options;
  options.database = cvve::HostSettings::Load().database_url;
  viewedit::AddHostOptions(app, options);
  viewedit::RegisterGuiCommands(app, options);
  viewedit::RegisterScriptCommand(app, options);
  viewedit::RegisterSqlCommand(app, options);
  viewedit::RegisterListCommand(app, options);
  viewedit::RegisterReportCommands(app, options);
  // A sub-command takes its parent's footer when it is made; its help says
  // only its own.
  for (CLI::App* command : app.get_subcommands([](CLI::App*) { return true; })) {
    if (command->get_footer() == app.get_footer()) command->footer("");
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    // --help prints and succeeds; a usage error is exit code 2, as for every
    // failure to start; a command's own RuntimeError carries its code.
    int code = app.exit(e);
    if (code == 0 || dynamic_cast<const CLI::RuntimeError*>(&e)) return code;
    return 2;
  }
  try {
    if (app.get_subcommands().empty()) {
      return viewedit::OpenEditor(viewedit::EntryMethod::kAcct, {}, options);
    }
  } catch (const std::exception& e) {
    std::cerr << "viewedit: " << e.what() << "\n";
    return 2;
  }
  return 0;
}
