#include "ui/simple_controls.h"

#include "base/error.h"

namespace cvve::ui {

void CheckBox::SetValue(int value) {
  if (value != 0 && value != 1) throw Error("Invalid property value");
  if (value == value_) return;
  value_ = value;
  Touch();
  if (on_click) on_click();
}

OptionGroup::OptionGroup(std::string name, std::vector<std::string> captions)
    : Control(std::move(name)), captions_(std::move(captions)) {}

const std::string& OptionGroup::Caption(int index) const {
  if (index < 0 || index >= Count()) throw Error("Control array element does not exist");
  return captions_[static_cast<std::size_t>(index)];
}

void OptionGroup::SetValue(int index) {
  if (index < 0 || index >= Count()) throw Error("Control array element does not exist");
  set_ = index;
  Touch();
  if (on_click) on_click(index);
}

}  // namespace cvve::ui
