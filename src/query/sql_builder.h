#pragma once
// The statements built from the profile on screen. None changes the editor;
// failures (no usable field, a group outside 0..100, a short tag) throw
// cvve::Error to the caller.
#include <string>

namespace cvve {

class frmAcctViewEdit;

std::string BuildFieldList(frmAcctViewEdit& ed);
std::string BuildWhereList(frmAcctViewEdit& ed);
std::string BuildViewSQL(frmAcctViewEdit& ed, bool forceTemplate);
std::string BuildReportSQL(frmAcctViewEdit& ed, bool forceTemplate);
// The report engine's name of a field: table prefixes dropped, "INV_INFO." put in front.
std::string QualifyReportField(const std::string& field);

}  // namespace cvve
