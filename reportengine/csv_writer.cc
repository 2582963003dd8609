#include "reportengine/csv_writer.h"

#include <fstream>

#include "base/error.h"

namespace cvve::reportengine {

namespace {

void Field(std::ostream& out, const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) {
    out << text;
    return;
  }
  out << '"';
  for (char c : text) {
    if (c == '"') out << '"';
    out << c;
  }
  out << '"';
}

}  // namespace

void WriteCsv(const ReportDefinition& def, const ReportData& data, std::ostream& out) {
  const std::size_t width = def.columns.size();
  bool first = true;
  auto separator = [&] {
    if (!first) out << ',';
    first = false;
  };
  if (def.grouped) {
    separator();
    Field(out, def.group_title.empty() ? std::string("Group") : def.group_title);
  }
  for (const ReportColumn& column : def.columns) {
    separator();
    Field(out, column.title);
  }
  out << "\r\n";
  for (const ReportGroup& group : data.groups) {
    const std::string group_value = group.display.toStdString();
    for (std::size_t start = 0; start + width <= group.cells.size() && width > 0; start += width) {
      first = true;
      if (def.grouped) {
        separator();
        Field(out, group_value);
      }
      for (std::size_t c = 0; c < width; ++c) {
        separator();
        Field(out, group.cells[start + c].toStdString());
      }
      out << "\r\n";
    }
  }
}

void WriteCsvFile(const ReportDefinition& def, const ReportData& data, const std::string& path) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) throw Error("cannot write " + path);
  WriteCsv(def, data, out);
  out.flush();
  if (!out) throw Error("cannot write " + path);
}

}  // namespace cvve::reportengine
