#pragma once
// A report's pages written straight to PDF: one text operator per row of
// cells rather than per glyph, fonts embedded as subsets, page streams
// compressed in parallel. Long reports are dominated by this step, and this
// writer makes them several times faster than drawing them through QPainter.
#include <QIODevice>

#include "reportengine/paginator.h"

namespace cvve::reportengine::pdf {

// False, with nothing written, when some text needs shaping or a font cannot
// be embedded: then the caller draws the pages through Qt's PDF writer.
// Throws Cancelled when the progress function says so, cvve::Error when
// writing fails.
bool WriteLayoutPdf(const ReportLayout& layout, QIODevice& out, const ProgressFunction& progress);

}  // namespace cvve::reportengine::pdf
