// PENDING: replaced by the subsystem implementation.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include "variables/variable_commands.h"

#include "base/error.h"

namespace cvve {

void chkStartEnd_Click(frmAcctViewEdit& ed) {
  throw Error("chkStartEnd_Click is not built yet");
}

void cmdEditVariables_Click(frmAcctViewEdit& ed) {
  throw Error("cmdEditVariables_Click is not built yet");
}

void FillVariableChoices(frmAcctViewEdit& ed) {
  throw Error("FillVariableChoices is not built yet");
}

}  // namespace cvve
