#pragma once
// One TrueType font embedded in a PDF as a subset: the glyphs a report used,
// the codes the content streams draw them with (their CIDs, one byte for
// most), their widths, and the map back to characters that text extraction
// and searching need. The font's tables come from Qt's own font, so the PDF
// shows exactly the glyphs the layout measured.
#include <QRawFont>
#include <QString>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
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

  // The glyph's code in the content streams, given on first use: one byte
  // for the first glyphs a report uses (most reports use fewer than a
  // hundred), two bytes (0x80 and up first) after them. Codes never hold a
  // byte that needs escaping in a string. Nothing when the codes ran out.
  struct Code {
    char bytes[2] = {};
    std::uint8_t size = 0;
  };
  std::optional<Code> CodeOf(std::uint16_t glyph);

  // Writes the font's objects; `number` is the reserved number of its
  // top-level (Type0) font object.
  void Write(ObjectWriter& out, int number) const;

 private:
  struct Face;
  explicit EmbeddedFont(std::unique_ptr<Face> face);
  int FirstUse(std::uint16_t glyph, char16_t character);
  std::string SubsetTag() const;
  std::string ToUnicodeMap() const;
  std::string EncodingMap(const std::string& name) const;
  std::string CidToGid() const;
  std::string Widths() const;

  std::unique_ptr<Face> face_;
  std::vector<int> widths_;        // by glyph; -1: not looked up yet
  std::map<std::uint16_t, char16_t> used_;  // glyph -> the character drawn with it
  std::vector<std::int32_t> codes_;         // by glyph; -1: none given yet
  std::vector<std::pair<std::uint16_t, std::uint16_t>> coded_;  // code, glyph; in order given
  std::uint32_t next_short_ = 0;            // the next one-byte code to try
  std::uint32_t next_long_ = 0x8000;        // the next two-byte code to try
};

}  // namespace cvve::reportengine::pdf
