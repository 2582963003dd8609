#include "viewfiles/setup_file.h"

#include <gtest/gtest.h>

#include "test_support.h"
#include "viewfiles/profile_record.h"

namespace cvve {
namespace {

using testing::HeadlessEditor;

// Two data sets with a comment between them, duplicate columns, a column
// with two Field children and one without a Name.
const char* kSetup = R"(<ViewSetup>
  <DataSets>
    <DataSet>
      <Name>Accounts</Name>
      <SQL>SELECT %FIELDLIST% FROM ACCTS WHERE 1=1 %ANDWHERELIST% %ORDERLIST%</SQL>
      <Columns>
        <Column><Name>Account</Name><Field>AcctNum</Field><SortField>ACCTS.AcctNum</SortField><FieldFormat>String</FieldFormat><Width>1200</Width></Column>
        <Column><Name>Balance</Name><Field>ACCTS.Balance</Field><Field>ACCTS.Bal2</Field><SortField>ACCTS.Balance</SortField><FieldFormat>Currency</FieldFormat></Column>
        <Column><Field>NoName</Field></Column>
        <!-- a comment among the columns -->
        <Column><Name>Due</Name><Field>$DUE_DATE</Field><SortField>$DUE_DATE</SortField></Column>
        <Column><Name>Balance</Name><Field>second</Field></Column>
        <Column><Name>Lower</Name><Field>acctnum</Field></Column>
      </Columns>
      <Filters/>
    </DataSet>
    <!-- between data sets -->
    <DataSet>
      <Name>Deals</Name>
      <SQL>SELECT %FIELDLIST% FROM DEAL_INFO</SQL>
      <Columns><Column><Name>Deal</Name><SortField>DEAL_INFO.DealID</SortField></Column></Columns>
      <Filters/>
    </DataSet>
  </DataSets>
  <Tabs>
    <Tab><Index>1</Index><Name>General</Name></Tab>
    <Tab><Index>2</Index><Name>Payments</Name></Tab>
    <Tab><Index>5</Index><Name>Notes</Name></Tab>
  </Tabs>
</ViewSetup>)";

TEST(SetupFileTest, DataSetsTakeEverySiblingWhateverItsName) {
  HeadlessEditor h;
  h.Open("", "", kSetup);
  auto& sets = h->cmbDataSet;
  ASSERT_EQ(sets.ListCount(), 3);
  EXPECT_EQ(sets.List(0), "Accounts");
  EXPECT_EQ(sets.List(1), "");  // the comment
  EXPECT_EQ(sets.List(2), "Deals");
  EXPECT_EQ(sets.ListIndex(), 0);
  EXPECT_EQ(h->DataSetSQL,
            "SELECT %FIELDLIST% FROM ACCTS WHERE 1=1 %ANDWHERELIST% %ORDERLIST%");
  // The column without a Name is skipped, duplicates are both listed.
  EXPECT_EQ(h->lstAvailColumns.Items(),
            (std::vector<std::string>{"Account", "Balance", "Due", "Balance", "Lower"}));
}

TEST(SetupFileTest, MissingOrEmptyDataSets) {
  struct Case {
    const char* setup;
    bool message;
  } cases[] = {
      {"<ViewSetup><Tabs/></ViewSetup>", true},
      {"<ViewSetup><DataSets/></ViewSetup>", false},
      {"<ViewSetup><DataSets></DataSets></ViewSetup>", false},
  };
  for (const auto& c : cases) {
    HeadlessEditor h;
    h.Open("", "", c.setup);
    EXPECT_EQ(h->cmbDataSet.ListCount(), 0) << c.setup;
    bool shown = false;
    for (const auto& m : h.Messages()) {
      if (m.rfind("Error in LoadDataSets:\r\n\r\n", 0) == 0) shown = true;
    }
    EXPECT_EQ(shown, c.message) << c.setup;
  }
}

TEST(SetupFileTest, NoSetupFileIsNotReported) {
  HeadlessEditor h;
  h.Open("", "", "");
  EXPECT_EQ(h->cmbDataSet.ListCount(), 0);
  for (const auto& m : h.Messages()) EXPECT_EQ(m.find("LoadDataSets"), std::string::npos);
}

TEST(SetupFileTest, ChoosingADataSetRebuildsTheColumns) {
  HeadlessEditor h;
  h.Open("", "", kSetup);
  h->lstUsedColumns.AddItem("Account");
  h->cmbDataSet.SetText("Deals");
  EXPECT_EQ(h->lstAvailColumns.Items(), std::vector<std::string>{"Deal"});
  EXPECT_EQ(h->lstUsedColumns.ListCount(), 0);
  EXPECT_EQ(h->DataSetSQL, "SELECT %FIELDLIST% FROM DEAL_INFO");
}

TEST(SetupFileTest, AVanishedDataSetIsReported) {
  HeadlessEditor h;
  h.Open("", "", kSetup);
  h->lstUsedColumns.AddItem("Account");
  h->cmbDataSet.SetListIndex(1);  // the comment's empty name: nothing to load
  h->cmbDataSet.SetListIndex(2);
  // Remove the data set from the document, then choose it again.
  auto ds = SelectSingleNode(h->SetupDoc.Root(), "DataSets/DataSet[Name='Deals']");
  ds.parent().remove_child(ds);
  h->cmbDataSet.SetListIndex(0);
  h->lstUsedColumns.AddItem("kept");
  h->cmbDataSet.SetListIndex(2);
  EXPECT_EQ(h.LastMessage(), "Error loading columns:  Data Set not found.");
  EXPECT_EQ(h->lstUsedColumns.Items(), std::vector<std::string>{"kept"});
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
      {"Due", "$DUE_DATE", "Next_Pmt_Due", "$DUE_DATE", ""},
      {"Lower", "acctnum", "acctnum", "", ""},  // the mapping is case-sensitive
      {"Missing", "", "", "", ""},
      {"O'Brien", "", "", "", ""},  // an apostrophe: not found, no failure
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ColumnField(*h, c.column), c.field) << c.column;
    EXPECT_EQ(ColumnFieldMapped(*h, c.column), c.mapped) << c.column;
    EXPECT_EQ(ColumnSortField(*h, c.column), c.sort) << c.column;
    EXPECT_EQ(ColumnFieldFormat(*h, c.column), c.format) << c.column;
  }
  // Of two columns with one name the first in document order is found.
  EXPECT_EQ(ChildText(SelectColumn(*h, "Balance"), "SortField"), "ACCTS.Balance");
  EXPECT_EQ(ColumnAttribute(*h, "Account", "Width"), "1200");
}

