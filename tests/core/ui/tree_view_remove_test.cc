// TreeView::RemoveChildren: a subtree goes, every id and index is renumbered.
#include <gtest/gtest.h>

#include "base/error.h"
#include "ui/tree_view.h"

namespace cvve::ui {
namespace {

// A(a1, a2(a2x)), B(b1), C(c1): removal under A shifts B, b1, C and c1 down.
struct Tree {
  Tree() {
    a = tree.Add(kNoNode, "A", "A", "closed");
    a1 = tree.Add(a, "a1", "one", "AcctView");
    a2 = tree.Add(a, "a2", "two", "AcctView");
    tree.Add(a2, "a2x", "deep", "user");
    b = tree.Add(kNoNode, "B", "B", "closed");
    tree.SetSorted(b, true);
    tree.Add(b, "b1", "one", "AcctView");
    c = tree.Add(kNoNode, "C", "C", "Search");
    tree.Add(c, "c1", "three", "AcctView");
  }
  TreeView tree{"tvwViews"};
  NodeId a, a1, a2, b, c;
};

TEST(TreeViewRemoveChildrenTest, RemovesTheSubtreeAndRenumbersTheRest) {
  Tree t;
  const auto revision = t.tree.Revision();
  t.tree.RemoveChildren(t.a);
  EXPECT_GT(t.tree.Revision(), revision);
  EXPECT_EQ(t.tree.Count(), 5);
  EXPECT_TRUE(t.tree.Children(t.a).empty());
  for (const char* gone : {"a1", "a2", "a2x"}) EXPECT_EQ(t.tree.FindKey(gone), kNoNode) << gone;
  EXPECT_TRUE(t.tree.FindText("two").empty());
  // "one" is still the text of b1, now with a lower id.
  ASSERT_EQ(t.tree.FindText("one").size(), 1u);
  const NodeId b1 = t.tree.FindKey("b1");
  EXPECT_EQ(t.tree.FindText("one").front(), b1);
  EXPECT_EQ(t.tree.Node(b1).parent, t.tree.FindKey("B"));
  EXPECT_EQ(t.tree.Children(t.tree.FindKey("B")), std::vector<NodeId>{b1});
  EXPECT_EQ(t.tree.Node(t.tree.FindKey("c1")).parent, t.tree.FindKey("C"));
  EXPECT_EQ(t.tree.Roots().size(), 3u);
  EXPECT_TRUE(t.tree.Node(t.tree.FindKey("B")).sorted);
  // The tree goes on working: new nodes, sorted insertion, lookups.
  const NodeId b0 = t.tree.Add(t.tree.FindKey("B"), "b0", "alpha", "AcctView");
  EXPECT_EQ(t.tree.Children(t.tree.FindKey("B")).front(), b0);
  EXPECT_EQ(t.tree.DisplayOrder().size(), 6u);
}

TEST(TreeViewRemoveChildrenTest, SelectionFollowsItsNodeOrIsDropped) {
  Tree t;
  t.tree.SetSelectedNode(t.tree.FindKey("c1"));
  t.tree.RemoveChildren(t.a);
  EXPECT_EQ(t.tree.SelectedNode(), t.tree.FindKey("c1"));

  Tree u;
  u.tree.SetSelectedNode(u.tree.FindKey("a2x"));
  u.tree.RemoveChildren(u.a2);
  EXPECT_EQ(u.tree.SelectedNode(), kNoNode);
  EXPECT_EQ(u.tree.Children(u.a).size(), 2u);  // a2 itself stays
}

TEST(TreeViewRemoveChildrenTest, ALeafLosesNothingAndAMissingParentThrows) {
  Tree t;
  const auto revision = t.tree.Revision();
  t.tree.RemoveChildren(t.a1);
  EXPECT_EQ(t.tree.Count(), 8);
  EXPECT_EQ(t.tree.Revision(), revision);
  EXPECT_THROW(t.tree.RemoveChildren(42), Error);
  EXPECT_THROW(t.tree.RemoveChildren(kNoNode), Error);
}

}  // namespace
}  // namespace cvve::ui
