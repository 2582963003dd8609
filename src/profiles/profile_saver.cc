// PENDING: replaced by the subsystem implementation.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include "profiles/profile_saver.h"

#include "base/error.h"

namespace cvve {

void SaveProfile(frmAcctViewEdit& ed) {
  throw Error("SaveProfile is not built yet");
}

void SaveFilterChecks(frmAcctViewEdit& ed) {
  throw Error("SaveFilterChecks is not built yet");
}

void SaveProfileSource(frmAcctViewEdit& ed) {
  throw Error("SaveProfileSource is not built yet");
}

}  // namespace cvve
