#include "query/statement_preview.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "fixtures.h"
#include "query/sql_builder.h"

namespace cvve::testing {
namespace {

class StatementPreviewTest : public ::testing::Test {
 protected:
  void SetUp() override { h.Open(kViews, kDefaults, kSetup); }
  void Select(const std::string& name) {
    testing::Select(h, name);
    h.prompter.ClearShown();
  }
  HeadlessEditor h;
};

TEST_F(StatementPreviewTest, UserProfilesShowWhatTheSaveStores) {
  Select("Loose");
  h->lstUsedColumns.AddItem("Account");
  h->lstUsedColumns.AddItem("Balance");
  h->lstFilters.SetChecked(1, true);
  EXPECT_EQ(StoredStatementPreview(*h),
            "Saving stores the easy filter's lists:\n"
            "SQLFieldList: ACCTS.AcctNum,ACCTS.Balance\n"
            "SQLWhereList: (ACCTS.Status='A')\n"
            "SQL: (empty)\n");
  // A failing builder is described.
  h->lstUsedColumns.Clear();
  h->lstUsedColumns.AddItem("No Such Column");  // no sort field: nothing to select
  std::string text = StoredStatementPreview(*h);
  EXPECT_TRUE(Contains(text, "SQLFieldList: cannot be built: ")) << text;
  // Afterwards builder messages reach the user again (the GUI test checks the note).
  h->lstUsedColumns.Clear();
  StoredStatementPreview(*h);
  BuildFieldList(*h);
  EXPECT_EQ(h.LastMessage(), "You have not selected any fields/columns.");

  Select("Mine");
  ASSERT_TRUE(h->optFilter.Value(1));
  EXPECT_EQ(StoredStatementPreview(*h), "Saving stores the advanced filter's statement:\nSQL: " +
                                            BuildViewSQL(*h, false) + "\n");
}

TEST_F(StatementPreviewTest, SystemProfileKeepsTheDefaultsStatement) {
  Select("All Accounts");
  const std::string text = StoredStatementPreview(*h);
  EXPECT_TRUE(StartsWith(text, "System profile: ")) << text;
  EXPECT_TRUE(Contains(text, "View statement: " + BuildViewSQL(*h, false))) << text;
  h->SetCurrentProfileNode({}, h->ViewsDoc);
  EXPECT_EQ(StoredStatementPreview(*h), "No profile is selected.\n");
}

}  // namespace
}  // namespace cvve::testing
