#pragma once
// Writes the profile on screen as a report definition (.cvr) for the report
// engine. Failures show "Error in SaveReportFile: " and the description.
#include <string>

namespace cvve {

class frmAcctViewEdit;

void SaveReportFile(frmAcctViewEdit& ed, const std::string& path);

}  // namespace cvve
