#include "reportengine/text_shaper.h"

#include <QVarLengthArray>

namespace cvve::reportengine {

namespace {
constexpr char16_t kEllipsis = 0x2026;
}

TextShaper::TextShaper(const QFont& font)
    : font_(font),
      metrics_(font),
      raw_(QRawFont::fromFont(font)),
      ascent_(metrics_.ascent()),
      spacing_(metrics_.lineSpacing()) {
  QString all;
  for (int c = 0; c < 256; ++c) all.append(QChar(static_cast<char16_t>(c)));
  const QList<quint32> indexes =
      raw_.isValid() ? raw_.glyphIndexesForString(all) : QList<quint32>();
  if (indexes.size() == 256) {
    const QList<QPointF> advances = raw_.advancesForGlyphIndexes(indexes);
    for (int c = 0; c < 256; ++c) {
      // Control characters have no glyph of their own: they go the shaped way.
      latin_[static_cast<std::size_t>(c)] = {c < 32 || c == 127 ? 0u : indexes[c], advances[c].x()};
    }
  }
}

const TextShaper::Glyph& TextShaper::OtherGlyph(char16_t c) const {
  const auto found = other_.find(c);
  if (found != other_.end()) return found->second;
  Glyph glyph;
  if (raw_.isValid() && !QChar::isSurrogate(c)) {
    const QList<quint32> indexes = raw_.glyphIndexesForString(QString(QChar(c)));
    if (indexes.size() == 1 && indexes[0] != 0) {
      glyph.index = indexes[0];
      glyph.advance = raw_.advancesForGlyphIndexes(indexes).value(0).x();
    }
  }
  return other_.emplace(c, glyph).first->second;
}

bool TextShaper::Simple(const QString& text) const {
  for (QChar c : text) {
    if (GlyphOf(c.unicode()).index == 0) return false;
  }
  return true;
}

double TextShaper::Width(const QString& text) const {
  double width = 0;
  for (QChar c : text) {
    const Glyph& glyph = GlyphOf(c.unicode());
    if (glyph.index == 0) return metrics_.horizontalAdvance(text);
    width += glyph.advance;
  }
  return width;
}

qsizetype TextShaper::FittingPrefix(const QString& text, double available) const {
  if (!Simple(text)) return -1;
  // Summed from the left as Width sums, so the answer is Width's to the bit.
  double width = 0;
  qsizetype fit = 0;
  for (QChar c : text) {
    width += GlyphOf(c.unicode()).advance;
    if (width > available) break;
    ++fit;
  }
  return fit;
}

QString TextShaper::Elided(const QString& text, double available) const {
  if (!Simple(text) || GlyphOf(kEllipsis).index == 0) {
    return metrics_.elidedText(text, Qt::ElideRight, available);
  }
  double width = 0;
  for (QChar c : text) width += GlyphOf(c.unicode()).advance;
  if (width <= available) return text;
  const double room = available - GlyphOf(kEllipsis).advance;
  width = 0;
  qsizetype keep = 0;
  while (keep < text.size() && width + GlyphOf(text[keep].unicode()).advance <= room) {
    width += GlyphOf(text[keep].unicode()).advance;
    ++keep;
  }
  return room <= 0 ? QString() : text.left(keep) + QChar(kEllipsis);
}

bool TextShaper::Append(const QString& text, const QPointF& origin, QList<quint32>& indexes,
                        QList<QPointF>& positions) const {
  if (!Simple(text)) return false;
  double x = origin.x();
  for (QChar c : text) {
    const Glyph& glyph = GlyphOf(c.unicode());
    if (c != QLatin1Char(' ')) {  // a blank needs no glyph of its own
      indexes.append(glyph.index);
      positions.append(QPointF(x, origin.y()));
    }
    x += glyph.advance;
  }
  return true;
}

void TextShaper::Draw(QPainter& painter, const QPointF& origin, const QString& text) const {
  if (text.isEmpty()) return;
  QList<quint32> indexes;
  QList<QPointF> positions;
  if (!Append(text, QPointF(0, 0), indexes, positions)) {
    painter.setFont(font_);
    painter.drawText(origin, text);
    return;
  }
  if (indexes.isEmpty()) return;
  QGlyphRun run;
  run.setRawFont(raw_);
  run.setGlyphIndexes(indexes);
  run.setPositions(positions);
  painter.drawGlyphRun(origin, run);
}

}  // namespace cvve::reportengine
