// Reports laid out and written while their rows still come: the pages of a
// streamed run are the pages of the whole layout; what only the end decides
// (the page total, the summaries' font) reaches the pages made before it;
// the viewer opens on the first page of a run that is still going and stays
// consistent when it is cancelled; a cancelled PDF leaves nothing at its
// path; the row limit holds for a grouped report's run as a whole.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QThread>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "report_test_support.h"
#include "reportengine/background_report.h"
#include "reportengine/page_renderer.h"
#include "reportengine/paginator.h"
#include "reportengine/report_viewer.h"
#include "reportengine/text_shaper.h"
#include "reportengine/value_format.h"

namespace cvve::reportengine {
namespace {

using testing::ActiveByCollector;
using testing::AllAccounts;
using testing::CvrShape;
using testing::Define;
using testing::Endless;
using testing::HaveTool;
using testing::NoRowLimit;
using testing::Produce;
using testing::RunCommand;
using testing::SmallDatabase;
using testing::TempFolder;

using TextKey = std::tuple<int, int, int, std::string>;

// A page's texts as comparable keys, without the run's date and time (two
// runs may fall in different minutes).
std::multiset<TextKey> Keys(const std::vector<PageText>& texts) {
  std::multiset<TextKey> keys;
  for (const PageText& text : texts) {
    if (text.text.startsWith(QStringLiteral("Run "))) continue;
    keys.insert({static_cast<int>(std::lround(text.x)), static_cast<int>(std::lround(text.y)),
                 static_cast<int>(text.font), text.text.toStdString()});
  }
  return keys;
}

struct Streamed {
  std::vector<PageDescription> pages;     // as handed on during the run
  std::vector<std::vector<PageText>> closing;  // final, after the end
};

Streamed Stream(const ReportDefinition& def, const QueryLimits& limits = {}) {
  Streamed out;
  StreamingPaginator paginator(def, [&out](PageDescription page) {
    out.pages.push_back(std::move(page));
  });
  GuardedConnection db(SmallDatabase(), limits);
  StreamReport(def, db, {}, paginator);
  for (int p = 0; p < paginator.PageCount(); ++p) out.closing.push_back(paginator.ClosingTexts(p));
  return out;
}

TEST(ReportStreamTest, StreamedPagesAreTheWholeLayoutsPages) {
  const struct {
    const char* name;
    CvrShape shape;
  } kCases[] = {{"ungrouped", AllAccounts()}, {"grouped", ActiveByCollector()}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    TempFolder folder;
    const testing::Output whole = Produce(c.shape, folder);
    const Streamed streamed = Stream(whole.def);
    ASSERT_GT(whole.layout.pages.size(), 2u);
    ASSERT_EQ(streamed.pages.size(), whole.layout.pages.size());
    ASSERT_EQ(streamed.closing.size(), whole.layout.pages.size());
    const int count = static_cast<int>(streamed.pages.size());
    for (int p = 0; p < count; ++p) {
      SCOPED_TRACE("page " + std::to_string(p + 1));
      const PageDescription& page = streamed.pages[static_cast<std::size_t>(p)];
      std::vector<PageText> texts = page.texts;
      texts.insert(texts.end(), streamed.closing[static_cast<std::size_t>(p)].begin(),
                   streamed.closing[static_cast<std::size_t>(p)].end());
      EXPECT_EQ(Keys(texts), Keys(whole.layout.pages[static_cast<std::size_t>(p)].texts));
      EXPECT_EQ(page.lines.size(), whole.layout.pages[static_cast<std::size_t>(p)].lines.size());
      // Handed on before the total was known, but the last page.
      const QString number = QStringLiteral("Page %1").arg(p + 1);
      const QString total = number + QStringLiteral(" of %1").arg(count);
      const auto says = [](const std::vector<PageText>& in, const QString& what) {
        return std::any_of(in.begin(), in.end(), [&](const PageText& t) { return t.text == what; });
      };
      EXPECT_TRUE(says(page.closing, p + 1 == count ? total : number));
      EXPECT_TRUE(says(streamed.closing[static_cast<std::size_t>(p)], total));
    }
  }
}

// The summaries' figures share one font, chosen when every summary is
// known: a grand total too wide for the bold font changes the font of the
// group totals on pages handed on long before.
TEST(ReportStreamTest, TheSummaryFontChosenAtTheEndReachesEarlierPages) {
  TempFolder folder;
  CvrShape shape = ActiveByCollector();
  const testing::Output wide = Produce(shape, folder);
  // The widest group total and the grand total in the bold summary font.
  const LayoutFonts fonts(1.0);
  const TextShaper& bold = fonts.Of(FontRole::kSummary);
  const testing::ColumnShape& balance = shape.columns[3];
  double group_width = 0;
  for (const ReportGroup& group : wide.data.groups) {
    group_width = std::max(group_width, bold.Width(FormatTotal(static_cast<double>(group.totals.sum[3]),
                                                               balance.format)));
  }
  const double grand_width =
      bold.Width(FormatTotal(static_cast<double>(wide.data.totals.sum[3]), balance.format));
  ASSERT_GT(grand_width, group_width + 2);
  // Room for every group's total in bold, not for the grand total.
  shape.columns[3].width = static_cast<int>(std::ceil(group_width)) + 2 * 60 + 1;
  const Streamed streamed = Stream(Define(folder, shape));
  ASSERT_GT(streamed.pages.size(), 2u);

  std::set<int> provisional;
  std::set<int> final_roles;
  for (std::size_t p = 0; p < streamed.pages.size(); ++p) {
    for (const PageText& text : streamed.pages[p].closing) {
      if (text.font != FontRole::kHeader) provisional.insert(static_cast<int>(text.font));
    }
    for (const PageText& text : streamed.closing[p]) {
      if (text.font != FontRole::kHeader) final_roles.insert(static_cast<int>(text.font));
    }
  }
  // During the run the first pages guessed bold; at the end one font, not bold.
  EXPECT_TRUE(provisional.count(static_cast<int>(FontRole::kSummary)));
  ASSERT_EQ(final_roles.size(), 1u);
  EXPECT_NE(*final_roles.begin(), static_cast<int>(FontRole::kSummary));
}

// The grouped report's statements together may return no more rows than the
// limit, though each alone stays under it.
TEST(ReportStreamTest, TheRowLimitHoldsForAGroupedReportsWholeRun) {
  TempFolder folder;
  const testing::Output whole = Produce(ActiveByCollector(), folder);
  const long long rows = whole.data.RowCount();
  long long largest = 0;
  for (const ReportGroup& group : whole.data.groups) largest = std::max(largest, group.totals.rows);
  ASSERT_LT(largest + 1, rows);
  const struct {
    long long limit;
    bool stopped;
  } kCases[] = {{rows, false}, {rows - 1, true}, {largest + 1, true}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.limit);
    QueryLimits limits;
    limits.row_limit = c.limit;
    GuardedConnection db(SmallDatabase(), limits);
    try {
      const ReportData data = RunReport(whole.def, db, {});
      EXPECT_FALSE(c.stopped) << "ran to its end";
      EXPECT_EQ(data.RowCount(), rows);
    } catch (const GuardError& e) {
      EXPECT_TRUE(c.stopped) << e.what();
      EXPECT_EQ(e.kind(), GuardError::Kind::kRowLimit);
      EXPECT_NE(std::string(e.what()).find("row limit of " + std::to_string(c.limit)),
                std::string::npos)
          << e.what();
    }
  }
}

// A cancelled or failed PDF leaves the file that was there (or none), and no
// temporary file beside it.
TEST(ReportStreamTest, ACancelledPdfLeavesNothingHalfWritten) {
  for (const bool existing : {false, true}) {
    SCOPED_TRACE(existing ? "over an existing file" : "a new file");
    TempFolder folder;
    const ReportDefinition def = Define(folder, Endless());
    const std::string target = folder.Path("out") + "/report.pdf";
    std::filesystem::create_directories(folder.Path("out"));
    if (existing) folder.Write("out/report.pdf", "the old file");
    RunSettings settings;
    int calls = 0;
    // Stops once some pages are written: the run reports every 1,024 rows.
    settings.progress = [&calls](const QString&, long long, long long) { return ++calls < 5; };
    GuardedConnection db(SmallDatabase(), NoRowLimit());
    EXPECT_THROW(WriteReportPdf(def, db, settings, QString::fromStdString(target)), Cancelled);
    EXPECT_EQ(calls, 5);
    std::vector<std::string> left;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path("out"))) {
      left.push_back(entry.path().filename().string());
    }
    if (existing) {
      ASSERT_EQ(left, std::vector<std::string>{"report.pdf"});
      QFile file(QString::fromStdString(target));
      ASSERT_TRUE(file.open(QIODevice::ReadOnly));
      EXPECT_EQ(file.readAll().toStdString(), "the old file");
    } else {
      EXPECT_TRUE(left.empty()) << left.front();
    }
  }
}

