#include "host/host_services.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#ifndef CVVE_DEMO_DIR
#define CVVE_DEMO_DIR "data/demo"
#endif
// Where an installation puts the demo data, from the library's folder.
#ifndef CVVE_INSTALLED_DEMO_DIR
#define CVVE_INSTALLED_DEMO_DIR "../share/cvviewedit/demo"
#endif

namespace cvve {

namespace fs = std::filesystem;

namespace {

// The installed demo data beside the binary this code is in ("" in a build
// tree), so that an installation can be moved as a whole.
std::string InstalledDemoFolder() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&InstalledDemoFolder), &info) == 0 || !info.dli_fname) {
    return {};
  }
  std::error_code ec;
  const fs::path binary = fs::canonical(info.dli_fname, ec);
  if (ec) return {};
  const fs::path demo = binary.parent_path() / CVVE_INSTALLED_DEMO_DIR;
  if (!fs::is_regular_file(demo / "viewsetup.xml", ec)) return {};
  return fs::weakly_canonical(demo, ec).string();
}

SettingsReader& Reader() {
  static SettingsReader reader = nullptr;
  return reader;
}

}  // namespace

std::string DemoDataFolder() {
  if (const char* env = std::getenv("CVVE_DATA_DIR"); env && *env) {
    return WithoutTrailingSeparator(env);
  }
  static const std::string installed = InstalledDemoFolder();
  if (!installed.empty()) return installed;
  return WithoutTrailingSeparator(CVVE_DEMO_DIR);
}

HostSettings DemoHostSettings() {
  HostSettings settings;
  settings.views_folder = DemoDataFolder();
  settings.reports_folder = settings.views_folder;
  settings.users = DemoUsers(settings.views_folder);
  return settings;
}

void RegisterSettingsReader(SettingsReader reader) { Reader() = reader; }

HostSettings HostSettings::Load() {
  HostSettings settings = DemoHostSettings();
  if (Reader()) Reader()(settings);
  return settings;
}

std::string RunningExecutableName() {
  std::error_code ec;
  fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  if (ec) return {};
  return exe.stem().string();
}

std::string WithoutTrailingSeparator(std::string folder) {
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return folder;
}

std::vector<std::string> DemoUsers(const std::string& folder) {
  return UsersFile(folder + "/users.txt");
}

std::vector<std::string> UsersFile(const std::string& path) {
  std::vector<std::string> names;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty() && line[0] == '#') continue;
    names.push_back(line);
  }
  return names;
}

DefaultHostServices::DefaultHostServices()
    : view_files_folder(DemoDataFolder()),
      reports_base_folder(DemoDataFolder()),
      users(DemoUsers(DemoDataFolder())),
      executable_name(RunningExecutableName()) {}

DefaultHostServices::DefaultHostServices(const HostSettings& settings) : DefaultHostServices() {
  if (!settings.views_folder.empty()) {
    view_files_folder = WithoutTrailingSeparator(settings.views_folder);
  }
  if (!settings.reports_folder.empty()) {
    reports_base_folder = WithoutTrailingSeparator(settings.reports_folder);
  }
  users = settings.users;
  if (!settings.host_name.empty()) host_name = settings.host_name;
}

bool DefaultHostServices::FileExists(const std::string& path) const {
  std::error_code ec;
  return fs::is_regular_file(path, ec);
}

}  // namespace cvve
