#pragma once
// Choosing and ordering the used columns, the sort drop-downs that follow
// them, and the change marking of the option controls.
namespace cvve {

class frmAcctViewEdit;

void cmdAddForm_Click(frmAcctViewEdit& ed);
void cmdRemoveForm_Click(frmAcctViewEdit& ed);
void cmdRemoveAll_Click(frmAcctViewEdit& ed);
// 0 up, 1 down.
void cmdMove_Click(frmAcctViewEdit& ed, int index);
// Columns, then filters, then the profile's filter checks.
void cmbDataSet_Click(frmAcctViewEdit& ed);
// The option controls' click: marks the profile as changed.
void MarkProfileChanged(frmAcctViewEdit& ed);

}  // namespace cvve
