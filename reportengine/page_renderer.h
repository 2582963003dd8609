#pragma once
// Drawing laid-out pages with QPainter: into a PDF file, onto a printer and
// into images for the viewer. All three draw the same page descriptions.
#include <QImage>
#include <QPainter>
#include <QString>
#include <string>
#include <vector>

#include "reportengine/paginator.h"

class QPrinter;

namespace cvve::reportengine {

// Maps the painter's coordinates to the page's twips on `target` (device
// pixels) and draws page `index`.
void RenderPage(QPainter& painter, const ReportLayout& layout, int index, const QRect& target);

// The same for a page given apart from the layout (a page of a report still
// being laid out); `frame` gives the paper and the fonts.
void RenderPage(QPainter& painter, const ReportLayout& frame, const PageDescription& page,
                const QRect& target);

// Page `index` as an image at `dpi` dots per inch, on white.
QImage RenderPageImage(const ReportLayout& layout, int index, double dpi);
QImage RenderPageImage(const ReportLayout& frame, const PageDescription& page, double dpi);

// Throws cvve::Error when the file cannot be written, Cancelled when the
// progress function says so (the partial file is removed then).
void WritePdf(const ReportLayout& layout, const QString& path,
              const ProgressFunction& progress = {});

// What WriteReportPdf ran and wrote.
struct WrittenReport {
  long long rows = 0;
  int pages = 0;
  std::vector<std::string> warnings;
};

// Runs the report and writes its pages to PDF as they are laid out, holding
// neither the rows nor the pages; the file appears at `path` only when it is
// complete. A report whose texts need Qt's writer is run a second time,
// held whole. Throws what RunReport throws, and cvve::Error when the file
// cannot be written.
WrittenReport WriteReportPdf(const ReportDefinition& def, GuardedConnection& db,
                             const RunSettings& settings, const QString& path);

// Prints pages first..last (1-based, inclusive; 0 and 0: all) on a printer
// that is set up already. Throws cvve::Error when the printer fails.
void PrintLayout(const ReportLayout& layout, QPrinter& printer, int first = 0, int last = 0,
                 const ProgressFunction& progress = {});

}  // namespace cvve::reportengine
