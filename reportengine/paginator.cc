#include "reportengine/paginator.h"

#include <QFontMetricsF>
#include <QLocale>
#include <QPageSize>
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "base/text.h"
#include "reportengine/text_shaper.h"
#include "reportengine/value_format.h"

namespace cvve::reportengine {

namespace {

constexpr double kMargin = 720;  // half an inch
constexpr double kPadding = 60;  // inside a cell, each side
constexpr double kTwipsPerPoint = 20;
constexpr double kMinFontScale = 0.6;  // below this a 8 pt font is unreadable

enum class Align { kLeft, kRight, kCenter };

Align AlignOf(const std::string& alignment) {
  const std::string lower = ToLower(alignment);
  if (lower == "right") return Align::kRight;
  if (lower == "center") return Align::kCenter;
  return Align::kLeft;
}

struct Metrics {
  explicit Metrics(const TextShaper& s) : shaper(s), ascent(s.Ascent()), spacing(s.LineSpacing()) {}
  const TextShaper& shaper;
  double ascent;
  double spacing;

  double Width(const QString& text) const { return shaper.Width(text); }
  bool Fits(const QString& text, double available) const { return Width(text) <= available; }
};

struct ColumnBox {
  double x;
  double width;
  Align align;
  bool total;
  bool average;
  std::string format;
};

// A totals or averages row, or the line count.
struct SummaryRow {
  QString label;
  std::vector<QString> figures;  // by column; empty for the count
};

bool Landscape(const ReportDefinition& def) {
  return def.orientation == PageOrientation::kLandscape;
}
double PageWidth(const ReportDefinition& def) {
  const QSizeF paper = PaperTwips(def.page_size);
  return Landscape(def) ? paper.height() : paper.width();
}
double PageHeight(const ReportDefinition& def) {
  const QSizeF paper = PaperTwips(def.page_size);
  return Landscape(def) ? paper.width() : paper.height();
}

// 1, or less when the columns are wider than the printable width.
double ColumnScale(const ReportDefinition& def) {
  double total = 0;
  for (const ReportColumn& column : def.columns) total += column.width;
  const double printable = PageWidth(def) - 2 * kMargin;
  return total > printable ? printable / total : 1.0;
}

// A summary figure placed once the report's figure font is known: only its
// left end depends on that font.
struct LateFigure {
  ColumnBox column;
  float baseline;
  QString text;
};

}  // namespace

class Paginator {
 public:
  Paginator(const ReportDefinition& def, StreamingPaginator::PageFunction on_page)
      : def_(def),
        emit_(std::move(on_page)),
        scale_(ColumnScale(def)),
        font_scale_(std::max(kMinFontScale, scale_)),
        fonts_(std::make_shared<LayoutFonts>(font_scale_)),
        title_(fonts_->Of(FontRole::kTitle)),
        header_(fonts_->Of(FontRole::kHeader)),
        column_header_(fonts_->Of(FontRole::kColumnHeader)),
        body_(fonts_->Of(FontRole::kBody)),
        group_(fonts_->Of(FontRole::kGroupHeading)),
        summary_(fonts_->Of(FontRole::kSummary)),
        summary_small_(fonts_->Of(FontRole::kSummarySmall)) {
    layout_.size = def.page_size;
    layout_.orientation = def.orientation;
    layout_.width = PageWidth(def);
    layout_.height = PageHeight(def);
    layout_.title = QString::fromStdString(def.name);
    layout_.font_scale = font_scale_;
    layout_.fonts = fonts_;
    bottom_ = layout_.height - kMargin;

    // Columns keep their widths, shrunk together (with their fonts) when
    // they are wider than the paper.
    const double scale = scale_;
    double x = kMargin;
    for (const ReportColumn& column : def.columns) {
      const double width = column.width * scale;
      columns_.push_back(
          {x, width, AlignOf(column.alignment), column.total, column.average, column.format});
      x += width;
    }
    right_ = x;
    // The group value stands in the group heading; its column stays, blank.
    if (def.grouped) group_column_ = def.GroupColumn();
    max_lines_ = std::max(1, static_cast<int>((bottom_ - kMargin - 2000) / body_.spacing));
  }

