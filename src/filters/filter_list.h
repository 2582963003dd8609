#pragma once
// The easy-filter list: rows from the data set's filter definitions, the
// profile's saved checks and values, and the colours of the editable cells.
#include <cstdint>
#include <optional>

namespace cvve {

class frmAcctViewEdit;

// Sets up lstFilters' five keyed columns (done once when the editor loads).
void SetupFilterColumns(frmAcctViewEdit& ed);
void LoadFilters(frmAcctViewEdit& ed);
void ApplyFilterChecks(frmAcctViewEdit& ed);
// 1-based row; a row outside the arrays throws cvve::Error.
void SetFilterRowColor(frmAcctViewEdit& ed, int row, std::int16_t input_count,
                       std::int32_t color);
// The user's click on a row's check box.
void lstFilters_ItemCheck(frmAcctViewEdit& ed, int row);
// The background of a cell (0-based row and sub-item) as the painter shows
// it; nothing means black on white.
std::optional<std::uint32_t> FilterCellColor(const frmAcctViewEdit& ed, int row, int sub_item);

}  // namespace cvve
