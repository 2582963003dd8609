#include "reportengine/export/csv_writer.h"

#include <fstream>

#include "base/error.h"
#include "reportengine/export/sheet_rows.h"

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

// Fields separated by commas, the row ended by CRLF.
class CsvRow {
 public:
  explicit CsvRow(std::ostream& out) : out_(out) {}
  ~CsvRow() { out_ << "\r\n"; }
  CsvRow(const CsvRow&) = delete;
  CsvRow& operator=(const CsvRow&) = delete;
  void Add(const std::string& text) {
    if (!first_) out_ << ',';
    first_ = false;
    Field(out_, text);
  }
  void Add(const QString& text) { Add(text.toStdString()); }

 private:
  std::ostream& out_;
  bool first_ = true;
};

void WriteDisplay(const ReportDefinition& def, const ReportData& data, std::ostream& out) {
  const std::size_t width = def.columns.size();
  {
    CsvRow header(out);
    if (def.grouped) header.Add(def.group_title.empty() ? std::string("Group") : def.group_title);
    for (const ReportColumn& column : def.columns) header.Add(column.title);
  }
  for (const ReportGroup& group : data.groups) {
    const std::string group_value = group.display.toStdString();
    for (std::size_t start = 0; start + width <= group.cells.size() && width > 0; start += width) {
      CsvRow row(out);
      if (def.grouped) row.Add(group_value);
      for (std::size_t c = 0; c < width; ++c) row.Add(group.cells[start + c]);
    }
  }
}

// A spreadsheet opening the file runs a text cell that starts like a formula
// (=HYPERLINK(...), +cmd|...), and these texts are typed by dealership staff
// and customers. An apostrophe in front makes the spreadsheet keep it as
// text. Numbers are written plainly and never take this path.
QString GuardedText(const QString& text) {
  static const QString kFormulaStart = QStringLiteral("=+-@\t\r");
  if (!text.isEmpty() && kFormulaStart.contains(text.front())) return u'\'' + text;
  return text;
}

QString ValueText(const SheetCell& cell) {
  switch (cell.type) {
    case SheetCell::Type::kNumber:
      return PlainNumber(cell);
    case SheetCell::Type::kDate:
      return cell.date.toString(Qt::ISODate);
    case SheetCell::Type::kText:
      return GuardedText(cell.text);
    case SheetCell::Type::kEmpty:
      break;
  }
  return QString();
}

void WriteValues(const ReportDefinition& def, const ReportData& data, std::ostream& out) {
  out << "\xEF\xBB\xBF";
  const ReportSheet sheet(def, data);
  {
    CsvRow header(out);
    for (const SheetColumn& column : sheet.Columns()) header.Add(column.title);
  }
  sheet.ForEachRow([&out](const SheetRow& row) {
    CsvRow line(out);
    for (const SheetCell& cell : row.cells) line.Add(ValueText(cell));
  });
}

}  // namespace

void WriteCsv(const ReportDefinition& def, const ReportData& data, std::ostream& out,
              CsvForm form) {
  if (form == CsvForm::kDisplay) {
    WriteDisplay(def, data, out);
  } else {
    WriteValues(def, data, out);
  }
}

void WriteCsvFile(const ReportDefinition& def, const ReportData& data, const std::string& path,
                  CsvForm form) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) throw Error("cannot write " + path);
  WriteCsv(def, data, out, form);
  out.flush();
  if (!out) throw Error("cannot write " + path);
}

}  // namespace cvve::reportengine
