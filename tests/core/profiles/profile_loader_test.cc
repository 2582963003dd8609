#include "profiles/profile_loader.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "core/profiles/browse_fixture.h"
#include "profiles/views_tree.h"
#include "test_support.h"
#include "viewfiles/profile_record.h"

namespace cvve {
namespace {

using testing::HeadlessEditor;
using testing::kBrowseDefaults;
using testing::kBrowseSetup;
using testing::kBrowseViews;

std::vector<std::string> CheckedTabs(const frmAcctViewEdit& ed) {
  std::vector<std::string> keys;
  for (const auto& item : ed.lstvwTabs.Items()) {
    if (item.checked) keys.push_back(item.key);
  }
  return keys;
}

std::vector<std::string> Entries(const ui::ComboBox& combo) {
  std::vector<std::string> texts;
  for (const auto& e : combo.Entries()) texts.push_back(e.text);
  return texts;
}

class ProfileLoaderTest : public ::testing::Test {
 protected:
  void SetUp() override { h.Open(kBrowseViews, kBrowseDefaults, kBrowseSetup); }
  void Load(const std::string& name) {
    h.prompter.ClearShown();
    LoadProfile(*h, name);
  }
  HeadlessEditor h;
};

TEST_F(ProfileLoaderTest, CustomisedSystemProfileTakesEachElementFromItsFile) {
  Load("Past Due");
  EXPECT_EQ(h->txtCurrProf.Text(), "Past Due");
  EXPECT_EQ(h->CurrentProfileName, "Past Due");
  // From the defaults file.
  EXPECT_EQ(h->cmbDataSet.Text(), "Accounts");
  EXPECT_EQ(h->cmbAcctViewType.Text(), "Collections");
  EXPECT_EQ(h->optFilter.SetIndex(), 0);
  EXPECT_EQ(h->DataSetSQL, "");  // the stored empty SQL replaces the template
  // From the views file.
  EXPECT_EQ(h->lstUsedColumns.Items(), (std::vector<std::string>{"Customer", "Due Date"}));
  EXPECT_EQ(h->lstAvailColumns.Items(), (std::vector<std::string>{"Account", "Balance"}));
  EXPECT_EQ(Entries(h->cmbSort[0]), (std::vector<std::string>{"Customer", "Due Date"}));
  EXPECT_EQ(h->cmbSort[0].Text(), "Customer");
  EXPECT_EQ(h->cmbSort[1].Text(), "Customer");  // "Nowhere" is no used column
  EXPECT_EQ(h->cmbSortASCDESC[0].Text(), "ASC");
  EXPECT_EQ(h->cmbSortASCDESC[1].Text(), "ASC");  // "SIDEWAYS" is not offered
  EXPECT_EQ(CheckedTabs(*h), (std::vector<std::string>{"T2"}));
  EXPECT_EQ(h->chkTotals.Value(), 1);
  EXPECT_EQ(h->chkAverages.Value(), 1);
  EXPECT_EQ(h->chkShowLineCount.Value(), 0);
  EXPECT_EQ(h->cmbOrientation.Text(), "Landscape");
  EXPECT_EQ(h->cmbPageSize.ListIndex(), 0);  // position 7 does not exist
  // A system profile's source, filters and mode cannot be changed.
  EXPECT_FALSE(h->cmbDataSet.Enabled());
  EXPECT_FALSE(h->cmbAcctViewType.Enabled());
  EXPECT_FALSE(h->optFilter.Enabled());
  EXPECT_FALSE(h->cmdAdvancedFilter.Enabled());
  EXPECT_TRUE(h->lstvwTabs.Enabled());
  EXPECT_FALSE(h->ProfileChanged);
  EXPECT_TRUE(h->lstUsedColumns.Visible() && h->lstAvailColumns.Visible());
  EXPECT_TRUE(h.Messages().empty());
}

TEST_F(ProfileLoaderTest, UserProfileLoadsEverythingFromTheViewsFile) {
  Load("Mine");
  EXPECT_EQ(h->cmbDataSet.Text(), "Accounts");
  EXPECT_EQ(h->cmbAcctViewType.Text(), "Sales");
  EXPECT_EQ(h->optFilter.SetIndex(), 1);
  EXPECT_EQ(h->DataSetSQL, "CQ:SELECT custom");
  EXPECT_TRUE(h->cmbDataSet.Enabled());
  EXPECT_TRUE(h->optFilter.Enabled());
  // Advanced mode, run again by the option's click: list off, edit button on.
  EXPECT_FALSE(h->lstFilters.Enabled());
  EXPECT_TRUE(h->cmdAdvancedFilter.Enabled());
  // A used column the data set no longer offers is still listed as used.
  EXPECT_EQ(h->lstUsedColumns.Items(), (std::vector<std::string>{"Account", "Gone Column"}));
  EXPECT_EQ(h->lstAvailColumns.Items(),
            (std::vector<std::string>{"Balance", "Customer", "Due Date"}));
  EXPECT_EQ(h->cmbSort[0].Text(), "Account");
  EXPECT_EQ(h->cmbSortASCDESC[0].Text(), "DESC");
  EXPECT_EQ(CheckedTabs(*h), (std::vector<std::string>{"T1", "T3"}));
  // Saved filter state from the views record (the cursors were put back
  // after the data set reloaded the filters, so all of the above was read).
  const int active = h->lstFilters.FindKey("3");
  ASSERT_GT(active, 0);
  EXPECT_TRUE(h->lstFilters.Item(active).checked);
  // Variables and the value editors' choices.
  std::string caption, type, name;
  h->Variables().GetVariable(2, caption, type, name);
  EXPECT_EQ(caption, "");
  EXPECT_EQ(type, "Text");
  EXPECT_EQ(name, "DEALER");
  EXPECT_EQ(h->chkStartEnd.Value(), 1);
  EXPECT_EQ(Entries(h->txtData1LV),
            (std::vector<std::string>{"", "<$START_DATE>", "<$END_DATE>", "<$DEALER>"}));
  EXPECT_EQ(Entries(h->txtData2LV), Entries(h->txtData1LV));
  EXPECT_FALSE(h->ProfileChanged);
}

TEST_F(ProfileLoaderTest, SystemProfileWithoutCustomisation) {
  Load("All Accounts");
  EXPECT_EQ(h->DataSetSQL, "CQ:SELECT stored");
  EXPECT_EQ(h->lstUsedColumns.Items(), (std::vector<std::string>{"Account"}));
  EXPECT_TRUE(CheckedTabs(*h).empty());  // no Tabs element
  // Filter checks of the defaults record: saved value over the default, and
  // the default where the saved value is empty.
  const ui::ListView& list = h->lstFilters;
  const int balance = list.FindKey("1");
  const int due = list.FindKey("2");
  EXPECT_TRUE(list.Item(balance).checked);
  EXPECT_EQ(list.SubItem(balance, 2), "45");
  EXPECT_EQ(list.SubItem(due, 2), "01/01/2020");
  EXPECT_EQ(list.SubItem(due, 4), "06/30/2020");
  EXPECT_FALSE(list.Item(list.FindKey("3")).checked);
}

TEST_F(ProfileLoaderTest, ProfileWithoutBaseRecordStopsWithItsMessage) {
  // A per-user entry names no profile record: its text is the user's name.
  h.host.users = {"alice"};
  LoadViewsTree(*h, "Mine");
  h.prompter.ClearShown();
  h->tvwViews.UserSelect(h->tvwViews.FindKey(UserEntryKey("My Accounts", "alice")));
  ASSERT_EQ(h.Messages().size(), 1u);
  EXPECT_EQ(h.Messages()[0],
            "An error was encounted loading this profile.  If this persists, you may need to "
            "delete this profile and recreate it.");
  EXPECT_EQ(h.prompter.Shown()[0].title, "Error");
  EXPECT_EQ(h.prompter.Shown()[0].icon, "critical");
  EXPECT_EQ(h->txtCurrProf.Text(), "alice");
  EXPECT_TRUE(h->lstUsedColumns.Items().empty());
  EXPECT_EQ(h->CurrentProfileName, "Mine");  // the last complete load

  Load("Nobody");  // no node of that name at all
  EXPECT_EQ(h.Messages().size(), 1u);
}

TEST(ProfileLoaderEdgeTest, FilterTypeMissingOrNotANumberKeepsTheOptionButtons) {
  struct Case {
    const char* filter_type_element;
    int before;
    int after;
  };
  const Case cases[] = {
      {"", 1, 1},
      {"<FilterType></FilterType>", 1, 1},
      {"<FilterType>abc</FilterType>", 0, 0},
      {"<FilterType>5</FilterType>", 0, 0},  // no such button
      {"<FilterType> 1 </FilterType>", 0, 1},
      {"<FilterType>0</FilterType>", 1, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.filter_type_element);
    HeadlessEditor e;
    e.Open(std::string("<Views><Profiles><Profile><Name>P</Name><DataSet>Accounts</DataSet>"
                       "<AcctViewType>0</AcctViewType>") +
               c.filter_type_element +
               "<Columns><Column><Name>Account</Name></Column></Columns></Profile>"
               "</Profiles></Views>",
           "", kBrowseSetup);
    e->optFilter.SetValue(c.before);
    LoadProfile(*e, "P");
    EXPECT_EQ(e->optFilter.SetIndex(), c.after);
    EXPECT_EQ(e->txtCurrProf.Text(), "P");
    EXPECT_FALSE(e->ProfileChanged);
  }
}

TEST(ProfileLoaderEdgeTest, StartEndBoxOnlyForStartThenEnd) {
  struct Case {
    const char* var0;
    const char* var1;
    int checked;
  };
  const Case cases[] = {{"START_DATE", "END_DATE", 1},
                        {"END_DATE", "START_DATE", 0},
                        {"START_DATE", "", 0},
                        {"start_date", "end_date", 0},
                        {"", "END_DATE", 0}};
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.var0) + "/" + c.var1);
    HeadlessEditor e;
    e.Open(std::string("<Views><Profiles><Profile><Name>P</Name><DataSet>Accounts</DataSet>"
                       "<Var0Name>") +
               c.var0 + "</Var0Name><Var1Name>" + c.var1 +
               "</Var1Name><Var0Caption>From</Var0Caption></Profile></Profiles></Views>",
           "", kBrowseSetup);
    e->chkStartEnd.SetValue(1 - c.checked);
    LoadProfile(*e, "P");
    EXPECT_EQ(e->chkStartEnd.Value(), c.checked);
    // The stored definitions win over what the box's click wrote.
    std::string caption, type, name;
    e->Variables().GetVariable(0, caption, type, name);
    EXPECT_EQ(caption, "From");
    EXPECT_EQ(name, c.var0);
    e->Variables().GetVariable(1, caption, type, name);
    EXPECT_EQ(caption, "");
    EXPECT_EQ(name, c.var1);
  }
}

