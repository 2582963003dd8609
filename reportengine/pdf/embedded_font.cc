#include "reportengine/pdf/embedded_font.h"

#include <hb-ot.h>
#include <hb-subset.h>
#include <hb.h>

#include <QByteArray>
#include <array>
#include <cmath>
#include <cstdio>

#include "base/error.h"

namespace cvve::reportengine::pdf {

namespace {

// The tables a TrueType font needs to draw and to be subset; the layout
// tables (GSUB, GPOS, kern) are left out: the report never shapes. So is
// the character map: a CID font's codes reach its glyphs through the
// CIDToGIDMap, never through the font's own map, and subsetting DejaVu Sans
// without it costs a third as much.
constexpr std::array<const char*, 10> kTables = {"head", "hhea", "hmtx", "maxp", "loca",
                                                  "glyf", "post", "name", "OS/2", "cvt "};

hb_tag_t Tag(const char* name) { return hb_tag_from_string(name, 4); }

// Keeps a PDF name to the characters every reader takes without escapes.
std::string NameCharacters(const std::string& text) {
  std::string out;
  for (char c : text) {
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
        c == '_') {
      out += c;
    }
  }
  return out.empty() ? std::string("Font") : out;
}

int BigEndian16(const char* data) {
  return static_cast<std::int16_t>((static_cast<unsigned char>(data[0]) << 8) |
                                   static_cast<unsigned char>(data[1]));
}

}  // namespace

struct EmbeddedFont::Face {
  hb_face_t* face = nullptr;
  hb_font_t* font = nullptr;
  int upem = 1000;
  std::string name;
  std::array<int, 4> box{};  // font units
  ~Face() {
    hb_font_destroy(font);
    hb_face_destroy(face);
  }
};

std::unique_ptr<EmbeddedFont> EmbeddedFont::FromRawFont(const QRawFont& raw) {
  if (!raw.isValid() || raw.fontTable("glyf").isEmpty()) return nullptr;
  // Each table stays in the one copy Qt made of it until the file is made.
  hb_face_t* builder = hb_face_builder_create();
  for (const char* name : kTables) {
    auto* table = new QByteArray(raw.fontTable(name));
    if (table->isEmpty()) {
      delete table;
      continue;
    }
    hb_blob_t* blob = hb_blob_create(
        table->constData(), static_cast<unsigned>(table->size()), HB_MEMORY_MODE_READONLY, table,
        [](void* data) { delete static_cast<QByteArray*>(data); });
    hb_face_builder_add_table(builder, Tag(name), blob);
    hb_blob_destroy(blob);
  }
  // The subsetter walks a face's tables, which only a face read from a
  // file lists.
  hb_blob_t* file = hb_face_reference_blob(builder);
  hb_face_destroy(builder);
  auto face = std::make_unique<Face>();
  face->face = hb_face_create(file, 0);
  hb_blob_destroy(file);
  face->font = hb_font_create(face->face);
  face->upem = static_cast<int>(hb_face_get_upem(face->face));

  char name[128];
  unsigned length = sizeof name;
  if (hb_ot_name_get_utf8(face->face, HB_OT_NAME_ID_POSTSCRIPT_NAME, HB_LANGUAGE_INVALID, &length,
                          name) > 0) {
    face->name = NameCharacters(name);
  } else {
    face->name = NameCharacters((raw.familyName() + raw.styleName()).toStdString());
  }
  const QByteArray head = raw.fontTable("head");
  if (head.size() >= 44) {
    for (int i = 0; i < 4; ++i) face->box[static_cast<std::size_t>(i)] = BigEndian16(head.constData() + 36 + 2 * i);
  }
  return std::unique_ptr<EmbeddedFont>(new EmbeddedFont(std::move(face)));
}

EmbeddedFont::EmbeddedFont(std::unique_ptr<Face> face) : face_(std::move(face)) {
  widths_.assign(hb_face_get_glyph_count(face_->face), -1);
  codes_.assign(widths_.size(), -1);
}

namespace {

// Bytes a content string would have to escape: ( ) \ and a carriage return.
bool NeedsEscape(std::uint32_t byte) {
  return byte == '(' || byte == ')' || byte == '\\' || byte == '\r';
}

// Code 0 would be CID 0, which readers take for the missing glyph.
bool Unusable(std::uint32_t code) { return code == 0 || NeedsEscape(code & 0xFF); }

}  // namespace

