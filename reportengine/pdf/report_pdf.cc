#include "reportengine/pdf/report_pdf.h"

#include <QDateTime>
#include <QtConcurrent/QtConcurrentMap>
#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "reportengine/pdf/embedded_font.h"
#include "reportengine/pdf/pdf_objects.h"
#include "reportengine/text_shaper.h"

namespace cvve::reportengine::pdf {

namespace {

constexpr double kTwipsPerPoint = 20;
// zlib's fastest level: on report pages it loses little to the default
// level and compresses several times faster.
constexpr int kPageCompression = 1;
// Pages generated before their compression is handed to other threads.
constexpr std::size_t kBatch = 16;

// As AppendNumber writes it.
double Rounded(double value) { return std::round(value * 100) / 100; }

// The layout's fonts as PDF resources: one embedded font for each distinct
// face, drawn at each role's size.
class FontTable {
 public:
  explicit FontTable(const LayoutFonts& fonts) : fonts_(fonts) {}

  struct Slot {
    int resource = -1;  // index into Embedded(); -1: cannot be embedded
    double size = 0;    // points
  };

  const Slot& Of(FontRole role) {
    auto& slot = slots_[static_cast<std::size_t>(role)];
    if (!slot) slot = MakeSlot(fonts_.Of(role));
    return *slot;
  }
  EmbeddedFont& Font(int resource) { return *embedded_[static_cast<std::size_t>(resource)]; }
  std::size_t Count() const { return embedded_.size(); }

 private:
  Slot MakeSlot(const TextShaper& shaper) {
    Slot slot;
    slot.size = shaper.Font().pixelSize() / kTwipsPerPoint;
    const QRawFont& raw = shaper.RawFont();
    // A bold the font has no face for is drawn emboldened by Qt; embedding
    // the regular face would lose that.
    if (shaper.Font().bold() && raw.weight() < QFont::DemiBold) return slot;
    const std::string key = (raw.familyName() + QLatin1Char('/') + raw.styleName()).toStdString() +
                            "/" + std::to_string(raw.weight()) + "/" +
                            std::to_string(static_cast<int>(raw.style()));
    const auto found = keys_.find(key);
    if (found != keys_.end()) {
      slot.resource = found->second;
      return slot;
    }
    std::unique_ptr<EmbeddedFont> font = EmbeddedFont::FromRawFont(raw);
    if (!font) return slot;
    slot.resource = static_cast<int>(embedded_.size());
    embedded_.push_back(std::move(font));
    keys_.emplace(key, slot.resource);
    return slot;
  }

  const LayoutFonts& fonts_;
  std::array<std::optional<Slot>, kFontRoles> slots_;
  std::vector<std::unique_ptr<EmbeddedFont>> embedded_;
  std::map<std::string, int> keys_;
};

// One page's content stream. Texts on one baseline in one font share a TJ
// array whose numbers move the pen to each cell's own position.
class PageContent {
 public:
  PageContent(FontTable& fonts, const LayoutFonts& shapers, double height)
      : fonts_(fonts), shapers_(shapers), height_(height) {}

  // False when a text needs shaping or its font cannot be embedded.
  bool Write(const PageDescription& page, std::string& out) {
    out_ = &out;
    if (!page.lines.empty()) out += "2 J\n";  // square ends, as the viewer's pen draws them
    double width = -1;
    for (const PageLine& line : page.lines) {
      if (line.width != width) {
        width = line.width;
        Number(width / kTwipsPerPoint);
        out += "w\n";
      }
      Point(line.x1, line.y1);
      out += "m ";
      Point(line.x2, line.y2);
      out += "l S\n";
    }
    out += "BT\n";
    font_ = -1;
    size_ = 0;
    open_ = false;
    line_x_ = line_y_ = 0;
    for (const PageText& text : page.texts) {
      if (text.text.isEmpty()) continue;
      if (!Text(text)) return false;
    }
    if (open_) out += "] TJ\n";
    out += "ET\n";
    return true;
  }

