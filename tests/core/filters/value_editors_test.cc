#include "filters/value_editors.h"

#include <gtest/gtest.h>

#include "fixtures.h"

namespace cvve::testing {
namespace {

// Column lefts within the list (twips): Filter 0, Param1 3000, Data1 4440,
// Param2 6010, Data2 7450; rows start below a 300-twip header, 255 each.
// Rows: 1 one value ("A"), 2 two values, 3 no value.
constexpr float kCaptionX = 100, kParam1X = 3100, kData1X = 4500, kData2X = 7500;
float RowY(int row) { return 300.0f + 255.0f * static_cast<float>(row - 1) + 20.0f; }

struct ValueEditorsTest : ::testing::Test {
  void SetUp() override {
    h.Open("", "", kSetup);
    h->lstFilters.left = 240;
    h->lstFilters.top = 1200;
    h->ProfileChanged = false;
  }
  void Click(float x, int row) { lstFilters_MouseDown(*h, 1, 0, x, RowY(row)); }
  std::string Cell(int row, int data) { return h->lstFilters.SubItem(row, data == 1 ? 2 : 4); }
  HeadlessEditor h;
};

TEST_F(ValueEditorsTest, EachValueBoxOpensOverItsCellAndGivesItsTextBackOnBlur) {
  Click(kData1X, 1);
  EXPECT_EQ(h->lstFilters.SelectedItem(), 1);  // the press selected the row
  const ui::ComboBox& box1 = h->txtData1LV;
  EXPECT_TRUE(box1.Visible() && box1.Focused());
  EXPECT_FALSE(h->txtData2LV.Visible());
  EXPECT_FALSE(h->lstFilters.Enabled());
  EXPECT_EQ(box1.Text(), "A");
  EXPECT_EQ(box1.Left(), 240 + 4440);
  EXPECT_EQ(box1.Top(), 1200 + 300);
  EXPECT_EQ(box1.Width(), 1570 - 1);
  h->txtData1LV.SetText("C");
  txtDataLV_LostFocus(*h, 1);
  EXPECT_EQ(Cell(1, 1), "C");
  EXPECT_FALSE(box1.Visible() || box1.Focused());
  EXPECT_TRUE(h->lstFilters.Enabled());

  // The second box is ten twips narrower than its column.
  Click(kData2X, 2);
  const ui::ComboBox& box2 = h->txtData2LV;
  EXPECT_EQ(h->lstFilters.SelectedItem(), 2);
  EXPECT_TRUE(box2.Visible());
  EXPECT_FALSE(box1.Visible() || h->lstFilters.Enabled());
  EXPECT_EQ(box2.Text(), "12/31/2020");
  EXPECT_EQ(box1.Text(), "01/01/2020");  // both boxes take their cells' texts
  EXPECT_EQ(box2.Left(), 240 + 7450);
  EXPECT_EQ(box2.Top(), 1200 + 300 + 255);
  EXPECT_EQ(box2.Width(), 1570 - 10);
  Click(kData1X, 1);  // the list is disabled: the click does not reach it
  EXPECT_TRUE(box2.Visible());
  EXPECT_EQ(h->lstFilters.SelectedItem(), 2);
  txtDataLV_LostFocus(*h, 2);
  EXPECT_FALSE(h->ProfileChanged);
}

TEST_F(ValueEditorsTest, KeyboardOpensTheBoxTheMouseOpens) {
  // Rows 1 (one value), 2 (two values), 3 (no value); the box a click on the
  // first value opens, opened by the keyboard instead.
  const struct {
    int row, which, cells;
    bool opens;
  } kCases[] = {
      {1, 1, 1, true}, {1, 2, 1, false}, {2, 1, 2, true},
      {2, 2, 2, true}, {3, 1, 0, false}, {0, 1, 0, false},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::to_string(c.row) + "/" + std::to_string(c.which));
    EXPECT_EQ(ValueCellCount(*h, c.row), c.cells);
    EXPECT_EQ(lstFilters_OpenValueCell(*h, c.row, c.which), c.opens);
    const ui::ComboBox& box = ValueEditor(*h, c.which);
    EXPECT_EQ(box.Visible() && box.Focused(), c.opens);
    if (c.row > 0) {
      EXPECT_EQ(h->lstFilters.SelectedItem(), c.row);
    }
    if (!c.opens) {
      EXPECT_FALSE(h->txtData1LV.Visible() || h->txtData2LV.Visible());
      continue;
    }
    // Where a click on the same cell puts it.
    const int left = box.Left(), top = box.Top(), width = box.Width();
    txtDataLV_LostFocus(*h, c.which);
    Click(c.which == 1 ? kData1X : kData2X, c.row);
    EXPECT_EQ(box.Left(), left);
    EXPECT_EQ(box.Top(), top);
    EXPECT_EQ(box.Width(), width);
    txtDataLV_LostFocus(*h, c.which);
  }
}

TEST_F(ValueEditorsTest, TabGoesOnToTheSecondValueOnlyFromTheFirstOfTwo) {
  ASSERT_TRUE(lstFilters_OpenValueCell(*h, 2, 1));
  h->txtData1LV.SetText("02/02/2020");
  EXPECT_TRUE(txtDataLV_Tab(*h, 1));
  EXPECT_EQ(Cell(2, 1), "02/02/2020");
  EXPECT_FALSE(h->txtData1LV.Visible());
  EXPECT_TRUE(h->txtData2LV.Visible() && h->txtData2LV.Focused());
  EXPECT_FALSE(h->lstFilters.Enabled());
  EXPECT_FALSE(txtDataLV_Tab(*h, 2));  // the second: Tab moves on as usual
  EXPECT_TRUE(h->txtData2LV.Visible());
  txtDataLV_LostFocus(*h, 2);
  ASSERT_TRUE(lstFilters_OpenValueCell(*h, 1, 1));
  EXPECT_FALSE(txtDataLV_Tab(*h, 1));  // one value only
  EXPECT_TRUE(h->txtData1LV.Visible());
  EXPECT_FALSE(h->ProfileChanged);
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
  EXPECT_FALSE(h->txtData1LV.Visible() || h->txtData2LV.Visible());
  EXPECT_EQ(h->lstFilters.SelectedItem(), 2);
  // A label cell of a two-value filter changes nothing.
  h->txtData1LV.SetVisible(true);
  Click(kParam1X, 2);
  EXPECT_TRUE(h->txtData1LV.Visible());
  // A filter without values hides both, even on a Data1 cell.
  Click(kData1X, 3);
  EXPECT_FALSE(h->txtData1LV.Visible());
  EXPECT_TRUE(h->lstFilters.Enabled());
  // Below the last row, in the header or right of the columns: nothing, not
  // even the selection.
  h->txtData1LV.SetVisible(true);
  Click(kData1X, 9);
  Click(9100, 1);
  lstFilters_MouseDown(*h, 1, 0, kData1X, 100);
  EXPECT_TRUE(h->txtData1LV.Visible());
  EXPECT_EQ(h->lstFilters.SelectedItem(), 3);
}

TEST_F(ValueEditorsTest, PointerPositionIsRoundedThenCutToPixels) {
  // Data1 begins at 4440 twips = pixel 296 at 15 twips a pixel.
  for (const auto& [x, opens] :
       {std::pair{4439.5f, true}, std::pair{4438.6f, false}, std::pair{4424.0f, false}}) {
    lstFilters_MouseDown(*h, 1, 0, x, RowY(1));
    EXPECT_EQ(h->txtData1LV.Visible(), opens) << x;
    txtDataLV_LostFocus(*h, 1);
  }
  h->TwipsPerPixelX = 20;  // 4440 / 20 = 222 px, back to 4440 twips
  lstFilters_MouseDown(*h, 1, 0, 4445.0f, RowY(1));
  EXPECT_TRUE(h->txtData1LV.Visible());
}

TEST_F(ValueEditorsTest, ChoosingAVariableMarkerPutsItIntoTheCell) {
  for (const char* entry : {"", "<$START_DATE>", "<$END_DATE>"}) h->txtData1LV.AddItem(entry);
  Click(kData1X, 2);
  h->txtData1LV.SetListIndex(1);
  EXPECT_EQ(Cell(2, 1), "<$START_DATE>");
  txtDataLV_Click(*h, 1);  // a repeated choice of the same entry
  EXPECT_EQ(Cell(2, 1), "<$START_DATE>");
  EXPECT_FALSE(h->ProfileChanged);
  // Without a selected row no cell is touched.
  txtDataLV_LostFocus(*h, 1);
  h->lstFilters.SetSelectedItem(0);
  h->txtData1LV.SetText("x");
  txtDataLV_LostFocus(*h, 1);
  for (int row = 1; row <= 4; ++row) EXPECT_NE(Cell(row, 1), "x");
}

}  // namespace
}  // namespace cvve::testing
