#include "reportengine/language/report_definition.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <pugixml.hpp>
#include <sstream>

#include "base/error.h"
#include "base/text.h"
#include "viewfiles/document_cursor.h"

namespace cvve::reportengine {

namespace {

bool Blank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

// "line L, column C" of a byte offset into the text.
std::string Where(std::string_view text, std::ptrdiff_t offset) {
  if (offset < 0) return "";
  int line = 1;
  int column = 1;
  const auto end = std::min<std::size_t>(static_cast<std::size_t>(offset), text.size());
  for (std::size_t i = 0; i < end; ++i) {
    if (text[i] == '\n') {
      ++line;
      column = 1;
    } else if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) {
      ++column;  // count characters, not UTF-8 continuation bytes
    }
  }
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

class Reader {
 public:
  Reader(std::string_view xml, const std::string& source) : xml_(xml), source_(source) {}

  [[noreturn]] void Fail(pugi::xml_node node, const std::string& message) const {
    // An element's offset is that of its name; the place shown is its '<'.
    const std::ptrdiff_t offset = node.offset_debug();
    const std::string where = node ? Where(xml_, offset > 0 ? offset - 1 : offset) : "";
    throw Error(source_ + (where.empty() ? "" : ": " + where) + ": " + message);
  }

  std::string Text(pugi::xml_node parent, const char* name) const {
    return NodeText(parent.child(name));
  }

  // `fallback` when the element is absent or empty.
  bool Flag(pugi::xml_node parent, const char* name, bool fallback = false) const {
    const pugi::xml_node node = parent.child(name);
    const std::string text = NodeText(node);
    if (text.empty()) return fallback;
    if (text == "0") return false;
    if (text == "1") return true;
    Fail(node, std::string(name) + " is '" + text + "', not 1 or 0");
  }

  // A whole number in [low, high]; `fallback` when the element is absent or empty.
  int Number(pugi::xml_node parent, const char* name, int low, int high, int fallback,
             const std::string& meaning) const {
    const pugi::xml_node node = parent.child(name);
    const std::string text = NodeText(node);
    if (text.empty()) return fallback;
    const std::optional<double> value = StrictNumber(text);
    if (!value || *value != static_cast<int>(*value) || *value < low || *value > high) {
      Fail(node, std::string(name) + " is '" + text + "', not " + meaning);
    }
    return static_cast<int>(*value);
  }

 private:
  std::string_view xml_;
  const std::string& source_;
};

}  // namespace

bool ReportDefinition::TotalsRow() const {
  return totals && std::any_of(columns.begin(), columns.end(),
                               [](const ReportColumn& c) { return c.total; });
}

bool ReportDefinition::AveragesRow() const {
  return averages && std::any_of(columns.begin(), columns.end(),
                                 [](const ReportColumn& c) { return c.average; });
}

int ReportDefinition::GroupColumn() const {
  if (!grouped || group_report_field.empty()) return -1;
  const std::string key = ToUpper(group_report_field);
  for (std::size_t c = 0; c < columns.size(); ++c) {
    if (ToUpper(columns[c].report_field) == key) return static_cast<int>(c);
  }
  return -1;
}

ReportDefinition ParseReportDefinition(std::string_view xml, const std::string& source) {
  pugi::xml_document doc;
  const pugi::xml_parse_result parsed = doc.load_buffer(xml.data(), xml.size());
  if (!parsed) {
    throw Error(source + ": " + Where(xml, parsed.offset) + ": " + parsed.description());
  }
  const Reader reader(xml, source);
  const pugi::xml_node root = doc.document_element();
  if (std::string_view(root.name()) != "CustomReport") {
    reader.Fail(root, "the root element is <" + std::string(root.name()) +
                          ">, not <CustomReport>: this is no report definition");
  }

  ReportDefinition def;
  def.source = source;
  def.name = reader.Text(root, "Name");
  def.data_set = reader.Text(root, "DataSet");
  def.statement = reader.Text(root, "Statement");
  if (Blank(def.statement)) {
    reader.Fail(root.child("Statement") ? root.child("Statement") : root,
                "the report has no Statement");
  }
  def.grouped = reader.Flag(root, "Grouped");
  if (def.grouped) {
    def.group_field = reader.Text(root, "GroupField");
    def.group_report_field = reader.Text(root, "GroupReportField");
    def.group_format = reader.Text(root, "GroupFormat");
    def.group_title = reader.Text(root, "GroupTitle");
    def.group_statement = reader.Text(root, "GroupStatement");
    if (Blank(def.group_statement)) {
      reader.Fail(root, "the report is grouped but has no GroupStatement");
    }
  }

  for (pugi::xml_node column : root.child("Columns").children("Column")) {
    ReportColumn c;
    c.title = reader.Text(column, "Title");
    c.field = reader.Text(column, "Field");
    c.report_field = reader.Text(column, "ReportField");
    c.alignment = reader.Text(column, "Alignment");
    c.format = reader.Text(column, "Format");
    c.width = reader.Number(column, "Width", 0, 1000000, 1440, "a width in twips");
    if (c.width == 0) c.width = 1440;
    if (c.alignment.empty()) c.alignment = IsNumericFormat(c.format) ? "Right" : "Left";
    // Definitions written before these elements take the setup's rule.
    c.total = reader.Flag(column, "Total", TotalledByFormat(c.format));
    c.average = reader.Flag(column, "Average", AveragedByFormat(c.format));
    def.columns.push_back(std::move(c));
  }
  if (def.columns.empty()) reader.Fail(root, "the report has no Columns/Column");

  for (pugi::xml_node variable : root.child("Variables").children("Variable")) {
    ReportVariable v;
    v.name = reader.Text(variable, "Name");
    v.caption = reader.Text(variable, "Caption");
    v.type = reader.Text(variable, "Type");
    if (v.name.empty()) continue;
    if (v.name[0] != '$') v.name = "$" + v.name;
    def.variables.push_back(std::move(v));
  }

  def.totals = reader.Flag(root, "Totals");
  def.averages = reader.Flag(root, "Averages");
  def.line_count = reader.Flag(root, "LineCount");
  def.multi_line = reader.Flag(root, "MultiLine");
  def.page_size = static_cast<PageSize>(
      reader.Number(root, "PageSize", 0, 3, 0, "0 (Letter), 1 (Legal), 2 (A4) or 3 (Ledger)"));
  def.orientation = static_cast<PageOrientation>(
      reader.Number(root, "PageOrientation", 0, 1, 0, "0 (Portrait) or 1 (Landscape)"));
  return def;
}

ReportDefinition LoadReportDefinition(const std::string& path) {
  // A folder opens as an empty stream on Linux: named before it reads as bad XML.
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) {
    throw Error(path + ": the report definition cannot be opened: it is a folder");
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    throw Error(path + ": the report definition cannot be opened: " +
                (std::filesystem::exists(path, ignored) ? "it cannot be read"
                                                        : "there is no such file"));
  }
  std::ostringstream text;
  text << in.rdbuf();
  if (in.bad()) throw Error(path + ": the report definition cannot be read");
  return ParseReportDefinition(text.str(), path);
}

}  // namespace cvve::reportengine
