#include "reports/export_preview.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "base/text.h"
#include "filesafety/file_lock.h"
#include "filesafety/report_transaction.h"
#include "fixtures.h"

namespace cvve::testing {
namespace {

namespace fs = std::filesystem;

TEST(ExportTest, YesWritesOnlyTheReportDefinitionAndSaysWhere) {
  const struct {
    const char* name;
    ui::Answer answer;
    bool blocked;        // a file stands where the folder should be
    std::string second;  // the start of the box after the question, if any
  } cases[] = {
      {"Past Due", ui::Answer::kYes, false,
       Box("Report Saved", "OK", "information",
           "A report was saved named 'Past Due' in the 'Custom Reports' folder in the reports "
           "section of your software.")},
      {"Past Due", ui::Answer::kNo, false, ""},
      {"../Past Due", ui::Answer::kYes, false, "Invalid Report Name|"},
      {"Past Due", ui::Answer::kYes, true, "Error|OK|critical|Error in SaveReportFile: "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.name) + " " + ui::ToString(c.answer));
    HeadlessEditor h;
    OpenFileSet(h, "Past Due");
    if (c.blocked) h.dir.Write("Custom Reports", "a file");
    h->txtCurrProf.SetText(c.name);
    h.prompter.ClearShown();
    h.prompter.QueueAnswer(c.answer);
    h->cmdExport.Click();
    const auto& shown = h.prompter.Shown();
    ASSERT_EQ(shown.size(), c.second.empty() ? 1u : 2u) << ShownPrompts(h);
    EXPECT_EQ(Box(shown[0]), Box("Export", "YesNo", "question",
                                 "Would you like to export this View to a custom report?"));
    if (!c.second.empty()) {
      EXPECT_TRUE(StartsWith(Box(shown[1]), c.second)) << shown[1].text;
    }
    const std::string folder = ReportsFolder(h);
    if (c.second.rfind("Report Saved", 0) == 0) {
      // The lock file of the folder's writers stays beside the report.
      EXPECT_EQ(FilesIn(folder), (std::vector<std::string>{".reports.lock", "Past Due.cvr"}));
      DocumentCursor report;
      ASSERT_TRUE(report.Load(folder + "/Past Due.cvr"));
      EXPECT_EQ(ChildText(report.Root(), "Name"), "Past Due");
    } else if (!c.blocked) {
      EXPECT_FALSE(fs::exists(folder));
      EXPECT_FALSE(fs::exists(h.dir.Path() / "Past Due.cvr"));
    }
    EXPECT_FALSE(h->ProfileChanged);
  }
}

TEST(ExportTest, AnotherEditorsReportChangeHoldsTheExportBackAndNothingIsWritten) {
  HeadlessEditor h;
  OpenFileSet(h, "Past Due");
  const std::string folder = ReportsFolder(h);
  fs::create_directories(folder);
  std::optional<filesafety::FileLock> other = filesafety::FileLock::Acquire(
      filesafety::ReportsLockPath(folder), std::chrono::milliseconds(0));
  ASSERT_TRUE(other);
  h.prompter.ClearShown();
  h.prompter.QueueAnswer(ui::Answer::kYes);
  ::setenv("CVVE_LOCK_WAIT_MS", "100", 1);
  h->cmdExport.Click();
  ::unsetenv("CVVE_LOCK_WAIT_MS");
  const auto& shown = h.prompter.Shown();
  ASSERT_EQ(shown.size(), 2u) << ShownPrompts(h);
  EXPECT_TRUE(StartsWith(Box(shown[1]), "File In Use|OK|exclamation|")) << shown[1].text;
  EXPECT_FALSE(fs::exists(folder + "/Past Due.cvr"));
  EXPECT_EQ(h.prompter.WriteFailures().size(), 1u);

  other.reset();
  h.prompter.QueueAnswer(ui::Answer::kYes);
  h->cmdExport.Click();
  EXPECT_TRUE(fs::exists(folder + "/Past Due.cvr"));
}

// The report "Sales" in report mode, previewed through a fake engine; the
// variables dialog takes `values`.
class PreviewTest : public ::testing::Test {
 protected:
  void SetUp() override {
    OpenSalesReport(h);
    h->Env().reports = &engine;
    h.dialogs.SetDriver([this](ui::Form& form) {
      ++dialogs_shown;
      dialog_in_value_mode = h->Variables().InValueEntryMode();
      for (int slot = 0; slot < kVariableSlots; ++slot) {
        h->Variables().txtValue[slot].SetText(values[slot]);
      }
      form.Hide();
    });
    h.prompter.ClearShown();
  }
  std::string ReportPath() const { return ReportsFolder(h) + "/Sales.cvr"; }
  HeadlessEditor h;
  FakeEngine engine;
  int dialogs_shown = 0;
  bool dialog_in_value_mode = false;
  std::vector<std::string> values = {"", "", "", ""};
};

TEST_F(PreviewTest, UnsavedChangesAreSavedFirstOrNothingIsPreviewed) {
  h->chkTotals.UserClick();
  h.prompter.QueueAnswer(ui::Answer::kNo);
  h->cmdPreviewReport.Click();
  ASSERT_EQ(h.prompter.Shown().size(), 1u);
  EXPECT_EQ(Box(h.prompter.Shown()[0]),
            Box("Save Changes", "YesNo", "question",
                "You must save your changes before previewing.  Would you like to save your "
                "changes?"));
  EXPECT_EQ(engine.log.created, 0);
  EXPECT_TRUE(h->ProfileChanged);
  EXPECT_FALSE(fs::exists(ReportPath()));

  h.prompter.QueueAnswer(ui::Answer::kYes);
  h->cmdPreviewReport.Click();
  EXPECT_FALSE(h->ProfileChanged);
  DocumentCursor report;
  ASSERT_TRUE(report.Load(ReportPath()));
  EXPECT_EQ(ChildText(report.Root(), "Totals"), "1");
  EXPECT_EQ(engine.log.loaded, std::vector<std::string>{ReportPath()});
  EXPECT_EQ(engine.log.shown, 1);
}

TEST_F(PreviewTest, ReportWithoutVariablesShowsNoDialogAndNoEngineShowsNothing) {
  h->Variables().SetVariable(2, "", "Text", "NO_CAPTION");  // a name alone defines nothing
  engine.variables = {"$NO_CAPTION"};
  h->cmdPreviewReport.Click();
  EXPECT_EQ(dialogs_shown, 0);
  EXPECT_TRUE(engine.log.set.empty());
  EXPECT_EQ(engine.log.loaded, std::vector<std::string>{ReportPath()});
  EXPECT_EQ(engine.log.runs + engine.log.shown, 2);

  h->Env().reports = nullptr;
  h->Variables().SetVariable(0, "Start Date:", "Date", "START_DATE");
  h->cmdPreviewReport.Click();
  EXPECT_EQ(dialogs_shown, 0);
  EXPECT_TRUE(h.prompter.Shown().empty());
}

TEST_F(PreviewTest, EnteredValuesGoToTheReportVariablesOfTheSameName) {
  h->Variables().SetVariable(0, "Start Date:", "Date", "START_DATE");
  h->Variables().SetVariable(1, "Nameless:", "Text", "");  // skipped, even with "$" below
  h->Variables().SetVariable(2, "", "Text", "DEALER");     // no caption, but named
  values = {"2024-01-01", "ignored", "Smith", "unused"};
  engine.variables = {"$START_DATE", "$", "$DEALER", "$START_DATE", "$OTHER", "START_DATE"};
  h->cmdPreviewReport.Click();
  EXPECT_EQ(dialogs_shown, 1);
  EXPECT_TRUE(dialog_in_value_mode);
  EXPECT_EQ(engine.log.set, (std::vector<std::pair<int, std::string>>{
                                {1, "2024-01-01"}, {4, "2024-01-01"}, {3, "Smith"}}));
  EXPECT_EQ(engine.log.shown, 1);
}

TEST_F(PreviewTest, ViewerIsShownOnlyForAResultWithPagesAndFailuresAreReported) {
  const struct {
    std::optional<int> pages;
    int handed, shown;  // what the viewer got, and whether it showed
  } cases[] = {{std::nullopt, -1, 0}, {0, 0, 0}, {3, 3, 1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.pages ? Str(*c.pages) : std::string("no result"));
    engine.log = {};
    engine.pages = c.pages;
    h->cmdPreviewReport.Click();
    EXPECT_EQ(engine.log.runs, 1);
    EXPECT_EQ(engine.log.handed_count, c.handed);
    EXPECT_EQ(engine.log.shown, c.shown);
    EXPECT_EQ(engine.log.released, engine.log.created);  // report and viewer released
    EXPECT_TRUE(h.prompter.Shown().empty());
  }
  engine.log = {};
  engine.load_fails = true;
  h->cmdPreviewReport.Click();
  ASSERT_EQ(h.prompter.Shown().size(), 1u);
  EXPECT_EQ(Box(h.prompter.Shown()[0]), Box("Error", "OK", "critical",
                                            std::string("Error in cmdPreviewReport_Click: ") +
                                                kCrLf + kCrLf + "cannot open " + ReportPath()));
  EXPECT_EQ(engine.log.runs + engine.log.shown, 0);
  EXPECT_EQ(engine.log.released, engine.log.created);
}

}  // namespace
}  // namespace cvve::testing
