#pragma once
// A report as an Excel workbook (XLSX, through libxlsxwriter): one sheet
// with the rows of the report's spreadsheet (sheet_rows.h) as typed cells
// (numbers, dates, text) in the report's number formats, the header row
// frozen, and the totals and averages rows in bold.
#include <string>

#include "reportengine/language/report_definition.h"
#include "reportengine/report_runner.h"

namespace cvve::reportengine {

// Throws cvve::Error naming the file when it cannot be written.
void WriteXlsxFile(const ReportDefinition& def, const ReportData& data, const std::string& path);

// The sheet's name: the report's name without the characters a sheet name
// cannot hold, at most 31 characters; "Report" when nothing is left.
std::string SheetName(const std::string& report_name);

}  // namespace cvve::reportengine
