#pragma once
// What every control model holds: its name as the editor knows it, whether it
// is enabled and visible, and a revision that grows with every change so a
// screen adapter can redraw only what changed.
#include <cstdint>
#include <functional>
#include <string>

namespace cvve::ui {

using Handler = std::function<void()>;

class Control {
 public:
  explicit Control(std::string name) : name_(std::move(name)) {}
  virtual ~Control() = default;
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

  const std::string& Name() const { return name_; }
  bool Enabled() const { return enabled_; }
  void SetEnabled(bool on) {
    if (enabled_ != on) { enabled_ = on; Touch(); }
  }
  bool Visible() const { return visible_; }
  void SetVisible(bool on) {
    if (visible_ != on) { visible_ = on; Touch(); }
  }
  std::uint64_t Revision() const { return revision_; }
  // Asks the screen to redraw the control although its model did not change
  // (its painting depends on state held elsewhere).
  void Refresh() { Touch(); }

 protected:
  void Touch() { ++revision_; }

 private:
  std::string name_;
  bool enabled_ = true;
  bool visible_ = true;
  std::uint64_t revision_ = 0;
};

}  // namespace cvve::ui
