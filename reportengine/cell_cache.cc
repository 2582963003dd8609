#include "reportengine/cell_cache.h"

#include <cstring>

namespace cvve::reportengine {

namespace {

std::uint64_t Mixed(std::uint64_t bits) {
  bits ^= bits >> 33;
  bits *= 0xff51afd7ed558ccdULL;
  bits ^= bits >> 33;
  return bits;
}

// Only picks a slot (the key is compared whole): the first and the last
// eight bytes and the length, read as words rather than byte by byte.
std::uint64_t TextHash(std::string_view text) {
  std::uint64_t head = 0;
  std::uint64_t tail = 0;
  if (text.size() >= 8) {
    std::memcpy(&head, text.data(), 8);
    std::memcpy(&tail, text.data() + text.size() - 8, 8);
  } else if (!text.empty()) {
    std::memcpy(&head, text.data(), text.size());
  }
  return Mixed(head ^ Mixed(tail + text.size()));
}

}  // namespace

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
      (value.type == SqlValue::Type::kText ? TextHash(value.text) : Mixed(number)) +
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
