#include "reportengine/page_renderer.h"

#include <QSaveFile>
#include <QPdfWriter>
#include <QPrinter>
#include <array>
#include <memory>
#include <cmath>

#include "base/error.h"
#include "reportengine/pdf/report_pdf.h"
#include "reportengine/text_shaper.h"

namespace cvve::reportengine {

void RenderPage(QPainter& painter, const ReportLayout& layout, int index, const QRect& target) {
  if (index < 0 || index >= static_cast<int>(layout.pages.size())) return;
  RenderPage(painter, layout, layout.pages[static_cast<std::size_t>(index)], target);
}

void RenderPage(QPainter& painter, const ReportLayout& layout, const PageDescription& page,
                const QRect& target) {
  std::shared_ptr<const LayoutFonts> fonts = layout.fonts;
  if (!fonts) fonts = std::make_shared<LayoutFonts>(layout.font_scale);
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
  for (const auto* texts : {&page.texts, &page.closing}) {
    for (const PageText& text : *texts) {
      const auto role = static_cast<std::size_t>(text.font);
      const TextShaper& shaper = fonts->Of(text.font);
      if (!shaper.Append(text.text, QPointF(text.x, text.y), indexes[role], positions[role])) {
        shaper.Draw(painter, QPointF(text.x, text.y), text.text);
      }
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
  if (index < 0 || index >= static_cast<int>(layout.pages.size())) {
    return RenderPageImage(layout, PageDescription(), dpi);
  }
  return RenderPageImage(layout, layout.pages[static_cast<std::size_t>(index)], dpi);
}

QImage RenderPageImage(const ReportLayout& layout, const PageDescription& page, double dpi) {
  const QSize size(static_cast<int>(std::lround(layout.width / 1440.0 * dpi)),
                   static_cast<int>(std::lround(layout.height / 1440.0 * dpi)));
  QImage image(size, QImage::Format_RGB32);
  image.setDotsPerMeterX(static_cast<int>(std::lround(dpi / 0.0254)));
  image.setDotsPerMeterY(static_cast<int>(std::lround(dpi / 0.0254)));
  image.fill(Qt::white);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::TextAntialiasing);
  RenderPage(painter, layout, page, QRect(QPoint(0, 0), size));
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

// Written beside the target and renamed at the end: a failed or cancelled
// run leaves the old file (or none), never half a PDF.
std::unique_ptr<QSaveFile> OpenTarget(const QString& path) {
  auto file = std::make_unique<QSaveFile>(path);
  if (!file->open(QIODevice::WriteOnly)) {
    throw Error("cannot write " + path.toStdString() + ": " + file->errorString().toStdString());
  }
  return file;
}

void Commit(QSaveFile& file, const QString& path) {
  if (!file.commit()) {
    throw Error("cannot write " + path.toStdString() + ": " + file.errorString().toStdString());
  }
}

// Thrown out of the layout pass when a page needs Qt's writer.
struct NeedsQtWriter {};

}  // namespace

void WritePdf(const ReportLayout& layout, const QString& path, const ProgressFunction& progress) {
  std::unique_ptr<QSaveFile> file = OpenTarget(path);
  if (!pdf::WriteLayoutPdf(layout, *file, progress)) WriteQtPdf(layout, *file, progress);
  Commit(*file, path);
}

WrittenReport WriteReportPdf(const ReportDefinition& def, GuardedConnection& db,
                             const RunSettings& settings, const QString& path) {
  std::unique_ptr<QSaveFile> file = OpenTarget(path);
  std::unique_ptr<pdf::StreamWriter> writer;
  StreamingPaginator paginator(def, [&writer](PageDescription page) {
    if (!writer->Add(page)) throw NeedsQtWriter();
  });
  writer = std::make_unique<pdf::StreamWriter>(paginator.Frame(), *file);
  RowCollector summary(def.columns.size(), false);
  RowTee sink{&paginator, &summary};
  WrittenReport written;
  try {
    StreamReport(def, db, settings, sink);
    if (!writer->Finish([&paginator](int page) { return paginator.ClosingTexts(page); })) {
      throw NeedsQtWriter();
    }
    writer.reset();
    Commit(*file, path);
    written.rows = summary.Data().RowCount();
    written.pages = paginator.PageCount();
    written.warnings = summary.Data().warnings;
  } catch (const NeedsQtWriter&) {
    writer.reset();
    file->cancelWriting();
    file.reset();
    const ReportData data = RunReport(def, db, settings);
    const ReportLayout layout = Paginate(def, data, settings.progress);
    WritePdf(layout, path, settings.progress);
    written.rows = data.RowCount();
    written.pages = static_cast<int>(layout.pages.size());
    written.warnings = data.warnings;
  }
  return written;
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
