#include "reports/export_preview.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/error.h"
#include "base/text.h"
#include "core/profiles/save_fixture.h"
#include "reports/report_engine.h"

namespace cvve {
namespace {

namespace fs = std::filesystem;
using testing::Box;
using testing::HeadlessEditor;
using testing::kSaveDefaults;
using testing::kSaveSetup;
using testing::kSaveViews;
using testing::OpenReports;
using testing::ReportDocument;
using testing::ReportsFolder;
using testing::Select;

// What the fake engine was asked to do.
struct EngineLog {
  std::vector<std::string> loaded;
  std::vector<std::pair<int, std::string>> set;  // position, value
  int created = 0, released = 0, runs = 0, shown = 0;
  int handed_count = -1;  // the Count() of the result the viewer got; -1 none
};

class FakeResult : public ReportResult {
 public:
  explicit FakeResult(int count) : count_(count) {}
  int Count() const override { return count_; }

 private:
  int count_;
};

class FakeReport : public Report {
 public:
  FakeReport(EngineLog& log, std::vector<std::string> variables, std::optional<int> pages,
             bool load_fails)
      : log_(log),
        names_(std::move(variables)),
        values_(names_.size()),
        pages_(pages),
        load_fails_(load_fails) {
    ++log_.created;
  }
  ~FakeReport() override { ++log_.released; }
  void Load(const std::string& path) override {
    log_.loaded.push_back(path);
    if (load_fails_) throw Error("cannot open " + path);
  }
  int VariableCount() const override { return static_cast<int>(names_.size()); }
  std::string VariableName(int position) const override { return names_.at(position - 1); }
  std::string VariableValue(int position) const override { return values_.at(position - 1); }
  void SetVariableValue(int position, const std::string& value) override {
    values_.at(position - 1) = value;
    log_.set.emplace_back(position, value);
  }
  std::unique_ptr<ReportResult> Run() override {
    ++log_.runs;
    if (!pages_) return nullptr;
    return std::make_unique<FakeResult>(*pages_);
  }

 private:
  EngineLog& log_;
  std::vector<std::string> names_, values_;
  std::optional<int> pages_;
  bool load_fails_;
};

class FakeViewer : public ReportViewer {
 public:
  explicit FakeViewer(EngineLog& log) : log_(log) { ++log_.created; }
  ~FakeViewer() override { ++log_.released; }
  void SetResult(std::unique_ptr<ReportResult> result) override {
    log_.handed_count = result ? result->Count() : -1;
  }
  void Show() override { ++log_.shown; }

