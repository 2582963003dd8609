#pragma once
// The report definition (.cvr) as the engine reads it: statements, columns,
// variables and page settings. The file format is docs/cvr-format.md.
#include <string>
#include <string_view>
#include <vector>

#include "reports/summary_rule.h"

namespace cvve::reportengine {

struct ReportColumn {
  std::string title;
  std::string field;         // SQL expression; "$"-led: computed by the report
  std::string report_field;  // INV_INFO.<column>
  std::string alignment;     // "Left", "Right", "Center"
  std::string format;        // the setup file's FieldFormat
  int width = 1440;          // twips
  // Summed in a totals row, shown in an averages row (the report's Totals
  // and Averages say whether those rows are printed at all).
  bool total = false;
  bool average = false;

  bool Computed() const { return !field.empty() && field[0] == '$'; }
};

struct ReportVariable {
  std::string name;  // "$" + the variable's name
  std::string caption;
  std::string type;
};

// Entries of the page size and orientation drop-downs, by list position.
enum class PageSize { kLetter = 0, kLegal = 1, kA4 = 2, kLedger = 3 };
enum class PageOrientation { kPortrait = 0, kLandscape = 1 };

struct ReportDefinition {
  std::string source;  // the file it was read from (for messages)
  std::string name;
  std::string data_set;
  std::string statement;
  bool grouped = false;
  std::string group_field;
  std::string group_report_field;
  std::string group_format;
  std::string group_title;
  std::string group_statement;
  std::vector<ReportColumn> columns;
  std::vector<ReportVariable> variables;
  bool totals = false;
  bool averages = false;
  bool line_count = false;
  PageSize page_size = PageSize::kLetter;
  PageOrientation orientation = PageOrientation::kPortrait;
  bool multi_line = false;

  // A totals (averages) row is printed when the report asks for one and
  // some column is summed (averaged).
  bool TotalsRow() const;
  bool AveragesRow() const;
  // The column that shows the group value (its report field is the group's),
  // -1 for none and in an ungrouped report.
  int GroupColumn() const;
};

// Throws cvve::Error naming the file (and the line and column, for a file
// that is no well-formed XML or has an unusable value) when the file cannot
// be read or is no report definition.
ReportDefinition LoadReportDefinition(const std::string& path);
// The same on text in memory; `source` names it in messages.
ReportDefinition ParseReportDefinition(std::string_view xml, const std::string& source);

using cvve::IsNumericFormat;

}  // namespace cvve::reportengine
