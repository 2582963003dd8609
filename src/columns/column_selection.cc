// PENDING: replaced by the subsystem implementation.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include "columns/column_selection.h"

#include "base/error.h"

namespace cvve {

void cmdAddForm_Click(frmAcctViewEdit& ed) {
  throw Error("cmdAddForm_Click is not built yet");
}

void cmdRemoveForm_Click(frmAcctViewEdit& ed) {
  throw Error("cmdRemoveForm_Click is not built yet");
}

void cmdRemoveAll_Click(frmAcctViewEdit& ed) {
  throw Error("cmdRemoveAll_Click is not built yet");
}

void cmdMove_Click(frmAcctViewEdit& ed, int index) {
  throw Error("cmdMove_Click is not built yet");
}

void cmbDataSet_Click(frmAcctViewEdit& ed) {
  throw Error("cmbDataSet_Click is not built yet");
}

void MarkProfileChanged(frmAcctViewEdit& ed) {
  throw Error("MarkProfileChanged is not built yet");
}

}  // namespace cvve
