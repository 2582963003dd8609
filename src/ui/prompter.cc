#include "ui/prompter.h"

namespace cvve::ui {

const char* ToString(Buttons buttons) {
  switch (buttons) {
    case Buttons::kOk: return "OK";
    case Buttons::kOkCancel: return "OKCancel";
    case Buttons::kYesNo: return "YesNo";
    case Buttons::kYesNoCancel: return "YesNoCancel";
  }
  return "";
}

const char* ToString(Icon icon) {
  switch (icon) {
    case Icon::kNone: return "none";
    case Icon::kCritical: return "critical";
    case Icon::kQuestion: return "question";
    case Icon::kExclamation: return "exclamation";
    case Icon::kInformation: return "information";
  }
  return "";
}

const char* ToString(Answer answer) {
  switch (answer) {
    case Answer::kOk: return "OK";
    case Answer::kCancel: return "Cancel";
    case Answer::kYes: return "Yes";
    case Answer::kNo: return "No";
  }
  return "";
}

}  // namespace cvve::ui
