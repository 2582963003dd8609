#include "query/sql_builder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/error.h"
#include "base/text.h"
#include "columns/column_selection.h"
#include "test_support.h"
#include "viewfiles/setup_file.h"

namespace cvve {
namespace {

using testing::HeadlessEditor;

// "Accounts" carries the worked example's template; "Grouped" every other
// placeholder. Filters: Status (one value, group 1), Balance between two
// values (group 2), Opened before a date (group 2), Dealer (no value, group 0).
const char* kSetup = R"(<ViewSetup>
  <DataSets>
    <DataSet>
      <Name>Accounts</Name>
      <SQL>SELECT %FIELDLIST% FROM ACCTS WHERE %WHERELIST% %GROUPING% %ORDERLIST%</SQL>
      <Columns>
        <Column><Name>Account</Name><SortField>ACCTS.AcctNum</SortField><FieldFormat>String</FieldFormat></Column>
        <Column><Name>Balance</Name><SortField>ACCTS.Balance</SortField><FieldFormat>Currency</FieldFormat></Column>
        <Column><Name>Salesman</Name><SortField>ACCTS.Salesman</SortField><FieldFormat>String</FieldFormat></Column>
        <Column><Name>Opened</Name><SortField>CUST_INFO.OpenDate</SortField><FieldFormat>Date</FieldFormat></Column>
        <Column><Name>Due</Name><SortField>$DUE_DATE</SortField><FieldFormat>Date</FieldFormat></Column>
        <Column><Name>Note</Name><Field>NOTES.Text</Field></Column>
      </Columns>
      <Filters>
        <Filter><Name>Status</Name><Index>1</Index><InputNum>1</InputNum><Label1>is</Label1><SQL>ACCTS.Status='%DATA1%'</SQL><Group>1</Group><Defaults>A</Defaults></Filter>
        <Filter><Name>Balance</Name><Index>2</Index><InputNum>2</InputNum><Label1>from</Label1><Label2>to</Label2><SQL>ACCTS.Balance BETWEEN %DATA1% AND %DATA2%</SQL><Group>2</Group><Defaults>0|100</Defaults></Filter>
        <Filter><Name>Opened</Name><Index>3</Index><InputNum>1</InputNum><Label1>before</Label1><SQL>CUST_INFO.OpenDate LESSTHAN #%DATA1%#</SQL><Group>2</Group><Defaults>1/1/2020</Defaults></Filter>
        <Filter><Name>Dealer</Name><Index>4</Index><InputNum>0</InputNum><SQL>ACCTS.Dealer=1</SQL><Group>0</Group></Filter>
      </Filters>
    </DataSet>
    <DataSet>
      <Name>Grouped</Name>
      <SQL>SELECT %FIELDLIST% FROM ACCTS WHERE 1=1%ANDWHERELIST%%ANDGROUPING% [%WHERELIST%] {%GROUPING%}%ORDERLIST%</SQL>
      <Columns>
        <Column><Name>Account</Name><SortField>ACCTS.AcctNum</SortField><FieldFormat>String</FieldFormat></Column>
        <Column><Name>Balance</Name><SortField>ACCTS.Balance</SortField><FieldFormat>Currency</FieldFormat></Column>
        <Column><Name>Opened</Name><SortField>CUST_INFO.OpenDate</SortField><FieldFormat>Date</FieldFormat></Column>
      </Columns>
      <Filters>
        <Filter><Name>Since</Name><Index>1</Index><InputNum>1</InputNum><SQL>ACCTS.LastPmt LESSEQUAL '%DATA1%'</SQL><Group>3</Group></Filter>
      </Filters>
    </DataSet>
  </DataSets>
</ViewSetup>)";

// The editor on the setup file, data set `data_set` chosen, `used` added in
// order through the add button.
void Open(HeadlessEditor& h, const std::string& data_set, const std::vector<std::string>& used) {
  ASSERT_TRUE(h->SetupDoc.LoadText(kSetup));
  LoadDataSets(*h);
  h->cmbDataSet.SetText(data_set);
  for (const std::string& name : used) {
    auto found = h->lstAvailColumns.FindAll(name);
    ASSERT_FALSE(found.empty()) << name;
    h->lstAvailColumns.SetListIndex(found.front());
    cmdAddForm_Click(*h);
  }
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
  if (!data1.empty()) list.SetSubItem(row, list.ColumnPosition("Data1") - 1, data1);
  if (!data2.empty()) list.SetSubItem(row, list.ColumnPosition("Data2") - 1, data2);
}

TEST(SqlBuilderTest, WorkedExampleToTheCharacter) {
  HeadlessEditor h;
  // Salesman is chosen as first sort and then removed again: the sort
  // drop-down keeps offering it, so it sorts without being selected.
  Open(h, "Accounts", {"Salesman", "Account", "Balance"});
  Sort(h, "Salesman", "ASC", "Account", "ASC");
  h->lstUsedColumns.SetListIndex(0);
  cmdRemoveForm_Click(*h);
  CheckFilter(h, "1", "A");

  EXPECT_EQ(BuildFieldList(*h), "ACCTS.AcctNum,ACCTS.Balance");
  EXPECT_EQ(BuildWhereList(*h), "(ACCTS.Status='A')");
  EXPECT_EQ(BuildReportSQL(*h, false),
            R"x("CQ:SELECT ACCTS.AcctNum,ACCTS.Balance FROM ACCTS WHERE (ACCTS.Status='A')  AND ACCTS.Salesman='" + FXA([INV_INFO.Salesman]) + "'   ORDER BY ACCTS.AcctNum ASC")x");
  h->chkSortGroup.SetValue(1);
  EXPECT_EQ(BuildViewSQL(*h, false),
            "CQ:SELECT ACCTS.AcctNum,ACCTS.Balance FROM ACCTS WHERE (ACCTS.Status='A')   "
            "ORDER BY ACCTS.Salesman ASC");
  // The report statement ignores the check box: same text grouped or not.
  EXPECT_EQ(BuildReportSQL(*h, true),
            R"x("CQ:SELECT ACCTS.AcctNum,ACCTS.Balance FROM ACCTS WHERE (ACCTS.Status='A')  AND ACCTS.Salesman='" + FXA([INV_INFO.Salesman]) + "'   ORDER BY ACCTS.AcctNum ASC")x");
  EXPECT_TRUE(h.Messages().empty());
}

TEST(SqlBuilderTest, QualifyReportFieldDropsEveryKnownPrefix) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"ACCTS.Balance", "INV_INFO.Balance"},
      {"INV_INFO.Make", "INV_INFO.Make"},
      {"ACCT_HISTORY.PmtDate", "INV_INFO.PmtDate"},
      {"PTP.Amount", "INV_INFO.Amount"},
      {"DEAL_INFO.Price-FIN_INFO.Down", "INV_INFO.Price-Down"},  // anywhere in the text
      {"CUST_INFO.NOTES.Text", "INV_INFO.Text"},
      {"accts.Balance", "INV_INFO.accts.Balance"},  // case-sensitive
      {"Balance", "INV_INFO.Balance"},
      {"", "INV_INFO."},
  };
  for (const auto& [field, expected] : cases) {
    EXPECT_EQ(QualifyReportField(field), expected) << field;
  }
}

