#include "reports/report_file_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "base/text.h"
#include "core/profiles/save_fixture.h"
#include "query/sql_builder.h"

namespace cvve {
namespace {

using testing::Box;
using testing::FileSizeLimit;
using testing::HeadlessEditor;
using testing::kSaveDefaults;
using testing::kSaveSetup;
using testing::kSaveViews;
using testing::ReadFile;
using testing::Select;

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
  for (const auto& c : cases) {
    EXPECT_EQ(IsUsableReportName(c.name), c.usable) << c.name;
  }
}

class ReportFileWriterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    h.Open(kSaveViews, kSaveDefaults, kSaveSetup);
    Select(h, "Mine");
    path = (h.dir.Path() / "out.cvr").string();
  }
  void AddColumn(const std::string& name) {
    const auto& items = h->lstAvailColumns.Items();
    const auto it = std::find(items.begin(), items.end(), name);
    ASSERT_NE(it, items.end()) << name;
    h->lstAvailColumns.SetListIndex(static_cast<int>(it - items.begin()));
    h->cmdAddForm.Click();
  }
  // Checks the "Due between" filter with the two date variables.
  void FilterOnDateVariables() {
    h->lstFilters.UserCheck(2, true);
    h->lstFilters.SetSubItem(2, 2, "<$START_DATE>");
    h->lstFilters.SetSubItem(2, 4, "<$END_DATE>");
  }
  XmlNode Written() {
    std::string error;
    EXPECT_TRUE(back.Load(path, &error)) << error;
    return back.Root();
  }
  HeadlessEditor h;
  std::string path;
  DocumentCursor back;
};

TEST_F(ReportFileWriterTest, UngroupedReportCarriesTheViewStatementColumnsVariablesAndPage) {
  AddColumn("Balance");
  AddColumn("Days Late");
  FilterOnDateVariables();
  h->Variables().SetVariable(0, "Start Date:", "Date", "START_DATE");
  h->Variables().SetVariable(1, "End Date:", "Date", "END_DATE");
  h->Variables().SetVariable(2, "", "Text", "NO_CAPTION");  // not defined: no caption
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
  EXPECT_EQ(ChildText(root, "Name"), "Mine");
  EXPECT_EQ(ChildText(root, "DataSet"), "Accounts");
  const std::string statement = ChildText(root, "Statement");
  EXPECT_EQ(statement, ViewStatementExpression(BuildViewSQL(*h, false)));
  EXPECT_TRUE(
      StartsWith(statement, "\"CQ:SELECT ACCTS.AcctNum,ACCTS.Balance FROM ACCTS WHERE 1=1 "))
      << statement;
  EXPECT_TRUE(Contains(statement, R"(BETWEEN '" + $START_DATE + "' AND '" + $END_DATE + "')"))
      << statement;
  EXPECT_EQ(ChildText(root, "Grouped"), "0");
  for (const char* group_only :
       {"GroupField", "GroupReportField", "GroupFormat", "GroupTitle", "GroupStatement"}) {
    EXPECT_FALSE(root.child(group_only)) << group_only;
  }

  // "Gone Column" is no column of the data set any more: left out.
  const std::vector<std::vector<std::string>> columns = {
      {"Account", "ACCTS.AcctNum", "INV_INFO.AcctNum", "Left", "String", "1200"},
      {"Balance", "ACCTS.Balance", "INV_INFO.Balance", "Right", "Currency", "1500"},
      {"Days Late", "$DAYS_LATE", "INV_INFO.$DAYS_LATE", "Right", "Number", "800"},
  };
  std::vector<std::vector<std::string>> written;
  for (XmlNode c = root.child("Columns").child("Column"); c; c = c.next_sibling("Column")) {
    written.push_back({ChildText(c, "Title"), ChildText(c, "Field"), ChildText(c, "ReportField"),
                       ChildText(c, "Alignment"), ChildText(c, "Format"), ChildText(c, "Width")});
  }
  EXPECT_EQ(written, columns);

  std::vector<std::vector<std::string>> variables;
  for (XmlNode v = root.child("Variables").child("Variable"); v; v = v.next_sibling("Variable")) {
    variables.push_back({ChildText(v, "Name"), ChildText(v, "Caption"), ChildText(v, "Type")});
  }
  EXPECT_EQ(variables,
            (std::vector<std::vector<std::string>>{{"$START_DATE", "Start Date:", "Date"},
                                                   {"$END_DATE", "End Date:", "Date"}}));

  EXPECT_EQ(ChildText(root, "Totals"), "1");
  EXPECT_EQ(ChildText(root, "Averages"), "0");
  EXPECT_EQ(ChildText(root, "LineCount"), "1");
  EXPECT_EQ(ChildText(root, "PageSize"), "2");
  EXPECT_EQ(ChildText(root, "PageOrientation"), "1");
  EXPECT_EQ(ChildText(root, "MultiLine"), "1");
  EXPECT_TRUE(h.Messages().empty());
}

