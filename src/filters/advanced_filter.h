#pragma once
// Filter mode (easy list or hand-written statement) and the advanced edit.
// Neither has an error handler of its own: a failure of the statement
// builder reaches the caller.
namespace cvve {

class frmAcctViewEdit;

// Either option button: enables lstFilters exactly in easy mode and the edit
// button exactly in advanced mode. Entering advanced mode overwrites
// DataSetSQL with the statement the easy filter yields now ("CQ:" included),
// on purpose, each time. Marks the profile as changed.
void optFilter_Click(frmAcctViewEdit& ed, int index);
// Edits DataSetSQL in a fresh advanced filter dialog shown modally; the text
// comes back without "CQ:". Marks the profile as changed even when nothing
// was typed.
void cmdAdvancedFilter_Click(frmAcctViewEdit& ed);

}  // namespace cvve
