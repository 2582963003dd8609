#pragma once
// Replacing a file so that a reader (or a crash) sees the old contents or the
// new, never a mix: the new bytes go to a temporary file in the target's own
// folder, are flushed to disk and then renamed over the target. A target that
// is a symbolic link keeps the link; the file it points to is replaced.
#include <string>
#include <vector>

namespace cvve::filesafety {

// New contents written and flushed, not yet in place.
struct PreparedFile {
  std::string target;  // the path as given
  std::string real;    // the file actually replaced (the link's target)
  std::string temp;    // "" once committed or discarded
};

// Writes `bytes` beside the real file of `path`. First removes the stale
// temporary files of the same name left by processes that no longer run.
// Throws cvve::Error (nothing left behind) when the bytes cannot be written.
PreparedFile Prepare(const std::string& path, const std::string& bytes);
// Puts the prepared file in place; with `backup` the replaced file is kept
// as NAME.bak first. Throws cvve::Error, leaving the old file whole.
void Commit(PreparedFile& file, bool backup = true);
// Removes the temporary file of a prepared file that will not be committed.
void Discard(PreparedFile& file) noexcept;
// Prepare and Commit in one.
void ReplaceFile(const std::string& path, const std::string& bytes, bool backup = true);

// True for the name of a temporary file that this module makes for `leaf`
// ("" matches those of any file).
bool IsTempFor(const std::string& name, const std::string& leaf);
// Removes, in `folder`, the temporary files (of `leaf`, or of every file for
// "") whose process is gone: made on this machine by a process that no longer
// exists, or untouched for a day. Returns how many went.
int RemoveStaleTemps(const std::string& folder, const std::string& leaf = "");

// Flushes a folder's entries (a rename in it) to disk; failures are ignored.
void SyncFolder(const std::string& folder) noexcept;

// A test aid: pauses CVVE_TEST_STEP_DELAY_US microseconds between the steps of
// a write, so a test can kill the process between any two of them.
void StepPause() noexcept;

}  // namespace cvve::filesafety
