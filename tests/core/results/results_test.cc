// How rows are laid out for a terminal, for CSV and for scripts, and how the
// place of a database error is shown.
#include "results/results.h"

#include <gtest/gtest.h>

namespace cvve::results {
namespace {

TEST(ResultsLayout, AlignedTablePadsColumnsAndRightAlignsAmounts) {
  const std::string text = AlignedTable(
      {"Name", "Balance"}, {{"Ñúñez", "$1,234.50"}, {"Li", "$9.00"}, {"Ott", ""}}, {false, true});
  EXPECT_EQ(text,
            "Name   Balance\n"
            "-----  ---------\n"
            "Ñúñez  $1,234.50\n"
            "Li         $9.00\n"
            "Ott\n");
}

TEST(ResultsLayout, AmountFormatsAreTheNumericOnes) {
  for (const char* format : {"Currency", "number", "INTEGER"}) EXPECT_TRUE(IsAmountFormat(format));
  for (const char* format : {"String", "Date", ""}) EXPECT_FALSE(IsAmountFormat(format));
}

TEST(ResultsLayout, AlignedTableWithoutRowsKeepsHeaderAndRule) {
  EXPECT_EQ(AlignedTable({"A", "Long"}, {}), "A  Long\n-  ----\n");
}

TEST(ResultsLayout, CsvQuotesOnlyWhatNeedsIt) {
  EXPECT_EQ(CsvTable({"Name", "Note"}, {{"O'Brien", "said \"hi\", left"}, {"a\nb", "x"}}),
            "Name,Note\r\nO'Brien,\"said \"\"hi\"\", left\"\r\n\"a\nb\",x\r\n");
}

TEST(ResultsLayout, ErrorExcerptPointsAtTheByte) {
  struct Case {
    std::string statement;
    long long position;
    std::size_t width;
    std::string expected;
  };
  const Case cases[] = {
      {"SELECT a FROM t WHERE x LIKE 'O'Brien%'", 31, 40,
       "SELECT a FROM t WHERE x LIKE 'O'Brien%'\n" + std::string(31, ' ') + "^"},
      {"SELECT a FROM t WHERE b > abc", 26, 5, "... b > abc\n" + std::string(8, ' ') + "^"},
      // Line breaks become blanks so that the caret stays under its byte.
      {"SELECT a\nFROM t", 9, 3, "... a FRO...\n" + std::string(6, ' ') + "^"},
      // Characters, not bytes, before the caret.
      {"é = x", 4, 10, "é = x\n   ^"},
      {"short", -1, 10, ""},
      {"end", 99, 10, "end\n   ^"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ErrorExcerpt(c.statement, c.position, c.width), c.expected) << c.statement;
  }
}

TEST(ResultsLayout, JsonKeepsTypesAndNamesTheErrorPlace) {
  Table table;
  table.columns = {"Acct", "Balance", "Note"};
  table.rows = {{Cell{7LL}, Cell{12.5}, Cell{std::monostate{}}}, {Cell{8LL}, Cell{0.0}, Cell{"x"}}};
  table.count = 41;
  table.millis = 3;
  const nlohmann::json ok = ToJson(table);
  EXPECT_EQ(ok.dump(), R"({"columns":["Acct","Balance","Note"],"count":41,"error":null,)"
                       R"("millis":3,"rows":[[7,12.5,null],[8,0.0,"x"]]})");

  Table failed;
  failed.statement = "SELECT nope";
  failed.error = "no such column: nope";
  failed.error_position = 7;
  const nlohmann::json bad = ToJson(failed);
  EXPECT_EQ(bad["error"], "no such column: nope");
  EXPECT_EQ(bad["position"], 7);
  EXPECT_EQ(bad["statement"], "SELECT nope");
  EXPECT_TRUE(bad["rows"].empty());
}

TEST(ResultsLayout, CellTextIsTheValueUnformatted) {
  EXPECT_EQ(CellText(Cell{std::monostate{}}), "");
  EXPECT_EQ(CellText(Cell{-3LL}), "-3");
  EXPECT_EQ(CellText(Cell{2.25}), "2.25");
  EXPECT_EQ(CellText(Cell{std::string("2026-03-01")}), "2026-03-01");
}

}  // namespace
}  // namespace cvve::results