TEST_F(ReportFileWriterTest, GroupedReportCarriesTheReportStatementAndTheGroups) {
  AddColumn("Salesman");
  h->cmbSort[0].SetText("Salesman");
  h->cmbSortASCDESC[0].SetText("DESC");
  h->cmbSort[1].SetText("Account");
  h->chkSortGroup.SetValue(1);
  h->lstFilters.UserCheck(1, true);
  h->lstFilters.SetSubItem(1, 2, "O\"Neil");
  FilterOnDateVariables();

  ASSERT_TRUE(SaveReportFile(*h, path));

  XmlNode root = Written();
  EXPECT_EQ(ChildText(root, "Statement"), BuildReportSQL(*h, false));
  EXPECT_EQ(ChildText(root, "Grouped"), "1");
  EXPECT_EQ(ChildText(root, "GroupField"), "ACCTS.Salesman");
  EXPECT_EQ(ChildText(root, "GroupReportField"), "INV_INFO.Salesman");
  EXPECT_EQ(ChildText(root, "GroupFormat"), "String");
  EXPECT_EQ(ChildText(root, "GroupTitle"), "Salesman");
  // The template with the key as the only field, the where list opened for
  // the variables (a '"' doubled first), no grouping condition, the key's order.
  EXPECT_EQ(ChildText(root, "GroupStatement"),
            R"("CQ:SELECT DISTINCT ACCTS.Salesman FROM ACCTS WHERE 1=1  AND )"
            R"((ACCTS.Status='O""Neil') AND )"
            R"((ACCTS.Due BETWEEN '" + $START_DATE + "' AND '" + $END_DATE + "'))"
            R"(   ORDER BY ACCTS.Salesman DESC")");

  // On the advanced filter both statements are the bare "CQ:".
  h->optFilter.SetValue(1);
  ASSERT_TRUE(SaveReportFile(*h, path));
  root = Written();
  EXPECT_EQ(ChildText(root, "Statement"), R"("CQ:")");
  EXPECT_EQ(ChildText(root, "GroupStatement"), R"("CQ:")");
}

TEST_F(ReportFileWriterTest, ValuesRoundTripExactly) {
  const std::string name = "Dealer's <Best> & \"Co\" ]]> \xC3\xBC\xE2\x82\xAC";
  const std::string caption = "From <when> & 'why' ]]>";
  h->txtCurrProf.SetText(name);
  h->Variables().SetVariable(0, caption, "Date", "START_DATE");
  h->optFilter.SetValue(1);
  std::string sql = "SELECT a FROM b WHERE c = '<&>' -- \xC3\xA9";
  while (sql.size() < 100000) sql += " OR d = 'it''s ]]> &amp;'";
  h->DataSetSQL = sql;

  ASSERT_TRUE(SaveReportFile(*h, path));

  XmlNode root = Written();
  EXPECT_EQ(ChildText(root, "Name"), name);
  EXPECT_EQ(ChildText(root.child("Variables").child("Variable"), "Caption"), caption);
  EXPECT_EQ(ChildText(root, "Statement"), "\"CQ:" + sql + "\"");
}

TEST_F(ReportFileWriterTest, FailuresAreReportedAndLeaveTheOldFileWhole) {
  const std::string old_text = "<CustomReport version=\"1\"><Name>old</Name></CustomReport>";
  h.dir.Write("out.cvr", old_text);

  // The folder is missing.
  const std::string nowhere = (h.dir.Path() / "missing" / "x.cvr").string();
  EXPECT_FALSE(SaveReportFile(*h, nowhere));
  EXPECT_FALSE(std::filesystem::exists(nowhere));

  // The write stops halfway.
  {
    FileSizeLimit limit(64);
    EXPECT_FALSE(SaveReportFile(*h, path));
  }
  EXPECT_EQ(ReadFile(path), old_text);

  // The statement cannot be built: only computed columns are used.
  h->cmdRemoveAll.Click();
  AddColumn("Days Late");
  EXPECT_FALSE(SaveReportFile(*h, path));
  EXPECT_EQ(ReadFile(path), old_text);

  ASSERT_EQ(h.prompter.Shown().size(), 3u);
  for (const auto& shown : h.prompter.Shown()) {
    EXPECT_TRUE(StartsWith(Box(shown), Box("Error", "OK", "critical", "Error in SaveReportFile: ")))
        << shown.text;
  }
  EXPECT_TRUE(Contains(h.prompter.Shown()[0].text, nowhere));
}

}  // namespace
}  // namespace cvve
