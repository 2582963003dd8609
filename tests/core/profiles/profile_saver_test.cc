#include "profiles/profile_saver.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "filters/value_editors.h"
#include "fixtures.h"
#include "viewfiles/profile_record.h"

namespace cvve::testing {
namespace {

Names ChildNames(XmlNode node, const char* child_text = nullptr) {
  Names names;
  for (XmlNode child = node.first_child(); child; child = child.next_sibling()) {
    if (child.type() != pugi::node_element) continue;
    names.emplace_back(child_text ? ChildText(child, child_text) : child.name());
  }
  return names;
}

bool IsBlock(XmlNode record, const char* element) {
  return record.child(element).first_child().type() == pugi::node_cdata;
}

TEST(ProfileSaverTest, SystemProfilesWriteOnlyTheCustomisableElements) {
  // The first save, with a views file and on a fresh install without one.
  for (const std::string& views : {kViews, std::string()}) {
    SCOPED_TRACE(views.empty() ? "no views file" : "views file");
    HeadlessEditor h;
    h.Open(views, kDefaults, kSetup);
    Select(h, "All Accounts");
    const std::string defaults_before = h->DefaultsDoc.ToString();
    AddColumn(h, "Salesman");
    h->cmbSort[1].SetText("Salesman");
    h->lstvwTabs.UserCheck(3, true);
    h->chkTotals.UserClick();
    EXPECT_TRUE(SaveProfile(*h));

    XmlNode record = FindProfileElement(h->ViewsDoc, "All Accounts");
    Names customisable = {"Name",         "Columns",         "Tabs",       "SortByField",
                          "SortByField2", "SortBy",          "SortBy2",    "SortASCDESC",
                          "SortASCDESC2", "DoGrouping",      "DoAverages", "DoTotals",
                          "DoLineCount",  "PageOrientation", "PageSize",   "PageMultiLine"};
    for (const char* slot : {"0", "1", "2", "3"}) {
      for (const char* part : {"Caption", "Type", "Name"}) {
        customisable.push_back(std::string("Var") + slot + part);
      }
    }
    EXPECT_EQ(ChildNames(record), customisable);
    EXPECT_EQ(ChildNames(record.child("Columns"), "Name"),
              (Names{"Account", "Balance", "Salesman"}));
    EXPECT_EQ(ChildText(record.child("Columns").child("Column"), "SortField"), "ACCTS.AcctNum");
    EXPECT_EQ(ChildText(record, "Tabs"), "3");
    EXPECT_EQ(ChildText(record, "SortByField"), "ACCTS.AcctNum");
    EXPECT_EQ(ChildText(record, "SortBy2"), "Salesman");
    EXPECT_EQ(ChildText(record, "SortByField2"), "ACCTS.Salesman");
    EXPECT_EQ(ChildText(record, "DoTotals"), "1");
    EXPECT_EQ(ChildText(record, "PageOrientation"), "0");
    EXPECT_EQ(h->DefaultsDoc.ToString(), defaults_before);
    EXPECT_FALSE(h->ProfileChanged);
    EXPECT_TRUE(h.Messages().empty());
    h->cmdOK.Click();  // OK writes the record to disk, root and all
    DocumentCursor written;
    ASSERT_TRUE(written.Load(h->ViewsPath));
    EXPECT_TRUE(FindProfileElement(written, "All Accounts"));
  }

  // A customised one: its source elements stay as they were, none is added.
  HeadlessEditor h;
  OpenFileSet(h, "Past Due");
  h->cmbSortASCDESC[0].SetText("DESC");
  ASSERT_TRUE(SaveProfile(*h));
  XmlNode record = FindProfileElement(h->ViewsDoc, "Past Due");
  EXPECT_EQ(ChildText(record, "SortASCDESC"), "DESC");
  EXPECT_EQ(ChildText(record, "SortBy"), "Salesman");
  EXPECT_EQ(ChildText(record, "DataSet") + "|" + ChildText(record, "AcctViewType") + "|" +
                ChildText(record, "FilterType") + "|" + ChildText(record, "SQL"),
            "Inventory|2|1|CQ:never read");
  for (const char* source : {"FilterChecks", "SQLWhereList", "SQLFieldList"}) {
    EXPECT_FALSE(record.child(source)) << source;
  }
  EXPECT_EQ(ProfileNames(h->ViewsDoc).size(), 7u);  // no record added
}

TEST(ProfileSaverTest, UserProfileStoresItsSourceFilterChecksAndStatements) {
  HeadlessEditor h;
  OpenFileSet(h, "Mine");
  XmlNode record = FindProfileElement(h->ViewsDoc, "Mine");
  // Advanced filter: the view statement as it stands, no lists.
  h->DataSetSQL = "SELECT hand FROM X WHERE a < 'it''s'";
  // A sort column unknown to the setup file keeps the stored sort field.
  h->cmbSort[0].SetText("Gone Column");
  h->cmbSort[1].SetText("Account");
  ASSERT_TRUE(SaveProfile(*h));
  EXPECT_EQ(ChildText(record, "FilterType"), "1");
  EXPECT_EQ(ChildText(record, "SQL"), "CQ:SELECT hand FROM X WHERE a < 'it''s'");
  EXPECT_FALSE(record.child("SQLWhereList") || record.child("SQLFieldList"));
  EXPECT_EQ(ChildText(record, "SortBy"), "Gone Column");
  EXPECT_EQ(ChildText(record, "SortByField"), "OLD.Field");
  EXPECT_EQ(ChildText(record, "SortByField2"), "ACCTS.AcctNum");

  // Easy filter: the two lists and an empty SQL element.
  h->optFilter.SetValue(0);
  ui::ListView& filters = h->lstFilters;
  filters.UserCheck(1, true);
  filters.SetSubItem(1, 2, "B<C");
  filters.UserCheck(2, true);
  filters.SetSubItem(2, 2, "2020-01-01");
  filters.SetSubItem(2, 4, "<$END_DATE>");
  filters.UserCheck(3, false);
  h->cmbAcctViewType.SetText("System Views");
  ASSERT_TRUE(SaveProfile(*h));
  EXPECT_EQ(ChildText(record, "DataSet"), "Accounts");
  EXPECT_EQ(ChildText(record, "AcctViewType"), "0");
  EXPECT_EQ(ChildText(record, "FilterType"), "0");
  EXPECT_TRUE(record.child("SQL"));
  EXPECT_EQ(ChildText(record, "SQL"), "");
  EXPECT_EQ(ChildText(record, "SQLWhereList"),
            "(ACCTS.Status='B#@!C') AND (ACCTS.Due BETWEEN '2020-01-01' AND '#@!$END_DATE!@#')");
  EXPECT_EQ(ChildText(record, "SQLFieldList"), "ACCTS.AcctNum");  // the gone column has none
  EXPECT_TRUE(IsBlock(record, "SQLWhereList") && IsBlock(record, "SQLFieldList"));
  // The retired filter keeps its entry, an existing one is updated in place,
  // the other rows follow in list order.
  const std::vector<Names> expected = {{"9", "Retired filter", "True", "x", ""},
                                       {"3", "Active only", "False", "", ""},
                                       {"1", "Status is", "True", "B<C", ""},
                                       {"2", "Due between", "True", "2020-01-01", "<$END_DATE>"},
                                       {"4", "Bare", "False", "", ""}};
  std::vector<Names> entries;
  for (XmlNode f : SelectNodes(record, "FilterChecks/Filter")) {
    entries.push_back({ChildText(f, "Index"), ChildText(f, "Name"), ChildText(f, "Value"),
                       ChildText(f, "Data1"), ChildText(f, "Data2")});
  }
  EXPECT_EQ(entries, expected);
  filters.UserCheck(1, false);
  ASSERT_TRUE(SaveProfile(*h));  // a second save adds no entries
  EXPECT_EQ(ChildNames(record.child("FilterChecks"), "Value"),
            (Names{"True", "False", "False", "True", "False"}));
}

TEST(ProfileSaverTest, StoppingMessagesWriteNothingAndKeepTheChangeFlag) {
  const struct {
    std::string name;
    bool with_node;
    std::string box;
  } cases[] = {
      {"Mine", false,
       Box("No Profile Selected", "OK", "exclamation",
           "Please select a profile from above first.")},
      {"O'Brien", true,
       Box("Error", "OK", "critical",
           std::string("An error was encountered when saving the current profile:") + kCrLf +
               kCrLf + "Custom profile settings could not be created.")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    HeadlessEditor h;
    OpenFileSet(h, "Mine");
    const XmlNode mine = FindProfileElement(h->ViewsDoc, "Mine");
    h->CurrentProfileName = c.name;
    h->SetCurrentProfileNode(c.with_node ? mine : XmlNode(), h->ViewsDoc);
    h->ProfileChanged = true;
    const std::string before = h->ViewsDoc.ToString();
    h.prompter.ClearShown();
    EXPECT_FALSE(SaveProfile(*h));
    ASSERT_EQ(h.prompter.Shown().size(), 1u);
    EXPECT_EQ(Box(h.prompter.Shown()[0]), c.box);
    EXPECT_EQ(h->ViewsDoc.ToString(), before);
    EXPECT_TRUE(h->ProfileChanged);
    EXPECT_EQ(h->CurrentProfileNode(), c.with_node ? mine : XmlNode());
  }
}

TEST(ProfileSaverTest, ViewModeSavesAreListedUntilOkWritesThem) {
  HeadlessEditor h;
  OpenFileSet(h, "Mine");
  const std::string on_disk = h.dir.Read("views.xml");
  EXPECT_TRUE(h->UnwrittenProfiles.empty());
  for (const char* name : {"Mine", "All Accounts", "Mine"}) {
    Select(h, name);
    h->chkTotals.UserClick();
    h->cmdSaveProfile.Click();
  }
  // Each profile once, in the order first saved; nothing on disk yet.
  EXPECT_EQ(h->UnwrittenProfiles, (Names{"Mine", "All Accounts"}));
  EXPECT_EQ(h.dir.Read("views.xml"), on_disk);
  h->cmdOK.Click();
  EXPECT_NE(h.dir.Read("views.xml"), on_disk);
  EXPECT_TRUE(h->UnwrittenProfiles.empty());

  // Reading the file set again forgets what Cancel dropped.
  HeadlessEditor again;
  OpenFileSet(again, "Mine");
  again->chkTotals.UserClick();
  again->cmdSaveProfile.Click();
  EXPECT_EQ(again->UnwrittenProfiles, Names{"Mine"});
  again->LoadFiles("views.xml", "defs.xml", "setup.xml");
  EXPECT_TRUE(again->UnwrittenProfiles.empty());
}

TEST(ProfileSaverTest, ReportModeWritesTheProfileDocumentAndTheReportFile) {
  // ".cvx" is replaced everywhere and only in that spelling; a path without
  // it is handed on unchanged, so the definition lands on the path itself.
  const struct {
    const char *views_file, *report_file;
  } cases[] = {{"Sales.cvx", "Sales.cvr"},
               {"Twice.cvx.cvx", "Twice.cvr.cvr"},
               {"Upper.CVX", "Upper.CVX"},
               {"plain", "plain"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.views_file);
    HeadlessEditor h;
    OpenSalesReport(h);
    h->chkShowLineCount.UserClick();
    EXPECT_TRUE(h->UnwrittenProfiles.empty());
    const std::string folder = ReportsFolder(h) + "/";
    h->ViewsPath = folder + c.views_file;
    EXPECT_TRUE(SaveProfile(*h));
    EXPECT_TRUE(h.Messages().empty());
    EXPECT_FALSE(h->ProfileChanged);
    DocumentCursor report;
    ASSERT_TRUE(report.Load(folder + c.report_file));
    EXPECT_STREQ(report.Root().name(), "CustomReport");
    EXPECT_EQ(ChildText(report.Root(), "LineCount"), "1");
    if (std::string(c.views_file) == c.report_file) continue;
    DocumentCursor profile;
    ASSERT_TRUE(profile.Load(folder + c.views_file));
    XmlNode record = FindProfileElement(profile, "Sales");
    EXPECT_EQ(ChildText(record, "DoLineCount"), "1");
    EXPECT_EQ(ChildText(record, "DataSet"), "Accounts");  // a report is a user profile
  }
}

TEST(ProfileSaverTest, ReportWriteThatFailsHalfwayLeavesBothOldFilesAndTheEditorOpen) {
  HeadlessEditor h;
  OpenSalesReport(h);
  h.dir.Write("Custom Reports/Sales.cvr", "<CustomReport version=\"1\"><Name>Sales</Name>");
  Select(h, "Sales");  // opened again as it is on disk now
  h->Show();
  h->chkTotals.UserClick();
  const std::string cvx_before = h.dir.Read("Custom Reports/Sales.cvx");
  const std::string cvr_before = h.dir.Read("Custom Reports/Sales.cvr");
  h.prompter.ClearShown();
  {
    FileSizeLimit limit(64);
    EXPECT_FALSE(SaveProfile(*h));
    h.prompter.QueueAnswer(ui::Answer::kYes);
    h->cmdOK.Click();
  }
  EXPECT_TRUE(h->Visible());
  EXPECT_TRUE(h->ProfileChanged);  // the changes are still only in memory
  EXPECT_EQ(h.dir.Read("Custom Reports/Sales.cvx"), cvx_before);
  EXPECT_EQ(h.dir.Read("Custom Reports/Sales.cvr"), cvr_before);
  EXPECT_EQ(FilesIn(ReportsFolder(h)), (Names{".reports.lock", "Sales.cvr", "Sales.cvx"}));
  const auto messages = h.Messages();
  // The pair is one write: one failure, one message, for each attempt (the
  // direct save, then the one OK asked for).
  ASSERT_EQ(messages.size(), 3u);
  for (std::size_t i : {0u, 2u}) {
    EXPECT_TRUE(StartsWith(messages[i], std::string("An error was encountered when saving the "
                                                    "current profile:") +
                                            kCrLf + kCrLf));
  }

  h.prompter.QueueAnswer(ui::Answer::kYes);
  h->cmdOK.Click();
  EXPECT_FALSE(h->Visible());
  DocumentCursor written;
  ASSERT_TRUE(written.Load(ReportsFolder(h) + "/Sales.cvx"));
  EXPECT_EQ(ChildText(FindProfileElement(written, "Sales"), "DoTotals"), "1");
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
Names Snapshot(HeadlessEditor& h) {
  Names lines = {h->txtCurrProf.Text(),        h->cmbDataSet.Text(),     h->cmbAcctViewType.Text(),
                 Str(h->optFilter.SetIndex()), h->cmbOrientation.Text(), h->cmbPageSize.Text()};
  for (const std::string& column : h->lstUsedColumns.Items()) lines.push_back("used " + column);
  for (int i = 0; i < 2; ++i) lines.push_back(h->cmbSort[i].Text() + h->cmbSortASCDESC[i].Text());
  for (const ui::CheckBox* box : {&h->chkSortGroup, &h->chkTotals, &h->chkAverages,
                                  &h->chkShowLineCount, &h->chkMultiLine, &h->chkStartEnd}) {
    lines.push_back(box->Name() + Str(box->Value()));
  }
  for (const auto& tab : h->lstvwTabs.Items()) lines.push_back(tab.key + Str(tab.checked));
  const ui::ListView& filters = h->lstFilters;
  for (int row = 1; row <= filters.ItemCount(); ++row) {
    lines.push_back(filters.Item(row).key + Str(filters.Item(row).checked) + "|" +
                    filters.SubItem(row, 2) + "|" + filters.SubItem(row, 4));
  }
  for (int slot = 0; slot < kVariableSlots; ++slot) {
    std::string caption, type, name;
    h->Variables().GetVariable(slot, caption, type, name);
    lines.push_back(caption + "|" + type + "|" + name);
  }
  return lines;
}

TEST(ProfileRoundTripTest, EveryEditComesBackInASecondEditorOnTheWrittenFile) {
  HeadlessEditor h;
  OpenFileSet(h, "Mine");
  h->optFilter.SetValue(0);
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
  for (ui::CheckBox* box :
       {&h->chkSortGroup, &h->chkAverages, &h->chkShowLineCount, &h->chkMultiLine}) {
    box->UserClick();
  }
  h->cmbOrientation.SetText("Landscape");
  h->cmbPageSize.SetText("Legal");
  h->lstvwTabs.UserCheck(1, false);
  h->lstvwTabs.UserCheck(2, true);
  h->cmbAcctViewType.SetText("System Views");
  h->chkStartEnd.UserClick();
  h->Variables().SetVariable(2, "Dealer's <name> ]]> &:", "Te]]>xt", "DEALER");
  const Names edited = Snapshot(h);
  ASSERT_EQ(edited[6], "used Account");
  ASSERT_EQ(edited[7], "used Balance");

  h->cmdSaveProfile.Click();
  EXPECT_EQ(Snapshot(h), edited);  // the save reloaded the profile from its record
  h->cmdOK.Click();
  EXPECT_TRUE(h.Messages().empty());

  HeadlessEditor again;
  again.Open(h.dir.Read("views.xml"), kDefaults, kSetup);
  Select(again, "Mine");
  EXPECT_EQ(Snapshot(again), edited);
  EXPECT_TRUE(again.Messages().empty());
}

}  // namespace
}  // namespace cvve::testing
