#pragma once
// The two in-place value editors over lstFilters' Data1 and Data2 cells.
namespace cvve {

class frmAcctViewEdit;

inline constexpr int kKeyEnter = 13;
inline constexpr int kKeyEscape = 27;

// A mouse button on the list; x and y in twips relative to the list.
void lstFilters_MouseDown(frmAcctViewEdit& ed, int button, int shift, float x, float y);
// `which` is 1 for txtData1LV, 2 for txtData2LV.
void txtDataLV_Change(frmAcctViewEdit& ed, int which);
void txtDataLV_Click(frmAcctViewEdit& ed, int which);
// Returns the key code left after the press (0 when swallowed).
int txtDataLV_KeyPress(frmAcctViewEdit& ed, int which, int key_ascii);
void txtDataLV_KeyDown(frmAcctViewEdit& ed, int which, int key_code);
void txtDataLV_LostFocus(frmAcctViewEdit& ed, int which);

}  // namespace cvve
