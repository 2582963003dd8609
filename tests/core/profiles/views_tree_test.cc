#include "profiles/views_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <vector>

#include "base/text.h"
#include "fixtures.h"
#include "ui/tree_view.h"
#include "viewfiles/profile_record.h"

namespace cvve::testing {
namespace {

Names ChildTexts(const ui::TreeView& tree, ui::NodeId node) {
  Names texts;
  for (ui::NodeId id : tree.Children(node)) texts.push_back(tree.Node(id).text);
  return texts;
}

const ui::TreeNode& NodeByText(const ui::TreeView& tree, const std::string& text) {
  const auto& hits = tree.FindText(text);
  if (hits.empty()) throw std::runtime_error("no node " + text);
  return tree.Node(hits.front());
}

class ViewsTreeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    h.host.users = {"alice", "", "bob"};
    h.Open(kViews, kDefaults, kSetup);
  }
  HeadlessEditor h;
  ui::TreeView& tree() { return h->tvwViews; }
};

TEST_F(ViewsTreeTest, FoldersComeFromRootNodesWithoutIndex99) {
  Names roots;
  for (ui::NodeId id : tree().Roots()) roots.push_back(tree().Node(id).key);
  EXPECT_EQ(roots, (Names{"ROOT0", "ROOT1", "ROOT2", "ROOTSearch"}));
  for (ui::NodeId id : tree().Roots()) {
    const ui::TreeNode& folder = tree().Node(id);
    EXPECT_TRUE(folder.sorted && folder.bold) << folder.key;
    if (folder.key == "ROOTSearch") continue;
    EXPECT_EQ(folder.image, "closed");
    EXPECT_EQ(folder.expanded_image, "open");
  }
  const ui::TreeNode& search = tree().Node(tree().FindKey("ROOTSearch"));
  EXPECT_EQ(search.text, "Search Results");
  EXPECT_EQ(search.image, "Search");
  EXPECT_EQ(Entries(h->cmbAcctViewType), (Names{"System Views", "Collections", "Sales"}));
  EXPECT_EQ(h->cmbAcctViewType.ItemData(2), 2);
}

