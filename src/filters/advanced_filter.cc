#include "filters/advanced_filter.h"

#include <memory>

#include "component/frm_acct_view_edit.h"
#include "query/sql_builder.h"
#include "ui/form.h"

namespace cvve {

void optFilter_Click(frmAcctViewEdit& ed, int /*index*/) {
  const bool easy = ed.optFilter.Value(0);
  ed.lstFilters.SetEnabled(easy);
  ed.cmdAdvancedFilter.SetEnabled(!easy);
  if (!easy) ed.DataSetSQL = BuildViewSQL(ed, true);
  ed.ProfileChanged = true;
}

void cmdAdvancedFilter_Click(frmAcctViewEdit& ed) {
  // Each opening starts from a fresh dialog, and the dialog goes again even
  // when the modal show fails.
  ed.advanced_dialog = std::make_unique<frmAcctViewAdvanced>();
  struct Unload {
    frmAcctViewEdit& ed;
    ~Unload() { ed.advanced_dialog.reset(); }
  } unload{ed};
  frmAcctViewAdvanced& dialog = *ed.advanced_dialog;
  dialog.SetSQL(ed.DataSetSQL);
  ed.Env().dialogs.RunModal(dialog);
  ed.DataSetSQL = dialog.SQL();
  ed.advanced_dialog.reset();
  ed.ProfileChanged = true;
}

}  // namespace cvve
