#pragma once
// The editor's side of the report variables.
namespace cvve {

class frmAcctViewEdit;

// The start/end-date box: checked fills slots 0 and 1 with the start and end
// date variables, cleared empties both; slots 2 and 3 are untouched. Then
// FillVariableChoices.
void chkStartEnd_Click(frmAcctViewEdit& ed);
// "Edit Input Variables...": the dialog in definition mode, modal.
void cmdEditVariables_Click(frmAcctViewEdit& ed);
// Refills the two in-place value editors' lists with "" and one
// "<$" + name + ">" marker per slot with a name (caption not needed).
void FillVariableChoices(frmAcctViewEdit& ed);

}  // namespace cvve
