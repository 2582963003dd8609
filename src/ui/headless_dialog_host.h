#pragma once
// Modal shows without a screen. While a form is shown the driver (a test, or
// the script runner reading further lines) acts on it; a form the driver
// leaves open is closed when the driver returns, as if its default button
// were pressed without changes.
#include <functional>
#include <vector>

#include "ui/form.h"

namespace cvve::ui {

class HeadlessDialogHost : public DialogHost {
 public:
  using Driver = std::function<void(Form&)>;
  void SetDriver(Driver driver) { driver_ = std::move(driver); }
  void RunModal(Form& form) override {
    form.Show();
    stack_.push_back(&form);
    if (driver_) driver_(form);
    stack_.pop_back();
    form.Hide();
  }
  // The modal forms now open, innermost last.
  const std::vector<Form*>& Open() const { return stack_; }

 private:
  Driver driver_;
  std::vector<Form*> stack_;
};

}  // namespace cvve::ui
