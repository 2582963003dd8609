#include "reportengine/page_renderer.h"

#include <QSaveFile>
#include <QPdfWriter>
#include <QPrinter>
#include <array>
#include <cmath>

#include "base/error.h"
#include "reportengine/pdf/report_pdf.h"
#include "reportengine/text_shaper.h"

namespace cvve::reportengine {

void RenderPage(QPainter& painter, const ReportLayout& layout, int index, const QRect& target) {
  if (index < 0 || index >= static_cast<int>(layout.pages.size())) return;
  std::shared_ptr<const LayoutFonts> fonts = layout.fonts;
  if (!fonts) fonts = std::make_shared<LayoutFonts>(layout.font_scale);
  const PageDescription& page = layout.pages[static_cast<std::size_t>(index)];
  painter.save();
  painter.translate(target.topLeft());
  painter.scale(target.width() / layout.width, target.height() / layout.height);
  painter.setPen(Qt::black);
  for (const PageLine& line : page.lines) {
    painter.setPen(QPen(Qt::black, line.width));
    painter.drawLine(QPointF(line.x1, line.y1), QPointF(line.x2, line.y2));
  }
  painter.setPen(Qt::black);
  // One glyph run per font and page: a PDF then holds one text object per
  // font instead of one per cell, which is what makes long reports fast.
  std::array<QList<quint32>, kFontRoles> indexes;
  std::array<QList<QPointF>, kFontRoles> positions;
  for (const PageText& text : page.texts) {
    const auto role = static_cast<std::size_t>(text.font);
    const TextShaper& shaper = fonts->Of(text.font);
    if (!shaper.Append(text.text, QPointF(text.x, text.y), indexes[role], positions[role])) {
      shaper.Draw(painter, QPointF(text.x, text.y), text.text);
    }
  }
  for (std::size_t role = 0; role < indexes.size(); ++role) {
    if (indexes[role].isEmpty()) continue;
    QGlyphRun run;
    run.setRawFont(fonts->Of(static_cast<FontRole>(role)).RawFont());
    run.setGlyphIndexes(indexes[role]);
    run.setPositions(positions[role]);
    painter.drawGlyphRun(QPointF(0, 0), run);
  }
  painter.restore();
}

QImage RenderPageImage(const ReportLayout& layout, int index, double dpi) {
  const QSize size(static_cast<int>(std::lround(layout.width / 1440.0 * dpi)),
                   static_cast<int>(std::lround(layout.height / 1440.0 * dpi)));
  QImage image(size, QImage::Format_RGB32);
  image.setDotsPerMeterX(static_cast<int>(std::lround(dpi / 0.0254)));
  image.setDotsPerMeterY(static_cast<int>(std::lround(dpi / 0.0254)));
  image.fill(Qt::white);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::TextAntialiasing);
  RenderPage(painter, layout, index, QRect(QPoint(0, 0), size));
  return image;
}

namespace {

// Qt's own writer, for pages whose texts need shaping.
void WriteQtPdf(const ReportLayout& layout, QIODevice& out, const ProgressFunction& progress) {
  const int count = static_cast<int>(layout.pages.size());
  QPdfWriter writer(&out);
  writer.setPageLayout(layout.PageLayout());
  writer.setTitle(layout.title);
  writer.setCreator(QStringLiteral("cvViewEdit report engine"));
  QPainter painter;
  if (!painter.begin(&writer)) throw Error("cannot start the PDF");
  const QRect target(0, 0, writer.width(), writer.height());
  for (int i = 0; i < count; ++i) {
    if (progress && !progress(QStringLiteral("Writing PDF"), i, count)) throw Cancelled();
    if (i > 0) writer.newPage();
    RenderPage(painter, layout, i, target);
  }
  if (!painter.end()) throw Error("cannot finish the PDF");
}

}  // namespace

void WritePdf(const ReportLayout& layout, const QString& path, const ProgressFunction& progress) {
  // Written beside the target and renamed at the end: a failed or cancelled
  // run leaves the old file (or none), never half a PDF.
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly)) {
    throw Error("cannot write " + path.toStdString() + ": " + file.errorString().toStdString());
  }
  if (!pdf::WriteLayoutPdf(layout, file, progress)) WriteQtPdf(layout, file, progress);
  if (!file.commit()) {
    throw Error("cannot write " + path.toStdString() + ": " + file.errorString().toStdString());
  }
}

void PrintLayout(const ReportLayout& layout, QPrinter& printer, int first, int last,
                 const ProgressFunction& progress) {
  const int count = static_cast<int>(layout.pages.size());
  if (first <= 0) first = 1;
  if (last <= 0 || last > count) last = count;
  printer.setPageLayout(layout.PageLayout());
  printer.setFullPage(true);
  printer.setDocName(layout.title);
  QPainter painter;
  if (!painter.begin(&printer)) throw Error("the printer cannot be used");
  const QRect target(0, 0, printer.width(), printer.height());
  for (int page = first; page <= last; ++page) {
    if (progress && !progress(QStringLiteral("Printing"), page - first, last - first + 1)) {
      printer.abort();
      throw Cancelled();
    }
    if (page > first) printer.newPage();
    RenderPage(painter, layout, page - 1, target);
  }
  painter.end();
}

}  // namespace cvve::reportengine
