#pragma once
// One TrueType font embedded in a PDF as a subset: the glyphs a report used,
// their widths, and the map back to characters that text extraction and
// searching need. The font's tables come from Qt's own font, so the PDF
// shows exactly the glyphs the layout measured.
#include <QRawFont>
#include <QString>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "reportengine/pdf/pdf_objects.h"

namespace cvve::reportengine::pdf {

class EmbeddedFont {
 public:
  // Null when the font cannot be embedded this way (no TrueType outlines).
  static std::unique_ptr<EmbeddedFont> FromRawFont(const QRawFont& font);
  ~EmbeddedFont();

  // The glyph's advance in thousandths of the font size; records the glyph
  // as used, drawn for `character`.
  int Use(std::uint16_t glyph, char16_t character) {
    return glyph < widths_.size() && widths_[glyph] >= 0 ? widths_[glyph] : FirstUse(glyph, character);
  }

  // Writes the font's objects; `number` is the reserved number of its
  // top-level (Type0) font object.
  void Write(ObjectWriter& out, int number) const;

 private:
  struct Face;
  explicit EmbeddedFont(std::unique_ptr<Face> face);
  int FirstUse(std::uint16_t glyph, char16_t character);
  std::string SubsetTag() const;
  std::string ToUnicodeMap() const;
  std::string Widths() const;

  std::unique_ptr<Face> face_;
  std::vector<int> widths_;        // by glyph; -1: not looked up yet
  std::map<std::uint16_t, char16_t> used_;  // glyph -> the character drawn with it
};

}  // namespace cvve::reportengine::pdf
