#include "viewfiles/setup_file.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "fixtures.h"
#include "viewfiles/profile_record.h"

namespace cvve::testing {
namespace {

TEST(SetupFileTest, DataSetsTakeEverySiblingAndChoosingOneRebuildsTheColumns) {
  HeadlessEditor h;
  const std::string at = "<DataSet><Name>NoFilters";
  h.Open("", "", ReplaceAll(kSetup, at, "<!-- between data sets -->" + at));
  EXPECT_EQ(Entries(h->cmbDataSet),
            (Names{"Accounts", "Inventory", "", "NoFilters", "EmptyFilters"}));  // "": the comment
  EXPECT_EQ(h->cmbDataSet.ListIndex(), 0);
  EXPECT_EQ(h->DataSetSQL,
            "SELECT %FIELDLIST% FROM ACCTS WHERE %WHERELIST% %GROUPING% %ORDERLIST%");
  EXPECT_EQ(h->lstAvailColumns.Items(),
            (Names{"Account", "Balance", "Salesman", "Due Date", "Days Late", "Note"}));

  h->lstUsedColumns.AddItem("Account");
  h->cmbDataSet.SetText("NoFilters");
  // The nameless column and the comment are skipped; equal names both listed.
  EXPECT_EQ(h->lstAvailColumns.Items(), (Names{"Twin", "Twin"}));
  EXPECT_EQ(h->lstUsedColumns.ListCount(), 0);
  EXPECT_EQ(h->DataSetSQL, "SELECT %FIELDLIST% FROM ODD");
  EXPECT_EQ(ColumnSortField(*h, "Twin"), "first");  // the first in document order

  // A data set gone from the document since the list was filled.
  auto ds = SelectSingleNode(h->SetupDoc.Root(), "DataSets/DataSet[Name='Inventory']");
  ds.parent().remove_child(ds);
  h->lstUsedColumns.AddItem("kept");
  h->cmbDataSet.SetText("Inventory");
  EXPECT_EQ(h.LastMessage(), "Error loading columns:  Data Set not found.");
  EXPECT_EQ(h->lstUsedColumns.Items(), Names{"kept"});
}

TEST(SetupFileTest, MissingOrEmptyDataSets) {
  struct Case {
    const char* setup;
    bool message;
  } cases[] = {
      {"<ViewSetup><Tabs/></ViewSetup>", true},
      {"<ViewSetup><DataSets/></ViewSetup>", false},
      {"", false},  // no setup file at all
  };
  for (const auto& c : cases) {
    HeadlessEditor h;
    h.Open("", "", c.setup);
    EXPECT_EQ(h->cmbDataSet.ListCount(), 0) << c.setup;
    bool shown = false;
    for (const auto& m : h.Messages()) shown |= m.rfind("Error in LoadDataSets:\r\n\r\n", 0) == 0;
    EXPECT_EQ(shown, c.message) << c.setup;
  }
}

TEST(SetupFileTest, ColumnLookups) {
  HeadlessEditor h;
  h.Open("", "", kSetup);
  struct Case {
    const char* column;
    std::string field, mapped, sort, format;
  } cases[] = {
      {"Account", "AcctNum", "ACCTS.AcctNum", "ACCTS.AcctNum", "String"},
      {"Balance", "ACCTS.Bal2", "ACCTS.Bal2", "ACCTS.Balance", "Currency"},  // last Field wins
      {"Due Date", "$DUE_DATE", "Next_Pmt_Due", "ACCTS.Due", "Date"},
      {"Note", "acctnum", "acctnum", "", ""},  // the mapping is case-sensitive
      {"Missing", "", "", "", ""},
      {"O'Brien", "", "", "", ""},  // an apostrophe: not found, no failure
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ColumnField(*h, c.column), c.field) << c.column;
    EXPECT_EQ(ColumnFieldMapped(*h, c.column), c.mapped) << c.column;
    EXPECT_EQ(ColumnSortField(*h, c.column), c.sort) << c.column;
    EXPECT_EQ(ColumnFieldFormat(*h, c.column), c.format) << c.column;
  }
  EXPECT_EQ(ColumnAttribute(*h, "Account", "Width"), "1200");
}

TEST(SetupFileTest, ProfileWritersCopyTabsAndColumnDefinitions) {
  HeadlessEditor h;
  h.Open(kViews, "", kSetup);
  auto& tabs = h->lstvwTabs;
  ASSERT_EQ(tabs.ItemCount(), 4);
  EXPECT_EQ(tabs.Item(4).key, "T5");
  EXPECT_EQ(tabs.Item(4).tag, "5");
  EXPECT_EQ(tabs.Item(4).text, "History");
  // Without a current profile the writers write nothing.
  h->SetCurrentProfileNode({}, h->ViewsDoc);
  const std::string before = h->ViewsDoc.ToString();
  WriteProfileTabs(*h);
  WriteProfileColumns(*h);
  EXPECT_EQ(h->ViewsDoc.ToString(), before);

  ASSERT_TRUE(SelectProfileCustom(*h, "Mine"));
  struct Case {
    std::vector<int> checked;
    std::string want;
  } cases[] = {{{2, 4}, "2,5"}, {{}, ""}, {{1, 2, 4}, "1,2,5"}};
  for (const auto& c : cases) {
    for (int row = 1; row <= 4; ++row) tabs.SetChecked(row, false);
    for (int row : c.checked) tabs.SetChecked(row, true);
    WriteProfileTabs(*h);
    EXPECT_EQ(ChildText(h->CurrentProfileNode(), "Tabs"), c.want);
  }

  h->lstUsedColumns.Clear();
  for (const char* c : {"Balance", "Gone", "Account"}) h->lstUsedColumns.AddItem(c);
  WriteProfileColumns(*h);
  auto columns = SelectNodes(h->CurrentProfileNode(), "Columns/Column");
  ASSERT_EQ(columns.size(), 2u);  // the unknown column is dropped
  EXPECT_EQ(ChildText(columns[0], "Name"), "Balance");
  EXPECT_EQ(SelectNodes(columns[0], "Field").size(), 2u);  // every child copied
  EXPECT_EQ(ChildText(columns[1], "Width"), "1200");
  EXPECT_EQ(SelectNodes(h->CurrentProfileNode(), "Columns").size(), 1u);
}

}  // namespace
}  // namespace cvve::testing
