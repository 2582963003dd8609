#include <gtest/gtest.h>

#include <filesystem>

#include "cvviewedit/cls_view_edit.h"
#include "test_support.h"

namespace cvve {
namespace {

using testing::HeadlessEditor;
using testing::TempDir;

const char* kViews =
    "<Views><Profiles><Profile><Name>Mine</Name><DataSet>Accounts</DataSet>"
    "<AcctViewType>0</AcctViewType></Profile></Profiles></Views>";
const char* kSetup =
    "<ViewSetup><RootNodes><Root><Index>0</Index><Name>All</Name></Root></RootNodes>"
    "<DataSets><DataSet><Name>Accounts</Name><SQL>SELECT %FIELDLIST% FROM ACCTS</SQL>"
    "<Columns><Column><Name>Account</Name><SortField>ACCTS.AcctNum</SortField></Column>"
    "</Columns><Filters/></DataSet></DataSets></ViewSetup>";

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
  struct Case {
    const char* views_name;
    const char* setup_name;
    bool views_loaded, setup_loaded;
  } cases[] = {
      {"ACCTVIEWS.XML", "setup.xml", true, true},
      {"acctviews.Xml", "viewsetup", true, true},  // the setup file needs no extension
      {"acctviews.xm", "setup.cfg", false, true},
      {"missing.xml", "missing.xml", false, false},
  };
  for (const auto& c : cases) {
    HeadlessEditor h;
    if (std::string(c.views_name).rfind("missing", 0) != 0) h.dir.Write(c.views_name, kViews);
    if (std::string(c.setup_name).rfind("missing", 0) != 0) h.dir.Write(c.setup_name, kSetup);
    h->SetReportMode(0);
    h->LoadFiles(c.views_name, "defs.xml", c.setup_name);
    EXPECT_EQ(static_cast<bool>(h->ViewsDoc.Root()), c.views_loaded) << c.views_name;
    EXPECT_EQ(static_cast<bool>(h->SetupDoc.Root()), c.setup_loaded) << c.setup_name;
    EXPECT_FALSE(h->ProfileChanged);
  }
}

TEST(LoadFilesTest, EachCallStartsFromEmptyDocuments) {
  HeadlessEditor h;
  h.Open(kViews, "", kSetup);
  ASSERT_TRUE(h->ViewsDoc.Root());
  std::filesystem::remove(h.dir.Path() / "views.xml");
  h->LoadFiles("views.xml", "defs.xml", "setup.xml");
  EXPECT_FALSE(h->ViewsDoc.Root());
  EXPECT_FALSE(h->DefaultsDoc.Root());
}

TEST(LoadFilesTest, DataColumnsAndThePainterRule) {
  HeadlessEditor h;
  h.Open("", "", kSetup);
  EXPECT_EQ(h->Data1Column, 3);
  EXPECT_EQ(h->Data2Column, 5);
  EXPECT_TRUE(h->cell_painter_installed);  // the program is not called "ViewEdit"
  h->Form_Unload();
  EXPECT_FALSE(h->cell_painter_installed);
  h.host.executable_name = "ViewEdit";
  h->LoadFiles("views.xml", "defs.xml", "setup.xml");
  EXPECT_FALSE(h->cell_painter_installed);
  h.host.executable_name = "viewedit";  // the comparison is case-sensitive
  h->LoadFiles("views.xml", "defs.xml", "setup.xml");
  EXPECT_TRUE(h->cell_painter_installed);
}

TEST(EditorCloseTest, OkAsksWritesAndCloses) {
  {
    HeadlessEditor h;
    h.Open(kViews, "", kSetup);
    h->Show();
    h->ProfileChanged = true;
    h.prompter.QueueAnswer(ui::Answer::kCancel);
    h->cmdOK.Click();
    EXPECT_TRUE(h->Visible());  // Cancel keeps the editor open
    EXPECT_TRUE(h->ProfileChanged);
    EXPECT_EQ(h.LastMessage(),
              "You have made changes to the current profile.  Would you like to save these "
              "changes?");
    EXPECT_FALSE(std::filesystem::exists(h.dir.Path() / "views.xml.bak"));
    h.prompter.QueueAnswer(ui::Answer::kNo);
    h->cmdOK.Click();
    EXPECT_FALSE(h->Visible());
    EXPECT_FALSE(h->ProfileChanged);
    // View mode writes the views document, keeping the old file as .bak.
    EXPECT_TRUE(std::filesystem::exists(h.dir.Path() / "views.xml.bak"));
  }
  {
    HeadlessEditor h;
    h.Open(kViews, "", kSetup);
    h->Show();
    h->cmdCancel.Click();
    EXPECT_FALSE(h->Visible());
    EXPECT_FALSE(std::filesystem::exists(h.dir.Path() / "views.xml.bak"));
  }
}

TEST(EditorCloseTest, ReportModeOkWritesNothing) {
  HeadlessEditor h;
  h.dir.Write("reportsetup.xml", kSetup);
  h->SetReportMode(-1);
  h->LoadFiles((h.dir.Path() / "Custom Reports").string() + "/", "", "reportsetup.xml");
  h->Show();
  h->cmdOK.Click();
  EXPECT_FALSE(h->Visible());
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(h.dir.Path()),
                          std::filesystem::directory_iterator()),
            1);
}

// The entry methods, seen from the editor while it is shown.
struct Seen {
  std::int16_t mode = 99;
  std::string views, defaults, setup;
};

TEST(EntryMethodsTest, EachChoosesItsFileSetAndMode) {
  HeadlessEditor h;
  for (const char* name : {"acctviews.xml", "v_invviews.xml", "eodviews.xml"}) {
    h.dir.Write(name, kViews);
  }
  Seen seen;
  h.dialogs.SetDriver([&](ui::Form& form) {
    auto& ed = static_cast<frmAcctViewEdit&>(form);
    seen = {ed.ReportMode(), ed.ViewsPath, ed.DefaultsPath, ed.SetupPath};
  });
  clsViewEdit component(h.env);
  const std::string f = h.host.view_files_folder;
  struct Case {
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
    EXPECT_EQ(seen.views, f + c.views);
    EXPECT_EQ(seen.defaults, f + c.defaults);
    EXPECT_EQ(seen.setup, f + c.setup);
    ASSERT_NE(component.Editor(), nullptr);
    EXPECT_FALSE(component.Editor()->Visible());  // the call returned: closed
  }
  component.ReportEdit();
  EXPECT_NE(seen.mode, 0);
  EXPECT_EQ(seen.views, h.host.reports_base_folder + "/Custom Reports/");
  EXPECT_EQ(seen.setup, f + "/reportsetup.xml");
  EXPECT_TRUE(std::filesystem::is_directory(h.dir.Path() / "Custom Reports"));
  component.ReportEdit();  // the folder exists already: no message, no failure
  for (const auto& m : h.Messages()) EXPECT_EQ(m.find("Custom Reports"), std::string::npos);
}

}  // namespace
}  // namespace cvve
