#include "filesafety/file_identity.h"

#include <fstream>
#include <iterator>
#include <sys/stat.h>

namespace cvve::filesafety {

std::uint64_t ContentHash(const std::string& bytes) {
  std::uint64_t hash = 14695981039346656037ull;
  for (unsigned char c : bytes) {
    hash ^= c;
    hash *= 1099511628211ull;
  }
  return hash;
}

FileIdentity ReadIdentity(const std::string& path, std::string* bytes) {
  FileIdentity id;
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return id;
  id.exists = true;
  id.size = static_cast<std::uintmax_t>(info.st_size);
  id.mtime_ns = static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec;
  if (!S_ISREG(info.st_mode)) return id;  // a folder or device has no bytes of its own
  std::string content;
  try {
    std::ifstream in(path, std::ios::binary);
    if (!in) return id;
    content.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (in.bad()) return id;
  } catch (const std::exception&) {
    return id;  // the library reports a failed read by throwing
  }
  id.readable = true;
  id.hash = ContentHash(content);
  if (bytes) *bytes = std::move(content);
  return id;
}

}  // namespace cvve::filesafety
