#pragma once
// Bytes the editor could not read are never written over: before a save
// replaces such a file, the file is kept beside it under a timestamped name
// (NAME.unreadable-YYYYMMDDTHHMMSS) that no later save reuses.
#include <string>

namespace cvve::filesafety {

// Keeps the file at `path` (the link's target for a symbolic link) under a
// new timestamped name in its folder and returns that name's path. The file
// is linked or copied there, or, when it cannot be read, moved there (the
// save that follows puts a new file in its place). Throws cvve::Error when
// none of these works; the file is then where it was.
std::string KeepFile(const std::string& path);

}  // namespace cvve::filesafety
