#include "columns/column_selection.h"

#include <string>
#include <utility>

#include "base/error.h"
#include "component/frm_acct_view_edit.h"
#include "filters/filter_list.h"
#include "viewfiles/setup_file.h"

namespace cvve {

namespace {

// Refills one sort drop-down with the used columns and puts its text back.
// A text that is no longer a used column cannot be set on a pick-only list;
// the drop-down then keeps its first entry.
void RefillSortCombo(frmAcctViewEdit& ed, ui::ComboBox& combo) {
  const std::string remembered = combo.Text();
  combo.Clear();
  for (const std::string& name : ed.lstUsedColumns.Items()) combo.AddItem(name);
  if (combo.ListCount() > 0) combo.SetListIndex(0);
  ResumeNext([&] { combo.SetText(remembered); });
}

}  // namespace

void cmdAddForm_Click(frmAcctViewEdit& ed) {
  const int selected = ed.lstAvailColumns.ListIndex();
  if (selected < 0) return;
  ed.lstUsedColumns.AddItem(ed.lstAvailColumns.List(selected));
  ed.lstAvailColumns.RemoveItem(selected);
  ed.ProfileChanged = true;
  RefillSortCombo(ed, ed.cmbSort[0]);
  RefillSortCombo(ed, ed.cmbSort[1]);
}

void cmdRemoveForm_Click(frmAcctViewEdit& ed) {
  const int selected = ed.lstUsedColumns.ListIndex();
  if (selected < 0) return;
  ed.lstAvailColumns.AddItem(ed.lstUsedColumns.List(selected));
  ed.lstUsedColumns.RemoveItem(selected);
  ed.ProfileChanged = true;
}

void cmdRemoveAll_Click(frmAcctViewEdit& ed) {
  while (ed.lstUsedColumns.ListCount() > 0) {
    ed.lstAvailColumns.AddItem(ed.lstUsedColumns.List(0));
    ed.lstUsedColumns.RemoveItem(0);
  }
  ed.ProfileChanged = true;
}

void cmdMove_Click(frmAcctViewEdit& ed, int index) {
  ui::ListBox& used = ed.lstUsedColumns;
  const int i = used.ListIndex();
  // Nothing selected moves nothing either way.
  if (i < 0) return;
  const int other = index == 0 ? i - 1 : i + 1;
  if (other < 0 || other >= used.ListCount()) return;
  std::string moving = used.List(i);
  used.SetList(i, used.List(other));
  used.SetList(other, std::move(moving));
  used.SetListIndex(other);
  ed.ProfileChanged = true;
}

void cmbDataSet_Click(frmAcctViewEdit& ed) {
  LoadColumns(ed);
  // A loading profile fills the list again at its end, which replaces every
  // row; only a fill that may read the files or show a message happens here.
  if (ed.defer_filter_fill && FilterFillIsQuiet(ed)) {
    ed.filter_fill_pending = true;
    return;
  }
  LoadFilters(ed);
  ApplyFilterChecks(ed);
  ed.filter_fill_pending = false;
}

void MarkProfileChanged(frmAcctViewEdit& ed) { ed.ProfileChanged = true; }

}  // namespace cvve