// The PDF written while the rows come shows what the PDF of the whole
// layout shows: the same text, the same pixels.
TEST(ReportStreamTest, TheStreamedPdfLooksLikeTheWholeLayoutsPdf) {
  if (!HaveTool("pdftotext") || !HaveTool("pdftoppm")) GTEST_SKIP() << "poppler-utils missing";
  TempFolder folder;
  const testing::Output whole = Produce(ActiveByCollector(), folder);
  const std::string held = folder.Path("held.pdf");
  const std::string streamed = folder.Path("streamed.pdf");
  WritePdf(whole.layout, QString::fromStdString(held));
  GuardedConnection db(SmallDatabase());
  const WrittenReport written = WriteReportPdf(whole.def, db, {}, QString::fromStdString(streamed));
  EXPECT_EQ(written.rows, whole.data.RowCount());
  EXPECT_EQ(written.pages, static_cast<int>(whole.layout.pages.size()));

  std::string held_text, streamed_text;
  ASSERT_EQ(RunCommand("pdftotext -layout '" + held + "' -", &held_text), 0);
  ASSERT_EQ(RunCommand("pdftotext -layout '" + streamed + "' -", &streamed_text), 0);
  EXPECT_NE(streamed_text.find("Page 1 of " + std::to_string(written.pages)), std::string::npos);
  // The run's minute may differ between the two runs; then only the text.
  const std::regex run("Run [0-9/]+ [0-9:]+ [AP]M");
  std::smatch held_run, streamed_run;
  ASSERT_TRUE(std::regex_search(held_text, held_run, run));
  ASSERT_TRUE(std::regex_search(streamed_text, streamed_run, run));
  const bool same_minute = held_run.str() == streamed_run.str();
  EXPECT_EQ(std::regex_replace(held_text, run, "Run"), std::regex_replace(streamed_text, run, "Run"));
  if (!same_minute) GTEST_SKIP() << "the runs fell in different minutes: pixels not compared";
  for (const std::string& pdf : {held, streamed}) {
    ASSERT_EQ(RunCommand("pdftoppm -r 40 -png '" + pdf + "' '" + pdf + "'"), 0);
  }
  int compared = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder.Path(""))) {
    const std::string name = entry.path().filename().string();
    if (name.rfind("held.pdf-", 0) != 0) continue;
    QFile a(QString::fromStdString(entry.path().string()));
    QFile b(QString::fromStdString(folder.Path("streamed.pdf-" + name.substr(9))));
    ASSERT_TRUE(a.open(QIODevice::ReadOnly) && b.open(QIODevice::ReadOnly)) << name;
    EXPECT_TRUE(a.readAll() == b.readAll()) << name;
    ++compared;
  }
  EXPECT_EQ(compared, written.pages);
}

