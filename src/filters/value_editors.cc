// PENDING: replaced by the subsystem implementation.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include "filters/value_editors.h"

#include "base/error.h"

namespace cvve {

void lstFilters_MouseDown(frmAcctViewEdit& ed, int button, int shift, float x, float y) {
  throw Error("lstFilters_MouseDown is not built yet");
}

void txtDataLV_Change(frmAcctViewEdit& ed, int which) {
  throw Error("txtDataLV_Change is not built yet");
}

void txtDataLV_Click(frmAcctViewEdit& ed, int which) {
  throw Error("txtDataLV_Click is not built yet");
}

int txtDataLV_KeyPress(frmAcctViewEdit& ed, int which, int key_ascii) {
  throw Error("txtDataLV_KeyPress is not built yet");
}

void txtDataLV_KeyDown(frmAcctViewEdit& ed, int which, int key_code) {
  throw Error("txtDataLV_KeyDown is not built yet");
}

void txtDataLV_LostFocus(frmAcctViewEdit& ed, int which) {
  throw Error("txtDataLV_LostFocus is not built yet");
}

}  // namespace cvve
