#include <gtest/gtest.h>

#include "base/error.h"
#include "ui/combo_box.h"
#include "ui/headless_prompter.h"
#include "ui/list_box.h"
#include "ui/list_view.h"
#include "ui/simple_controls.h"
#include "ui/tree_view.h"

namespace cvve::ui {
namespace {

TEST(ComboBoxTest, CodeChangesFireClickOnlyWhenTheSelectionMoves) {
  ComboBox combo("cmbDataSet");
  int clicks = 0;
  combo.on_click = [&] { ++clicks; };
  combo.AddItem("Accounts", 0);
  combo.AddItem("Deals", 7);
  combo.SetListIndex(0);
  combo.SetListIndex(0);
  combo.SetText("Deals");
  EXPECT_EQ(clicks, 2);
  EXPECT_EQ(combo.ItemData(combo.ListIndex()), 7);
  combo.SetListIndex(-1);
  EXPECT_EQ(combo.Text(), "");
  EXPECT_EQ(clicks, 3);
  // An unlisted text on a pick-only list changes nothing.
  combo.SetListIndex(0);
  EXPECT_THROW(combo.SetText("Vehicles"), Error);
  EXPECT_EQ(combo.Text(), "Accounts");
  EXPECT_THROW(combo.SetListIndex(2), Error);

  ComboBox editable("txtData1LV", ComboBox::Style::kEditable);
  int changes = 0;
  editable.on_change = [&] { ++changes; };
  editable.AddItem("");
  editable.AddItem("<$START_DATE>");
  editable.SetText("45");  // free text: no entry selected
  EXPECT_EQ(editable.ListIndex(), -1);
  editable.SetListIndex(1);
  EXPECT_EQ(editable.Text(), "<$START_DATE>");
  EXPECT_EQ(changes, 1);
}

TEST(ListBoxTest, RemovingKeepsTheSelectionOnItsEntry) {
  ListBox list("lstUsedColumns");
  for (const char* t : {"a", "b", "c", "b"}) list.AddItem(t);
  list.SetListIndex(2);
  list.RemoveItem(0);
  EXPECT_EQ(list.ListIndex(), 1);
  list.RemoveItem(1);
  EXPECT_EQ(list.ListIndex(), -1);
  EXPECT_EQ(list.FindAll("b"), (std::vector<int>{0, 1}));
  EXPECT_THROW(list.RemoveItem(5), Error);
}

TEST(ListViewTest, KeysSubItemsAndUserChecks) {
  ListView view("lstFilters");
  view.AddColumn({"", "Filter", Alignment::kLeft, 3000});
  view.AddColumn({"Data1", "", Alignment::kCenter, 1570});
  view.AddItem(1, "Balance", "3");
  view.AddItem(2, "Late", "7");
  EXPECT_THROW(view.AddItem(3, "Again", "3"), Error);
  view.AddItem(1, "First", "1");  // inserting shifts the others
  EXPECT_EQ(view.FindKey("7"), 3);
  EXPECT_THROW(view.SetKey(1, "7"), Error);
  view.SetSubItem(3, 1, "45");
  EXPECT_EQ(view.SubItem(3, 1), "45");
  EXPECT_EQ(view.SubItem(3, 0), "Late");
  EXPECT_THROW(view.SubItem(3, 2), Error);
  EXPECT_EQ(view.ColumnPosition("Data1"), 2);
  EXPECT_EQ(view.ColumnPosition("Data2"), 0);

  int fired = 0;
  view.on_item_check = [&](int row) { fired += row; };
  view.SetChecked(2, true);  // by code: no event
  EXPECT_EQ(fired, 0);
  view.UserCheck(2, false);
  EXPECT_EQ(fired, 2);
  EXPECT_FALSE(view.Item(2).checked);
}

TEST(ListViewTest, HitTestFindsRowAndSubItem) {
  ListView view("lstFilters");
  for (int w : {3000, 1440, 1570, 1440, 1570}) view.AddColumn({"", "", Alignment::kLeft, w});
  for (int i = 1; i <= 3; ++i) view.AddItem(i, "row");
  view.header_height_twips = 300;
  view.row_height_twips = 255;
  struct Case {
    int x_px, y_px, row, sub;
  } cases[] = {
      {10, 25, 0, 0},      // first row, caption
      {350, 25, 0, 2},     // 5250 twips: Data1
      {600, 60, 2, 4},     // 9000 twips, third row: Data2
      {10, 5, -1, -1},     // the header
      {10, 200, -1, -1},   // below the rows
      {1000, 25, -1, -1},  // right of the columns
  };
  for (const auto& c : cases) {
    auto hit = view.HitTest(c.x_px, c.y_px, 15, 15);
    EXPECT_EQ(hit.row, c.row) << c.x_px << "," << c.y_px;
    EXPECT_EQ(hit.sub_item, c.sub) << c.x_px << "," << c.y_px;
  }
  EXPECT_EQ(view.ColumnLeft(3), 4440);
  EXPECT_EQ(view.ItemTop(2), 555);
}

TEST(TreeViewTest, SortedChildrenKeysAndTextIndex) {
  TreeView tree("tvwViews");
  NodeId root = tree.Add(kNoNode, "ROOT0", "All", "closed", "open");
  tree.SetSorted(root, true);
  tree.Add(root, "b", "beta", "AcctView");
  tree.Add(root, "A", "Alpha", "AcctView");
  NodeId g = tree.Add(root, "g", "gamma", "AcctView");
  tree.Add(g, "", "alice", "user");
  tree.Add(g, "", "alice", "user");  // empty keys may repeat
  EXPECT_THROW(tree.Add(root, "b", "again", "AcctView"), Error);
  EXPECT_THROW(tree.Add(99, "x", "x", "x"), Error);
  std::vector<std::string> texts;
  for (NodeId id : tree.Children(root)) texts.push_back(tree.Node(id).text);
  EXPECT_EQ(texts, (std::vector<std::string>{"Alpha", "beta", "gamma"}));
  EXPECT_EQ(tree.FindText("alice").size(), 2u);
  EXPECT_EQ(tree.FindKey("g"), g);
  EXPECT_EQ(tree.DisplayOrder().size(), 6u);
  tree.EnsureVisible(tree.FindText("alice")[0]);
  EXPECT_TRUE(tree.Node(g).expanded && tree.Node(root).expanded);
  int clicks = 0;
  tree.on_node_click = [&](NodeId) { ++clicks; };
  tree.SetSelectedNode(g);
  EXPECT_EQ(clicks, 0);
  tree.UserSelect(root);
  EXPECT_EQ(clicks, 1);
  tree.Clear();
  EXPECT_EQ(tree.SelectedNode(), kNoNode);
  EXPECT_TRUE(tree.Roots().empty());
}

// A(a1, a2(a2x)), B(b1), C(c1): removal under A renumbers B, b1, C and c1.
struct ThreeFolders {
  ThreeFolders() {
    a = tree.Add(kNoNode, "A", "A", "closed");
    a1 = tree.Add(a, "a1", "one", "AcctView");
    a2 = tree.Add(a, "a2", "two", "AcctView");
    tree.Add(a2, "a2x", "deep", "user");
    tree.SetSorted(tree.Add(kNoNode, "B", "B", "closed"), true);
    tree.Add(tree.FindKey("B"), "b1", "one", "AcctView");
    tree.Add(tree.Add(kNoNode, "C", "C", "Search"), "c1", "three", "AcctView");
  }
  TreeView tree{"tvwViews"};
  NodeId a, a1, a2;
};

TEST(TreeViewTest, RemoveChildrenRenumbersTheRest) {
  ThreeFolders t;
  t.tree.SetSelectedNode(t.tree.FindKey("c1"));
  const auto revision = t.tree.Revision();
  t.tree.RemoveChildren(t.a);
  EXPECT_GT(t.tree.Revision(), revision);
  EXPECT_EQ(t.tree.Count(), 5);
  for (const char* gone : {"a1", "a2", "a2x"}) EXPECT_EQ(t.tree.FindKey(gone), kNoNode) << gone;
  const NodeId b = t.tree.FindKey("B"), b1 = t.tree.FindKey("b1");
  EXPECT_EQ(t.tree.FindText("one"), std::vector<NodeId>{b1});
  EXPECT_EQ(t.tree.Node(b1).parent, b);
  EXPECT_EQ(t.tree.Node(t.tree.FindKey("c1")).parent, t.tree.FindKey("C"));
  EXPECT_EQ(t.tree.SelectedNode(), t.tree.FindKey("c1"));  // the selection follows its node
  // Sorted insertion still works on the renumbered folder.
  const NodeId b0 = t.tree.Add(b, "b0", "alpha", "AcctView");
  EXPECT_EQ(t.tree.Children(b).front(), b0);

  ThreeFolders u;
  u.tree.SetSelectedNode(u.tree.FindKey("a2x"));
  u.tree.RemoveChildren(u.a2);
  EXPECT_EQ(u.tree.SelectedNode(), kNoNode);  // a removed selection is dropped
  EXPECT_EQ(u.tree.Children(u.a).size(), 2u);
  const auto unchanged = u.tree.Revision();
  u.tree.RemoveChildren(u.a1);  // a leaf: nothing to do
  EXPECT_EQ(u.tree.Revision(), unchanged);
  EXPECT_THROW(u.tree.RemoveChildren(42), Error);
}

TEST(SimpleControlsTest, CheckBoxFiresOnChangeOptionFiresEachTime) {
  CheckBox box("chkTotals", "Totals");
  int clicks = 0;
  box.on_click = [&] { ++clicks; };
  box.SetValue(1);
  box.SetValue(1);
  box.UserClick();
  EXPECT_EQ(clicks, 2);
  EXPECT_THROW(box.SetValue(2), Error);
  OptionGroup options("optFilter", {"5. Easy Filter", "Advanced Filter"});
  std::vector<int> fired;
  options.on_click = [&](int i) { fired.push_back(i); };
  options.SetValue(1);
  options.SetValue(1);
  EXPECT_EQ(fired, (std::vector<int>{1, 1}));
  EXPECT_TRUE(options.Value(1) && !options.Value(0));
  EXPECT_THROW(options.SetValue(2), Error);
  CommandButton button("cmdSaveProfile", "Save");
  int pressed = 0;
  button.on_click = [&] { ++pressed; };
  button.SetEnabled(false);
  button.Click();
  EXPECT_EQ(pressed, 0);
}

TEST(HeadlessPrompterTest, ReplaysAnswersAndRecordsUnansweredQuestions) {
  HeadlessPrompter prompter;
  prompter.QueueAnswer(Answer::kNo);
  EXPECT_EQ(prompter.MsgBox("Q1", Buttons::kYesNoCancel, Icon::kQuestion, "T"), Answer::kNo);
  EXPECT_EQ(prompter.MsgBox("Info", Buttons::kOk, Icon::kInformation, "T"), Answer::kOk);
  EXPECT_EQ(prompter.MsgBox("Q2", Buttons::kYesNoCancel, Icon::kQuestion, "T"), Answer::kCancel);
  EXPECT_EQ(prompter.MsgBox("Q3", Buttons::kYesNo, Icon::kQuestion, "T"), Answer::kNo);
  EXPECT_EQ(prompter.InputBox("Name?", "New Profile", "Copy of X"), "");
  EXPECT_EQ(prompter.Unanswered(), 3);
  ASSERT_EQ(prompter.Shown().size(), 5u);
  EXPECT_EQ(prompter.Shown()[0].answer, "No");
  EXPECT_EQ(prompter.Shown()[0].icon, "question");
  EXPECT_FALSE(prompter.Shown()[2].queued);
  EXPECT_EQ(prompter.Shown()[4].default_text, "Copy of X");
}

}  // namespace
}  // namespace cvve::ui
