#pragma once
// What a file was when the editor read it: whether it existed, its size,
// modification time and a hash of its bytes. Two identities compare equal
// only when all of them do, so a rewrite with the same size in the same
// second is still seen.
#include <cstdint>
#include <string>

namespace cvve::filesafety {

struct FileIdentity {
  bool exists = false;
  bool readable = false;
  std::uintmax_t size = 0;
  std::int64_t mtime_ns = 0;
  std::uint64_t hash = 0;
  bool operator==(const FileIdentity&) const = default;
};

// A file as the editor loaded it: its identity, its bytes, and whether the
// editor read all of it (false for bytes it could not read or parse, or did
// not load by rule); such a file is kept aside before it is written over.
struct LoadedFile {
  std::string path;
  FileIdentity identity;
  std::string bytes;
  bool whole = true;
};

// The identity of the file at `path` (following links); a missing file is
// `exists` false, one that cannot be read is `readable` false with no hash.
// `bytes` (when given) receives the contents that were hashed.
FileIdentity ReadIdentity(const std::string& path, std::string* bytes = nullptr);

// A 64-bit hash of the bytes (XXH3): enough to tell one version of a file from the next.
std::uint64_t ContentHash(const std::string& bytes);

}  // namespace cvve::filesafety
