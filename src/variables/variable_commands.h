#pragma once
// The editor's side of the report variables.
namespace cvve {

class frmAcctViewEdit;

// The start/end-date box: fills or empties slots 0 and 1.
void chkStartEnd_Click(frmAcctViewEdit& ed);
// "Edit Input Variables...": the dialog in definition mode, modal.
void cmdEditVariables_Click(frmAcctViewEdit& ed);
// Refills the two in-place value editors' lists with "" and one marker per
// named slot.
void FillVariableChoices(frmAcctViewEdit& ed);

}  // namespace cvve
