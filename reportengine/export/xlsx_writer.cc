#include "reportengine/export/xlsx_writer.h"

#include <xlsxwriter.h>

#include <QString>
#include <array>
#include <filesystem>
#include <memory>

#include "base/error.h"
#include "reportengine/export/sheet_rows.h"

namespace cvve::reportengine {

namespace {

constexpr double kTwipsPerCharacter = 15.0 * 7;  // a character of Calibri 11 is 7 px at 96 dpi
constexpr double kMinWidth = 6;                  // characters

struct WorkbookCloser {
  void operator()(lxw_workbook* workbook) const { workbook_close(workbook); }
};

// The formats of the sheet: by the cell's number style, regular and bold.
class Formats {
 public:
  explicit Formats(lxw_workbook* workbook) {
    for (int bold = 0; bold < 2; ++bold) {
      for (std::size_t style = 0; style < kStyles; ++style) {
        lxw_format* format = workbook_add_format(workbook);
        if (bold != 0) format_set_bold(format);
        if (kPatterns[style][0] != '\0') format_set_num_format(format, kPatterns[style]);
        formats_[static_cast<std::size_t>(bold)][style] = format;
      }
    }
  }

  lxw_format* Of(const SheetCell& cell, bool bold) const {
    return formats_[bold ? 1 : 0][Style(cell)];
  }
  lxw_format* Plain(bool bold) const { return formats_[bold ? 1 : 0][0]; }

 private:
  static constexpr std::size_t kStyles = 6;
  static constexpr std::array<const char*, kStyles> kPatterns = {
      "", "$#,##0.00", "#,##0.00", "0", "0.00", "mm/dd/yyyy"};

  static std::size_t Style(const SheetCell& cell) {
    if (cell.type == SheetCell::Type::kDate) return 5;
    if (cell.type != SheetCell::Type::kNumber) return 0;
    switch (cell.kind) {
      case ValueKind::kCurrency:
        return 1;
      case ValueKind::kInteger:
        return cell.average ? 4 : 3;
      default:
        return 2;
    }
  }

  std::array<std::array<lxw_format*, kStyles>, 2> formats_{};
};

void Check(lxw_error error, const std::string& path) {
  if (error != LXW_NO_ERROR) throw Error("cannot write " + path + ": " + lxw_strerror(error));
}

}  // namespace

std::string SheetName(const std::string& report_name) {
  QString name = QString::fromStdString(report_name);
  static const QString kNotInName = QStringLiteral("[]:*?/\\");
  for (QChar& c : name) {
    if (kNotInName.contains(c)) c = QLatin1Char('-');
  }
  name = name.trimmed();
  // A sheet name may not begin or end with an apostrophe.
  while (name.startsWith(QLatin1Char('\''))) name.remove(0, 1);
  while (name.endsWith(QLatin1Char('\''))) name.chop(1);
  if (name.size() > 31) name.truncate(31);
  if (name.size() > 0 && name.back().isHighSurrogate()) name.chop(1);
  name = name.trimmed();
  return name.isEmpty() ? std::string("Report") : name.toStdString();
}

namespace {

void WriteWorkbook(const ReportDefinition& def, const ReportData& data, const std::string& path) {
  const ReportSheet sheet(def, data);
  lxw_workbook_options options{};
  options.constant_memory = LXW_TRUE;  // rows go straight to disk: long reports stay small
  std::unique_ptr<lxw_workbook, WorkbookCloser> workbook(
      workbook_new_opt(path.c_str(), &options));
  if (!workbook) throw Error("cannot write " + path);
  const std::string name = SheetName(def.name);
  lxw_worksheet* worksheet = workbook_add_worksheet(workbook.get(), name.c_str());
  if (worksheet == nullptr) throw Error("cannot write " + path + ": no sheet '" + name + "'");
  const Formats formats(workbook.get());

  const std::vector<SheetColumn>& columns = sheet.Columns();
  for (std::size_t c = 0; c < columns.size(); ++c) {
    const double width = std::max(kMinWidth, columns[c].width / kTwipsPerCharacter);
    worksheet_set_column(worksheet, static_cast<lxw_col_t>(c), static_cast<lxw_col_t>(c), width,
                         nullptr);
  }
  worksheet_freeze_panes(worksheet, 1, 0);
  for (std::size_t c = 0; c < columns.size(); ++c) {
    Check(worksheet_write_string(worksheet, 0, static_cast<lxw_col_t>(c),
                                 columns[c].title.toStdString().c_str(), formats.Plain(true)),
          path);
  }

  lxw_row_t r = 0;
  std::string text;
  sheet.ForEachRow([&](const SheetRow& row) {
    ++r;
    const bool bold = row.kind != SheetRowKind::kData;
    for (std::size_t c = 0; c < row.cells.size(); ++c) {
      const SheetCell& cell = row.cells[c];
      const auto col = static_cast<lxw_col_t>(c);
      lxw_format* format = formats.Of(cell, bold);
      switch (cell.type) {
        case SheetCell::Type::kNumber:
          Check(worksheet_write_number(worksheet, r, col, cell.number, format), path);
          break;
        case SheetCell::Type::kDate: {
          lxw_datetime date{cell.date.year(), cell.date.month(), cell.date.day(), 0, 0, 0};
          Check(worksheet_write_datetime(worksheet, r, col, &date, format), path);
          break;
        }
        case SheetCell::Type::kText:
          text = cell.text.toStdString();
          Check(worksheet_write_string(worksheet, r, col, text.c_str(), format), path);
          break;
        case SheetCell::Type::kEmpty:
          if (bold) worksheet_write_blank(worksheet, r, col, format);
          break;
      }
    }
  });
  Check(workbook_close(workbook.release()), path);
}

}  // namespace

void WriteXlsxFile(const ReportDefinition& def, const ReportData& data, const std::string& path) {
  try {
    WriteWorkbook(def, data, path);
  } catch (...) {
    // The workbook is closed (and so written) on the way out: what is there
    // is no whole report.
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
    throw;
  }
}

}  // namespace cvve::reportengine
