#pragma once
// A drop-down: entries with item data, a list index (-1 for none) and a text.
// A pick-only list accepts only listed texts; an editable one (the in-place
// value editors) holds free text. A change of the selection by code fires
// on_click exactly as a user's choice does.
#include <string>
#include <vector>

#include "ui/control.h"

namespace cvve::ui {

class ComboBox : public Control {
 public:
  enum class Style { kPickOnly, kEditable };
  struct Entry {
    std::string text;
    long item_data = 0;
  };

  explicit ComboBox(std::string name, Style style = Style::kPickOnly)
      : Control(std::move(name)), style_(style) {}

  Style GetStyle() const { return style_; }
  void Clear();
  void AddItem(std::string text, long item_data = 0);
  int ListCount() const { return static_cast<int>(entries_.size()); }
  // Throws cvve::Error when `index` is outside the list.
  const std::string& List(int index) const;
  long ItemData(int index) const;
  const std::vector<Entry>& Entries() const { return entries_; }

  int ListIndex() const { return index_; }
  // Selects entry `index` (-1: none) and fires on_click when it changed.
  // Throws cvve::Error for an index outside -1 .. ListCount()-1.
  void SetListIndex(int index);

  // Pick-only: the selected entry's text, "" for none. Editable: the edit text.
  std::string Text() const;
  // Pick-only: selects the first entry with that text (firing on_click when
  // the selection changed); an unlisted text throws cvve::Error and changes
  // nothing. Editable: sets the edit text, moves the list index to the first
  // matching entry (or -1) and fires on_change.
  void SetText(const std::string& text);
  // The first entry with that text, -1 when none.
  int FindText(const std::string& text) const;

  Handler on_click;   // selection changed
  Handler on_change;  // editable text changed

  // Placement within the container, in twips, for boxes that code moves over
  // other controls (the in-place value editors). Move keeps the box's height.
  int Left() const { return left_; }
  int Top() const { return top_; }
  int Width() const { return width_; }
  int Height() const { return height_; }
  void Move(int left, int top, int width) {
    left_ = left;
    top_ = top;
    width_ = width;
    Touch();
  }
  // Whether code gave the box the keyboard focus; the screen puts the caret
  // there and reports the loss of focus to the box's owner.
  bool Focused() const { return focused_; }
  void SetFocused(bool on) {
    if (focused_ != on) {
      focused_ = on;
      Touch();
    }
  }

 private:
  int left_ = 0, top_ = 0, width_ = 1215, height_ = 315;
  bool focused_ = false;
  Style style_;
  std::vector<Entry> entries_;
  int index_ = -1;
  std::string edit_text_;
};

}  // namespace cvve::ui
