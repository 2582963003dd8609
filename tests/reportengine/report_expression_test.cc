#include "reportengine/language/report_expression.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <tuple>

#include "base/error.h"

namespace cvve::reportengine {
namespace {

ExpressionContext Context(std::optional<std::string> group_value = std::nullopt) {
  static const std::map<std::string, std::string> kVariables = {
      {"$START_DATE", "2026-03-01"}, {"$NAME", "O\"Neil"}, {"$EMPTY", ""}};
  ExpressionContext context;
  context.variable = [](std::string_view name) -> std::optional<std::string> {
    const auto it = kVariables.find(std::string(name));
    if (it == kVariables.end()) return std::nullopt;
    return it->second;
  };
  context.fxa = [group_value](std::string_view field) -> std::optional<std::string> {
    if (!group_value || field != "INV_INFO.Collector") return std::nullopt;
    return *group_value;
  };
  return context;
}

TEST(ReportExpressionTest, EvaluatesWellFormedExpressions) {
  const std::pair<const char*, const char*> cases[] = {
      {R"("abc")", "abc"},
      {R"("")", ""},
      {R"("say ""hi""")", R"(say "hi")"},
      {R"("""")", R"(")"},
      {R"("a" + "b")", "ab"},
      {R"(  "a"+"b"  +   "c" )", "abc"},
      {R"("x >= '" + $START_DATE + "'")", "x >= '2026-03-01'"},
      {R"($NAME)", R"(O"Neil)"},
      {R"("[" + $EMPTY + "]")", "[]"},
      {R"("C='" + FXA([INV_INFO.Collector]) + "'")", "C='alice'"},
      {R"("C='" + fxa ( [ INV_INFO.Collector ] ) + "'")", "C='alice'"},
      {"\"line\none\"", "line\none"},
      {R"("a+b" + "$NOT_A_VARIABLE")", "a+b$NOT_A_VARIABLE"},
  };
  for (const auto& [expression, value] : cases) {
    const Evaluation result = EvaluateExpression(expression, Context("alice"));
    EXPECT_EQ(result.value, value) << expression;
    EXPECT_TRUE(result.missing.empty()) << expression;
  }
}

TEST(ReportExpressionTest, VariableWithoutValueIsEmptyAndListedOnce) {
  const Evaluation result =
      EvaluateExpression(R"("a" + $END_DATE + "b" + $END_DATE + $OTHER)", Context());
  EXPECT_EQ(result.value, "ab");
  EXPECT_EQ(result.missing, (std::vector<std::string>{"$END_DATE", "$OTHER"}));
}

TEST(ReportExpressionTest, MalformedInputNamesThePosition) {
  const std::string term = "expected a string in double quotes, a $variable or FXA([field]), ";
  const std::pair<const char*, std::string> cases[] = {
      {"", "position 1: the expression is empty"},
      {R"("abc)", "position 1: the string is not closed"},
      {R"("a" + "b)", "position 7: the string is not closed"},
      {R"("a" "b")", "position 5: expected '+' between terms, found '\"'"},
      {R"("a" +)", "position 6: expected a term after '+', found the end"},
      {R"("a" + + "b")", "position 7: " + term + "found '+'"},
      {R"('a')", "position 1: " + term + "found '''"},
      {R"(FXAB([X]))", "position 1: " + term + "found 'F'"},
      {R"("é" + x)", "position 7: " + term + "found 'x'"},  // characters, not bytes
      {R"("a" + $)", "position 7: '$' is not followed by a variable name"},
      {R"(FXA[INV_INFO.Collector])", "position 4: expected '(' in FXA, found '['"},
      {R"(FXA(INV_INFO.Collector))", "position 5: expected '[' in FXA, found 'I'"},
      {R"(FXA([INV_INFO.Collector)", "position 6: the field name in FXA is not closed by ']'"},
      {R"(FXA([INV_INFO.Collector])", "position 25: expected ')' in FXA, found the end"},
      {R"(FXA([]))", "position 6: FXA names no field"},
      {R"("x" + FXA([INV_INFO.Salesman]))",
       "position 7: FXA([INV_INFO.Salesman]) has no value here: only the group field of a "
       "grouped report has one"},
  };
  for (const auto& [expression, message] : cases) {
    SCOPED_TRACE(expression);
    try {
      EvaluateExpression(expression, Context("alice"));
      ADD_FAILURE() << "no error";
    } catch (const Error& e) {
      EXPECT_EQ(e.what(), message);
    }
  }
}

TEST(ReportExpressionTest, PrepareStatementUndoesTheStoredForms) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      // value, user where, statement
      {"CQ:SELECT 1", "", "SELECT 1"},
      {"CQ:SELECT * FROM T WHERE A #@! 5 AND B !@# 2", "", "SELECT * FROM T WHERE A < 5 AND B > 2"},
      {"CQ:SELECT * FROM T WHERE %USERWHERE%", "", "SELECT * FROM T WHERE 1=1"},
      {"CQ:SELECT * FROM T WHERE %USERWHERE% AND %USERWHERE%", "C='bob'",
       "SELECT * FROM T WHERE C='bob' AND C='bob'"},
      {"CQ:SELECT * FROM T WHERE D=#3/5/2026# OR E=#2025-12-31#", "",
       "SELECT * FROM T WHERE D='2026-03-05' OR E='2025-12-31'"},
      // Hash marks around anything else stay.
      {"CQ:SELECT '#1' || '#2', '#13/40/2026#' FROM T WHERE D=#2026-01-02#", "",
       "SELECT '#1' || '#2', '#13/40/2026#' FROM T WHERE D='2026-01-02'"},
      {"CQ:", "", ""},
  };
  for (const auto& [value, user_where, statement] : cases) {
    EXPECT_EQ(PrepareStatement(value, user_where), statement) << value;
  }
}

}  // namespace
}  // namespace cvve::reportengine
