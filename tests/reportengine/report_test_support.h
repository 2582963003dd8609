#pragma once
// Shared pieces of the report engine tests: a small generated dealer
// database, report definitions built in the test, independent SQL look-ups
// through the sqlite3 C API, and running external tools.
#include <QTemporaryDir>
#include <string>
#include <utility>
#include <vector>

#include "reportengine/paginator.h"
#include "reportengine/language/report_definition.h"
#include "reportengine/report_runner.h"

namespace cvve::reportengine::testing {

// A demo database of 300 accounts, made once per test process.
const std::string& SmallDatabase();

// A folder removed with the test.
class TempFolder {
 public:
  TempFolder();
  std::string Path(const std::string& name) const;
  // Writes `text` to `name` in the folder and returns the path.
  std::string Write(const std::string& name, const std::string& text) const;

 private:
  QTemporaryDir dir_;
};

struct ColumnShape {
  std::string title, field, format, alignment = "Left";
  int width = 1440;
  std::string total, average;  // the elements' text; "" leaves them out
};

// A .cvr document; statements are given as report-language expressions.
struct CvrShape {
  std::string name = "Test Report";
  std::string statement;
  bool grouped = false;
  std::string group_report_field, group_title, group_statement;
  std::vector<ColumnShape> columns;
  std::vector<std::pair<std::string, std::string>> variables;  // name, type
  bool totals = false, averages = false, line_count = false, multi_line = false;
  int page_size = 0, orientation = 0;
};
std::string CvrXml(const CvrShape& shape);
// Writes the shape as "<name>.cvr" into `folder` and loads it.
ReportDefinition Define(const TempFolder& folder, const CvrShape& shape);

// Every account, ungrouped, with totals, averages and line numbers: Line
// ($LINE), Account, Name (text), Notes ($BLANK), Balance (currency), Days Late
// (integer), Next Due (date). Its statement has %USERWHERE%.
CvrShape AllAccounts();
// Active accounts grouped by collector, with totals, averages and counts:
// Account (text), Opened (date), Days Late (integer), Balance (currency).
// `and_where` narrows both the groups and the rows (it may use $variables).
CvrShape ActiveByCollector(const std::string& and_where = "");
// An endless statement: its rows come at once, its end never. Number
// (integer), Text.
CvrShape Endless();
// The default limits without the row limit.
QueryLimits NoRowLimit();

// A report run on the small database and laid out.
struct Output {
  ReportDefinition def;
  ReportData data;
  ReportLayout layout;
};
Output Produce(const CvrShape& shape, const TempFolder& folder, const RunSettings& settings = {});

// The rows of a query on an SQLite file, each column as text ("" for NULL).
std::vector<std::vector<std::string>> SqlRows(const std::string& db, const std::string& sql);
// The first column of the first row.
std::string SqlValue(const std::string& db, const std::string& sql);

// Runs a shell command; returns its exit status and puts its stdout and
// stderr (merged) into `output`.
int RunCommand(const std::string& command, std::string* output = nullptr);
bool HaveTool(const std::string& name);

// "1,234,567.89" from "1234567.89", and "-$1,234.50" from "-1234.50": the
// test's own grouping of digits.
std::string Grouped(const std::string& plain);
std::string Money(const std::string& plain);
// A sum or an average to the cent, "%.2f" as SQL's printf gives it.
std::string Cents(long double value);

}  // namespace cvve::reportengine::testing
