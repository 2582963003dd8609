// PENDING: replaced by the subsystem implementation.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include "profiles/profile_loader.h"

#include "base/error.h"

namespace cvve {

void LoadProfile(frmAcctViewEdit& ed, const std::string& name) {
  throw Error("LoadProfile is not built yet");
}

void EnableProfileControls(frmAcctViewEdit& ed, int kind) {
  throw Error("EnableProfileControls is not built yet");
}

}  // namespace cvve
