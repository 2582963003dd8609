#include "reportengine/language/report_definition.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "report_test_support.h"

namespace cvve::reportengine {
namespace {

using testing::CvrShape;
using testing::CvrXml;

// Every element a report uses is read in the runs of the other tests (their
// .cvr files are written by CvrXml); here are what those files never hold.
TEST(ReportDefinitionTest, MissingElementsTakeDefaults) {
  const char* xml = R"(<CustomReport version="1">
  <Name>Past Due</Name>
  <Statement><![CDATA["CQ:SELECT A FROM T WHERE D >= '" + $START_DATE + "'"]]></Statement>
  <Columns><Column><Title>Notes</Title><Field>$BLANK</Field><Format>Currency</Format></Column></Columns>
  <Variables>
    <Variable><Name>END_DATE</Name><Caption>End Date:</Caption><Type>Date</Type></Variable>
    <Variable><Name></Name><Caption>Nothing</Caption></Variable>
  </Variables>
  <Totals>1</Totals><Averages>0</Averages>
  <Unknown>later versions may add elements</Unknown>
</CustomReport>)";
  const ReportDefinition def = ParseReportDefinition(xml, "past.cvr");
  EXPECT_EQ(def.statement, R"("CQ:SELECT A FROM T WHERE D >= '" + $START_DATE + "'")");
  EXPECT_FALSE(def.grouped);
  ASSERT_EQ(def.columns.size(), 1u);
  EXPECT_TRUE(def.columns[0].Computed());
  EXPECT_EQ(def.columns[0].width, 1440);         // one inch
  EXPECT_EQ(def.columns[0].alignment, "Right");  // numbers to the right
  ASSERT_EQ(def.variables.size(), 1u);           // the nameless one is dropped
  EXPECT_EQ(def.variables[0].name, "$END_DATE");
  EXPECT_TRUE(def.totals);
  EXPECT_FALSE(def.averages);
  EXPECT_FALSE(def.line_count);
  EXPECT_EQ(def.page_size, PageSize::kLetter);
  EXPECT_EQ(def.orientation, PageOrientation::kPortrait);
}

// Which columns are summed and averaged: the file's Total and Average, else
// the rule of the column's format (money summed, every number averaged).
TEST(ReportDefinitionTest, ColumnSummariesFollowTheFileElseTheFormat) {
  const struct {
    std::string format, total, average;  // "" leaves the element out
    bool summed, averaged;
  } cases[] = {
      {"Currency", "", "", true, true},   {"currency", "", "", true, true},
      {"Number", "", "", false, true},    {"Integer", "", "", false, true},
      {"Date", "", "", false, false},     {"String", "", "", false, false},
      {"", "", "", false, false},         {"Integer", "1", "0", true, false},
      {"Currency", "0", "", false, true}, {"String", "1", "1", true, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.format + "/" + c.total + "/" + c.average);
    CvrShape shape;
    shape.statement = R"("CQ:SELECT 1")";
    shape.columns = {{"A", "T.A", c.format, "Left", 1440, c.total, c.average}};
    const ReportDefinition def = ParseReportDefinition(CvrXml(shape), "r.cvr");
    EXPECT_EQ(def.columns[0].total, c.summed);
    EXPECT_EQ(def.columns[0].average, c.averaged);
    shape.totals = shape.averages = true;
    const ReportDefinition asked = ParseReportDefinition(CvrXml(shape), "r.cvr");
    EXPECT_EQ(asked.TotalsRow(), c.summed);
    EXPECT_EQ(asked.AveragesRow(), c.averaged);
    EXPECT_FALSE(def.TotalsRow());  // the report does not ask for the rows
  }
  CvrShape bad;
  bad.statement = R"("CQ:SELECT 1")";
  bad.columns = {{"A", "T.A", "Currency", "Left", 1440, "yes"}};
  try {
    ParseReportDefinition(CvrXml(bad), "r.cvr");
    ADD_FAILURE() << "a Total of 'yes' was taken";
  } catch (const Error& e) {
    EXPECT_NE(std::string(e.what()).find("Total is 'yes', not 1 or 0"), std::string::npos)
        << e.what();
  }
}

// The column that shows a grouped report's value, by its report field.
TEST(ReportDefinitionTest, GroupColumnIsTheOneShowingTheGroupValue) {
  const struct {
    bool grouped;
    std::string group_report_field;
    int expected;
  } cases[] = {{true, "INV_INFO.B", 1}, {true, "inv_info.b", 1}, {true, "INV_INFO.Z", -1},
               {false, "INV_INFO.B", -1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.group_report_field);
    CvrShape shape;
    shape.statement = R"("CQ:SELECT 1")";
    shape.grouped = c.grouped;
    shape.group_report_field = c.group_report_field;
    shape.group_statement = R"("CQ:SELECT 1")";
    shape.columns = {{"A", "T.A", "String"}, {"B", "T.B", "String"}};
    EXPECT_EQ(ParseReportDefinition(CvrXml(shape), "r.cvr").GroupColumn(), c.expected);
  }
}

TEST(ReportDefinitionTest, UnusableFilesNameFileAndPlace) {
  CvrShape good;
  good.statement = R"("CQ:SELECT 1")";
  good.columns = {{"A", "T.A", "String"}};
  const std::string valid = CvrXml(good);
  auto with = [&](const std::string& from, const std::string& to) {
    std::string xml = valid;
    const std::size_t at = xml.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return xml.replace(at, from.size(), to);
  };
  const std::pair<std::string, std::string> cases[] = {
      // xml, message
      {"<CustomReport><Name>x</Name>", "r.cvr: line 1, column 28: Start-end tags mismatch"},
      {"<CustomReport>\n  <Name>x</Nam>\n</CustomReport>",
       "r.cvr: line 2, column 12: Start-end tags mismatch"},
      {"", "r.cvr: line 1, column 1: No document element found"},
      {"<CustomReport>\n<Name>x</Name>\n<Statement>\"CQ:\"</Statement>\n"
       "<Columns><Column><Title>A</Title></Column></Columns>\n<PageSize>9</PageSize>\n"
       "</CustomReport>",
       "r.cvr: line 5, column 1: PageSize is '9', not 0 (Letter), 1 (Legal), 2 (A4) or 3 (Ledger)"},
      {"<?xml version=\"1.0\"?>\n<Views/>",
       "r.cvr: line 2, column 1: the root element is <Views>, not <CustomReport>: this is no "
       "report definition"},
      {with("<PageOrientation>0</PageOrientation>", "<PageOrientation>x</PageOrientation>"),
       "PageOrientation is 'x', not 0 (Portrait) or 1 (Landscape)"},
      {with("<Totals>0</Totals>", "<Totals>yes</Totals>"), "Totals is 'yes', not 1 or 0"},
      {with("<Width>1440</Width>", "<Width>-5</Width>"), "Width is '-5', not a width in twips"},
      {with("<Statement>\"CQ:SELECT 1\"</Statement>", "<Statement> </Statement>"),
       "the report has no Statement"},
      {with("<Grouped>0</Grouped>", "<Grouped>1</Grouped>"),
       "the report is grouped but has no GroupStatement"},
      {with(valid.substr(valid.find("<Columns>"),
                         valid.find("</Columns>") + 10 - valid.find("<Columns>")),
            "<Columns/>"),
       "the report has no Columns/Column"},
  };
  for (const auto& [xml, part] : cases) {
    SCOPED_TRACE(xml);
    try {
      ParseReportDefinition(xml, "r.cvr");
      ADD_FAILURE() << "accepted";
    } catch (const Error& e) {
      const std::string message = e.what();
      EXPECT_NE(message.find(part), std::string::npos) << message;
      EXPECT_EQ(message.rfind("r.cvr: ", 0), 0u) << message;
    }
  }
}

}  // namespace
}  // namespace cvve::reportengine
