#include "variables/variable_commands.h"

#include <string>

#include "component/frm_acct_view_edit.h"
#include "ui/form.h"

namespace cvve {

void chkStartEnd_Click(frmAcctViewEdit& ed) {
  frmVariables& store = ed.Variables();
  if (ed.chkStartEnd.Checked()) {
    store.SetVariable(0, "Start Date:", "Date", "START_DATE");
    store.SetVariable(1, "End Date:", "Date", "END_DATE");
  } else {
    // Empties both slots, whatever the user had put there.
    store.SetVariable(0, "", "", "");
    store.SetVariable(1, "", "", "");
  }
  FillVariableChoices(ed);
}

void cmdEditVariables_Click(frmAcctViewEdit& ed) {
  frmVariables& dialog = ed.Variables();
  dialog.InputMode(false);
  // No cancel: the definitions are whatever the user leaves in the dialog.
  ed.Env().dialogs.RunModal(dialog);
}

void FillVariableChoices(frmAcctViewEdit& ed) {
  ui::ComboBox* editors[] = {&ed.txtData1LV, &ed.txtData2LV};
  for (ui::ComboBox* editor : editors) {
    editor->Clear();
    editor->AddItem("");
  }
  const frmVariables& store = ed.Variables();
  for (int slot = 0; slot < kVariableSlots; ++slot) {
    std::string caption, type, name;
    store.GetVariable(slot, caption, type, name);
    // A name alone is enough here; HasVariables also wants a caption.
    if (name.empty()) continue;
    for (ui::ComboBox* editor : editors) editor->AddItem("<$" + name + ">");
  }
}

}  // namespace cvve
