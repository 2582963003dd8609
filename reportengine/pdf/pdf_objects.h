#pragma once
// The object layer of a PDF file: numbered objects and streams written in
// any order, then the cross-reference table that finds them. Knows nothing
// of pages or fonts.
#include <QIODevice>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cvve::reportengine::pdf {

// zlib data for a /FlateDecode stream (made by libdeflate). Level 1 to 12;
// fast levels suit the many repetitive content streams of long reports.
std::string Deflate(std::string_view data, int level);

// A number as PDF writes it: at most `decimals` decimals, no trailing zeros.
void AppendNumber(std::string& out, double value, int decimals = 2);
// A literal string "(...)" from raw bytes, escaping what PDF requires.
void AppendLiteral(std::string& out, std::string_view bytes);
// A text string for the document information: UTF-16BE hex with the byte
// order mark, so that any title survives.
std::string TextString(const std::u16string& text);

class ObjectWriter {
 public:
  // Writes the file header. Throws cvve::Error when the device fails.
  explicit ObjectWriter(QIODevice& out);

  // A number for an object written later (objects can refer ahead).
  int Reserve();
  void Object(int number, std::string_view body);
  // `dictionary` holds the entries besides /Length (and /Filter when `deflated`).
  void Stream(int number, std::string_view dictionary, std::string_view data, bool deflated);
  // The cross-reference table and trailer. Every reserved object must have been written.
  void Finish(int catalog, int info);

 private:
  void Write(std::string_view bytes);
  void Begin(int number);

  QIODevice& out_;
  std::int64_t offset_ = 0;
  std::vector<std::int64_t> offsets_;  // by object number - 1; -1: not written yet
};

}  // namespace cvve::reportengine::pdf