TEST(SqlBuilderTest, FieldListSkipsComputedAndEmptySortFields) {
  HeadlessEditor h;
  Open(h, "Accounts", {"Due", "Balance", "Note", "Account"});
  EXPECT_EQ(BuildFieldList(*h), "ACCTS.Balance,ACCTS.AcctNum");
  // The "$"-led column is still a used column.
  EXPECT_EQ(h->lstUsedColumns.ListCount(), 4);
  // A used column the data set no longer offers has no sort field either.
  h->lstUsedColumns.AddItem("Gone");
  EXPECT_EQ(BuildFieldList(*h), "ACCTS.Balance,ACCTS.AcctNum");
}

TEST(SqlBuilderTest, NoUsedColumnsShowsTheMessageAndStillAssembles) {
  HeadlessEditor h;
  Open(h, "Accounts", {});
  EXPECT_EQ(BuildFieldList(*h), "");
  ASSERT_EQ(h.prompter.Shown().size(), 1u);
  const auto& shown = h.prompter.Shown().back();
  EXPECT_EQ(shown.text, "You have not selected any fields/columns.");
  EXPECT_EQ(shown.title, "No Fields/Columns Selected");
  EXPECT_EQ(shown.buttons, ui::ToString(ui::Buttons::kOk));
  EXPECT_EQ(shown.icon, ui::ToString(ui::Icon::kCritical));
  // The statement is still built, with an empty select list.
  EXPECT_EQ(BuildViewSQL(*h, false), "CQ:SELECT  FROM ACCTS WHERE    ORDER BY  ");
  EXPECT_EQ(h.Messages().size(), 2u);
}

