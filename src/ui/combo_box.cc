#include "ui/combo_box.h"

#include "base/error.h"

namespace cvve::ui {

void ComboBox::Clear() {
  entries_.clear();
  index_ = -1;
  if (style_ == Style::kEditable) edit_text_.clear();
  Touch();
}

void ComboBox::AddItem(std::string text, long item_data) {
  entries_.push_back({std::move(text), item_data});
  Touch();
}

const std::string& ComboBox::List(int index) const {
  if (index < 0 || index >= ListCount()) throw Error("Invalid property array index");
  return entries_[static_cast<std::size_t>(index)].text;
}

long ComboBox::ItemData(int index) const {
  if (index < 0 || index >= ListCount()) throw Error("Invalid property array index");
  return entries_[static_cast<std::size_t>(index)].item_data;
}

void ComboBox::SetListIndex(int index) {
  if (index < -1 || index >= ListCount()) throw Error("Invalid property value");
  if (index == index_) return;
  index_ = index;
  if (style_ == Style::kEditable && index >= 0) edit_text_ = entries_[index].text;
  Touch();
  if (on_click) on_click();
}

std::string ComboBox::Text() const {
  if (style_ == Style::kEditable) return edit_text_;
  return index_ >= 0 ? entries_[static_cast<std::size_t>(index_)].text : std::string();
}

int ComboBox::FindText(const std::string& text) const {
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if (entries_[i].text == text) return static_cast<int>(i);
  }
  return -1;
}

void ComboBox::SetText(const std::string& text) {
  int found = FindText(text);
  if (style_ == Style::kPickOnly) {
    if (found < 0) throw Error("'Text' property is read-only");
    SetListIndex(found);
    return;
  }
  edit_text_ = text;
  index_ = found;
  Touch();
  if (on_change) on_change();
}

}  // namespace cvve::ui
