#include "reportengine/pdf/pdf_objects.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "base/error.h"

namespace cvve::reportengine::pdf {

std::string Deflate(std::string_view data, int level) {
  // libdeflate compresses a whole buffer at once, with fewer instructions
  // than zlib at the same level; a compressor per thread and level is kept
  // (making one costs more than a page's compression).
  struct Compressors {
    std::array<libdeflate_compressor*, 13> by_level{};
    ~Compressors() {
      for (libdeflate_compressor* compressor : by_level) {
        if (compressor != nullptr) libdeflate_free_compressor(compressor);
      }
    }
  };
  thread_local Compressors compressors;
  level = std::clamp(level, 1, 12);
  libdeflate_compressor*& compressor = compressors.by_level[static_cast<std::size_t>(level)];
  if (compressor == nullptr) compressor = libdeflate_alloc_compressor(level);
  if (compressor == nullptr) throw Error("cannot compress a PDF stream");
  std::string out(libdeflate_zlib_compress_bound(compressor, data.size()), '\0');
  const std::size_t size =
      libdeflate_zlib_compress(compressor, data.data(), data.size(), out.data(), out.size());
  if (size == 0) throw Error("cannot compress a PDF stream");
  out.resize(size);
  return out;
}

namespace {

// Values below this, times 100, are within 1.1e-7 of their exact product,
// so a fraction that is not within 1e-6 of one half rounds as the exact
// value does.
constexpr double kQuickLimit = 1e7;
constexpr double kTieMargin = 1e-6;

// Two decimals through integers: a page's coordinates and sizes take most of
// a content stream's numbers, and the general conversion was the costliest
// step per text line. False (nothing written) where only the general
// conversion rounds exactly as it does: near a tie, or for a large value.
bool AppendTwoDecimals(std::string& out, double value) {
  if (!(std::fabs(value) < kQuickLimit)) return false;  // NaN too
  const double scaled = value * 100.0;
  const auto whole = static_cast<long long>(scaled);  // toward zero, exact
  const double fraction = scaled - static_cast<double>(whole);
  const double distance = std::fabs(fraction);
  if (std::fabs(distance - 0.5) <= kTieMargin) return false;
  long long hundredths = whole;
  if (distance > 0.5) hundredths += fraction > 0 ? 1 : -1;
  if (hundredths == 0) {
    out += '0';
    return true;
  }
  char text[24];
  char* end = text + sizeof text;
  char* at = end;
  unsigned long long rest = hundredths < 0 ? 0ULL - static_cast<unsigned long long>(hundredths)
                                           : static_cast<unsigned long long>(hundredths);
  const unsigned cents = static_cast<unsigned>(rest % 100);
  rest /= 100;
  if (cents != 0) {
    if (cents % 10 != 0) *--at = static_cast<char>('0' + cents % 10);
    *--at = static_cast<char>('0' + cents / 10);
    *--at = '.';
  }
  do {
    *--at = static_cast<char>('0' + rest % 10);
    rest /= 10;
  } while (rest > 0);
  if (hundredths < 0) *--at = '-';
  out.append(at, end);
  return true;
}

}  // namespace

void AppendNumber(std::string& out, double value, int decimals) {
  if (decimals == 2 && AppendTwoDecimals(out, value)) return;
  char buffer[32];
  auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value,
                                    std::chars_format::fixed, decimals);
  if (error != std::errc()) {
    out += '0';
    return;
  }
  char* dot = std::find(buffer, end, '.');
  if (dot != end) {
    while (end[-1] == '0') --end;
    if (end[-1] == '.') --end;
  }
  // "-0" after rounding is still zero.
  if (end - buffer == 2 && buffer[0] == '-' && buffer[1] == '0') {
    out += '0';
    return;
  }
  out.append(buffer, end);
}

void AppendLiteral(std::string& out, std::string_view bytes) {
  out += '(';
  for (char c : bytes) {
    switch (c) {
      case '(':
      case ')':
      case '\\':
        out += '\\';
        out += c;
        break;
      case '\r':  // a bare carriage return would be read as a line feed
        out += "\\r";
        break;
      default:
        out += c;
    }
  }
  out += ')';
}

std::string TextString(const std::u16string& text) {
  std::string out = "<FEFF";
  char buffer[5];
  for (char16_t c : text) {
    std::snprintf(buffer, sizeof buffer, "%04X", static_cast<unsigned>(c));
    out += buffer;
  }
  out += '>';
  return out;
}

ObjectWriter::ObjectWriter(QIODevice& out) : out_(out) {
  // The comment of high bytes marks the file as binary for transfer programs.
  Write("%PDF-1.4\n%\xE2\xE3\xCF\xD3\n");
}

int ObjectWriter::Reserve() {
  offsets_.push_back(-1);
  return static_cast<int>(offsets_.size());
}

void ObjectWriter::Write(std::string_view bytes) {
  if (out_.write(bytes.data(), static_cast<qint64>(bytes.size())) !=
      static_cast<qint64>(bytes.size())) {
    throw Error("cannot write the PDF: " + out_.errorString().toStdString());
  }
  offset_ += static_cast<std::int64_t>(bytes.size());
}

void ObjectWriter::Begin(int number) {
  if (number < 1 || number > static_cast<int>(offsets_.size()) ||
      offsets_[static_cast<std::size_t>(number - 1)] >= 0) {
    throw Error("PDF object " + std::to_string(number) + " is not reserved or written twice");
  }
  offsets_[static_cast<std::size_t>(number - 1)] = offset_;
  Write(std::to_string(number) + " 0 obj\n");
}

void ObjectWriter::Object(int number, std::string_view body) {
  Begin(number);
  Write(body);
  Write("\nendobj\n");
}

void ObjectWriter::Stream(int number, std::string_view dictionary, std::string_view data,
                          bool deflated) {
  Begin(number);
  std::string head = "<<";
  head += dictionary;
  head += " /Length " + std::to_string(data.size());
  if (deflated) head += " /Filter /FlateDecode";
  head += " >>\nstream\n";
  Write(head);
  Write(data);
  Write("\nendstream\nendobj\n");
}

void ObjectWriter::Finish(int catalog, int info) {
  const std::int64_t xref = offset_;
  std::string table = "xref\n0 " + std::to_string(offsets_.size() + 1) + "\n0000000000 65535 f \n";
  char entry[40];
  for (std::size_t i = 0; i < offsets_.size(); ++i) {
    if (offsets_[i] < 0) throw Error("PDF object " + std::to_string(i + 1) + " was never written");
    std::snprintf(entry, sizeof entry, "%010lld 00000 n \n", static_cast<long long>(offsets_[i]));
    table += entry;
  }
  table += "trailer\n<< /Size " + std::to_string(offsets_.size() + 1) + " /Root " +
           std::to_string(catalog) + " 0 R /Info " + std::to_string(info) +
           " 0 R >>\nstartxref\n" + std::to_string(xref) + "\n%%EOF\n";
  Write(table);
}

}  // namespace cvve::reportengine::pdf