  const ReportLayout& Frame() const { return layout_; }
  int PageCount() const { return pages_; }

  void Begin(const ReportData& header) {
    run_at_ = header.run_at;
    variables_ = header.variables;
    variable_lines_ = VariableLines();
    NewPage();
  }

  void BeginGroup(const ReportGroup& group) {
    heading_ = group.heading;
    if (def_.grouped) GroupHeading(false);
  }

  void Row(const QString* cells) {
    RowAt(cells);
    ++rows_done_;
    if (progress_ && (rows_done_ & 1023) == 0 &&
        !(*progress_)(QStringLiteral("Laying out pages"), rows_done_, total_rows_)) {
      throw Cancelled();
    }
  }

  void EndGroup(const ReportGroup& group) {
    if (def_.grouped) Summary(group.totals, false);
  }

  void End(const ReportData& summary) {
    layout_.rows = summary.RowCount();
    if (summary.RowCount() == 0) {
      Text(kMargin + kPadding, y_ + body_.ascent, FontRole::kBody,
           QStringLiteral("No records found."));
      y_ += body_.spacing;
    }
    Summary(summary.totals, true);
    ended_ = true;
    Emit();
  }

  // "Page N of M" (before the end "Page N") and the page's summary figures
  // in the font chosen so far.
  std::vector<PageText> ClosingTexts(int page) const {
    std::vector<PageText> texts;
    const auto index = static_cast<std::size_t>(page);
    if (index < figures_.size()) {
      const Metrics& m = *FiguresFont();
      const FontRole role = FiguresRole();
      for (const LateFigure& figure : figures_[index]) {
        texts.push_back({static_cast<float>(X(figure.column, m.Width(figure.text))),
                         figure.baseline, role, figure.text});
      }
    }
    const QString number = ended_ ? QStringLiteral("Page %1 of %2").arg(page + 1).arg(pages_)
                                  : QStringLiteral("Page %1").arg(page + 1);
    texts.push_back({static_cast<float>(layout_.width - kMargin - header_.Width(number)),
                     static_cast<float>(title_baseline_), FontRole::kHeader, number});
    return texts;
  }

  // Paginate's own: the rows to come, for its progress.
  void SetProgress(const ProgressFunction* progress, long long total_rows) {
    progress_ = progress != nullptr && *progress ? progress : nullptr;
    total_rows_ = total_rows;
  }

 private:
  PageDescription& Page() { return page_; }

  // Hands the page on, its closing texts as known now.
  void Emit() {
    page_.closing = ClosingTexts(pages_ - 1);
    // The next page is most likely as full: its room is taken at once rather
    // than grown a text at a time.
    const std::size_t texts = page_.texts.size();
    const std::size_t lines = page_.lines.size();
    emit_(std::move(page_));
    page_ = PageDescription();
    page_.texts.reserve(texts);
    page_.lines.reserve(lines);
  }

  void Text(double x, double baseline, FontRole font, QString text) {
    Page().texts.push_back(
        {static_cast<float>(x), static_cast<float>(baseline), font, std::move(text)});
  }

  void Line(double x1, double y1, double x2, double y2, double width) {
    Page().lines.push_back({static_cast<float>(x1), static_cast<float>(y1), static_cast<float>(x2),
                            static_cast<float>(y2), static_cast<float>(width)});
  }

  // A text in a column, elided to the column unless `whole` (a figure that
  // must be read entirely may reach into its neighbour's room).
  void Cell(const ColumnBox& column, double top, const Metrics& m, FontRole role,
            const QString& text, bool whole = false) {
    if (text.isEmpty()) return;
    const double available = column.width - 2 * kPadding;
    QString shown = text;
    double width = m.Width(text);
    if (!whole && width > available) {
      shown = m.shaper.Elided(text, std::max(0.0, available));
      width = m.Width(shown);
    }
    Text(X(column, column.align == Align::kLeft ? 0 : width), top + m.ascent, role,
         std::move(shown));
  }

