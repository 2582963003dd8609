#include "filters/value_editors.h"

#include <cmath>
#include <string>
#include <vector>

#include "base/text.h"
#include "component/frm_acct_view_edit.h"

namespace cvve {

namespace {

const char* ColumnKey(int which) { return which == 2 ? "Data2" : "Data1"; }

// Whole twips (half to even, as the host rounds) divided into whole pixels.
int ToPixels(float twips, int twips_per_pixel) {
  const long whole = std::lrint(static_cast<double>(twips));
  return static_cast<int>(whole / twips_per_pixel);
}

// Puts the box's text into the selected row's cell of every column keyed
// like the box.
void CopyIntoCell(frmAcctViewEdit& ed, int which) {
  ui::ListView& list = ed.lstFilters;
  const int row = list.SelectedItem();
  if (row == 0) return;
  const std::string text = ValueEditor(ed, which).Text();
  for (int position = 1; position <= list.ColumnCount(); ++position) {
    if (list.Column(position).key == ColumnKey(which)) list.SetSubItem(row, position - 1, text);
  }
}

// Hiding the box that holds the focus moves the focus away from it.
void HideBox(frmAcctViewEdit& ed, int which) {
  ui::ComboBox& box = ValueEditor(ed, which);
  box.SetVisible(false);
  if (box.Focused()) txtDataLV_LostFocus(ed, which);
}

// Moves the box over the cell of 0-based sub-item `sub` of the selected row,
// shows it alone, disables the list and focuses the box.
void OpenBox(frmAcctViewEdit& ed, int which, int sub) {
  ui::ListView& list = ed.lstFilters;
  ui::ComboBox& box = ValueEditor(ed, which);
  const int col = sub + 1;
  // The first box is one twip narrower than its column, the second ten: the
  // two offsets differ on purpose and are kept so.
  const int narrower = which == 2 ? 10 : 1;
  box.Move(list.left + list.ColumnLeft(col), list.top + list.ItemTop(list.SelectedItem()),
           list.Column(col).width_twips - narrower);
  box.SetVisible(true);
  HideBox(ed, which == 2 ? 1 : 2);
  list.SetEnabled(false);
  box.SetFocused(true);
}

}  // namespace

ui::ComboBox& ValueEditor(frmAcctViewEdit& ed, int which) {
  return which == 2 ? ed.txtData2LV : ed.txtData1LV;
}

void lstFilters_MouseDown(frmAcctViewEdit& ed, int /*button*/, int /*shift*/, float x, float y) {
  ui::ListView& list = ed.lstFilters;
  if (!list.Enabled()) return;
  const int tppx = ed.TwipsPerPixelX;
  const int tppy = ed.TwipsPerPixelY;
  if (tppx <= 0 || tppy <= 0) return;
  const ui::ListView::Hit hit = list.HitTest(ToPixels(x, tppx), ToPixels(y, tppy), tppx, tppy);
  const int row = hit.row;
  const int sub = hit.sub_item;

  // The press has moved the selection before the editor looks at it.
  if (row >= 0) list.SetSelectedItem(row + 1);

  if (sub == 0) {
    HideBox(ed, 1);
    HideBox(ed, 2);
  }
  if (sub <= 0 || row < 0) return;

  const int selected = list.SelectedItem();
  const std::vector<std::string> fields = Split(list.Item(selected).tag, '|');
  const std::string& input_num = fields[0];

  for (int position = 1; position <= list.ColumnCount(); ++position) {
    const std::string& key = list.Column(position).key;
    if (key == "Data1") ed.txtData1LV.SetText(list.SubItem(selected, position - 1));
    if (key == "Data2") ed.txtData2LV.SetText(list.SubItem(selected, position - 1));
  }

  if (input_num == "1") {
    if (sub == 2) {
      OpenBox(ed, 1, sub);
    } else {
      HideBox(ed, 2);
    }
  } else if (input_num == "2") {
    if (sub == 2) {
      OpenBox(ed, 1, sub);
    } else if (sub == 4) {
      OpenBox(ed, 2, sub);
    }
  } else if (input_num == "0") {
    HideBox(ed, 1);
    HideBox(ed, 2);
  }
}

int ValueCellCount(const frmAcctViewEdit& ed, int position) {
  const ui::ListView& list = ed.lstFilters;
  if (position < 1 || position > list.ItemCount()) return 0;
  const std::string input_num = Split(list.Item(position).tag, '|')[0];
  if (input_num == "1") return 1;
  if (input_num == "2") return 2;
  return 0;
}

TwipsPoint CellCentre(const ui::ListView& list, int position, int col) {
  return {static_cast<float>(list.ColumnLeft(col) + list.Column(col).width_twips / 2),
          static_cast<float>(list.ItemTop(position) + list.row_height_twips / 2)};
}

bool lstFilters_OpenValueCell(frmAcctViewEdit& ed, int position, int which) {
  ui::ListView& list = ed.lstFilters;
  if (position < 1 || position > list.ItemCount()) return false;
  // A row without that value is pressed on its caption: it is selected and
  // nothing opens.
  int col = list.ColumnPosition(ColumnKey(which));
  if (which < 1 || which > ValueCellCount(ed, position) || col == 0) col = 1;
  const TwipsPoint at = CellCentre(list, position, col);
  lstFilters_MouseDown(ed, 1, 0, at.x, at.y);
  return ValueEditor(ed, which).Visible();
}

bool txtDataLV_Tab(frmAcctViewEdit& ed, int which) {
  const int row = ed.lstFilters.SelectedItem();
  if (which != 1 || !ValueEditor(ed, 1).Visible() || ValueCellCount(ed, row) != 2) return false;
  txtDataLV_LostFocus(ed, 1);
  return lstFilters_OpenValueCell(ed, row, 2);
}

void txtDataLV_Change(frmAcctViewEdit& ed, int which) { CopyIntoCell(ed, which); }

void txtDataLV_Click(frmAcctViewEdit& ed, int which) { CopyIntoCell(ed, which); }

int txtDataLV_KeyPress(frmAcctViewEdit& /*ed*/, int /*which*/, int key_ascii) {
  // Neither a beep nor a character for the two keys that close the box.
  if (key_ascii == kKeyEnter || key_ascii == kKeyEscape) return 0;
  return key_ascii;
}

void txtDataLV_KeyDown(frmAcctViewEdit& ed, int which, int key_code) {
  if (key_code == kKeyEscape) {
    // Every keystroke is already in the cell: Escape only closes the box.
    HideBox(ed, which);
  } else if (key_code == kKeyEnter) {
    CopyIntoCell(ed, which);
    HideBox(ed, which);
  }
}

void txtDataLV_LostFocus(frmAcctViewEdit& ed, int which) {
  ui::ComboBox& box = ValueEditor(ed, which);
  box.SetFocused(false);
  CopyIntoCell(ed, which);
  box.SetVisible(false);
  ed.lstFilters.SetEnabled(true);
}

}  // namespace cvve
