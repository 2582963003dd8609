#include "reportengine/pdf/report_pdf.h"

#include <QBuffer>
#include <QDateTime>
#include <QtConcurrent/QtConcurrentMap>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
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

// std::lround, without the call into the maths library that cost as much
// as the rest of a cell's move.
long RoundHalfAway(double value) {
  if (!(std::fabs(value) < 1e15)) return std::lround(value);
  auto whole = static_cast<long>(value);  // toward zero, exact
  const double fraction = value - static_cast<double>(whole);
  if (fraction >= 0.5) ++whole;
  if (fraction <= -0.5) --whole;
  return whole;
}

// As AppendNumber writes it.
double Rounded(double value) {
  if (!(std::fabs(value * 100) < 1e15)) return std::round(value * 100) / 100;
  const long hundredths = RoundHalfAway(value * 100);
  // std::round keeps the sign of a zero.
  if (hundredths == 0) return std::copysign(0.0, value) / 100;
  return static_cast<double>(hundredths) / 100;
}

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

  // Texts alone (a page's closing texts), in a text object of their own.
  bool WriteTexts(const std::vector<PageText>& texts, std::string& out) {
    PageDescription page;
    page.texts = texts;
    return Write(page, out);
  }

  // Whether Write would succeed: every font embeddable, every character in it.
  bool Writable(const PageDescription& page) {
    for (const auto* texts : {&page.texts, &page.closing}) {
      for (const PageText& text : *texts) {
        if (text.text.isEmpty()) continue;
        if (fonts_.Of(text.font).resource < 0) return false;
        const TextShaper& shaper = shapers_.Of(text.font);
        for (const QChar c : text.text) {
          const quint32 glyph = shaper.GlyphIndex(c.unicode());
          if (glyph == 0 || glyph > 0xFFFF) return false;
        }
      }
    }
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
    // The move to the cell (when it continues the open array), then its
    // string: one or two bytes a glyph (never escaped), filled on the stack
    // and appended once.
    const qsizetype length = text.text.size();
    char stack[256];
    std::unique_ptr<char[]> heap;
    char* bytes = stack;
    constexpr qsizetype kMoveRoom = 24;
    if (length * 2 + 2 + kMoveRoom > static_cast<qsizetype>(sizeof stack)) {
      heap = std::make_unique<char[]>(static_cast<std::size_t>(length * 2 + 2 + kMoveRoom));
      bytes = heap.get();
    }
    char* end = bytes;
    if (open_ && y == baseline_ && x >= pen_x_) {
      const long move = RoundHalfAway((pen_x_ - x) * 1000 / size_);
      if (move != 0) {
        end = std::to_chars(end, end + kMoveRoom, move).ptr;
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
    *end++ = '(';
    int advance = 0;
    std::array<std::uint64_t, 256>& latin = latin_[static_cast<std::size_t>(text.font)];
    const char16_t* character = reinterpret_cast<const char16_t*>(text.text.constData());
    const char16_t* last = character + length;
    for (; character != last; ++character) {
      const char16_t unicode = *character;
      std::uint64_t code = unicode < 256 ? latin[unicode] : 0;
      if (code == 0) {
        if (!Encode(text.font, unicode, code)) return false;
        if (unicode < 256) latin[unicode] = code;
      }
      // Bytes, their count and the advance, unpacked from one word.
      const auto pair = static_cast<std::uint16_t>(code);
      std::memcpy(end, &pair, 2);
      end += (code >> 16) & 0xFF;
      advance += static_cast<std::int32_t>(code >> 32);
    }
    *end++ = ')';
    out.append(bytes, static_cast<std::size_t>(end - bytes));
    pen_x_ += advance * size_ / 1000;
    return true;
  }

  // A character's code in a content string, packed in one word so that the
  // loop over a cell's characters reads one value each: the bytes as they
  // are stored (bits 0-15), their count (16-23), the advance in thousandths
  // of the font size (32-63). 0: not known yet.
  static std::uint64_t Packed(const EmbeddedFont::Code& code, int advance) {
    std::uint16_t pair = 0;
    std::memcpy(&pair, code.bytes, 2);
    return pair | (std::uint64_t{code.size} << 16) |
           (std::uint64_t{static_cast<std::uint32_t>(advance)} << 32);
  }

  // The glyph's code in its font (recorded as used there) and its advance.
  bool Encode(FontRole role, char16_t unicode, std::uint64_t& code) {
    const quint32 glyph = shapers_.Of(role).GlyphIndex(unicode);
    if (glyph == 0 || glyph > 0xFFFF) return false;
    EmbeddedFont& font = fonts_.Font(fonts_.Of(role).resource);
    const std::optional<EmbeddedFont::Code> coded = font.CodeOf(static_cast<std::uint16_t>(glyph));
    if (!coded) return false;
    code = Packed(*coded, font.Use(static_cast<std::uint16_t>(glyph), unicode));
    return true;
  }

  FontTable& fonts_;
  const LayoutFonts& shapers_;
  // The Latin-1 characters' codes by font role, filled as they are first met.
  std::array<std::array<std::uint64_t, 256>, kFontRoles> latin_{};
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

}  // namespace

// The writer's state: objects reserved up front, pages compressed a batch
// at a time on the other threads while this one makes the next batch.
struct StreamWriter::State {
  State(const ReportLayout& frame, QIODevice& out)
      : shapers(frame.fonts ? frame.fonts : std::make_shared<LayoutFonts>(frame.font_scale)),
        fonts(*shapers),
        content(fonts, *shapers, frame.height / kTwipsPerPoint),
        writer(out),
        title(frame.title) {
    catalog = writer.Reserve();
    tree = writer.Reserve();
    info = writer.Reserve();
    resources = writer.Reserve();
    media = "[0 0 ";
    AppendNumber(media, frame.width / kTwipsPerPoint);
    media += ' ';
    AppendNumber(media, frame.height / kTwipsPerPoint);
    media += ']';
  }
  ~State() { compressing.waitForFinished(); }

  // Writes the compressed batch (once its compression ends) and starts
  // compressing `batch`.
  void Flush() {
    compressing.waitForFinished();
    for (const std::string& deflated : compressed) {
      const int page = writer.Reserve();
      const int stream = writer.Reserve();
      const int closing = writer.Reserve();
      writer.Stream(stream, "", deflated, true);
      writer.Object(page, "<< /Type /Page /Parent " + std::to_string(tree) + " 0 R /MediaBox " +
                              media + " /Resources " + std::to_string(resources) +
                              " 0 R /Contents [" + std::to_string(stream) + " 0 R " +
                              std::to_string(closing) + " 0 R] >>");
      pages.push_back({page, closing});
    }
    compressed = std::move(batch);
    batch.clear();
    compressing = QtConcurrent::map(compressed, [](std::string& page) {
      page = Deflate(page, kPageCompression);
    });
  }

  std::shared_ptr<const LayoutFonts> shapers;
  FontTable fonts;
  PageContent content;
  ObjectWriter writer;
  QString title;
  int catalog = 0, tree = 0, info = 0, resources = 0;
  std::string media;
  std::vector<std::string> batch;       // made, not yet compressed
  std::vector<std::string> compressed;  // being compressed
  QFuture<void> compressing;
  std::size_t size_hint = 0;
  struct Page {
    int object;
    int closing;  // its content stream written at the end
  };
  std::vector<Page> pages;
  bool failed = false;
};

StreamWriter::StreamWriter(const ReportLayout& frame, QIODevice& out)
    : state_(std::make_unique<State>(frame, out)) {}

StreamWriter::~StreamWriter() = default;

bool StreamWriter::Add(const PageDescription& page) {
  State& s = *state_;
  if (s.failed) return false;
  std::string content;
  content.reserve(s.size_hint);
  if (!s.content.Write(page, content)) {
    s.failed = true;
    return false;
  }
  s.size_hint = std::max(s.size_hint, content.size());
  s.batch.push_back(std::move(content));
  if (s.batch.size() == kBatch) s.Flush();
  return true;
}

bool StreamWriter::Writable(const PageDescription& page) { return state_->content.Writable(page); }

int StreamWriter::Pages() const {
  return static_cast<int>(state_->pages.size() + state_->compressed.size() +
                          state_->batch.size());
}

bool StreamWriter::Finish(const std::function<std::vector<PageText>(int)>& closing) {
  State& s = *state_;
  if (s.failed) return false;
  s.Flush();
  s.Flush();
  s.compressing.waitForFinished();
  std::string kids;
  std::string texts;
  for (std::size_t p = 0; p < s.pages.size(); ++p) {
    texts.clear();
    if (!s.content.WriteTexts(closing(static_cast<int>(p)), texts)) return false;
    s.writer.Stream(s.pages[p].closing, "", texts, false);
    kids += std::to_string(s.pages[p].object) + " 0 R ";
  }
  s.writer.Object(s.tree, "<< /Type /Pages /Kids [" + kids + "] /Count " +
                              std::to_string(s.pages.size()) + " >>");
  std::string font_names;
  for (std::size_t f = 0; f < s.fonts.Count(); ++f) {
    const int object = s.writer.Reserve();
    font_names += "/F" + std::to_string(f + 1) + " " + std::to_string(object) + " 0 R ";
    s.fonts.Font(static_cast<int>(f)).Write(s.writer, object);
  }
  s.writer.Object(s.resources, "<< /Font << " + font_names + ">> /ProcSet [/PDF /Text] >>");
  s.writer.Object(s.info, "<< /Title " + TextString(s.title.toStdU16String()) +
                              " /Creator (cvViewEdit report engine) /Producer (cvViewEdit) "
                              "/CreationDate " +
                              Date(QDateTime::currentDateTime()) + " >>");
  s.writer.Object(s.catalog, "<< /Type /Catalog /Pages " + std::to_string(s.tree) + " 0 R >>");
  s.writer.Finish(s.catalog, s.info);
  return true;
}

bool WriteLayoutPdf(const ReportLayout& layout, QIODevice& out, const ProgressFunction& progress) {
  // Every page is checked before a byte is written, so that a page that
  // needs Qt's writer leaves nothing behind.
  std::optional<StreamWriter> writer;
  {
    QBuffer probe;
    probe.open(QIODevice::WriteOnly);
    StreamWriter check(layout, probe);
    for (const PageDescription& page : layout.pages) {
      if (!check.Writable(page)) return false;
    }
  }
  writer.emplace(layout, out);
  const auto count = static_cast<long long>(layout.pages.size());
  for (long long i = 0; i < count; ++i) {
    if (progress && !progress(QStringLiteral("Writing PDF"), i, count)) throw Cancelled();
    if (!writer->Add(layout.pages[static_cast<std::size_t>(i)])) return false;
  }
  return writer->Finish(
      [&layout](int page) { return layout.pages[static_cast<std::size_t>(page)].closing; });
}

}  // namespace cvve::reportengine::pdf
