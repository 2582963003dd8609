#include "reportengine/page_search.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <memory>

#include "reportengine/report_viewer.h"

namespace cvve::reportengine {
namespace {

// Three pages: a heading on each, "Müller Weekly" on the second, "Total" on
// the second and third.
std::shared_ptr<ReportLayout> ThreePages() {
  auto layout = std::make_shared<ReportLayout>();
  layout->width = 12240;  // letter, portrait
  layout->height = 15840;
  const char* const kTexts[][2] = {
      {"Receipts", "Adams"}, {"Receipts", "Müller Weekly Total"}, {"Receipts", "Grand Total"}};
  for (const auto& texts : kTexts) {
    PageDescription page;
    for (const char* text : texts) page.texts.push_back({720, 720, FontRole{}, QString::fromUtf8(text)});
    layout->pages.push_back(page);
  }
  return layout;
}

TEST(PageSearchTest, FindsTheNextPageRoundTheEnd) {
  const auto layout = ThreePages();
  const struct {
    const char* needle;
    int from, want;
  } kCases[] = {
      {"total", 0, 1},   {"total", 2, 2},  {"TOTAL", 3, 1},  // 3 is round to page 0
      {"müller", 0, 1},  {"MÜLLER", 2, 1}, {"adams", 1, 0},     {"nowhere", 0, -1},
      {"", 0, -1},       {"Receipts", -1, 2},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.needle) + " from " + std::to_string(c.from));
    EXPECT_EQ(FindPageWithText(*layout, QString::fromUtf8(c.needle), c.from), c.want);
  }
}

TEST(PageSearchTest, TheViewersFindShowsPageAfterPage) {
  ReportViewerWindow window(ThreePages());
  auto* box = window.findChild<QLineEdit*>("txtFind");
  auto* result = window.findChild<QLabel*>("lblFindResult");
  ASSERT_TRUE(box && result);
  box->setText("total");
  window.FindNext();  // a new text: from the page shown
  EXPECT_EQ(window.CurrentPage(), 1);
  window.FindNext();  // again: from the page after
  EXPECT_EQ(window.CurrentPage(), 2);
  window.FindNext();
  EXPECT_EQ(window.CurrentPage(), 1);
  EXPECT_TRUE(result->text().isEmpty());
  box->setText("nowhere");
  window.FindNext();
  EXPECT_EQ(window.CurrentPage(), 1);
  EXPECT_EQ(result->text(), QString("Not found"));
}

}  // namespace
}  // namespace cvve::reportengine
