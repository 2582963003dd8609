#include "profiles/profile_saver.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "base/text.h"
#include "core/profiles/save_fixture.h"
#include "filters/value_editors.h"
#include "query/sql_builder.h"
#include "viewfiles/profile_record.h"

namespace cvve {
namespace {

namespace fs = std::filesystem;
using testing::Box;
using testing::ChildNames;
using testing::FileSizeLimit;
using testing::HeadlessEditor;
using testing::kSaveDefaults;
using testing::kSaveSetup;
using testing::kSaveViews;
using testing::OpenReports;
using testing::ReadFile;
using testing::ReportDocument;
using testing::ReportsFolder;
using testing::Select;

void AddColumn(HeadlessEditor& h, const std::string& name) {
  const auto& items = h->lstAvailColumns.Items();
  for (int i = 0; i < static_cast<int>(items.size()); ++i) {
    if (items[i] == name) {
      h->lstAvailColumns.SetListIndex(i);
      h->cmdAddForm.Click();
      return;
    }
  }
  ADD_FAILURE() << "no available column " << name;
}

std::vector<std::string> UsedColumnNames(XmlNode record) {
  std::vector<std::string> names;
  for (XmlNode c = record.child("Columns").child("Column"); c; c = c.next_sibling("Column")) {
    names.push_back(ChildText(c, "Name"));
  }
  return names;
}

bool IsBlock(XmlNode record, const char* element) {
  XmlNode child = record.child(element);
  return child && child.first_child().type() == pugi::node_cdata;
}

const std::vector<std::string> kCustomisableElements = {
    "Name",        "Columns",         "Tabs",         "SortByField",   "SortByField2", "SortBy",
    "SortBy2",     "SortASCDESC",     "SortASCDESC2", "DoGrouping",    "DoAverages",   "DoTotals",
    "DoLineCount", "PageOrientation", "PageSize",     "PageMultiLine", "Var0Caption",  "Var0Type",
    "Var0Name",    "Var1Caption",     "Var1Type",     "Var1Name",      "Var2Caption",  "Var2Type",
    "Var2Name",    "Var3Caption",     "Var3Type",     "Var3Name"};

TEST(ProfileSaverTest, SystemProfileFirstSaveWritesNameThenOnlyTheCustomisableElements) {
  // With a views file, and on a fresh install that has none yet.
  for (const std::string& views : {kSaveViews, std::string()}) {
    SCOPED_TRACE(views.empty() ? "no views file" : "views file");
    HeadlessEditor h;
    h.Open(views, kSaveDefaults, kSaveSetup);
    Select(h, "All Accounts");
    const std::string defaults_before = h->DefaultsDoc.ToString();
    AddColumn(h, "Salesman");
    h->cmbSort[1].SetText("Salesman");
    h->lstvwTabs.UserCheck(3, true);
    h->chkTotals.UserClick();
    ASSERT_TRUE(h->ProfileChanged);

    EXPECT_TRUE(SaveProfile(*h));

    XmlNode record = FindProfileElement(h->ViewsDoc, "All Accounts");
    ASSERT_TRUE(record);
    EXPECT_EQ(ChildNames(record), kCustomisableElements);
    EXPECT_EQ(UsedColumnNames(record),
              (std::vector<std::string>{"Account", "Balance", "Salesman"}));
    EXPECT_EQ(ChildText(record.child("Columns").child("Column"), "SortField"), "ACCTS.AcctNum");
    EXPECT_EQ(ChildText(record, "Tabs"), "1,3");
    EXPECT_EQ(ChildText(record, "SortBy"), "Account");
    EXPECT_EQ(ChildText(record, "SortByField"), "ACCTS.AcctNum");
    EXPECT_EQ(ChildText(record, "SortBy2"), "Salesman");
    EXPECT_EQ(ChildText(record, "SortByField2"), "ACCTS.Salesman");
    EXPECT_EQ(ChildText(record, "DoTotals"), "1");
    EXPECT_EQ(ChildText(record, "PageOrientation"), "0");
    EXPECT_EQ(h->DefaultsDoc.ToString(), defaults_before);
    EXPECT_FALSE(h->ProfileChanged);
    EXPECT_TRUE(h.Messages().empty());

    // OK writes the record to disk, root and all.
    h->cmdOK.Click();
    DocumentCursor written;
    ASSERT_TRUE(written.Load(h->ViewsPath));
    EXPECT_TRUE(FindProfileElement(written, "All Accounts"));
  }
}

TEST(ProfileSaverTest, CustomisedSystemProfileKeepsItsSourceInTheDefaults) {
  HeadlessEditor h;
  h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
  Select(h, "Past Due");
  h->cmbSortASCDESC[0].SetText("DESC");
  ASSERT_TRUE(SaveProfile(*h));

  XmlNode record = FindProfileElement(h->ViewsDoc, "Past Due");
  EXPECT_EQ(ChildText(record, "SortASCDESC"), "DESC");
  EXPECT_EQ(ChildText(record, "SortBy"), "Due Date");
  for (const char* source : {"DataSet", "AcctViewType", "FilterType", "SQL", "FilterChecks",
                             "SQLWhereList", "SQLFieldList"}) {
    EXPECT_FALSE(record.child(source)) << source;
  }
  EXPECT_EQ(testing::ProfileNames(h->ViewsDoc), (std::vector<std::string>{"Past Due", "Mine"}));
}

TEST(ProfileSaverTest, UserProfileOnTheEasyFilterStoresChecksListsAndEmptySql) {
  HeadlessEditor h;
  h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
  Select(h, "Mine");
  ui::ListView& filters = h->lstFilters;
  ASSERT_EQ(filters.ItemCount(), 3);
  filters.UserCheck(1, true);
  filters.SetSubItem(1, 2, "B<C");
  filters.UserCheck(2, true);
  filters.SetSubItem(2, 2, "2020-01-01");
  filters.SetSubItem(2, 4, "<$END_DATE>");
  filters.UserCheck(3, false);
  h->cmbAcctViewType.SetText("System Views");

  ASSERT_TRUE(SaveProfile(*h));

  XmlNode record = FindProfileElement(h->ViewsDoc, "Mine");
  EXPECT_EQ(ChildText(record, "DataSet"), "Accounts");
  EXPECT_EQ(ChildText(record, "AcctViewType"), "0");
  EXPECT_EQ(ChildText(record, "FilterType"), "0");
  EXPECT_TRUE(record.child("SQL"));
  EXPECT_EQ(ChildText(record, "SQL"), "");
  EXPECT_EQ(ChildText(record, "SQLWhereList"),
            "(ACCTS.Status='B#@!C') AND (ACCTS.Due BETWEEN '2020-01-01' AND '#@!$END_DATE!@#')");
  EXPECT_EQ(ChildText(record, "SQLFieldList"), "ACCTS.AcctNum");  // the gone column has no field
  EXPECT_TRUE(IsBlock(record, "SQLWhereList"));
  EXPECT_TRUE(IsBlock(record, "SQLFieldList"));

  // The retired filter keeps its entry; the list's rows follow in list order.
  struct Expected {
    const char* index;
    const char* name;
    const char* value;
    std::string data1, data2;
  };
  const std::vector<Expected> expected = {
      {"9", "Retired filter", "True", "x", ""},
      {"1", "Status is", "True", "B<C", filters.SubItem(1, 4)},
      {"2", "Due between", "True", "2020-01-01", "<$END_DATE>"},
      {"3", "Active only", "False", filters.SubItem(3, 2), filters.SubItem(3, 4)},
  };
  std::vector<XmlNode> entries = SelectNodes(record, "FilterChecks/Filter");
  ASSERT_EQ(entries.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    SCOPED_TRACE(expected[i].index);
    EXPECT_EQ(ChildText(entries[i], "Index"), expected[i].index);
    EXPECT_EQ(ChildText(entries[i], "Name"), expected[i].name);
    EXPECT_EQ(ChildText(entries[i], "Value"), expected[i].value);
    EXPECT_EQ(ChildText(entries[i], "Data1"), expected[i].data1);
    EXPECT_EQ(ChildText(entries[i], "Data2"), expected[i].data2);
  }

  // A second save updates the entries in place instead of adding more.
  filters.UserCheck(1, false);
  ASSERT_TRUE(SaveProfile(*h));
  entries = SelectNodes(record, "FilterChecks/Filter");
  ASSERT_EQ(entries.size(), expected.size());
  EXPECT_EQ(ChildText(entries[1], "Value"), "False");
}

TEST(ProfileSaverTest, UserProfileOnTheAdvancedFilterStoresTheViewStatement) {
  HeadlessEditor h;
  h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
  Select(h, "Mine");
  h->optFilter.SetValue(1);
  h->DataSetSQL = "SELECT hand FROM X WHERE a < 'it''s'";
  ASSERT_TRUE(SaveProfile(*h));

  XmlNode record = FindProfileElement(h->ViewsDoc, "Mine");
  EXPECT_EQ(ChildText(record, "FilterType"), "1");
  EXPECT_EQ(ChildText(record, "SQL"), "CQ:SELECT hand FROM X WHERE a < 'it''s'");
  EXPECT_FALSE(record.child("SQLWhereList"));
  EXPECT_FALSE(record.child("SQLFieldList"));
}

TEST(ProfileSaverTest, SortColumnUnknownToTheSetupFileKeepsTheStoredSortField) {
  HeadlessEditor h;
  h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
  Select(h, "Mine");
  h->cmbSort[0].SetText("Gone Column");
  h->cmbSort[1].SetText("Account");
  ASSERT_TRUE(SaveProfile(*h));

  XmlNode record = FindProfileElement(h->ViewsDoc, "Mine");
  EXPECT_EQ(ChildText(record, "SortBy"), "Gone Column");
  EXPECT_EQ(ChildText(record, "SortByField"), "OLD.Field");
  EXPECT_EQ(ChildText(record, "SortBy2"), "Account");
  EXPECT_EQ(ChildText(record, "SortByField2"), "ACCTS.AcctNum");
}

TEST(ProfileSaverTest, StoppingMessagesWriteNothingAndKeepTheChangeFlag) {
  struct Case {
    const char* what;
    std::string name;
    bool with_node;
    std::string text, title, icon;
  };
  const std::vector<Case> cases = {
      {"no profile chosen", "Mine", false, "Please select a profile from above first.",
       "No Profile Selected", "exclamation"},
      {"record cannot be selected", "O'Brien", true,
       std::string("An error was encountered when saving the current profile:") + kCrLf + kCrLf +
           "Custom profile settings could not be created.",
       "Error", "critical"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    HeadlessEditor h;
    h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
    Select(h, "Mine");
    const XmlNode mine = FindProfileElement(h->ViewsDoc, "Mine");
    h->CurrentProfileName = c.name;
    h->SetCurrentProfileNode(c.with_node ? mine : XmlNode(), h->ViewsDoc);
    h->ProfileChanged = true;
    const std::string before = h->ViewsDoc.ToString();
    h.prompter.ClearShown();

    EXPECT_FALSE(SaveProfile(*h));

    ASSERT_EQ(h.prompter.Shown().size(), 1u);
    EXPECT_EQ(Box(h.prompter.Shown()[0]), Box(c.title, "OK", c.icon, c.text));
    EXPECT_EQ(h->ViewsDoc.ToString(), before);
    EXPECT_TRUE(h->ProfileChanged);
    EXPECT_EQ(h->CurrentProfileNode(), c.with_node ? mine : XmlNode());
  }
}

TEST(ProfileSaverTest, ValuesRoundTripThroughTheViewsFile) {
  HeadlessEditor h;
  h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
  Select(h, "Mine");
  const std::string caption = "Start <date> & 'quoted' \"x\" ]]> \xC3\xBC\xE2\x82\xAC";
  const std::string type = "Te]]>xt";
  std::string long_sql = "SELECT a FROM b WHERE c = '<&>' AND d = \"]]>\" -- \xC3\xA9";
  while (long_sql.size() < 100000) long_sql += " OR x = 'it''s ]]> <tag> &amp;'";
  h->Variables().SetVariable(0, caption, type, "START_DATE");
  h->Variables().SetVariable(3, "Dealer's <name>", "Text", "D&R");
  h->optFilter.SetValue(1);
  h->DataSetSQL = long_sql;
  ASSERT_TRUE(SaveProfile(*h));
  const std::string path = (h.dir.Path() / "roundtrip.xml").string();
  h->ViewsDoc.Save(path);

  DocumentCursor back;
  ASSERT_TRUE(back.Load(path));
  back.SetCurrentNode(FindProfileElement(back, "Mine"));
  ASSERT_TRUE(back.CurrentNode());
  EXPECT_EQ(back.GetValue("Var0Caption"), caption);
  EXPECT_EQ(back.GetValue("Var0Type"), type);
  EXPECT_EQ(back.GetValue("Var0Name"), "START_DATE");
  EXPECT_EQ(back.GetValue("Var3Caption"), "Dealer's <name>");
  EXPECT_EQ(back.GetValue("Var3Name"), "D&R");
  EXPECT_EQ(back.GetValue("SQL"), "CQ:" + long_sql);
}

TEST(ProfileSaverTest, ReportModeWritesTheProfileDocumentAndTheReportFile) {
  struct Case {
    const char* views_file;   // ViewsPath's file name
    const char* report_file;  // where the report definition must land
  };
  // ".cvx" is replaced everywhere and only in that spelling; a path without
  // it is handed on unchanged, so the definition lands on the path itself.
  const std::vector<Case> cases = {
      {"Sales.cvx", "Sales.cvr"},
      {"Twice.cvx.cvx", "Twice.cvr.cvr"},
      {"Upper.CVX", "Upper.CVX"},
      {"plain", "plain"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.views_file);
    HeadlessEditor h;
    OpenReports(h, {{"Sales", ReportDocument("Sales")}});
    Select(h, "Sales");
    ASSERT_EQ(h->CurrentProfileName, "Sales");
    h->chkShowLineCount.UserClick();
    const std::string folder = ReportsFolder(h) + "/";
    h->ViewsPath = folder + c.views_file;
    h.prompter.ClearShown();

    EXPECT_TRUE(SaveProfile(*h));

    EXPECT_TRUE(h.Messages().empty());
    EXPECT_FALSE(h->ProfileChanged);
    DocumentCursor report;
    ASSERT_TRUE(report.Load(folder + c.report_file));
    EXPECT_STREQ(report.Root().name(), "CustomReport");
    EXPECT_EQ(ChildText(report.Root(), "LineCount"), "1");
    if (std::string(c.views_file) != c.report_file) {
      DocumentCursor profile;
      ASSERT_TRUE(profile.Load(folder + c.views_file));
      XmlNode record = FindProfileElement(profile, "Sales");
      EXPECT_EQ(ChildText(record, "DoLineCount"), "1");
      // A report is always its user's own profile: its source is written.
      EXPECT_EQ(ChildText(record, "DataSet"), "Accounts");
    }
  }
}

TEST(ProfileSaverTest, ReportWriteThatFailsHalfwayLeavesBothOldFilesWhole) {
  HeadlessEditor h;
  OpenReports(h, {{"Sales", ReportDocument("Sales")}});
  const std::string folder = ReportsFolder(h);
  h.dir.Write("Custom Reports/Sales.cvr",
              "<CustomReport version=\"1\"><Name>Sales</Name></CustomReport>");
  Select(h, "Sales");
  h->chkTotals.UserClick();
  const std::string cvx_before = ReadFile(folder + "/Sales.cvx");
  const std::string cvr_before = ReadFile(folder + "/Sales.cvr");
  h.prompter.ClearShown();

  bool saved = true;
  {
    FileSizeLimit limit(64);
    saved = SaveProfile(*h);
  }

  EXPECT_FALSE(saved);
  EXPECT_TRUE(h->ProfileChanged);  // the changes are still only in memory
  EXPECT_EQ(ReadFile(folder + "/Sales.cvx"), cvx_before);
  EXPECT_EQ(ReadFile(folder + "/Sales.cvr"), cvr_before);
  // No temporary file is left behind.
  EXPECT_EQ(testing::FilesIn(folder), (std::vector<std::string>{"Sales.cvr", "Sales.cvx"}));
  const auto messages = h.Messages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_TRUE(StartsWith(messages[0], std::string("An error was encountered when saving the "
                                                  "current profile:") +
                                          kCrLf + kCrLf));
  EXPECT_TRUE(StartsWith(messages[1], "Error in SaveReportFile: "));
}

TEST(ProfileSaverTest, OkKeepsTheEditorOpenWhileAReportCannotBeWritten) {
  HeadlessEditor h;
  OpenReports(h, {{"Sales", ReportDocument("Sales")}});
  Select(h, "Sales");
  h->Show();
  h->chkTotals.UserClick();
  h.prompter.QueueAnswer(ui::Answer::kYes);
  {
    FileSizeLimit limit(64);
    h->cmdOK.Click();
  }
  EXPECT_TRUE(h->Visible());
  EXPECT_TRUE(h->ProfileChanged);

  h.prompter.QueueAnswer(ui::Answer::kYes);
  h->cmdOK.Click();
  EXPECT_FALSE(h->Visible());
  DocumentCursor saved;
  ASSERT_TRUE(saved.Load(ReportsFolder(h) + "/Sales.cvx"));
  EXPECT_EQ(ChildText(FindProfileElement(saved, "Sales"), "DoTotals"), "1");
}

// Types a value into a filter cell the way a user does: a click on the cell
// opens the in-place editor, the keystrokes go into it, Enter closes it.
void TypeFilterValue(HeadlessEditor& h, int row, int which, const std::string& value) {
  ui::ListView& list = h->lstFilters;
  const int column = list.ColumnPosition(which == 1 ? "Data1" : "Data2");
  lstFilters_MouseDown(*h, 1, 0, static_cast<float>(list.ColumnLeft(column) + 30),
                       static_cast<float>(list.ItemTop(row) + 30));
  ui::ComboBox& editor = which == 1 ? h->txtData1LV : h->txtData2LV;
  ASSERT_TRUE(editor.Visible());
  editor.SetText(value);
  txtDataLV_KeyDown(*h, which, kKeyEnter);
}

// Everything a profile stores, as the controls show it.
std::vector<std::string> Snapshot(HeadlessEditor& h) {
  std::vector<std::string> lines;
  auto add = [&](const std::string& what, const std::string& value) {
    lines.push_back(what + "=" + value);
  };
  add("name", h->txtCurrProf.Text());
  add("dataset", h->cmbDataSet.Text());
  add("viewtype", h->cmbAcctViewType.Text());
  add("filtermode", Str(h->optFilter.SetIndex()));
  for (const std::string& column : h->lstUsedColumns.Items()) add("used", column);
  for (int i = 0; i < 2; ++i) {
    add("sort" + Str(i), h->cmbSort[i].Text());
    add("direction" + Str(i), h->cmbSortASCDESC[i].Text());
  }
  for (const ui::CheckBox* box : {&h->chkSortGroup, &h->chkTotals, &h->chkAverages,
                                  &h->chkShowLineCount, &h->chkMultiLine, &h->chkStartEnd}) {
    add(box->Name(), Str(box->Value()));
  }
  add("orientation", h->cmbOrientation.Text());
  add("pagesize", h->cmbPageSize.Text());
  for (const auto& tab : h->lstvwTabs.Items()) add(tab.key, tab.checked ? "1" : "0");
  const ui::ListView& filters = h->lstFilters;
  for (int row = 1; row <= filters.ItemCount(); ++row) {
    add("filter " + filters.Item(row).key,
        std::string(filters.Item(row).checked ? "1" : "0") + "|" +
            filters.SubItem(row, filters.ColumnPosition("Data1") - 1) + "|" +
            filters.SubItem(row, filters.ColumnPosition("Data2") - 1));
  }
  for (int slot = 0; slot < kVariableSlots; ++slot) {
    std::string caption, type, name;
    h->Variables().GetVariable(slot, caption, type, name);
    add("var" + Str(slot), caption + "|" + type + "|" + name);
  }
  return lines;
}

TEST(ProfileRoundTripTest, EveryEditComesBackInASecondEditorOnTheWrittenFile) {
  HeadlessEditor h;
  h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
  Select(h, "Mine");

  // Columns: the gone one out, two in, the last moved up.
  h->lstUsedColumns.SetListIndex(1);
  h->cmdRemoveForm.Click();
  AddColumn(h, "Salesman");
  AddColumn(h, "Balance");
  h->lstUsedColumns.SetListIndex(2);
  h->cmdMove[0].Click();
  // Filters with values typed in place, apostrophes and markup included.
  h->lstFilters.UserCheck(1, true);
  TypeFilterValue(h, 1, 1, "B&<'x'>");
  h->lstFilters.UserCheck(2, true);
  TypeFilterValue(h, 2, 1, "<$START_DATE>");
  TypeFilterValue(h, 2, 2, "<$END_DATE>");
  // Sorting, options, page, tabs, view type and variables.
  h->cmbSort[0].SetText("Salesman");
  h->cmbSortASCDESC[0].SetText("DESC");
  h->cmbSort[1].SetText("Balance");
  h->cmbSortASCDESC[1].SetText("ASC");
  h->chkSortGroup.UserClick();
  h->chkAverages.UserClick();
  h->chkShowLineCount.UserClick();
  h->chkMultiLine.UserClick();
  h->cmbOrientation.SetText("Landscape");
  h->cmbPageSize.SetText("Legal");
  h->lstvwTabs.UserCheck(1, false);
  h->lstvwTabs.UserCheck(2, true);
  h->cmbAcctViewType.SetText("System Views");
  h->chkStartEnd.UserClick();
  h->Variables().SetVariable(2, "Dealer's <name>:", "Text", "DEALER");
  const std::vector<std::string> edited = Snapshot(h);
  ASSERT_EQ(edited[4], "used=Account");
  ASSERT_EQ(edited[5], "used=Balance");

  h->cmdSaveProfile.Click();
  EXPECT_EQ(h.prompter.NoticeText(), "Your view profile has been saved.");
  EXPECT_EQ(Snapshot(h), edited);  // the save reloaded the profile from its record
  h->cmdOK.Click();
  EXPECT_TRUE(h.Messages().empty());

  HeadlessEditor again;
  again.Open(h.dir.Read("views.xml"), kSaveDefaults, kSaveSetup);
  Select(again, "Mine");
  EXPECT_EQ(Snapshot(again), edited);
  EXPECT_TRUE(again.Messages().empty());
}

}  // namespace
}  // namespace cvve