std::optional<EmbeddedFont::Code> EmbeddedFont::CodeOf(std::uint16_t glyph) {
  if (glyph >= codes_.size()) return std::nullopt;
  std::int32_t& code = codes_[glyph];
  if (code < 0) {
    while (next_short_ < 0x80 && Unusable(next_short_)) ++next_short_;
    while (next_short_ >= 0x80 && next_long_ <= 0xFFFF && Unusable(next_long_)) {
      ++next_long_;
    }
    if (next_short_ < 0x80) {
      code = static_cast<std::int32_t>(next_short_++);
    } else if (next_long_ <= 0xFFFF) {
      code = static_cast<std::int32_t>(next_long_++);
    } else {
      return std::nullopt;
    }
    coded_.emplace_back(static_cast<std::uint16_t>(code), glyph);
  }
  Code out;
  if (code < 0x80) {
    out.bytes[0] = static_cast<char>(code);
    out.size = 1;
  } else {
    out.bytes[0] = static_cast<char>(code >> 8);
    out.bytes[1] = static_cast<char>(code & 0xFF);
    out.size = 2;
  }
  return out;
}

EmbeddedFont::~EmbeddedFont() = default;

int EmbeddedFont::FirstUse(std::uint16_t glyph, char16_t character) {
  if (glyph >= widths_.size()) return 0;
  int& width = widths_[glyph];
  if (width < 0) {
    const hb_position_t advance = hb_font_get_glyph_h_advance(face_->font, glyph);
    width = static_cast<int>(std::lround(advance * 1000.0 / face_->upem));
    used_.emplace(glyph, character);
  }
  return width;
}

std::string EmbeddedFont::SubsetTag() const {
  // Six capitals from the glyph set: the same subset gets the same tag.
  std::uint32_t hash = 2166136261u;
  for (const auto& [glyph, character] : used_) hash = (hash ^ glyph) * 16777619u;
  std::string tag;
  for (int i = 0; i < 6; ++i) {
    tag += static_cast<char>('A' + hash % 26);
    hash /= 26;
  }
  return tag + "+" + face_->name;
}

namespace {

// The codes' two ranges: one byte below 0x80, two bytes from 0x8000.
constexpr const char* kCodeSpace = "2 begincodespacerange\n<00> <7F>\n<8000> <FFFF>\nendcodespacerange\n";

// A code as a CMap writes it, by its length.
std::string HexCode(std::uint16_t code) {
  char text[8];
  std::snprintf(text, sizeof text, code < 0x80 ? "<%02X>" : "<%04X>", static_cast<unsigned>(code));
  return text;
}

// Entries of a CMap in blocks of at most 100 ("N begin<kind> ... end<kind>").
template <class Entries, class Entry>
std::string Blocks(const Entries& entries, const char* kind, Entry&& entry) {
  std::string out;
  auto it = entries.begin();
  while (it != entries.end()) {
    std::string block;
    int count = 0;
    for (; it != entries.end() && count < 100; ++it, ++count) block += entry(*it);
    out += std::to_string(count) + " begin" + kind + "\n" + block + "end" + kind + "\n";
  }
  return out;
}

}  // namespace

std::string EmbeddedFont::ToUnicodeMap() const {
  std::string map =
      "/CIDInit /ProcSet findresource begin\n12 dict begin\nbegincmap\n"
      "/CIDSystemInfo << /Registry (Adobe) /Ordering (UCS) /Supplement 0 >> def\n"
      "/CMapName /Adobe-Identity-UCS def\n/CMapType 2 def\n";
  map += kCodeSpace;
  map += Blocks(coded_, "bfchar", [this](const std::pair<std::uint16_t, std::uint16_t>& coded) {
    char unicode[12];
    std::snprintf(unicode, sizeof unicode, " <%04X>\n",
                  static_cast<unsigned>(used_.at(coded.second)));
    return HexCode(coded.first) + unicode;
  });
  map += "endcmap\nCMapName currentdict /CMap defineresource pop\nend\nend\n";
  return map;
}

// The codes of the content streams are the CIDs; CIDToGIDMap takes them to
// the glyphs. (CIDs that are glyph numbers would fall outside the codes'
// ranges, and some readers then lose the text of those glyphs.)
std::string EmbeddedFont::EncodingMap(const std::string& name) const {
  return "/CIDInit /ProcSet findresource begin\n12 dict begin\nbegincmap\n"
         "/CIDSystemInfo << /Registry (Adobe) /Ordering (Identity) /Supplement 0 >> def\n"
         "/CMapName " + name + " def\n/CMapType 1 def\n" + kCodeSpace +
         "2 begincidrange\n<00> <7F> 0\n<8000> <FFFF> 32768\nendcidrange\n"
         "endcmap\nCMapName currentdict /CMap defineresource pop\nend\nend\n";
}

