// Layout, PDF and CSV of reports run on the small test database.
#include <gtest/gtest.h>

#include <QImage>
#include <algorithm>
#include <cmath>
#include <map>
#include <regex>
#include <sstream>

#include "report_test_support.h"
#include "reportengine/export/csv_writer.h"
#include "reportengine/guard/guarded_connection.h"
#include "reportengine/page_renderer.h"
#include "reportengine/paginator.h"
#include "reportengine/report_runner.h"
#include "reportengine/text_shaper.h"

namespace cvve::reportengine {
namespace {

using testing::ActiveByCollector;
using testing::AllAccounts;
using testing::CvrShape;
using testing::Define;
using testing::HaveTool;
using testing::Money;
using testing::Output;
using testing::Produce;
using testing::RunCommand;
using testing::SmallDatabase;
using testing::SqlRows;
using testing::TempFolder;

// Body texts of the first column: one per printed row.
long long RowsPrinted(const ReportLayout& layout, float first_column_x) {
  long long rows = 0;
  for (const PageDescription& page : layout.pages) {
    for (const PageText& text : page.texts) {
      if (text.font == FontRole::kBody && std::abs(text.x - first_column_x) < 1) ++rows;
    }
  }
  return rows;
}

TEST(ReportOutputTest, PagesFollowPaperAndOrientation) {
  TempFolder folder;
  struct Paper {
    int size, orientation;
    double width, height;  // twips
  };
  const Paper papers[] = {{0, 0, 12240, 15840}, {0, 1, 15840, 12240}, {1, 0, 12240, 20160},
                          {2, 0, 11906, 16838}, {3, 0, 15840, 24480}, {3, 1, 24480, 15840}};
  std::map<std::pair<int, int>, std::size_t> pages;
  for (const Paper& paper : papers) {
    SCOPED_TRACE(std::to_string(paper.size) + "/" + std::to_string(paper.orientation));
    CvrShape shape = AllAccounts();
    shape.page_size = paper.size;
    shape.orientation = paper.orientation;
    const Output out = Produce(shape, folder);
    EXPECT_NEAR(out.layout.width, paper.width, 1);
    EXPECT_NEAR(out.layout.height, paper.height, 1);
    pages[{paper.size, paper.orientation}] = out.layout.pages.size();
    // Every row is printed once; nothing runs off the page or past the margins.
    EXPECT_EQ(RowsPrinted(out.layout, 720 + 60), out.data.RowCount());
    const int count = static_cast<int>(out.layout.pages.size());
    for (int p = 0; p < count; ++p) {
      const PageDescription& page = out.layout.pages[static_cast<std::size_t>(p)];
      bool numbered = false;
      for (const PageText& text : page.texts) {
        EXPECT_GE(text.x, 700);
        EXPECT_GE(text.y, 720);
        EXPECT_LE(text.y, paper.height - 720);
        numbered = numbered || text.text == QStringLiteral("Page %1 of %2").arg(p + 1).arg(count);
      }
      EXPECT_TRUE(numbered) << "page " << p + 1;
    }
  }
  // Taller paper holds more rows per page.
  auto count = [&pages](int size, int orientation) { return pages[{size, orientation}]; };
  EXPECT_GT(count(0, 1), count(0, 0));  // Letter landscape vs portrait
  EXPECT_LT(count(1, 0), count(0, 0));  // Legal vs Letter
  EXPECT_LT(count(3, 0), count(1, 0));  // Ledger vs Legal
  EXPECT_EQ(count(3, 1), count(0, 0));  // Ledger landscape is as tall as Letter portrait
}

TEST(ReportOutputTest, MultiLineWrapsAndSingleLineElides) {
  TempFolder folder;
  CvrShape shape;
  shape.name = "Notes";
  shape.statement =
      R"("CQ:SELECT NoteID, NoteText || ' ' || NoteText FROM NOTES ORDER BY NoteID LIMIT 40")";
  shape.columns = {{"Note", "NOTES.NoteID", "String", "Left", 800},
                  {"Text", "NOTES.NoteText", "String", "Left", 2200}};
  const Output single = Produce(shape, folder);
  shape.multi_line = true;
  shape.name = "Notes Wrapped";
  const Output wrapped = Produce(shape, folder);
  auto body = [](const Output& out) {
    std::vector<QString> texts;
    for (const PageText& text : out.layout.pages[0].texts) {
      if (text.font == FontRole::kBody && text.x > 1500) texts.push_back(text.text);
    }
    return texts;
  };
  const auto cut = body(single);
  const auto lines = body(wrapped);
  ASSERT_EQ(static_cast<long long>(cut.size()), single.data.RowCount());
  EXPECT_GT(lines.size(), cut.size());
  bool elided = false;
  for (const QString& text : cut) elided = elided || text.endsWith(QChar(0x2026));
  EXPECT_TRUE(elided);
  for (const QString& text : lines)
    EXPECT_FALSE(text.endsWith(QChar(0x2026))) << text.toStdString();
}

// The PDF read back by poppler: its page count, paper, texts and sums, and
// page 1 as pixels (kept in the build folder for a person to look at).
TEST(ReportOutputTest, PdfTextInfoAndPixels) {
  for (const char* tool : {"pdftotext", "pdfinfo", "pdftoppm"}) {
    if (!HaveTool(tool)) GTEST_SKIP() << "poppler-utils missing: no " << tool;
  }
  TempFolder folder;
  const Output out = Produce(ActiveByCollector(), folder);
  const std::string pdf = std::string(REPORT_TEST_OUTPUT_DIR) + "/report_page.pdf";
  WritePdf(out.layout, QString::fromStdString(pdf));
  const std::string pages = std::to_string(out.layout.pages.size());

  std::string info;
  auto has = [&info](const std::string& pattern) {
    return std::regex_search(info, std::regex(pattern));
  };
  ASSERT_EQ(RunCommand("pdfinfo '" + pdf + "'", &info), 0) << info;
  EXPECT_TRUE(has("Pages: +" + pages + "\n")) << info;
  EXPECT_TRUE(has("Page size: +612 x 792 pts \\(letter\\)")) << info;
  EXPECT_TRUE(has("Title: +Active By Collector")) << info;

  std::string text;
  ASSERT_EQ(RunCommand("pdftotext -layout '" + pdf + "' -", &text), 0);
  EXPECT_NE(text.find("Page 1 of " + pages), std::string::npos);
  for (const auto& row : SqlRows(SmallDatabase(),
                                 "SELECT Collector, COUNT(*), printf('%.2f', SUM(Balance)), "
                                 "printf('%.2f', AVG(Balance)) FROM ACCTS WHERE Status='A' "
                                 "GROUP BY Collector")) {
    EXPECT_NE(text.find("Collector: " + row[0]), std::string::npos) << row[0];
    EXPECT_NE(text.find("Count: " + row[1]), std::string::npos) << row[0];
    EXPECT_NE(text.find(Money(row[2])), std::string::npos) << row[0] << " total";
    EXPECT_NE(text.find(Money(row[3])), std::string::npos) << row[0] << " average";
  }
  const auto grand = SqlRows(SmallDatabase(),
                             "SELECT COUNT(*), SUM(DaysLate), printf('%.2f', SUM(Balance)), "
                             "printf('%.2f', AVG(DaysLate)) FROM ACCTS WHERE Status='A'")[0];
  // Days late are averaged, not summed: the line holds the balance alone.
  const std::regex total_line("Grand Total +" +
                              std::regex_replace(Money(grand[2]), std::regex("[.$]"), "\\$&"));
  EXPECT_TRUE(std::regex_search(text, total_line)) << "grand total " << grand[2];
  EXPECT_FALSE(std::regex_search(text, std::regex("Grand Total +" + grand[1] + " ")));
  EXPECT_NE(text.find("Grand Count: " + grand[0]), std::string::npos);
  EXPECT_NE(text.find(grand[3]), std::string::npos) << "average days late";

  const std::string png = std::string(REPORT_TEST_OUTPUT_DIR) + "/report_page1";
  ASSERT_EQ(RunCommand("pdftoppm -r 72 -f 1 -l 1 -singlefile -png '" + pdf + "' '" + png + "'"), 0);
  const QImage image(QString::fromStdString(png + ".png"));
  ASSERT_EQ(image.size(), QSize(612, 792));
  auto dark = [&image](int x0, int y0, int x1, int y1) {
    int count = 0;
    for (int y = y0; y < y1; ++y) {
      for (int x = x0; x < x1; ++x) count += qGray(image.pixel(x, y)) < 128;
    }
    return count;
  };
  EXPECT_EQ(dark(0, 0, 612, 30), 0);         // top margin
  EXPECT_EQ(dark(0, 0, 30, 792), 0);         // left margin
  EXPECT_GT(dark(36, 36, 300, 60), 100);     // the title
  EXPECT_GT(dark(36, 100, 400, 700), 1000);  // the rows
  // The viewer's own rendering of the page has its text lines where the PDF has them.
  const QImage own = RenderPageImage(out.layout, 0, 72);
  ASSERT_EQ(own.size(), image.size());
  int agree = 0;
  for (int y = 0; y < image.height(); ++y) {
    bool inked[2] = {false, false};
    for (int x = 0; x < image.width(); ++x) {
      inked[0] = inked[0] || qGray(image.pixel(x, y)) < 160;
      inked[1] = inked[1] || qGray(own.pixel(x, y)) < 160;
    }
    agree += inked[0] == inked[1];
  }
  EXPECT_GT(agree, image.height() * 9 / 10);

  // A landscape Legal report is 1008 x 612 points.
  CvrShape legal = AllAccounts();
  legal.page_size = 1;
  legal.orientation = 1;
  WritePdf(Produce(legal, folder).layout, QString::fromStdString(folder.Path("legal.pdf")));
  ASSERT_EQ(RunCommand("pdfinfo '" + folder.Path("legal.pdf") + "'", &info), 0);
  EXPECT_TRUE(has("Page size: +1008 x 612 pts")) << info;
}

TEST(ReportOutputTest, GroupedPagesRepeatHeadingsAndDisplayCsvHasTheGroupColumn) {
  TempFolder folder;
  const Output out = Produce(ActiveByCollector(), folder);
  ASSERT_GT(out.layout.pages.size(), 2u);
  for (const PageDescription& page : out.layout.pages) {
    int headers = 0;
    bool heading = false;
    for (const PageText& text : page.texts) {
      headers += text.font == FontRole::kColumnHeader;
      heading = heading || (text.font == FontRole::kGroupHeading &&
                            text.text.startsWith(QStringLiteral("Collector: ")));
    }
    EXPECT_GE(headers, 4);
    EXPECT_TRUE(heading);
  }

  std::ostringstream csv;
  WriteCsv(out.def, out.data, csv, CsvForm::kDisplay);
  std::istringstream lines(csv.str());
  std::string line;
  ASSERT_TRUE(std::getline(lines, line));
  EXPECT_EQ(line, "Collector,Account,Opened,Days Late,Balance\r");
  std::map<std::string, int> per_group;
  long long rows = 0;
  while (std::getline(lines, line)) {
    ++rows;
    per_group[line.substr(0, line.find(','))]++;
  }
  EXPECT_EQ(rows, out.data.RowCount());
  for (const auto& row : SqlRows(
           SmallDatabase(), "SELECT Collector, COUNT(*) FROM ACCTS WHERE Status='A' GROUP BY 1")) {
    EXPECT_EQ(std::to_string(per_group[row[0]]), row[1]) << row[0];
  }

  // Quotes, commas and line breaks are quoted.
  CvrShape shape;
  shape.name = "Odd Text";
  shape.statement = R"("CQ:SELECT 'a,b', 'say ""hi""', 'two' || char(10) || 'lines', 1234.5")";
  shape.columns = {{"A", "X.A", "String"},
                  {"B", "X.B", "String"},
                  {"C", "X.C", "String"},
                  {"Amount, $", "X.D", "Currency"}};
  const Output odd = Produce(shape, folder);
  std::ostringstream text;
  WriteCsv(odd.def, odd.data, text, CsvForm::kDisplay);
  EXPECT_EQ(text.str(),
            "A,B,C,\"Amount, $\"\r\n\"a,b\",\"say \"\"hi\"\"\",\"two\nlines\",\"$1,234.50\"\r\n");
}

// The totals and averages of a summary take one font: bold while every
// figure fits, then the body's regular weight, then the small font; figures
// are never cut.
TEST(ReportOutputTest, SummaryFiguresTakeTheFirstFontAllFit) {
  TempFolder folder;
  // The figures right of a label on the last page, Balance first.
  const auto figures_of = [](const Output& out, const char* label) {
    const PageDescription& last = out.layout.pages.back();
    const auto at = std::find_if(last.texts.begin(), last.texts.end(),
                                 [label](const PageText& t) { return t.text == label; });
    std::vector<PageText> figures;
    if (at == last.texts.end()) return figures;
    for (const PageText& text : last.texts) {
      if (text.y == at->y && text.x > at->x) figures.push_back(text);
    }
    return figures;
  };
  CvrShape shape = AllAccounts();
  shape.name = "Wide";
  shape.columns[4].width = 3000;
  const std::vector<PageText> wide = figures_of(Produce(shape, folder), "Total");
  ASSERT_EQ(wide.size(), 1u);  // Balance; days are not summed
  const QString total = wide.front().text;

  const LayoutFonts fonts(1.0);
  const double bold = fonts.Of(FontRole::kSummary).Width(total);
  const double regular = fonts.Of(FontRole::kBody).Width(total);
  ASSERT_GT(bold, regular + 4);
  const struct {
    double width;  // of Balance, whose total is the widest figure
    FontRole expected;
  } cases[] = {{bold + 130, FontRole::kSummary},
               {regular + 122, FontRole::kBody},
               {regular + 100, FontRole::kSummarySmall},
               {400, FontRole::kSummarySmall}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.width);
    shape.name = "Width " + std::to_string(static_cast<int>(c.width));
    shape.columns[4].width = static_cast<int>(std::ceil(c.width));
    const Output out = Produce(shape, folder);
    const std::vector<PageText> totals = figures_of(out, "Total");
    const std::vector<PageText> averages = figures_of(out, "Average");
    ASSERT_EQ(totals.size(), 1u);
    ASSERT_EQ(averages.size(), 2u);  // Balance and Days Late
    EXPECT_EQ(totals.front().text, total);
    for (const auto* row : {&totals, &averages}) {
      for (const PageText& text : *row) EXPECT_EQ(text.font, c.expected) << text.text.toStdString();
    }
  }
}

TEST(ReportOutputTest, EmptyReportStillHasAPage) {
  TempFolder folder;
  RunSettings nothing;
  nothing.user_where = "1=0";
  const Output out = Produce(AllAccounts(), folder, nothing);
  EXPECT_EQ(out.data.RowCount(), 0);
  ASSERT_EQ(out.layout.pages.size(), 1u);
  EXPECT_TRUE(std::any_of(out.layout.pages[0].texts.begin(), out.layout.pages[0].texts.end(),
                          [](const PageText& text) { return text.text == "No records found."; }));
}

}  // namespace
}  // namespace cvve::reportengine