 private:
  void Number(double value) {
    AppendNumber(*out_, value);
    *out_ += ' ';
  }
  void Point(double x, double y) {
    Number(x / kTwipsPerPoint);
    Number(height_ - y / kTwipsPerPoint);
  }

  bool Text(const PageText& text) {
    std::string& out = *out_;
    const FontTable::Slot& slot = fonts_.Of(text.font);
    if (slot.resource < 0) return false;
    const double x = text.x / kTwipsPerPoint;
    const double y = height_ - text.y / kTwipsPerPoint;
    if (slot.resource != font_ || slot.size != size_) {
      if (open_) out += "] TJ\n";
      open_ = false;
      font_ = slot.resource;
      size_ = slot.size;
      out += "/F" + std::to_string(font_ + 1) + ' ';
      Number(size_);
      out += "Tf\n";
    }
    if (open_ && y == baseline_ && x >= pen_x_) {
      const long move = std::lround((pen_x_ - x) * 1000 / size_);
      if (move != 0) {
        out += std::to_string(move);
        pen_x_ -= static_cast<double>(move) * size_ / 1000;
      }
    } else {
      if (open_) out += "] TJ\n";
      // The moves are written rounded; the line start follows the rounded
      // moves so that the error does not add up down the page.
      const double dx = Rounded(x - line_x_);
      const double dy = Rounded(y - line_y_);
      Number(dx);
      Number(dy);
      out += "Td [";
      open_ = true;
      line_x_ = pen_x_ = line_x_ + dx;
      line_y_ += dy;
      baseline_ = y;
    }
    const TextShaper& shaper = shapers_.Of(text.font);
    EmbeddedFont& font = fonts_.Font(font_);
    // Two bytes a glyph, four when both need escaping: filled on the stack
    // and appended once.
    const qsizetype length = text.text.size();
    char stack[256];
    std::unique_ptr<char[]> heap;
    char* bytes = stack;
    if (length * 4 + 2 > static_cast<qsizetype>(sizeof stack)) {
      heap = std::make_unique<char[]>(static_cast<std::size_t>(length * 4 + 2));
      bytes = heap.get();
    }
    char* end = bytes;
    *end++ = '(';
    int advance = 0;
    for (const QChar c : text.text) {
      const quint32 glyph = shaper.GlyphIndex(c.unicode());
      if (glyph == 0 || glyph > 0xFFFF) return false;
      advance += font.Use(static_cast<std::uint16_t>(glyph), c.unicode());
      for (const char byte : {static_cast<char>(glyph >> 8), static_cast<char>(glyph & 0xFF)}) {
        if (byte == '(' || byte == ')' || byte == '\\') {
          *end++ = '\\';
        } else if (byte == '\r') {  // read as a line feed unless escaped
          *end++ = '\\';
          *end++ = 'r';
          continue;
        }
        *end++ = byte;
      }
    }
    *end++ = ')';
    out.append(bytes, static_cast<std::size_t>(end - bytes));
    pen_x_ += advance * size_ / 1000;
    return true;
  }