std::string EmbeddedFont::CidToGid() const {
  std::string map;
  for (const auto& [code, glyph] : coded_) {
    const std::size_t at = std::size_t{code} * 2;
    if (map.size() < at + 2) map.resize(at + 2, '\0');
    map[at] = static_cast<char>(glyph >> 8);
    map[at + 1] = static_cast<char>(glyph & 0xFF);
  }
  return map;
}

std::string EmbeddedFont::Widths() const {
  // By CID (the codes, given in rising order); runs of consecutive codes
  // share one array: "first [w1 w2 ...]".
  std::string out = "[";
  int next = -2;
  for (const auto& [code, glyph] : coded_) {
    if (code != next) out += (next < 0 ? "" : "] ") + std::to_string(code) + " [";
    else out += ' ';
    out += std::to_string(widths_[glyph]);
    next = code + 1;
  }
  if (next >= 0) out += ']';
  out += ']';
  return out;
}

void EmbeddedFont::Write(ObjectWriter& out, int number) const {
  const int cid_font = out.Reserve();
  const int descriptor = out.Reserve();
  const int file = out.Reserve();
  const int to_unicode = out.Reserve();
  const int encoding = out.Reserve();
  const int cid_to_gid = out.Reserve();
  const std::string name = "/" + SubsetTag();
  const std::string encoding_name = name + "-Codes";

  hb_subset_input_t* input = hb_subset_input_create_or_fail();
  if (input == nullptr) throw Error("cannot subset the font " + face_->name);
  hb_set_t* glyphs = hb_subset_input_glyph_set(input);
  hb_set_add(glyphs, 0);
  for (const auto& [glyph, character] : used_) hb_set_add(glyphs, glyph);
  // Kept glyph numbers let the content streams use the font's own numbers.
  hb_subset_input_set_flags(input, HB_SUBSET_FLAGS_RETAIN_GIDS | HB_SUBSET_FLAGS_NO_HINTING);
  hb_face_t* subset = hb_subset_or_fail(face_->face, input);
  hb_subset_input_destroy(input);
  if (subset == nullptr) throw Error("cannot subset the font " + face_->name);
  hb_blob_t* blob = hb_face_reference_blob(subset);
  unsigned size = 0;
  const char* data = hb_blob_get_data(blob, &size);
  const std::string font_file(data, size);
  hb_blob_destroy(blob);
  hb_face_destroy(subset);

  auto units = [this](double value) {
    return std::to_string(std::lround(value * 1000.0 / face_->upem));
  };
  hb_font_extents_t extents{};
  hb_font_get_h_extents(face_->font, &extents);
  hb_position_t cap_height = extents.ascender;
  hb_ot_metrics_get_position(face_->font, HB_OT_METRICS_TAG_CAP_HEIGHT, &cap_height);

  out.Object(number, "<< /Type /Font /Subtype /Type0 /BaseFont " + name +
                         " /Encoding " + std::to_string(encoding) + " 0 R /DescendantFonts [" +
                         std::to_string(cid_font) +
                         " 0 R] /ToUnicode " + std::to_string(to_unicode) + " 0 R >>");
  out.Object(cid_font, "<< /Type /Font /Subtype /CIDFontType2 /BaseFont " + name +
                           " /CIDSystemInfo << /Registry (Adobe) /Ordering (Identity) "
                           "/Supplement 0 >> /FontDescriptor " +
                           std::to_string(descriptor) + " 0 R /CIDToGIDMap " +
                           std::to_string(cid_to_gid) + " 0 R /W " +
                           Widths() + " >>");
  out.Object(descriptor, "<< /Type /FontDescriptor /FontName " + name +
                             " /Flags 32 /FontBBox [" + units(face_->box[0]) + " " +
                             units(face_->box[1]) + " " + units(face_->box[2]) + " " +
                             units(face_->box[3]) + "] /ItalicAngle 0 /Ascent " +
                             units(extents.ascender) + " /Descent " + units(extents.descender) +
                             " /CapHeight " + units(cap_height) + " /StemV 80 /FontFile2 " +
                             std::to_string(file) + " 0 R >>");
  out.Stream(file, " /Length1 " + std::to_string(font_file.size()), Deflate(font_file, 6), true);
  const std::string map = ToUnicodeMap();
  out.Stream(to_unicode, "", Deflate(map, 6), true);
  out.Stream(encoding,
             " /Type /CMap /CMapName " + encoding_name +
                 " /CIDSystemInfo << /Registry (Adobe) /Ordering (Identity) /Supplement 0 >>",
             Deflate(EncodingMap(encoding_name), 6), true);
  out.Stream(cid_to_gid, "", Deflate(CidToGid(), 6), true);
}

}  // namespace cvve::reportengine::pdf
