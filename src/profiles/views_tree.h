#pragma once
// The tree of folders, profiles, per-user entries and report files.
#include <string>

#include "ui/tree_view.h"

namespace cvve {

class frmAcctViewEdit;

// Rebuilds tvwViews and cmbAcctViewType, then selects the node whose text is
// `sSelectName` (else the first profile of folder ROOT0) and runs the node
// selection on it. Failures show "Error opening account views file. ..."
void LoadViewsTree(frmAcctViewEdit& ed, const std::string& sSelectName);
// The kind of a profile name: 0 system, 1 customised system, 2 user; the tag
// of the first tree node with that text (-1 when no node has it).
int ProfileKind(frmAcctViewEdit& ed, const std::string& name);
// The node selection: the save question, then loading the node's profile or
// report. kNoNode disables the profile controls.
void tvwViews_NodeClick(frmAcctViewEdit& ed, ui::NodeId node);
// Disables the controls that edit a profile (no node chosen).
void DisableProfileEditing(frmAcctViewEdit& ed);

}  // namespace cvve
