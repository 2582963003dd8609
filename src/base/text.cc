#include "base/text.h"

#include <cctype>
#include <cmath>
#include <cstdlib>

#include <unicode/unistr.h>

namespace cvve {

std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to) {
  if (from.empty()) return std::string(text);
  std::string out;
  out.reserve(text.size());
  std::size_t pos = 0;
  while (true) {
    std::size_t hit = text.find(from, pos);
    if (hit == std::string_view::npos) break;
    out.append(text.substr(pos, hit - pos));
    out.append(to);
    pos = hit + from.size();
  }
  out.append(text.substr(pos));
  return out;
}

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> pieces;
  std::size_t start = 0;
  while (true) {
    std::size_t hit = text.find(separator, start);
    if (hit == std::string_view::npos) {
      pieces.emplace_back(text.substr(start));
      return pieces;
    }
    pieces.emplace_back(text.substr(start, hit - start));
    start = hit + 1;
  }
}

std::string ToLower(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

std::string FoldCase(std::string_view text) {
  icu::UnicodeString folded =
      icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
  folded.foldCase();
  std::string out;
  folded.toUTF8String(out);
  return out;
}

std::string ToUpper(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return out;
}

bool EndsWith(std::string_view text, std::string_view suffix) {
  return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

namespace {
// Length of the number at the start of `s` (after blanks), 0 when none.
std::size_t NumberPrefix(std::string_view s, std::size_t start) {
  std::size_t i = start;
  if (i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
  std::size_t digits = 0;
  bool point = false;
  while (i < s.size()) {
    if (std::isdigit(static_cast<unsigned char>(s[i]))) {
      ++digits;
    } else if (s[i] == '.' && !point) {
      point = true;
    } else {
      break;
    }
    ++i;
  }
  return digits == 0 ? 0 : i - start;
}

std::size_t SkipBlanks(std::string_view s, std::size_t i) {
  while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
  return i;
}
}  // namespace

double Val(std::string_view text) {
  std::size_t start = SkipBlanks(text, 0);
  std::size_t len = NumberPrefix(text, start);
  if (len == 0) return 0.0;
  return std::strtod(std::string(text.substr(start, len)).c_str(), nullptr);
}

std::int64_t RoundedVal(std::string_view text) {
  return static_cast<std::int64_t>(std::nearbyint(Val(text)));
}

std::optional<double> StrictNumber(std::string_view text) {
  std::size_t start = SkipBlanks(text, 0);
  std::size_t len = NumberPrefix(text, start);
  if (len == 0) return std::nullopt;
  if (SkipBlanks(text, start + len) != text.size()) return std::nullopt;
  return Val(text);
}

std::string Str(std::int64_t value) { return std::to_string(value); }

}  // namespace cvve
