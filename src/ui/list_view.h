#pragma once
// A report-style list with check boxes: keyed columns with header, alignment
// and width in twips; items with text, unique key, tag, check state and one
// sub-item text per further column. The check of an item fires on_item_check
// only through UserCheck, as only a user's click fires it.
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "ui/control.h"

namespace cvve::ui {

enum class Alignment { kLeft, kRight, kCenter };

struct ListColumn {
  std::string key;
  std::string header;
  Alignment alignment = Alignment::kLeft;
  int width_twips = 1440;
};

struct ListItem {
  std::string text;
  std::string key;
  std::string tag;
  bool checked = false;
  std::vector<std::string> sub_items;  // one per column after the first
};

class ListView : public Control {
 public:
  using Control::Control;

  // Columns.
  void AddColumn(ListColumn column);
  void ClearColumns();
  int ColumnCount() const { return static_cast<int>(columns_.size()); }
  // 1-based, as the editor's logic counts columns; throws outside the range.
  const ListColumn& Column(int position) const;
  const std::vector<ListColumn>& Columns() const { return columns_; }
  // 1-based position of the first column with that key, 0 when none.
  int ColumnPosition(const std::string& key) const;

  // Items, 1-based.
  void ClearItems();
  // All items at once, as ClearItems and an AddItem of each would leave them;
  // throws cvve::Error (and keeps the items) when two hold the same key.
  void SetItems(const std::vector<ListItem>& items);
  // Adds an item at `position` (1..count+1). An empty key means none; a key
  // already in use throws cvve::Error and adds nothing.
  int AddItem(int position, std::string text, std::string key = {});
  int ItemCount() const { return static_cast<int>(items_.size()); }
  // Throws cvve::Error outside 1..ItemCount().
  ListItem& Item(int position);
  const ListItem& Item(int position) const;
  const std::vector<ListItem>& Items() const { return items_; }
  // Sets a key; throws cvve::Error when another item holds it.
  void SetKey(int position, std::string key);
  // The item with that key, 0 when none.
  int FindKey(const std::string& key) const;
  void SetChecked(int position, bool checked);
  void SetTag(int position, std::string tag);
  // Sub-item 0 is the item's text; 1.. the further columns.
  std::string SubItem(int position, int sub_item) const;
  void SetSubItem(int position, int sub_item, std::string text);

  // Selected item, 0 for none.
  int SelectedItem() const { return selected_; }
  void SetSelectedItem(int position);

  // A user's click on a check box: sets the state, then fires on_item_check.
  void UserCheck(int position, bool checked);
  std::function<void(int position)> on_item_check;

  // Geometry, in twips, within the container; the screen adapter keeps the
  // row metrics true to what it draws so hit tests and editor placement match.
  int left = 0, top = 0, width = 0, height = 0;
  int header_height_twips = 300;
  int row_height_twips = 255;
  int scroll_rows = 0;  // rows scrolled out of sight at the top
  // Left of the 1-based column within the list, in twips.
  int ColumnLeft(int position) const;
  // Top of the 1-based item within the list, in twips.
  int ItemTop(int position) const;
  struct Hit {
    int row = -1;       // 0-based row, -1 for none
    int sub_item = -1;  // 0-based sub-item, -1 for none
  };
  // Row and sub-item under a point given in pixels relative to the list.
  Hit HitTest(int x_pixels, int y_pixels, int twips_per_pixel_x, int twips_per_pixel_y) const;

 private:
  void RebuildKeyIndex();
  std::vector<ListColumn> columns_;
  std::vector<ListItem> items_;
  std::unordered_map<std::string, int> key_index_;  // key -> 0-based item
  int selected_ = 0;
};

}  // namespace cvve::ui
