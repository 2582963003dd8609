#include "script/script_line.h"

#include "base/error.h"

namespace cvve::script {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

// Reads one word off the front of `text` (no leading blanks); advances it.
std::string ReadWord(std::string_view& text) {
  std::string word;
  if (text.front() != '"') {
    std::size_t end = 0;
    while (end < text.size() && !IsBlank(text[end])) ++end;
    word.assign(text.substr(0, end));
    text.remove_prefix(end);
    return word;
  }
  std::size_t i = 1;
  for (; i < text.size(); ++i) {
    char c = text[i];
    if (c == '"') break;
    if (c == '\\' && i + 1 < text.size() && (text[i + 1] == '"' || text[i + 1] == '\\')) {
      word += text[++i];
    } else {
      word += c;
    }
  }
  if (i >= text.size()) throw Error("unterminated quote");
  text.remove_prefix(i + 1);
  if (!text.empty() && !IsBlank(text.front())) {
    throw Error("a blank must follow the closing quote");
  }
  return word;
}

}  // namespace

std::vector<ScriptLine> ParseScript(std::string_view text) {
  std::vector<ScriptLine> lines;
  int number = 0;
  for (std::size_t start = 0; start <= text.size();) {
    ++number;
    std::size_t end = text.find('\n', start);
    if (end == std::string_view::npos) end = text.size();
    std::string_view line = Trim(text.substr(start, end - start));
    start = end + 1;
    if (line.empty() || line.front() == '#') continue;
    std::size_t split = 0;
    while (split < line.size() && !IsBlank(line[split])) ++split;
    lines.push_back(
        {number, std::string(line.substr(0, split)), std::string(Trim(line.substr(split)))});
  }
  return lines;
}

bool Args::Empty() const { return Trim(rest_).empty(); }

std::string Args::Word(const std::string& what) {
  rest_ = Trim(rest_);
  if (rest_.empty()) throw Error("missing " + what);
  return ReadWord(rest_);
}

std::string Args::Rest() {
  std::string_view all = Trim(rest_);
  rest_ = {};
  if (!all.empty() && all.front() == '"') {
    std::string_view probe = all;
    try {
      std::string word = ReadWord(probe);
      if (Trim(probe).empty()) return word;
    } catch (const Error&) {
      // Not one quoted word: the text stands as it is.
    }
  }
  return std::string(all);
}

std::string Args::Raw() {
  std::string all(Trim(rest_));
  rest_ = {};
  return all;
}

void Args::End() const {
  std::string_view left = Trim(rest_);
  if (left.empty()) return;
  std::string_view probe = left;
  std::string word;
  try {
    word = ReadWord(probe);
  } catch (const Error&) {
    word = std::string(left);
  }
  throw Error("unexpected argument '" + word + "'");
}

}  // namespace cvve::script
