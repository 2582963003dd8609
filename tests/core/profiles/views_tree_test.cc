#include "profiles/views_tree.h"

#include <gtest/gtest.h>

#include <set>

#include "base/text.h"
#include "core/profiles/browse_fixture.h"
#include "test_support.h"
#include "viewfiles/profile_record.h"

namespace cvve {
namespace {

using testing::HeadlessEditor;
using testing::kBrowseDefaults;
using testing::kBrowseSetup;
using testing::kBrowseViews;

std::vector<std::string> ChildTexts(const ui::TreeView& tree, const std::string& key) {
  std::vector<std::string> texts;
  for (ui::NodeId id : tree.Children(tree.FindKey(key))) texts.push_back(tree.Node(id).text);
  return texts;
}

const ui::TreeNode& NodeByText(const ui::TreeView& tree, const std::string& text) {
  const auto& hits = tree.FindText(text);
  if (hits.empty()) throw std::runtime_error("no node " + text);
  return tree.Node(hits.front());
}

std::string ParentKey(const ui::TreeView& tree, const std::string& text) {
  ui::NodeId parent = NodeByText(tree, text).parent;
  return parent == ui::kNoNode ? "" : tree.Node(parent).key;
}

class ViewsTreeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    h.host.users = {"alice", "", "bob"};
    h.Open(kBrowseViews, kBrowseDefaults, kBrowseSetup);
  }
  HeadlessEditor h;
  ui::TreeView& tree() { return h->tvwViews; }
};

TEST_F(ViewsTreeTest, FoldersComeFromRootNodesWithoutIndex99) {
  std::vector<std::string> roots;
  for (ui::NodeId id : tree().Roots()) roots.push_back(tree().Node(id).key);
  EXPECT_EQ(roots, (std::vector<std::string>{"ROOT0", "ROOT1", "ROOT2", "ROOTSearch"}));
  for (const char* key : {"ROOT0", "ROOT1", "ROOT2"}) {
    const ui::TreeNode& folder = tree().Node(tree().FindKey(key));
    EXPECT_TRUE(folder.sorted) << key;
    EXPECT_TRUE(folder.bold) << key;
    EXPECT_EQ(folder.image, "closed");
    EXPECT_EQ(folder.expanded_image, "open");
  }
  const ui::TreeNode& search = tree().Node(tree().FindKey("ROOTSearch"));
  EXPECT_EQ(search.text, "Search Results");
  EXPECT_EQ(search.image, "Search");
  EXPECT_TRUE(search.sorted && search.bold);

  const ui::ComboBox& types = h->cmbAcctViewType;
  ASSERT_EQ(types.ListCount(), 3);
  EXPECT_EQ(types.List(0), "System Views");
  EXPECT_EQ(types.List(1), "Collections");
  EXPECT_EQ(types.List(2), "Sales");
  EXPECT_EQ(types.ItemData(2), 2);
  EXPECT_EQ(types.FindText("Hidden"), -1);
}

TEST_F(ViewsTreeTest, EachProfileGetsItsKindFolderAndImage) {
  struct Case {
    const char* name;
    const char* tag;
    const char* folder;
  };
  const Case cases[] = {
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
    EXPECT_EQ(ParentKey(tree(), c.name), c.folder);
    EXPECT_EQ(ProfileKind(*h, c.name), std::stoi(c.tag));
  }
  EXPECT_TRUE(tree().FindText("Orphan").empty());  // its folder does not exist
  EXPECT_TRUE(tree().FindText("").empty());        // the nameless record is skipped
  EXPECT_EQ(ProfileKind(*h, "Nobody"), -1);
  EXPECT_TRUE(h.Messages().empty());  // a views-file failure is skipped quietly
  // Folders keep their profiles in alphabetical order.
  EXPECT_EQ(ChildTexts(tree(), "ROOT0"),
            (std::vector<std::string>{"All Accounts", "Loose", "My Accounts", "Parked"}));
}

