#pragma once
// Putting one profile into the editor's controls.
#include <string>

namespace cvve {

class frmAcctViewEdit;

// Loads the named profile. Never throws. No base record shows "An error was
// encounted loading this profile. ..." and stops; a failure up to reading the
// data set, or while the used columns are listed, shows "There was an error
// loading this profile:" and stops, leaving the controls as far as they were
// filled and ProfileChanged as it was. Any other failing step is skipped.
void LoadProfile(frmAcctViewEdit& ed, const std::string& name);
// Enables what only a user profile (kind 2) may change, keeps the tabs and
// column lists usable, and re-runs the click of the set filter option when
// editable. Throws what that click throws.
void EnableProfileControls(frmAcctViewEdit& ed, int kind);

}  // namespace cvve
