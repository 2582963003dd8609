#include "ui/list_view.h"

#include <algorithm>

#include "base/error.h"

namespace cvve::ui {

void ListView::AddColumn(ListColumn column) {
  columns_.push_back(std::move(column));
  for (auto& item : items_) item.sub_items.resize(columns_.size() - 1);
  Touch();
}

void ListView::ClearColumns() {
  columns_.clear();
  for (auto& item : items_) item.sub_items.clear();
  Touch();
}

const ListColumn& ListView::Column(int position) const {
  if (position < 1 || position > ColumnCount()) throw Error("Index out of bounds");
  return columns_[static_cast<std::size_t>(position - 1)];
}

int ListView::ColumnPosition(const std::string& key) const {
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (columns_[i].key == key) return static_cast<int>(i) + 1;
  }
  return 0;
}

void ListView::ClearItems() {
  items_.clear();
  key_index_.clear();
  selected_ = 0;
  Touch();
}

void ListView::SetItems(const std::vector<ListItem>& items) {
  // The same rows again (a profile switch within one data set) keep their keys.
  const bool same_keys = std::equal(items.begin(), items.end(), items_.begin(), items_.end(),
                                    [](const ListItem& a, const ListItem& b) { return a.key == b.key; });
  if (!same_keys) {
    std::unordered_map<std::string, int> keys;
    for (std::size_t i = 0; i < items.size(); ++i) {
      if (!items[i].key.empty() && !keys.emplace(items[i].key, static_cast<int>(i)).second) {
        throw Error("Key is not unique in collection");
      }
    }
    key_index_ = std::move(keys);
  }
  items_ = items;  // reuses the texts' storage of the items there before
  for (ListItem& item : items_) item.sub_items.resize(columns_.empty() ? 0 : columns_.size() - 1);
  selected_ = 0;
  Touch();
}

int ListView::AddItem(int position, std::string text, std::string key) {
  if (position < 1 || position > ItemCount() + 1) throw Error("Index out of bounds");
  if (!key.empty() && key_index_.count(key)) throw Error("Key is not unique in collection");
  ListItem item;
  item.text = std::move(text);
  item.key = std::move(key);
  item.sub_items.resize(columns_.empty() ? 0 : columns_.size() - 1);
  bool at_end = position == ItemCount() + 1;
  items_.insert(items_.begin() + (position - 1), std::move(item));
  if (at_end) {
    if (!items_.back().key.empty()) key_index_[items_.back().key] = position - 1;
  } else {
    RebuildKeyIndex();
    if (selected_ >= position) ++selected_;
  }
  Touch();
  return position;
}

ListItem& ListView::Item(int position) {
  if (position < 1 || position > ItemCount()) throw Error("Index out of bounds");
  return items_[static_cast<std::size_t>(position - 1)];
}

const ListItem& ListView::Item(int position) const {
  if (position < 1 || position > ItemCount()) throw Error("Index out of bounds");
  return items_[static_cast<std::size_t>(position - 1)];
}

void ListView::SetKey(int position, std::string key) {
  ListItem& item = Item(position);
  if (!key.empty()) {
    auto it = key_index_.find(key);
    if (it != key_index_.end() && it->second != position - 1) {
      throw Error("Key is not unique in collection");
    }
  }
  if (!item.key.empty()) key_index_.erase(item.key);
  item.key = std::move(key);
  if (!item.key.empty()) key_index_[item.key] = position - 1;
  Touch();
}

int ListView::FindKey(const std::string& key) const {
  auto it = key_index_.find(key);
  return it == key_index_.end() ? 0 : it->second + 1;
}

void ListView::SetChecked(int position, bool checked) {
  ListItem& item = Item(position);
  if (item.checked != checked) {
    item.checked = checked;
    Touch();
  }
}

void ListView::SetTag(int position, std::string tag) {
  Item(position).tag = std::move(tag);
  Touch();
}

std::string ListView::SubItem(int position, int sub_item) const {
  const ListItem& item = Item(position);
  if (sub_item == 0) return item.text;
  if (sub_item < 0 || sub_item > static_cast<int>(item.sub_items.size())) {
    throw Error("Index out of bounds");
  }
  return item.sub_items[static_cast<std::size_t>(sub_item - 1)];
}

void ListView::SetSubItem(int position, int sub_item, std::string text) {
  ListItem& item = Item(position);
  if (sub_item == 0) {
    item.text = std::move(text);
  } else {
    if (sub_item < 0 || sub_item > static_cast<int>(item.sub_items.size())) {
      throw Error("Index out of bounds");
    }
    item.sub_items[static_cast<std::size_t>(sub_item - 1)] = std::move(text);
  }
  Touch();
}

void ListView::SetSelectedItem(int position) {
  if (position < 0 || position > ItemCount()) throw Error("Index out of bounds");
  if (selected_ != position) {
    selected_ = position;
    Touch();
  }
}

void ListView::UserCheck(int position, bool checked) {
  SetChecked(position, checked);
  if (on_item_check) on_item_check(position);
}

int ListView::ColumnLeft(int position) const {
  int x = 0;
  for (int i = 1; i < position && i <= ColumnCount(); ++i) x += columns_[i - 1].width_twips;
  return x;
}

int ListView::ItemTop(int position) const {
  return header_height_twips + (position - 1 - scroll_rows) * row_height_twips;
}

ListView::Hit ListView::HitTest(int x_pixels, int y_pixels, int tppx, int tppy) const {
  Hit hit;
  if (tppx <= 0 || tppy <= 0) return hit;
  int x = x_pixels * tppx;
  int y = y_pixels * tppy;
  if (y < header_height_twips || x < 0) return hit;
  int row = (y - header_height_twips) / row_height_twips + scroll_rows;
  if (row < 0 || row >= ItemCount()) return hit;
  int right = 0;
  for (int c = 0; c < ColumnCount(); ++c) {
    right += columns_[static_cast<std::size_t>(c)].width_twips;
    if (x < right) {
      hit.row = row;
      hit.sub_item = c;
      return hit;
    }
  }
  return hit;
}

void ListView::RebuildKeyIndex() {
  key_index_.clear();
  for (std::size_t i = 0; i < items_.size(); ++i) {
    if (!items_[i].key.empty()) key_index_[items_[i].key] = static_cast<int>(i);
  }
}

}  // namespace cvve::ui
