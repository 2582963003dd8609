#pragma once
// A window of the editor (the editor itself and its two dialogs). A modal
// show returns when the form is hidden again.
#include "ui/control.h"

namespace cvve::ui {

class Form : public Control {
 public:
  explicit Form(std::string name) : Control(std::move(name)) { SetVisible(false); }
  void Show() { SetVisible(true); }
  void Hide() { SetVisible(false); }
};

// Shows forms modally. The screen implementation runs an event loop until the
// form hides itself; the headless one hands the form to whoever drives it.
class DialogHost {
 public:
  virtual ~DialogHost() = default;
  // Shows `form` and returns once it is hidden again.
  virtual void RunModal(Form& form) = 0;
};

}  // namespace cvve::ui