TEST(ProfileLoaderEdgeTest, StoredValuesTheControlsDoNotHoldAreSkipped) {
  HeadlessEditor e;
  e.Open(
      "<Views><Profiles><Profile><Name>Odd</Name><DataSet>Vanished</DataSet>"
      "<AcctViewType>99</AcctViewType><FilterType>0</FilterType>"
      "<DoTotals>2</DoTotals><DoGrouping>yes</DoGrouping><PageOrientation>-1</PageOrientation>"
      "<PageSize>2</PageSize><PageMultiLine>1</PageMultiLine><Tabs>3,9,,1</Tabs>"
      "<Columns><Column><Name>Balance</Name></Column><!-- note --><Column><Field>x</Field>"
      "</Column><Column><Name>Account</Name></Column></Columns></Profile>"
      "<Profile><Name>Sales Only</Name><DataSet>Inventory</DataSet><AcctViewType>2</AcctViewType>"
      "</Profile></Profiles></Views>",
      "", kBrowseSetup);
  LoadProfile(*e, "Sales Only");
  ASSERT_EQ(e->cmbAcctViewType.Text(), "Sales");
  e.prompter.ClearShown();
  LoadProfile(*e, "Odd");
  EXPECT_EQ(e->cmbDataSet.Text(), "Accounts");    // unknown data set: first entry
  EXPECT_EQ(e->cmbAcctViewType.Text(), "Sales");  // 99 has no entry: as it was
  EXPECT_EQ(e->chkTotals.Value(), 0);             // 2 is no check value
  EXPECT_EQ(e->chkSortGroup.Value(), 0);          // "yes" converts to 0
  EXPECT_EQ(e->cmbOrientation.ListIndex(), -1);   // -1 is a position: none
  EXPECT_EQ(e->cmbPageSize.Text(), "A4");
  EXPECT_EQ(e->chkMultiLine.Value(), 1);
  EXPECT_EQ(CheckedTabs(*e), (std::vector<std::string>{"T1", "T3"}));
  // Siblings without a Name (a comment, a column without one) are passed over.
  EXPECT_EQ(e->lstUsedColumns.Items(), (std::vector<std::string>{"Balance", "Account"}));
  EXPECT_EQ(e->cmbSort[0].Text(), "Balance");  // no SortBy: the first entry
  EXPECT_FALSE(e->ProfileChanged);
  EXPECT_TRUE(e.Messages().empty());
}

