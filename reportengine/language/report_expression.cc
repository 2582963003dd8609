#include "reportengine/language/report_expression.h"

#include <algorithm>
#include <cctype>

#include "base/error.h"
#include "base/text.h"
#include "variables/variable_values.h"

namespace cvve::reportengine {

namespace {

bool IsNameChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

class Parser {
 public:
  Parser(std::string_view text, const ExpressionContext& context)
      : text_(text), context_(context) {}

  Evaluation Run() {
    Evaluation result;
    SkipBlanks();
    if (AtEnd()) Fail(pos_, "the expression is empty");
    while (true) {
      Term(result);
      SkipBlanks();
      if (AtEnd()) break;
      if (text_[pos_] != '+') Fail(pos_, "expected '+' between terms, found " + Found());
      ++pos_;
      SkipBlanks();
      if (AtEnd()) Fail(pos_, "expected a term after '+', found the end");
    }
    return result;
  }

 private:
  bool AtEnd() const { return pos_ >= text_.size(); }

  void SkipBlanks() {
    while (!AtEnd() && std::isspace(static_cast<unsigned char>(text_[pos_]))) ++pos_;
  }

  std::string Found() const {
    if (AtEnd()) return "the end";
    return std::string{'\'', text_[pos_], '\''};
  }

  // Positions count characters: UTF-8 continuation bytes are not counted.
  [[noreturn]] void Fail(std::size_t at, const std::string& message) const {
    const std::size_t end = std::min(at, text_.size());
    const auto column = 1 + std::count_if(text_.begin(), text_.begin() + end, [](char c) {
                          return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
                        });
    std::string text = "position ";
    text.append(std::to_string(column)).append(": ").append(message);
    throw Error(text);
  }

  void Term(Evaluation& result) {
    const char c = text_[pos_];
    if (c == '"') {
      Literal(result.value);
    } else if (c == '$') {
      Variable(result);
    } else if (text_.size() - pos_ >= 3 && ToUpper(text_.substr(pos_, 3)) == "FXA" &&
               (text_.size() - pos_ == 3 || !IsNameChar(text_[pos_ + 3]))) {
      Fxa(result.value);
    } else {
      Fail(pos_,
           "expected a string in double quotes, a $variable or FXA([field]), found " + Found());
    }
  }

  void Literal(std::string& out) {
    const std::size_t start = pos_;
    ++pos_;
    while (true) {
      const std::size_t quote = text_.find('"', pos_);
      if (quote == std::string_view::npos) Fail(start, "the string is not closed");
      out.append(text_.substr(pos_, quote - pos_));
      pos_ = quote + 1;
      if (pos_ < text_.size() && text_[pos_] == '"') {
        out.push_back('"');
        ++pos_;
      } else {
        return;
      }
    }
  }

  void Variable(Evaluation& result) {
    const std::size_t start = pos_;
    ++pos_;
    while (!AtEnd() && IsNameChar(text_[pos_])) ++pos_;
    if (pos_ == start + 1) Fail(start, "'$' is not followed by a variable name");
    const std::string name(text_.substr(start, pos_ - start));
    std::optional<std::string> value;
    if (context_.variable) value = context_.variable(name);
    if (value) {
      result.value += *value;
    } else if (std::find(result.missing.begin(), result.missing.end(), name) ==
               result.missing.end()) {
      result.missing.push_back(name);
    }
  }

  void Expect(char c, const char* what) {
    SkipBlanks();
    if (AtEnd() || text_[pos_] != c)
      Fail(pos_, std::string("expected ") + what + " in FXA, found " + Found());
    ++pos_;
  }

  void Fxa(std::string& out) {
    const std::size_t start = pos_;
    pos_ += 3;
    Expect('(', "'('");
    Expect('[', "'['");
    const std::size_t close = text_.find(']', pos_);
    if (close == std::string_view::npos) Fail(pos_, "the field name in FXA is not closed by ']'");
    std::string field(text_.substr(pos_, close - pos_));
    field.erase(0, field.find_first_not_of(' '));
    field.erase(field.find_last_not_of(' ') + 1);
    if (field.empty()) Fail(pos_, "FXA names no field");
    pos_ = close + 1;
    Expect(')', "')'");
    std::optional<std::string> value;
    if (context_.fxa) value = context_.fxa(field);
    if (!value)
      Fail(start, "FXA([" + field +
                      "]) has no value here: only the group field of a grouped report has one");
    out += *value;
  }

  std::string_view text_;
  const ExpressionContext& context_;
  std::size_t pos_ = 0;
};

}  // namespace

Evaluation EvaluateExpression(std::string_view expression, const ExpressionContext& context) {
  return Parser(expression, context).Run();
}

std::optional<std::string> IsoDate(std::string_view text) { return IsoFromDate(text); }

std::string PrepareStatement(std::string_view value, std::string_view user_where) {
  std::string statement = ReplaceAll(value, "CQ:", "");
  statement = ReplaceAll(statement, "#@!", "<");
  statement = ReplaceAll(statement, "!@#", ">");
  statement = ReplaceAll(statement, "%USERWHERE%", user_where.empty() ? "1=1" : user_where);
  // Date literals in hash marks (the group key mark of Date columns) become
  // the quoted ISO dates the database compares with.
  std::string out;
  out.reserve(statement.size());
  std::size_t pos = 0;
  while (pos < statement.size()) {
    const std::size_t open = statement.find('#', pos);
    if (open == std::string::npos) break;
    const std::size_t close = statement.find('#', open + 1);
    if (close == std::string::npos) break;
    const std::optional<std::string> iso =
        IsoDate(std::string_view(statement).substr(open + 1, close - open - 1));
    if (iso) {
      out.append(statement, pos, open - pos);
      out += "'" + *iso + "'";
      pos = close + 1;
    } else {
      out.append(statement, pos, close - pos);
      pos = close;
    }
  }
  out.append(statement, pos, std::string::npos);
  return out;
}

}  // namespace cvve::reportengine
