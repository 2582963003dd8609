#include "filesafety/file_lock.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <thread>
#include <unistd.h>

namespace cvve::filesafety {

namespace {

// Open-file-description locks belong to the open file, not the process, so
// a second descriptor of the same file in this process cannot drop them.
#ifdef F_OFD_SETLK
constexpr int kSetLock = F_OFD_SETLK;
#else
constexpr int kSetLock = F_SETLK;
#endif

bool TryLock(int fd) {
  struct flock request {};
  request.l_type = F_WRLCK;
  request.l_whence = SEEK_SET;
  return ::fcntl(fd, kSetLock, &request) == 0;
}

}  // namespace

FileLock::FileLock(FileLock&& other) noexcept : fd_(other.fd_) { other.fd_ = -1; }

FileLock::~FileLock() {
  if (fd_ >= 0) ::close(fd_);  // closing the description releases the lock
}

std::optional<FileLock> FileLock::Acquire(const std::string& lock_path,
                                          std::chrono::milliseconds timeout,
                                          const std::function<void(bool)>& on_wait,
                                          std::string* error) {
  const int fd = ::open(lock_path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (fd < 0) {
    // Where no lock file can be made (read-only, full, no such folder), no
    // other file can be written either: the write goes ahead and fails with
    // its own reason.
    if (errno == EACCES || errno == EROFS || errno == EPERM || errno == ENOSPC ||
        errno == ENOENT || errno == ENOTDIR) {
      return FileLock(-1);
    }
    if (error) *error = "Cannot open '" + lock_path + "': " + std::strerror(errno);
    return std::nullopt;
  }
  if (TryLock(fd)) return FileLock(fd);
  if (on_wait) on_wait(true);
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  bool locked = false;
  while (!locked && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    locked = TryLock(fd);
  }
  if (on_wait) on_wait(false);
  if (locked) return FileLock(fd);
  ::close(fd);
  if (error) *error = "'" + lock_path + "' is held by another writer";
  return std::nullopt;
}

std::string LockPathFor(const std::string& path) {
  const std::filesystem::path target(path);
  return (target.parent_path() / ("." + target.filename().string() + ".lock")).string();
}

std::chrono::milliseconds LockWait() {
  if (const char* text = std::getenv("CVVE_LOCK_WAIT_MS")) {
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    if (end != text && value >= 0) return std::chrono::milliseconds(value);
  }
  return std::chrono::seconds(10);
}

}  // namespace cvve::filesafety
