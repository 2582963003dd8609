#pragma once
// Putting one profile into the editor's controls.
#include <string>

namespace cvve {

class frmAcctViewEdit;

// Loads the named profile; failures are shown to the user.
void LoadProfile(frmAcctViewEdit& ed, const std::string& name);
// Enables what only a user profile (kind 2) may change.
void EnableProfileControls(frmAcctViewEdit& ed, int kind);

}  // namespace cvve
