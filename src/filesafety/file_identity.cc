#include "filesafety/file_identity.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xxhash.h>

namespace cvve::filesafety {

std::uint64_t ContentHash(const std::string& bytes) {
  return XXH3_64bits(bytes.data(), bytes.size());
}

namespace {

// The whole file through one descriptor, in as few reads as its size allows
// (a file that grows meanwhile is read to its end). False on a read error.
bool ReadAll(int fd, std::size_t size_hint, std::string& content) {
  content.resize(size_hint + 1);  // one byte more sees the end without another call
  std::size_t used = 0;
  for (;;) {
    if (used == content.size()) content.resize(content.size() * 2);
    const ssize_t got = ::read(fd, content.data() + used, content.size() - used);
    if (got < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    if (got == 0) break;
    used += static_cast<std::size_t>(got);
  }
  content.resize(used);
  return true;
}

}  // namespace

FileIdentity ReadIdentity(const std::string& path, std::string* bytes) {
  FileIdentity id;
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return id;
  id.exists = true;
  id.size = static_cast<std::uintmax_t>(info.st_size);
  id.mtime_ns = static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec;
  if (!S_ISREG(info.st_mode)) return id;  // a folder or device has no bytes of its own
  std::string content;
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return id;
  const bool read = ReadAll(fd, static_cast<std::size_t>(info.st_size), content);
  ::close(fd);
  if (!read) return id;
  id.readable = true;
  id.hash = ContentHash(content);
  if (bytes) *bytes = std::move(content);
  return id;
}

}  // namespace cvve::filesafety
