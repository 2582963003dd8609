#pragma once
// Changes to the report files of one folder (a report is a .cvx and a .cvr)
// that a crash cannot leave half done. The new contents are written to
// temporary files first; then an intent file listing every rename and
// removal is put in place atomically, and only then are the files renamed
// and removed. The next opening of the folder finishes a transaction whose
// intent file is there (every new file is already on disk) and removes the
// temporary files of one that never got that far. So after a crash the
// folder holds the old pair or the new pair, never a mix.
//
// Callers hold the folder's lock (ReportsLockPath) around Commit and Recover.
#include <string>
#include <vector>

namespace cvve::filesafety {

class ReportTransaction {
 public:
  explicit ReportTransaction(std::string folder) : folder_(std::move(folder)) {}
  // Puts `bytes` at `path` (replacing what is there).
  void Put(const std::string& path, std::string bytes);
  // Removes `path`; a missing file is no error.
  void Remove(const std::string& path);
  // Carries the changes out, after finishing any interrupted transaction.
  // Throws cvve::Error when the new files cannot be written: nothing was
  // changed then. A failure after the intent file is in place leaves it for
  // the next Recover to finish.
  void Commit();

 private:
  struct Write {
    std::string path, bytes;
  };
  std::string folder_;
  std::vector<Write> puts_;
  std::vector<std::string> removals_;
};

// Finishes the interrupted transaction of `folder`, if any, and removes the
// temporary files of dead processes. Returns false when an intent file was
// found that cannot be read (it is then left alone).
bool RecoverReports(const std::string& folder);
// The lock file of a reports folder.
std::string ReportsLockPath(const std::string& folder);
// The intent file of a reports folder.
std::string IntentPath(const std::string& folder);

}  // namespace cvve::filesafety
