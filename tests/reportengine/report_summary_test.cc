// What a manager reads on the printed page: which columns are summed and
// averaged, one font for the summaries of every level, the run's variables
// in the page header, the group value in its heading only, and the grand
// totals set apart from the last group.
#include <gtest/gtest.h>

#include <QLocale>
#include <algorithm>
#include <map>
#include <set>

#include "report_test_support.h"
#include "reportengine/paginator.h"
#include "reportengine/text_shaper.h"
#include "reportengine/value_format.h"

namespace cvve::reportengine {
namespace {

using testing::ActiveByCollector;
using testing::AllAccounts;
using testing::CvrShape;
using testing::Output;
using testing::Produce;
using testing::TempFolder;

// The texts on the line of each text equal to `label`, right of it.
std::vector<std::vector<PageText>> FiguresBeside(const Output& out, const QString& label) {
  std::vector<std::vector<PageText>> rows;
  for (const PageDescription& page : out.layout.pages) {
    for (const PageText& at : page.texts) {
      if (at.text != label) continue;
      std::vector<PageText> figures;
      for (const PageText& text : page.texts) {
        if (text.y == at.y && text.x > at.x) figures.push_back(text);
      }
      std::sort(figures.begin(), figures.end(),
                [](const PageText& a, const PageText& b) { return a.x < b.x; });
      rows.push_back(std::move(figures));
    }
  }
  return rows;
}

// Smallest to largest; the summary fonts only.
int Rank(FontRole role) {
  switch (role) {
    case FontRole::kSummarySmall:
      return 0;
    case FontRole::kBody:
      return 1;
    case FontRole::kSummary:
      return 2;
    default:
      return -1;
  }
}

TEST(ReportSummaryTest, MoneyIsSummedAndEveryNumberAveraged) {
  TempFolder folder;
  const struct {
    const char* name;
    std::string days_total, days_average;  // "" leaves the element out
    std::size_t totals, averages;          // figures in the rows
  } cases[] = {
      {"By format", "", "", 1, 2},              // Balance summed; Balance, Days Late averaged
      {"Days summed", "1", "", 2, 2},           // an administrator's choice wins
      {"Days not averaged", "", "0", 1, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CvrShape shape = AllAccounts();
    shape.name = c.name;
    shape.columns[5].total = c.days_total;
    shape.columns[5].average = c.days_average;
    const Output out = Produce(shape, folder);
    const auto totals = FiguresBeside(out, QStringLiteral("Total"));
    const auto averages = FiguresBeside(out, QStringLiteral("Average"));
    ASSERT_EQ(totals.size(), 1u);
    ASSERT_EQ(averages.size(), 1u);
    EXPECT_EQ(totals[0].size(), c.totals);
    EXPECT_EQ(averages[0].size(), c.averages);
    // Balance is first and in money either way.
    EXPECT_TRUE(totals[0].front().text.startsWith(QLatin1Char('$')) ||
                totals[0].front().text.startsWith(QStringLiteral("-$")));
  }

  // No column summed: no totals row at all, the averages row stays.
  CvrShape shape = AllAccounts();
  shape.name = "Nothing Summed";
  shape.columns[4].total = "0";
  const Output out = Produce(shape, folder);
  EXPECT_TRUE(FiguresBeside(out, QStringLiteral("Total")).empty());
  EXPECT_EQ(FiguresBeside(out, QStringLiteral("Average")).size(), 1u);
}

// The grand total is the widest figure: with a Balance column where the
// groups' totals fit in bold and the grand total does not, every level
// takes the same, smaller font rather than the grand total alone.
TEST(ReportSummaryTest, EveryLevelTakesOneFont) {
  TempFolder folder;
  CvrShape shape = ActiveByCollector();
  const Output wide = Produce(shape, folder);
  const LayoutFonts fonts(1.0);
  const TextShaper& bold = fonts.Of(FontRole::kSummary);
  double groups = 0;
  for (const ReportGroup& group : wide.data.groups) {
    groups = std::max(groups, bold.Width(FormatTotal(static_cast<double>(group.totals.sum[3]),
                                                     "Currency")));
  }
  const double grand =
      bold.Width(FormatTotal(static_cast<double>(wide.data.totals.sum[3]), "Currency"));
  ASSERT_GT(grand, groups + 20) << "the grand total must be the wider figure";

  const struct {
    int width;  // of Balance
    bool all_bold;
  } cases[] = {{static_cast<int>(grand) + 140, true}, {static_cast<int>(groups) + 140, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.width);
    shape.name = "Balance " + std::to_string(c.width);
    shape.columns[3].width = c.width;
    const Output out = Produce(shape, folder);
    std::set<FontRole> used;
    int group_rank = 99;
    int grand_rank = -1;
    for (const char* label : {"Total", "Average", "Grand Total", "Grand Average"}) {
      for (const auto& row : FiguresBeside(out, QString::fromLatin1(label))) {
        for (const PageText& figure : row) {
          used.insert(figure.font);
          if (QString::fromLatin1(label).startsWith(QStringLiteral("Grand"))) {
            grand_rank = std::max(grand_rank, Rank(figure.font));
          } else {
            group_rank = std::min(group_rank, Rank(figure.font));
          }
        }
      }
    }
    ASSERT_EQ(used.size(), 1u) << "the summaries' figures take more than one font";
    EXPECT_EQ(*used.begin() == FontRole::kSummary, c.all_bold);
    EXPECT_GE(grand_rank, group_rank);
  }
}

TEST(ReportSummaryTest, PageHeaderShowsEachVariable) {
  TempFolder folder;
  CvrShape shape = AllAccounts();
  shape.variables = {{"$START_DATE", "Date"}, {"$LOT", "String"}, {"$NOTE", "String"}};
  const struct {
    std::map<std::string, std::string> values;
    QString expected;
  } cases[] = {
      {{{"$START_DATE", "2026-03-01"}, {"$LOT", "North"}},
       QStringLiteral("$START_DATE: 03/01/2026     $LOT: North     $NOTE: (none)")},
      // As typed: a date in the report's own form reads the same.
      {{{"$start_date", "03/01/2026"}, {"$NOTE", "O'Brien & Sons"}},
       QStringLiteral("$START_DATE: 03/01/2026     $LOT: (none)     $NOTE: O'Brien & Sons")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected.toStdString());
    RunSettings settings;
    settings.variables = c.values;
    const Output out = Produce(shape, folder, settings);
    ASSERT_GT(out.layout.pages.size(), 1u);
    for (const PageDescription& page : out.layout.pages) {
      const bool shown = std::any_of(page.texts.begin(), page.texts.end(), [&](const PageText& t) {
        return t.font == FontRole::kHeader && t.text == c.expected;
      });
      EXPECT_TRUE(shown);
    }
  }

  // Without variables the header keeps to the name and the run time: the
  // first row sits where it always did.
  const Output plain = Produce(AllAccounts(), folder);
  for (const PageText& text : plain.layout.pages[0].texts) {
    EXPECT_FALSE(text.font == FontRole::kHeader && text.text.contains(QLatin1Char(':')) &&
                 !text.text.startsWith(QStringLiteral("Run ")))
        << text.text.toStdString();
  }
}

TEST(ReportSummaryTest, GroupValueOnlyInItsHeadingAndGrandTotalsApart) {
  TempFolder folder;
  CvrShape shape = ActiveByCollector();
  shape.columns.insert(shape.columns.begin(), {"Collector", "ACCTS.Collector", "String"});
  shape.statement = "\"CQ:SELECT Collector, AcctNum, OpenDate, DaysLate, Balance FROM ACCTS "
                    "WHERE Status='A' AND Collector='\" + FXA([INV_INFO.Collector]) + \"' "
                    "ORDER BY AcctNum\"";
  const Output out = Produce(shape, folder);
  ASSERT_GT(out.data.groups.size(), 1u);
  const float collector_x = 720 + 60;
  const float account_x = 720 + 1440 + 60;
  long long accounts = 0;
  std::set<QString> headings;
  for (const PageDescription& page : out.layout.pages) {
    for (const PageText& text : page.texts) {
      if (text.font == FontRole::kGroupHeading) headings.insert(text.text);
      if (text.font != FontRole::kBody) continue;
      EXPECT_NE(text.x, collector_x) << text.text.toStdString();  // blank under its heading
      accounts += text.x == account_x;
    }
  }
  EXPECT_EQ(accounts, out.data.RowCount());
  for (const ReportGroup& group : out.data.groups) {
    EXPECT_TRUE(headings.count(QStringLiteral("Collector: ") + group.display))
        << group.heading.toStdString();
  }

  // Between the last group's count and the grand total: a line's room and
  // a double rule.
  const PageDescription& last = out.layout.pages.back();
  const QString last_count = QStringLiteral("Count: %1").arg(out.data.groups.back().totals.rows);
  const auto y_of = [&last](const QString& text) {
    for (const PageText& t : last.texts) {
      if (t.text == text) return static_cast<double>(t.y);
    }
    return -1.0;
  };
  const double count_y = y_of(last_count);
  const double grand_y = y_of(QStringLiteral("Grand Total"));
  ASSERT_GT(count_y, 0);
  ASSERT_GT(grand_y, count_y);
  int rules = 0;
  for (const PageLine& line : last.lines) rules += line.y1 > count_y && line.y1 < grand_y;
  EXPECT_EQ(rules, 2);
  const double body = LayoutFonts(out.layout.font_scale).Of(FontRole::kBody).LineSpacing();
  EXPECT_GT(grand_y - count_y, 2 * body);
}

}  // namespace
}  // namespace cvve::reportengine
