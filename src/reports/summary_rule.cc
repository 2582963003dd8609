#include "reports/summary_rule.h"

#include "base/text.h"

namespace cvve {

bool IsNumericFormat(std::string_view format) {
  const std::string lower = ToLower(format);
  return lower == "currency" || lower == "number" || lower == "integer";
}

bool IsMoneyFormat(std::string_view format) { return ToLower(format) == "currency"; }

}  // namespace cvve
