#include "query/sql_builder.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "base/text.h"
#include "fixtures.h"

namespace cvve::testing {
namespace {

// The editor on the shared setup, data set `data_set` chosen, `used` added
// in order through the add button.
void Open(HeadlessEditor& h, const std::string& data_set, const std::vector<std::string>& used) {
  h.Open("", "", kSetup);
  h->cmbDataSet.SetText(data_set);
  for (const std::string& name : used) AddColumn(h, name);
}

void Sort(HeadlessEditor& h, const std::string& first, const std::string& dir1,
          const std::string& second, const std::string& dir2) {
  if (!first.empty()) h->cmbSort[0].SetText(first);
  h->cmbSortASCDESC[0].SetText(dir1);
  if (!second.empty()) h->cmbSort[1].SetText(second);
  h->cmbSortASCDESC[1].SetText(dir2);
}

// Checks the filter row of that key and gives it its values.
void CheckFilter(HeadlessEditor& h, const std::string& key, const std::string& data1 = "",
                 const std::string& data2 = "") {
  ui::ListView& list = h->lstFilters;
  int row = list.FindKey(key);
  ASSERT_GT(row, 0) << key;
  list.SetChecked(row, true);
  if (!data1.empty()) list.SetSubItem(row, 2, data1);
  if (!data2.empty()) list.SetSubItem(row, 4, data2);
}

TEST(SqlBuilderTest, WorkedExampleToTheCharacter) {
  HeadlessEditor h;
  // Salesman is chosen as first sort and then removed again: the sort
  // drop-down keeps offering it, so it sorts without being selected.
  Open(h, "Accounts", {"Salesman", "Account", "Balance"});
  Sort(h, "Salesman", "ASC", "Account", "ASC");
  h->lstUsedColumns.SetListIndex(0);
  h->cmdRemoveForm.Click();
  CheckFilter(h, "1", "A");
  const std::string report =
      R"x("CQ:SELECT ACCTS.AcctNum,ACCTS.Balance FROM ACCTS WHERE (ACCTS.Status='A')  AND ACCTS.Salesman='" + FXA([INV_INFO.Salesman]) + "'   ORDER BY ACCTS.AcctNum ASC")x";
  EXPECT_EQ(BuildFieldList(*h), "ACCTS.AcctNum,ACCTS.Balance");
  EXPECT_EQ(BuildWhereList(*h), "(ACCTS.Status='A')");
  EXPECT_EQ(BuildReportSQL(*h, false), report);
  h->chkSortGroup.SetValue(1);
  EXPECT_EQ(BuildViewSQL(*h, false),
            "CQ:SELECT ACCTS.AcctNum,ACCTS.Balance FROM ACCTS WHERE (ACCTS.Status='A')   "
            "ORDER BY ACCTS.Salesman ASC");
  EXPECT_EQ(BuildReportSQL(*h, true), report);  // the check box does not matter
  EXPECT_TRUE(h.Messages().empty());
}

TEST(SqlBuilderTest, QualifyReportFieldDropsEveryKnownPrefix) {
  const std::pair<std::string, std::string> cases[] = {
      {"ACCTS.Balance", "INV_INFO.Balance"},
      {"INV_INFO.Make", "INV_INFO.Make"},
      {"ACCT_HISTORY.PmtDate", "INV_INFO.PmtDate"},
      {"PTP.Amount", "INV_INFO.Amount"},
      {"DEAL_INFO.Price-FIN_INFO.Down", "INV_INFO.Price-Down"},  // anywhere in the text
      {"CUST_INFO.NOTES.Text", "INV_INFO.Text"},
      {"accts.Balance", "INV_INFO.accts.Balance"},  // case-sensitive
      {"", "INV_INFO."},
  };
  for (const auto& [field, expected] : cases) {
    EXPECT_EQ(QualifyReportField(field), expected) << field;
  }
}

TEST(SqlBuilderTest, FieldListSkipsComputedAndEmptySortFieldsAndFailsWhenNothingIsLeft) {
  HeadlessEditor h;
  Open(h, "Accounts", {"Days Late", "Balance", "Note", "Account"});
  EXPECT_EQ(BuildFieldList(*h), "ACCTS.Balance,ACCTS.AcctNum");
  EXPECT_EQ(h->lstUsedColumns.ListCount(), 4);  // the "$"-led column is still used
  h->lstUsedColumns.AddItem("Gone");            // no longer offered: no sort field either
  EXPECT_EQ(BuildFieldList(*h), "ACCTS.Balance,ACCTS.AcctNum");
  for (const char* usable : {"Balance", "Account", "Gone"}) {
    h->lstUsedColumns.RemoveItem(h->lstUsedColumns.FindAll(usable).front());
  }
  EXPECT_THROW(BuildFieldList(*h), Error);
  EXPECT_THROW(BuildViewSQL(*h, false), Error);
  EXPECT_THROW(BuildReportSQL(*h, false), Error);

  // No used columns at all: the message, and the statement is still built.
  h->lstUsedColumns.Clear();
  h.prompter.ClearShown();
  EXPECT_EQ(BuildFieldList(*h), "");
  ASSERT_EQ(h.prompter.Shown().size(), 1u);
  EXPECT_EQ(Box(h.prompter.Shown()[0]), Box("No Fields/Columns Selected", "OK", "critical",
                                            "You have not selected any fields/columns."));
  EXPECT_TRUE(StartsWith(BuildViewSQL(*h, false), "CQ:SELECT  FROM ACCTS WHERE    ORDER BY "));
}

TEST(SqlBuilderTest, WhereListGroupsAscendingWithOrInsideAndBadTagsThrow) {
  HeadlessEditor h;
  Open(h, "Accounts", {"Account"});
  ui::ListView& list = h->lstFilters;
  const struct {
    std::vector<std::pair<std::string, std::string>> rows;  // condition, group
    std::string expected;
  } cases[] = {
      {{{"A", "2"}, {"B", "1"}, {"C", "2"}}, "(B) AND (A OR C)"},
      {{{"A", "5"}, {"B", "0"}}, "(B) AND (A)"},
      {{{"A", "7"}, {"B", "7"}}, "(A OR B)"},
      {{{"A", "x"}, {"B", "1.6"}, {"C", "0.4"}}, "(A OR C) AND (B)"},  // rounded; text is 0
      {{}, ""},
  };
  for (const auto& c : cases) {
    for (int row = 1; row <= list.ItemCount(); ++row) list.SetChecked(row, false);
    for (std::size_t i = 0; i < c.rows.size(); ++i) {
      const int row = static_cast<int>(i) + 1;
      list.SetTag(row, "0|||" + c.rows[i].first + "|" + c.rows[i].second + "|");
      list.SetChecked(row, true);
    }
    EXPECT_EQ(BuildWhereList(*h), c.expected);
  }
  // Group numbers outside 0 to 100, a tag with too few fields.
  for (const char* bad_tag : {"1|is||X|101|A", "1|is||X|-1|A", "1|is||X|100.6|A", "1|is||X"}) {
    list.SetTag(1, bad_tag);
    list.SetChecked(1, true);
    EXPECT_THROW(BuildWhereList(*h), Error) << bad_tag;
    list.SetChecked(1, false);
    EXPECT_EQ(BuildWhereList(*h), "");  // unchecked rows are not read at all
  }
}

TEST(SqlBuilderTest, WhereListValuesAndOperators) {
  HeadlessEditor h;
  Open(h, "Accounts", {"Account"});
  // Values are escaped; the operator words become operators, LESSEQUAL
  // first, on the whole text, values included.
  h->lstFilters.SetTag(1, "1|||A LESSEQUAL %DATA1% AND B LESSTHAN %DATA1%|1|");
  CheckFilter(h, "1", "LESSEQUAL");
  CheckFilter(h, "2", "<$LOW>", "9>8");
  EXPECT_EQ(BuildWhereList(*h),
            "(A <= <= AND B < <=) AND (ACCTS.Due BETWEEN '#@!$LOW!@#' AND '9!@#8')");
}

TEST(SqlBuilderTest, ViewStatementPlaceholdersAndSorting) {
  HeadlessEditor h;
  Open(h, "Inventory", {"Stock", "Arrived"});
  Sort(h, "Stock", "ASC", "Arrived", "DESC");
  const std::string order = " ORDER BY INV_INFO.Stock ASC, INV_INFO.Arrived DESC";
  EXPECT_EQ(BuildViewSQL(*h, false),
            "CQ:SELECT INV_INFO.Stock,INV_INFO.Arrived FROM INV WHERE 1=1 [] {}" + order);
  CheckFilter(h, "7", "1/1/2024");
  const std::string where = "(INV_INFO.Arrived <= '1/1/2024')";
  EXPECT_EQ(BuildViewSQL(*h, false),
            "CQ:SELECT INV_INFO.Stock,INV_INFO.Arrived FROM INV WHERE "
            "1=1 AND " +
                where + " [" + where + "] {}" + order);
  h->chkSortGroup.SetValue(1);
  EXPECT_TRUE(EndsWith(BuildViewSQL(*h, false), "{} ORDER BY INV_INFO.Stock ASC"));

  // The second sort only when both pickers are set; an empty first picker
  // still yields the clause, from empty pieces.
  h->chkSortGroup.SetValue(0);
  h->cmbSort[0].SetListIndex(-1);
  EXPECT_TRUE(EndsWith(BuildViewSQL(*h, false), "{} ORDER BY  ASC"));
  h->cmbSort[0].SetText("Arrived");
  h->cmbSort[1].SetListIndex(-1);
  EXPECT_TRUE(EndsWith(BuildViewSQL(*h, false), "{} ORDER BY INV_INFO.Arrived ASC"));
}

TEST(SqlBuilderTest, ReportStatementGroupingAndStringBreaks) {
  HeadlessEditor h;
  Open(h, "Inventory", {"Stock", "Arrived"});
  Sort(h, "Arrived", "ASC", "Stock", "DESC");
  // No filter: %GROUPING% takes the condition alone, %ANDGROUPING% always " AND ".
  const std::string grouping = R"x(INV_INFO.Arrived=#" + FXA([INV_INFO.Arrived]) + "# )x";
  const std::string head = "\"CQ:SELECT INV_INFO.Stock,INV_INFO.Arrived FROM INV WHERE 1=1";
  EXPECT_EQ(BuildReportSQL(*h, false),
            head + " AND " + grouping + " [] {" + grouping + "} ORDER BY INV_INFO.Stock DESC\"");
  // A variable marker becomes the report variable; the operator made of
  // LESSEQUAL is broken as well, as designed.
  CheckFilter(h, "7", "<$START_DATE>");
  const std::string where = R"x((INV_INFO.Arrived " + = '" + $START_DATE + "'))x";
  EXPECT_EQ(BuildReportSQL(*h, false), head + " AND " + where + " AND " + grouping + " [" + where +
                                           "] { AND " + grouping +
                                           "} ORDER BY INV_INFO.Stock DESC\"");

