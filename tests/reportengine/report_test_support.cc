#include "report_test_support.h"

#include <sqlite3.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <memory>
#include <pugixml.hpp>
#include <sstream>
#include <stdexcept>

#include "reportengine/guard/guarded_connection.h"
#include "reportengine/demo_database.h"

namespace cvve::reportengine::testing {

namespace {

void Add(pugi::xml_node parent, const char* name, const std::string& value) {
  parent.append_child(name).text().set(value.c_str());
}

}  // namespace

const std::string& SmallDatabase() {
  static QTemporaryDir* dir = new QTemporaryDir();  // lives as long as the process
  static const std::string path = [] {
    const std::string file = dir->filePath(QStringLiteral("dealer.db")).toStdString();
    DemoDatabaseOptions options;
    options.accounts = 300;
    options.seed = 7;
    options.schema_path = std::string(CVVE_DEMO_DIR) + "/schema.sql";
    options.users = {"alice", "bob", "carol", "dave", "erin"};
    GenerateDemoDatabase(file, options);
    return file;
  }();
  return path;
}

TempFolder::TempFolder() {
  if (!dir_.isValid()) throw std::runtime_error("no temporary folder");
}

std::string TempFolder::Path(const std::string& name) const {
  return dir_.filePath(QString::fromStdString(name)).toStdString();
}

std::string TempFolder::Write(const std::string& name, const std::string& text) const {
  const std::string path = Path(name);
  std::ofstream out(path, std::ios::binary);
  out << text;
  return path;
}

std::string CvrXml(const CvrShape& shape) {
  pugi::xml_document doc;
  pugi::xml_node root = doc.append_child("CustomReport");
  root.append_attribute("version") = "1";
  Add(root, "Name", shape.name);
  Add(root, "DataSet", "Test");
  Add(root, "Statement", shape.statement);
  Add(root, "Grouped", shape.grouped ? "1" : "0");
  if (shape.grouped) {
    Add(root, "GroupReportField", shape.group_report_field);
    Add(root, "GroupFormat", "String");
    Add(root, "GroupTitle", shape.group_title);
    Add(root, "GroupStatement", shape.group_statement);
  }
  pugi::xml_node columns = root.append_child("Columns");
  for (const ColumnShape& c : shape.columns) {
    pugi::xml_node column = columns.append_child("Column");
    for (const auto& [name, value] : {std::pair<const char*, std::string>{"Title", c.title},
                                      {"Field", c.field},
                                      {"ReportField", "INV_INFO." + c.title},
                                      {"Alignment", c.alignment},
                                      {"Format", c.format},
                                      {"Width", std::to_string(c.width)}}) {
      Add(column, name, value);
    }
    if (!c.total.empty()) Add(column, "Total", c.total);
    if (!c.average.empty()) Add(column, "Average", c.average);
  }
  pugi::xml_node variables = root.append_child("Variables");
  for (const auto& [name, type] : shape.variables) {
    pugi::xml_node variable = variables.append_child("Variable");
    Add(variable, "Name", name);
    Add(variable, "Caption", name + ":");
    Add(variable, "Type", type);
  }
  for (const auto& [name, on] : {std::pair{"Totals", shape.totals},
                                 {"Averages", shape.averages},
                                 {"LineCount", shape.line_count},
                                 {"MultiLine", shape.multi_line}}) {
    Add(root, name, on ? "1" : "0");
  }
  Add(root, "PageSize", std::to_string(shape.page_size));
  Add(root, "PageOrientation", std::to_string(shape.orientation));
  std::ostringstream xml;
  doc.save(xml);
  return xml.str();
}

ReportDefinition Define(const TempFolder& folder, const CvrShape& shape) {
  return LoadReportDefinition(folder.Write(shape.name + ".cvr", CvrXml(shape)));
}

CvrShape Endless() {
  CvrShape shape;
  shape.name = "Endless";
  shape.statement =
      "\"WITH RECURSIVE r(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM r) SELECT i, 'row ' || i "
      "FROM r\"";
  shape.columns = {{"Number", "N", "Integer", "Right", 1500}, {"Text", "T", "String"}};
  return shape;
}

QueryLimits NoRowLimit() {
  QueryLimits limits;
  limits.row_limit = 1'000'000'000;
  return limits;
}

CvrShape AllAccounts() {
  CvrShape shape;
  shape.name = "All Accounts";
  shape.statement =
      R"("CQ:SELECT ACCTS.AcctNum,CUST_INFO.LastName,ACCTS.Balance,ACCTS.DaysLate,ACCTS.Next_Pmt_Due )"
      R"(FROM ACCTS INNER JOIN CUST_INFO ON CUST_INFO.CustID=ACCTS.CustID WHERE %USERWHERE% )"
      R"(ORDER BY ACCTS.AcctNum ASC")";
  shape.columns = {{"Line", "$LINE", "String", "Left", 600},
                  {"Account", "ACCTS.AcctNum", "String", "Left", 1200},
                  {"Name", "CUST_INFO.LastName", "String", "Left", 2000},
                  {"Notes", "$BLANK", "String", "Left", 1500},
                  {"Balance", "ACCTS.Balance", "Currency", "Right", 1500},
                  {"Days Late", "ACCTS.DaysLate", "Integer", "Right", 1000},
                  {"Next Due", "ACCTS.Next_Pmt_Due", "Date", "Left", 1300}};
  shape.totals = shape.averages = shape.line_count = true;
  return shape;
}