  double X(const ColumnBox& column, double text_width) const {
    switch (column.align) {
      case Align::kRight:
        return column.x + column.width - kPadding - text_width;
      case Align::kCenter:
        return column.x + (column.width - text_width) / 2;
      case Align::kLeft:
        break;
    }
    return column.x + kPadding;
  }

  // Greedy word wrap; a word longer than the line is broken where it must
  // (or, without `break_words`, left whole for the cell to elide).
  static QStringList Wrap(const Metrics& m, const QString& text, double available,
                          bool break_words = true) {
    QStringList lines;
    const QStringList paragraphs = text.split(QLatin1Char('\n'));
    for (const QString& paragraph : paragraphs) {
      QString line;
      for (const QString& word : paragraph.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QString candidate = line.isEmpty() ? word : line + QLatin1Char(' ') + word;
        if (m.Fits(candidate, available)) {
          line = candidate;
          continue;
        }
        if (!line.isEmpty()) lines << line;
        line = word;
        while (break_words && !m.Fits(line, available) && line.size() > 1) {
          // The longest start that fits, at least one character: found in
          // one pass, not by measuring ever shorter starts (a long word
          // would take time by the square of its length).
          const qsizetype fit = m.shaper.FittingPrefix(line, available);
          qsizetype cut = std::max<qsizetype>(1, fit);
          if (fit < 0) {
            cut = line.size() - 1;
            while (cut > 1 && !m.Fits(line.left(cut), available)) --cut;
          }
          lines << line.left(cut);
          line = line.mid(cut);
        }
      }
      lines << line;
    }
    return lines;
  }

  void NewPage() {
    if (pages_ > 0) Emit();
    ++pages_;
    figures_.emplace_back();
    double y = kMargin;
    // Page header: report name, run date; "Page X of Y" is added at the end.
    Text(kMargin, y + title_.ascent, FontRole::kTitle, layout_.title);
    title_baseline_ = y + title_.ascent;
    y += title_.spacing;
    const QString run =
        QStringLiteral("Run ") + QLocale(QLocale::English, QLocale::UnitedStates)
                                     .toString(run_at_, QStringLiteral("MM/dd/yyyy h:mm AP"));
    Text(kMargin, y + header_.ascent, FontRole::kHeader, run);
    y += header_.spacing;
    for (const QString& line : variable_lines_) {
      Text(kMargin, y + header_.ascent, FontRole::kHeader, line);
      y += header_.spacing;
    }
    y += 40;
    Line(kMargin, y, layout_.width - kMargin, y, 20);
    y += 80;
    // Column headers, on two lines where a title needs them.
    int header_lines = 1;
    for (std::size_t c = 0; c < columns_.size(); ++c) {
      QStringList lines = Wrap(column_header_, QString::fromStdString(def_.columns[c].title),
                               columns_[c].width - 2 * kPadding, false);
      if (lines.size() > 2) {
        lines = QStringList{lines[0], lines.mid(1).join(QLatin1Char(' '))};
      }
      for (int l = 0; l < lines.size(); ++l) {
        Cell(columns_[c], y + l * column_header_.spacing, column_header_, FontRole::kColumnHeader,
             lines[l]);
      }
      header_lines = std::max(header_lines, static_cast<int>(lines.size()));
    }
    y += header_lines * column_header_.spacing + 20;
    Line(kMargin, y, right_, y, 10);
    y += 60;
    y_ = y;
  }

  void GroupHeading(bool continued) {
    const double needed = body_.spacing / 2 + group_.spacing + body_.spacing;
    if (y_ + needed > bottom_) NewPage();
    if (!continued) y_ += body_.spacing / 2;
    Text(kMargin, y_ + group_.ascent, FontRole::kGroupHeading,
         continued ? heading_ + QStringLiteral(" (continued)") : heading_);
    y_ += group_.spacing + 20;
  }