  // The quote mark follows the key column's format.
  HeadlessEditor a;
  Open(a, "Accounts", {"Account", "Balance", "Due Date"});
  for (const auto& [column, condition] : std::vector<std::pair<std::string, std::string>>{
           {"Account", R"x(ACCTS.AcctNum='" + FXA([INV_INFO.AcctNum]) + "' )x"},
           {"Due Date", R"x(ACCTS.Due=#" + FXA([INV_INFO.Due]) + "# )x"},
           {"Balance", R"x(ACCTS.Balance=" + FXA([INV_INFO.Balance]) + " )x"}}) {
    a->cmbSort[0].SetText(column);
    EXPECT_TRUE(Contains(BuildReportSQL(*a, false), condition)) << column;
  }
}

TEST(SqlBuilderTest, AdvancedFilterReplacesBothStatements) {
  HeadlessEditor h;
  Open(h, "Accounts", {"Account"});
  Sort(h, "Account", "ASC", "", "ASC");
  h->cmbSort[1].SetListIndex(-1);
  h->optFilter.SetValue(1);
  h->DataSetSQL = "SELECT * FROM ACCTS WHERE Balance > 0";
  EXPECT_EQ(BuildViewSQL(*h, false), "CQ:SELECT * FROM ACCTS WHERE Balance > 0");
  EXPECT_EQ(BuildReportSQL(*h, false), "\"CQ:\"");
  // Forced, the template is used whatever the mode.
  const std::string from_template =
      "CQ:SELECT ACCTS.AcctNum FROM ACCTS WHERE    ORDER BY "
      "ACCTS.AcctNum ASC";
  EXPECT_EQ(BuildViewSQL(*h, true), from_template);
  EXPECT_TRUE(StartsWith(BuildReportSQL(*h, true), "\"CQ:SELECT ACCTS.AcctNum FROM ACCTS"));
  // Back in easy mode the template comes from the setup file, not from the
  // statement text a loaded profile or the advanced edit left behind.
  h->optFilter.SetValue(0);
  h->DataSetSQL.clear();
  EXPECT_EQ(BuildViewSQL(*h, false), from_template);
}

}  // namespace
}  // namespace cvve::testing
