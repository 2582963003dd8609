#pragma once
// Writes the profile on screen as a report definition (.cvr) for the report
// engine, in the format of docs/cvr-format.md, and the rule for which
// profile names can become report file names.
#include <string>

namespace cvve {

class frmAcctViewEdit;
class DocumentCursor;

// Writes the file atomically (the old file stays whole on failure). Any
// failure, in building the statements or in writing, shows "Error in
// SaveReportFile: " and the description, and returns false.
bool SaveReportFile(frmAcctViewEdit& ed, const std::string& path);
// Builds the definition into `report` without writing it; a failure shows
// the same message and returns false.
bool BuildReportFile(frmAcctViewEdit& ed, DocumentCursor& report);

// The view statement turned into an expression of the report language:
// quoted, every '"' doubled, every "#@!$NAME!@#" opened as `" + $NAME + "`.
std::string ViewStatementExpression(const std::string& view_sql);

// False for a name that cannot be a file name in the Custom Reports folder:
// empty, containing "/" or NUL, starting with "." (so "." and ".." too), or
// longer than 200 bytes.
bool IsUsableReportName(const std::string& name);
// Refuses such a name with a message; true when the name is usable.
bool CheckReportName(frmAcctViewEdit& ed, const std::string& name);

}  // namespace cvve
