#pragma once
// A plain list of texts with one selected entry (-1 for none).
#include <string>
#include <vector>

#include "ui/control.h"

namespace cvve::ui {

class ListBox : public Control {
 public:
  using Control::Control;

  void Clear();
  void AddItem(std::string text);
  // Throws cvve::Error when `index` is outside the list.
  void RemoveItem(int index);
  int ListCount() const { return static_cast<int>(items_.size()); }
  // Throws cvve::Error when `index` is outside the list.
  const std::string& List(int index) const;
  void SetList(int index, std::string text);
  const std::vector<std::string>& Items() const { return items_; }
  // Every entry with that text, first to last.
  std::vector<int> FindAll(const std::string& text) const;

  int ListIndex() const { return index_; }
  // -1 selects nothing; throws cvve::Error outside -1 .. ListCount()-1.
  void SetListIndex(int index);

  Handler on_dbl_click;

 private:
  std::vector<std::string> items_;
  int index_ = -1;
};

}  // namespace cvve::ui
