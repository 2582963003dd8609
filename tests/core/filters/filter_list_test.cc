#include "filters/filter_list.h"

#include <gtest/gtest.h>

#include <tuple>

#include "base/error.h"
#include "base/text.h"
#include "fixtures.h"

namespace cvve::testing {
namespace {

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
    EXPECT_EQ((std::vector<std::string>{list.SubItem(i, 1), list.SubItem(i, 2), list.SubItem(i, 3),
                                        list.SubItem(i, 4)}),
              (std::vector<std::string>{r.param1, r.data1, r.param2, r.data2}));
  }
}

// A user profile "P" on Accounts with the given FilterChecks.
std::string ViewsWithChecks(const std::string& checks) {
  return ViewsFile({{"P",
                     "<DataSet>Accounts</DataSet><AcctViewType>0</AcctViewType><FilterType>0"
                     "</FilterType><FilterChecks>" +
                         checks + "</FilterChecks>"}});
}

std::string Check(const std::string& index, const std::string& value, const std::string& data1,
                  const std::string& data2 = "") {
  return "<Filter><Index>" + index + "</Index><Value>" + value + "</Value><Data1>" + data1 +
         "</Data1><Data2>" + data2 + "</Data2></Filter>";
}

TEST(FilterListTest, RowsFromDefinitionsWithDefaultsAndColours) {
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
  h.Open("", "", kSetup);  // no profile: rows unchecked with defaults
  EXPECT_EQ(h->Data1Column, 3);
  EXPECT_EQ(h->Data2Column, 5);
  ExpectRows(h->lstFilters, {{"Status is", "1", false, "is", "A", "unused", ""},
                             {"Due between", "2", false, "from", "01/01/2020", "to", "12/31/2020"},
                             {"Active only", "3", false, "", "", "", ""},
                             {"Bare", "4", false, "", "", "", ""}});
  EXPECT_EQ(h->lstFilters.Item(1).tag, "1|is|unused|ACCTS.Status='%DATA1%'|1|A");
  EXPECT_EQ(h->lstFilters.Item(4).tag, "|||||");
  EXPECT_EQ(h->FilterRowColor, (std::vector<std::int32_t>{0xC0FFFF, 0xC0FFFF, 0, 0, 0}));
  EXPECT_EQ(h->FilterRowInputCount, (std::vector<std::int16_t>{1, 2, 0, 0, 0}));

  // Only Data1 (sub-item 2) and, for two values, Data2 (sub-item 4) are painted.
  const struct {
    int row, sub_item;
    std::optional<std::uint32_t> color;
  } paints[] = {{0, 2, kEditableCellColor}, {0, 4, std::nullopt}, {0, 0, std::nullopt},
                {0, 1, std::nullopt},       {0, 3, std::nullopt}, {1, 2, kEditableCellColor},
                {1, 4, kEditableCellColor}, {2, 2, std::nullopt}, {2, 4, std::nullopt},
                {3, 2, std::nullopt},       {9, 2, std::nullopt}, {-1, 2, std::nullopt}};
  for (const auto& p : paints) {
    EXPECT_EQ(FilterCellColor(*h, p.row, p.sub_item), p.color) << p.row << "/" << p.sub_item;
  }

  // Another data set: the arrays follow the row count, keeping what they held.
  h->cmbDataSet.SetText("Inventory");
  ExpectRows(h->lstFilters, {{"Arrived by", "7", false, "by", "", "", ""}});
  EXPECT_EQ(h->FilterRowColor, (std::vector<std::int32_t>{0xC0FFFF, 0xC0FFFF}));
  EXPECT_EQ(h->FilterRowInputCount, (std::vector<std::int16_t>{1, 2}));
}

