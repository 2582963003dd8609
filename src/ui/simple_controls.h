#pragma once
// Check box, option-button group, text box, command button and frame.
// A check box's value or an option button set by code fires on_click exactly
// as a user's click does (a check box only when its value changes; an option
// button each time it is set, as the editor's loading relies on).
#include <functional>
#include <string>
#include <vector>

#include "ui/control.h"

namespace cvve::ui {

class CheckBox : public Control {
 public:
  CheckBox(std::string name, std::string caption)
      : Control(std::move(name)), caption_(std::move(caption)) {}
  const std::string& Caption() const { return caption_; }
  int Value() const { return value_; }
  bool Checked() const { return value_ != 0; }
  // 0 clear, 1 checked; other values throw cvve::Error.
  void SetValue(int value);
  // A user's click toggles the box.
  void UserClick() { SetValue(value_ ? 0 : 1); }
  Handler on_click;

 private:
  std::string caption_;
  int value_ = 0;
};

// A control array of option buttons: exactly one is set.
class OptionGroup : public Control {
 public:
  OptionGroup(std::string name, std::vector<std::string> captions);
  int Count() const { return static_cast<int>(captions_.size()); }
  const std::string& Caption(int index) const;
  bool Value(int index) const { return index == set_; }
  int SetIndex() const { return set_; }
  // Sets button `index` (clearing the others) and fires on_click(index).
  // Throws cvve::Error for an index outside the array.
  void SetValue(int index);
  std::function<void(int index)> on_click;

 private:
  std::vector<std::string> captions_;
  int set_ = 0;
};

class TextBox : public Control {
 public:
  using Control::Control;
  const std::string& Text() const { return text_; }
  void SetText(std::string text) {
    text_ = std::move(text);
    Touch();
  }

 private:
  std::string text_;
};

class CommandButton : public Control {
 public:
  CommandButton(std::string name, std::string caption)
      : Control(std::move(name)), caption_(std::move(caption)) {}
  const std::string& Caption() const { return caption_; }
  // A click; does nothing while the button is disabled.
  void Click() {
    if (Enabled() && on_click) on_click();
  }
  Handler on_click;
  Handler on_lost_focus;

 private:
  std::string caption_;
};

class Frame : public Control {
 public:
  Frame(std::string name, std::string caption)
      : Control(std::move(name)), caption_(std::move(caption)) {}
  const std::string& Caption() const { return caption_; }

 private:
  std::string caption_;
};

}  // namespace cvve::ui
