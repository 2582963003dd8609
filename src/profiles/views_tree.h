#pragma once
// The tree of folders, profiles, per-user entries and report files.
#include <string>

#include "ui/tree_view.h"

namespace cvve {

class frmAcctViewEdit;

// Rebuilds tvwViews and cmbAcctViewType, then selects the node whose text is
// `sSelectName` (else the first profile of folder ROOT0) and runs the node
// selection on it. Never throws. A failure while building folders, default
// profiles or report files shows "Error opening account views file. ..."
// (once per build); the build then goes on with the next pass and the
// selection. A failing step of the views-file pass is skipped quietly.
void LoadViewsTree(frmAcctViewEdit& ed, const std::string& sSelectName);
// The kind of a profile name: the tag of the first tree node with that text
// as a number (0 system, 1 customised system, 2 user; a tag that is no
// number gives 0); -1 when no node has that text. In report mode every
// report is a user profile (2): its tag is its file path.
int ProfileKind(frmAcctViewEdit& ed, const std::string& name);
// The node selection: the save question, then loading the node's profile or
// report. kNoNode disables the profile controls. Never throws: a failure
// (of the save, or of loading a report file) shows "Error loading account
// view:" and loads nothing more.
void tvwViews_NodeClick(frmAcctViewEdit& ed, ui::NodeId node);
// Disables the controls that edit a profile (no node chosen).
void DisableProfileEditing(frmAcctViewEdit& ed);

// Keys of the per-user entries under a profile: unique in the tree, never
// beginning with "ROOT", and telling profile and user apart whatever
// characters their names hold.
std::string UserEntryKey(const std::string& profile, const std::string& user);
std::string SystemEntryKey(const std::string& profile);

}  // namespace cvve
