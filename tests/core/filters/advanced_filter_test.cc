#include "filters/advanced_filter.h"

#include <gtest/gtest.h>

#include <string>

#include "base/error.h"
#include "base/text.h"
#include "columns/column_selection.h"
#include "filters/frm_acct_view_advanced.h"
#include "query/sql_builder.h"
#include "test_support.h"
#include "viewfiles/setup_file.h"

namespace cvve {
namespace {

using testing::HeadlessEditor;

const char* kSetup = R"(<ViewSetup>
  <DataSets>
    <DataSet>
      <Name>Accounts</Name>
      <SQL>SELECT %FIELDLIST% FROM ACCTS WHERE 1=1%ANDWHERELIST%%ORDERLIST%</SQL>
      <Columns><Column><Name>Account</Name><SortField>ACCTS.AcctNum</SortField></Column></Columns>
      <Filters>
        <Filter><Name>Status</Name><Index>1</Index><InputNum>1</InputNum><SQL>S='%DATA1%'</SQL><Group>1</Group><Defaults>A</Defaults></Filter>
        <Filter><Name>Balance</Name><Index>2</Index><InputNum>1</InputNum><SQL>B LESSTHAN %DATA1%</SQL><Group>2</Group><Defaults>50</Defaults></Filter>
        <Filter><Name>Dealer</Name><Index>3</Index><InputNum>0</InputNum><SQL>D=1</SQL><Group>2</Group></Filter>
      </Filters>
    </DataSet>
  </DataSets>
</ViewSetup>)";

struct AdvancedFilterTest : ::testing::Test {
  void SetUp() override {
    ASSERT_TRUE(h->SetupDoc.LoadText(kSetup));
    LoadDataSets(*h);
    h->lstAvailColumns.SetListIndex(0);
    cmdAddForm_Click(*h);
    h->cmbSortASCDESC[0].SetText("ASC");
    h->cmbSort[1].SetListIndex(-1);
    h->ProfileChanged = false;
  }
  HeadlessEditor h;
};

TEST_F(AdvancedFilterTest, EnteringAdvancedModeTakesTheEasyFilterStatement) {
  for (int row = 1; row <= 3; ++row) h->lstFilters.SetChecked(row, true);
  h->optFilter.SetValue(1);
  EXPECT_EQ(h->DataSetSQL,
            "CQ:SELECT ACCTS.AcctNum FROM ACCTS WHERE 1=1 AND (S='A') AND (B < 50 OR D=1) "
            "ORDER BY ACCTS.AcctNum ASC");
  EXPECT_FALSE(h->lstFilters.Enabled());
  EXPECT_TRUE(h->cmdAdvancedFilter.Enabled());
  EXPECT_TRUE(h->ProfileChanged);
  // Now in force: the view statement is the text as it stands.
  EXPECT_EQ(BuildViewSQL(*h, false), "CQ:" + h->DataSetSQL);

  // Each click on the option overwrites the hand-written text.
  h->DataSetSQL = "SELECT mine";
  h->lstFilters.SetChecked(1, false);
  h->optFilter.SetValue(1);
  EXPECT_EQ(h->DataSetSQL,
            "CQ:SELECT ACCTS.AcctNum FROM ACCTS WHERE 1=1 AND (B < 50 OR D=1) "
            "ORDER BY ACCTS.AcctNum ASC");

  // Back to the easy filter: list on, button off, text kept.
  h->ProfileChanged = false;
  h->optFilter.SetValue(0);
  EXPECT_TRUE(h->lstFilters.Enabled());
  EXPECT_FALSE(h->cmdAdvancedFilter.Enabled());
  EXPECT_TRUE(StartsWith(h->DataSetSQL, "CQ:SELECT ACCTS.AcctNum FROM ACCTS WHERE 1=1 AND (B"));
  EXPECT_TRUE(h->ProfileChanged);
}

TEST_F(AdvancedFilterTest, ModeChangeFailureReachesTheCaller) {
  h->lstFilters.SetTag(1, "1|||S|200|");
  h->lstFilters.SetChecked(1, true);
  h->DataSetSQL = "kept";
  EXPECT_THROW(h->optFilter.SetValue(1), Error);
  EXPECT_EQ(h->DataSetSQL, "kept");
  EXPECT_FALSE(h->lstFilters.Enabled());
  EXPECT_FALSE(h->ProfileChanged);
}

TEST_F(AdvancedFilterTest, EditStripsTheMarkBothWaysAndAlwaysMarksTheChange) {
  h->DataSetSQL = "CQ:SELECT a FROM b WHERE x='CQ:'";
  std::string shown;
  int opened = 0;
  h.dialogs.SetDriver([&](ui::Form& form) {
    auto& dialog = dynamic_cast<frmAcctViewAdvanced&>(form);
    ASSERT_EQ(&dialog, h->advanced_dialog.get());
    ++opened;
    shown = dialog.txtSQL.Text();
    dialog.cmdClose.Click();
  });
  h->optFilter.SetValue(1);
  h->DataSetSQL = "CQ:SELECT a FROM b WHERE x='CQ:'";
  h->ProfileChanged = false;
  h->cmdAdvancedFilter.Click();
  EXPECT_EQ(opened, 1);
  EXPECT_EQ(shown, "SELECT a FROM b WHERE x=''");
  EXPECT_EQ(h->DataSetSQL, "SELECT a FROM b WHERE x=''");
  EXPECT_TRUE(h->ProfileChanged);
  EXPECT_EQ(h->advanced_dialog, nullptr);

  // Typed text comes back without the mark; the next edit starts afresh.
  h.dialogs.SetDriver([&](ui::Form& form) {
    auto& dialog = dynamic_cast<frmAcctViewAdvanced&>(form);
    shown = dialog.txtSQL.Text();
    dialog.txtSQL.SetText("CQ:SELECT typed CQ:here");
    dialog.cmdClose.Click();
  });
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
}  // namespace cvve