  FontTable& fonts_;
  const LayoutFonts& shapers_;
  double height_;  // points
  std::string* out_ = nullptr;
  int font_ = -1;
  double size_ = 0;
  bool open_ = false;
  double line_x_ = 0, line_y_ = 0;  // the text line's start (Td moves from it)
  double pen_x_ = 0;                // where the next glyph goes
  double baseline_ = 0;             // the open TJ array's, as the layout has it
};

std::string Date(const QDateTime& time) {
  return "(D:" + time.toString(QStringLiteral("yyyyMMddHHmmss")).toStdString() + ")";
}

// Every page's content stream, compressed; none when a page needs Qt's
// writer. Pages are made on this thread and compressed on the others, a
// batch behind.
std::optional<std::vector<std::string>> PageStreams(const ReportLayout& layout,
                                                    const LayoutFonts& shapers, FontTable& fonts,
                                                    const ProgressFunction& progress) {
  const std::size_t count = layout.pages.size();
  std::vector<std::string> streams(count);
  QFuture<void> compressing;
  // The workers hold on to `streams`: they finish before it goes, however
  // this function ends.
  struct Wait {
    QFuture<void>& future;
    ~Wait() { future.waitForFinished(); }
  } wait{compressing};
  PageContent content(fonts, shapers, layout.height / kTwipsPerPoint);
  std::size_t size_hint = 0;
  for (std::size_t start = 0; start < count; start += kBatch) {
    const std::size_t end = std::min(count, start + kBatch);
    for (std::size_t i = start; i < end; ++i) {
      if (progress && !progress(QStringLiteral("Writing PDF"), static_cast<long long>(i),
                                static_cast<long long>(count))) {
        throw Cancelled();
      }
      streams[i].reserve(size_hint);
      if (!content.Write(layout.pages[i], streams[i])) return std::nullopt;
      size_hint = std::max(size_hint, streams[i].size());
    }
    compressing.waitForFinished();
    compressing = QtConcurrent::map(
        streams.begin() + static_cast<std::ptrdiff_t>(start),
        streams.begin() + static_cast<std::ptrdiff_t>(end),
        [](std::string& page) { page = Deflate(page, kPageCompression); });
  }
  compressing.waitForFinished();
  return streams;
}

}  // namespace

bool WriteLayoutPdf(const ReportLayout& layout, QIODevice& out, const ProgressFunction& progress) {
  std::shared_ptr<const LayoutFonts> shapers = layout.fonts;
  if (!shapers) shapers = std::make_shared<LayoutFonts>(layout.font_scale);
  FontTable fonts(*shapers);
  // Every page is made before a byte is written, so that a page that needs
  // Qt's writer leaves nothing behind.
  std::optional<std::vector<std::string>> streams = PageStreams(layout, *shapers, fonts, progress);
  if (!streams) return false;

  ObjectWriter writer(out);
  const int catalog = writer.Reserve();
  const int tree = writer.Reserve();
  const int info = writer.Reserve();
  const int resources = writer.Reserve();
  std::vector<int> font_objects;
  for (std::size_t f = 0; f < fonts.Count(); ++f) font_objects.push_back(writer.Reserve());

  std::string kids;
  std::string media = "[0 0 ";
  AppendNumber(media, layout.width / kTwipsPerPoint);
  media += ' ';
  AppendNumber(media, layout.height / kTwipsPerPoint);
  media += ']';
  for (std::string& content : *streams) {
    const int page = writer.Reserve();
    const int stream = writer.Reserve();
    writer.Stream(stream, "", content, true);
    std::string().swap(content);
    writer.Object(page, "<< /Type /Page /Parent " + std::to_string(tree) + " 0 R /MediaBox " +
                            media + " /Resources " + std::to_string(resources) +
                            " 0 R /Contents " + std::to_string(stream) + " 0 R >>");
    kids += std::to_string(page) + " 0 R ";
  }
  writer.Object(tree, "<< /Type /Pages /Kids [" + kids + "] /Count " + std::to_string(streams->size()) +
                          " >>");
  std::string font_names;
  for (std::size_t f = 0; f < font_objects.size(); ++f) {
    font_names += "/F" + std::to_string(f + 1) + " " + std::to_string(font_objects[f]) + " 0 R ";
    fonts.Font(static_cast<int>(f)).Write(writer, font_objects[f]);
  }
  writer.Object(resources, "<< /Font << " + font_names + ">> /ProcSet [/PDF /Text] >>");
  writer.Object(info, "<< /Title " + TextString(layout.title.toStdU16String()) +
                          " /Creator (cvViewEdit report engine) /Producer (cvViewEdit) "
                          "/CreationDate " +
                          Date(QDateTime::currentDateTime()) + " >>");
  writer.Object(catalog, "<< /Type /Catalog /Pages " + std::to_string(tree) + " 0 R >>");
  writer.Finish(catalog, info);
  return true;
}

}  // namespace cvve::reportengine::pdf
