#pragma once
// Filter mode (easy list or hand-written statement) and the advanced edit.
namespace cvve {

class frmAcctViewEdit;

void optFilter_Click(frmAcctViewEdit& ed, int index);
void cmdAdvancedFilter_Click(frmAcctViewEdit& ed);

}  // namespace cvve
