#include "report_test_support.h"

#include <sqlite3.h>
#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <stdexcept>

#include "reportengine/demo_database.h"

namespace cvve::reportengine::testing {

namespace {

std::string Escape(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string Element(const std::string& name, const std::string& value) {
  return "<" + name + ">" + Escape(value) + "</" + name + ">";
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

std::string CvrXml(const CvrSpec& spec) {
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<CustomReport version=\"1\">\n";
  xml += Element("Name", spec.name) + Element("DataSet", "Test") +
         Element("Statement", spec.statement) + Element("Grouped", spec.grouped ? "1" : "0");
  if (spec.grouped) {
    xml += Element("GroupReportField", spec.group_report_field) +
           Element("GroupFormat", spec.group_format) + Element("GroupTitle", spec.group_title) +
           Element("GroupStatement", spec.group_statement);
  }
  xml += "<Columns>";
  for (const ColumnSpec& c : spec.columns) {
    xml += "<Column>" + Element("Title", c.title) + Element("Field", c.field) +
           Element("ReportField", "INV_INFO." + c.title) + Element("Alignment", c.alignment) +
           Element("Format", c.format) + Element("Width", std::to_string(c.width)) + "</Column>";
  }
  xml += "</Columns><Variables>";
  for (const auto& [name, type] : spec.variables) {
    xml += "<Variable>" + Element("Name", name) + Element("Caption", name + ":") +
           Element("Type", type) + "</Variable>";
  }
  xml += "</Variables>";
  xml += Element("Totals", spec.totals ? "1" : "0") +
         Element("Averages", spec.averages ? "1" : "0") +
         Element("LineCount", spec.line_count ? "1" : "0") +
         Element("PageSize", std::to_string(spec.page_size)) +
         Element("PageOrientation", std::to_string(spec.orientation)) +
         Element("MultiLine", spec.multi_line ? "1" : "0");
  xml += "\n</CustomReport>\n";
  return xml;
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
  const bool negative = !plain.empty() && plain[0] == '-';
  std::string digits = negative ? plain.substr(1) : plain;
  const std::size_t point = digits.find('.');
  std::string whole = digits.substr(0, point);
  const std::string rest = point == std::string::npos ? "" : digits.substr(point);
  for (int i = static_cast<int>(whole.size()) - 3; i > 0; i -= 3) whole.insert(i, ",");
  return (negative ? "-" : "") + whole + rest;
}

}  // namespace cvve::reportengine::testing
