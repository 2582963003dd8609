#pragma once
// The lines and argument words of a `viewedit script`. One command a line;
// blank lines and lines whose first non-blank character is "#" are skipped.
// Words are separated by blanks; a word may be double-quoted to hold blanks,
// with \" and \\ as its only escapes.
#include <string>
#include <string_view>
#include <vector>

namespace cvve::script {

struct ScriptLine {
  int number = 0;       // 1-based line number in the script
  std::string command;  // the first word
  std::string rest;     // what follows it, blanks trimmed at both ends
};

// The command lines of a script, in order. Never fails.
std::vector<ScriptLine> ParseScript(std::string_view text);

// Takes argument words off the front of a line's rest. Every failure throws
// cvve::Error naming what is missing or wrong.
class Args {
 public:
  explicit Args(std::string_view rest) : rest_(rest) {}
  // True when nothing but blanks is left.
  bool Empty() const;
  // The next word, unquoted. Throws "missing WHAT" when none is left and
  // "unterminated quote" for an open quote.
  std::string Word(const std::string& what);
  // All that is left as one text ("" when nothing): a single quoted word is
  // unquoted, anything else is taken as it stands, blanks trimmed.
  std::string Rest();
  // All that is left exactly as written, blanks trimmed ("" when nothing).
  std::string Raw();
  // Throws "unexpected argument 'X'" when words are left over.
  void End() const;

 private:
  std::string_view rest_;
};

}  // namespace cvve::script