TEST_F(ViewsTreeTest, EachProfileGetsItsKindFolderAndImage) {
  struct Case {
    const char *name, *tag, *folder;
  } cases[] = {
      {"Past Due", "1", "ROOT1"},      // in both files: the defaults' folder, tagged 1
      {"All Accounts", "0", "ROOT0"},  // defaults only
      {"My Accounts", "0", "ROOT0"},   // defaults with AcctViewType 99
      {"Aged Stock", "0", "ROOT2"},   {"Mine", "2", "ROOT2"},  // views only
      {"Loose", "2", "ROOT0"},                                 // empty AcctViewType
      {"Parked", "2", "ROOT0"},                                // AcctViewType 99
      {"Team", "2", "ROOT1"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ASSERT_EQ(tree().FindText(c.name).size(), 1u);
    const ui::TreeNode& node = NodeByText(tree(), c.name);
    EXPECT_EQ(node.tag, c.tag);
    EXPECT_EQ(node.key, c.name);
    EXPECT_EQ(node.image, "AcctView");
    EXPECT_EQ(tree().Node(node.parent).key, c.folder);
    EXPECT_EQ(ProfileKind(*h, c.name), std::stoi(c.tag));
  }
  EXPECT_TRUE(tree().FindText("Orphan").empty());  // its folder does not exist
  EXPECT_TRUE(tree().FindText("").empty());        // the nameless record is skipped
  EXPECT_EQ(ProfileKind(*h, "Nobody"), -1);
  EXPECT_TRUE(h.Messages().empty());  // a views-file failure is skipped quietly
  EXPECT_EQ(ChildTexts(tree(), tree().FindKey("ROOT0")),
            (Names{"All Accounts", "Loose", "My Accounts", "Parked"}));  // alphabetical
}

TEST_F(ViewsTreeTest, PerUserEntriesForUserWherePlaceholder) {
  for (const char* profile : {"My Accounts", "Team"}) {
    SCOPED_TRACE(profile);
    const ui::NodeId node = tree().FindKey(profile);
    EXPECT_EQ(ChildTexts(tree(), node), (Names{"alice", "bob", "SYSTEM"}));  // "" skipped
    for (ui::NodeId child : tree().Children(node)) {
      EXPECT_EQ(tree().Node(child).image, "user");
      EXPECT_EQ(tree().Node(child).tag, "USERVIEW");
      EXPECT_FALSE(StartsWith(tree().Node(child).key, "ROOT"));
    }
  }
  EXPECT_TRUE(tree().Children(tree().FindKey("Mine")).empty());
  // Keys tell profile and user apart, also for names that look like each other.
  std::set<std::string> keys = {UserEntryKey("My Accounts", "alice"),
                                UserEntryKey("Team", "alice"),
                                UserEntryKey("a|b", "c"),
                                UserEntryKey("a", "b|c"),
                                UserEntryKey("Team", "SYSTEM"),
                                SystemEntryKey("Team"),
                                SystemEntryKey("My Accounts")};
  EXPECT_EQ(keys.size(), 7u);
  EXPECT_NE(tree().FindKey(UserEntryKey("Team", "bob")), ui::kNoNode);
  EXPECT_NE(tree().FindKey(SystemEntryKey("My Accounts")), ui::kNoNode);

  HeadlessEditor odd;  // a user called SYSTEM, and one listed twice
  odd.host.users = {"SYSTEM", "carol", "carol"};
  odd.Open("", kDefaults, kSetup);
  EXPECT_EQ(ChildTexts(odd->tvwViews, odd->tvwViews.FindKey("My Accounts")),
            (Names{"SYSTEM", "carol", "SYSTEM"}));
  EXPECT_TRUE(odd.Messages().empty());
}

TEST(ViewsTreeBuildTest, DuplicatesAreReportedOnceAndTheBuildGoesOn) {
  // Twice in the views file: the second record re-tags the first one's node.
  HeadlessEditor views;
  views.Open(ViewsFile({{"Twin", "<AcctViewType>0</AcctViewType>"},
                        {"Twin", "<AcctViewType>1</AcctViewType>"}}),
             "", kSetup);
  ASSERT_EQ(views->tvwViews.FindText("Twin").size(), 1u);
  EXPECT_EQ(ProfileKind(*views, "Twin"), 1);

  // Twice in the defaults file, or a folder index twice: one message each.
  const std::string defaults = ViewsFile({{"Dup", "<AcctViewType>0</AcctViewType>"},
                                          {"Dup", "<AcctViewType>1</AcctViewType>"},
                                          {"Dup", "<AcctViewType>2</AcctViewType>"},
                                          {"After", "<AcctViewType>2</AcctViewType>"}});
  const std::string folders =
      "<ViewSetup><RootNodes><Root><Index>0</Index><Name>A</Name></Root>"
      "<Root><Index>0</Index><Name>B</Name></Root>"
      "<Root><Index>2</Index><Name>C</Name></Root></RootNodes><DataSets/></ViewSetup>";
  const std::string expected =
      std::string("Error opening account views file.  Please close Corvane DMS and restart it.") +
      kCrLf + kCrLf +
      "If you still encounter this error, you may need to re-set up your account views in the "
      "Account View Manager." +
      kCrLf + kCrLf + "Extended Info: Key is not unique in collection";
  for (bool folder_error : {false, true}) {
    HeadlessEditor h;
    h.host.host_name = "Corvane DMS";
    h.Open("", folder_error ? "" : defaults, folder_error ? folders : kSetup);
    ASSERT_EQ(h.prompter.Shown().size(), 1u) << ShownPrompts(h);
    EXPECT_EQ(Box(h.prompter.Shown()[0]), Box("Error", "OK", "critical", expected));
    if (folder_error) {
      EXPECT_NE(h->tvwViews.FindKey("ROOT2"), ui::kNoNode);
      EXPECT_EQ(h->tvwViews.SelectedNode(), ui::kNoNode);  // no profile in folder 0
    } else {
      EXPECT_EQ(ProfileKind(*h, "Dup"), 0);
      EXPECT_EQ(ProfileKind(*h, "After"), 0);
      EXPECT_NE(h->tvwViews.FindKey("ROOTSearch"), ui::kNoNode);
    }
  }
}

TEST_F(ViewsTreeTest, SelectionByNameElseFirstProfileOfRoot0) {
  EXPECT_EQ(tree().Node(tree().SelectedNode()).text, "All Accounts");  // by LoadFiles
  EXPECT_EQ(h->txtCurrProf.Text(), "All Accounts");
  LoadViewsTree(*h, "Mine");
  EXPECT_EQ(tree().Node(tree().SelectedNode()).text, "Mine");
  EXPECT_TRUE(tree().Node(tree().FindKey("ROOT2")).expanded);
  EXPECT_EQ(h->CurrentProfileName, "Mine");
  LoadViewsTree(*h, "No Such Profile");
  EXPECT_EQ(tree().Node(tree().SelectedNode()).text, "All Accounts");
}

TEST(ReportTreeTest, ListsCvxFilesSortedAndLoadsTheChosenOne) {
  HeadlessEditor empty;
  OpenReports(empty, {});
  ASSERT_EQ(empty->tvwViews.Count(), 1);  // only the reports folder
  const ui::TreeNode& root = empty->tvwViews.Node(0);
  EXPECT_EQ(Box(root.key, root.text, root.image, root.expanded_image),
            Box("ROOT", "Custom Reports", "closed", "open"));
  EXPECT_EQ(empty->tvwViews.SelectedNode(), ui::kNoNode);
  EXPECT_EQ(empty->cmbAcctViewType.ListCount(), 0);
  EXPECT_TRUE(empty.Messages().empty());

  HeadlessEditor h;
  h.dir.Write("Custom Reports/Upper.CVX", ReportDocument("Upper"));  // not reopenable
  h.dir.Write("Custom Reports/Zeta.cvr", "<Report/>");
  h.dir.Write("Custom Reports/notes.txt", "");
  std::filesystem::create_directories(h.dir.Path() / "Custom Reports" / "sub.cvx");
  OpenReports(h,
              {{"Zeta", ReplaceAll(ReportDocument("Zeta"), "<SortBy>Account", "<SortBy>Balance")},
               {"alpha", ReportDocument("alpha")}});
  const std::string folder = ReportsFolder(h) + "/";
  const ui::NodeId reports = h->tvwViews.FindKey("ROOT");
  ASSERT_EQ(ChildTexts(h->tvwViews, reports), (Names{"alpha", "Zeta"}));
  EXPECT_TRUE(h->tvwViews.Node(reports).expanded);
  EXPECT_EQ(NodeByText(h->tvwViews, "Zeta").image, "SNotes");
  EXPECT_EQ(NodeByText(h->tvwViews, "Zeta").tag, folder + "Zeta.cvx");

  LoadViewsTree(*h, "Zeta");
  EXPECT_EQ(h->ViewsPath, folder + "Zeta.cvx");
  EXPECT_EQ(h->txtCurrProf.Text(), "Zeta");
  EXPECT_EQ(h->lstUsedColumns.Items(), (Names{"Account", "Balance"}));
  EXPECT_EQ(h->cmbSort[0].Text(), "Balance");
  EXPECT_EQ(ProfileKind(*h, "Zeta"), 2);  // a report is the user's own
  EXPECT_TRUE(h->cmbDataSet.Enabled());
  LoadViewsTree(*h, "alpha");
  EXPECT_EQ(h->ViewsPath, folder + "alpha.cvx");
  EXPECT_EQ(h->cmbSort[0].Text(), "Account");
  EXPECT_FALSE(h->ProfileChanged);
  EXPECT_TRUE(h.Messages().empty());
}

TEST_F(ViewsTreeTest, FolderAndNoNodeSelections) {
  tree().UserSelect(tree().FindKey("Mine"));
  tree().UserSelect(tree().FindKey("ROOT1"));
  EXPECT_EQ(h->txtCurrProf.Text(), "Mine");  // a folder loads nothing
  EXPECT_TRUE(h->cmbDataSet.Enabled());
  tree().UserSelect(ui::kNoNode);
  for (const ui::Control* control : std::initializer_list<const ui::Control*>{
           &h->cmbAcctViewType, &h->cmbDataSet, &h->lstUsedColumns, &h->cmdMove[1], &h->lstvwTabs,
           &h->optFilter, &h->fraInstructions}) {
    EXPECT_FALSE(control->Enabled()) << control->Name();
  }
  tree().UserSelect(tree().FindKey("Past Due"));
  EXPECT_TRUE(h->lstUsedColumns.Enabled() && h->lstvwTabs.Enabled());
  EXPECT_FALSE(h->cmbDataSet.Enabled());  // a system profile's data set is fixed
}

}  // namespace
}  // namespace cvve::testing

