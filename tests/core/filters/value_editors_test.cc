#include "filters/value_editors.h"

#include <gtest/gtest.h>

#include <string>

#include "test_support.h"
#include "viewfiles/setup_file.h"

namespace cvve {
namespace {

using testing::HeadlessEditor;

// Rows: 1 Status (one value), 2 Balance (two values), 3 Dealer (no value).
const char* kSetup = R"(<ViewSetup>
  <DataSets>
    <DataSet>
      <Name>Accounts</Name>
      <SQL>SELECT %FIELDLIST% FROM ACCTS</SQL>
      <Columns><Column><Name>Account</Name><SortField>ACCTS.AcctNum</SortField></Column></Columns>
      <Filters>
        <Filter><Name>Status</Name><Index>1</Index><InputNum>1</InputNum><Label1>is</Label1><SQL>S='%DATA1%'</SQL><Group>1</Group><Defaults>A</Defaults></Filter>
        <Filter><Name>Balance</Name><Index>2</Index><InputNum>2</InputNum><Label1>from</Label1><Label2>to</Label2><SQL>B BETWEEN %DATA1% AND %DATA2%</SQL><Group>2</Group><Defaults>0|100</Defaults></Filter>
        <Filter><Name>Dealer</Name><Index>3</Index><InputNum>0</InputNum><SQL>D=1</SQL><Group>3</Group></Filter>
      </Filters>
    </DataSet>
  </DataSets>
</ViewSetup>)";

// Column lefts within the list (twips): Filter 0, Param1 3000, Data1 4440,
// Param2 6010, Data2 7450; rows start below a 300-twip header, 255 each.
constexpr float kCaptionX = 100, kParam1X = 3100, kData1X = 4500, kData2X = 7500;
float RowY(int row) { return 300.0f + 255.0f * static_cast<float>(row - 1) + 20.0f; }

struct ValueEditorsTest : ::testing::Test {
  void SetUp() override {
    ASSERT_TRUE(h->SetupDoc.LoadText(kSetup));
    LoadDataSets(*h);
    ASSERT_EQ(h->lstFilters.ItemCount(), 3);
    h->lstFilters.left = 240;
    h->lstFilters.top = 1200;
    h->ProfileChanged = false;
  }
  void Click(float x, int row) { lstFilters_MouseDown(*h, 1, 0, x, RowY(row)); }
  std::string Cell(int row, const char* key) {
    return h->lstFilters.SubItem(row, h->lstFilters.ColumnPosition(key) - 1);
  }
  HeadlessEditor h;
};

TEST_F(ValueEditorsTest, OneValueFilterOpensTheFirstBoxOverItsCell) {
  Click(kData1X, 1);
  EXPECT_EQ(h->lstFilters.SelectedItem(), 1);  // the press selected the row
  const ui::ComboBox& box = h->txtData1LV;
  EXPECT_TRUE(box.Visible());
  EXPECT_TRUE(box.Focused());
  EXPECT_FALSE(h->txtData2LV.Visible());
  EXPECT_FALSE(h->lstFilters.Enabled());
  EXPECT_EQ(box.Text(), "A");
  EXPECT_EQ(box.Left(), 240 + 4440);
  EXPECT_EQ(box.Top(), 1200 + 300);
  EXPECT_EQ(box.Width(), 1570 - 1);

  // Blur: the text goes into the cell, the box goes, the list comes back.
  h->txtData1LV.SetText("C");
  txtDataLV_LostFocus(*h, 1);
  EXPECT_EQ(Cell(1, "Data1"), "C");
  EXPECT_FALSE(box.Visible());
  EXPECT_FALSE(box.Focused());
  EXPECT_TRUE(h->lstFilters.Enabled());
  EXPECT_FALSE(h->ProfileChanged);
}

TEST_F(ValueEditorsTest, SecondValueBoxIsTenTwipsNarrower) {
  Click(kData2X, 2);
  const ui::ComboBox& box = h->txtData2LV;
  EXPECT_EQ(h->lstFilters.SelectedItem(), 2);
  EXPECT_TRUE(box.Visible());
  EXPECT_FALSE(h->txtData1LV.Visible());
  EXPECT_FALSE(h->lstFilters.Enabled());
  EXPECT_EQ(box.Text(), "100");
  EXPECT_EQ(h->txtData1LV.Text(), "0");  // both boxes take their cells' texts
  EXPECT_EQ(box.Left(), 240 + 7450);
  EXPECT_EQ(box.Top(), 1200 + 300 + 255);
  EXPECT_EQ(box.Width(), 1570 - 10);

  // A click while the list is disabled does not reach it.
  Click(kData1X, 1);
  EXPECT_TRUE(box.Visible());
  EXPECT_EQ(h->lstFilters.SelectedItem(), 2);

  txtDataLV_LostFocus(*h, 2);
  Click(kData1X, 2);
  EXPECT_TRUE(h->txtData1LV.Visible());
  EXPECT_FALSE(box.Visible());
  EXPECT_EQ(h->txtData1LV.Width(), 1569);
}

TEST_F(ValueEditorsTest, CellsThatOpenNothing) {
  // The Data2 cell of a one-value filter hides a second box that shows,
  // and leaves the first as it is.
  h->txtData2LV.SetVisible(true);
  h->txtData1LV.SetVisible(true);
  Click(kData2X, 1);
  EXPECT_FALSE(h->txtData2LV.Visible());
  EXPECT_TRUE(h->txtData1LV.Visible());
  EXPECT_FALSE(h->txtData1LV.Focused());
  EXPECT_TRUE(h->lstFilters.Enabled());

  // The caption column hides both.
  h->txtData2LV.SetVisible(true);
  Click(kCaptionX, 2);
  EXPECT_FALSE(h->txtData1LV.Visible());
  EXPECT_FALSE(h->txtData2LV.Visible());
  EXPECT_EQ(h->lstFilters.SelectedItem(), 2);

  // A label cell of a two-value filter changes nothing.
  h->txtData1LV.SetVisible(true);
  Click(kParam1X, 2);
  EXPECT_TRUE(h->txtData1LV.Visible());
  EXPECT_TRUE(h->lstFilters.Enabled());

  // A filter without values hides both, even on a Data1 cell.
  Click(kData1X, 3);
  EXPECT_FALSE(h->txtData1LV.Visible());
  EXPECT_TRUE(h->lstFilters.Enabled());

  // Below the last row, or in the header: nothing, not even the selection.
  h->txtData1LV.SetVisible(true);
  Click(kData1X, 9);
  lstFilters_MouseDown(*h, 1, 0, kData1X, 100);
  EXPECT_TRUE(h->txtData1LV.Visible());
  EXPECT_EQ(h->lstFilters.SelectedItem(), 3);
}

TEST_F(ValueEditorsTest, PointerPositionIsRoundedThenCutToPixels) {
  // Data1 begins at 4440 twips = pixel 296 at 15 twips a pixel.
  struct Case {
    float x;
    bool opens;
  };
  for (const Case& c : {Case{4439.5f, true}, Case{4438.6f, false}, Case{4424.0f, false}}) {
    lstFilters_MouseDown(*h, 1, 0, c.x, RowY(1));
    EXPECT_EQ(h->txtData1LV.Visible(), c.opens) << c.x;
    txtDataLV_LostFocus(*h, 1);
  }
  // Larger pixels: 4440 / 20 = 222 px, back to 4440 twips.
  h->TwipsPerPixelX = 20;
  lstFilters_MouseDown(*h, 1, 0, 4445.0f, RowY(1));
  EXPECT_TRUE(h->txtData1LV.Visible());
}

TEST_F(ValueEditorsTest, TypingGoesIntoTheCellAtOnceAndEscapeKeepsIt) {
  Click(kData1X, 1);
  h->txtData1LV.SetText("4");
  h->txtData1LV.SetText("45");
  EXPECT_EQ(Cell(1, "Data1"), "45");
  EXPECT_EQ(txtDataLV_KeyPress(*h, 1, kKeyEscape), 0);
  txtDataLV_KeyDown(*h, 1, kKeyEscape);
  EXPECT_EQ(Cell(1, "Data1"), "45");
  EXPECT_FALSE(h->txtData1LV.Visible());
  EXPECT_TRUE(h->lstFilters.Enabled());  // the hidden box lost the focus
  EXPECT_FALSE(h->ProfileChanged);
}

TEST_F(ValueEditorsTest, EnterCopiesAndCloses) {
  Click(kData2X, 2);
  EXPECT_EQ(txtDataLV_KeyPress(*h, 2, kKeyEnter), 0);
  EXPECT_EQ(txtDataLV_KeyPress(*h, 2, 'x'), 'x');
  h->txtData2LV.SetText("250");
  txtDataLV_KeyDown(*h, 2, kKeyEnter);
  EXPECT_EQ(Cell(2, "Data2"), "250");
  EXPECT_EQ(Cell(2, "Data1"), "0");
  EXPECT_FALSE(h->txtData2LV.Visible());
  EXPECT_TRUE(h->lstFilters.Enabled());
  // Other keys down do nothing.
  Click(kData2X, 2);
  txtDataLV_KeyDown(*h, 2, 'A');
  EXPECT_TRUE(h->txtData2LV.Visible());
}

TEST_F(ValueEditorsTest, ChoosingAVariableMarkerPutsItIntoTheCell) {
  for (const char* entry : {"", "<$START_DATE>", "<$END_DATE>"}) h->txtData1LV.AddItem(entry);
  Click(kData1X, 2);
  h->txtData1LV.SetListIndex(1);
  EXPECT_EQ(Cell(2, "Data1"), "<$START_DATE>");
  EXPECT_EQ(h->txtData1LV.Text(), "<$START_DATE>");
  txtDataLV_Click(*h, 1);  // a repeated choice of the same entry
  EXPECT_EQ(Cell(2, "Data1"), "<$START_DATE>");
  EXPECT_FALSE(h->ProfileChanged);
}

TEST_F(ValueEditorsTest, EditingWithoutASelectedRowTouchesNoCell) {
  h->lstFilters.SetSelectedItem(0);
  h->txtData1LV.SetText("x");
  txtDataLV_LostFocus(*h, 1);
  for (int row = 1; row <= 3; ++row) EXPECT_NE(Cell(row, "Data1"), "x");
}

}  // namespace
}  // namespace cvve
