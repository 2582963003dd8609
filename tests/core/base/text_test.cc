#include "base/text.h"

#include <gtest/gtest.h>

namespace cvve {
namespace {

TEST(TextTest, ReplaceAllDoesNotRescanWhatItInserted) {
  struct Case {
    const char *text, *from, *to, *want;
  } cases[] = {
      {"a<b<c", "<", "#@!", "a#@!b#@!c"},
      {"aaa", "a", "aa", "aaaaaa"},
      {"CQ:CQ:x", "CQ:", "", "x"},
      {"abc", "", "x", "abc"},
      {"", "a", "b", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(ReplaceAll(c.text, c.from, c.to), c.want) << c.text;
}

TEST(TextTest, SplitKeepsEmptyPieces) {
  EXPECT_EQ(Split("1|a||x|2|30", '|').size(), 6u);
  EXPECT_EQ(Split("", '|'), std::vector<std::string>{""});
  EXPECT_EQ(Split("a|", '|'), (std::vector<std::string>{"a", ""}));
}

TEST(TextTest, NumbersAreLenient) {
  struct Case {
    const char* text;
    double val;
    bool strict;
  } cases[] = {{"", 0, false},     {"12", 12, true},   {" 7 ", 7, true},  {"3abc", 3, false},
               {"abc", 0, false},  {"-2.5", -2.5, true}, {"1.5.1", 1.5, false}};
  for (const auto& c : cases) {
    EXPECT_DOUBLE_EQ(Val(c.text), c.val) << c.text;
    EXPECT_EQ(StrictNumber(c.text).has_value(), c.strict) << c.text;
  }
  EXPECT_EQ(RoundedVal("2.5"), 2);  // half to even
  EXPECT_EQ(RoundedVal("3.5"), 4);
}

TEST(TextTest, FoldCaseMakesEveryLetterCaseCompareEqual) {
  const struct {
    const char* a;
    const char* b;
    bool same;
  } kCases[] = {
      {"MÜLLER", "müller", true},
      {"Müller", "MÜLLER", true},
      {"STRASSE", "Straße", true},           // ß folds to "ss"
      {"ΣΊΣΥΦΟΣ", "σίσυφος", true},          // final sigma folds as sigma
      {"ÅNGSTRÖM", "ångström", true},
      {"İ", "i", false},                      // dotted capital I is not plain i
      {"Muller", "Müller", false},            // an accent is not a case
      {"O'Brien & Sons", "o'brien & sons", true},
      {"", "", true},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.a) + " / " + c.b);
    EXPECT_EQ(FoldCase(c.a) == FoldCase(c.b), c.same);
  }
  // Text that is not UTF-8 still folds, without reading past its end.
  EXPECT_EQ(FoldCase(std::string_view("AB\xff", 3)), "ab\xEF\xBF\xBD");
}

}  // namespace
}  // namespace cvve
