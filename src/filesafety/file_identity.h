#pragma once
// What a file was when the editor read it: whether it existed, its size,
// modification time and a hash of its bytes. Two identities compare equal
// only when all of them do, so a rewrite with the same size in the same
// second is still seen.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
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

// The bytes of a file as it was read, without holding them in memory: the
// descriptor it was read through stays open. A writer that puts a new file in
// its place (as every save of this editor does) leaves these bytes as they
// were; one that rewrites the file in place changes them, which Read() tells
// by their size and hash.
class LoadedBytes {
 public:
  // Takes `fd` over; `length` and `hash` are those of the bytes read through it.
  LoadedBytes(int fd, std::size_t length, std::uint64_t hash);
  ~LoadedBytes();
  LoadedBytes(const LoadedBytes&) = delete;
  LoadedBytes& operator=(const LoadedBytes&) = delete;
  // The bytes as they were read; none when they cannot be had any more.
  std::optional<std::string> Read() const;

 private:
  int fd_;
  std::size_t length_;
  std::uint64_t hash_;
};

// A file as the editor loaded it: its identity, a way back to its bytes, and
// whether the editor read all of it (false for bytes it could not read or
// parse, or did not load by rule); such a file is kept aside before it is
// written over.
struct LoadedFile {
  std::string path;
  FileIdentity identity;
  std::shared_ptr<const LoadedBytes> bytes;  // none for a file that was not there
  bool whole = true;
};

// The identity of the file at `path` (following links); a missing file is
// `exists` false, one that cannot be read is `readable` false with no hash.
// `bytes` (when given) receives the contents that were hashed.
FileIdentity ReadIdentity(const std::string& path, std::string* bytes = nullptr);

// A file read once for a parse that takes its buffer over: the buffer comes
// from pugixml's allocation function and is freed here unless released.
struct FileRead {
  FileRead() = default;
  FileRead(FileRead&& other) noexcept;
  FileRead& operator=(FileRead&& other) noexcept;
  ~FileRead();
  // Hands the buffer (size bytes) to its new owner.
  char* Release();

  FileIdentity identity;
  char* buffer = nullptr;
  std::size_t size = 0;
  std::shared_ptr<const LoadedBytes> bytes;  // kept only when asked for
};
// Reads the file at `path` as ReadIdentity does, into a buffer for
// pugi::xml_document::load_buffer_inplace_own. With `keep`, the descriptor
// stays open in `bytes` so that the bytes can be read again later.
FileRead ReadForParse(const std::string& path, bool keep);

// A 64-bit hash of the bytes (XXH3): enough to tell one version of a file from the next.
std::uint64_t ContentHash(const std::string& bytes);
std::uint64_t ContentHash(const char* data, std::size_t size);

}  // namespace cvve::filesafety