// The window's run: the viewer opens on page 1 while the statement still
// runs, shows how many pages so far, and after Cancel keeps the pages it
// has, says the run stopped, and offers no half report to print or save.
TEST(ReportStreamTest, TheViewerOpensBeforeTheRunEndsAndStaysWholeWhenCancelled) {
  TempFolder folder;
  LiveReport live(Define(folder, Endless()), {}, SmallDatabase(), NoRowLimit());
  live.WaitForFirstPage(nullptr);
  ASSERT_FALSE(live.Finished());
  ReportViewerWindow window(live.Pages(), [&live] { live.Cancel(); });
  EXPECT_TRUE(window.Running());
  EXPECT_GE(window.PageCount(), 1);
  EXPECT_FALSE(window.ShownImage().isNull());
  EXPECT_TRUE(window.PageCountText().endsWith(QStringLiteral(" so far"))) << window.PageCountText().toStdString();
  const PageDescription first = live.Pages()->Page(0);
  EXPECT_TRUE(std::any_of(first.closing.begin(), first.closing.end(),
                          [](const PageText& t) { return t.text == QStringLiteral("Page 1"); }));

  // More pages come while the window waits.
  const int before = window.PageCount();
  for (int i = 0; i < 200 && window.PageCount() <= before; ++i) {
    QCoreApplication::processEvents();
    live.Pages()->Count() > before ? window.Refresh() : void(QThread::msleep(10));
  }
  EXPECT_GT(window.PageCount(), before);

  window.CancelRun();
  ASSERT_TRUE(live.WaitForEnd(30'000));
  window.Refresh();
  ASSERT_TRUE(live.Outcome());
  EXPECT_EQ(live.Outcome()->status, RunOutcome::Status::kCancelled);
  EXPECT_FALSE(window.Running());
  EXPECT_EQ(window.PageCount(), live.Pages()->Count());
  EXPECT_TRUE(window.PageCountText().contains(QStringLiteral("stopped"))) << window.PageCountText().toStdString();
  window.LastPage();
  EXPECT_EQ(window.CurrentPage(), window.PageCount() - 1);
  EXPECT_FALSE(window.ShownImage().isNull());
  EXPECT_FALSE(window.SaveAs(QString::fromStdString(folder.Path("half.pdf"))));
  EXPECT_FALSE(std::filesystem::exists(folder.Path("half.pdf")));
}

// After the end every page says "Page N of M", the pages shown during the
// run included: the saved PDF of the window's layout says so on each page.
TEST(ReportStreamTest, EveryPageGetsItsTotalWhenTheRunEnds) {
  if (!HaveTool("pdftotext")) GTEST_SKIP() << "poppler-utils missing";
  TempFolder folder;
  LiveReport live(Define(folder, AllAccounts()), {}, SmallDatabase(), QueryLimits{});
  live.WaitForFirstPage(nullptr);
  ReportViewerWindow window(live.Pages(), [&live] { live.Cancel(); });
  ASSERT_TRUE(live.WaitForEnd(30'000));
  ASSERT_TRUE(live.Outcome() && live.Outcome()->Ok()) << live.Outcome()->error;
  window.Refresh();
  EXPECT_FALSE(window.Running());
  const int count = window.PageCount();
  ASSERT_GT(count, 2);
  EXPECT_EQ(window.PageCountText(), QStringLiteral("of %1").arg(count));
  const std::string pdf = folder.Path("all.pdf");
  ASSERT_TRUE(window.SaveAs(QString::fromStdString(pdf)));
  for (int p = 1; p <= count; ++p) {
    std::string text;
    ASSERT_EQ(RunCommand("pdftotext -f " + std::to_string(p) + " -l " + std::to_string(p) + " '" +
                             pdf + "' -",
                         &text),
              0);
    EXPECT_NE(text.find("Page " + std::to_string(p) + " of " + std::to_string(count)),
              std::string::npos)
        << "page " << p;
  }
  // The rows are complete for spreadsheets too.
  EXPECT_EQ(static_cast<std::size_t>(live.Data().RowCount()),
            testing::SqlRows(SmallDatabase(), "SELECT 1 FROM ACCTS").size());
}

}  // namespace
}  // namespace cvve::reportengine
