// The report's own PDF writer: the object layer read back byte by byte, and
// whole reports read back by poppler: every cell where the layout put it,
// the fonts embedded as subsets, and the ways that leave Qt's writer or
// nothing at all.
#include <gtest/gtest.h>

#include <QBuffer>
#include <QFile>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <iomanip>
#include <limits>
#include <map>
#include <regex>
#include <set>

#include "report_test_support.h"
#include "reportengine/page_renderer.h"
#include "reportengine/pdf/pdf_objects.h"
#include "reportengine/pdf/report_pdf.h"
#include "reportengine/text_shaper.h"

namespace cvve::reportengine {
namespace {

using testing::ActiveByCollector;
using testing::HaveTool;
using testing::Produce;
using testing::RunCommand;
using testing::TempFolder;

std::string Number(double value) {
  std::string out;
  pdf::AppendNumber(out, value);
  return out;
}

TEST(PdfObjectsTest, NumbersStringsAndTheCrossReference) {
  EXPECT_EQ(Number(12.5), "12.5");
  EXPECT_EQ(Number(3.0), "3");
  EXPECT_EQ(Number(-0.001), "0");
  EXPECT_EQ(Number(-7.256), "-7.26");
  EXPECT_EQ(Number(100), "100");  // trailing zeros of the integer part stay

  std::string literal;
  pdf::AppendLiteral(literal, std::string_view("a(b)\\c\rd\n", 9));
  EXPECT_EQ(literal, "(a\\(b\\)\\\\c\\rd\n)");
  EXPECT_EQ(pdf::TextString(u"Ré"), "<FEFF005200E9>");

  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  pdf::ObjectWriter writer(buffer);
  const int first = writer.Reserve();
  const int second = writer.Reserve();
  const int third = writer.Reserve();
  // Written out of order, as the page tree is written after its pages.
  writer.Stream(third, " /Length1 5", "hello", false);
  writer.Object(first, "<< /Type /Catalog /Pages 2 0 R >>");
  EXPECT_THROW(writer.Object(third, "again"), Error);
  EXPECT_THROW(writer.Finish(first, second), Error) << "object 2 was never written";
  writer.Object(second, "<< >>");
  writer.Finish(first, second);

  const std::string file = buffer.data().toStdString();
  const std::size_t xref = file.rfind("\nxref\n") + 1;  // not the one in "startxref"
  ASSERT_NE(xref, 0u);
  std::smatch start;
  ASSERT_TRUE(std::regex_search(file, start, std::regex("startxref\n(\\d+)\n%%EOF\n$")));
  EXPECT_EQ(std::stoul(start[1]), xref);
  std::istringstream table(file.substr(xref));
  std::string line;
  std::getline(table, line);
  std::getline(table, line);
  EXPECT_EQ(line, "0 4");
  std::getline(table, line);  // the free head of the list
  for (int number = 1; number <= 3; ++number) {
    std::getline(table, line);
    ASSERT_EQ(line.size(), 19u) << line;  // 20 bytes with the newline
    const std::size_t offset = std::stoul(line.substr(0, 10));
    EXPECT_EQ(file.compare(offset, std::to_string(number).size() + 6,
                           std::to_string(number) + " 0 obj"),
              0)
        << "object " << number;
  }
  EXPECT_NE(file.find("<< /Length1 5 /Length 5 >>\nstream\nhello\nendstream"), std::string::npos);
}

// The general conversion, as numbers were written before the quick way:
// two decimals rounded from the exact binary value, trailing zeros dropped,
// a negative zero written as 0.
std::string GeneralNumber(double value) {
  char buffer[64];
  auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value,
                                    std::chars_format::fixed, 2);
  if (error != std::errc()) return "0";
  if (std::find(buffer, end, '.') != end) {
    while (end[-1] == '0') --end;
    if (end[-1] == '.') --end;
  }
  std::string text(buffer, end);
  return text == "-0" ? "0" : text;
}

// Page coordinates are written through integers; every value must come out
// as the general conversion writes it, ties and near-ties included, on both
// sides of the limit where the quick way gives up.
TEST(PdfObjectsTest, NumbersAreWrittenAsTheGeneralConversionWritesThem) {
  const double cases[] = {
      0, -0.0, 0.004, -0.004, 0.005, -0.005, 0.015, 0.125, -0.125, 0.375, 2.675, 1.005,
      0.994999999, 0.995, 9.995, 19.99, 791.99, 548.97, -9.31, -9.315, 612, 1e-9, -1e-9,
      123456.785, 9999999.99, 9999999.995, 1e7 - 0.001, 1e7, 1e7 + 0.005, -1e7, 12345678.9,
      1e15, -2.5e18, 1e300, std::nextafter(0.125, 1.0), std::nextafter(0.125, 0.0),
      std::nextafter(2.675, 3.0), std::numeric_limits<double>::denorm_min(),
      std::numeric_limits<double>::max()};
  for (const double value : cases) {
    EXPECT_EQ(Number(value), GeneralNumber(value)) << std::setprecision(17) << value;
  }
  // Layout positions are float twips over 20: every such value of a Ledger
  // page, and every hundredth and its neighbours below 1,000.
  int differences = 0;
  for (int twips = -2000; twips <= 30000 && differences < 5; ++twips) {
    for (const float fraction : {0.0f, 0.25f, 0.5f, 0.1f, 0.3f, 0.7f}) {
      const double value = static_cast<double>(static_cast<float>(twips) + fraction) / 20;
      if (Number(value) != GeneralNumber(value)) {
        ADD_FAILURE() << std::setprecision(17) << value;
        ++differences;
      }
    }
  }
  for (int hundredths = -100000; hundredths <= 100000 && differences < 5; ++hundredths) {
    for (const double half : {0.0, 0.5, 0.49999999, 0.50000001}) {
      const double value = (hundredths + half) / 100;
      for (const double near : {value, std::nextafter(value, 1e9), std::nextafter(value, -1e9)}) {
        if (Number(near) != GeneralNumber(near)) {
          ADD_FAILURE() << std::setprecision(17) << near;
          ++differences;
        }
      }
    }
  }
  // Other precisions keep the general conversion.
  std::string three;
  pdf::AppendNumber(three, 1.23456, 3);
  EXPECT_EQ(three, "1.235");
}

struct Word {
  double x_min, y_min, x_max;
  std::string text;
};

std::vector<Word> PageWords(const std::string& pdf, int page) {
  std::string html;
  const std::string p = std::to_string(page);
  EXPECT_EQ(RunCommand("pdftotext -bbox -f " + p + " -l " + p + " '" + pdf + "' -", &html), 0);
  std::vector<Word> words;
  const std::regex word(
      R"re(<word xMin="([0-9.]+)" yMin="([0-9.]+)" xMax="([0-9.]+)" yMax="[0-9.]+">([^<]*)</word>)re");
  for (auto it = std::sregex_iterator(html.begin(), html.end(), word); it != std::sregex_iterator();
       ++it) {
    words.push_back({std::stod((*it)[1]), std::stod((*it)[2]), std::stod((*it)[3]), (*it)[4]});
  }
  return words;
}

// Each one-word cell of the first and last page is where the layout put it,
// and as wide as the layout measured it: the text arrays' moves and the
// fonts' width tables both agree with the layout to a twentieth of a point.
TEST(ReportPdfTest, CellsLandWhereTheLayoutPutsThem) {
  for (const char* tool : {"pdftotext", "pdffonts"}) {
    if (!HaveTool(tool)) GTEST_SKIP() << "poppler-utils missing: no " << tool;
  }
  TempFolder folder;
  const testing::Output out = Produce(ActiveByCollector(), folder);
  const std::string pdf = folder.Path("report.pdf");
  WritePdf(out.layout, QString::fromStdString(pdf));

  const int last = static_cast<int>(out.layout.pages.size());
  for (int page : {1, last}) {
    const std::vector<Word> words = PageWords(pdf, page);
    int checked = 0;
    // poppler puts a word's top at the baseline less the font's ascent: the
    // same distance above the layout's baseline for every text of a font.
    std::map<FontRole, std::pair<double, double>> above;  // least, most
    for (const PageText& text : out.layout.pages[static_cast<std::size_t>(page - 1)].texts) {
      const std::string s = text.text.toStdString();
      if (s.empty() || s.find_first_of(" &<>\"'") != std::string::npos) continue;
      const double x = text.x / 20.0;
      const double right = (text.x + out.layout.fonts->Of(text.font).Width(text.text)) / 20.0;
      // Of the words with this text at this place (a column of zeros has
      // many), the one on this row.
      const double top = (text.y - out.layout.fonts->Of(text.font).Ascent()) / 20.0;
      auto found = words.end();
      for (auto w = words.begin(); w != words.end(); ++w) {
        if (w->text != s || std::abs(w->x_min - x) >= 0.05 || std::abs(w->x_max - right) >= 0.05) {
          continue;
        }
        if (found == words.end() || std::abs(w->y_min - top) < std::abs(found->y_min - top)) {
          found = w;
        }
      }
      EXPECT_TRUE(found != words.end())
          << "page " << page << ": \"" << s << "\" at " << x << " to " << right;
      if (found == words.end()) continue;
      const double distance = text.y / 20.0 - found->y_min;
      auto [range, fresh] = above.try_emplace(text.font, distance, distance);
      range->second.first = std::min(range->second.first, distance);
      range->second.second = std::max(range->second.second, distance);
      ++checked;
    }
    for (const auto& [role, range] : above) {
      EXPECT_LT(range.second - range.first, 0.02)
          << "page " << page << ", font " << static_cast<int>(role) << ": baselines drift";
    }
    EXPECT_GT(checked, 50) << "page " << page;
  }

  std::string fonts;
  ASSERT_EQ(RunCommand("pdffonts '" + pdf + "'", &fonts), 0);
  std::istringstream lines(fonts);
  std::string line;
  std::set<std::string> names;
  while (std::getline(lines, line)) {
    std::smatch m;
    if (!std::regex_search(line, m, std::regex(R"re(^[A-Z]{6}\+(\S+) +CID TrueType +Custom +yes yes yes)re"))) {
      continue;
    }
    names.insert(m[1]);
  }
  EXPECT_EQ(names, (std::set<std::string>{"DejaVuSans", "DejaVuSans-Bold"})) << fonts;
}

ReportLayout HandMadeLayout(const QString& body) {
  ReportLayout layout;
  layout.width = 12240;
  layout.height = 15840;
  layout.title = QStringLiteral("Hand made");
  layout.pages.resize(2);
  layout.pages[0].texts.push_back({1440, 1440, FontRole::kTitle, QStringLiteral("Hand made")});
  layout.pages[1].texts.push_back({1440, 2000, FontRole::kBody, body});
  layout.pages[1].lines.push_back({1440, 2100, 10800, 2100, 10});
  return layout;
}

std::string Info(const std::string& pdf) {
  std::string info;
  EXPECT_EQ(RunCommand("pdfinfo '" + pdf + "'", &info), 0) << info;
  return info;
}

// A character the report's font lacks needs Qt's shaping and font fallback:
// the fast writer declines before writing a byte and Qt's writer makes the
// file instead.
TEST(ReportPdfTest, TextsTheFontLacksGoThroughQtsWriter) {
  if (!HaveTool("pdfinfo")) GTEST_SKIP() << "poppler-utils missing: no pdfinfo";
  TempFolder folder;
  const ReportLayout plain = HandMadeLayout(QStringLiteral("Balance $1,234.50 (paid)"));
  const ReportLayout foreign = HandMadeLayout(QStringLiteral("Balance \u4E2D"));

  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  EXPECT_FALSE(pdf::WriteLayoutPdf(foreign, buffer, {}));
  EXPECT_EQ(buffer.size(), 0);

  const std::string fast = folder.Path("fast.pdf");
  const std::string shaped = folder.Path("shaped.pdf");
  WritePdf(plain, QString::fromStdString(fast));
  WritePdf(foreign, QString::fromStdString(shaped));
  const std::regex pages("Pages: +2\n");
  EXPECT_TRUE(std::regex_search(Info(fast), pages));
  EXPECT_TRUE(std::regex_search(Info(fast), std::regex("Producer: +cvViewEdit")));
  EXPECT_TRUE(std::regex_search(Info(shaped), pages));
  EXPECT_TRUE(std::regex_search(Info(shaped), std::regex("Producer: +Qt")));
  std::string text;
  ASSERT_EQ(RunCommand("pdftotext '" + fast + "' -", &text), 0);
  EXPECT_NE(text.find("Balance $1,234.50 (paid)"), std::string::npos) << text;
}

// Cancelling or failing leaves what was there before, never half a file.
TEST(ReportPdfTest, ACancelledOrFailedWriteLeavesTheOldFile) {
  TempFolder folder;
  const std::string path = folder.Write("report.pdf", "the old report");
  const ReportLayout layout = HandMadeLayout(QStringLiteral("Balance"));
  auto stop_at_second = [](const QString&, long long done, long long) { return done < 1; };
  EXPECT_THROW(WritePdf(layout, QString::fromStdString(path), stop_at_second), Cancelled);
  QFile file(QString::fromStdString(path));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), QByteArray("the old report"));
  EXPECT_THROW(WritePdf(layout, QString::fromStdString(folder.Path("missing/report.pdf"))), Error);
}

}  // namespace
}  // namespace cvve::reportengine
