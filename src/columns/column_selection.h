#pragma once
// Choosing and ordering the used columns, the sort drop-downs that follow
// them, and the change marking of the option controls. With nothing selected
// the buttons do nothing at all, not even mark the profile as changed.
namespace cvve {

class frmAcctViewEdit;

// Moves the selected available column to the end of the used columns and
// refills both sort drop-downs (a remembered text no longer listed is lost).
void cmdAddForm_Click(frmAcctViewEdit& ed);
// Returns the selected used column; the sort drop-downs are deliberately not
// refilled, so they may offer it until the next add or load.
void cmdRemoveForm_Click(frmAcctViewEdit& ed);
// Returns every used column in used order; marks the change even when empty.
void cmdRemoveAll_Click(frmAcctViewEdit& ed);
// 0 up, 1 down. A move past either end (or with nothing selected) does nothing.
void cmdMove_Click(frmAcctViewEdit& ed, int index);
// Columns, then filters, then the profile's filter checks. Does not mark the
// profile as changed; failures reach the caller.
void cmbDataSet_Click(frmAcctViewEdit& ed);
// The option controls' click: marks the profile as changed.
void MarkProfileChanged(frmAcctViewEdit& ed);

}  // namespace cvve
