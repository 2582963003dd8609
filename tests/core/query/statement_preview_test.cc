#include "query/statement_preview.h"

#include <gtest/gtest.h>

#include "core/profiles/browse_fixture.h"
#include "query/sql_builder.h"
#include "test_support.h"

namespace cvve {
namespace {

using testing::HeadlessEditor;

class StatementPreviewTest : public ::testing::Test {
 protected:
  void SetUp() override {
    h.Open(testing::kBrowseViews, testing::kBrowseDefaults, testing::kBrowseSetup);
    h.prompter.ClearShown();
  }
  void Select(const std::string& name) {
    h->tvwViews.UserSelect(h->tvwViews.FindText(name).front());
    h.prompter.ClearShown();
  }
  HeadlessEditor h;
};

TEST_F(StatementPreviewTest, UserProfileWithEasyFilterShowsTheTwoLists) {
  Select("Loose");
  h->lstUsedColumns.AddItem("Account");
  h->lstUsedColumns.AddItem("Balance");
  h->lstFilters.SetChecked(h->lstFilters.FindKey("1"), true);
  const std::string text = StoredStatementPreview(*h);
  EXPECT_EQ(text,
            "Saving stores the easy filter's lists:\n"
            "SQLFieldList: ACCTS.AcctNum,ACCTS.Balance\n"
            "SQLWhereList: (ACCTS.Balance > 30)\n"
            "SQL: (empty)\n");
}

TEST_F(StatementPreviewTest, UserProfileWithAdvancedFilterShowsTheStatement) {
  Select("Mine");
  ASSERT_TRUE(h->optFilter.Value(1));
  EXPECT_EQ(StoredStatementPreview(*h), "Saving stores the advanced filter's statement:\nSQL: " +
                                            BuildViewSQL(*h, false) + "\n");
}

TEST_F(StatementPreviewTest, BuilderMessagesAreListedNotShown) {
  Select("Loose");
  h->lstUsedColumns.Clear();
  const std::string text = StoredStatementPreview(*h);
  EXPECT_NE(text.find("SQLFieldList: (empty)\n"), std::string::npos) << text;
  EXPECT_NE(text.find("Note: You have not selected any fields/columns.\n"), std::string::npos)
      << text;
  EXPECT_TRUE(h.prompter.Shown().empty());
  // Afterwards the editor's messages reach the user again.
  BuildFieldList(*h);
  EXPECT_EQ(h.LastMessage(), "You have not selected any fields/columns.");
}

TEST_F(StatementPreviewTest, AFailingBuilderIsDescribed) {
  Select("Loose");
  h->lstUsedColumns.Clear();
  h->lstUsedColumns.AddItem("No Such Column");  // no sort field: nothing to select
  const std::string text = StoredStatementPreview(*h);
  EXPECT_NE(text.find("SQLFieldList: cannot be built: "), std::string::npos) << text;
  EXPECT_NE(text.find("SQLWhereList: "), std::string::npos) << text;
}

TEST_F(StatementPreviewTest, SystemProfileKeepsTheDefaultsStatement) {
  Select("All Accounts");
  const std::string text = StoredStatementPreview(*h);
  EXPECT_EQ(text.rfind("System profile: ", 0), 0u) << text;
  EXPECT_NE(text.find("View statement: " + BuildViewSQL(*h, false)), std::string::npos) << text;
}

TEST(StatementPreviewNoProfileTest, SaysSo) {
  HeadlessEditor h;
  h.Open("", "", testing::kBrowseSetup);
  ASSERT_FALSE(h->CurrentProfileNode());
  EXPECT_EQ(StoredStatementPreview(*h), "No profile is selected.\n");
}

}  // namespace
}  // namespace cvve
