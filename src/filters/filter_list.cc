// PENDING: replaced by the subsystem implementation.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include "filters/filter_list.h"

#include "base/error.h"

namespace cvve {

void SetupFilterColumns(frmAcctViewEdit& ed) {
  throw Error("SetupFilterColumns is not built yet");
}

void LoadFilters(frmAcctViewEdit& ed) {
  throw Error("LoadFilters is not built yet");
}

void ApplyFilterChecks(frmAcctViewEdit& ed) {
  throw Error("ApplyFilterChecks is not built yet");
}

void SetFilterRowColor(frmAcctViewEdit& ed, int row, std::int16_t input_count, std::int32_t color) {
  throw Error("SetFilterRowColor is not built yet");
}

void lstFilters_ItemCheck(frmAcctViewEdit& ed, int row) {
  throw Error("lstFilters_ItemCheck is not built yet");
}

std::optional<std::uint32_t> FilterCellColor(const frmAcctViewEdit& ed, int row, int sub_item) {
  throw Error("FilterCellColor is not built yet");
}

}  // namespace cvve
