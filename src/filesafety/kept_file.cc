#include "filesafety/kept_file.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <unistd.h>

#include "base/error.h"
#include "filesafety/atomic_file.h"

namespace cvve::filesafety {

namespace {

namespace fs = std::filesystem;

std::string Timestamp() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  ::gmtime_r(&now, &parts);
  char text[32];
  std::strftime(text, sizeof text, "%Y%m%dT%H%M%S", &parts);
  return text;
}

}  // namespace

std::string KeepFile(const std::string& path) {
  std::error_code ec;
  fs::path real(path);
  if (fs::is_symlink(fs::symlink_status(real, ec))) real = fs::weakly_canonical(real, ec);
  const std::string stem = real.string() + ".unreadable-" + Timestamp();
  int last_error = 0;
  for (int n = 0; n < 1000; ++n) {
    const std::string kept = n == 0 ? stem : stem + "-" + std::to_string(n);
    if (fs::exists(fs::symlink_status(kept, ec))) continue;
    // A second name for the same bytes costs nothing and keeps them whole.
    if (::link(real.c_str(), kept.c_str()) == 0) {
      SyncFolder(real.parent_path().string());
      return kept;
    }
    if (errno == EEXIST) continue;
    std::error_code copy_ec;
    if (fs::copy_file(real, kept, fs::copy_options::none, copy_ec)) {
      SyncFolder(real.parent_path().string());
      return kept;
    }
    if (copy_ec == std::errc::file_exists) continue;
    // Unreadable: only a move keeps it (the folder is writable, or the save
    // could not replace the file either).
    fs::remove(kept, ec);
    if (::rename(real.c_str(), kept.c_str()) == 0) {
      SyncFolder(real.parent_path().string());
      return kept;
    }
    last_error = errno;
    break;
  }
  throw Error("Cannot keep '" + path + "': " + std::strerror(last_error ? last_error : EEXIST));
}

}  // namespace cvve::filesafety
