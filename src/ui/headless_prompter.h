#pragma once
// A Prompter without a screen: answers come from queues that a test or a
// script fills beforehand, and every message, input box and notice is
// recorded with its title, buttons, icon and the answer given.
#include <deque>
#include <string>
#include <vector>

#include "ui/prompter.h"

namespace cvve::ui {

struct ShownPrompt {
  std::string kind;  // "msgbox", "inputbox" or "notice"
  std::string text;
  std::string title;
  std::string buttons;       // msgbox only
  std::string icon;          // msgbox only
  std::string default_text;  // inputbox only
  std::string answer;        // the button or the text given
  bool queued = true;        // false when no answer was waiting
};

class HeadlessPrompter : public Prompter {
 public:
  void QueueAnswer(Answer answer) { answers_.push_back(answer); }
  void QueueInput(std::string text) { inputs_.push_back(std::move(text)); }
  std::size_t PendingAnswers() const { return answers_.size() + inputs_.size(); }

  // A question with no queued answer gets Cancel (else No); an input box gets
  // "" (as a cancelled one). Such prompts are counted as unanswered.
  Answer MsgBox(const std::string& text, Buttons buttons, Icon icon,
                const std::string& title) override;
  std::string InputBox(const std::string& prompt, const std::string& title,
                       const std::string& default_text) override;
  void SetWaitCursor(bool on) override { wait_cursor_ = on; }
  void ShowNotice(const std::string& title, const std::string& text) override;
  void CloseNotice() override { notice_open_ = false; }
  void ShowStatus(const std::string& text) override { status_lines_.push_back(text); }
  void WriteFailed(const std::string& path, const std::string& reason) override {
    write_failures_.push_back(path + ": " + reason);
  }
  const std::vector<std::string>& StatusLines() const { return status_lines_; }
  const std::vector<std::string>& WriteFailures() const { return write_failures_; }

  const std::vector<ShownPrompt>& Shown() const { return shown_; }
  void ClearShown() { shown_.clear(); }
  int Unanswered() const { return unanswered_; }
  void ResetUnanswered() { unanswered_ = 0; }
  bool WaitCursor() const { return wait_cursor_; }
  bool NoticeOpen() const { return notice_open_; }
  const std::string& NoticeText() const { return notice_text_; }

 private:
  std::deque<Answer> answers_;
  std::deque<std::string> inputs_;
  std::vector<ShownPrompt> shown_;
  int unanswered_ = 0;
  bool wait_cursor_ = false;
  bool notice_open_ = false;
  std::string notice_text_;
  std::vector<std::string> status_lines_;
  std::vector<std::string> write_failures_;
};

}  // namespace cvve::ui