  void RowAt(const QString* cells) {
    int lines = 1;
    std::vector<QStringList> wrapped;
    if (def_.multi_line) {
      wrapped.resize(columns_.size());
      for (std::size_t c = 0; c < columns_.size(); ++c) {
        if (GroupColumn(c) || cells[c].isEmpty() ||
            body_.Fits(cells[c], columns_[c].width - 2 * kPadding)) {
          continue;
        }
        wrapped[c] = Wrap(body_, cells[c], columns_[c].width - 2 * kPadding);
        if (wrapped[c].size() > max_lines_) {
          wrapped[c] = wrapped[c].mid(0, max_lines_);
          wrapped[c].last() = body_.shaper.Elided(wrapped[c].last() + QStringLiteral(" \u2026"),
                                                  columns_[c].width - 2 * kPadding);
        }
        lines = std::max(lines, static_cast<int>(wrapped[c].size()));
      }
    }
    const double height = lines * body_.spacing;
    if (y_ + height > bottom_) {
      NewPage();
      if (def_.grouped) GroupHeading(true);
    }
    for (std::size_t c = 0; c < columns_.size(); ++c) {
      if (GroupColumn(c)) continue;
      if (!wrapped.empty() && !wrapped[c].isEmpty()) {
        for (int l = 0; l < wrapped[c].size(); ++l) {
          Cell(columns_[c], y_ + l * body_.spacing, body_, FontRole::kBody, wrapped[c][l]);
        }
      } else {
        Cell(columns_[c], y_, body_, FontRole::kBody, cells[c]);
      }
    }
    y_ += height;
  }

  bool GroupColumn(std::size_t c) const { return static_cast<int>(c) == group_column_; }

  // "Start Date: 01/01/2026   End Date: 01/31/2026": each variable's caption
  // and value, as many to a line as the page is wide.
  QStringList VariableLines() const {
    QStringList lines;
    const double available = layout_.width - 2 * kMargin;
    const QString gap = QStringLiteral("     ");
    for (const ReportData::Variable& variable : variables_) {
      QString caption = variable.caption.trimmed();
      if (!caption.isEmpty() && !caption.endsWith(QLatin1Char(':'))) caption += QLatin1Char(':');
      const QString entry =
          caption + QLatin1Char(' ') +
          (variable.value.isEmpty() ? QStringLiteral("(none)") : variable.value);
      if (!lines.isEmpty() && header_.Fits(lines.last() + gap + entry, available)) {
        lines.last() += gap + entry;
      } else {
        lines << header_.shaper.Elided(entry, available);
      }
    }
    return lines;
  }

  // The summary rows of a group (or, `grand`, of the report) as printed.
  std::vector<SummaryRow> SummaryRows(const Aggregate& totals, bool grand) const {
    std::vector<SummaryRow> rows;
    const QString prefix = grand && def_.grouped ? QStringLiteral("Grand ") : QString();
    if (def_.TotalsRow()) rows.push_back({prefix + QStringLiteral("Total"), Figures(totals, false)});
    if (def_.AveragesRow()) {
      rows.push_back({prefix + QStringLiteral("Average"), Figures(totals, true)});
    }
    if (def_.line_count) {
      rows.push_back({prefix + QStringLiteral("Count: ") + QString::number(totals.rows), {}});
    }
    return rows;
  }

  // The figures of every summary of the report take one font, so that no
  // level prints smaller than the one below it: the first in which every
  // figure of every level fits its column, bold, then the body's regular
  // weight, then the small font. A figure too wide even then reaches into
  // its neighbour's room rather than being cut. Known for sure at the end.
  void CheckFits(const std::vector<SummaryRow>& rows) {
    for (const SummaryRow& row : rows) {
      for (std::size_t c = 0; c < row.figures.size(); ++c) {
        const double available = columns_[c].width - 2 * kPadding;
        if (row.figures[c].isEmpty()) continue;
        fits_[0] = fits_[0] && summary_.Fits(row.figures[c], available);
        fits_[1] = fits_[1] && body_.Fits(row.figures[c], available);
      }
    }
  }
  const Metrics* FiguresFont() const {
    return fits_[0] ? &summary_ : fits_[1] ? &body_ : &summary_small_;
  }
  FontRole FiguresRole() const {
    return fits_[0]   ? FontRole::kSummary
           : fits_[1] ? FontRole::kBody
                      : FontRole::kSummarySmall;
  }