TEST(SqlBuilderTest, FailuresGoToTheCaller) {
  HeadlessEditor h;
  Open(h, "Accounts", {"Due", "Note"});
  EXPECT_THROW(BuildFieldList(*h), Error);  // nothing usable to select
  EXPECT_THROW(BuildViewSQL(*h, false), Error);
  EXPECT_THROW(BuildReportSQL(*h, false), Error);

  ui::ListView& list = h->lstFilters;
  const int row = list.FindKey("1");
  CheckFilter(h, "1");
  for (const char* bad_tag : {"1|is||ACCTS.Status='%DATA1%'|101|A", "1|is||X|-1|A",
                              "1|is||X|100.6|A", "1|is||X"}) {
    list.SetTag(row, bad_tag);
    EXPECT_THROW(BuildWhereList(*h), Error) << bad_tag;
  }
  // Unchecked rows are not read at all.
  list.SetChecked(row, false);
  EXPECT_EQ(BuildWhereList(*h), "");
  list.SetChecked(row, true);
  list.SetTag(row, "1|is||X|100|A");
  EXPECT_EQ(BuildWhereList(*h), "(X)");
}

TEST(SqlBuilderTest, WhereListGroupsInAscendingOrderWithOrInside) {
  HeadlessEditor h;
  Open(h, "Accounts", {"Account"});
  ui::ListView& list = h->lstFilters;
  auto set_row = [&](int row, const std::string& condition, const std::string& group) {
    list.SetTag(row, "0|||" + condition + "|" + group + "|");
    list.SetChecked(row, true);
  };
  struct Case {
    std::vector<std::pair<std::string, std::string>> rows;  // condition, group
    std::string expected;
  };
  const std::vector<Case> cases = {
      {{{"A", "2"}, {"B", "1"}, {"C", "2"}}, "(B) AND (A OR C)"},
      {{{"A", "5"}, {"B", "0"}}, "(B) AND (A)"},
      {{{"A", "7"}, {"B", "7"}}, "(A OR B)"},
      {{{"A", "x"}, {"B", "1.6"}, {"C", "0.4"}}, "(A OR C) AND (B)"},  // rounded; text is 0
  };
  for (const Case& c : cases) {
    for (int row = 1; row <= list.ItemCount(); ++row) list.SetChecked(row, false);
    for (std::size_t i = 0; i < c.rows.size(); ++i) {
      set_row(static_cast<int>(i) + 1, c.rows[i].first, c.rows[i].second);
    }
    EXPECT_EQ(BuildWhereList(*h), c.expected);
  }
}

TEST(SqlBuilderTest, WhereListValuesAndOperators) {
  HeadlessEditor h;
  Open(h, "Accounts", {"Account"});
  CheckFilter(h, "2", "<$LOW>", "9>8");
  CheckFilter(h, "3", "<$START_DATE>");
  // Values are escaped; the operator words become operators, LESSEQUAL first.
  EXPECT_EQ(BuildWhereList(*h),
            "(ACCTS.Balance BETWEEN #@!$LOW!@# AND 9!@#8 OR "
            "CUST_INFO.OpenDate < ##@!$START_DATE!@##)");

  ui::ListView& list = h->lstFilters;
  const int row = list.FindKey("1");
  list.SetTag(row, "1|||A LESSEQUAL %DATA1% AND B LESSTHAN %DATA1%|1|");
  list.SetChecked(list.FindKey("2"), false);
  list.SetChecked(list.FindKey("3"), false);
  CheckFilter(h, "1", "LESSEQUAL");
  // The words are replaced on the whole text, values included.
  EXPECT_EQ(BuildWhereList(*h), "(A <= <= AND B < <=)");
}

TEST(SqlBuilderTest, ViewStatementPlaceholdersAndSorting) {
  HeadlessEditor h;
  Open(h, "Grouped", {"Account", "Balance"});
  Sort(h, "Account", "ASC", "Balance", "DESC");
  EXPECT_EQ(BuildViewSQL(*h, false),
            "CQ:SELECT ACCTS.AcctNum,ACCTS.Balance FROM ACCTS WHERE 1=1 [] {} ORDER BY "
            "ACCTS.AcctNum ASC, ACCTS.Balance DESC");
  CheckFilter(h, "1", "1/1/2024");
  EXPECT_EQ(BuildViewSQL(*h, false),
            "CQ:SELECT ACCTS.AcctNum,ACCTS.Balance FROM ACCTS WHERE 1=1 AND "
            "(ACCTS.LastPmt <= '1/1/2024') [(ACCTS.LastPmt <= '1/1/2024')] {} ORDER BY "
            "ACCTS.AcctNum ASC, ACCTS.Balance DESC");
  h->chkSortGroup.SetValue(1);
  EXPECT_TRUE(EndsWith(BuildViewSQL(*h, false), "{} ORDER BY ACCTS.AcctNum ASC"));
}