CvrShape ActiveByCollector(const std::string& and_where) {
  CvrShape shape;
  shape.name = "Active By Collector";
  shape.grouped = true;
  shape.group_report_field = "INV_INFO.Collector";
  shape.group_title = "Collector";
  shape.group_statement =
      "\"CQ:SELECT DISTINCT Collector FROM ACCTS WHERE Status='A'" + and_where + " ORDER BY 1\"";
  shape.statement = "\"CQ:SELECT AcctNum, OpenDate, DaysLate, Balance FROM ACCTS WHERE Status='A'" +
                   and_where +
                   " AND Collector='\" + FXA([INV_INFO.Collector]) + \"' ORDER BY AcctNum\"";
  shape.columns = {{"Account", "ACCTS.AcctNum", "String", "Left", 1500},
                  {"Opened", "ACCTS.OpenDate", "Date", "Left", 1500},
                  {"Days Late", "ACCTS.DaysLate", "Integer", "Right", 1200},
                  {"Balance", "ACCTS.Balance", "Currency", "Right", 1800}};
  shape.totals = shape.averages = shape.line_count = true;
  return shape;
}

Output Produce(const CvrShape& shape, const TempFolder& folder, const RunSettings& settings) {
  Output out;
  out.def = Define(folder, shape);
  GuardedConnection db(SmallDatabase());
  out.data = RunReport(out.def, db, settings);
  out.layout = Paginate(out.def, out.data);
  return out;
}

std::vector<std::vector<std::string>> SqlRows(const std::string& db, const std::string& sql) {
  sqlite3* handle = nullptr;
  if (sqlite3_open_v2(db.c_str(), &handle, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
    sqlite3_close(handle);
    throw std::runtime_error("cannot open " + db);
  }
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> owner(handle, sqlite3_close);
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(handle, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
    throw std::runtime_error(std::string(sqlite3_errmsg(handle)) + " in " + sql);
  }
  std::vector<std::vector<std::string>> rows;
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    std::vector<std::string> row;
    for (int c = 0; c < sqlite3_column_count(stmt); ++c) {
      const unsigned char* text = sqlite3_column_text(stmt, c);
      row.emplace_back(text ? reinterpret_cast<const char*>(text) : "");
    }
    rows.push_back(std::move(row));
  }
  sqlite3_finalize(stmt);
  return rows;
}

std::string SqlValue(const std::string& db, const std::string& sql) {
  const auto rows = SqlRows(db, sql);
  return rows.empty() || rows[0].empty() ? std::string() : rows[0][0];
}

int RunCommand(const std::string& command, std::string* output) {
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return -1;
  std::string text;
  char buffer[4096];
  while (std::size_t n = fread(buffer, 1, sizeof buffer, pipe)) text.append(buffer, n);
  const int status = pclose(pipe);
  if (output != nullptr) *output = text;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool HaveTool(const std::string& name) {
  return RunCommand("command -v " + name + " >/dev/null") == 0;
}

std::string Grouped(const std::string& plain) {
  const std::size_t digits = plain.find_first_of("0123456789");
  std::string whole = plain.substr(digits, plain.find('.') - digits);
  for (int i = static_cast<int>(whole.size()) - 3; i > 0; i -= 3) whole.insert(i, ",");
  const std::size_t point = plain.find('.');
  return plain.substr(0, digits) + whole + (point == std::string::npos ? "" : plain.substr(point));
}

std::string Money(const std::string& plain) {
  return plain[0] == '-' ? "-$" + Grouped(plain.substr(1)) : "$" + Grouped(plain);
}

std::string Cents(long double value) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.2f", static_cast<double>(std::round(value * 100) / 100));
  return buffer;
}

}  // namespace cvve::reportengine::testing
