#pragma once
// The editor's writes of its views file and report files, each under the
// file's lock: change detection against what was loaded, the merge and its
// question, keeping bytes the editor could not read, and report pairs that a
// crash cannot mix. Failures are shown in the editor's message boxes and
// told to the Prompter (WriteFailed).
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace cvve {
class frmAcctViewEdit;
namespace opening {
struct ParsedFile;
}
}  // namespace cvve

namespace cvve::filesafety {

// Loads ViewsDoc from ViewsPath as LoadFiles does (only an existing ".xml"
// file, the result not looked at) and remembers what was read. `early`
// (when given) is ViewsPath read and parsed already, its bytes kept.
void LoadViewsFile(frmAcctViewEdit& ed, bool load_by_rule, opening::ParsedFile* early = nullptr);
// Remembers the report pair of ViewsPath as it is on disk now.
void RememberReport(frmAcctViewEdit& ed);
// Finishes an interrupted report-file change in the reports folder (run when
// the reports are opened).
void RecoverReportsFolder(const std::string& folder);

// OK's write of ViewsDoc to ViewsPath. False when nothing was written: the
// lock could not be had, the user chose to go back to the editor, or the
// write failed (each said so); the file on disk is then as it was.
bool WriteViewsFile(frmAcctViewEdit& ed);

enum class ReportWrite { kWritten, kKeptTheirs, kNotWritten };
// Writes a report's files as one change: `cvx` (and `cvr` when given), and
// removes `removals`. With `check_changed`, a report changed on disk since
// it was loaded asks first. Failures show "An error was encountered when
// saving the current profile:" with the reason.
ReportWrite WriteReportFiles(frmAcctViewEdit& ed, const std::string& cvx_path,
                             const std::string& cvx, const std::string& cvr_path,
                             const std::optional<std::string>& cvr,
                             const std::vector<std::string>& removals, bool check_changed);

// Runs `write` (a single file of the reports folder that holds `path`, such
// as an exported definition) under the folder's lock, so it never interleaves
// with another editor's change of a report pair. False when the lock could
// not be had (said so) or `write` returned false.
bool WriteUnderReportsLock(frmAcctViewEdit& ed, const std::string& path,
                           const std::function<bool()>& write);

// Removes a report's files as one change; a missing file is no error, and a
// failure is only told to the Prompter (deleting ignores its errors).
void RemoveReportFiles(frmAcctViewEdit& ed, const std::vector<std::string>& paths);

}  // namespace cvve::filesafety
