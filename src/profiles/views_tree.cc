// PENDING: replaced by the subsystem implementation.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include "profiles/views_tree.h"

#include "base/error.h"

namespace cvve {

void LoadViewsTree(frmAcctViewEdit& ed, const std::string& sSelectName) {
  throw Error("LoadViewsTree is not built yet");
}

int ProfileKind(frmAcctViewEdit& ed, const std::string& name) {
  throw Error("ProfileKind is not built yet");
}

void tvwViews_NodeClick(frmAcctViewEdit& ed, ui::NodeId node) {
  throw Error("tvwViews_NodeClick is not built yet");
}

void DisableProfileEditing(frmAcctViewEdit& ed) {
  throw Error("DisableProfileEditing is not built yet");
}

}  // namespace cvve
