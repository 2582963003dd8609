// Feeds arbitrary bytes to the report engine's readers: as a report
// definition (.cvr), whose statements are then evaluated and prepared as a
// run would, and as a report-language expression on its own. Failures must
// be cvve::Error; nothing may crash.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/error.h"
#include "reportengine/language/report_definition.h"
#include "reportengine/language/report_expression.h"

namespace {

namespace re = cvve::reportengine;

void Evaluate(std::string_view expression, const re::ExpressionContext& context) {
  try {
    const re::Evaluation evaluation = re::EvaluateExpression(expression, context);
    re::PrepareStatement(evaluation.value, "ACCTS.Collector = 'alice'");
    re::PrepareStatement(evaluation.value, "");
  } catch (const cvve::Error&) {
    // Malformed expressions are reported, by design.
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  re::ExpressionContext context;
  // Every variable has a value with the characters that need care in SQL.
  context.variable = [](std::string_view name) -> std::optional<std::string> {
    if (name.size() % 3 == 0) return std::nullopt;
    return "O'Brien #@!" + std::string(name) + "!@#";
  };
  context.fxa = [](std::string_view field) -> std::optional<std::string> {
    if (field.empty()) return std::nullopt;
    return "2026-03-16";
  };
  Evaluate(bytes, context);
  re::IsoDate(bytes);
  try {
    const re::ReportDefinition def = re::ParseReportDefinition(bytes, "fuzz.cvr");
    Evaluate(def.statement, context);
    Evaluate(def.group_statement, context);
    for (const re::ReportVariable& variable : def.variables) re::IsoDate(variable.name);
  } catch (const cvve::Error&) {
    // An unusable file is reported, by design.
  }
  return 0;
}
