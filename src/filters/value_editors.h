#pragma once
// The two in-place value editors over lstFilters' Data1 and Data2 cells:
// txtData1LV (which = 1) and txtData2LV (which = 2). A click on an editable
// cell moves the matching box over it, disables the list and focuses the box;
// what the box holds is copied into the selected row's cell at once. Editing
// values never marks the profile as changed.
namespace cvve {

class frmAcctViewEdit;
namespace ui {
class ComboBox;
class ListView;
}  // namespace ui

inline constexpr int kKeyEnter = 13;
inline constexpr int kKeyEscape = 27;

// A mouse button pressed on the list; x and y in twips relative to the list.
// The press first selects the row under the pointer, as the list does, since
// the editor is opened on the selected row. A click beside every row opens
// nothing; a click in the caption column only hides both boxes. A disabled
// list receives no clicks.
void lstFilters_MouseDown(frmAcctViewEdit& ed, int button, int shift, float x, float y);
// Text typed, or an entry chosen from the drop-down: copied into the selected
// row's cell of the box's column. Nothing happens without a selected row.
void txtDataLV_Change(frmAcctViewEdit& ed, int which);
void txtDataLV_Click(frmAcctViewEdit& ed, int which);
// Returns the key code left after the press: Enter and Escape are swallowed (0).
int txtDataLV_KeyPress(frmAcctViewEdit& ed, int which, int key_ascii);
// Escape hides the box (the cell keeps what was typed); Enter copies the text
// into the cell, then hides the box. Hiding the focused box takes its focus
// away, which runs txtDataLV_LostFocus and so enables the list again.
void txtDataLV_KeyDown(frmAcctViewEdit& ed, int which, int key_code);
// Copies the text into the cell, hides the box and enables the list again.
void txtDataLV_LostFocus(frmAcctViewEdit& ed, int which);

// The keyboard's ways in. A filter row's value cells: 0, 1 or 2 (Data1, then
// Data2), from the input count kept in the row's tag.
int ValueCellCount(const frmAcctViewEdit& ed, int position);
// The centre of the cell in 1-based column `col` of row `position`, in twips
// relative to the list: where a click on that cell lands.
struct TwipsPoint {
  float x = 0, y = 0;
};
TwipsPoint CellCentre(const ui::ListView& list, int position, int col);
// F2 or Enter on a filter row opens its value cell `which` (1 or 2) by a
// press at the cell's centre, so the box opens exactly as a click opens it.
// Returns whether the box is open; a row without that cell is pressed on its
// caption instead (selected, nothing opens).
bool lstFilters_OpenValueCell(frmAcctViewEdit& ed, int position, int which);
// Tab in the first box of a row with two value cells: the box loses the focus
// (its text goes into the cell) and the second box opens. Returns false, doing
// nothing, anywhere else: Tab then moves the focus on as usual.
bool txtDataLV_Tab(frmAcctViewEdit& ed, int which);

// txtData1LV or txtData2LV; any `which` other than 2 is the first box.
ui::ComboBox& ValueEditor(frmAcctViewEdit& ed, int which);

}  // namespace cvve
