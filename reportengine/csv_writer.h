#pragma once
// A report's rows as CSV (RFC 4180, UTF-8): a header row of the column
// titles, then the formatted values; a grouped report has the group column
// first.
#include <QString>
#include <ostream>

#include "reportengine/language/report_definition.h"
#include "reportengine/report_runner.h"

namespace cvve::reportengine {

void WriteCsv(const ReportDefinition& def, const ReportData& data, std::ostream& out);
// Throws cvve::Error when the file cannot be written.
void WriteCsvFile(const ReportDefinition& def, const ReportData& data, const std::string& path);

}  // namespace cvve::reportengine
