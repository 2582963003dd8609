#pragma once
// A report run from the window: the statements run on a BackgroundRunner so
// that the window keeps drawing, with a progress dialog (after a moment)
// whose Cancel stops the statement at the database.
#include <string>

#include "reportengine/guard/limits.h"
#include "reportengine/report_runner.h"

class QWidget;

namespace cvve::reportengine {

// As RunReport, on a connection of its own to `url` off the UI thread. The
// variables are checked first, in the caller's thread. Throws what RunReport
// throws (BadVariable, GuardError, cvve::Error, Cancelled).
ReportData RunReportInBackground(const ReportDefinition& def, const RunSettings& settings,
                                 const std::string& url, const QueryLimits& limits,
                                 QWidget* parent);

}  // namespace cvve::reportengine
