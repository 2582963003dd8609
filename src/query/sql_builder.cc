#include "query/sql_builder.h"

#include <array>
#include <cstdint>
#include <exception>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "base/error.h"
#include "base/text.h"
#include "component/frm_acct_view_edit.h"
#include "ui/prompter.h"
#include "viewfiles/document_cursor.h"
#include "viewfiles/setup_file.h"

namespace cvve {

namespace {

constexpr int kGroupSlots = 101;  // groups 0 to 100

bool AdvancedFilterInForce(const frmAcctViewEdit& ed, bool forceTemplate) {
  return ed.optFilter.Value(1) && !forceTemplate;
}

// A filter value as it travels inside a stored statement: "<" and ">" would
// be taken for the report language's variable marks.
std::string EscapeValue(const std::string& value) {
  return ReplaceAll(ReplaceAll(value, ">", "!@#"), "<", "#@!");
}

// Fills the placeholders every statement shares, in their fixed order.
std::string FillCommon(std::string statement, const std::string& fields, const std::string& where,
                       const std::string& order) {
  statement = ReplaceAll(statement, "%FIELDLIST%", fields);
  statement = ReplaceAll(statement, "%WHERELIST%", where);
  statement = ReplaceAll(statement, "%ANDWHERELIST%", where.empty() ? "" : " AND " + where);
  statement = ReplaceAll(statement, "%ORDERLIST%", order);
  return statement;
}

// The field list or the where list as one statement asks for it.
using Part = std::function<std::string()>;

// A part built once and handed out again, its failure included.
class KeptPart {
 public:
  explicit KeptPart(Part build) : build_(std::move(build)) {}
  std::string operator()() {
    if (!done_) {
      try {
        text_ = build_();
      } catch (...) {
        error_ = std::current_exception();
      }
      done_ = true;
    }
    if (error_) std::rethrow_exception(error_);
    return text_;
  }

