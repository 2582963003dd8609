#pragma once
// The one file set the tests share, and the helpers that drive the editor
// on it (see fixtures.cc for what the files hold).
#include <sys/resource.h>

#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "reports/report_engine.h"
#include "test_support.h"
#include "viewfiles/document_cursor.h"

namespace cvve::testing {

using Names = std::vector<std::string>;

extern const std::string kSetup, kDefaults, kViews;

// A views file of profile records, each its name and the elements after it.
std::string ViewsFile(const std::vector<std::pair<std::string, std::string>>& profiles);
// The profile document (.cvx) of a custom report on Accounts.
std::string ReportDocument(const std::string& name);
std::string ReportsFolder(const HeadlessEditor& h);
// Writes the reports (name, .cvx text) and opens the editor in report mode,
// as ReportEdit does.
void OpenReports(HeadlessEditor& h,
                 const std::vector<std::pair<std::string, std::string>>& reports);
// The editor on the shared file set in view mode, `name` selected if given.
void OpenFileSet(HeadlessEditor& h, const std::string& name = "");
// The editor in report mode on the one report "Sales", selected.
void OpenSalesReport(HeadlessEditor& h);
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

// A report engine whose reports declare `variables` and yield `pages`
// (nothing when empty); it records what it was asked to do.
class FakeEngine : public ReportEngine {
 public:
  std::unique_ptr<Report> CreateReport() override;
  std::unique_ptr<ReportViewer> CreateViewer() override;

  std::vector<std::string> variables;
  std::optional<int> pages = 1;
  bool load_fails = false;  // Load throws "cannot open " + path
  struct Log {
    std::vector<std::string> loaded;
    std::vector<std::pair<int, std::string>> set;  // position, value
    int created = 0, released = 0, runs = 0, shown = 0;
    int handed_count = -1;    // the Count() of the result the viewer got; -1 none
    bool own_result = false;  // the viewer got the engine's own result object
  } log;
};

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
