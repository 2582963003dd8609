#include "profiles/profile_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "core/profiles/browse_fixture.h"
#include "profiles/views_tree.h"
#include "test_support.h"

namespace cvve {
namespace {

using testing::HeadlessEditor;

class ProfileSearchTest : public ::testing::Test {
 protected:
  void SetUp() override {
    h.host.users = {"alice", "bob"};
    h.Open(testing::kBrowseViews, testing::kBrowseDefaults, testing::kBrowseSetup);
    h.prompter.ClearShown();
  }
  std::vector<std::string> Results() {
    std::vector<std::string> texts;
    const ui::TreeView& tree = h->tvwViews;
    for (ui::NodeId id : tree.Children(tree.FindKey(kSearchFolderKey))) {
      texts.push_back(tree.Node(id).text);
    }
    std::sort(texts.begin(), texts.end());
    return texts;
  }
  HeadlessEditor h;
};

TEST_F(ProfileSearchTest, MatchesProfileNamesOnlyIgnoringCase) {
  const struct {
    const char* text;
    std::vector<std::string> want;
  } kCases[] = {
      {"ACC", {"All Accounts", "My Accounts"}},
      {"past", {"Past Due"}},
      {"e", {"Aged Stock", "Loose", "Mine", "Parked", "Past Due", "Team"}},
      // Folders, per-user entries and their SYSTEM entries are no profiles.
      {"Collections", {}},
      {"alice", {}},
      {"SYSTEM", {}},
      // A name with an apostrophe is plain text here, no query.
      {"O'Brien", {}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(FillSearchResults(*h, c.text), static_cast<int>(c.want.size()));
    EXPECT_EQ(Results(), c.want);
  }
  EXPECT_TRUE(h.prompter.Shown().empty());
}

TEST_F(ProfileSearchTest, ResultsCarryKeyTagAndImageAndOpenTheFolder) {
  ASSERT_EQ(FillSearchResults(*h, "past due"), 1);
  const ui::TreeView& tree = h->tvwViews;
  const ui::NodeId result = tree.FindKey("SEARCH|Past Due");
  ASSERT_NE(result, ui::kNoNode);
  EXPECT_EQ(tree.Node(result).text, "Past Due");
  EXPECT_EQ(tree.Node(result).tag, "1");  // the customised system profile's kind
  EXPECT_EQ(tree.Node(result).image, "AcctView");
  EXPECT_EQ(tree.Node(result).parent, tree.FindKey(kSearchFolderKey));
  EXPECT_TRUE(tree.Node(tree.FindKey(kSearchFolderKey)).expanded);
  // The profile's own node still comes first, so its kind is unchanged.
  EXPECT_EQ(ProfileKind(*h, "Past Due"), 1);
}

TEST_F(ProfileSearchTest, ANewSearchReplacesTheResultsAndAnEmptyOneClearsThem) {
  const int nodes = h->tvwViews.Count();
  FillSearchResults(*h, "a");
  EXPECT_GT(h->tvwViews.Count(), nodes);
  FillSearchResults(*h, "mine");
  EXPECT_EQ(Results(), std::vector<std::string>{"Mine"});
  EXPECT_EQ(h->tvwViews.Count(), nodes + 1);
  EXPECT_EQ(FillSearchResults(*h, ""), 0);
  EXPECT_TRUE(Results().empty());
  EXPECT_EQ(h->tvwViews.Count(), nodes);
}

TEST_F(ProfileSearchTest, SelectingAResultLoadsThatProfile) {
  FillSearchResults(*h, "mine");
  const ui::NodeId result = h->tvwViews.FindKey("SEARCH|Mine");
  h->tvwViews.UserSelect(result);
  EXPECT_EQ(h->txtCurrProf.Text(), "Mine");
  EXPECT_EQ(h->CurrentProfileName, "Mine");
  EXPECT_FALSE(h->ProfileChanged);
}

TEST_F(ProfileSearchTest, SearchingLoadsNothingAndDropsASelectedResult) {
  const std::string loaded = h->txtCurrProf.Text();
  const ui::NodeId before = h->tvwViews.SelectedNode();
  FillSearchResults(*h, "team");
  EXPECT_EQ(h->tvwViews.SelectedNode(), before);  // a node ahead of the results
  EXPECT_EQ(h->txtCurrProf.Text(), loaded);

  h->tvwViews.SetSelectedNode(h->tvwViews.FindKey("SEARCH|Team"));
  FillSearchResults(*h, "loose");
  EXPECT_EQ(h->tvwViews.SelectedNode(), ui::kNoNode);
  EXPECT_EQ(h->txtCurrProf.Text(), loaded);
  EXPECT_TRUE(h.prompter.Shown().empty());
}

TEST(ProfileSearchReportModeTest, WithoutASearchFolderNothingHappens) {
  HeadlessEditor h;
  h.dir.Write("reportsetup.xml", testing::kBrowseSetup);
  h.dir.Write("Custom Reports/Aging.cvx",
              "<Views><Profiles><Profile><Name>Aging</Name>"
              "</Profile></Profiles></Views>");
  h->SetReportMode(-1);
  h->LoadFiles(h.dir.Path().string() + "/Custom Reports/", "", "reportsetup.xml");
  const int nodes = h->tvwViews.Count();
  ASSERT_GT(nodes, 0);
  EXPECT_EQ(FillSearchResults(*h, "aging"), 0);
  EXPECT_EQ(h->tvwViews.Count(), nodes);
}

}  // namespace
}  // namespace cvve
