// PENDING: replaced by the subsystem implementation.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include "reports/export_preview.h"

#include "base/error.h"

namespace cvve {

void cmdExport_Click(frmAcctViewEdit& ed) {
  throw Error("cmdExport_Click is not built yet");
}

void cmdPreviewReport_Click(frmAcctViewEdit& ed) {
  throw Error("cmdPreviewReport_Click is not built yet");
}

}  // namespace cvve
