#include <filesystem>
#include <stdexcept>

#include "base/text.h"
#include "commands.h"

namespace viewedit {

namespace fs = std::filesystem;

namespace {
std::string CheckedFolder(const std::string& folder, const char* option) {
  std::error_code ec;
  if (!fs::is_directory(folder, ec)) {
    throw std::runtime_error(std::string(option) + ": '" + folder + "' is not a folder");
  }
  return cvve::WithoutTrailingSeparator(fs::absolute(folder).string());
}
}  // namespace

cvve::DefaultHostServices MakeHost(const HostOptions& options) {
  // The settings file's defaults, then what the command line says.
  cvve::HostSettings settings = cvve::HostSettings::Load();
  if (!options.views_folder.empty()) {
    settings.views_folder = CheckedFolder(options.views_folder, "--views-folder");
    settings.reports_folder = settings.views_folder;
    settings.users = cvve::DemoUsers(settings.views_folder);
  }
  if (!options.reports_folder.empty()) {
    settings.reports_folder = CheckedFolder(options.reports_folder, "--reports-folder");
  }
  if (!options.users.empty()) settings.users = cvve::Split(options.users, ',');
  return cvve::DefaultHostServices(settings);
}

void AddHostOptions(CLI::App& command, HostOptions& options) {
  command.add_option("--views-folder", options.views_folder,
                     "Folder of the view files (default: [folders] views of the settings "
                     "file, else the demo data)");
  command.add_option("--reports-folder", options.reports_folder,
                     "Folder that holds 'Custom Reports' (default: the views folder)");
  command.add_option("--users", options.users,
                     "The host's users, comma-separated (default: users.txt of the views folder)");
}

void AddReportDatabaseOptions(CLI::App& command, HostOptions& options) {
  command.add_option("--database", options.database,
                     "The database reports and the editor's results run on: an SQLite file (or sqlite:///PATH) or "
                     "postgresql://USER@HOST:PORT/DB with the password in ~/.pgpass (default: "
                     "[database] url of the settings file, else the demo database, made on "
                     "first use in the cache folder)");
  command
      .add_option("--user-where", options.user_where,
                  "The host's condition for the current user, put in for %USERWHERE%")
      ->capture_default_str();
  command.add_option("--timeout", options.timeout_seconds,
                     "Stop a report statement after this many seconds (default: timeout_seconds "
                     "in [database] of the settings file, else 60)");
  command.add_option("--row-limit", options.row_limit,
                     "Stop a report statement that returns more rows (default: row_limit in "
                     "[database] of the settings file, else 1000000)");
}

}  // namespace viewedit