TEST_F(ProfileLoaderTest, DataSetChoiceReloadsColumnsEvenWhenUnchanged) {
  Load("Mine");
  h->cmdRemoveAll.Click();
  ASSERT_EQ(h->lstAvailColumns.ListCount(), 5);
  Load("Loose");  // the same data set
  EXPECT_EQ(h->lstAvailColumns.Items(),
            (std::vector<std::string>{"Account", "Balance", "Customer", "Due Date"}));
  EXPECT_TRUE(h->lstUsedColumns.Items().empty());
  EXPECT_EQ(h->DataSetSQL, "");  // Loose has no SQL element: empty, not the template
}

}  // namespace
}  // namespace cvve

namespace cvve {
namespace {

// Profiles are found by walking the records; what is found must be what the
// path expression "./Profiles/Profile[Name='...']" selects.
TEST(ProfileSelectionTest, WalkFindsWhatTheExpressionSelects) {
  const std::string views =
      "<Views><Profiles>"
      "<Profile><Name>Split<![CDATA[ Name]]></Name><SortBy>cdata</SortBy></Profile>"
      "<Profile><Name>First</Name><Name>Alias</Name><SortBy>two names</SortBy></Profile>"
      "<Profile><Name><b>Deep</b></Name><SortBy>nested</SortBy></Profile>"
      "<Other><Name>NotAProfile</Name></Other>"
      "</Profiles><Profiles>"
      "<Profile><Name>Second Section</Name></Profile>"
      "<Profile><Name>Alias</Name><SortBy>later</SortBy></Profile>"
      "</Profiles></Views>";
  HeadlessEditor h;
  h.Open(views, "", kBrowseSetup);
  const XmlNode root = h->ViewsDoc.Root();
  for (const char* name : {"Split Name", "First", "Alias", "Deep", "Second Section", "NotAProfile",
                           "Split", "", "Bob's", "x' or 'a'='a"}) {
    SCOPED_TRACE(name);
    std::vector<XmlNode> expected = SelectNodes(root, ProfilePath(name));
    XmlNode found = SelectProfileCustom(*h, name);
    EXPECT_EQ(found, expected.empty() ? XmlNode() : expected.front());
    EXPECT_EQ(h->ViewsDoc.CurrentNode(), found);
  }
  EXPECT_EQ(ChildText(SelectProfileCustom(*h, "Alias"), "SortBy"), "two names");
  EXPECT_TRUE(SelectProfileCustom(*h, "x' or 'a'='a"));  // the pasted name rules
}

}  // namespace
}  // namespace cvve
