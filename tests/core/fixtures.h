#pragma once
// The one file set the tests share, and the helpers that drive the editor
// on it (see fixtures.cc for what the files hold).
#include <sys/resource.h>

#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include "test_support.h"
#include "viewfiles/document_cursor.h"

namespace cvve::testing {

extern const std::string kSetup, kDefaults, kViews;

// The profile document (.cvx) of a custom report on Accounts.
std::string ReportDocument(const std::string& name);
std::string ReportsFolder(const HeadlessEditor& h);
// Writes the reports (name, .cvx text) and opens the editor in report mode,
// as ReportEdit does.
void OpenReports(HeadlessEditor& h,
                 const std::vector<std::pair<std::string, std::string>>& reports);
// A user's click on the first tree node with that text.
void Select(HeadlessEditor& h, const std::string& name);
// Moves an available column to the used ones with the add button.
void AddColumn(HeadlessEditor& h, const std::string& name);

std::vector<std::string> Entries(const ui::ComboBox& combo);
std::vector<std::string> ProfileNames(const DocumentCursor& doc);
// A message box as "title|buttons|icon|text", to check all four at once.
std::string Box(const std::string& title, const std::string& buttons, const std::string& icon,
                const std::string& text);
std::string Box(const ui::ShownPrompt& shown);
// Every prompt shown so far, one a line, for failure messages.
std::string ShownPrompts(const HeadlessEditor& h);
// The names in a folder, sorted.
std::vector<std::string> FilesIn(const std::string& folder);

// While alive, no file of this process may grow beyond `bytes`: a write
// past it fails halfway (EFBIG), whoever runs the test, root included.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes);
  ~FileSizeLimit();
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit old_{};
  sighandler_t old_handler_ = SIG_DFL;
};

}  // namespace cvve::testing