TEST(SetupFileTest, TabsAreKeyedAndWrittenAsAList) {
  HeadlessEditor h;
  h.Open("<Views><Profiles><Profile><Name>Mine</Name></Profile></Profiles></Views>", "",
         kSetup);
  auto& tabs = h->lstvwTabs;
  ASSERT_EQ(tabs.ItemCount(), 3);
  EXPECT_EQ(tabs.Item(3).key, "T5");
  EXPECT_EQ(tabs.Item(3).tag, "5");
  EXPECT_EQ(tabs.Item(3).text, "Notes");
  ASSERT_TRUE(SelectProfileCustom(*h, "Mine"));
  struct Case {
    std::vector<int> checked;
    std::string want;
  } cases[] = {{{2, 3}, "2,5"}, {{}, ""}, {{1, 2, 3}, "1,2,5"}};
  for (const auto& c : cases) {
    for (int row = 1; row <= 3; ++row) tabs.SetChecked(row, false);
    for (int row : c.checked) tabs.SetChecked(row, true);
    WriteProfileTabs(*h);
    EXPECT_EQ(ChildText(h->CurrentProfileNode(), "Tabs"), c.want);
  }
}

TEST(SetupFileTest, ProfileColumnsCopyDefinitionsAndDropUnknownOnes) {
  HeadlessEditor h;
  h.Open(
      "<Views><Profiles><Profile><Name>Mine</Name><Columns><Column><Name>Old</Name></Column>"
      "</Columns></Profile></Profiles></Views>",
      "", kSetup);
  ASSERT_TRUE(SelectProfileCustom(*h, "Mine"));
  h->lstUsedColumns.Clear();
  for (const char* c : {"Balance", "Gone", "Account"}) h->lstUsedColumns.AddItem(c);
  WriteProfileColumns(*h);
  auto columns = SelectNodes(h->CurrentProfileNode(), "Columns/Column");
  ASSERT_EQ(columns.size(), 2u);
  EXPECT_EQ(ChildText(columns[0], "Name"), "Balance");
  EXPECT_EQ(SelectNodes(columns[0], "Field").size(), 2u);  // every child copied
  EXPECT_EQ(ChildText(columns[1], "Width"), "1200");
  EXPECT_EQ(SelectNodes(h->CurrentProfileNode(), "Columns").size(), 1u);
}

TEST(SetupFileTest, WritersNeedAProfile) {
  HeadlessEditor h;
  h.Open("<Views><Profiles/></Views>", "", kSetup);
  h->lstUsedColumns.AddItem("Account");
  EXPECT_NO_THROW(WriteProfileColumns(*h));
  EXPECT_NO_THROW(WriteProfileTabs(*h));
  EXPECT_EQ(h->ViewsDoc.ToString().find("Column"), std::string::npos);
}

}  // namespace
}  // namespace cvve
