#pragma once
// Serialises writers of one file across processes and machines: an advisory
// fcntl lock on a lock file beside it (local disks and NFS honour it). The
// lock is held by the object and released when it goes.
#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace cvve::filesafety {

class FileLock {
 public:
  FileLock(FileLock&& other) noexcept;
  FileLock& operator=(FileLock&&) = delete;
  FileLock(const FileLock&) = delete;
  ~FileLock();

  // Takes the exclusive lock on `lock_path` (created when missing), waiting
  // up to `timeout` while another process holds it; `on_wait(true)` is called
  // once when the wait starts and `on_wait(false)` when it ends. Nothing when
  // the wait ran out (`error` says why). In a folder where the lock file
  // cannot be made (read-only, full) an unheld lock is returned: nothing can
  // be written there, and the write says why itself.
  static std::optional<FileLock> Acquire(const std::string& lock_path,
                                         std::chrono::milliseconds timeout,
                                         const std::function<void(bool)>& on_wait = {},
                                         std::string* error = nullptr);

 private:
  explicit FileLock(int fd) : fd_(fd) {}
  int fd_ = -1;
};

// The lock file that guards `path`: a hidden file beside it.
std::string LockPathFor(const std::string& path);
// How long a writer waits for another one: CVVE_LOCK_WAIT_MS when set (a
// test aid), else ten seconds.
std::chrono::milliseconds LockWait();

}  // namespace cvve::filesafety
