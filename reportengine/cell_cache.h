#pragma once
// A column's formatted cells kept by the value they were made from, so that
// a value met again (a make, a collector, a date, a year) shares the text
// made the first time instead of being formatted, converted and allocated
// once more. Most columns of a long report repeat a few values; one whose
// values rarely repeat stops looking after a while.
#include <QString>
#include <array>
#include <cstdint>

#include "reportengine/guard/sql_value.h"
#include "reportengine/value_format.h"

namespace cvve::reportengine {

class CellCache {
 public:
  explicit CellCache(ValueKind kind) : kind_(kind) {}

  // What FormatCell(value, kind) gives, shared when the value was seen.
  QString Format(const SqlValue& value);

  // Whether it still looks values up (for tests).
  bool Looking() const { return looking_; }

 private:
  // Texts longer than this are formatted every time: they rarely repeat.
  static constexpr std::size_t kLongestKey = 32;
  static constexpr std::size_t kSlots = 256;
  // After this many look-ups a column that found fewer than one in eight
  // stops looking.
  static constexpr long kTrial = 4096;

  struct Slot {
    SqlValue::Type type = SqlValue::Type::kNull;  // kNull: empty
    std::uint64_t number = 0;                     // the integer's or the real's bits
    std::uint8_t length = 0;                      // of the text
    char text[kLongestKey] = {};
    QString cell;
  };

  ValueKind kind_;
  std::array<Slot, kSlots> slots_;
  bool looking_ = true;
  long lookups_ = 0;
  long hits_ = 0;
};

}  // namespace cvve::reportengine
