#include "filesafety/file_identity.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <pugixml.hpp>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <xxhash.h>

namespace cvve::filesafety {

std::uint64_t ContentHash(const char* data, std::size_t size) { return XXH3_64bits(data, size); }

std::uint64_t ContentHash(const std::string& bytes) {
  return ContentHash(bytes.data(), bytes.size());
}

namespace {

// A buffer from pugixml's allocation function, so that a parse in place can
// take it over and free it with the document.
class ParseBuffer {
 public:
  ParseBuffer() = default;
  ParseBuffer(const ParseBuffer&) = delete;
  ParseBuffer& operator=(const ParseBuffer&) = delete;
  ~ParseBuffer() { Free(data_); }
  char* data() { return data_; }
  std::size_t size() const { return size_; }
  // Keeps what the buffer holds; a shrink only changes the size.
  void resize(std::size_t size) {
    if (size > capacity_) {
      auto* bigger = static_cast<char*>(pugi::get_memory_allocation_function()(size));
      if (bigger == nullptr) throw std::bad_alloc();
      if (data_ != nullptr) std::memcpy(bigger, data_, size_);
      Free(data_);
      data_ = bigger;
      capacity_ = size;
    }
    size_ = size;
  }
  char* Release() { return std::exchange(data_, nullptr); }
  static void Free(char* data) {
    if (data != nullptr) pugi::get_memory_deallocation_function()(data);
  }

 private:
  char* data_ = nullptr;
  std::size_t size_ = 0, capacity_ = 0;
};

// The whole file through one descriptor, in as few reads as its size allows
// (a file that grows meanwhile is read to its end). False on a read error.
template <class Buffer>
bool ReadAll(int fd, std::size_t size_hint, Buffer& content) {
  content.resize(size_hint + 1);  // one byte more sees the end without another call
  std::size_t used = 0;
  for (;;) {
    if (used == content.size()) content.resize(content.size() * 2);
    const ssize_t got = ::pread(fd, content.data() + used, content.size() - used,
                                static_cast<off_t>(used));
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

// Reads the file at `path` into `content`; the descriptor it was read
// through is returned open (or -1) for the caller to keep or close.
template <class Buffer>
FileIdentity ReadThrough(const std::string& path, Buffer& content, int& fd) {
  fd = -1;
  FileIdentity id;
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return id;
  id.exists = true;
  id.size = static_cast<std::uintmax_t>(info.st_size);
  id.mtime_ns = static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec;
  if (!S_ISREG(info.st_mode)) return id;  // a folder or device has no bytes of its own
  fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return id;
  if (!ReadAll(fd, static_cast<std::size_t>(info.st_size), content)) {
    ::close(fd);
    fd = -1;
    return id;
  }
  id.readable = true;
  id.hash = ContentHash(content.data(), content.size());
  return id;
}

}  // namespace

LoadedBytes::LoadedBytes(int fd, std::size_t length, std::uint64_t hash)
    : fd_(fd), length_(length), hash_(hash) {}

LoadedBytes::~LoadedBytes() { ::close(fd_); }

std::optional<std::string> LoadedBytes::Read() const {
  std::string content;
  if (!ReadAll(fd_, length_, content)) return std::nullopt;
  // Rewritten in place since: these are not the bytes that were loaded.
  if (content.size() != length_ || ContentHash(content) != hash_) return std::nullopt;
  return content;
}

FileIdentity ReadIdentity(const std::string& path, std::string* bytes) {
  std::string content;
  int fd = -1;
  const FileIdentity id = ReadThrough(path, content, fd);
  if (fd >= 0) ::close(fd);
  if (bytes && id.readable) *bytes = std::move(content);
  return id;
}

FileRead::FileRead(FileRead&& other) noexcept { *this = std::move(other); }

FileRead& FileRead::operator=(FileRead&& other) noexcept {
  if (this != &other) {
    ParseBuffer::Free(buffer);
    identity = other.identity;
    buffer = std::exchange(other.buffer, nullptr);
    size = std::exchange(other.size, 0);
    bytes = std::move(other.bytes);
  }
  return *this;
}

FileRead::~FileRead() { ParseBuffer::Free(buffer); }

char* FileRead::Release() { return std::exchange(buffer, nullptr); }

FileRead ReadForParse(const std::string& path, bool keep) {
  FileRead read;
  ParseBuffer content;
  int fd = -1;
  read.identity = ReadThrough(path, content, fd);
  if (fd < 0) return read;
  if (keep) {
    read.bytes = std::make_shared<const LoadedBytes>(fd, content.size(), read.identity.hash);
  } else {
    ::close(fd);
  }
  read.size = content.size();
  read.buffer = content.Release();
  return read;
}

}  // namespace cvve::filesafety
