#pragma once
// Routes the editor's messages to a silent prompter for as long as it lives,
// for the panes that build statements on every change and must not show a
// message box the user did not ask for.
#include <vector>

#include "component/frm_acct_view_edit.h"
#include "ui/headless_prompter.h"

namespace cvve {

class QuietPrompts {
 public:
  explicit QuietPrompts(frmAcctViewEdit& ed) : ed_(ed) { ed_.SetPrompterOverride(&quiet_); }
  ~QuietPrompts() { ed_.SetPrompterOverride(nullptr); }
  QuietPrompts(const QuietPrompts&) = delete;
  QuietPrompts& operator=(const QuietPrompts&) = delete;
  const std::vector<ui::ShownPrompt>& Shown() const { return quiet_.Shown(); }

 private:
  frmAcctViewEdit& ed_;
  ui::HeadlessPrompter quiet_;
};

}  // namespace cvve
