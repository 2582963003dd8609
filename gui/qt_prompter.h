#pragma once
// The editor's Prompter on Qt: message boxes with the named icon and
// buttons, input boxes with their default text, the wait cursor, and the
// transient save notice (a small window that appears without taking the
// focus, so the save button keeps it until the user moves on).
#include <QPointer>
#include <QWidget>

#include "ui/prompter.h"

namespace cvve::gui {

class QtPrompter : public ui::Prompter {
 public:
  QtPrompter() = default;
  ~QtPrompter() override;

  // Modal over the active window. Escape answers Cancel, or No when the box
  // has no Cancel; closing an OK box answers OK.
  ui::Answer MsgBox(const std::string& text, ui::Buttons buttons, ui::Icon icon,
                    const std::string& title) override;
  // "" when the user cancels.
  std::string InputBox(const std::string& prompt, const std::string& title,
                       const std::string& default_text) override;
  // Nested on/off pairs are counted; an extra "off" does nothing.
  void SetWaitCursor(bool on) override;
  void ShowNotice(const std::string& title, const std::string& text) override;
  void CloseNotice() override;
  // Into the window's "lblStatus" label; on standard error when there is none.
  void ShowStatus(const std::string& text) override;

  // The notice window while it is open, else nullptr.
  QWidget* Notice() const { return notice_; }
  // Milliseconds after which an unattended notice goes by itself (0: never).
  int notice_timeout_ms = 6000;

 private:
  QPointer<QWidget> notice_;
  int wait_depth_ = 0;
};

// The window dialogs and message boxes are shown over.
QWidget* DialogParent();

}  // namespace cvve::gui
