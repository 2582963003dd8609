#pragma once
// The easy-filter list: rows from the data set's filter definitions, the
// profile's saved checks and values, and the colours of the editable cells.
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ui/list_view.h"
#include "viewfiles/document_cursor.h"

namespace cvve {

class frmAcctViewEdit;

// What a data set's filters give the list before any profile's entries are
// applied (rows, labels, defaults and cell colours), kept per data set of
// the loaded setup file: a profile switch then copies the rows instead of
// reading and splitting every definition again. The editor never changes
// the setup file's records in place; a reloaded file is seen by its
// generation.
class FilterRowTemplates {
 public:
  struct Template {
    XmlNode data_set;          // the first DataSet of the name, empty when none
    bool has_filters = false;  // whether that data set has a Filters element
    std::vector<ui::ListItem> rows;
    // Each row's cell colour and input count; no colour for a row whose
    // colour step failed (the arrays keep what they held).
    std::vector<std::optional<std::pair<std::int32_t, std::int16_t>>> colors;
  };
  // The data set's template, or nullptr when it is not built yet.
  const Template* Find(const DocumentCursor& setup, const std::string& data_set);
  Template& Store(const DocumentCursor& setup, const std::string& data_set, Template t);
  void Clear() { by_data_set_.clear(); }

 private:
  // Forgets the templates when `setup` is another file or was loaded again.
  void Follow(const DocumentCursor& setup);

  DocumentStamp setup_;
  std::map<std::string, Template, std::less<>> by_data_set_;
};

// Sets up lstFilters' five columns (keys "", Param1, Data1, Param2, Data2);
// done once when the editor loads.
void SetupFilterColumns(frmAcctViewEdit& ed);
// Rebuilds lstFilters for the data set named in cmbDataSet, then applies the
// current profile's FilterChecks. Never throws: each step that fails is
// skipped. A data set whose Filters element is missing shows the "reinstall"
// message once per LoadFiles; an unknown data set gives an empty list quietly.
void LoadFilters(frmAcctViewEdit& ed);
// Whether LoadFilters for the data set in cmbDataSet would only copy a kept
// template: nothing read from the files, no message shown.
bool FilterFillIsQuiet(frmAcctViewEdit& ed);
// The same for the data set called `data_set`.
bool FilterFillIsQuiet(frmAcctViewEdit& ed, const std::string& data_set);
// The rows LoadFilters leaves checked when it fills the list from the kept
// template `t` for a profile record whose first FilterChecks element is
// `checks` (empty when it has none), in list order, with the Data values it
// gives them; the rows it leaves unchecked are left out. `out` is reused, so
// that its texts' storage serves again.
void CheckedFilterRows(const FilterRowTemplates::Template& t,
                       const std::vector<ui::ListColumn>& columns, XmlNode checks,
                       std::vector<ui::ListItem>& out);
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
