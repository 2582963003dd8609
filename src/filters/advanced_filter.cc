// PENDING: replaced by the subsystem implementation.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include "filters/advanced_filter.h"

#include "base/error.h"

namespace cvve {

void optFilter_Click(frmAcctViewEdit& ed, int index) {
  throw Error("optFilter_Click is not built yet");
}

void cmdAdvancedFilter_Click(frmAcctViewEdit& ed) {
  throw Error("cmdAdvancedFilter_Click is not built yet");
}

}  // namespace cvve
