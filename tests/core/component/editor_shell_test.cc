#include <gtest/gtest.h>

#include <filesystem>

#include "cvviewedit/cls_view_edit.h"
#include "fixtures.h"

namespace cvve::testing {
namespace {

namespace fs = std::filesystem;

TEST(LoadFilesTest, PathsFollowTheMode) {
  HeadlessEditor h;
  const std::string f = h.host.view_files_folder;
  h->SetReportMode(0);
  h->LoadFiles("v.xml", "d.xml", "s.xml");
  EXPECT_EQ(h->ViewsPath, f + "/v.xml");
  EXPECT_EQ(h->DefaultsPath, f + "/d.xml");
  EXPECT_EQ(h->SetupPath, f + "/s.xml");
  for (std::int16_t mode : {-1, 1, 7}) {
    h->SetReportMode(mode);
    h->LoadFiles("/some/Custom Reports/", "", "s.xml");
    EXPECT_EQ(h->ViewsPath, "/some/Custom Reports/") << mode;
    EXPECT_EQ(h->DefaultsPath, f + "/");
  }
}

TEST(LoadFilesTest, ExtensionRulesDecideWhatLoads) {
  const struct {
    const char *views_name, *setup_name;
    bool views_loaded, setup_loaded;
  } cases[] = {
      {"ACCTVIEWS.XML", "setup.xml", true, true},
      {"acctviews.Xml", "viewsetup", true, true},  // the setup file needs no extension
      {"acctviews.xm", "setup.cfg", false, true},
      {"missing.xml", "missing.xml", false, false},
  };
  for (const auto& c : cases) {
    HeadlessEditor h;
    if (std::string(c.views_name) != "missing.xml") h.dir.Write(c.views_name, kViews);
    if (std::string(c.setup_name) != "missing.xml") h.dir.Write(c.setup_name, kSetup);
    h->SetReportMode(0);
    h->LoadFiles(c.views_name, "defs.xml", c.setup_name);
    EXPECT_EQ(static_cast<bool>(h->ViewsDoc.Root()), c.views_loaded) << c.views_name;
    EXPECT_EQ(static_cast<bool>(h->SetupDoc.Root()), c.setup_loaded) << c.setup_name;
    EXPECT_FALSE(h->ProfileChanged);
  }
  // Each call starts from empty documents.
  HeadlessEditor h;
  h.Open(kViews, kDefaults, kSetup);
  fs::remove(h.dir.Path() / "views.xml");
  fs::remove(h.dir.Path() / "defs.xml");
  h->LoadFiles("views.xml", "defs.xml", "setup.xml");
  EXPECT_FALSE(h->ViewsDoc.Root() || h->DefaultsDoc.Root());
}

TEST(LoadFilesTest, CellPainterUnlessTheProgramIsCalledViewEdit) {
  HeadlessEditor h;
  h.Open("", "", kSetup);
  EXPECT_TRUE(h->cell_painter_installed);
  h->Form_Unload();
  EXPECT_FALSE(h->cell_painter_installed);
  h.host.executable_name = "ViewEdit";
  h->LoadFiles("views.xml", "defs.xml", "setup.xml");
  EXPECT_FALSE(h->cell_painter_installed);
  h.host.executable_name = "viewedit";  // the comparison is case-sensitive
  h->LoadFiles("views.xml", "defs.xml", "setup.xml");
  EXPECT_TRUE(h->cell_painter_installed);
}

TEST(EditorCloseTest, OkAsksWritesAndClosesCancelWritesNothing) {
  HeadlessEditor h;
  h.Open(kViews, "", kSetup);
  h->Show();
  h->ProfileChanged = true;
  h.prompter.QueueAnswer(ui::Answer::kCancel);
  h->cmdOK.Click();
  EXPECT_TRUE(h->Visible());  // Cancel keeps the editor open
  EXPECT_TRUE(h->ProfileChanged);
  EXPECT_FALSE(fs::exists(h.dir.Path() / "views.xml.bak"));
  h.prompter.QueueAnswer(ui::Answer::kNo);
  h->cmdOK.Click();
  EXPECT_FALSE(h->Visible());
  EXPECT_FALSE(h->ProfileChanged);
  // View mode writes the views document, keeping the old file as .bak.
  EXPECT_EQ(h.dir.Read("views.xml.bak"), kViews);

  HeadlessEditor cancelled;
  cancelled.Open(kViews, "", kSetup);
  cancelled->Show();
  cancelled->ProfileChanged = true;
  cancelled->cmdCancel.Click();
  EXPECT_FALSE(cancelled->Visible());
  EXPECT_TRUE(cancelled.Messages().empty());
  EXPECT_EQ(FilesIn(cancelled.dir.Path().string()),
            (std::vector<std::string>{"setup.xml", "views.xml"}));

  HeadlessEditor report;  // report mode: OK writes nothing
  OpenReports(report, {});
  report->Show();
  report->cmdOK.Click();
  EXPECT_FALSE(report->Visible());
  EXPECT_EQ(FilesIn(report.dir.Path().string()),
            (std::vector<std::string>{"Custom Reports", "reportsetup.xml"}));
  EXPECT_TRUE(FilesIn(ReportsFolder(report)).empty());
}

TEST(EntryMethodsTest, EachChoosesItsFileSetAndMode) {
  HeadlessEditor h;
  for (const char* name : {"acctviews.xml", "v_invviews.xml", "eodviews.xml"}) {
    h.dir.Write(name, kViews);
  }
  struct Seen {
    std::int16_t mode = 99;
    std::string views, defaults, setup;
  } seen;
  h.dialogs.SetDriver([&](ui::Form& form) {
    auto& ed = static_cast<frmAcctViewEdit&>(form);
    seen = {ed.ReportMode(), ed.ViewsPath, ed.DefaultsPath, ed.SetupPath};
  });
  clsViewEdit component(h.env);
  const std::string f = h.host.view_files_folder;
  const struct {
    void (clsViewEdit::*entry)();
    std::string views, defaults, setup;
  } cases[] = {
      {&clsViewEdit::AcctViewEdit, "/acctviews.xml", "/acctviewsdef.xml", "/viewsetup.xml"},
      {&clsViewEdit::InvViewEdit, "/v_invviews.xml", "/v_invdef.xml", "/v_invsetup.xml"},
      {&clsViewEdit::EODViewEdit, "/eodviews.xml", "/eoddef.xml", "/eodsetup.xml"},
  };
  for (const auto& c : cases) {
    (component.*c.entry)();
    EXPECT_EQ(seen.mode, 0);
    EXPECT_EQ(seen.views + "|" + seen.defaults + "|" + seen.setup,
              f + c.views + "|" + f + c.defaults + "|" + f + c.setup);
    ASSERT_NE(component.Editor(), nullptr);
    EXPECT_FALSE(component.Editor()->Visible());  // the call returned: closed
  }
  component.ReportEdit();
  EXPECT_NE(seen.mode, 0);
  EXPECT_EQ(seen.views, h.host.reports_base_folder + "/Custom Reports/");
  EXPECT_EQ(seen.setup, f + "/reportsetup.xml");
  EXPECT_TRUE(fs::is_directory(h.dir.Path() / "Custom Reports"));
  component.ReportEdit();  // the folder exists already: no message, no failure
  EXPECT_TRUE(h.Messages().empty());
}

}  // namespace
}  // namespace cvve::testing