  // Totals, averages and the line count of a group or of the report. The
  // report's own stand apart from its last group's: a line's room above
  // them and a double rule.
  void Summary(const Aggregate& totals, bool grand) {
    const std::vector<SummaryRow> rows = SummaryRows(totals, grand);
    if (rows.empty()) return;
    CheckFits(rows);
    const bool apart = grand && def_.grouped;
    const double rule = apart ? body_.spacing + 90 : 60;
    const double height = rule + rows.size() * summary_.spacing;
    if (y_ + height > bottom_) NewPage();
    if (apart) y_ += body_.spacing;
    y_ += 30;
    Line(kMargin, y_, right_, y_, 10);
    if (apart) {
      y_ += 30;
      Line(kMargin, y_, right_, y_, 10);
    }
    y_ += 30;
    for (const SummaryRow& row : rows) {
      Text(kMargin + kPadding, y_ + summary_.ascent, FontRole::kSummary, row.label);
      for (std::size_t c = 0; c < row.figures.size(); ++c) {
        if (row.figures[c].isEmpty()) continue;
        // The first column carries the label, so its figure sits right.
        ColumnBox box = columns_[c];
        if (c == 0) box.align = Align::kRight;
        // Its baseline is the label's in any font; only its left end waits.
        figures_.back().push_back(
            {box, static_cast<float>(y_ + summary_.ascent), row.figures[c]});
      }
      y_ += summary_.spacing;
    }
    y_ += body_.spacing / 2;
  }

  // The totals or the averages of the columns that have them, as printed;
  // empty texts for the other columns.
  std::vector<QString> Figures(const Aggregate& totals, bool averages) const {
    std::vector<QString> figures(columns_.size());
    for (std::size_t c = 0; c < columns_.size(); ++c) {
      const ColumnBox& column = columns_[c];
      if (!(averages ? column.average : column.total) || c >= totals.sum.size()) continue;
      const double sum = static_cast<double>(totals.sum[c]);
      if (!averages) {
        figures[c] = FormatTotal(sum, column.format);
      } else if (totals.count[c] > 0) {
        figures[c] = FormatAverage(sum / static_cast<double>(totals.count[c]), column.format);
      }
    }
    return figures;
  }

