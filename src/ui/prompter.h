#pragma once
// The editor's way to the user: message boxes, input boxes, the wait cursor
// and the transient save notice. One implementation draws real dialogs; the
// headless one replays queued answers and records what was shown.
#include <string>

namespace cvve::ui {

enum class Buttons { kOk, kOkCancel, kYesNo, kYesNoCancel };
enum class Icon { kNone, kCritical, kQuestion, kExclamation, kInformation };
enum class Answer { kOk, kCancel, kYes, kNo };

const char* ToString(Buttons buttons);
const char* ToString(Icon icon);
const char* ToString(Answer answer);

class Prompter {
 public:
  virtual ~Prompter() = default;
  virtual Answer MsgBox(const std::string& text, Buttons buttons, Icon icon,
                        const std::string& title) = 0;
  // The text entered; "" when the user cancels.
  virtual std::string InputBox(const std::string& prompt, const std::string& title,
                               const std::string& default_text) = 0;
  virtual void SetWaitCursor(bool on) = 0;
  virtual void ShowNotice(const std::string& title, const std::string& text) = 0;
  virtual void CloseNotice() = 0;
  // A line for the window's status bar, such as where a file the editor
  // could not read was kept. Screens without one may drop it.
  virtual void ShowStatus(const std::string& text) { static_cast<void>(text); }
  // Told after a file could not be written (its message box, if any, was
  // shown already), so that a caller that keeps score can say so.
  virtual void WriteFailed(const std::string& path, const std::string& reason) {
    static_cast<void>(path);
    static_cast<void>(reason);
  }
};

}  // namespace cvve::ui
