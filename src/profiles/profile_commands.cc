// PENDING: replaced by the subsystem implementation.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include "profiles/profile_commands.h"

#include "base/error.h"

namespace cvve {

void cmdNewProfile_Click(frmAcctViewEdit& ed) {
  throw Error("cmdNewProfile_Click is not built yet");
}

void cmdCopyProfile_Click(frmAcctViewEdit& ed) {
  throw Error("cmdCopyProfile_Click is not built yet");
}

void cmdEditProfile_Click(frmAcctViewEdit& ed) {
  throw Error("cmdEditProfile_Click is not built yet");
}

void cmdDeleteProfile_Click(frmAcctViewEdit& ed) {
  throw Error("cmdDeleteProfile_Click is not built yet");
}

void cmdSaveProfile_Click(frmAcctViewEdit& ed) {
  throw Error("cmdSaveProfile_Click is not built yet");
}

void cmdSaveProfile_LostFocus(frmAcctViewEdit& ed) {
  throw Error("cmdSaveProfile_LostFocus is not built yet");
}

}  // namespace cvve
