#include "profiles/profile_loader.h"

#include <gtest/gtest.h>

#include "fixtures.h"
#include "profiles/views_tree.h"

namespace cvve::testing {
namespace {

Names CheckedTabs(const frmAcctViewEdit& ed) {
  Names keys;
  for (const auto& item : ed.lstvwTabs.Items()) {
    if (item.checked) keys.push_back(item.key);
  }
  return keys;
}

// A user profile "P" on Accounts with the given elements.
std::string ViewsWith(const std::string& elements) {
  return ViewsFile({{"P", "<DataSet>Accounts</DataSet>" + elements}});
}

class ProfileLoaderTest : public ::testing::Test {
 protected:
  void SetUp() override { h.Open(kViews, kDefaults, kSetup); }
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
  // Source and filter from the defaults file, the rest from the views file.
  EXPECT_EQ(h->cmbDataSet.Text(), "Accounts");
  EXPECT_EQ(h->cmbAcctViewType.Text(), "Collections");
  EXPECT_EQ(h->optFilter.SetIndex(), 0);
  EXPECT_EQ(h->DataSetSQL, "");  // the stored empty SQL replaces the template
  EXPECT_EQ(h->lstUsedColumns.Items(), (Names{"Salesman", "Due Date"}));
  EXPECT_EQ(h->lstAvailColumns.Items(), (Names{"Account", "Balance", "Days Late", "Note"}));
  EXPECT_EQ(Entries(h->cmbSort[0]), (Names{"Salesman", "Due Date"}));
  EXPECT_EQ(h->cmbSort[0].Text(), "Salesman");
  EXPECT_EQ(h->cmbSort[1].Text(), "Salesman");    // "Nowhere" is no used column
  EXPECT_EQ(h->cmbSortASCDESC[1].Text(), "ASC");  // "SIDEWAYS" is not offered
  EXPECT_EQ(CheckedTabs(*h), Names{"T2"});
  EXPECT_EQ(h->chkTotals.Value() + h->chkAverages.Value(), 2);
  EXPECT_EQ(h->chkShowLineCount.Value(), 0);
  EXPECT_EQ(h->cmbOrientation.Text(), "Landscape");
  EXPECT_EQ(h->cmbPageSize.ListIndex(), 0);  // position 7 does not exist
  // A system profile's source, filters and mode cannot be changed.
  for (const ui::Control* c : std::initializer_list<const ui::Control*>{
           &h->cmbDataSet, &h->cmbAcctViewType, &h->optFilter, &h->cmdAdvancedFilter}) {
    EXPECT_FALSE(c->Enabled()) << c->Name();
  }
  EXPECT_TRUE(h->lstvwTabs.Enabled());
  EXPECT_FALSE(h->ProfileChanged);
  EXPECT_TRUE(h.Messages().empty());
}

TEST_F(ProfileLoaderTest, UserProfileLoadsEverythingFromTheViewsFile) {
  Load("Mine");
  EXPECT_EQ(h->cmbAcctViewType.Text(), "Sales");
  EXPECT_EQ(h->optFilter.SetIndex(), 1);
  EXPECT_EQ(h->DataSetSQL, "CQ:SELECT custom");
  EXPECT_TRUE(h->cmbDataSet.Enabled() && h->optFilter.Enabled());
  // Advanced mode, run again by the option's click: list off, edit button on.
  EXPECT_FALSE(h->lstFilters.Enabled());
  EXPECT_TRUE(h->cmdAdvancedFilter.Enabled());
  // A used column the data set no longer offers is still listed as used.
  EXPECT_EQ(h->lstUsedColumns.Items(), (Names{"Account", "Gone Column"}));
  EXPECT_EQ(h->lstAvailColumns.Items(),
            (Names{"Balance", "Salesman", "Due Date", "Days Late", "Note"}));
  EXPECT_EQ(h->cmbSortASCDESC[0].Text(), "DESC");
  EXPECT_EQ(CheckedTabs(*h), (Names{"T1", "T3"}));
  // The saved filter state was applied after the data set reloaded the rows.
  EXPECT_TRUE(h->lstFilters.Item(h->lstFilters.FindKey("3")).checked);
  std::string caption, type, name;
  h->Variables().GetVariable(2, caption, type, name);
  EXPECT_EQ(Box(caption, type, name, ""), Box("", "Text", "DEALER", ""));
  EXPECT_EQ(h->chkStartEnd.Value(), 1);
  EXPECT_EQ(Entries(h->txtData1LV), (Names{"", "<$START_DATE>", "<$END_DATE>", "<$DEALER>"}));
  EXPECT_EQ(Entries(h->txtData2LV), Entries(h->txtData1LV));
  EXPECT_FALSE(h->ProfileChanged);

  // The same data set again still reloads the columns.
  h->cmdRemoveAll.Click();
  Load("Loose");
  EXPECT_EQ(h->lstAvailColumns.ListCount(), 6);
  EXPECT_TRUE(h->lstUsedColumns.Items().empty());
  EXPECT_EQ(h->DataSetSQL, "");  // no SQL element: empty, not the template
}

TEST_F(ProfileLoaderTest, SystemProfileWithoutCustomisation) {
  Load("All Accounts");
  EXPECT_EQ(h->DataSetSQL, "CQ:SELECT stored");
  EXPECT_TRUE(CheckedTabs(*h).empty());  // no Tabs element
  // Saved value over the default; the default where the saved one is empty.
  const ui::ListView& list = h->lstFilters;
  EXPECT_TRUE(list.Item(1).checked);
  EXPECT_EQ(list.SubItem(1, 2), "B");
  EXPECT_EQ(list.SubItem(2, 2), "01/01/2020");
  EXPECT_EQ(list.SubItem(2, 4), "06/30/2020");
  EXPECT_FALSE(list.Item(3).checked);
}

TEST_F(ProfileLoaderTest, ProfileWithoutBaseRecordStopsWithItsMessage) {
  // A per-user entry names no profile record: its text is the user's name.
  LoadViewsTree(*h, "Mine");
  h.prompter.ClearShown();
  h->tvwViews.UserSelect(h->tvwViews.FindKey(UserEntryKey("My Accounts", "alice")));
  ASSERT_EQ(h.prompter.Shown().size(), 1u);
  EXPECT_EQ(Box(h.prompter.Shown()[0]),
            Box("Error", "OK", "critical",
                "An error was encounted loading this profile.  If this persists, you "
                "may need to delete this profile and recreate it."));
  EXPECT_EQ(h->txtCurrProf.Text(), "alice");
  EXPECT_TRUE(h->lstUsedColumns.Items().empty());
  EXPECT_EQ(h->CurrentProfileName, "Mine");  // the last complete load
  Load("Nobody");                            // no node of that name at all
  EXPECT_EQ(h.Messages().size(), 1u);
}

TEST(ProfileLoaderEdgeTest, FilterTypeMissingOrNotANumberKeepsTheOptionButtons) {
  const struct {
    const char* element;
    int before, after;
  } cases[] = {
      {"", 1, 1},
      {"<FilterType></FilterType>", 1, 1},
      {"<FilterType>abc</FilterType>", 0, 0},
      {"<FilterType>5</FilterType>", 0, 0},  // no such button
      {"<FilterType> 1 </FilterType>", 0, 1},
      {"<FilterType>0</FilterType>", 1, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.element);
    HeadlessEditor e;
    e.Open(ViewsWith(std::string("<AcctViewType>0</AcctViewType>") + c.element), "", kSetup);
    e->optFilter.SetValue(c.before);
    LoadProfile(*e, "P");
    EXPECT_EQ(e->optFilter.SetIndex(), c.after);
    EXPECT_FALSE(e->ProfileChanged);
  }
}

TEST(ProfileLoaderEdgeTest, StartEndBoxOnlyForStartThenEnd) {
  const struct {
    const char *var0, *var1;
    int checked;
  } cases[] = {{"START_DATE", "END_DATE", 1},
               {"END_DATE", "START_DATE", 0},
               {"START_DATE", "", 0},
               {"start_date", "end_date", 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.var0) + "/" + c.var1);
    HeadlessEditor e;
    e.Open(ViewsWith(std::string("<Var0Name>") + c.var0 + "</Var0Name><Var1Name>" + c.var1 +
                     "</Var1Name><Var0Caption>From</Var0Caption>"),
           "", kSetup);
    e->chkStartEnd.SetValue(1 - c.checked);
    LoadProfile(*e, "P");
    EXPECT_EQ(e->chkStartEnd.Value(), c.checked);
    // The stored definitions win over what the box's click wrote.
    std::string caption, type, name;
    e->Variables().GetVariable(0, caption, type, name);
    EXPECT_EQ(caption + "|" + name, std::string("From|") + c.var0);
    e->Variables().GetVariable(1, caption, type, name);
    EXPECT_EQ(caption + "|" + name, std::string("|") + c.var1);
  }
}

TEST(ProfileLoaderEdgeTest, StoredValuesTheControlsDoNotHoldAreSkipped) {
  HeadlessEditor e;
  e.Open(ViewsFile({{"Odd",
                     "<DataSet>Vanished</DataSet><AcctViewType>99</AcctViewType><FilterType>0"
                     "</FilterType><DoTotals>2</DoTotals><DoGrouping>yes</DoGrouping>"
                     "<PageOrientation>-1</PageOrientation><PageSize>2</PageSize><PageMultiLine>1"
                     "</PageMultiLine><Tabs>3,9,,1</Tabs><Columns><Column><Name>Balance</Name>"
                     "</Column><!-- note --><Column><Field>x</Field></Column><Column><Name>Account"
                     "</Name></Column></Columns>"},
                    {"Sales Only", "<DataSet>Inventory</DataSet><AcctViewType>2</AcctViewType>"}}),
         "", kSetup);
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
  EXPECT_EQ(CheckedTabs(*e), (Names{"T1", "T3"}));
  // Siblings without a Name (a comment, a column without one) are passed over.
  EXPECT_EQ(e->lstUsedColumns.Items(), (Names{"Balance", "Account"}));
  EXPECT_EQ(e->cmbSort[0].Text(), "Balance");  // no SortBy: the first entry
  EXPECT_FALSE(e->ProfileChanged);
  EXPECT_TRUE(e.Messages().empty());
}

}  // namespace
}  // namespace cvve::testing