  const ReportDefinition& def_;
  StreamingPaginator::PageFunction emit_;
  const ProgressFunction* progress_ = nullptr;
  long long total_rows_ = 0;
  double scale_;
  double font_scale_;
  std::shared_ptr<LayoutFonts> fonts_;
  Metrics title_, header_, column_header_, body_, group_, summary_, summary_small_;
  ReportLayout layout_;  // the frame: no pages
  PageDescription page_;  // being filled
  int pages_ = 0;
  bool ended_ = false;
  std::vector<std::vector<LateFigure>> figures_;  // by page
  bool fits_[2] = {true, true};                   // every figure so far in summary_, body_
  QDateTime run_at_;
  std::vector<ReportData::Variable> variables_;
  QString heading_;  // of the group being laid out
  std::vector<ColumnBox> columns_;
  double right_ = 0;
  double bottom_ = 0;
  double y_ = 0;
  double title_baseline_ = 0;
  int max_lines_ = 1;
  long long rows_done_ = 0;
  int group_column_ = -1;
  QStringList variable_lines_;
};


QFont LayoutFont(FontRole role, double scale) {
  static const std::array<std::pair<double, bool>, kFontRoles> kSizes = {{
      {14, true},    // title
      {7.5, false},  // header
      {8, true},     // column header
      {8, false},    // body
      {9, true},     // group heading
      {8, true},     // summary
      {6.5, false},  // summary, small
  }};
  auto [points, bold] = kSizes[static_cast<std::size_t>(role)];
  if (role != FontRole::kTitle && role != FontRole::kHeader) points *= scale;
  QFont font(QStringLiteral("DejaVu Sans"));
  font.setStyleHint(QFont::SansSerif);
  font.setPixelSize(static_cast<int>(points * kTwipsPerPoint));
  font.setBold(bold);
  // Metrics must not depend on the device's pixel grid.
  font.setHintingPreference(QFont::PreferNoHinting);
  return font;
}

LayoutFonts::LayoutFonts(double scale) {
  for (std::size_t role = 0; role < shapers_.size(); ++role) {
    shapers_[role] = std::make_unique<TextShaper>(LayoutFont(static_cast<FontRole>(role), scale));
  }
}

LayoutFonts::~LayoutFonts() = default;

const TextShaper& LayoutFonts::Of(FontRole role) const {
  return *shapers_[static_cast<std::size_t>(role)];
}

QSizeF PaperTwips(PageSize size) {
  switch (size) {
    case PageSize::kLegal:
      return {12240, 20160};
    case PageSize::kA4:
      return {210.0 / 25.4 * 1440, 297.0 / 25.4 * 1440};
    case PageSize::kLedger:
      return {15840, 24480};
    case PageSize::kLetter:
      break;
  }
  return {12240, 15840};
}

QPageLayout ReportLayout::PageLayout() const {
  QPageSize page;
  switch (size) {
    case PageSize::kLegal:
      page = QPageSize(QPageSize::Legal);
      break;
    case PageSize::kA4:
      page = QPageSize(QPageSize::A4);
      break;
    case PageSize::kLedger:
      page = QPageSize(QPageSize::Tabloid);  // 11 x 17 in, portrait
      break;
    case PageSize::kLetter:
      page = QPageSize(QPageSize::Letter);
      break;
  }
  return QPageLayout(
      page,
      orientation == PageOrientation::kLandscape ? QPageLayout::Landscape : QPageLayout::Portrait,
      QMarginsF(0, 0, 0, 0));
}

StreamingPaginator::StreamingPaginator(const ReportDefinition& def, PageFunction page)
    : impl_(std::make_unique<Paginator>(def, std::move(page))) {}
StreamingPaginator::~StreamingPaginator() = default;
const ReportLayout& StreamingPaginator::Frame() const { return impl_->Frame(); }
int StreamingPaginator::PageCount() const { return impl_->PageCount(); }
std::vector<PageText> StreamingPaginator::ClosingTexts(int page) const {
  return impl_->ClosingTexts(page);
}
void StreamingPaginator::Begin(const ReportData& header) { impl_->Begin(header); }
void StreamingPaginator::BeginGroup(const ReportGroup& group) { impl_->BeginGroup(group); }
void StreamingPaginator::Row(const QString* cells) { impl_->Row(cells); }
void StreamingPaginator::EndGroup(const ReportGroup& group) { impl_->EndGroup(group); }
void StreamingPaginator::End(const ReportData& summary) { impl_->End(summary); }

ReportLayout Paginate(const ReportDefinition& def, const ReportData& data,
                      const ProgressFunction& progress) {
  std::vector<PageDescription> pages;
  Paginator paginator(def, [&pages](PageDescription page) { pages.push_back(std::move(page)); });
  paginator.SetProgress(&progress, data.RowCount());
  paginator.Begin(data);
  const std::size_t width = def.columns.size();
  for (const ReportGroup& group : data.groups) {
    paginator.BeginGroup(group);
    const std::size_t rows = width == 0 ? 0 : group.cells.size() / width;
    for (std::size_t r = 0; r < rows; ++r) paginator.Row(&group.cells[r * width]);
    paginator.EndGroup(group);
  }
  paginator.End(data);
  ReportLayout layout = paginator.Frame();
  layout.pages = std::move(pages);
  // Held whole, the pages are final: their closing texts join the others.
  for (std::size_t p = 0; p < layout.pages.size(); ++p) {
    std::vector<PageText>& texts = layout.pages[p].texts;
    std::vector<PageText> closing = paginator.ClosingTexts(static_cast<int>(p));
    texts.insert(texts.end(), std::make_move_iterator(closing.begin()),
                 std::make_move_iterator(closing.end()));
    layout.pages[p].closing.clear();
  }
  return layout;
}

}  // namespace cvve::reportengine
