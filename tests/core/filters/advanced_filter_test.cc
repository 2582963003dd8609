#include "filters/advanced_filter.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "filters/frm_acct_view_advanced.h"
#include "fixtures.h"
#include "query/sql_builder.h"

namespace cvve::testing {
namespace {

struct AdvancedFilterTest : ::testing::Test {
  void SetUp() override {
    h.Open("", "", kSetup);
    AddColumn(h, "Account");
    h->cmbSortASCDESC[0].SetText("ASC");
    h->cmbSort[1].SetListIndex(-1);
    h->ProfileChanged = false;
  }
  HeadlessEditor h;
};

TEST_F(AdvancedFilterTest, EachSwitchToAdvancedModeTakesTheEasyFilterStatement) {
  for (int row = 1; row <= 3; ++row) h->lstFilters.SetChecked(row, true);
  h->optFilter.SetValue(1);
  EXPECT_EQ(h->DataSetSQL,
            "CQ:SELECT ACCTS.AcctNum FROM ACCTS WHERE (ACCTS.Active=1) AND (ACCTS.Status='A') AND "
            "(ACCTS.Due BETWEEN '01/01/2020' AND '12/31/2020')   ORDER BY ACCTS.AcctNum ASC");
  EXPECT_FALSE(h->lstFilters.Enabled());
  EXPECT_TRUE(h->cmdAdvancedFilter.Enabled());
  EXPECT_TRUE(h->ProfileChanged);
  EXPECT_EQ(BuildViewSQL(*h, false), "CQ:" + h->DataSetSQL);  // now the text is in force

  // Each click on the option overwrites the hand-written text.
  h->DataSetSQL = "SELECT mine";
  h->lstFilters.SetChecked(1, false);
  h->lstFilters.SetChecked(2, false);
  h->optFilter.SetValue(1);
  const std::string built =
      "CQ:SELECT ACCTS.AcctNum FROM ACCTS WHERE (ACCTS.Active=1)   ORDER BY ACCTS.AcctNum ASC";
  EXPECT_EQ(h->DataSetSQL, built);

  // Back to the easy filter: list on, button off, text kept.
  h->ProfileChanged = false;
  h->optFilter.SetValue(0);
  EXPECT_TRUE(h->lstFilters.Enabled());
  EXPECT_FALSE(h->cmdAdvancedFilter.Enabled());
  EXPECT_EQ(h->DataSetSQL, built);
  EXPECT_TRUE(h->ProfileChanged);

  // A statement that cannot be built: the failure reaches the caller.
  h->lstFilters.SetTag(1, "1|||S|200|");
  h->lstFilters.SetChecked(1, true);
  h->DataSetSQL = "kept";
  h->ProfileChanged = false;
  EXPECT_THROW(h->optFilter.SetValue(1), Error);
  EXPECT_EQ(h->DataSetSQL, "kept");
  EXPECT_FALSE(h->ProfileChanged);
}

TEST_F(AdvancedFilterTest, EditStripsTheMarkBothWaysAndAlwaysMarksTheChange) {
  std::string shown, typed;
  int opened = 0;
  h.dialogs.SetDriver([&](ui::Form& form) {
    auto& dialog = dynamic_cast<frmAcctViewAdvanced&>(form);
    EXPECT_EQ(&dialog, h->advanced_dialog.get());
    ++opened;
    shown = dialog.txtSQL.Text();
    if (!typed.empty()) dialog.txtSQL.SetText(typed);
    dialog.cmdClose.Click();
  });
  h->optFilter.SetValue(1);
  h->DataSetSQL = "CQ:SELECT a FROM b WHERE x='CQ:'";
  h->ProfileChanged = false;
  h->cmdAdvancedFilter.Click();  // Close without typing
  EXPECT_EQ(opened, 1);
  EXPECT_EQ(shown, "SELECT a FROM b WHERE x=''");
  EXPECT_EQ(h->DataSetSQL, "SELECT a FROM b WHERE x=''");
  EXPECT_TRUE(h->ProfileChanged);
  EXPECT_EQ(h->advanced_dialog, nullptr);

  typed = "CQ:SELECT typed CQ:here";  // typed text comes back without the mark
  h->cmdAdvancedFilter.Click();
  EXPECT_EQ(shown, "SELECT a FROM b WHERE x=''");
  EXPECT_EQ(h->DataSetSQL, "SELECT typed here");

  // Dismissed without Close: the steps after the show run all the same.
  h.dialogs.SetDriver([&](ui::Form& form) {
    dynamic_cast<frmAcctViewAdvanced&>(form).txtSQL.SetText("closed by the frame");
  });
  h->ProfileChanged = false;
  h->cmdAdvancedFilter.Click();
  EXPECT_EQ(h->DataSetSQL, "closed by the frame");
  EXPECT_TRUE(h->ProfileChanged);
  EXPECT_EQ(h->advanced_dialog, nullptr);
  EXPECT_EQ(BuildViewSQL(*h, false), "CQ:closed by the frame");
}

}  // namespace
}  // namespace cvve::testing
