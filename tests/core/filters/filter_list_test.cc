#include "filters/filter_list.h"

#include <gtest/gtest.h>

#include <tuple>

#include "base/error.h"
#include "base/text.h"
#include "core/profiles/browse_fixture.h"
#include "profiles/profile_loader.h"
#include "test_support.h"
#include "viewfiles/profile_record.h"

namespace cvve {
namespace {

using testing::HeadlessEditor;
using testing::kBrowseSetup;

constexpr std::uint32_t kYellow = 0xC0FFFF;

struct Row {
  std::string text, key;
  bool checked;
  std::string param1, data1, param2, data2;
};

void ExpectRows(const ui::ListView& list, const std::vector<Row>& rows) {
  ASSERT_EQ(list.ItemCount(), static_cast<int>(rows.size()));
  for (int i = 1; i <= list.ItemCount(); ++i) {
    const Row& r = rows[static_cast<std::size_t>(i - 1)];
    SCOPED_TRACE(r.text);
    EXPECT_EQ(list.Item(i).text, r.text);
    EXPECT_EQ(list.Item(i).key, r.key);
    EXPECT_EQ(list.Item(i).checked, r.checked);
    EXPECT_EQ(list.SubItem(i, 1), r.param1);
    EXPECT_EQ(list.SubItem(i, 2), r.data1);
    EXPECT_EQ(list.SubItem(i, 3), r.param2);
    EXPECT_EQ(list.SubItem(i, 4), r.data2);
  }
}

// A user profile on the Accounts data set with the given FilterChecks.
std::string ViewsWithChecks(const std::string& checks) {
  return "<Views><Profiles><Profile><Name>P</Name><DataSet>Accounts</DataSet>"
         "<AcctViewType>0</AcctViewType><FilterType>0</FilterType><FilterChecks>" +
         checks + "</FilterChecks></Profile></Profiles></Views>";
}

std::string Check(const std::string& index, const std::string& value, const std::string& data1,
                  const std::string& data2 = "") {
  return "<Filter><Index>" + index + "</Index><Value>" + value + "</Value><Data1>" + data1 +
         "</Data1><Data2>" + data2 + "</Data2></Filter>";
}

TEST(FilterListTest, ColumnsByKeyWidthAndAlignment) {
  HeadlessEditor h;
  std::vector<std::tuple<std::string, std::string, ui::Alignment, int>> columns;
  for (const auto& c : h->lstFilters.Columns()) {
    columns.emplace_back(c.key, c.header, c.alignment, c.width_twips);
  }
  using A = ui::Alignment;
  EXPECT_EQ(columns, (decltype(columns){{"", "Filter", A::kLeft, 3000},
                                        {"Param1", "", A::kLeft, 1440},
                                        {"Data1", "", A::kCenter, 1570},
                                        {"Param2", "", A::kCenter, 1440},
                                        {"Data2", "", A::kCenter, 1570}}));
  h.Open("", "", kBrowseSetup);
  EXPECT_EQ(h->Data1Column, 3);
  EXPECT_EQ(h->Data2Column, 5);
}

TEST(FilterListTest, RowsFromDefinitionsWithDefaultsAndColours) {
  HeadlessEditor h;
  h.Open("", "", kBrowseSetup);  // no profile: rows unchecked with defaults
  ASSERT_EQ(h->cmbDataSet.Text(), "Accounts");
  ExpectRows(h->lstFilters, {{"Balance over", "1", false, "more than", "30", "unused", ""},
                             {"Due between", "2", false, "from", "01/01/2020", "to", "12/31/2020"},
                             {"Active only", "3", false, "", "", "", ""},
                             {"Bare", "4", false, "", "", "", ""}});
  EXPECT_EQ(h->lstFilters.Item(1).tag, "1|more than|unused|ACCTS.Balance > %DATA1%|1|30");
  EXPECT_EQ(h->lstFilters.Item(4).tag, "|||||");
  EXPECT_TRUE(h->lstFilters.Visible());
  EXPECT_EQ(h->FilterRowColor, (std::vector<std::int32_t>{0xC0FFFF, 0xC0FFFF, 0, 0, 0}));
  EXPECT_EQ(h->FilterRowInputCount, (std::vector<std::int16_t>{1, 2, 0, 0, 0}));

  // Only Data1 (sub-item 2) and, for two values, Data2 (sub-item 4) are painted.
  struct Paint {
    int row, sub_item;
    std::optional<std::uint32_t> color;
  };
  const Paint paints[] = {{0, 2, kYellow},      {0, 4, std::nullopt}, {0, 0, std::nullopt},
                          {0, 1, std::nullopt}, {0, 3, std::nullopt}, {1, 2, kYellow},
                          {1, 4, kYellow},      {2, 2, std::nullopt}, {2, 4, std::nullopt},
                          {3, 2, std::nullopt}, {9, 2, std::nullopt}, {-1, 2, std::nullopt}};
  for (const Paint& p : paints) {
    EXPECT_EQ(FilterCellColor(*h, p.row, p.sub_item), p.color)
        << "row " << p.row << " sub-item " << p.sub_item;
  }

  // Another data set: the arrays follow the row count, keeping what they held.
  h->cmbDataSet.SetText("Inventory");
  ExpectRows(h->lstFilters, {{"Make is", "1", false, "=", "", "", ""}});
  EXPECT_EQ(h->FilterRowColor, (std::vector<std::int32_t>{0xC0FFFF, 0xC0FFFF}));
  EXPECT_EQ(h->FilterRowInputCount, (std::vector<std::int16_t>{1, 2}));
}

TEST(FilterListTest, SavedStateOverDefaults) {
  HeadlessEditor h;
  h.Open(ViewsWithChecks(Check("1", "True", "45") + Check("2", "False", "", "07/04/2020") +
                         Check("3", "maybe", "") + Check("3", "True", "second entry")),
         "", kBrowseSetup);
  ASSERT_EQ(h->txtCurrProf.Text(), "P");
  ExpectRows(h->lstFilters, {{"Balance over", "1", true, "more than", "45", "unused", ""},
                             {"Due between", "2", false, "from", "01/01/2020", "to", "07/04/2020"},
                             {"Active only", "3", false, "", "", "", ""},
                             {"Bare", "4", false, "", "", "", ""}});
}

TEST(FilterListTest, OddDefinitionsStillGiveRows) {
  HeadlessEditor h;
  h.Open("<Views><Profiles><Profile><Name>P</Name><DataSet>D</DataSet><FilterChecks>" +
             Check("o'k", "True", "9") + Check("", "True", "8") +
             "</FilterChecks></Profile></Profiles></Views>",
         "",
         "<ViewSetup><RootNodes><Root><Index>0</Index><Name>F</Name></Root></RootNodes>"
         "<DataSets><DataSet><Name>D</Name><Filters>"
         "<Filter><Name>A</Name><Index>o'k</Index><InputNum>1</InputNum><Defaults>1</Defaults></"
         "Filter>"
         "<Filter><Name>B</Name><Index>o'k</Index><InputNum>3</InputNum></Filter>"
         "<Filter><Name>C</Name><Index>c</Index><InputNum>2</InputNum><Defaults>a|b|c</Defaults></"
         "Filter>"
         "</Filters></DataSet></DataSets></ViewSetup>");
  // An apostrophe in the key finds no saved entry; a repeated key leaves the
  // second row without one, which then finds the entry of the empty index.
  ExpectRows(h->lstFilters, {{"A", "o'k", false, "", "1", "", ""},
                             {"B", "", true, "", "8", "", ""},
                             {"C", "c", false, "", "a", "", "b"}});
  EXPECT_EQ(h->FilterRowInputCount, (std::vector<std::int16_t>{1, 3, 2, 0}));
  EXPECT_EQ(h->FilterRowColor, (std::vector<std::int32_t>{0xC0FFFF, 0, 0xC0FFFF, 0}));
}

TEST(FilterListTest, MissingFiltersElementIsReportedOncePerLoadFiles) {
  const std::string message = std::string("Error encountered while loading 'NoFilters' filter:") +
                              kCrLf + kCrLf + "You may need to reinstall viewsetup.xml";
  HeadlessEditor h;
  h.Open("", "", kBrowseSetup);
  EXPECT_TRUE(h.Messages().empty());  // the empty data-set choice at start-up is quiet

  h->cmbDataSet.SetText("NoFilters");
  EXPECT_EQ(h->lstFilters.ItemCount(), 0);
  ASSERT_EQ(h.Messages(), (std::vector<std::string>{message}));
  EXPECT_EQ(h.prompter.Shown()[0].title, "Error");
  EXPECT_EQ(h.prompter.Shown()[0].icon, "critical");
  EXPECT_EQ(h.prompter.Shown()[0].buttons, "OK");
  EXPECT_TRUE(h->FilterErrorShown);

  h->cmbDataSet.SetText("Accounts");
  h->cmbDataSet.SetText("NoFilters");
  h->cmbDataSet.SetText("EmptyFilters");  // present but empty: no message at all
  EXPECT_EQ(h->lstFilters.ItemCount(), 0);
  EXPECT_EQ(h.Messages().size(), 1u);

  h->LoadFiles("views.xml", "defs.xml", "setup.xml");
  EXPECT_FALSE(h->FilterErrorShown);
  h->cmbDataSet.SetText("NoFilters");
  EXPECT_EQ(h.Messages().size(), 2u);
}

TEST(FilterListTest, ApplyFilterChecksTouchesOnlyChecksAndValues) {
  HeadlessEditor h;
  h.Open(ViewsWithChecks(Check("1", "True", "45")), "", kBrowseSetup);
  ui::ListView& list = h->lstFilters;
  list.SetChecked(1, false);
  list.SetChecked(3, true);
  list.SetSubItem(1, 4, "kept");     // Data2 of a one-default filter
  list.SetSubItem(2, 2, "typed");    // Data1 with a default
  list.SetSubItem(3, 2, "cleared");  // Data1 of an empty Defaults: field 5 is ""
  list.SetSubItem(3, 4, "kept too");
  list.SetSubItem(3, 1, "label");
  h->FilterRowColor[2] = 123;

  ApplyFilterChecks(*h);
  ExpectRows(list, {{"Balance over", "1", true, "more than", "45", "unused", "kept"},
                    {"Due between", "2", false, "from", "01/01/2020", "to", "12/31/2020"},
                    {"Active only", "3", true, "label", "", "", "kept too"},
                    {"Bare", "4", false, "", "", "", ""}});
  EXPECT_EQ(h->FilterRowColor[2], 123);
}

TEST(FilterListTest, ApplyFilterChecksWithoutProfileDoesNothing) {
  HeadlessEditor h;
  h.Open("", "", kBrowseSetup);
  ASSERT_FALSE(h->CurrentProfileNode());
  h->lstFilters.SetSubItem(1, 2, "typed");
  h->lstFilters.SetChecked(2, true);
  ApplyFilterChecks(*h);
  EXPECT_EQ(h->lstFilters.SubItem(1, 2), "typed");
  EXPECT_TRUE(h->lstFilters.Item(2).checked);
}

TEST(FilterListTest, UserCheckMarksChangeAndSelectsTheRow) {
  HeadlessEditor h;
  h.Open(ViewsWithChecks(""), "", kBrowseSetup);
  ASSERT_FALSE(h->ProfileChanged);
  h->lstFilters.UserCheck(3, true);
  EXPECT_TRUE(h->ProfileChanged);
  EXPECT_EQ(h->lstFilters.SelectedItem(), 3);
  EXPECT_TRUE(h->lstFilters.Item(3).checked);
  h->ProfileChanged = false;
  h->lstFilters.UserCheck(1, false);
  EXPECT_TRUE(h->ProfileChanged);
  EXPECT_EQ(h->lstFilters.SelectedItem(), 1);
}

TEST(FilterListTest, SetFilterRowColorBounds) {
  HeadlessEditor h;
  h.Open("", "", kBrowseSetup);  // four rows: arrays hold indices 0..4
  const auto revision = h->lstFilters.Revision();
  SetFilterRowColor(*h, 5, 2, 77);
  EXPECT_EQ(h->FilterRowColor[4], 77);
  EXPECT_EQ(h->FilterRowInputCount[4], 2);
  EXPECT_GT(h->lstFilters.Revision(), revision);  // asked to repaint
  EXPECT_THROW(SetFilterRowColor(*h, 6, 1, 1), Error);
  EXPECT_THROW(SetFilterRowColor(*h, 0, 1, 1), Error);
}

}  // namespace
}  // namespace cvve
