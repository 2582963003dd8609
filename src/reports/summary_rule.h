#pragma once
// Which columns of a report are summed and which are averaged, from the
// column's format in the report setup: a sum means something only for money
// (a total of day counts or mileages does not), an average for any number.
// The editor writes these choices into the report definition, where an
// administrator may change them; the report engine takes them as the
// defaults for definitions written before it had them.
#include <string_view>

namespace cvve {

// Currency, Number and Integer (any case).
bool IsNumericFormat(std::string_view format);
// Currency only.
bool IsMoneyFormat(std::string_view format);

inline bool TotalledByFormat(std::string_view format) { return IsMoneyFormat(format); }
inline bool AveragedByFormat(std::string_view format) { return IsNumericFormat(format); }

}  // namespace cvve
