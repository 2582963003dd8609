#include "columns/column_selection.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "test_support.h"
#include "viewfiles/setup_file.h"

namespace cvve {
namespace {

using testing::HeadlessEditor;
using Names = std::vector<std::string>;

const char* kSetup = R"(<ViewSetup>
  <DataSets>
    <DataSet>
      <Name>Accounts</Name>
      <SQL>SELECT %FIELDLIST% FROM ACCTS</SQL>
      <Columns>
        <Column><Name>Account</Name><SortField>ACCTS.AcctNum</SortField></Column>
        <Column><Name>Name</Name><SortField>CUST_INFO.Name</SortField></Column>
        <Column><Name>Balance</Name><SortField>ACCTS.Balance</SortField></Column>
        <Column><Name>Due</Name><SortField>$DUE_DATE</SortField></Column>
      </Columns>
      <Filters>
        <Filter><Name>Status</Name><Index>1</Index><InputNum>1</InputNum><SQL>S='%DATA1%'</SQL><Group>1</Group><Defaults>A</Defaults></Filter>
      </Filters>
    </DataSet>
    <DataSet>
      <Name>Deals</Name>
      <SQL>SELECT %FIELDLIST% FROM DEAL_INFO</SQL>
      <Columns><Column><Name>Deal</Name><SortField>DEAL_INFO.DealID</SortField></Column></Columns>
      <Filters>
        <Filter><Name>Open</Name><Index>7</Index><InputNum>0</InputNum><SQL>D.Open=1</SQL><Group>0</Group></Filter>
        <Filter><Name>Price</Name><Index>8</Index><InputNum>2</InputNum><SQL>D.Price BETWEEN %DATA1% AND %DATA2%</SQL><Group>1</Group><Defaults>1|2</Defaults></Filter>
      </Filters>
    </DataSet>
  </DataSets>
</ViewSetup>)";

// The editor on the setup file with its first data set chosen and no change pending.
void Open(HeadlessEditor& h) {
  ASSERT_TRUE(h->SetupDoc.LoadText(kSetup));
  LoadDataSets(*h);
  h->ProfileChanged = false;
}

void Add(HeadlessEditor& h, const std::string& name) {
  auto found = h->lstAvailColumns.FindAll(name);
  ASSERT_FALSE(found.empty()) << name;
  h->lstAvailColumns.SetListIndex(found.front());
  h->cmdAddForm.Click();
}

Names Entries(const ui::ComboBox& combo) {
  Names names;
  for (const auto& entry : combo.Entries()) names.push_back(entry.text);
  return names;
}

TEST(ColumnSelectionTest, NothingSelectedChangesNothing) {
  HeadlessEditor h;
  Open(h);
  Add(h, "Account");
  h->ProfileChanged = false;
  h->lstAvailColumns.SetListIndex(-1);
  h->lstUsedColumns.SetListIndex(-1);
  h->cmdAddForm.Click();
  h->lstAvailColumns.on_dbl_click();
  h->cmdRemoveForm.Click();
  h->lstUsedColumns.on_dbl_click();
  h->cmdMove[0].Click();
  h->cmdMove[1].Click();
  EXPECT_EQ(h->lstUsedColumns.Items(), Names{"Account"});
  EXPECT_EQ(h->lstAvailColumns.Items(), (Names{"Name", "Balance", "Due"}));
  EXPECT_FALSE(h->ProfileChanged);
}

TEST(ColumnSelectionTest, AddMovesTheColumnAndRefillsBothSortDropDowns) {
  HeadlessEditor h;
  Open(h);
  Add(h, "Balance");
  EXPECT_TRUE(h->ProfileChanged);
  EXPECT_EQ(h->lstUsedColumns.Items(), Names{"Balance"});
  EXPECT_EQ(h->lstAvailColumns.Items(), (Names{"Account", "Name", "Due"}));
  // An empty remembered text cannot be set back: the first entry stays.
  for (const auto& combo : h->cmbSort) {
    EXPECT_EQ(Entries(combo), Names{"Balance"});
    EXPECT_EQ(combo.Text(), "Balance");
  }

  // A double click adds as the button does; remembered texts come back.
  h->cmbSort[1].SetListIndex(-1);
  h->lstAvailColumns.SetListIndex(h->lstAvailColumns.FindAll("Due").front());
  h->lstAvailColumns.on_dbl_click();
  h->cmbSort[1].SetText("Due");
  Add(h, "Account");
  EXPECT_EQ(h->lstUsedColumns.Items(), (Names{"Balance", "Due", "Account"}));
  EXPECT_EQ(Entries(h->cmbSort[0]), (Names{"Balance", "Due", "Account"}));
  EXPECT_EQ(Entries(h->cmbSort[1]), (Names{"Balance", "Due", "Account"}));
  EXPECT_EQ(h->cmbSort[0].Text(), "Balance");
  EXPECT_EQ(h->cmbSort[1].Text(), "Due");
}

TEST(ColumnSelectionTest, RemoveLeavesTheSortDropDownsUntilTheNextAdd) {
  HeadlessEditor h;
  Open(h);
  Add(h, "Account");
  Add(h, "Name");
  h->cmbSort[0].SetText("Name");
  h->ProfileChanged = false;

  h->lstUsedColumns.SetListIndex(1);
  h->lstUsedColumns.on_dbl_click();
  EXPECT_TRUE(h->ProfileChanged);
  EXPECT_EQ(h->lstUsedColumns.Items(), Names{"Account"});
  EXPECT_EQ(h->lstAvailColumns.Items(), (Names{"Balance", "Due", "Name"}));  // appended
  // Still offered and still chosen, though no longer used.
  EXPECT_EQ(Entries(h->cmbSort[0]), (Names{"Account", "Name"}));
  EXPECT_EQ(h->cmbSort[0].Text(), "Name");

  // The next add drops it: its text cannot be set back and the first entry stays.
  Add(h, "Due");
  EXPECT_EQ(Entries(h->cmbSort[0]), (Names{"Account", "Due"}));
  EXPECT_EQ(h->cmbSort[0].Text(), "Account");
}

TEST(ColumnSelectionTest, RemoveAllReturnsColumnsInUsedOrder) {
  HeadlessEditor h;
  Open(h);
  Add(h, "Due");
  Add(h, "Account");
  Add(h, "Name");
  h->ProfileChanged = false;
  h->cmdRemoveAll.Click();
  EXPECT_TRUE(h->lstUsedColumns.Items().empty());
  EXPECT_EQ(h->lstAvailColumns.Items(), (Names{"Balance", "Due", "Account", "Name"}));
  EXPECT_EQ(Entries(h->cmbSort[0]), (Names{"Due", "Account", "Name"}));  // not refilled

  h->ProfileChanged = false;
  h->cmdRemoveAll.Click();  // on an empty list it only marks the change
  EXPECT_EQ(h->lstAvailColumns.ListCount(), 4);
  EXPECT_TRUE(h->ProfileChanged);
}

TEST(ColumnSelectionTest, MovesExchangeNeighboursButNotPastTheEnds) {
  HeadlessEditor h;
  Open(h);
  for (const char* name : {"Account", "Name", "Balance"}) Add(h, name);
  struct Case {
    int selected, button;
    Names expected;
    int selected_after;
    bool changed;
  };
  const std::vector<Case> cases = {
      {0, 0, {"Account", "Name", "Balance"}, 0, false},  // first up
      {2, 1, {"Account", "Name", "Balance"}, 2, false},  // last down
      {1, 0, {"Name", "Account", "Balance"}, 0, true},
      {0, 1, {"Account", "Name", "Balance"}, 1, true},
      {1, 1, {"Account", "Balance", "Name"}, 2, true},
      {2, 0, {"Account", "Name", "Balance"}, 1, true},
  };
  for (const Case& c : cases) {
    h->lstUsedColumns.SetListIndex(c.selected);
    h->ProfileChanged = false;
    h->cmdMove[c.button].Click();
    EXPECT_EQ(h->lstUsedColumns.Items(), c.expected) << c.selected << "/" << c.button;
    EXPECT_EQ(h->lstUsedColumns.ListIndex(), c.selected_after);
    EXPECT_EQ(h->ProfileChanged, c.changed);
  }
}

TEST(ColumnSelectionTest, OptionControlsMarkTheProfileChanged) {
  HeadlessEditor h;
  Open(h);
  Add(h, "Account");
  auto marks = [&](auto&& action) {
    h->ProfileChanged = false;
    action();
    return h->ProfileChanged;
  };
  EXPECT_TRUE(marks([&] { h->chkTotals.UserClick(); }));
  EXPECT_TRUE(marks([&] { h->chkAverages.UserClick(); }));
  EXPECT_TRUE(marks([&] { h->chkShowLineCount.UserClick(); }));
  EXPECT_TRUE(marks([&] { h->chkSortGroup.UserClick(); }));
  EXPECT_TRUE(marks([&] { h->cmbOrientation.SetListIndex(1); }));
  EXPECT_TRUE(marks([&] { h->cmbPageSize.SetListIndex(2); }));
  EXPECT_TRUE(marks([&] { h->cmbSortASCDESC[1].SetListIndex(1); }));
  EXPECT_TRUE(marks([&] { h->cmbSort[0].SetListIndex(-1); }));
  h->lstvwTabs.AddItem(1, "General", "T1");
  EXPECT_TRUE(marks([&] { h->lstvwTabs.UserCheck(1, true); }));
}

TEST(ColumnSelectionTest, ChoosingADataSetReloadsColumnsAndFiltersWithoutMarking) {
  HeadlessEditor h;
  Open(h);
  Add(h, "Account");
  ASSERT_EQ(h->lstFilters.ItemCount(), 1);
  h->ProfileChanged = false;
  h->cmbDataSet.SetText("Deals");
  EXPECT_FALSE(h->ProfileChanged);
  EXPECT_EQ(h->lstAvailColumns.Items(), Names{"Deal"});
  EXPECT_TRUE(h->lstUsedColumns.Items().empty());
  EXPECT_EQ(h->DataSetSQL, "SELECT %FIELDLIST% FROM DEAL_INFO");
  ASSERT_EQ(h->lstFilters.ItemCount(), 2);
  EXPECT_EQ(h->lstFilters.Item(1).key, "7");
  EXPECT_EQ(h->lstFilters.Item(2).tag, "2|||D.Price BETWEEN %DATA1% AND %DATA2%|1|1|2");
  EXPECT_TRUE(h.Messages().empty());
}

}  // namespace
}  // namespace cvve