 private:
  Part build_;
  bool done_ = false;
  std::string text_;
  std::exception_ptr error_;
};

std::string ViewSQL(frmAcctViewEdit& ed, bool forceTemplate, const Part& field_list,
                    const Part& where_list);
std::string ReportSQL(frmAcctViewEdit& ed, bool forceTemplate, const Part& field_list,
                      const Part& where_list);

BuiltStatement Built(const Part& build) {
  try {
    return {build(), false};
  } catch (const std::exception& e) {
    return {e.what(), true};
  }
}

}  // namespace

// DataSetSQL held the template once, but a loaded profile or the advanced
// edit has replaced it since; it serves only when the data set is gone.
std::string DataSetTemplate(frmAcctViewEdit& ed) {
  XmlNode data_set = FindDataSet(ed, ed.cmbDataSet.Text());
  return data_set ? ChildText(data_set, "SQL") : ed.DataSetSQL;
}

std::string BuildFieldList(frmAcctViewEdit& ed) {
  if (ed.lstUsedColumns.ListCount() == 0) {
    ed.Prompt().MsgBox("You have not selected any fields/columns.", ui::Buttons::kOk,
                       ui::Icon::kCritical, "No Fields/Columns Selected");
    return "";
  }
  std::string fields;
  for (const std::string& column : ed.lstUsedColumns.Items()) {
    const std::string sort_field = ColumnSortField(ed, column);
    // "$"-led fields are computed by the report; the database has no such column.
    if (!sort_field.empty() && sort_field[0] != '$') fields += "," + sort_field;
  }
  // All but the leading comma; with no field at all there is nothing to cut.
  if (fields.empty()) throw Error("Invalid procedure call or argument");
  return fields.substr(1);
}

std::string BuildWhereList(frmAcctViewEdit& ed) {
  const ui::ListView& list = ed.lstFilters;
  std::array<std::string, kGroupSlots> groups;
  for (int row = 1; row <= list.ItemCount(); ++row) {
    const ui::ListItem& item = list.Item(row);
    if (!item.checked) continue;
    const std::vector<std::string> fields = Split(item.tag, '|');
    if (fields.size() < 5) throw Error("Subscript out of range");
    std::string condition = fields[3];
    const std::int64_t group = RoundedVal(fields[4]);
    for (int position = 1; position <= list.ColumnCount(); ++position) {
      const std::string& key = list.Column(position).key;
      if (key == "Data1") {
        condition = ReplaceAll(condition, "%DATA1%", EscapeValue(list.SubItem(row, position - 1)));
      } else if (key == "Data2") {
        condition = ReplaceAll(condition, "%DATA2%", EscapeValue(list.SubItem(row, position - 1)));
      }
    }
    if (group < 0 || group >= kGroupSlots) throw Error("Subscript out of range");
    std::string& slot = groups[static_cast<std::size_t>(group)];
    slot += slot.empty() ? condition : " OR " + condition;
  }
  std::string where;
  for (const std::string& slot : groups) {
    if (slot.empty()) continue;
    where += where.empty() ? "(" + slot + ")" : " AND (" + slot + ")";
  }
  // LESSEQUAL first, or it would leave a stray "EQUAL" behind.
  where = ReplaceAll(where, "LESSEQUAL", "<=");
  where = ReplaceAll(where, "LESSTHAN", "<");
  return where;
}

std::string BuildViewSQL(frmAcctViewEdit& ed, bool forceTemplate) {
  return ViewSQL(
      ed, forceTemplate, [&] { return BuildFieldList(ed); }, [&] { return BuildWhereList(ed); });
}

std::string BuildReportSQL(frmAcctViewEdit& ed, bool forceTemplate) {
  return ReportSQL(
      ed, forceTemplate, [&] { return BuildFieldList(ed); }, [&] { return BuildWhereList(ed); });
}

ProfileStatements BuildProfileStatements(frmAcctViewEdit& ed) {
  const Part field_list = [&] { return BuildFieldList(ed); };
  const Part where_list = [&] { return BuildWhereList(ed); };
  // Without used columns the field list shows its message each time.
  const bool keep_fields = ed.lstUsedColumns.ListCount() > 0;
  KeptPart kept_fields(field_list);
  KeptPart kept_where(where_list);
  const Part fields = keep_fields ? Part(std::ref(kept_fields)) : field_list;
  const Part where = std::ref(kept_where);
  ProfileStatements built;
  built.field_list = Built(fields);
  built.where_list = Built(where);
  built.view_sql = Built([&] { return ViewSQL(ed, false, fields, where); });
  built.report_sql = Built([&] { return ReportSQL(ed, false, fields, where); });
  return built;
}

namespace {

std::string ViewSQL(frmAcctViewEdit& ed, bool forceTemplate, const Part& field_list,
                    const Part& where_list) {
  if (AdvancedFilterInForce(ed, forceTemplate)) return "CQ:" + ed.DataSetSQL;
  const std::string fields = field_list();
  const std::string where = where_list();
  const std::string first_sort = ed.cmbSort[0].Text();
  const std::string second_sort = ed.cmbSort[1].Text();
  // Built even from an empty first sort picker.
  std::string order =
      " ORDER BY " + ColumnSortField(ed, first_sort) + " " + ed.cmbSortASCDESC[0].Text();
  // Grouping orders by the first sort column only.
  if (!ed.chkSortGroup.Checked() && !first_sort.empty() && !second_sort.empty()) {
    order += ", " + ColumnSortField(ed, second_sort) + " " + ed.cmbSortASCDESC[1].Text();
  }
  std::string statement = FillCommon(DataSetTemplate(ed), fields, where, order);
  statement = ReplaceAll(statement, "%GROUPING%", "");
  statement = ReplaceAll(statement, "%ANDGROUPING%", "");
  return "CQ:" + statement;
}

std::string ReportSQL(frmAcctViewEdit& ed, bool forceTemplate, const Part& field_list,
                      const Part& where_list) {
  std::string statement;
  if (!AdvancedFilterInForce(ed, forceTemplate)) {
    const std::string fields = field_list();
    std::string where = where_list();
    // Undo the value escapes, then break the string around every "<...>" so
    // a "<$NAME>" value becomes the report variable $NAME. Operators made
    // from LESSTHAN and LESSEQUAL are broken as well; that is the design.
    where = ReplaceAll(where, "#@!", "<");
    where = ReplaceAll(where, "!@#", ">");
    where = ReplaceAll(where, "<", "\" + ");
    where = ReplaceAll(where, ">", " + \"");

    // The first sort column is the group key, the second the order.
    const std::string key_column = ed.cmbSort[0].Text();
    const std::string format = ColumnFieldFormat(ed, key_column);
    const std::string mark = format == "String" ? "'" : format == "Date" ? "#" : "";
    const std::string key_field = ColumnSortField(ed, key_column);
    const std::string report_name = QualifyReportField(key_field);
    const std::string grouping =
        key_field + "=" + mark + "\" + FXA([" + report_name + "]) + \"" + mark + " ";
    const std::string order = " ORDER BY " + ColumnSortField(ed, ed.cmbSort[1].Text()) + " " +
                              ed.cmbSortASCDESC[1].Text();

    statement = FillCommon(DataSetTemplate(ed), fields, where, order);
    statement = ReplaceAll(statement, "%GROUPING%", where.empty() ? grouping : " AND " + grouping);
    statement = ReplaceAll(statement, "%ANDGROUPING%", " AND " + grouping);
  }
  return "\"CQ:" + statement + "\"";
}

}  // namespace

std::string QualifyReportField(const std::string& field) {
  static constexpr const char* kPrefixes[] = {"ACCTS.",     "ACCT_HISTORY.", "CUST_INFO.",
                                              "PTP.",       "NOTES.",        "DEAL_INFO.",
                                              "FIN_INFO.",  "INV_INFO."};
  std::string name = field;
  for (const char* prefix : kPrefixes) name = ReplaceAll(name, prefix, "");
  return "INV_INFO." + name;
}

}  // namespace cvve
