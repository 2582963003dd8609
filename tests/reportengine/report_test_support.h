#pragma once
// Shared pieces of the report engine tests: a small generated dealer
// database, report definitions built in the test, independent SQL look-ups
// through the sqlite3 C API, and running external tools.
#include <QTemporaryDir>
#include <string>
#include <utility>
#include <vector>

#include "reportengine/report_definition.h"

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

struct ColumnSpec {
  std::string title, field, format, alignment = "Left";
  int width = 1440;
};

// A .cvr document; statements are given as report-language expressions.
struct CvrSpec {
  std::string name = "Test Report";
  std::string statement;
  bool grouped = false;
  std::string group_report_field, group_format = "String", group_title, group_statement;
  std::vector<ColumnSpec> columns;
  std::vector<std::pair<std::string, std::string>> variables;  // name, type
  bool totals = false, averages = false, line_count = false, multi_line = false;
  int page_size = 0, orientation = 0;
};
std::string CvrXml(const CvrSpec& spec);

// The rows of a query on an SQLite file, each column as text ("" for NULL).
std::vector<std::vector<std::string>> SqlRows(const std::string& db, const std::string& sql);
// The first column of the first row.
std::string SqlValue(const std::string& db, const std::string& sql);

// Runs a shell command; returns its exit status and puts its stdout and
// stderr (merged) into `output`.
int RunCommand(const std::string& command, std::string* output = nullptr);
bool HaveTool(const std::string& name);

// "1,234,567.89" from "1234567.89" (the test's own grouping of digits).
std::string Grouped(const std::string& plain);

}  // namespace cvve::reportengine::testing
