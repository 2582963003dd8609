#include "script/script_line.h"

#include <gtest/gtest.h>

#include <functional>

#include "base/error.h"

namespace cvve::script {
namespace {

// The message of the Error that `action` throws; "(no error)" when none.
std::string ErrorOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const Error& e) {
    return e.what();
  }
  return "(no error)";
}

TEST(ParseScriptTest, KeepsLineNumbersAndDropsCommentsAndBlankLines) {
  const auto lines = ParseScript(
      "# a comment\n"
      "\n"
      "open acct\r\n"
      "   # an indented comment\n"
      "  select  cmbDataSet   Accounts  \n"
      "state\n"
      "input");
  std::vector<std::string> seen;
  for (const auto& line : lines) {
    seen.push_back(std::to_string(line.number) + "|" + line.command + "|" + line.rest);
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"3|open|acct", "5|select|cmbDataSet   Accounts",
                                            "6|state|", "7|input|"}));
  EXPECT_TRUE(ParseScript("").empty());
  EXPECT_TRUE(ParseScript("\n\n# only\n").empty());
}

TEST(ArgsTest, WordsPlainAndQuoted) {
  const struct {
    const char* rest;
    std::vector<std::string> words;
  } cases[] = {
      {"0 caption \"Start Date:\"", {"0", "caption", "Start Date:"}},
      {R"("say \"hi\"" x)", {"say \"hi\"", "x"}},
      {R"("back\\slash")", {"back\\slash"}},
      {R"("a\nb")", {"a\\nb"}},  // only \" and \\ are escapes
      {"\"\"  next", {"", "next"}},
      {"  lots   of\tblanks ", {"lots", "of", "blanks"}},
  };
  for (const auto& c : cases) {
    Args args(c.rest);
    std::vector<std::string> words;
    while (!args.Empty()) words.push_back(args.Word("word"));
    EXPECT_EQ(words, c.words) << c.rest;
  }
}

TEST(ArgsTest, BadWordsAndLeftoversAreErrors) {
  const struct {
    const char *rest, *message;
  } cases[] = {
      {"", "missing KEY"},
      {"   ", "missing KEY"},
      {"\"open", "unterminated quote"},
      {R"("ends with escape\")", "unterminated quote"},
      {"\"a\"b", "a blank must follow the closing quote"},
  };
  for (const auto& c : cases) {
    Args args(c.rest);
    EXPECT_EQ(ErrorOf([&] { args.Word("KEY"); }), c.message) << c.rest;
  }
  Args args("Yes \"and more\"");
  EXPECT_EQ(args.Word("answer"), "Yes");
  EXPECT_EQ(ErrorOf([&] { args.End(); }), "unexpected argument 'and more'");
  Args done("word");
  done.Word("w");
  EXPECT_EQ(ErrorOf([&] { done.End(); }), "(no error)");
}

TEST(ArgsTest, RestIsOneTextUnquotedOnlyWhenWhollyQuoted) {
  const std::pair<std::string, std::string> cases[] = {{"Past Due 30+", "Past Due 30+"},
                                                       {"  padded  ", "padded"},
                                                       {"\"  kept blanks \"", "  kept blanks "},
                                                       {"\"a\" b", "\"a\" b"},
                                                       {"\"open", "\"open"},
                                                       {"", ""},
                                                       {"\"\"", ""}};
  for (const auto& [rest, text] : cases) {
    Args args(rest);
    EXPECT_EQ(args.Rest(), text) << rest;
    EXPECT_TRUE(args.Empty());
  }
}

}  // namespace
}  // namespace cvve::script
