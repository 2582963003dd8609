#pragma once
// The statements built from the profile on screen. None changes a control or
// any state. Failures go to the caller as cvve::Error: used columns whose
// sort fields are all empty or "$"-led, a checked filter whose group number
// is outside 0..100, a checked filter whose tag has fewer than five fields.
#include <array>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "ui/list_view.h"
#include "viewfiles/document_cursor.h"

namespace cvve {

class frmAcctViewEdit;

// The column definitions' texts the statements have asked for, kept for the
// statements of many profiles. The editor never changes the setup file's
// records in place; another setup file (or the same loaded again) empties it.
class ColumnMemo {
 public:
  // ColumnAttributeOf(ed, data_set, column, element), read once.
  const std::string& Attribute(frmAcctViewEdit& ed, const std::string& data_set,
                               const std::string& column, const char* element);

 private:
  DocumentStamp setup_;
  std::string key_;  // reused: data set, column and element, NUL-separated
  std::unordered_map<std::string, std::string> texts_;
};

// What the statements read of a loaded profile: the controls as the load
// left them (StatementInputsOf), or the same values taken straight from the
// profile's record without filling the controls. The editor gives the column
// definitions, the data sets' templates and the prompter either way.
struct StatementInputs {
  frmAcctViewEdit* ed = nullptr;
  std::string data_set;  // cmbDataSet
  const std::vector<std::string>* used_columns = nullptr;  // lstUsedColumns
  // lstFilters' columns and rows; only the checked rows are read.
  const std::vector<ui::ListColumn>* filter_columns = nullptr;
  const std::vector<ui::ListItem>* filter_rows = nullptr;
  bool advanced = false;                        // the advanced filter option is set
  const std::string* data_set_sql = nullptr;    // DataSetSQL
  std::array<std::string, 2> sort, direction;  // cmbSort and cmbSortASCDESC
  bool group = false;                           // chkSortGroup
  ColumnMemo* columns = nullptr;  // when given, column definitions are read through it
};
// The controls' values; the pointers point into `ed`.
StatementInputs StatementInputsOf(frmAcctViewEdit& ed);

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
// The same from given inputs, with the same messages.
ProfileStatements BuildProfileStatements(const StatementInputs& in);
// The report engine's name of a field: table prefixes dropped, "INV_INFO." put in front.
std::string QualifyReportField(const std::string& field);
// The template of the data set chosen in cmbDataSet as the setup file gives
// it; DataSetSQL when the data set is not found there.
std::string DataSetTemplate(frmAcctViewEdit& ed);

}  // namespace cvve
