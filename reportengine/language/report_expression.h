#pragma once
// The report language: double-quoted literals ("" stands for one quote)
// joined with "+", variables $NAME and FXA([FIELD]), the current group's
// value of a report field. Blanks between terms are ignored.
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cvve::reportengine {

struct ExpressionContext {
  // The value of a variable (name with its "$"); nothing when it has none,
  // which evaluates to "" and is listed in Evaluation::missing.
  std::function<std::optional<std::string>(std::string_view name)> variable;
  // The current group's value of a report field; nothing when the field has
  // no value here (an ungrouped report, another field): an error.
  std::function<std::optional<std::string>(std::string_view field)> fxa;
};

struct Evaluation {
  std::string value;
  std::vector<std::string> missing;  // variables without a value, in order of first use
};

// Throws cvve::Error "position N: ..." (1-based, in characters) for text
// that is no expression, an unterminated literal, a variable without a name,
// a malformed or unanswerable FXA call.
Evaluation EvaluateExpression(std::string_view expression, const ExpressionContext& context);

// The statement the engine runs from an expression's value: every "CQ:"
// removed, the stored escapes "#@!" and "!@#" turned back into "<" and ">",
// "%USERWHERE%" replaced by the host's condition ("1=1" when empty), and
// date literals #MM/DD/YYYY# or #YYYY-MM-DD# turned into 'YYYY-MM-DD'.
std::string PrepareStatement(std::string_view value, std::string_view user_where);

// A date as the database keeps it ("YYYY-MM-DD") from MM/DD/YYYY, M/D/YYYY
// or YYYY-MM-DD; nothing for any other text or a day the calendar lacks.
std::optional<std::string> IsoDate(std::string_view text);

}  // namespace cvve::reportengine
