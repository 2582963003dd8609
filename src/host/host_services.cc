#include "host/host_services.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#ifndef CVVE_DEMO_DIR
#define CVVE_DEMO_DIR "data/demo"
#endif

namespace cvve {

namespace fs = std::filesystem;

std::string DemoDataFolder() {
  if (const char* env = std::getenv("CVVE_DATA_DIR"); env && *env) {
    return WithoutTrailingSeparator(env);
  }
  return WithoutTrailingSeparator(CVVE_DEMO_DIR);
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
  std::vector<std::string> names;
  std::ifstream in(folder + "/users.txt");
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

bool DefaultHostServices::FileExists(const std::string& path) const {
  std::error_code ec;
  return fs::is_regular_file(path, ec);
}

}  // namespace cvve