TEST(SqlBuilderTest, SecondSortOnlyWhenBothPickersAreSet) {
  HeadlessEditor h;
  Open(h, "Accounts", {"Account", "Balance"});
  // Adding selects the first entry of both pickers; empty them again.
  h->cmbSort[0].SetListIndex(-1);
  h->cmbSort[1].SetListIndex(-1);
  Sort(h, "", "DESC", "Balance", "ASC");
  // An empty first picker still yields the clause, from empty pieces.
  EXPECT_TRUE(EndsWith(BuildViewSQL(*h, false), "   ORDER BY  DESC"));
  h->cmbSort[1].SetListIndex(-1);
  h->cmbSort[0].AddItem("Balance");
  h->cmbSort[0].SetText("Balance");
  EXPECT_TRUE(EndsWith(BuildViewSQL(*h, false), " ORDER BY ACCTS.Balance DESC"));
  h->cmbSort[1].SetText("Account");
  EXPECT_TRUE(EndsWith(BuildViewSQL(*h, false), " ORDER BY ACCTS.Balance DESC, ACCTS.AcctNum ASC"));
}

TEST(SqlBuilderTest, ReportStatementGroupingAndStringBreaks) {
  HeadlessEditor h;
  Open(h, "Grouped", {"Account", "Opened"});
  Sort(h, "Opened", "ASC", "Account", "DESC");
  // No filter: %GROUPING% takes the condition alone, %ANDGROUPING% always " AND ".
  const std::string grouping = R"x(CUST_INFO.OpenDate=#" + FXA([INV_INFO.OpenDate]) + "# )x";
  EXPECT_EQ(BuildReportSQL(*h, false),
            "\"CQ:SELECT ACCTS.AcctNum,CUST_INFO.OpenDate FROM ACCTS WHERE 1=1 AND " + grouping +
                " [] {" + grouping + "} ORDER BY ACCTS.AcctNum DESC\"");

  // A variable marker becomes the report variable; the operator made of
  // LESSEQUAL is broken as well, as designed.
  CheckFilter(h, "1", "<$START_DATE>");
  const std::string where = R"x((ACCTS.LastPmt " + = '" + $START_DATE + "'))x";
  EXPECT_EQ(BuildReportSQL(*h, false),
            "\"CQ:SELECT ACCTS.AcctNum,CUST_INFO.OpenDate FROM ACCTS WHERE 1=1 AND " + where +
                " AND " + grouping + " [" + where + "] { AND " + grouping +
                "} ORDER BY ACCTS.AcctNum DESC\"");

  // The quote mark follows the key column's format.
  h->cmbSort[0].SetText("Account");
  EXPECT_TRUE(Contains(BuildReportSQL(*h, false), R"x(ACCTS.AcctNum='" + FXA([INV_INFO.AcctNum]) + "' )x"));
  h->cmbSort[0].AddItem("Balance");
  h->cmbSort[0].SetText("Balance");
  EXPECT_TRUE(Contains(BuildReportSQL(*h, false), R"x(ACCTS.Balance=" + FXA([INV_INFO.Balance]) + " )x"));
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
  EXPECT_EQ(BuildViewSQL(*h, true), "CQ:SELECT ACCTS.AcctNum FROM ACCTS WHERE    ORDER BY ACCTS.AcctNum ASC");
  EXPECT_TRUE(StartsWith(BuildReportSQL(*h, true), "\"CQ:SELECT ACCTS.AcctNum FROM ACCTS"));
  // Back in easy mode the template comes from the setup file, not from the
  // statement text a loaded profile or the advanced edit left behind.
  h->optFilter.SetValue(0);
  h->DataSetSQL.clear();
  EXPECT_EQ(BuildViewSQL(*h, false), "CQ:SELECT ACCTS.AcctNum FROM ACCTS WHERE    ORDER BY ACCTS.AcctNum ASC");
}

}  // namespace
}  // namespace cvve
