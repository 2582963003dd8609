#include "filesafety/guarded_writes.h"

#include <filesystem>

#include "base/error.h"
#include "base/text.h"
#include "component/frm_acct_view_edit.h"
#include "filesafety/file_identity.h"
#include "filesafety/atomic_file.h"
#include "filesafety/file_lock.h"
#include "filesafety/kept_file.h"
#include "filesafety/report_transaction.h"
#include "filesafety/views_merge.h"
#include "opening/read_ahead.h"
#include "ui/prompter.h"

namespace cvve::filesafety {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSaveErrorLead = "An error was encountered when saving the current profile:";

std::optional<FileLock> LockFor(frmAcctViewEdit& ed, const std::string& lock_path,
                                const std::string& file) {
  std::string error;
  std::optional<FileLock> lock = FileLock::Acquire(
      lock_path, LockWait(), [&ed](bool waiting) { ed.Prompt().SetWaitCursor(waiting); }, &error);
  if (!lock) {
    ed.Prompt().MsgBox("The file '" + file +
                           "' is being saved by another user.  Nothing was written; please try "
                           "again in a moment.",
                       ui::Buttons::kOk, ui::Icon::kExclamation, "File In Use");
    ed.Prompt().WriteFailed(file, error);
  }
  return lock;
}

std::string Folder(const std::string& path) {
  const fs::path parent = fs::path(path).parent_path();
  return parent.empty() ? std::string(".") : parent.string();
}

// Keeps the file that was not read whole and tells the user where it went.
void KeepAndTell(frmAcctViewEdit& ed, const std::string& path) {
  const std::string kept = KeepFile(path);
  ed.Prompt().ShowStatus("The views file '" + path +
                         "' could not be read completely; its original contents were kept in '" +
                         kept + "'.");
}

// The question for a record or report changed here and on disk meanwhile.
Choice AskKeepMine(frmAcctViewEdit& ed, const std::string& question) {
  const ui::Answer answer = ed.Prompt().MsgBox(
      question + kCrLf + kCrLf +
          "Yes keeps your version, No keeps the other user's version, Cancel returns to the "
          "editor.",
      ui::Buttons::kYesNoCancel, ui::Icon::kQuestion, "Save Changes");
  if (answer == ui::Answer::kYes) return Choice::kMine;
  if (answer == ui::Answer::kNo) return Choice::kTheirs;
  return Choice::kBack;
}

}  // namespace

void LoadViewsFile(frmAcctViewEdit& ed, bool load_by_rule, opening::ParsedFile* early) {
  LoadedFile& loaded = ed.views_loaded;
  loaded = LoadedFile{};
  ed.views_edits.Clear();
  loaded.path = ed.ViewsPath;
  opening::ParsedFile own;
  if (!early) {
    own = opening::ReadFile(ed.ViewsPath, true, load_by_rule);
    early = &own;
  }
  loaded.identity = early->read.identity;
  loaded.bytes = std::move(early->read.bytes);
  if (!loaded.identity.exists) return;
  if (!load_by_rule) {
    loaded.whole = false;  // never loaded, yet OK writes over it
    return;
  }
  ed.ViewsDoc.Reset();
  ed.ViewsDoc.Document() = std::move(early->document);
  // A file with no element at all (empty, or only a declaration as OK
  // writes an empty document) has nothing to lose.
  loaded.whole = loaded.identity.readable &&
                 (early->parsed || early->error == "No document element found");
}

void RememberReport(frmAcctViewEdit& ed) {
  ed.report_loaded_cvx = {ed.ViewsPath, ReadIdentity(ed.ViewsPath), {}, true};
  const std::string cvr = ReplaceAll(ed.ViewsPath, ".cvx", ".cvr");
  ed.report_loaded_cvr = {cvr, ReadIdentity(cvr), {}, true};
}

void RecoverReportsFolder(const std::string& folder) {
  std::error_code ec;
  if (!fs::is_directory(folder, ec)) return;
  // Only a folder with something to finish or clear is locked: opening
  // writes nothing otherwise, not even a lock file.
  bool pending = fs::exists(IntentPath(folder), ec);
  for (fs::directory_iterator it(folder, ec), end; !pending && !ec && it != end;
       it.increment(ec)) {
    pending = IsTempFor(it->path().filename().string(), "");
  }
  if (!pending) return;
  // Opening must not hang on a writer elsewhere; its own commit recovers too.
  std::optional<FileLock> lock = FileLock::Acquire(ReportsLockPath(folder), LockWait());
  if (!lock) return;
  ResumeNext([&] { RecoverReports(folder); });
}