namespace cvve::testing {
namespace {

TEST(TreeViewSortTest, SortedChildrenFollowTheLowerCasedTextsWithTiesInTheOrderAdded) {
  const Names texts = {"beta",  "Alpha", "alpha", "ALPHA2", "alp",   "Zed",  "zed",
                       "b",     "",      "a b",   "a_b",    "A[b",   "\xc3\xa9t\xc3\xa9",
                       "\xc3\x89T\xc3\x89", "10",  "9",     "Beta",  "bet"};
  HeadlessEditor h;
  ui::TreeView& tree = h->tvwViews;
  const ui::NodeId folder = tree.Add(ui::kNoNode, "F", "folder", "closed", "open");
  for (const std::string& text : texts) tree.Add(folder, "", text, "AcctView", "");
  tree.SetSorted(folder, true);
  // The order of ToLower's strings; a stable sort keeps equal ones as added.
  std::vector<std::size_t> expected(texts.size());
  for (std::size_t i = 0; i < texts.size(); ++i) expected[i] = i;
  std::stable_sort(expected.begin(), expected.end(), [&](std::size_t a, std::size_t b) {
    return ToLower(texts[a]) < ToLower(texts[b]);
  });
  Names got, want;
  for (ui::NodeId id : tree.Children(folder)) got.push_back(tree.Node(id).text);
  for (std::size_t i : expected) want.push_back(texts[i]);
  EXPECT_EQ(got, want);
  // Ties: "Alpha" was added before "alpha", "Zed" before "zed".
  EXPECT_LT(std::find(got.begin(), got.end(), "Alpha"), std::find(got.begin(), got.end(), "alpha"));
}

}  // namespace
}  // namespace cvve::testing
