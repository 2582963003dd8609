#pragma once
// A value of the row a statement is on, as SQLite keeps it: read in place
// by the report runner, which formats most cells straight from it.
#include <cstdint>
#include <string_view>

namespace cvve::reportengine {

struct SqlValue {
  // Blobs are read as text, as QtSql's text of them is.
  enum class Type : std::uint8_t { kNull, kInteger, kReal, kText };
  Type type = Type::kNull;
  std::int64_t integer = 0;
  double real = 0;
  std::string_view text;  // UTF-8, as stored
};

}  // namespace cvve::reportengine
