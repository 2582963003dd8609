#pragma once
// A report as CSV (RFC 4180, UTF-8, CRLF). The values form (the default) is
// for spreadsheets: a byte-order mark so that they read UTF-8, the rows of
// the report's spreadsheet (sheet_rows.h) with plain numbers and ISO dates.
// The display form is the report's text as it prints, the group value first
// in a grouped report, and no summary rows.
#include <ostream>
#include <string>

#include "reportengine/language/report_definition.h"
#include "reportengine/report_runner.h"

namespace cvve::reportengine {

enum class CsvForm { kValues, kDisplay };

void WriteCsv(const ReportDefinition& def, const ReportData& data, std::ostream& out,
              CsvForm form = CsvForm::kValues);
// Throws cvve::Error when the file cannot be written.
void WriteCsvFile(const ReportDefinition& def, const ReportData& data, const std::string& path,
                  CsvForm form = CsvForm::kValues);

}  // namespace cvve::reportengine