TEST(FilterListTest, SavedStateOverDefaultsAndOddDefinitions) {
  // A few saved entries, and the same behind many that match no row: the
  // first entry of a key counts either way.
  for (int padding : {0, 24}) {
    SCOPED_TRACE(padding);
    std::string unmatched;
    for (int i = 0; i < padding; ++i) unmatched += Check("x" + std::to_string(i), "False", "");
    HeadlessEditor h;
    h.Open(ViewsWithChecks(unmatched + Check("1", "True", "45") +
                           Check("2", "False", "", "07/04/2020") + Check("3", "maybe", "") +
                           Check("3", "True", "second entry") + Check("1", "False", "later")),
           "", kSetup);
    ExpectRows(h->lstFilters,
               {{"Status is", "1", true, "is", "45", "unused", ""},
                {"Due between", "2", false, "from", "01/01/2020", "to", "07/04/2020"},
                {"Active only", "3", false, "", "", "", ""},
                {"Bare", "4", false, "", "", "", ""}});

    HeadlessEditor odd;
    odd.Open(ViewsFile({{"P", "<DataSet>D</DataSet><FilterChecks>" + Check("o'k", "True", "9") +
                                  unmatched + Check("", "True", "8") + Check("", "False", "7") +
                                  "</FilterChecks>"}}),
             "",
             "<ViewSetup><RootNodes><Root><Index>0</Index><Name>F</Name></Root></RootNodes>"
             "<DataSets><DataSet><Name>D</Name><Filters>"
             "<Filter><Name>A</Name><Index>o'k</Index><InputNum>1</InputNum><Defaults>1"
             "</Defaults></Filter><Filter><Name>B</Name><Index>o'k</Index><InputNum>3</InputNum>"
             "</Filter><Filter><Name>C</Name><Index>c</Index><InputNum>2</InputNum><Defaults>a|b|c"
             "</Defaults></Filter></Filters></DataSet></DataSets></ViewSetup>");
    // An apostrophe in the key finds no saved entry; a repeated key leaves the
    // second row without one, which then finds the entry of the empty index.
    ExpectRows(odd->lstFilters, {{"A", "o'k", false, "", "1", "", ""},
                                 {"B", "", true, "", "8", "", ""},
                                 {"C", "c", false, "", "a", "", "b"}});
    EXPECT_EQ(odd->FilterRowInputCount, (std::vector<std::int16_t>{1, 3, 2, 0}));
    EXPECT_EQ(odd->FilterRowColor, (std::vector<std::int32_t>{0xC0FFFF, 0, 0xC0FFFF, 0}));
  }
}

TEST(FilterListTest, MissingFiltersElementIsReportedOncePerLoadFiles) {
  HeadlessEditor h;
  h.Open("", "", kSetup);
  EXPECT_TRUE(h.Messages().empty());  // the data-set choice at start-up is quiet
  h->cmbDataSet.SetText("NoFilters");
  EXPECT_EQ(h->lstFilters.ItemCount(), 0);
  ASSERT_EQ(h.prompter.Shown().size(), 1u);
  EXPECT_EQ(Box(h.prompter.Shown()[0]),
            Box("Error", "OK", "critical",
                std::string("Error encountered while loading 'NoFilters' filter:") + kCrLf + kCrLf +
                    "You may need to reinstall viewsetup.xml"));
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
  HeadlessEditor none;  // without a current profile it does nothing
  none.Open("", "", kSetup);
  none->lstFilters.SetSubItem(1, 2, "typed");
  none->lstFilters.SetChecked(2, true);
  ApplyFilterChecks(*none);
  EXPECT_EQ(none->lstFilters.SubItem(1, 2), "typed");
  EXPECT_TRUE(none->lstFilters.Item(2).checked);

  HeadlessEditor h;
  h.Open(ViewsWithChecks(Check("1", "True", "45")), "", kSetup);
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
  ExpectRows(list, {{"Status is", "1", true, "is", "45", "unused", "kept"},
                    {"Due between", "2", false, "from", "01/01/2020", "to", "12/31/2020"},
                    {"Active only", "3", true, "label", "", "", "kept too"},
                    {"Bare", "4", false, "", "", "", ""}});
  EXPECT_EQ(h->FilterRowColor[2], 123);
}

TEST(FilterListTest, UserCheckMarksChangeAndSelectsTheRowAndColourBoundsHold) {
  HeadlessEditor h;
  h.Open(ViewsWithChecks(""), "", kSetup);
  for (const auto& [row, on] : {std::pair{3, true}, std::pair{1, false}}) {
    h->ProfileChanged = false;
    h->lstFilters.UserCheck(row, on);
    EXPECT_TRUE(h->ProfileChanged);
    EXPECT_EQ(h->lstFilters.SelectedItem(), row);
    EXPECT_EQ(h->lstFilters.Item(row).checked, on);
  }
  // Four rows: the arrays hold rows 1 to 5.
  const auto revision = h->lstFilters.Revision();
  SetFilterRowColor(*h, 5, 2, 77);
  EXPECT_EQ(h->FilterRowColor[4], 77);
  EXPECT_EQ(h->FilterRowInputCount[4], 2);
  EXPECT_GT(h->lstFilters.Revision(), revision);  // asked to repaint
  EXPECT_THROW(SetFilterRowColor(*h, 6, 1, 1), Error);
  EXPECT_THROW(SetFilterRowColor(*h, 0, 1, 1), Error);
}


