#pragma once
// A report's pages written straight to PDF: one text operator per row of
// cells rather than per glyph, fonts embedded as subsets, page streams
// compressed in parallel. Long reports are dominated by this step, and this
// writer makes them several times faster than drawing them through QPainter.
#include <QIODevice>
#include <functional>
#include <memory>
#include <vector>

#include "reportengine/paginator.h"

namespace cvve::reportengine::pdf {

// Writes a report's pages to PDF as they are laid out: each page's content
// is compressed (a batch at a time, on the other cores) and written when it
// comes, so that no page is held. What only the end of the run decides ("Page
// N of M", the font of the summaries' figures) is each page's second content
// stream, a small one written by Finish; so is the page tree.
class StreamWriter {
 public:
  // `frame`: the layout's paper, fonts and title (its pages are not used).
  StreamWriter(const ReportLayout& frame, QIODevice& out);
  ~StreamWriter();
  StreamWriter(const StreamWriter&) = delete;
  StreamWriter& operator=(const StreamWriter&) = delete;

  // False when the page needs Qt's writer; then the file cannot be finished.
  bool Add(const PageDescription& page);
  // Whether Add would take the page (nothing is written).
  bool Writable(const PageDescription& page);
  int Pages() const;
  // `closing(p)`: page p's closing texts, final. Throws cvve::Error when
  // writing fails.
  bool Finish(const std::function<std::vector<PageText>(int)>& closing);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// False, with nothing written, when some text needs shaping or a font cannot
// be embedded: then the caller draws the pages through Qt's PDF writer.
// Throws Cancelled when the progress function says so, cvve::Error when
// writing fails.
bool WriteLayoutPdf(const ReportLayout& layout, QIODevice& out, const ProgressFunction& progress);

}  // namespace cvve::reportengine::pdf
