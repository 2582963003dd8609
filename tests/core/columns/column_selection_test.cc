#include "columns/column_selection.h"

#include <gtest/gtest.h>

#include <functional>

#include "fixtures.h"

namespace cvve::testing {
namespace {

// The editor on the shared setup, Accounts chosen and no change pending.
struct ColumnSelectionTest : ::testing::Test {
  void SetUp() override {
    h.Open("", "", kSetup);
    h->ProfileChanged = false;
  }
  HeadlessEditor h;
};

TEST_F(ColumnSelectionTest, NothingSelectedChangesNothing) {
  AddColumn(h, "Account");
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
  EXPECT_EQ(h->lstAvailColumns.ListCount(), 5);
  EXPECT_FALSE(h->ProfileChanged);
}

TEST_F(ColumnSelectionTest, AddMovesTheColumnAndRefillsBothSortDropDowns) {
  AddColumn(h, "Balance");
  EXPECT_TRUE(h->ProfileChanged);
  EXPECT_EQ(h->lstUsedColumns.Items(), Names{"Balance"});
  EXPECT_EQ(h->lstAvailColumns.Items(),
            (Names{"Account", "Salesman", "Due Date", "Days Late", "Note"}));
  // An empty remembered text cannot be set back: the first entry stays.
  for (const auto& combo : h->cmbSort) {
    EXPECT_EQ(Entries(combo), Names{"Balance"});
    EXPECT_EQ(combo.Text(), "Balance");
  }
  // A double click adds as the button does; remembered texts come back.
  h->cmbSort[1].SetListIndex(-1);
  h->lstAvailColumns.SetListIndex(h->lstAvailColumns.FindAll("Due Date").front());
  h->lstAvailColumns.on_dbl_click();
  h->cmbSort[1].SetText("Due Date");
  AddColumn(h, "Account");
  EXPECT_EQ(h->lstUsedColumns.Items(), (Names{"Balance", "Due Date", "Account"}));
  for (const auto& combo : h->cmbSort) {
    EXPECT_EQ(Entries(combo), (Names{"Balance", "Due Date", "Account"}));
  }
  EXPECT_EQ(h->cmbSort[0].Text(), "Balance");
  EXPECT_EQ(h->cmbSort[1].Text(), "Due Date");
}

TEST_F(ColumnSelectionTest, RemovesLeaveTheSortDropDownsUntilTheNextAdd) {
  AddColumn(h, "Account");
  AddColumn(h, "Salesman");
  h->cmbSort[0].SetText("Salesman");
  h->ProfileChanged = false;
  h->lstUsedColumns.SetListIndex(1);
  h->lstUsedColumns.on_dbl_click();
  EXPECT_TRUE(h->ProfileChanged);
  EXPECT_EQ(h->lstUsedColumns.Items(), Names{"Account"});
  EXPECT_EQ(h->lstAvailColumns.Items().back(), "Salesman");  // appended
  // Still offered and still chosen, though no longer used.
  EXPECT_EQ(Entries(h->cmbSort[0]), (Names{"Account", "Salesman"}));
  EXPECT_EQ(h->cmbSort[0].Text(), "Salesman");
  // The next add drops it: its text cannot be set back and the first entry stays.
  AddColumn(h, "Due Date");
  EXPECT_EQ(Entries(h->cmbSort[0]), (Names{"Account", "Due Date"}));
  EXPECT_EQ(h->cmbSort[0].Text(), "Account");

  AddColumn(h, "Note");
  h->ProfileChanged = false;
  h->cmdRemoveAll.Click();  // back in used order, the drop-downs not refilled
  EXPECT_TRUE(h->lstUsedColumns.Items().empty());
  EXPECT_EQ(h->lstAvailColumns.Items(),
            (Names{"Balance", "Days Late", "Salesman", "Account", "Due Date", "Note"}));
  EXPECT_EQ(Entries(h->cmbSort[0]), (Names{"Account", "Due Date", "Note"}));
  EXPECT_TRUE(h->ProfileChanged);
  h->ProfileChanged = false;
  h->cmdRemoveAll.Click();  // on an empty list it only marks the change
  EXPECT_EQ(h->lstAvailColumns.ListCount(), 6);
  EXPECT_TRUE(h->ProfileChanged);
}

TEST_F(ColumnSelectionTest, MovesExchangeNeighboursButNotPastTheEnds) {
  for (const char* name : {"Account", "Salesman", "Balance"}) AddColumn(h, name);
  const struct {
    int selected, button;
    Names expected;
    int selected_after;
    bool changed;
  } cases[] = {
      {0, 0, {"Account", "Salesman", "Balance"}, 0, false},  // first up
      {2, 1, {"Account", "Salesman", "Balance"}, 2, false},  // last down
      {1, 0, {"Salesman", "Account", "Balance"}, 0, true},
      {0, 1, {"Account", "Salesman", "Balance"}, 1, true},
      {1, 1, {"Account", "Balance", "Salesman"}, 2, true},
      {2, 0, {"Account", "Salesman", "Balance"}, 1, true},
  };
  for (const auto& c : cases) {
    h->lstUsedColumns.SetListIndex(c.selected);
    h->ProfileChanged = false;
    h->cmdMove[c.button].Click();
    EXPECT_EQ(h->lstUsedColumns.Items(), c.expected) << c.selected << "/" << c.button;
    EXPECT_EQ(h->lstUsedColumns.ListIndex(), c.selected_after);
    EXPECT_EQ(h->ProfileChanged, c.changed);
  }
}

TEST_F(ColumnSelectionTest, OptionControlsMarkTheProfileChangedButTheDataSetDoesNot) {
  AddColumn(h, "Account");
  const std::vector<std::function<void()>> actions = {
      [&] { h->chkTotals.UserClick(); },
      [&] { h->chkAverages.UserClick(); },
      [&] { h->chkShowLineCount.UserClick(); },
      [&] { h->chkSortGroup.UserClick(); },
      [&] { h->cmbOrientation.SetListIndex(1); },
      [&] { h->cmbPageSize.SetListIndex(2); },
      [&] { h->cmbSortASCDESC[1].SetListIndex(1); },
      [&] { h->cmbSort[0].SetListIndex(-1); },
      [&] { h->lstvwTabs.UserCheck(1, true); },
  };
  for (std::size_t i = 0; i < actions.size(); ++i) {
    h->ProfileChanged = false;
    actions[i]();
    EXPECT_TRUE(h->ProfileChanged) << i;
  }
  h->ProfileChanged = false;
  h->cmbDataSet.SetText("Inventory");
  EXPECT_FALSE(h->ProfileChanged);
  EXPECT_EQ(h->lstAvailColumns.Items(), (Names{"Stock", "Arrived"}));
  EXPECT_EQ(h->lstFilters.ItemCount(), 1);
  EXPECT_TRUE(h.Messages().empty());
}

}  // namespace
}  // namespace cvve::testing
