#include "reportengine/report_definition.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "report_test_support.h"

namespace cvve::reportengine {
namespace {

using testing::CvrSpec;
using testing::CvrXml;

TEST(ReportDefinitionTest, ReadsEveryElement) {
  const char* xml = R"(<?xml version="1.0" encoding="UTF-8"?>
<CustomReport version="1">
  <Name>Past Due</Name>
  <DataSet>Accounts</DataSet>
  <Statement><![CDATA["CQ:SELECT A FROM T WHERE D >= '" + $START_DATE + "'"]]></Statement>
  <Grouped>1</Grouped>
  <GroupField>ACCTS.Salesman</GroupField>
  <GroupReportField>INV_INFO.Salesman</GroupReportField>
  <GroupFormat>String</GroupFormat>
  <GroupTitle>Salesperson</GroupTitle>
  <GroupStatement>"CQ:SELECT DISTINCT S FROM T"</GroupStatement>
  <Columns>
    <Column><Title>Account</Title><Field>ACCTS.AcctNum</Field><ReportField>INV_INFO.AcctNum</ReportField>
      <Alignment>Left</Alignment><Format>String</Format><Width>1200</Width></Column>
    <Column><Title>Notes</Title><Field>$BLANK</Field><Format>Currency</Format></Column>
  </Columns>
  <Variables>
    <Variable><Name>$START_DATE</Name><Caption>Start Date:</Caption><Type>Date</Type></Variable>
    <Variable><Name>END_DATE</Name><Caption>End Date:</Caption><Type>Date</Type></Variable>
    <Variable><Name></Name><Caption>Nothing</Caption></Variable>
  </Variables>
  <Totals>1</Totals><Averages>0</Averages><LineCount>1</LineCount>
  <PageSize>3</PageSize><PageOrientation>1</PageOrientation><MultiLine>1</MultiLine>
  <Unknown>later versions may add elements</Unknown>
</CustomReport>)";
  const ReportDefinition def = ParseReportDefinition(xml, "past.cvr");
  EXPECT_EQ(def.name, "Past Due");
  EXPECT_EQ(def.statement, R"("CQ:SELECT A FROM T WHERE D >= '" + $START_DATE + "'")");
  EXPECT_TRUE(def.grouped);
  EXPECT_EQ(def.group_report_field, "INV_INFO.Salesman");
  EXPECT_EQ(def.group_title, "Salesperson");
  ASSERT_EQ(def.columns.size(), 2u);
  EXPECT_EQ(def.columns[0].width, 1200);
  EXPECT_FALSE(def.columns[0].Computed());
  EXPECT_TRUE(def.columns[1].Computed());
  EXPECT_EQ(def.columns[1].width, 1440);         // missing: one inch
  EXPECT_EQ(def.columns[1].alignment, "Right");  // missing: numbers to the right
  ASSERT_EQ(def.variables.size(), 2u);           // the nameless one is dropped
  EXPECT_EQ(def.variables[1].name, "$END_DATE");
  EXPECT_TRUE(def.totals);
  EXPECT_FALSE(def.averages);
  EXPECT_TRUE(def.line_count);
  EXPECT_TRUE(def.multi_line);
  EXPECT_EQ(def.page_size, PageSize::kLedger);
  EXPECT_EQ(def.orientation, PageOrientation::kLandscape);
}

TEST(ReportDefinitionTest, UnusableFilesNameFileAndPlace) {
  CvrSpec good;
  good.statement = R"("CQ:SELECT 1")";
  good.columns = {{"A", "T.A", "String"}};
  const std::string valid = CvrXml(good);
  auto with = [&](const std::string& from, const std::string& to) {
    std::string xml = valid;
    const std::size_t at = xml.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return xml.replace(at, from.size(), to);
  };
  struct Case {
    std::string xml;
    std::string message;
  };
  const Case cases[] = {
      {"<CustomReport><Name>x</Name>", "r.cvr: line 1, column 28: Start-end tags mismatch"},
      {"<CustomReport>\n  <Name>x</Nam>\n</CustomReport>",
       "r.cvr: line 2, column 12: Start-end tags mismatch"},
      {"", "r.cvr: line 1, column 1: No document element found"},
      {"<?xml version=\"1.0\"?>\n<Views/>",
       "r.cvr: line 2, column 1: the root element is <Views>, not <CustomReport>: this is no "
       "report definition"},
      {with("<PageSize>0</PageSize>", "<PageSize>7</PageSize>"),
       "is '7', not 0 (Letter), 1 (Legal), 2 (A4) or 3 (Ledger)"},
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
  for (const Case& c : cases) {
    SCOPED_TRACE(c.xml);
    try {
      ParseReportDefinition(c.xml, "r.cvr");
      ADD_FAILURE() << "accepted";
    } catch (const Error& e) {
      const std::string message = e.what();
      EXPECT_NE(message.find(c.message), std::string::npos) << message;
      EXPECT_EQ(message.rfind("r.cvr: ", 0), 0u) << message;
    }
  }
}

TEST(ReportDefinitionTest, ValueErrorsGiveTheElementsLine) {
  const char* xml =
      "<CustomReport>\n<Name>x</Name>\n<Statement>\"CQ:\"</Statement>\n"
      "<Columns><Column><Title>A</Title></Column></Columns>\n"
      "<PageSize>9</PageSize>\n</CustomReport>";
  try {
    ParseReportDefinition(xml, "r.cvr");
    FAIL() << "accepted";
  } catch (const Error& e) {
    EXPECT_EQ(std::string(e.what()).rfind("r.cvr: line 5, column 1: PageSize is '9'", 0), 0u)
        << e.what();
  }
}

TEST(ReportDefinitionTest, MissingFileIsAClearError) {
  try {
    LoadReportDefinition("/nonexistent/folder/Some Report.cvr");
    FAIL() << "loaded";
  } catch (const Error& e) {
    EXPECT_EQ(std::string(e.what()),
              "/nonexistent/folder/Some Report.cvr: the report definition cannot be opened");
  }
}

TEST(ReportDefinitionTest, NumericFormats) {
  for (const char* format : {"Currency", "Number", "Integer", "currency", "INTEGER"}) {
    EXPECT_TRUE(IsNumericFormat(format)) << format;
  }
  for (const char* format : {"String", "Date", "", "Phone", "Currency2"}) {
    EXPECT_FALSE(IsNumericFormat(format)) << format;
  }
}

}  // namespace
}  // namespace cvve::reportengine
