#pragma once
// The one layout pass of a report: its rows placed on pages. The pages are
// plain descriptions (texts at positions, lines) in twips, drawn alike on a
// PDF, a printer and the viewer's images.
#include <QFont>
#include <QPageLayout>
#include <QString>
#include <array>
#include <functional>
#include <cstdint>
#include <memory>
#include <vector>

#include "reportengine/language/report_definition.h"
#include "reportengine/report_runner.h"

namespace cvve::reportengine {

// kSummarySmall: the figures of a report's totals and averages when one of
// them, at any level, is too wide for its column in kSummary and in kBody.
enum class FontRole : std::uint8_t {
  kTitle,
  kHeader,
  kColumnHeader,
  kBody,
  kGroupHeading,
  kSummary,
  kSummarySmall
};
inline constexpr std::size_t kFontRoles = 7;

struct PageText {
  float x;  // left end, twips from the page's left edge
  float y;  // baseline, twips from the page's top edge
  FontRole font;
  QString text;
};

struct PageLine {
  float x1, y1, x2, y2;
  float width;  // twips
};

struct PageDescription {
  std::vector<PageText> texts;
  std::vector<PageLine> lines;
  // What only the end of the run decides, drawn after `texts`: "Page N of
  // M" and the figures of the page's totals and averages (their font is the
  // one in which every summary of the report fits). While a report is still
  // being laid out they hold the best guess so far ("Page N").
  std::vector<PageText> closing;
};

class TextShaper;

// The six fonts of a layout, with their measuring and drawing.
class LayoutFonts {
 public:
  explicit LayoutFonts(double scale);
  ~LayoutFonts();
  const TextShaper& Of(FontRole role) const;

 private:
  std::array<std::unique_ptr<TextShaper>, kFontRoles> shapers_;
};

struct ReportLayout {
  PageSize size = PageSize::kLetter;
  PageOrientation orientation = PageOrientation::kPortrait;
  double width = 0;  // twips, as oriented
  double height = 0;
  std::vector<PageDescription> pages;  // never empty
  long long rows = 0;
  QString title;
  // Table fonts shrink with the columns when these are wider than the paper.
  double font_scale = 1.0;
  std::shared_ptr<const LayoutFonts> fonts;  // as measured; the renderers draw with them

  // The paper and orientation for a PDF writer or a printer, without margins
  // (the layout has its own).
  QPageLayout PageLayout() const;
};

// The fonts of the layout, sized in twips (as pixel sizes), so that text is
// measured and drawn in the layout's own units on every device. `scale`
// applies to the table's fonts (not to the title and the page header).
QFont LayoutFont(FontRole role, double scale = 1.0);

// Page size in twips, portrait: Letter 8.5x11 in, Legal 8.5x14 in, A4
// 210x297 mm, Ledger 11x17 in.
QSizeF PaperTwips(PageSize size);

class Paginator;

// The layout pass fed row by row while a report runs: each page is handed on
// as soon as it is full, and only the page being filled is kept.
class StreamingPaginator : public RowSink {
 public:
  using PageFunction = std::function<void(PageDescription page)>;
  // `page` receives the pages in order; it may throw (Cancelled) to stop.
  StreamingPaginator(const ReportDefinition& def, PageFunction page);
  ~StreamingPaginator() override;

  // The layout without its pages: paper, fonts, title (`rows` after End).
  const ReportLayout& Frame() const;
  // After End: how many pages, and a page's final closing texts.
  int PageCount() const;
  std::vector<PageText> ClosingTexts(int page) const;

  void Begin(const ReportData& header) override;
  void BeginGroup(const ReportGroup& group) override;
  void Row(const QString* cells) override;
  void EndGroup(const ReportGroup& group) override;
  void End(const ReportData& summary) override;

 private:
  std::unique_ptr<Paginator> impl_;
};

// Throws Cancelled when the progress function says so.
ReportLayout Paginate(const ReportDefinition& def, const ReportData& data,
                      const ProgressFunction& progress = {});

}  // namespace cvve::reportengine
