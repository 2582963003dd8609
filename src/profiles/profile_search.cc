#include "profiles/profile_search.h"

#include <unordered_set>
#include <vector>

#include "base/text.h"
#include "component/frm_acct_view_edit.h"

namespace cvve {

namespace {

// Profile nodes carry their kind ("0", "1" or "2") as tag; folders, per-user
// entries and earlier results do not count.
bool IsProfileNode(const ui::TreeNode& node) {
  if (StartsWith(node.key, "ROOT") || StartsWith(node.key, kSearchKeyPrefix)) return false;
  return node.tag == "0" || node.tag == "1" || node.tag == "2";
}

}  // namespace

int FillSearchResults(frmAcctViewEdit& ed, const std::string& text) {
  ui::TreeView& tree = ed.tvwViews;
  ui::NodeId folder = tree.FindKey(kSearchFolderKey);
  if (folder == ui::kNoNode) return 0;
  tree.RemoveChildren(folder);
  folder = tree.FindKey(kSearchFolderKey);
  if (text.empty()) return 0;

  const std::string wanted = FoldCase(text);
  std::vector<ui::NodeId> matches;
  std::unordered_set<std::string> seen;
  for (ui::NodeId id : tree.DisplayOrder()) {
    const ui::TreeNode& node = tree.Node(id);
    if (!IsProfileNode(node) || !Contains(FoldCase(node.text), wanted)) continue;
    if (seen.insert(node.text).second) matches.push_back(id);
  }
  for (ui::NodeId id : matches) {
    // Copies, since Add may move the node storage.
    const std::string name = tree.Node(id).text;
    const std::string tag = tree.Node(id).tag;
    ui::NodeId result = tree.Add(folder, kSearchKeyPrefix + name, name, "AcctView");
    tree.SetTag(result, tag);
  }
  if (!matches.empty()) tree.SetExpanded(folder, true);
  return static_cast<int>(matches.size());
}

}  // namespace cvve
