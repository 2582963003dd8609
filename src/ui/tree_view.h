#pragma once
// A tree of nodes, each with a unique key, a text, an image (and one for the
// expanded state), a tag, bold and expanded flags; a node may keep its
// children sorted by text. Nodes are found by key in constant time and by
// text through an index, so building a tree of many profiles stays linear.
#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "ui/control.h"

namespace cvve::ui {

using NodeId = int;
inline constexpr NodeId kNoNode = -1;

struct TreeNode {
  std::string key;
  std::string text;
  std::string image;
  std::string expanded_image;
  std::string tag;
  bool bold = false;
  bool sorted = false;  // children kept in alphabetical order
  bool expanded = false;
  NodeId parent = kNoNode;
};

class TreeView : public Control {
 public:
  using Control::Control;

  void Clear();
  // Adds a node under `parent` (kNoNode: top level). An empty key means none;
  // a key already in use throws cvve::Error and adds nothing, as does a
  // parent that does not exist.
  NodeId Add(NodeId parent, std::string key, std::string text, std::string image,
             std::string expanded_image = {});
  int Count() const { return static_cast<int>(nodes_.size()); }
  bool Exists(NodeId id) const { return id >= 0 && id < Count(); }
  // Throws cvve::Error for a node that does not exist.
  const TreeNode& Node(NodeId id) const;
  NodeId FindKey(const std::string& key) const;  // kNoNode when none
  // Every node with that text, in the order they were added.
  const std::vector<NodeId>& FindText(const std::string& text) const;
  // Children in display order (sorted when the parent is sorted).
  const std::vector<NodeId>& Children(NodeId parent) const;
  const std::vector<NodeId>& Roots() const { return Children(kNoNode); }
  // Every node in display order, depth first.
  std::vector<NodeId> DisplayOrder() const;

  void SetTag(NodeId id, std::string tag);
  void SetKey(NodeId id, std::string key);
  void SetBold(NodeId id, bool bold);
  void SetSorted(NodeId id, bool sorted);
  void SetExpanded(NodeId id, bool expanded);
  // Expands every ancestor so the node can be seen.
  void EnsureVisible(NodeId id);
  // Removes every descendant of `parent` (which stays). The ids of the nodes
  // added after a removed one shift down; a removed selected node leaves no
  // selection. Throws cvve::Error for a parent that does not exist.
  void RemoveChildren(NodeId parent);

  NodeId SelectedNode() const { return selected_; }
  // Moves with every change but a change of selection: a view that shows
  // the nodes can skip them when only the selection moved.
  std::uint64_t NodesRevision() const { return Revision() - selection_moves_; }
  // Selection by code fires nothing; a user's click goes through UserSelect.
  void SetSelectedNode(NodeId id);
  // A user's click: selects the node and fires on_node_click.
  void UserSelect(NodeId id);
  std::function<void(NodeId)> on_node_click;

 private:
  TreeNode& Mutable(NodeId id);
  void SortIfNeeded(NodeId parent) const;
  std::vector<TreeNode> nodes_;
  std::unordered_map<std::string, NodeId> by_key_;
  std::unordered_map<std::string, std::vector<NodeId>> by_text_;
  mutable std::vector<std::vector<NodeId>> children_;  // index parent+1
  mutable std::vector<bool> unsorted_;                 // index parent+1
  NodeId selected_ = kNoNode;
  std::uint64_t selection_moves_ = 0;
};

}  // namespace cvve::ui
