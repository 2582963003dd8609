// Spreadsheet output: CSV bytes in both forms, and the XLSX workbook read
// back from its XML (a workbook is a zip of XML parts; unzip reads them).
#include <gtest/gtest.h>

#include <QDate>
#include <QFile>
#include <map>
#include <regex>
#include <sstream>

#include "base/error.h"
#include "report_test_support.h"
#include "reportengine/export/csv_writer.h"
#include "reportengine/export/sheet_rows.h"
#include "reportengine/export/xlsx_writer.h"

namespace cvve::reportengine {
namespace {

using testing::ActiveByCollector;
using testing::Cents;
using testing::CvrShape;
using testing::HaveTool;
using testing::Output;
using testing::Produce;
using testing::RunCommand;
using testing::SmallDatabase;
using testing::SqlRows;
using testing::TempFolder;

const char kBom[] = "\xEF\xBB\xBF";

// Two rows of every kind of value, with totals and averages.
CvrShape Mixed() {
  CvrShape shape;
  shape.name = "Mixed";
  shape.statement =
      R"("CQ:SELECT 'Müller', 1234.5, '2026-01-31', 7, 'say ""hi""' )"
      R"(UNION ALL SELECT 'a,b', -2.25, NULL, 3, 'two' || char(10) || 'lines'")";
  shape.columns = {{"Name", "X.A", "String"},
                   {"Amount, $", "X.B", "Currency", "Right"},
                   {"Due", "X.C", "Date"},
                   {"Days", "X.D", "Integer", "Right"},
                   {"Note", "X.E", "String"}};
  shape.totals = shape.averages = shape.line_count = true;
  return shape;
}

std::string Csv(const Output& out, CsvForm form) {
  std::ostringstream text;
  WriteCsv(out.def, out.data, text, form);
  return text.str();
}

TEST(ReportExportTest, CsvValuesAndDisplayForms) {
  TempFolder folder;
  const Output mixed = Produce(Mixed(), folder);
  EXPECT_EQ(Csv(mixed, CsvForm::kValues),
            std::string(kBom) +
                "Summary,Name,\"Amount, $\",Due,Days,Note\r\n"
                ",Müller,1234.50,2026-01-31,7,\"say \"\"hi\"\"\"\r\n"
                ",\"a,b\",-2.25,,3,\"two\nlines\"\r\n"
                "Total,,1232.25,,,\r\n"
                "Average,,616.13,,5,\r\n");
  // The old form: the report's text, no mark, no summary rows.
  EXPECT_EQ(Csv(mixed, CsvForm::kDisplay),
            "Name,\"Amount, $\",Due,Days,Note\r\n"
            "Müller,\"$1,234.50\",01/31/2026,7,\"say \"\"hi\"\"\"\r\n"
            "\"a,b\",-$2.25,,3,\"two\nlines\"\r\n");

  // Without summary rows there is no marker column.
  CvrShape plain = Mixed();
  plain.name = "Plain";
  plain.totals = plain.averages = false;
  EXPECT_EQ(Csv(Produce(plain, folder), CsvForm::kValues)
                .rfind(std::string(kBom) + "Name,\"Amount, $\",Due,Days,Note\r\nMüller", 0),
            0u);
}

// Text that a spreadsheet would run as a formula is kept as text in the
// values form; numbers, even negative ones, and the display form are not
// touched.
TEST(ReportExportTest, FormulaLikeTextIsKeptAsText) {
  TempFolder folder;
  CvrShape shape;
  shape.name = "Formulas";
  shape.statement =
      R"("CQ:SELECT '=HYPERLINK(""http://x"")', -3 UNION ALL SELECT '+1', 2 )"
      R"(UNION ALL SELECT '-a', 1 UNION ALL SELECT '@SUM(A1)', 0 UNION ALL SELECT 'a=b', 5")";
  shape.columns = {{"Note", "X.A", "String"}, {"Days", "X.B", "Integer", "Right"}};
  const Output out = Produce(shape, folder);
  EXPECT_EQ(Csv(out, CsvForm::kValues), std::string(kBom) +
                                            "Note,Days\r\n"
                                            "\"'=HYPERLINK(\"\"http://x\"\")\",-3\r\n"
                                            "'+1,2\r\n"
                                            "'-a,1\r\n"
                                            "'@SUM(A1),0\r\n"
                                            "a=b,5\r\n");
  EXPECT_EQ(Csv(out, CsvForm::kDisplay)
                .rfind("Note,Days\r\n\"=HYPERLINK(\"\"http://x\"\")\",-3\r\n+1,2\r\n", 0),
            0u);
}