bool WriteViewsFile(frmAcctViewEdit& ed) {
  const std::string& path = ed.ViewsPath;
  std::optional<FileLock> lock = LockFor(ed, LockPathFor(path), path);
  if (!lock) return false;
  try {
    std::string disk_bytes;
    const FileIdentity now = ReadIdentity(path, &disk_bytes);
    const LoadedFile& loaded = ed.views_loaded;
    const bool same_file = loaded.path == path;
    DocumentCursor merged;
    const DocumentCursor* to_write = &ed.ViewsDoc;
    // Only a file is kept aside; anything else in its place makes the write fail.
    std::error_code ec;
    const bool keepable = now.exists && fs::is_regular_file(path, ec);
    if (keepable && (!now.readable || (same_file && !loaded.whole))) {
      KeepAndTell(ed, path);
    } else if (same_file && now != loaded.identity && keepable) {
      // Written by someone else since it was loaded: their records, with ours put in.
      // The file as loaded; when that cannot be had, every record changed
      // here is asked about rather than merged blindly.
      DocumentCursor base;
      bool base_known = !loaded.identity.exists;  // nothing was there: the base is empty
      if (loaded.bytes) {
        if (const std::optional<std::string> bytes = loaded.bytes->Read()) {
          base.LoadText(*bytes);
          base_known = true;
        }
      }
      if (merged.LoadText(disk_bytes)) {
        if (!MergeViews(base_known ? &base.Document() : nullptr, merged.Document(),
                        ed.ViewsDoc.Document(),
                        ed.views_edits,
                        [&ed](const std::string& name) {
                          return AskKeepMine(ed, "The profile '" + name +
                                                     "' was also changed by another user since "
                                                     "you opened these views.  Would you like to "
                                                     "keep your changes?");
                        })) {
          return false;
        }
        to_write = &merged;
      } else {
        KeepAndTell(ed, path);  // theirs does not parse: kept, ours written
      }
    }
    to_write->Save(path);
    FileRead written = ReadForParse(path, true);
    ed.views_loaded.identity = written.identity;
    ed.views_loaded.bytes = std::move(written.bytes);
    ed.views_loaded.whole = true;
    ed.views_loaded.path = path;
    return true;
  } catch (const std::exception& e) {
    ed.ShowError("Error in cmdOK_Click: ", e);
    ed.Prompt().WriteFailed(path, Describe(e));
    return false;
  }
}

bool WriteUnderReportsLock(frmAcctViewEdit& ed, const std::string& path,
                           const std::function<bool()>& write) {
  std::optional<FileLock> lock = LockFor(ed, ReportsLockPath(Folder(path)), path);
  return lock && write();
}

ReportWrite WriteReportFiles(frmAcctViewEdit& ed, const std::string& cvx_path,
                             const std::string& cvx, const std::string& cvr_path,
                             const std::optional<std::string>& cvr,
                             const std::vector<std::string>& removals, bool check_changed) {
  const std::string folder = Folder(cvx_path);
  std::optional<FileLock> lock = LockFor(ed, ReportsLockPath(folder), cvx_path);
  if (!lock) return ReportWrite::kNotWritten;
  try {
    if (check_changed && !ed.report_loaded_cvx.path.empty()) {
      const bool changed = ReadIdentity(ed.report_loaded_cvx.path) !=
                               ed.report_loaded_cvx.identity ||
                           ReadIdentity(ed.report_loaded_cvr.path) != ed.report_loaded_cvr.identity;
      if (changed) {
        const std::string name = fs::path(ed.report_loaded_cvx.path).stem().string();
        const Choice choice =
            AskKeepMine(ed, "The report '" + name +
                                "' was changed by another user since you opened it.  Would you "
                                "like to replace it with your changes?");
        if (choice == Choice::kTheirs) return ReportWrite::kKeptTheirs;
        if (choice == Choice::kBack) return ReportWrite::kNotWritten;
      }
    }
    ReportTransaction change(folder);
    change.Put(cvx_path, cvx);
    if (cvr) change.Put(cvr_path, *cvr);
    for (const std::string& path : removals) change.Remove(path);
    change.Commit();
  } catch (const std::exception& e) {
    ed.Prompt().MsgBox(std::string(kSaveErrorLead) + kCrLf + kCrLf + Describe(e),
                       ui::Buttons::kOk, ui::Icon::kCritical, "Error");
    ed.Prompt().WriteFailed(cvx_path, Describe(e));
    return ReportWrite::kNotWritten;
  }
  ed.report_loaded_cvx = {cvx_path, ReadIdentity(cvx_path), {}, true};
  ed.report_loaded_cvr = {cvr_path, ReadIdentity(cvr_path), {}, true};
  return ReportWrite::kWritten;
}

void RemoveReportFiles(frmAcctViewEdit& ed, const std::vector<std::string>& paths) {
  if (paths.empty()) return;
  const std::string folder = Folder(paths.front());
  std::optional<FileLock> lock = LockFor(ed, ReportsLockPath(folder), paths.front());
  if (!lock) return;
  try {
    ReportTransaction change(folder);
    for (const std::string& path : paths) change.Remove(path);
    change.Commit();
  } catch (const std::exception& e) {
    ed.Prompt().WriteFailed(paths.front(), Describe(e));
  }
}

}  // namespace cvve::filesafety
