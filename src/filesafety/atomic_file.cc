#include "filesafety/atomic_file.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "base/error.h"

namespace cvve::filesafety {

namespace {

namespace fs = std::filesystem;

constexpr const char* kTempMark = ".tmp-";

bool WriteAll(int fd, const std::string& data) {
  const char* p = data.data();
  std::size_t left = data.size();
  while (left > 0) {
    ssize_t n = ::write(fd, p, left);
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    p += n;
    left -= static_cast<std::size_t>(n);
  }
  return true;
}

std::string HostName() {
  char name[256] = {};
  if (::gethostname(name, sizeof name - 1) != 0) return "host";
  std::string host(name);
  for (char& c : host) {
    if (c == '-' || c == '/' || c == '.') c = '_';  // keeps the name's fields apart
  }
  return host.empty() ? "host" : host;
}

// The file a write really replaces: a symbolic link's final target.
fs::path RealTarget(const fs::path& path) {
  std::error_code ec;
  if (!fs::is_symlink(fs::symlink_status(path, ec))) return path;
  fs::path real = fs::weakly_canonical(path, ec);
  return ec ? path : real;
}

[[noreturn]] void Fail(const std::string& path, int error) {
  throw Error("Cannot write '" + path + "': " + std::strerror(error));
}

}  // namespace

void StepPause() noexcept {
  static const long delay = [] {
    const char* text = std::getenv("CVVE_TEST_STEP_DELAY_US");
    return text ? std::strtol(text, nullptr, 10) : 0L;
  }();
  if (delay > 0) std::this_thread::sleep_for(std::chrono::microseconds(delay));
}

void SyncFolder(const std::string& folder) noexcept {
  const int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY);
  if (fd >= 0) {
    ::fsync(fd);
    ::close(fd);
  }
}

bool IsTempFor(const std::string& name, const std::string& leaf) {
  if (name.empty() || name[0] != '.') return false;
  const std::size_t mark = name.rfind(kTempMark);
  if (mark == std::string::npos || mark < 2) return false;
  return leaf.empty() || (mark - 1 == leaf.size() && name.compare(1, mark - 1, leaf) == 0);
}

int RemoveStaleTemps(const std::string& folder, const std::string& leaf) {
  static const std::string host = HostName();
  int removed = 0;
  std::error_code ec;
  const auto now = fs::file_time_type::clock::now();
  for (fs::directory_iterator it(folder.empty() ? "." : folder, ec), end; !ec && it != end;
       it.increment(ec)) {
    const std::string name = it->path().filename().string();
    if (!IsTempFor(name, leaf)) continue;
    // NAME.tmp-HOST-PID-XXXXXX
    const std::string fields = name.substr(name.rfind(kTempMark) + std::strlen(kTempMark));
    const std::size_t pid_end = fields.rfind('-');
    const std::size_t pid_start =
        pid_end == std::string::npos ? std::string::npos : fields.rfind('-', pid_end - 1);
    bool stale = false;
    if (pid_start != std::string::npos && fields.substr(0, pid_start) == host) {
      const long pid = std::strtol(fields.c_str() + pid_start + 1, nullptr, 10);
      stale = pid > 0 && ::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH;
    }
    std::error_code time_ec;
    const auto written = fs::last_write_time(it->path(), time_ec);
    if (!time_ec && now - written > std::chrono::hours(24)) stale = true;
    std::error_code remove_ec;
    if (stale && fs::remove(it->path(), remove_ec)) ++removed;
  }
  return removed;
}

PreparedFile Prepare(const std::string& path, const std::string& bytes) {
  const fs::path real = RealTarget(path);
  const fs::path folder = real.has_parent_path() ? real.parent_path() : fs::path(".");
  const std::string leaf = real.filename().string();
  RemoveStaleTemps(folder.string(), leaf);
  static const std::string host = HostName();
  const std::string pattern =
      (folder / ("." + leaf + kTempMark + host + "-" + std::to_string(::getpid()) + "-XXXXXX"))
          .string();
  std::vector<char> temp_name(pattern.begin(), pattern.end());
  temp_name.push_back('\0');
  const int fd = ::mkstemp(temp_name.data());
  if (fd < 0) Fail(path, errno);
  StepPause();
  bool ok = WriteAll(fd, bytes);
  StepPause();
  ok = ok && ::fsync(fd) == 0;
  const int saved_errno = errno;
  ok = (::close(fd) == 0) && ok;
  if (!ok) {
    ::unlink(temp_name.data());
    Fail(path, saved_errno ? saved_errno : EIO);
  }
  // Keep the permissions of the file being replaced, else the usual ones.
  std::error_code ec;
  const auto perms = fs::exists(real, ec) ? fs::status(real, ec).permissions()
                                          : (fs::perms::owner_read | fs::perms::owner_write |
                                             fs::perms::group_read | fs::perms::others_read);
  fs::permissions(temp_name.data(), perms, ec);
  return PreparedFile{path, real.string(), temp_name.data()};
}

void Commit(PreparedFile& file, bool backup) {
  if (file.temp.empty()) return;
  const fs::path real(file.real);
  std::error_code ec;
  if (backup && fs::exists(real, ec)) {
    // One generation of backup: a hard link keeps the old contents even
    // after the rename below replaces the name.
    fs::path bak = real;
    bak += ".bak";
    fs::remove(bak, ec);
    fs::create_hard_link(real, bak, ec);
    if (ec) fs::copy_file(real, bak, fs::copy_options::overwrite_existing, ec);
  }
  StepPause();
  if (::rename(file.temp.c_str(), file.real.c_str()) != 0) {
    const int saved_errno = errno;
    Discard(file);
    Fail(file.target, saved_errno);
  }
  file.temp.clear();
  SyncFolder(real.has_parent_path() ? real.parent_path().string() : std::string("."));
  StepPause();
}

void Discard(PreparedFile& file) noexcept {
  if (file.temp.empty()) return;
  ::unlink(file.temp.c_str());
  file.temp.clear();
}

void ReplaceFile(const std::string& path, const std::string& bytes, bool backup) {
  PreparedFile file = Prepare(path, bytes);
  Commit(file, backup);
}

}  // namespace cvve::filesafety
