#include "reports/report_file_writer.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "base/text.h"
#include "fixtures.h"
#include "query/sql_builder.h"

namespace cvve::testing {
namespace {

using Table = std::vector<std::vector<std::string>>;

TEST(ViewStatementExpressionTest, QuotesTheStatementAndOpensVariableMarkers) {
  const struct {
    std::string view_sql, expression;
  } cases[] = {
      {"CQ:SELECT a", R"("CQ:SELECT a")"},
      {R"(CQ:x = "y")", R"("CQ:x = ""y""")"},
      {"CQ:d >= '#@!$START_DATE!@#'", R"("CQ:d >= '" + $START_DATE + "'")"},
      {"#@!$A!@# and #@!$B_2!@#", R"("" + $A + " and " + $B_2 + "")"},
      // Not markers: the escapes stay for the engine to undo.
      {"a #@!5!@# b", R"("a #@!5!@# b")"},
      {"#@!$!@#", R"("#@!$!@#")"},
      {"#@!$TWO WORDS!@#", R"("#@!$TWO WORDS!@#")"},
      {"#@!$OPEN", R"("#@!$OPEN")"},
      {"#@!#@!$X!@#", R"("#@!" + $X + "")"},
      {"", R"("")"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ViewStatementExpression(c.view_sql), c.expression) << c.view_sql;
  }
}

TEST(ReportNameTest, NamesThatCannotBeFilesInTheFolderAreRefused) {
  const struct {
    std::string name;
    bool usable;
  } cases[] = {
      {"Past Due", true},
      {"O'Brien's <list> & \"more\"", true},
      {"Caf\xC3\xA9", true},
      {"a..b", true},
      {std::string(200, 'x'), true},
      {std::string(201, 'x'), false},
      {"", false},
      {".", false},
      {"..", false},
      {".hidden", false},
      {"../escape", false},
      {"sub/dir", false},
      {"/abs", false},
      {std::string("nul\0byte", 8), false},
  };
  for (const auto& c : cases) EXPECT_EQ(IsUsableReportName(c.name), c.usable) << c.name;
}

// "Mine" on the easy filter with "Due between" checked on the two date
// variables and "Active only" unchecked.
class ReportFileWriterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    OpenFileSet(h, "Mine");
    h->optFilter.SetValue(0);
    h->lstFilters.UserCheck(3, false);
    h->lstFilters.UserCheck(2, true);
    h->lstFilters.SetSubItem(2, 2, "<$START_DATE>");
    h->lstFilters.SetSubItem(2, 4, "<$END_DATE>");
    path = (h.dir.Path() / "out.cvr").string();
  }
  XmlNode Written() {
    std::string error;
    EXPECT_TRUE(back.Load(path, &error)) << error;
    return back.Root();
  }
  static Table Rows(XmlNode list, const std::vector<const char*>& fields) {
    Table rows;
    for (XmlNode item = list.first_child(); item; item = item.next_sibling()) {
      rows.emplace_back();
      for (const char* field : fields) rows.back().push_back(ChildText(item, field));
    }
    return rows;
  }
  HeadlessEditor h;
  std::string path;
  DocumentCursor back;
};

TEST_F(ReportFileWriterTest, UngroupedReportCarriesTheViewStatementColumnsVariablesAndPage) {
  AddColumn(h, "Balance");
  AddColumn(h, "Days Late");
  h->Variables().SetVariable(2, "", "Text", "NO_CAPTION");  // not defined: left out
  h->chkTotals.SetValue(1);
  h->chkAverages.SetValue(0);
  h->chkShowLineCount.SetValue(1);
  h->cmbPageSize.SetText("A4");
  h->cmbOrientation.SetText("Landscape");
  h->chkMultiLine.SetValue(1);
  ASSERT_TRUE(SaveReportFile(*h, path));

  XmlNode root = Written();
  EXPECT_STREQ(root.name(), "CustomReport");
  EXPECT_STREQ(root.attribute("version").value(), "1");
  EXPECT_EQ(ChildText(root, "Name") + "|" + ChildText(root, "DataSet"), "Mine|Accounts");
  const std::string statement = ChildText(root, "Statement");
  EXPECT_EQ(statement, ViewStatementExpression(BuildViewSQL(*h, false)));
  EXPECT_EQ(statement, R"("CQ:SELECT ACCTS.AcctNum,ACCTS.Balance FROM ACCTS WHERE )"
                       R"((ACCTS.Due BETWEEN '" + $START_DATE + "' AND '" + $END_DATE + "'))"
                       R"(   ORDER BY ACCTS.AcctNum DESC, ACCTS.AcctNum ASC")");
  EXPECT_EQ(ChildText(root, "Grouped"), "0");
  for (const char* group_only :
       {"GroupField", "GroupReportField", "GroupFormat", "GroupTitle", "GroupStatement"}) {
    EXPECT_FALSE(root.child(group_only)) << group_only;
  }
  // "Gone Column" is no column of the data set any more: left out.
  // Money is summed, every number averaged, text neither.
  EXPECT_EQ(
      Rows(root.child("Columns"),
           {"Title", "Field", "ReportField", "Alignment", "Format", "Width", "Total", "Average"}),
      (Table{{"Account", "ACCTS.AcctNum", "INV_INFO.AcctNum", "Left", "String", "1200", "0", "0"},
             {"Balance", "ACCTS.Balance", "INV_INFO.Balance", "Right", "Currency", "1500", "1",
              "1"},
             {"Days Late", "$DAYS_LATE", "INV_INFO.$DAYS_LATE", "Right", "Number", "800", "0",
              "1"}}));
  EXPECT_EQ(Rows(root.child("Variables"), {"Name", "Caption", "Type"}),
            (Table{{"$START_DATE", "Start Date:", "Date"}, {"$END_DATE", "End Date:", "Date"}}));
  std::string options;
  for (const char* e :
       {"Totals", "Averages", "LineCount", "PageSize", "PageOrientation", "MultiLine"}) {
    options += ChildText(root, e);
  }
  EXPECT_EQ(options, "101211");
  EXPECT_TRUE(h.Messages().empty());
}

TEST_F(ReportFileWriterTest, GroupedReportCarriesTheReportStatementAndTheGroups) {
  AddColumn(h, "Salesman");
  h->cmbSort[0].SetText("Salesman");
  h->cmbSortASCDESC[0].SetText("DESC");
  h->cmbSort[1].SetText("Account");
  h->chkSortGroup.SetValue(1);
  h->lstFilters.UserCheck(1, true);
  h->lstFilters.SetSubItem(1, 2, "O\"Neil");
  ASSERT_TRUE(SaveReportFile(*h, path));

  XmlNode root = Written();
  EXPECT_EQ(ChildText(root, "Statement"), BuildReportSQL(*h, false));
  EXPECT_EQ(ChildText(root, "Grouped"), "1");
  EXPECT_EQ(Box(ChildText(root, "GroupField"), ChildText(root, "GroupReportField"),
                ChildText(root, "GroupFormat"), ChildText(root, "GroupTitle")),
            Box("ACCTS.Salesman", "INV_INFO.Salesman", "String", "Salesman"));
  // The template with the key as the only field, the where list opened for
  // the variables (a '"' doubled first), no grouping condition, the key's order.
  EXPECT_EQ(ChildText(root, "GroupStatement"),
            R"("CQ:SELECT DISTINCT ACCTS.Salesman FROM ACCTS WHERE (ACCTS.Status='O""Neil') AND )"
            R"((ACCTS.Due BETWEEN '" + $START_DATE + "' AND '" + $END_DATE + "'))"
            R"(   ORDER BY ACCTS.Salesman DESC")");
  // On the advanced filter both statements are the bare "CQ:".
  h->optFilter.SetValue(1);
  ASSERT_TRUE(SaveReportFile(*h, path));
  root = Written();
  EXPECT_EQ(ChildText(root, "Statement"), R"("CQ:")");
  EXPECT_EQ(ChildText(root, "GroupStatement"), R"("CQ:")");
}

TEST_F(ReportFileWriterTest, FailuresAreReportedAndLeaveTheOldFileWhole) {
  const std::string old_text = "<CustomReport version=\"1\"><Name>old</Name></CustomReport>";
  h.dir.Write("out.cvr", old_text);
  h.prompter.ClearShown();
  const std::string nowhere = (h.dir.Path() / "missing" / "x.cvr").string();
  EXPECT_FALSE(SaveReportFile(*h, nowhere));  // the folder is missing
  EXPECT_FALSE(std::filesystem::exists(nowhere));
  {
    FileSizeLimit limit(64);
    EXPECT_FALSE(SaveReportFile(*h, path));  // the write stops halfway
  }
  EXPECT_EQ(h.dir.Read("out.cvr"), old_text);
  h->cmdRemoveAll.Click();
  AddColumn(h, "Days Late");  // only computed columns: no statement
  EXPECT_FALSE(SaveReportFile(*h, path));
  EXPECT_EQ(h.dir.Read("out.cvr"), old_text);
  ASSERT_EQ(h.prompter.Shown().size(), 3u);
  for (const auto& shown : h.prompter.Shown()) {
    EXPECT_TRUE(StartsWith(Box(shown), Box("Error", "OK", "critical", "Error in SaveReportFile: ")))
        << shown.text;
  }
  EXPECT_TRUE(Contains(h.prompter.Shown()[0].text, nowhere));
}

}  // namespace
}  // namespace cvve::testing