TEST_F(ViewsTreeTest, PerUserEntriesForUserWherePlaceholder) {
  for (const char* profile : {"My Accounts", "Team"}) {
    SCOPED_TRACE(profile);
    ui::NodeId node = tree().FindKey(profile);
    std::vector<std::string> texts;
    for (ui::NodeId child : tree().Children(node)) {
      const ui::TreeNode& entry = tree().Node(child);
      texts.push_back(entry.text);
      EXPECT_EQ(entry.image, "user");
      EXPECT_EQ(entry.tag, "USERVIEW");
      EXPECT_FALSE(StartsWith(entry.key, "ROOT"));
    }
    EXPECT_EQ(texts, (std::vector<std::string>{"alice", "bob", "SYSTEM"}));  // empty name skipped
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
}

TEST(ViewsTreeEdgeTest, UserNamedSystemAndTwiceNamedUserDoNotBreakTheTree) {
  HeadlessEditor h;
  h.host.users = {"SYSTEM", "carol", "carol"};
  h.Open("", kBrowseDefaults, kBrowseSetup);
  std::vector<std::string> texts;
  for (ui::NodeId child : h->tvwViews.Children(h->tvwViews.FindKey("My Accounts"))) {
    texts.push_back(h->tvwViews.Node(child).text);
  }
  EXPECT_EQ(texts, (std::vector<std::string>{"SYSTEM", "carol", "SYSTEM"}));
  EXPECT_TRUE(h.Messages().empty());
}

TEST(ViewsTreeEdgeTest, DuplicateNames) {
  // Twice in the views file: the second record re-tags the first one's node.
  HeadlessEditor views;
  views.Open(
      "<Views><Profiles><Profile><Name>Twin</Name><AcctViewType>0</AcctViewType></Profile>"
      "<Profile><Name>Twin</Name><AcctViewType>1</AcctViewType></Profile></Profiles></Views>",
      "", kBrowseSetup);
  ASSERT_EQ(views->tvwViews.FindText("Twin").size(), 1u);
  EXPECT_EQ(ProfileKind(*views, "Twin"), 1);
  EXPECT_EQ(ParentKey(views->tvwViews, "Twin"), "ROOT0");

  // Twice in the defaults file: the builder reports it once and goes on.
  HeadlessEditor defaults;
  defaults.host.host_name = "Corvane DMS";
  defaults.Open("",
                "<Views><Profiles>"
                "<Profile><Name>Dup</Name><AcctViewType>0</AcctViewType></Profile>"
                "<Profile><Name>Dup</Name><AcctViewType>1</AcctViewType></Profile>"
                "<Profile><Name>Dup</Name><AcctViewType>2</AcctViewType></Profile>"
                "<Profile><Name>After</Name><AcctViewType>2</AcctViewType></Profile>"
                "</Profiles></Views>",
                kBrowseSetup);
  const std::string expected =
      std::string("Error opening account views file.  Please close Corvane DMS and restart it.") +
      kCrLf + kCrLf +
      "If you still encounter this error, you may need to re-set up your account views in the "
      "Account View Manager." +
      kCrLf + kCrLf + "Extended Info: Key is not unique in collection";
  ASSERT_EQ(defaults.Messages().size(), 1u);
  EXPECT_EQ(defaults.Messages()[0], expected);
  EXPECT_EQ(defaults.prompter.Shown()[0].title, "Error");
  EXPECT_EQ(defaults.prompter.Shown()[0].icon, "critical");
  EXPECT_EQ(ProfileKind(*defaults, "Dup"), 0);
  EXPECT_EQ(ParentKey(defaults->tvwViews, "Dup"), "ROOT0");
  EXPECT_EQ(ProfileKind(*defaults, "After"), 0);
  EXPECT_NE(defaults->tvwViews.FindKey("ROOTSearch"), ui::kNoNode);
}

TEST_F(ViewsTreeTest, SelectionByNameElseFirstProfileOfRoot0) {
  // LoadFiles selected (and loaded) the first profile of ROOT0.
  EXPECT_EQ(tree().Node(tree().SelectedNode()).text, "All Accounts");
  EXPECT_EQ(h->txtCurrProf.Text(), "All Accounts");

  LoadViewsTree(*h, "Mine");
  EXPECT_EQ(tree().Node(tree().SelectedNode()).text, "Mine");
  EXPECT_TRUE(tree().Node(tree().FindKey("ROOT2")).expanded);
  EXPECT_EQ(h->txtCurrProf.Text(), "Mine");
  EXPECT_EQ(h->CurrentProfileName, "Mine");

  LoadViewsTree(*h, "No Such Profile");
  EXPECT_EQ(tree().Node(tree().SelectedNode()).text, "All Accounts");
}

TEST(ViewsTreeEdgeTest, NoRoot0LeavesNothingSelected) {
  HeadlessEditor h;
  h.Open("", "",
         "<ViewSetup><RootNodes><Root><Index>5</Index><Name>Five</Name></Root></RootNodes>"
         "<DataSets/></ViewSetup>");
  EXPECT_EQ(h->tvwViews.SelectedNode(), ui::kNoNode);
  EXPECT_EQ(h->tvwViews.Count(), 2);  // the folder and the search folder
  EXPECT_TRUE(h.Messages().empty());
}

TEST(ViewsTreeEdgeTest, FolderErrorIsReportedWithHostName) {
  HeadlessEditor h;
  h.host.host_name = "HostApp";
  h.Open("", "",
         "<ViewSetup><RootNodes><Root><Index>1</Index><Name>A</Name></Root>"
         "<Root><Index>1</Index><Name>B</Name></Root>"
         "<Root><Index>2</Index><Name>C</Name></Root></RootNodes><DataSets/></ViewSetup>");
  ASSERT_EQ(h.Messages().size(), 1u);
  EXPECT_TRUE(StartsWith(h.Messages()[0],
                         "Error opening account views file.  Please close "
                         "HostApp and restart it."));
  EXPECT_NE(h->tvwViews.FindKey("ROOT2"), ui::kNoNode);  // the build went on
}

class ReportTreeTest : public ::testing::Test {
 protected:
  void OpenReports() {
    h.dir.Write("setup.xml", kBrowseSetup);
    h->SetReportMode(-1);
    h->LoadFiles(h.dir.Path().string() + "/Custom Reports/", "", "setup.xml");
  }
  static std::string Report(const std::string& name, const std::string& sort) {
    return "<Views><Profiles><Profile><Name>" + name +
           "</Name><DataSet>Accounts</DataSet><SortBy>" + sort +
           "</SortBy><Columns><Column><Name>Account</Name></Column>"
           "<Column><Name>Balance</Name></Column></Columns></Profile></Profiles></Views>";
  }
  HeadlessEditor h;
};

TEST_F(ReportTreeTest, EmptyFolderHoldsOnlyTheReportsFolder) {
  std::filesystem::create_directories(h.dir.Path() / "Custom Reports");
  OpenReports();
  ASSERT_EQ(h->tvwViews.Count(), 1);
  const ui::TreeNode& root = h->tvwViews.Node(0);
  EXPECT_EQ(root.key, "ROOT");
  EXPECT_EQ(root.text, "Custom Reports");
  EXPECT_EQ(root.image, "closed");
  EXPECT_EQ(root.expanded_image, "open");
  EXPECT_EQ(h->tvwViews.SelectedNode(), ui::kNoNode);
  EXPECT_EQ(h->cmbAcctViewType.ListCount(), 0);
  EXPECT_TRUE(h.Messages().empty());
}

TEST_F(ReportTreeTest, ListsCvxFilesSortedAndLoadsTheChosenOne) {
  h.dir.Write("Custom Reports/Zeta.cvx", Report("Zeta", "Balance"));
  h.dir.Write("Custom Reports/alpha.cvx", Report("alpha", "Account"));
  h.dir.Write("Custom Reports/Upper.CVX", Report("Upper", "Account"));  // could not be reopened
  h.dir.Write("Custom Reports/Zeta.cvr", "<Report/>");
  h.dir.Write("Custom Reports/notes.txt", "");
  std::filesystem::create_directories(h.dir.Path() / "Custom Reports" / "sub.cvx");
  OpenReports();
  const std::string folder = h.dir.Path().string() + "/Custom Reports/";
  ui::NodeId root = h->tvwViews.FindKey("ROOT");
  ASSERT_EQ(ChildTexts(h->tvwViews, "ROOT"), (std::vector<std::string>{"alpha", "Zeta"}));
  EXPECT_TRUE(h->tvwViews.Node(root).expanded);
  const ui::TreeNode& zeta = NodeByText(h->tvwViews, "Zeta");
  EXPECT_EQ(zeta.image, "SNotes");
  EXPECT_EQ(zeta.tag, folder + "Zeta.cvx");
  EXPECT_EQ(NodeByText(h->tvwViews, "alpha").tag, folder + "alpha.cvx");

  LoadViewsTree(*h, "Zeta");
  EXPECT_EQ(h->ViewsPath, folder + "Zeta.cvx");
  EXPECT_EQ(h->txtCurrProf.Text(), "Zeta");
  EXPECT_EQ(h->lstUsedColumns.Items(), (std::vector<std::string>{"Account", "Balance"}));
  EXPECT_EQ(h->cmbSort[0].Text(), "Balance");
  EXPECT_FALSE(h->ProfileChanged);
  EXPECT_EQ(ProfileKind(*h, "Zeta"), 2);  // a report is the user's own
  EXPECT_TRUE(h->cmbDataSet.Enabled());

  h.prompter.ClearShown();
  LoadViewsTree(*h, "alpha");
  EXPECT_EQ(h->ViewsPath, folder + "alpha.cvx");
  EXPECT_EQ(h->cmbSort[0].Text(), "Account");
  EXPECT_TRUE(h.Messages().empty());
}

TEST_F(ViewsTreeTest, SaveQuestionOnSelection) {
  const std::string question =
      "You have made changes to this profile.  Would you like to save these changes?";
  ui::NodeId loose = tree().FindKey("Loose");
  ui::NodeId mine = tree().FindKey("Mine");
  tree().UserSelect(mine);
  ASSERT_EQ(h->txtCurrProf.Text(), "Mine");

  // Cancel: nothing loaded, the change stays.
  h->chkTotals.UserClick();
  ASSERT_TRUE(h->ProfileChanged);
  h.prompter.ClearShown();
  h.prompter.QueueAnswer(ui::Answer::kCancel);
  tree().UserSelect(loose);
  ASSERT_EQ(h.Messages().size(), 1u);
  EXPECT_EQ(h.Messages()[0], question);
  EXPECT_EQ(h.prompter.Shown()[0].title, "Save Changes");
  EXPECT_EQ(h.prompter.Shown()[0].buttons, "YesNoCancel");
  EXPECT_EQ(h.prompter.Shown()[0].icon, "question");
  EXPECT_EQ(h->txtCurrProf.Text(), "Mine");
  EXPECT_TRUE(h->ProfileChanged);
  EXPECT_EQ(h->chkTotals.Value(), 1);

  // No: loads the other profile without saving.
  h.prompter.QueueAnswer(ui::Answer::kNo);
  tree().UserSelect(loose);
  EXPECT_EQ(h->txtCurrProf.Text(), "Loose");
  EXPECT_FALSE(h->ProfileChanged);
  EXPECT_EQ(ChildText(SelectProfileCustom(*h, "Mine"), "DoTotals"), "");

  // Yes: saves the profile on screen, then loads the chosen one.
  tree().UserSelect(mine);
  h->chkTotals.UserClick();
  h.prompter.QueueAnswer(ui::Answer::kYes);
  tree().UserSelect(loose);
  EXPECT_EQ(h->txtCurrProf.Text(), "Loose");
  EXPECT_FALSE(h->ProfileChanged);
  EXPECT_EQ(ChildText(SelectProfileCustom(*h, "Mine"), "DoTotals"), "1");
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
  // Choosing a profile again makes the lists usable again.
  tree().UserSelect(tree().FindKey("Past Due"));
  EXPECT_TRUE(h->lstUsedColumns.Enabled());
  EXPECT_TRUE(h->lstvwTabs.Enabled());
  EXPECT_FALSE(h->cmbDataSet.Enabled());  // a system profile's data set is fixed
}

}  // namespace
}  // namespace cvve
