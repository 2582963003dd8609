#pragma once
// The easy-filter list: rows from the data set's filter definitions, the
// profile's saved checks and values, and the colours of the editable cells.
#include <cstdint>
#include <optional>

namespace cvve {

class frmAcctViewEdit;

// Sets up lstFilters' five columns (keys "", Param1, Data1, Param2, Data2);
// done once when the editor loads.
void SetupFilterColumns(frmAcctViewEdit& ed);
// Rebuilds lstFilters for the data set named in cmbDataSet, then applies the
// current profile's FilterChecks. Never throws: each step that fails is
// skipped. A data set whose Filters element is missing shows the "reinstall"
// message once per LoadFiles; an unknown data set gives an empty list quietly.
void LoadFilters(frmAcctViewEdit& ed);
// Re-applies the current profile's FilterChecks (checks and Data values) to
// the rows already there. Does nothing without a current profile record. A
// row with neither a saved value nor a default keeps what it showed.
void ApplyFilterChecks(frmAcctViewEdit& ed);
// 1-based row; a row outside FilterRowColor throws cvve::Error.
void SetFilterRowColor(frmAcctViewEdit& ed, int row, std::int16_t input_count, std::int32_t color);
// The user's click on a row's check box: marks the profile changed and
// selects the row.
void lstFilters_ItemCheck(frmAcctViewEdit& ed, int row);
// The background of a cell (0-based row and sub-item) as the painter shows
// it; nothing means black on white, which is also the answer for a row the
// colour arrays do not hold.
std::optional<std::uint32_t> FilterCellColor(const frmAcctViewEdit& ed, int row, int sub_item);

}  // namespace cvve
