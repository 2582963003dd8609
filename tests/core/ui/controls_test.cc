// The control models: what the editor tests cannot see through the editor.
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

TEST(ControlsTest, CodeChangesFireClickOnlyWhenTheValueMoves) {
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
  EXPECT_THROW(combo.SetText("Vehicles"), Error);  // not listed: nothing changes
  EXPECT_EQ(combo.Text(), "Deals");
  EXPECT_THROW(combo.SetListIndex(2), Error);
  combo.Clear();
  EXPECT_EQ(combo.ListIndex(), -1);
  ComboBox editable("txtData1LV", ComboBox::Style::kEditable);
  editable.AddItem("<$START_DATE>");
  editable.SetText("45");  // free text: no entry selected
  EXPECT_EQ(editable.ListIndex(), -1);

  CheckBox box("chkTotals", "Totals");
  box.on_click = [&] { ++clicks; };
  box.SetValue(1);
  box.SetValue(1);
  box.UserClick();
  EXPECT_EQ(clicks, 4);
  EXPECT_THROW(box.SetValue(2), Error);
  OptionGroup options("optFilter", {"5. Easy Filter", "Advanced Filter"});
  options.on_click = [&](int i) { clicks += 10 * i; };
  options.SetValue(1);
  options.SetValue(1);  // an option button fires each time
  EXPECT_EQ(clicks, 24);
  EXPECT_THROW(options.SetValue(2), Error);
  CommandButton button("cmdSaveProfile", "Save");
  button.on_click = [&] { ++clicks; };
  button.SetEnabled(false);
  button.Click();
  EXPECT_EQ(clicks, 24);
}

TEST(ControlsTest, ListsKeepSelectionAndUniqueKeys) {
  ListBox list("lstUsedColumns");
  for (const char* t : {"a", "b", "c", "b"}) list.AddItem(t);
  list.SetListIndex(2);
  list.RemoveItem(0);
  EXPECT_EQ(list.ListIndex(), 1);  // still on "c"
  list.RemoveItem(1);
  EXPECT_EQ(list.ListIndex(), -1);
  EXPECT_EQ(list.FindAll("b"), (std::vector<int>{0, 1}));
  EXPECT_THROW(list.RemoveItem(5), Error);

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
  EXPECT_EQ(view.SubItem(3, 1) + view.SubItem(3, 0), "45Late");
  EXPECT_THROW(view.SubItem(3, 2), Error);
  EXPECT_EQ(view.ColumnPosition("Data1"), 2);
  EXPECT_EQ(view.ColumnPosition("Data2"), 0);
  int fired = 0;
  view.on_item_check = [&](int row) { fired += row; };
  view.SetChecked(2, true);  // by code: no event
  view.UserCheck(2, false);
  EXPECT_EQ(fired, 2);
  EXPECT_FALSE(view.Item(2).checked);
}

TEST(ControlsTest, TreeRemoveChildrenRenumbersTheRest) {
  TreeView tree("tvwViews");
  const NodeId a = tree.Add(kNoNode, "A", "A", "closed");
  const NodeId a1 = tree.Add(a, "a1", "one", "AcctView");
  const NodeId a2 = tree.Add(a, "a2", "two", "AcctView");
  tree.Add(a2, "", "deep", "user");
  tree.Add(a2, "", "deep", "user");  // empty keys may repeat
  EXPECT_THROW(tree.Add(a, "a1", "again", "AcctView"), Error);
  EXPECT_THROW(tree.Add(99, "x", "x", "x"), Error);
  tree.SetSorted(tree.Add(kNoNode, "B", "B", "closed"), true);
  tree.Add(tree.FindKey("B"), "b1", "one", "AcctView");
  tree.Add(tree.Add(kNoNode, "C", "C", "Search"), "c1", "three", "AcctView");
  tree.SetSelectedNode(tree.FindKey("c1"));
  const auto revision = tree.Revision();
  tree.RemoveChildren(a1);  // a leaf: nothing to do
  EXPECT_EQ(tree.Revision(), revision);
  tree.RemoveChildren(a);
  EXPECT_GT(tree.Revision(), revision);
  EXPECT_EQ(tree.Count(), 5);
  EXPECT_EQ(tree.FindKey("a2"), kNoNode);
  const NodeId b = tree.FindKey("B"), b1 = tree.FindKey("b1");
  EXPECT_EQ(tree.FindText("one"), std::vector<NodeId>{b1});
  EXPECT_EQ(tree.Node(b1).parent, b);
  EXPECT_EQ(tree.Node(tree.FindKey("c1")).parent, tree.FindKey("C"));
  EXPECT_EQ(tree.SelectedNode(), tree.FindKey("c1"));  // the selection follows its node
  tree.Add(b, "b0", "alpha", "AcctView");
  tree.Add(b, "b2", "Beta", "AcctView");
  std::vector<std::string> texts;
  for (NodeId id : tree.Children(b)) texts.push_back(tree.Node(id).text);
  EXPECT_EQ(texts, (std::vector<std::string>{"alpha", "Beta", "one"}));  // sorted, any case
  int clicks = 0;
  tree.on_node_click = [&](NodeId) { ++clicks; };
  tree.SetSelectedNode(b1);  // by code: no event
  tree.UserSelect(b1);
  EXPECT_EQ(clicks, 1);
  tree.RemoveChildren(b);
  EXPECT_EQ(tree.SelectedNode(), kNoNode);  // a removed selection is dropped
  EXPECT_THROW(tree.RemoveChildren(42), Error);
}

TEST(ControlsTest, HeadlessPrompterReplaysAnswersAndCountsUnansweredQuestions) {
  HeadlessPrompter prompter;
  prompter.QueueAnswer(Answer::kNo);
  EXPECT_EQ(prompter.MsgBox("Q1", Buttons::kYesNoCancel, Icon::kQuestion, "T"), Answer::kNo);
  EXPECT_EQ(prompter.MsgBox("Info", Buttons::kOk, Icon::kInformation, "T"), Answer::kOk);
  EXPECT_EQ(prompter.MsgBox("Q2", Buttons::kYesNoCancel, Icon::kQuestion, "T"), Answer::kCancel);
  EXPECT_EQ(prompter.MsgBox("Q3", Buttons::kYesNo, Icon::kQuestion, "T"), Answer::kNo);
  EXPECT_EQ(prompter.InputBox("Name?", "New Profile", "Copy of X"), "");
  EXPECT_EQ(prompter.Unanswered(), 3);
  ASSERT_EQ(prompter.Shown().size(), 5u);
  EXPECT_EQ(prompter.Shown()[0].answer + "|" + prompter.Shown()[0].icon, "No|question");
  EXPECT_FALSE(prompter.Shown()[2].queued);
  EXPECT_EQ(prompter.Shown()[4].default_text, "Copy of X");
}

}  // namespace
}  // namespace cvve::ui
