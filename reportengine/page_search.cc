#include "reportengine/page_search.h"

namespace cvve::reportengine {

int FindPageWithText(const ReportLayout& layout, const QString& needle, int from) {
  const int count = static_cast<int>(layout.pages.size());
  if (needle.isEmpty() || count == 0) return -1;
  from = ((from % count) + count) % count;
  for (int step = 0; step < count; ++step) {
    const int page = (from + step) % count;
    const PageDescription& shown = layout.pages[static_cast<std::size_t>(page)];
    for (const auto* texts : {&shown.texts, &shown.closing}) {
      for (const PageText& text : *texts) {
        if (text.text.contains(needle, Qt::CaseInsensitive)) return page;
      }
    }
  }
  return -1;
}

}  // namespace cvve::reportengine
