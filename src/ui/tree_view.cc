#include "ui/tree_view.h"

#include <algorithm>
#include <cctype>

#include "base/error.h"
#include "base/text.h"

namespace cvve::ui {

namespace {
const std::vector<NodeId> kNone;
}

void TreeView::Clear() {
  nodes_.clear();
  by_key_.clear();
  by_text_.clear();
  children_.assign(1, {});
  unsorted_.assign(1, false);
  selected_ = kNoNode;
  Touch();
}

NodeId TreeView::Add(NodeId parent, std::string key, std::string text, std::string image,
                     std::string expanded_image) {
  if (parent != kNoNode && !Exists(parent)) throw Error("Element not found");
  if (!key.empty() && by_key_.count(key)) throw Error("Key is not unique in collection");
  if (children_.empty()) {
    children_.assign(1, {});
    unsorted_.assign(1, false);
  }
  NodeId id = Count();
  TreeNode node;
  node.key = std::move(key);
  node.text = std::move(text);
  node.image = std::move(image);
  node.expanded_image = std::move(expanded_image);
  node.parent = parent;
  if (!node.key.empty()) by_key_[node.key] = id;
  by_text_[node.text].push_back(id);
  nodes_.push_back(std::move(node));
  children_.emplace_back();
  unsorted_.push_back(false);
  children_[static_cast<std::size_t>(parent + 1)].push_back(id);
  unsorted_[static_cast<std::size_t>(parent + 1)] = true;
  Touch();
  return id;
}

const TreeNode& TreeView::Node(NodeId id) const {
  if (!Exists(id)) throw Error("Element not found");
  return nodes_[static_cast<std::size_t>(id)];
}

TreeNode& TreeView::Mutable(NodeId id) {
  if (!Exists(id)) throw Error("Element not found");
  Touch();
  return nodes_[static_cast<std::size_t>(id)];
}

NodeId TreeView::FindKey(const std::string& key) const {
  auto it = by_key_.find(key);
  return it == by_key_.end() ? kNoNode : it->second;
}

const std::vector<NodeId>& TreeView::FindText(const std::string& text) const {
  auto it = by_text_.find(text);
  return it == by_text_.end() ? kNone : it->second;
}

void TreeView::SortIfNeeded(NodeId parent) const {
  auto slot = static_cast<std::size_t>(parent + 1);
  if (!unsorted_[slot]) return;
  unsorted_[slot] = false;
  bool sorted = parent == kNoNode ? false : nodes_[static_cast<std::size_t>(parent)].sorted;
  if (!sorted) return;
  auto& kids = children_[slot];
  // Alphabetical without regard to letter case, ties in the order added:
  // the order of the lower-cased texts, compared without making them.
  auto lower = [](char c) {
    return static_cast<unsigned char>(std::tolower(static_cast<unsigned char>(c)));
  };
  std::stable_sort(kids.begin(), kids.end(), [this, &lower](NodeId a, NodeId b) {
    const std::string& x = nodes_[static_cast<std::size_t>(a)].text;
    const std::string& y = nodes_[static_cast<std::size_t>(b)].text;
    return std::lexicographical_compare(x.begin(), x.end(), y.begin(), y.end(),
                                        [&lower](char c, char d) { return lower(c) < lower(d); });
  });
}

const std::vector<NodeId>& TreeView::Children(NodeId parent) const {
  if (children_.empty() || (parent != kNoNode && !Exists(parent))) return kNone;
  SortIfNeeded(parent);
  return children_[static_cast<std::size_t>(parent + 1)];
}

std::vector<NodeId> TreeView::DisplayOrder() const {
  std::vector<NodeId> out;
  out.reserve(nodes_.size());
  std::vector<NodeId> stack(Roots().rbegin(), Roots().rend());
  while (!stack.empty()) {
    NodeId id = stack.back();
    stack.pop_back();
    out.push_back(id);
    const auto& kids = Children(id);
    stack.insert(stack.end(), kids.rbegin(), kids.rend());
  }
  return out;
}

void TreeView::SetTag(NodeId id, std::string tag) { Mutable(id).tag = std::move(tag); }

void TreeView::SetKey(NodeId id, std::string key) {
  if (!key.empty()) {
    auto it = by_key_.find(key);
    if (it != by_key_.end() && it->second != id) throw Error("Key is not unique in collection");
  }
  TreeNode& node = Mutable(id);
  if (!node.key.empty()) by_key_.erase(node.key);
  node.key = std::move(key);
  if (!node.key.empty()) by_key_[node.key] = id;
}

void TreeView::SetBold(NodeId id, bool bold) { Mutable(id).bold = bold; }

void TreeView::SetSorted(NodeId id, bool sorted) {
  Mutable(id).sorted = sorted;
  unsorted_[static_cast<std::size_t>(id + 1)] = true;
}

void TreeView::SetExpanded(NodeId id, bool expanded) { Mutable(id).expanded = expanded; }

void TreeView::EnsureVisible(NodeId id) {
  for (NodeId p = Node(id).parent; p != kNoNode; p = Node(p).parent) SetExpanded(p, true);
}

void TreeView::RemoveChildren(NodeId parent) {
  if (!Exists(parent)) throw Error("Element not found");
  std::vector<bool> removed(nodes_.size(), false);
  std::vector<NodeId> stack(Children(parent).begin(), Children(parent).end());
  if (stack.empty()) return;
  while (!stack.empty()) {
    NodeId id = stack.back();
    stack.pop_back();
    removed[static_cast<std::size_t>(id)] = true;
    const auto& kids = children_[static_cast<std::size_t>(id + 1)];
    stack.insert(stack.end(), kids.begin(), kids.end());
  }
  // Compact the nodes and renumber every reference to them.
  std::vector<NodeId> remap(nodes_.size(), kNoNode);
  std::vector<TreeNode> kept;
  for (std::size_t i = 0; i < nodes_.size(); ++i) {
    if (removed[i]) continue;
    remap[i] = static_cast<NodeId>(kept.size());
    kept.push_back(std::move(nodes_[i]));
  }
  auto renumber = [&remap](NodeId id) {
    return id == kNoNode ? kNoNode : remap[static_cast<std::size_t>(id)];
  };
  std::vector<std::vector<NodeId>> kids(kept.size() + 1);
  std::vector<bool> unsorted(kept.size() + 1, false);
  for (std::size_t slot = 0; slot < children_.size(); ++slot) {
    NodeId owner = static_cast<NodeId>(slot) - 1;
    if (owner != kNoNode && removed[static_cast<std::size_t>(owner)]) continue;
    auto new_slot = static_cast<std::size_t>(renumber(owner) + 1);
    for (NodeId child : children_[slot]) {
      if (!removed[static_cast<std::size_t>(child)]) kids[new_slot].push_back(renumber(child));
    }
    unsorted[new_slot] = unsorted_[slot];
  }
  nodes_ = std::move(kept);
  children_ = std::move(kids);
  unsorted_ = std::move(unsorted);
  by_key_.clear();
  by_text_.clear();
  for (std::size_t i = 0; i < nodes_.size(); ++i) {
    TreeNode& node = nodes_[i];
    node.parent = renumber(node.parent);
    if (!node.key.empty()) by_key_[node.key] = static_cast<NodeId>(i);
    by_text_[node.text].push_back(static_cast<NodeId>(i));
  }
  selected_ = renumber(selected_);
  Touch();
}

void TreeView::SetSelectedNode(NodeId id) {
  if (id != kNoNode && !Exists(id)) throw Error("Element not found");
  selected_ = id;
  ++selection_moves_;
  Touch();
}

void TreeView::UserSelect(NodeId id) {
  SetSelectedNode(id);
  if (on_node_click) on_node_click(id);
}

}  // namespace cvve::ui
