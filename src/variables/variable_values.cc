#include "variables/variable_values.h"

#include <cstdio>
#include <vector>

#include "base/text.h"

namespace cvve {

namespace {

bool Digits(std::string_view text, std::size_t min, std::size_t max) {
  if (text.size() < min || text.size() > max) return false;
  for (const char c : text) {
    if (c < '0' || c > '9') return false;
  }
  return true;
}

int Number(std::string_view text) {
  int value = 0;
  for (const char c : text) value = value * 10 + (c - '0');
  return value;
}

int DaysIn(int year, int month) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return month == 2 && leap ? 29 : kDays[month - 1];
}

}  // namespace

std::optional<std::string> IsoFromDate(std::string_view text) {
  const std::vector<std::string> dashed = Split(text, '-');
  const std::vector<std::string> slashed = Split(text, '/');
  int year = 0, month = 0, day = 0;
  if (dashed.size() == 3 && Digits(dashed[0], 4, 4) && Digits(dashed[1], 2, 2) &&
      Digits(dashed[2], 2, 2)) {
    year = Number(dashed[0]);
    month = Number(dashed[1]);
    day = Number(dashed[2]);
  } else if (slashed.size() == 3 && Digits(slashed[0], 1, 2) && Digits(slashed[1], 1, 2) &&
             Digits(slashed[2], 4, 4)) {
    month = Number(slashed[0]);
    day = Number(slashed[1]);
    year = Number(slashed[2]);
  } else {
    return std::nullopt;
  }
  if (year < 1 || month < 1 || month > 12 || day < 1 || day > DaysIn(year, month)) {
    return std::nullopt;
  }
  char buffer[48];  // room for any int, which the compiler cannot rule out
  std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", year, month, day);
  return std::string(buffer);
}

std::optional<std::string> VariableValueProblem(std::string_view type, std::string_view value) {
  for (const char c : value) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
      return "one line of text without control characters";
    }
  }
  const std::string kind = ToLower(type);
  if (kind == "date" && !IsoFromDate(value)) {
    return "a date: give a real date as MM/DD/YYYY or YYYY-MM-DD";
  }
  if (kind == "check") {
    const std::string flag = ToLower(value);
    if (flag != "0" && flag != "1" && flag != "-1" && flag != "true" && flag != "false") {
      return "a check: give 1 or True (checked), 0 or False (clear)";
    }
  }
  return std::nullopt;
}

std::string BadVariableMessage(std::string_view name, std::string_view value,
                               std::string_view problem) {
  std::string shown(name);
  if (shown.empty() || shown[0] != '$') shown.insert(shown.begin(), '$');
  return "the value '" + std::string(value) + "' of the variable " + shown + " is not " +
         std::string(problem);
}

}  // namespace cvve
