#include "ui/headless_prompter.h"

namespace cvve::ui {

Answer HeadlessPrompter::MsgBox(const std::string& text, Buttons buttons, Icon icon,
                                const std::string& title) {
  ShownPrompt shown{"msgbox", text, title, ToString(buttons), ToString(icon), "", "", true};
  Answer answer = Answer::kOk;
  if (!answers_.empty()) {
    answer = answers_.front();
    answers_.pop_front();
  } else if (buttons == Buttons::kOk) {
    answer = Answer::kOk;  // a plain message needs no answer: not counted as unanswered
    shown.queued = false;
  } else {
    shown.queued = false;
    ++unanswered_;
    answer = (buttons == Buttons::kYesNoCancel || buttons == Buttons::kOkCancel) ? Answer::kCancel
                                                                                 : Answer::kNo;
  }
  shown.answer = ToString(answer);
  shown_.push_back(std::move(shown));
  return answer;
}

std::string HeadlessPrompter::InputBox(const std::string& prompt, const std::string& title,
                                       const std::string& default_text) {
  ShownPrompt shown{"inputbox", prompt, title, "", "", default_text, "", true};
  std::string answer;
  if (!inputs_.empty()) {
    answer = inputs_.front();
    inputs_.pop_front();
  } else {
    shown.queued = false;
    ++unanswered_;
  }
  shown.answer = answer;
  shown_.push_back(std::move(shown));
  return answer;
}

void HeadlessPrompter::ShowNotice(const std::string& title, const std::string& text) {
  notice_open_ = true;
  notice_text_ = text;
  shown_.push_back({"notice", text, title, "", "", "", "", true});
}

}  // namespace cvve::ui