TEST(ReportExportTest, DisplayTextReadsBackAsItsValue) {
  using Type = SheetCell::Type;
  const struct {
    const char* shown;
    ValueKind kind;
    Type type;
    const char* plain;  // PlainNumber, or the ISO date, or the text
  } cases[] = {
      {"$1,008.80", ValueKind::kCurrency, Type::kNumber, "1008.80"},
      {"-$1,234,567.05", ValueKind::kCurrency, Type::kNumber, "-1234567.05"},
      {"$0.00", ValueKind::kCurrency, Type::kNumber, "0.00"},
      {"n/a", ValueKind::kCurrency, Type::kText, "n/a"},
      {"$-5", ValueKind::kCurrency, Type::kText, "$-5"},
      {"1,234", ValueKind::kNumber, Type::kNumber, "1234"},
      {"12.50", ValueKind::kNumber, Type::kNumber, "12.5"},
      {"12 miles", ValueKind::kNumber, Type::kText, "12 miles"},
      {"-14989", ValueKind::kInteger, Type::kNumber, "-14989"},
      {"01/31/2026", ValueKind::kDate, Type::kDate, "2026-01-31"},
      {"02/30/2026", ValueKind::kDate, Type::kText, "02/30/2026"},
      {"2026-01-31", ValueKind::kDate, Type::kText, "2026-01-31"},
      {"00123", ValueKind::kText, Type::kText, "00123"},
      {"", ValueKind::kCurrency, Type::kEmpty, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.shown);
    const SheetCell cell = CellValue(QString::fromUtf8(c.shown), c.kind);
    EXPECT_EQ(cell.type, c.type);
    const QString plain = cell.type == Type::kNumber ? PlainNumber(cell)
                          : cell.type == Type::kDate ? cell.date.toString(Qt::ISODate)
                                                     : cell.text;
    EXPECT_EQ(plain.toStdString(), c.plain);
  }
}

// Every group's rows, then its totals and averages marked and carrying the
// group value; the report's own at the end.
TEST(ReportExportTest, GroupedCsvHasOneHeaderAndMarkedTotals) {
  TempFolder folder;
  const Output out = Produce(ActiveByCollector(), folder);
  const std::string csv = Csv(out, CsvForm::kValues);
  ASSERT_EQ(csv.rfind(kBom, 0), 0u);
  std::istringstream lines(csv.substr(3));
  std::string line;
  ASSERT_TRUE(std::getline(lines, line));
  EXPECT_EQ(line, "Summary,Collector,Account,Opened,Days Late,Balance\r");
  std::map<std::string, std::string> totals;  // collector -> Balance total
  long long data_rows = 0;
  int headers = 0, grand = 0;
  const std::regex iso(R"(\d{4}-\d{2}-\d{2})");
  while (std::getline(lines, line)) {
    line.pop_back();  // \r
    std::vector<std::string> f;
    std::stringstream fields(line);
    for (std::string field; std::getline(fields, field, ',');) f.push_back(field);
    if (line.back() == ',') f.emplace_back();
    ASSERT_EQ(f.size(), 6u) << line;
    headers += f[2] == "Account";
    if (f[0].empty()) {
      ++data_rows;
      EXPECT_TRUE(std::regex_match(f[3], iso)) << line;
      EXPECT_EQ(f[5].find_first_of("$,"), std::string::npos) << line;
    } else if (f[0] == "Total") {
      totals[f[1]] = f[5];
      EXPECT_TRUE(f[4].empty()) << "days are not summed: " << line;
    } else if (f[0] == "Grand Total") {
      ++grand;
      EXPECT_TRUE(f[1].empty());
      EXPECT_EQ(f[5], Cents(out.data.totals.sum[3]));
    } else {
      EXPECT_TRUE(f[0] == "Average" || f[0] == "Grand Average") << line;
    }
  }
  EXPECT_EQ(headers, 0);
  EXPECT_EQ(grand, 1);
  EXPECT_EQ(data_rows, out.data.RowCount());
  const auto expected = SqlRows(SmallDatabase(),
                                "SELECT Collector, printf('%.2f', SUM(Balance)) FROM ACCTS "
                                "WHERE Status='A' GROUP BY 1");
  ASSERT_EQ(totals.size(), expected.size());
  for (const auto& row : expected) EXPECT_EQ(totals[row[0]], row[1]) << row[0];
}

