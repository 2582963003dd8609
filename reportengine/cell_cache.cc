#include "reportengine/cell_cache.h"

#include <cstring>
#include <xxhash.h>

namespace cvve::reportengine {

QString CellCache::Format(const SqlValue& value) {
  if (!looking_ || value.type == SqlValue::Type::kNull ||
      (value.type == SqlValue::Type::kText && value.text.size() > kLongestKey)) {
    return FormatCell(value, kind_);
  }
  std::uint64_t number = 0;
  if (value.type == SqlValue::Type::kInteger) {
    number = static_cast<std::uint64_t>(value.integer);
  } else if (value.type == SqlValue::Type::kReal) {
    std::memcpy(&number, &value.real, sizeof number);
  }
  // The type takes part: an integer and a real of the same bits keep
  // slots of their own.
  const std::uint64_t hash =
      (value.type == SqlValue::Type::kText ? XXH3_64bits(value.text.data(), value.text.size())
                                           : XXH3_64bits(&number, sizeof number)) +
      static_cast<std::uint64_t>(value.type);
  Slot& slot = slots_[(hash ^ (hash >> 32)) % kSlots];
  ++lookups_;
  if (slot.type == value.type &&
      (value.type == SqlValue::Type::kText
           ? slot.length == value.text.size() &&
                 (value.text.empty() ||
                  std::memcmp(slot.text, value.text.data(), value.text.size()) == 0)
           : slot.number == number)) {
    ++hits_;
    return slot.cell;
  }
  if (lookups_ == kTrial && hits_ * 8 < lookups_) {
    looking_ = false;
    slots_ = {};  // the kept texts are not needed any more
    return FormatCell(value, kind_);
  }
  slot.type = value.type;
  slot.number = number;
  slot.length = static_cast<std::uint8_t>(value.text.size());
  if (!value.text.empty()) std::memcpy(slot.text, value.text.data(), value.text.size());
  slot.cell = FormatCell(value, kind_);
  return slot.cell;
}

}  // namespace cvve::reportengine
