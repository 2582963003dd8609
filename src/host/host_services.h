#pragma once
// What the editor asks of the host application: its folders, a file test,
// its users, its name and the running executable's name. The launcher fills
// these from its options; everything falls back to the demo data.
#include <string>
#include <vector>

#include "cvviewedit/host_settings.h"

namespace cvve {

class HostServices {
 public:
  virtual ~HostServices() = default;
  // The folder of the view files, without a trailing separator.
  virtual std::string ViewFilesFolder() const = 0;
  // The folder under which "Custom Reports" lies, without a trailing separator.
  virtual std::string ReportsBaseFolder() const = 0;
  virtual bool FileExists(const std::string& path) const = 0;
  // The host's users, in the host's order (names may be empty).
  virtual std::vector<std::string> Users() const = 0;
  // The host application's name, as messages name it.
  virtual std::string HostName() const = 0;
  // The running program's file name without its extension.
  virtual std::string ExecutableName() const = 0;
};

// Host services held in plain fields, defaulting to the demo data folder.
class DefaultHostServices : public HostServices {
 public:
  DefaultHostServices();
  // The folders, users and host name of the settings; empty folders and
  // host name stay as the demo data has them.
  explicit DefaultHostServices(const HostSettings& settings);
  std::string ViewFilesFolder() const override { return view_files_folder; }
  std::string ReportsBaseFolder() const override { return reports_base_folder; }
  bool FileExists(const std::string& path) const override;
  std::vector<std::string> Users() const override { return users; }
  std::string HostName() const override { return host_name; }
  std::string ExecutableName() const override { return executable_name; }

  std::string view_files_folder;
  std::string reports_base_folder;
  std::vector<std::string> users;
  std::string host_name = "Corvane";
  std::string executable_name;
};

// The demo data folder: $CVVE_DATA_DIR when set, else the one installed
// beside the library, else the one in the source tree.
std::string DemoDataFolder();
// The base name (without extension) of the running executable.
std::string RunningExecutableName();
// Drops trailing separators, as the host gives its folders.
std::string WithoutTrailingSeparator(std::string folder);
// The host's user list as the demo gives it: one name per line of
// `folder`/users.txt (none when it is missing).
std::vector<std::string> DemoUsers(const std::string& folder);
// A users file: one name per line; lines starting with # are comments.
std::vector<std::string> UsersFile(const std::string& path);

// The settings Load() starts from: the demo data folder for views and
// reports, its users.
HostSettings DemoHostSettings();
// Laid over the demo settings by HostSettings::Load(): the window library
// registers the settings file's reader when it is loaded.
using SettingsReader = void (*)(HostSettings& settings);
void RegisterSettingsReader(SettingsReader reader);

}  // namespace cvve