// A cell of the sheet's XML: its style and type attributes and its value.
struct XmlCell {
  std::string style, type, value;
};

std::map<std::string, XmlCell> SheetCells(const std::string& xml) {
  std::map<std::string, XmlCell> cells;
  const std::regex cell(R"re(<c r="([A-Z]+[0-9]+)"((?: [a-z]+="[^"]*")*)(?:/>|>(.*?)</c>))re");
  const std::regex attribute(R"re( ([a-z]+)="([^"]*)")re");
  const std::regex text(R"re(<(?:v|t)[^>]*>([^<]*)</(?:v|t)>)re");
  for (auto it = std::sregex_iterator(xml.begin(), xml.end(), cell); it != std::sregex_iterator();
       ++it) {
    XmlCell c;
    const std::string attributes = (*it)[2];
    for (auto a = std::sregex_iterator(attributes.begin(), attributes.end(), attribute);
         a != std::sregex_iterator(); ++a) {
      if ((*a)[1] == "s") c.style = (*a)[2];
      if ((*a)[1] == "t") c.type = (*a)[2];
    }
    const std::string body = (*it)[3];
    std::smatch value;
    if (std::regex_search(body, value, text)) c.value = value[1];
    cells[(*it)[1]] = c;
  }
  return cells;
}

TEST(ReportExportTest, XlsxHasTypedCellsFormatsAndAFrozenHeader) {
  if (!HaveTool("unzip")) GTEST_SKIP() << "unzip is not installed";
  TempFolder folder;
  const Output mixed = Produce(Mixed(), folder);
  const std::string path = folder.Path("mixed.xlsx");
  WriteXlsxFile(mixed.def, mixed.data, path);
  std::string sheet, styles, workbook;
  ASSERT_EQ(RunCommand("unzip -p '" + path + "' xl/worksheets/sheet1.xml", &sheet), 0) << sheet;
  ASSERT_EQ(RunCommand("unzip -p '" + path + "' xl/styles.xml", &styles), 0);
  ASSERT_EQ(RunCommand("unzip -p '" + path + "' xl/workbook.xml", &workbook), 0);

  EXPECT_NE(workbook.find("<sheet name=\"Mixed\""), std::string::npos) << workbook;
  EXPECT_TRUE(std::regex_search(sheet, std::regex(R"(<pane [^>]*ySplit="1"[^>]*state="frozen")")))
      << sheet;
  const std::map<std::string, XmlCell> cells = SheetCells(sheet);
  // Styles by number format: the index of the cellXfs entry using it.
  const auto style_of = [&styles](const std::string& code) {
    std::smatch id;
    if (!std::regex_search(styles, id,
                           std::regex("<numFmt numFmtId=\"([0-9]+)\" formatCode=\"" +
                                      std::regex_replace(code, std::regex(R"([$.])"), R"(\$&)") +
                                      "\"/>"))) {
      return std::string("none");
    }
    const std::string xfs = styles.substr(styles.find("<cellXfs"));
    const std::regex xf("<xf [^>]*>");
    std::size_t index = 0;
    for (auto it = std::sregex_iterator(xfs.begin(), xfs.end(), xf);
         it != std::sregex_iterator(); ++it, ++index) {
      if (it->str().find("numFmtId=\"" + id[1].str() + "\"") != std::string::npos &&
          it->str().find("fontId=\"0\"") != std::string::npos) {
        return std::to_string(index);
      }
    }
    return std::string("none");
  };
  const std::string money = style_of("$#,##0.00");
  const std::string date = style_of("mm/dd/yyyy");
  ASSERT_NE(money, "none") << styles;
  ASSERT_NE(date, "none") << styles;

  const int serial = static_cast<int>(QDate(1899, 12, 30).daysTo(QDate(2026, 1, 31)));
  const struct {
    const char* ref;
    const char* type;  // "" a number (a date is one too)
    const char* value;
    std::string style;  // "" not checked
  } expected[] = {
      {"A1", "string", "Summary", ""},  {"C1", "string", "Amount, $", ""},
      {"A2", "", "", "absent"},         {"B2", "string", "Müller", ""},
      {"C2", "", "1234.5", money},      {"D2", "", "", date},
      {"E2", "", "7", ""},              {"C3", "", "-2.25", money},
      {"D3", "", "", "absent"},         {"A4", "string", "Total", ""},
      {"C4", "", "1232.25", ""},        {"E4", "", "", "blank"},
      {"A5", "string", "Average", ""},  {"E5", "", "5", ""},
  };
  for (const auto& e : expected) {
    SCOPED_TRACE(e.ref);
    const auto it = cells.find(e.ref);
    if (e.style == "absent") {
      EXPECT_TRUE(it == cells.end() || it->second.value.empty());
      continue;
    }
    ASSERT_NE(it, cells.end());
    const XmlCell& cell = it->second;
    if (std::string(e.type) == "string") {
      EXPECT_TRUE(cell.type == "inlineStr" || cell.type == "s" || cell.type == "str") << cell.type;
      if (cell.type == "inlineStr") {
        EXPECT_EQ(cell.value, e.value);
      }
    } else {
      EXPECT_EQ(cell.type, "");
      if (e.style == "blank") {
        EXPECT_EQ(cell.value, "");
        continue;
      }
      if (e.style == date) {
        EXPECT_EQ(cell.value, std::to_string(serial));
      } else {
        EXPECT_EQ(cell.value, e.value);
      }
    }
    if (!e.style.empty()) {
      EXPECT_EQ(cell.style, e.style);
    }
  }
}

TEST(ReportExportTest, AWorkbookThatCannotBeWrittenIsNamedAndLeftOut) {
  TempFolder folder;
  const Output mixed = Produce(Mixed(), folder);
  for (const std::string& path :
       {folder.Path("missing/x.xlsx"), folder.Path("")}) {  // no folder; a folder
    SCOPED_TRACE(path);
    try {
      WriteXlsxFile(mixed.def, mixed.data, path);
      ADD_FAILURE() << "written";
    } catch (const Error& e) {
      EXPECT_NE(std::string(e.what()).find("cannot write " + path), std::string::npos)
          << e.what();
    }
  }
  EXPECT_FALSE(QFile::exists(QString::fromStdString(folder.Path("missing/x.xlsx"))));
}

TEST(ReportExportTest, SheetNamesAreWhatASheetMayBeCalled) {
  const struct {
    const char* report;
    const char* sheet;
  } cases[] = {
      {"Past Due Accounts", "Past Due Accounts"},
      {"A/B: [draft]?", "A-B- -draft--"},
      {"'quoted'", "quoted"},
      {"", "Report"},
      {"///", "---"},
      {"A very long report name that goes on and on", "A very long report name that go"},
  };
  for (const auto& c : cases) EXPECT_EQ(SheetName(c.report), c.sheet) << c.report;
}

}  // namespace
}  // namespace cvve::reportengine
