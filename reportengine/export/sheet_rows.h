#pragma once
// A report as a spreadsheet sees it: one header row, the rows with typed
// values (numbers as numbers, dates as dates), and the totals and averages
// of each group and of the whole report as rows of their own, marked in a
// first column. The CSV and XLSX writers both lay out these rows.
#include <QDate>
#include <QString>
#include <functional>
#include <vector>

#include "reportengine/language/report_definition.h"
#include "reportengine/report_runner.h"
#include "reportengine/value_format.h"

namespace cvve::reportengine {

struct SheetCell {
  enum class Type { kEmpty, kText, kNumber, kDate };
  Type type = Type::kEmpty;
  QString text;
  double number = 0;
  QDate date;
  ValueKind kind = ValueKind::kText;  // the column's, for the number format
  bool average = false;               // an average: two decimals whatever the kind
};

enum class SheetRowKind { kData, kTotal, kAverage };

struct SheetRow {
  SheetRowKind kind = SheetRowKind::kData;
  bool grand = false;  // a grouped report's own summary, not a group's
  std::vector<SheetCell> cells;
};

struct SheetColumn {
  QString title;
  ValueKind kind = ValueKind::kText;
  int width = 1440;  // twips
};

// The value behind a cell's display text in a column of `kind`: the report
// formats its values once, and this reads them back ("$1,008.80" is
// 1008.8, "01/31/2026" is 2026-01-31). Text that does not read as the kind
// stays text, as the report shows it.
SheetCell CellValue(const QString& shown, ValueKind kind);

// A number as plain text: no grouping, "." for decimals, at most two
// decimals (money always two), no exponent.
QString PlainNumber(const SheetCell& cell);

// The layout of a report's spreadsheet.
class ReportSheet {
 public:
  ReportSheet(const ReportDefinition& def, const ReportData& data);

  // The marker column comes first when the report prints summary rows; a
  // grouped report whose group value is none of its columns gets a column
  // for it next.
  const std::vector<SheetColumn>& Columns() const { return columns_; }
  bool HasMarker() const { return marker_; }

  // The rows in order, each handed over and then forgotten, so a long
  // report is never held twice.
  void ForEachRow(const std::function<void(const SheetRow&)>& visit) const;

  // "Total", "Average", "Grand Total", "Grand Average"; "" for a data row.
  static QString Marker(const SheetRow& row);

 private:
  void Summary(const ReportGroup* group, const Aggregate& totals, bool grand,
               const std::function<void(const SheetRow&)>& visit) const;
  SheetRow Begin(SheetRowKind kind, bool grand) const;

  const ReportDefinition& def_;
  const ReportData& data_;
  std::vector<SheetColumn> columns_;
  std::vector<ValueKind> kinds_;  // of the report's columns
  bool marker_ = false;
  bool added_group_ = false;  // the group value has a column of its own
  int group_column_ = -1;     // of the sheet: where the group value stands
  std::size_t first_ = 0;     // sheet column of the report's first column
};

}  // namespace cvve::reportengine
