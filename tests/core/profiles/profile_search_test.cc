#include "profiles/profile_search.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "fixtures.h"
#include "profiles/views_tree.h"

namespace cvve::testing {
namespace {

class ProfileSearchTest : public ::testing::Test {
 protected:
  void SetUp() override {
    h.Open(kViews, kDefaults, kSetup);
    h.prompter.ClearShown();
  }
  Names Results() {
    Names texts;
    for (ui::NodeId id : tree().Children(tree().FindKey(kSearchFolderKey))) {
      texts.push_back(tree().Node(id).text);
    }
    std::sort(texts.begin(), texts.end());
    return texts;
  }
  ui::TreeView& tree() { return h->tvwViews; }
  HeadlessEditor h;
};

TEST_F(ProfileSearchTest, MatchesProfileNamesOnlyIgnoringCaseAndReplacesEarlierResults) {
  const int nodes = tree().Count();
  const struct {
    const char* text;
    Names want;
  } kCases[] = {
      {"ACC", {"All Accounts", "My Accounts"}},
      {"e", {"Aged Stock", "Loose", "Mine", "Parked", "Past Due", "Team"}},
      // Folders, per-user entries and their SYSTEM entries are no profiles.
      {"Collections", {}},
      {"alice", {}},
      {"SYSTEM", {}},
      {"O'Brien", {}},  // plain text, no query
      {"past", {"Past Due"}},
      {"", {}},  // only clears
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(FillSearchResults(*h, c.text), static_cast<int>(c.want.size()));
    EXPECT_EQ(Results(), c.want);
    EXPECT_EQ(tree().Count(), nodes + static_cast<int>(c.want.size()));
  }
  EXPECT_TRUE(h.prompter.Shown().empty());
}

TEST_F(ProfileSearchTest, AResultCarriesTheKindAndLoadsItsProfile) {
  const std::string loaded = h->txtCurrProf.Text();
  const ui::NodeId before = tree().SelectedNode();
  ASSERT_EQ(FillSearchResults(*h, "past due"), 1);
  EXPECT_EQ(tree().SelectedNode(), before);  // searching loads nothing
  EXPECT_EQ(h->txtCurrProf.Text(), loaded);
  const ui::NodeId result = tree().FindKey("SEARCH|Past Due");
  ASSERT_NE(result, ui::kNoNode);
  const ui::TreeNode& node = tree().Node(result);
  EXPECT_EQ(Box(node.text, node.tag, node.image, tree().Node(node.parent).key),
            Box("Past Due", "1", "AcctView", kSearchFolderKey));
  EXPECT_TRUE(tree().Node(tree().FindKey(kSearchFolderKey)).expanded);
  EXPECT_EQ(ProfileKind(*h, "Past Due"), 1);  // the profile's own node still comes first

  FillSearchResults(*h, "mine");
  tree().UserSelect(tree().FindKey("SEARCH|Mine"));
  EXPECT_EQ(h->CurrentProfileName, "Mine");
  EXPECT_FALSE(h->ProfileChanged);
  FillSearchResults(*h, "loose");  // the selected result goes
  EXPECT_EQ(tree().SelectedNode(), ui::kNoNode);
  EXPECT_EQ(h->txtCurrProf.Text(), "Mine");
  EXPECT_TRUE(h.prompter.Shown().empty());
}

TEST(ProfileSearchUnicodeTest, LetterCaseIsIgnoredBeyondAscii) {
  HeadlessEditor h;
  h.Open(ViewsFile({{"Müller Weekly", ""}, {"Ölwechsel Kunden", ""}, {"Große Posten", ""},
                    {"Mullen Lot", ""}}),
         kDefaults, kSetup);
  const struct {
    const char* text;
    Names want;
  } kCases[] = {
      {"MÜLLER", {"Müller Weekly"}},
      {"müller", {"Müller Weekly"}},
      {"mül", {"Müller Weekly"}},
      {"ÖLWECHSEL", {"Ölwechsel Kunden"}},
      {"GROSSE", {"Große Posten"}},  // ß and SS fold alike
      {"mull", {"Mullen Lot"}},       // u and ü stay different letters
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text);
    FillSearchResults(*h, c.text);
    Names found;
    for (ui::NodeId id : h->tvwViews.Children(h->tvwViews.FindKey(kSearchFolderKey))) {
      found.push_back(h->tvwViews.Node(id).text);
    }
    EXPECT_EQ(found, c.want);
  }
}

TEST(ProfileSearchReportModeTest, WithoutASearchFolderNothingHappens) {
  HeadlessEditor h;
  OpenReports(h, {{"Aging", ReportDocument("Aging")}});
  const int nodes = h->tvwViews.Count();
  ASSERT_EQ(nodes, 2);
  EXPECT_EQ(FillSearchResults(*h, "aging"), 0);
  EXPECT_EQ(h->tvwViews.Count(), nodes);
}

}  // namespace
}  // namespace cvve::testing
