#pragma once
// The statements built from the profile on screen. None changes a control or
// any state. Failures go to the caller as cvve::Error: used columns whose
// sort fields are all empty or "$"-led, a checked filter whose group number
// is outside 0..100, a checked filter whose tag has fewer than five fields.
#include <string>

namespace cvve {

class frmAcctViewEdit;

// The used columns' sort fields joined with "," ("$"-led and empty ones left
// out). No used column: shows "You have not selected any fields/columns."
// and returns "".
std::string BuildFieldList(frmAcctViewEdit& ed);
// The checked filters' conditions, OR-joined within a group and AND-joined
// across groups in ascending group number; "" when nothing is checked.
std::string BuildWhereList(frmAcctViewEdit& ed);
// "CQ:" + the data set's template filled from the controls, or "CQ:" + the
// advanced text (DataSetSQL) when that mode is chosen and the template is
// not forced. The template is the chosen data set's SQL in the setup file
// (DataSetSQL only when the data set is not found there), since a loaded
// profile replaces DataSetSQL with its stored text.
std::string BuildViewSQL(frmAcctViewEdit& ed, bool forceTemplate);
// The grouped report's statement as a report-language string expression:
// "\"CQ:" + statement + "\"", grouped on the first sort column and ordered
// by the second. In advanced mode without forcing, the bare "\"CQ:\"".
std::string BuildReportSQL(frmAcctViewEdit& ed, bool forceTemplate);
// One statement as its builder left it: the text, or what the builder threw.
struct BuiltStatement {
  std::string text;
  bool failed = false;  // then `text` is the error's description
};
struct ProfileStatements {
  BuiltStatement field_list, where_list, view_sql, report_sql;
};
// BuildFieldList, BuildWhereList, BuildViewSQL(ed, false) and
// BuildReportSQL(ed, false), one after the other, with the same results and
// the same messages shown; the field list and the where list, which the view
// and report statements build again, are built once.
ProfileStatements BuildProfileStatements(frmAcctViewEdit& ed);
// The report engine's name of a field: table prefixes dropped, "INV_INFO." put in front.
std::string QualifyReportField(const std::string& field);
// The template of the data set chosen in cmbDataSet as the setup file gives
// it; DataSetSQL when the data set is not found there.
std::string DataSetTemplate(frmAcctViewEdit& ed);

}  // namespace cvve