 private:
  EngineLog& log_;
};

class FakeEngine : public ReportEngine {
 public:
  std::unique_ptr<Report> CreateReport() override {
    return std::make_unique<FakeReport>(log, variables, pages, load_fails);
  }
  std::unique_ptr<ReportViewer> CreateViewer() override {
    return std::make_unique<FakeViewer>(log);
  }
  EngineLog log;
  std::vector<std::string> variables;
  std::optional<int> pages = 1;
  bool load_fails = false;
};

// --- Export ---

class ExportTest : public ::testing::Test {
 protected:
  void SetUp() override {
    h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
    Select(h, "Past Due");
    h.prompter.ClearShown();
  }
  std::string Folder() const { return ReportsFolder(h); }
  HeadlessEditor h;
};

TEST_F(ExportTest, YesWritesOnlyTheReportDefinitionAndSaysWhere) {
  h.prompter.QueueAnswer(ui::Answer::kYes);
  h->cmdExport.Click();

  const auto& shown = h.prompter.Shown();
  ASSERT_EQ(shown.size(), 2u);
  EXPECT_EQ(Box(shown[0]), Box("Export", "YesNo", "question",
                               "Would you like to export this View to a custom report?"));
  EXPECT_EQ(Box(shown[1]), Box("Report Saved", "OK", "information",
                               "A report was saved named 'Past Due' in the 'Custom Reports' "
                               "folder in the reports section of your software."));
  EXPECT_EQ(testing::FilesIn(Folder()), (std::vector<std::string>{"Past Due.cvr"}));
  DocumentCursor report;
  ASSERT_TRUE(report.Load(Folder() + "/Past Due.cvr"));
  EXPECT_EQ(ChildText(report.Root(), "Name"), "Past Due");
  EXPECT_FALSE(h->ProfileChanged);
}

TEST_F(ExportTest, NoWritesNothing) {
  h.prompter.QueueAnswer(ui::Answer::kNo);
  h->cmdExport.Click();
  EXPECT_EQ(h.prompter.Shown().size(), 1u);
  EXPECT_FALSE(fs::exists(Folder()));
}

TEST_F(ExportTest, NameThatWouldLeaveTheFolderIsRefused) {
  h->txtCurrProf.SetText("../Past Due");
  h.prompter.QueueAnswer(ui::Answer::kYes);
  h->cmdExport.Click();
  ASSERT_EQ(h.prompter.Shown().size(), 2u);
  EXPECT_EQ(h.prompter.Shown()[1].title, "Invalid Report Name");
  EXPECT_FALSE(fs::exists(h.dir.Path() / "Past Due.cvr"));
  EXPECT_FALSE(fs::exists(Folder()));
}

TEST_F(ExportTest, FailedWriteIsReportedAndNotAnnounced) {
  h.dir.Write("Custom Reports", "a file where the folder should be");
  h.prompter.QueueAnswer(ui::Answer::kYes);
  h->cmdExport.Click();
  ASSERT_EQ(h.prompter.Shown().size(), 2u);
  EXPECT_TRUE(StartsWith(h.prompter.Shown()[1].text, "Error in SaveReportFile: "));
  EXPECT_EQ(h.prompter.Shown()[1].title, "Error");
}

// --- Preview ---

class PreviewTest : public ::testing::Test {
 protected:
  void SetUp() override {
    OpenReports(h, {{"Sales", ReportDocument("Sales")}});
    Select(h, "Sales");
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

TEST_F(PreviewTest, UnsavedChangesAndNoPreviewsNothing) {
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
}

TEST_F(PreviewTest, UnsavedChangesAndYesSavesTheReportFirst) {
  h->chkTotals.UserClick();
  h.prompter.QueueAnswer(ui::Answer::kYes);
  h->cmdPreviewReport.Click();

  EXPECT_FALSE(h->ProfileChanged);
  DocumentCursor report;
  ASSERT_TRUE(report.Load(ReportPath()));
  EXPECT_EQ(ChildText(report.Root(), "Totals"), "1");
  EXPECT_EQ(engine.log.loaded, (std::vector<std::string>{ReportPath()}));
  EXPECT_EQ(engine.log.shown, 1);
}

TEST_F(PreviewTest, WithoutAnEngineNothingIsShown) {
  h->Env().reports = nullptr;
  h->Variables().SetVariable(0, "Start Date:", "Date", "START_DATE");
  h->cmdPreviewReport.Click();
  EXPECT_EQ(dialogs_shown, 0);
  EXPECT_TRUE(h.prompter.Shown().empty());
}

TEST_F(PreviewTest, ReportWithoutVariablesShowsNoDialog) {
  h->Variables().SetVariable(2, "", "Text", "NO_CAPTION");  // a name alone defines nothing
  engine.variables = {"$NO_CAPTION"};
  h->cmdPreviewReport.Click();

  EXPECT_EQ(dialogs_shown, 0);
  EXPECT_TRUE(engine.log.set.empty());
  EXPECT_EQ(engine.log.loaded, (std::vector<std::string>{ReportPath()}));
  EXPECT_EQ(engine.log.runs, 1);
  EXPECT_EQ(engine.log.shown, 1);
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

TEST_F(PreviewTest, ViewerIsShownOnlyForAResultWithPages) {
  struct Case {
    std::optional<int> pages;
    int handed;  // what the viewer got
    int shown;
  };
  for (const Case& c : {Case{std::nullopt, -1, 0}, Case{0, 0, 0}, Case{3, 3, 1}}) {
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
}

TEST_F(PreviewTest, ReportThatCannotBeLoadedIsReported) {
  engine.load_fails = true;
  h->cmdPreviewReport.Click();
  ASSERT_EQ(h.Messages().size(), 1u);
  EXPECT_EQ(h.Messages()[0], std::string("Error in cmdPreviewReport_Click: ") + kCrLf + kCrLf +
                                 "cannot open " + ReportPath());
  EXPECT_EQ(engine.log.runs, 0);
  EXPECT_EQ(engine.log.shown, 0);
  EXPECT_EQ(engine.log.released, engine.log.created);
}

}  // namespace
}  // namespace cvve