// A data set's rows are taken from its kept template from the second visit
// on. Two editors take the same walk through profiles on odd data sets: one
// keeps the templates, the other drops them before every click and so
// always reads the definitions. Everything the load leaves must be alike.
TEST(FilterListTest, KeptTemplatesGiveWhatTheDefinitionsGive) {
  const std::string setup =
      "<ViewSetup><RootNodes><Root><Index>0</Index><Name>F</Name></Root></RootNodes><DataSets>"
      "<DataSet><Name>Plain</Name><Filters>"
      "<Filter><Name>One</Name><Index>1</Index><InputNum>1</InputNum><Label1>is</Label1>"
      "<Defaults>d1</Defaults></Filter>"
      "<Filter><Name>Two</Name><Index>2</Index><InputNum>2</InputNum><Label1>from</Label1>"
      "<Label2>to</Label2><Defaults>a|b</Defaults></Filter>"
      "<Filter><Name>None</Name><Index>3</Index><InputNum>0</InputNum></Filter>"
      "</Filters></DataSet>"
      // A colour step that overflows leaves the arrays as they were; a key
      // used twice and one with an apostrophe.
      "<DataSet><Name>Odd</Name><Filters>"
      "<Filter><Name>Big</Name><Index>9</Index><InputNum>70000</InputNum></Filter>"
      "<Filter><Name>Again</Name><Index>9</Index><InputNum>2</InputNum><Defaults>x</Defaults>"
      "</Filter><Filter><Name>Quote</Name><Index>q'1</Index><InputNum>1</InputNum></Filter>"
      "<Filter><Name>Text</Name><Index>t</Index><InputNum>abc</InputNum></Filter>"
      "<Filter><Name>Half</Name><Index>5</Index><InputNum>1.5</InputNum></Filter>"
      "</Filters></DataSet>"
      "<DataSet><Name>Bare</Name></DataSet>"
      "<DataSet><Name>Empty</Name><Filters/></DataSet>"
      "</DataSets></ViewSetup>";
  auto profile = [](const std::string& data_set, const std::string& checks) {
    return "<DataSet>" + data_set + "</DataSet><AcctViewType>0</AcctViewType>"
           "<FilterType>0</FilterType><FilterChecks>" + checks + "</FilterChecks>";
  };
  const std::string views = ViewsFile(
      {{"P1", profile("Plain", Check("1", "True", "45") + Check("2", "False", "", "z"))},
       {"O1", profile("Odd", Check("9", "True", "n") + Check("", "True", "e") +
                                 Check("t", "maybe", "v"))},
       {"P2", profile("Plain", Check("3", "True", "") + Check("1", "False", "", "w"))},
       {"B1", profile("Bare", "")},
       {"O2", profile("Odd", "")},
       {"E1", profile("Empty", Check("1", "True", "x"))},
       {"Gone", profile("Missing", Check("1", "True", "x"))}});
  HeadlessEditor kept, fresh;
  kept.Open(views, "", setup);
  fresh.Open(views, "", setup);
  for (const char* name : {"P1", "O1", "P2", "O1", "B1", "P1", "O2", "E1", "Gone", "B1", "P2",
                           "O2", "P1"}) {
    SCOPED_TRACE(name);
    fresh->FilterTemplates().Clear();
    Select(kept, name);
    Select(fresh, name);
    const ui::ListView& a = kept->lstFilters;
    const ui::ListView& b = fresh->lstFilters;
    ASSERT_EQ(a.ItemCount(), b.ItemCount());
    for (int row = 1; row <= a.ItemCount(); ++row) {
      SCOPED_TRACE(row);
      EXPECT_EQ(a.Item(row).text, b.Item(row).text);
      EXPECT_EQ(a.Item(row).key, b.Item(row).key);
      EXPECT_EQ(a.Item(row).tag, b.Item(row).tag);
      EXPECT_EQ(a.Item(row).checked, b.Item(row).checked);
      EXPECT_EQ(a.Item(row).sub_items, b.Item(row).sub_items);
      EXPECT_EQ(a.FindKey(a.Item(row).key), b.FindKey(b.Item(row).key));
    }
    EXPECT_EQ(kept->FilterRowColor, fresh->FilterRowColor);
    EXPECT_EQ(kept->FilterRowInputCount, fresh->FilterRowInputCount);
    // Where the views cursor was left: element, its Index and Data1 texts.
    auto where = [](const DocumentCursor& doc) {
      const XmlNode at = doc.CurrentNode();
      return std::string(at.name()) + "|" + ChildText(at, "Index") + "|" + ChildText(at, "Data1");
    };
    EXPECT_EQ(where(kept->ViewsDoc), where(fresh->ViewsDoc));
    EXPECT_EQ(kept.Messages(), fresh.Messages());
    EXPECT_EQ(kept->ProfileChanged, fresh->ProfileChanged);
  }
  // The odd set's overflowing row kept the colour the plain set's row gave it.
  Select(kept, "P1");
  Select(kept, "O1");
  EXPECT_EQ(kept->FilterRowColor[0], static_cast<std::int32_t>(kEditableCellColor));
  EXPECT_EQ(kept->FilterRowInputCount[0], 1);
}

}  // namespace
}  // namespace cvve::testing
