#include "script/script_line.h"

#include <gtest/gtest.h>

#include "base/error.h"

namespace cvve::script {
namespace {

TEST(ParseScriptTest, KeepsLineNumbersAndDropsCommentsAndBlankLines) {
  const auto lines = ParseScript(
      "# a comment\n"
      "\n"
      "open acct\r\n"
      "   # an indented comment\n"
      "  select  cmbDataSet   Accounts  \n"
      "state\n"
      "input");
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0].number, 3);
  EXPECT_EQ(lines[0].command, "open");
  EXPECT_EQ(lines[0].rest, "acct");
  EXPECT_EQ(lines[1].number, 5);
  EXPECT_EQ(lines[1].command, "select");
  EXPECT_EQ(lines[1].rest, "cmbDataSet   Accounts");
  EXPECT_EQ(lines[2].number, 6);
  EXPECT_EQ(lines[2].rest, "");
  EXPECT_EQ(lines[3].number, 7);
  EXPECT_EQ(lines[3].command, "input");
}

TEST(ParseScriptTest, EmptyScriptHasNoLines) {
  EXPECT_TRUE(ParseScript("").empty());
  EXPECT_TRUE(ParseScript("\n\n# only\n").empty());
}

TEST(ArgsTest, WordsPlainAndQuoted) {
  struct Case {
    const char* rest;
    std::vector<std::string> words;
  };
  const Case cases[] = {
      {"0 caption \"Start Date:\"", {"0", "caption", "Start Date:"}},
      {R"("say \"hi\"" x)", {"say \"hi\"", "x"}},
      {R"("back\\slash")", {"back\\slash"}},
      {R"("a\nb")", {"a\\nb"}},  // only \" and \\ are escapes
      {"\"\"  next", {"", "next"}},
      {"  lots   of\tblanks ", {"lots", "of", "blanks"}},
  };
  for (const Case& c : cases) {
    Args args(c.rest);
    std::vector<std::string> words;
    while (!args.Empty()) words.push_back(args.Word("word"));
    EXPECT_EQ(words, c.words) << c.rest;
  }
}

TEST(ArgsTest, BadWordsAreErrors) {
  struct Case {
    const char* rest;
    const char* message;
  };
  const Case cases[] = {
      {"", "missing KEY"},
      {"   ", "missing KEY"},
      {"\"open", "unterminated quote"},
      {R"("ends with escape\")", "unterminated quote"},
      {"\"a\"b", "a blank must follow the closing quote"},
  };
  for (const Case& c : cases) {
    Args args(c.rest);
    try {
      args.Word("KEY");
      ADD_FAILURE() << "no error for " << c.rest;
    } catch (const Error& e) {
      EXPECT_STREQ(e.what(), c.message) << c.rest;
    }
  }
}

TEST(ArgsTest, RestIsOneTextUnquotedOnlyWhenWhollyQuoted) {
  struct Case {
    const char* rest;
    const char* text;
  };
  const Case cases[] = {
      {"Past Due 30+", "Past Due 30+"},
      {"  padded  ", "padded"},
      {"\"  kept blanks \"", "  kept blanks "},
      {"\"a\" b", "\"a\" b"},
      {"\"open", "\"open"},
      {"", ""},
      {"\"\"", ""},
  };
  for (const Case& c : cases) {
    Args args(c.rest);
    EXPECT_EQ(args.Rest(), c.text) << c.rest;
    EXPECT_TRUE(args.Empty());
  }
}

TEST(ArgsTest, EndRejectsLeftoverWords) {
  Args args("Yes \"and more\"");
  EXPECT_EQ(args.Word("answer"), "Yes");
  try {
    args.End();
    ADD_FAILURE() << "no error";
  } catch (const Error& e) {
    EXPECT_STREQ(e.what(), "unexpected argument 'and more'");
  }
  Args done("word");
  done.Word("w");
  EXPECT_NO_THROW(done.End());
}

}  // namespace
}  // namespace cvve::script
