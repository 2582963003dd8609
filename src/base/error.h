#pragma once
// Failures inside the editor's operations. An operation that fails throws
// cvve::Error (or lets a std::exception through); the operation's own handler
// turns it into the message the user sees, or skips the step where the
// operation runs in resume-on-error mode.
#include <stdexcept>
#include <string>
#include <utility>

namespace cvve {

class Error : public std::runtime_error {
 public:
  explicit Error(const std::string& description) : std::runtime_error(description) {}
};

// Runs one step in resume-on-error mode: a failure is swallowed. Returns
// false when the step failed, so a caller can tell, but need not.
template <class Step>
bool ResumeNext(Step&& step) noexcept {
  try {
    std::forward<Step>(step)();
    return true;
  } catch (...) {
    return false;
  }
}

// The failure's description as the message boxes show it.
inline std::string Describe(const std::exception& e) { return e.what(); }

}  // namespace cvve
