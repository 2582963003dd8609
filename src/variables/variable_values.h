#pragma once
// What a report variable's value must look like for its type, checked before
// a report runs so that a mistyped value never reaches the database.
#include <optional>
#include <string>
#include <string_view>

namespace cvve {

// A real calendar date written YYYY-MM-DD or MM/DD/YYYY (M/D/YYYY too), as
// YYYY-MM-DD; nothing for anything else (13/45/2026, 02/31/2026, tomorrow).
std::optional<std::string> IsoFromDate(std::string_view text);

// Why `value` does not suit a variable of `type` (the types of the variables
// dialog: Date, Check, Text, Account ...); nothing when it does. An empty
// value is left to the caller (it means "no value"). Date must be a real
// date, Check one of 0, 1, -1, True, False; no value may hold a line break or
// another control character.
std::optional<std::string> VariableValueProblem(std::string_view type, std::string_view value);

// "the value '13/45/2026' of the variable $START_DATE is not ...".
std::string BadVariableMessage(std::string_view name, std::string_view value,
                               std::string_view problem);

}  // namespace cvve
