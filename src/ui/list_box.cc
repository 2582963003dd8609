#include "ui/list_box.h"

#include "base/error.h"

namespace cvve::ui {

void ListBox::Clear() {
  items_.clear();
  index_ = -1;
  Touch();
}

void ListBox::AddItem(std::string text) {
  items_.push_back(std::move(text));
  Touch();
}

void ListBox::RemoveItem(int index) {
  if (index < 0 || index >= ListCount()) throw Error("Invalid procedure call or argument");
  items_.erase(items_.begin() + index);
  if (index_ == index) {
    index_ = -1;
  } else if (index < index_) {
    --index_;
  }
  Touch();
}

const std::string& ListBox::List(int index) const {
  if (index < 0 || index >= ListCount()) throw Error("Invalid property array index");
  return items_[static_cast<std::size_t>(index)];
}

void ListBox::SetList(int index, std::string text) {
  if (index < 0 || index >= ListCount()) throw Error("Invalid property array index");
  items_[static_cast<std::size_t>(index)] = std::move(text);
  Touch();
}

std::vector<int> ListBox::FindAll(const std::string& text) const {
  std::vector<int> hits;
  for (std::size_t i = 0; i < items_.size(); ++i) {
    if (items_[i] == text) hits.push_back(static_cast<int>(i));
  }
  return hits;
}

void ListBox::SetListIndex(int index) {
  if (index < -1 || index >= ListCount()) throw Error("Invalid property value");
  if (index_ != index) {
    index_ = index;
    Touch();
  }
}

}  // namespace cvve::ui
