#pragma once
// Measuring and drawing the report's many short texts without full text
// shaping: glyphs and advances come straight from the font's tables (cached
// per character), which is several times faster than QPainter::drawText and
// QFontMetricsF for the hundreds of thousands of cells of a long report.
// Texts with characters the font lacks take the ordinary, shaped way.
#include <QFont>
#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPainter>
#include <QRawFont>
#include <QString>
#include <array>
#include <unordered_map>

namespace cvve::reportengine {

class TextShaper {
 public:
  explicit TextShaper(const QFont& font);

  const QFont& Font() const { return font_; }
  double Ascent() const { return ascent_; }
  double LineSpacing() const { return spacing_; }

  double Width(const QString& text) const;
  // How many leading characters of the text fit in `available` (0 to its
  // length), measured in one pass; -1 when the text needs shaping.
  qsizetype FittingPrefix(const QString& text, double available) const;
  // The text cut to `available` with "…" at the end; the text itself when it fits.
  QString Elided(const QString& text, double available) const;
  // Draws the text with its baseline's left end at `origin`.
  void Draw(QPainter& painter, const QPointF& origin, const QString& text) const;
  // Adds the text's glyphs at `origin` to a run being collected, so that
  // many texts are drawn with one call; false (nothing added) when the text
  // needs shaping and must be drawn on its own.
  bool Append(const QString& text, const QPointF& origin, QList<quint32>& indexes,
              QList<QPointF>& positions) const;
  const QRawFont& RawFont() const { return raw_; }
  // The character's glyph in the font; 0 when the text must take the shaped way.
  quint32 GlyphIndex(char16_t c) const { return GlyphOf(c).index; }

 private:
  struct Glyph {
    quint32 index = 0;  // 0: the font has no glyph for the character
    double advance = 0;
  };
  const Glyph& GlyphOf(char16_t c) const { return c < 256 ? latin_[c] : OtherGlyph(c); }
  const Glyph& OtherGlyph(char16_t c) const;
  // False when some character has no glyph (or is outside the basic plane).
  bool Simple(const QString& text) const;

  QFont font_;
  QFontMetricsF metrics_;
  QRawFont raw_;
  double ascent_;
  double spacing_;
  mutable std::array<Glyph, 256> latin_{};
  mutable std::unordered_map<char16_t, Glyph> other_;
};

}  // namespace cvve::reportengine
