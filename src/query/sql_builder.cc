#include "query/sql_builder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <functional>
#include <string>
#include <string_view>
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

bool AdvancedFilterInForce(const StatementInputs& in, bool forceTemplate) {
  return in.advanced && !forceTemplate;
}

// A filter value as it travels inside a stored statement: "<" and ">" would
// be taken for the report language's variable marks.
std::string EscapeValue(std::string value);

std::string Attribute(const StatementInputs& in, const std::string& column, const char* element) {
  return in.columns ? in.columns->Attribute(*in.ed, in.data_set, column, element)
                    : ColumnAttributeOf(*in.ed, in.data_set, column, element);
}

std::string SortField(const StatementInputs& in, const std::string& column) {
  return Attribute(in, column, "SortField");
}

// ReplaceAll in place, leaving the text alone when `from` is not in it
// (most placeholders and prefixes are absent from most texts).
void Replace(std::string& text, std::string_view from, std::string_view to) {
  if (text.find(from) != std::string::npos) text = ReplaceAll(text, from, to);
}

std::string EscapeValue(std::string value) {
  Replace(value, ">", "!@#");
  Replace(value, "<", "#@!");
  return value;
}

// Fields 3 (the condition) and 4 (the group) of a filter row's tag, split
// at "|"; a tag of fewer than five fields fails.
std::pair<std::string_view, std::string_view> ConditionAndGroup(std::string_view tag) {
  std::array<std::string_view, 5> fields;
  std::size_t start = 0;
  for (std::size_t n = 0; n < fields.size(); ++n) {
    if (start > tag.size()) throw Error("Subscript out of range");
    const std::size_t bar = std::min(tag.find('|', start), tag.size());
    fields[n] = tag.substr(start, bar - start);
    start = bar + 1;
  }
  return {fields[3], fields[4]};
}

// Fills the placeholders every statement shares, in their fixed order.
std::string FillCommon(std::string statement, const std::string& fields, const std::string& where,
                       const std::string& order) {
  Replace(statement, "%FIELDLIST%", fields);
  Replace(statement, "%WHERELIST%", where);
  if (statement.find("%ANDWHERELIST%") != std::string::npos) {
    statement = ReplaceAll(statement, "%ANDWHERELIST%", where.empty() ? "" : " AND " + where);
  }
  Replace(statement, "%ORDERLIST%", order);
  return statement;
}

// A row's text (0) or sub-item (1..), as the list view hands it out.
const std::string& SubItemOf(const ui::ListItem& item, int sub_item) {
  if (sub_item == 0) return item.text;
  if (sub_item < 0 || sub_item > static_cast<int>(item.sub_items.size())) {
    throw Error("Index out of bounds");
  }
  return item.sub_items[static_cast<std::size_t>(sub_item - 1)];
}

std::string FieldList(const StatementInputs& in) {
  if (in.used_columns->empty()) {
    in.ed->Prompt().MsgBox("You have not selected any fields/columns.", ui::Buttons::kOk,
                           ui::Icon::kCritical, "No Fields/Columns Selected");
    return "";
  }
  std::string fields;
  for (const std::string& column : *in.used_columns) {
    const std::string sort_field = SortField(in, column);
    // "$"-led fields are computed by the report; the database has no such column.
    if (!sort_field.empty() && sort_field[0] != '$') {
      fields += ',';
      fields += sort_field;
    }
  }
  // All but the leading comma; with no field at all there is nothing to cut.
  if (fields.empty()) throw Error("Invalid procedure call or argument");
  return fields.substr(1);
}

std::string WhereList(const StatementInputs& in) {
  const std::vector<ui::ListColumn>& columns = *in.filter_columns;
  // Each checked row's condition under its group, in row order.
  std::vector<std::pair<std::int64_t, std::string>> conditions;
  for (const ui::ListItem& item : *in.filter_rows) {
    if (!item.checked) continue;
    const auto [sql, group_text] = ConditionAndGroup(item.tag);
    std::string condition(sql);
    const std::int64_t group = RoundedVal(group_text);
    for (std::size_t position = 1; position <= columns.size(); ++position) {
      const std::string& key = columns[position - 1].key;
      const bool first = key == "Data1";
      if (!first && key != "Data2") continue;
      // The value is asked for (and may fail) whether or not it is used.
      const std::string& value = SubItemOf(item, static_cast<int>(position) - 1);
      const char* placeholder = first ? "%DATA1%" : "%DATA2%";
      if (condition.find(placeholder) != std::string::npos) {
        condition = ReplaceAll(condition, placeholder, EscapeValue(value));
      }
    }
    if (group < 0 || group >= kGroupSlots) throw Error("Subscript out of range");
    conditions.emplace_back(group, std::move(condition));
  }
  // Groups in ascending number, their conditions in row order.
  const auto by_group = [](const auto& a, const auto& b) { return a.first < b.first; };
  if (!std::is_sorted(conditions.begin(), conditions.end(), by_group)) {
    std::stable_sort(conditions.begin(), conditions.end(), by_group);
  }
  std::string where;
  for (std::size_t i = 0; i < conditions.size();) {
    std::string slot;
    const std::int64_t group = conditions[i].first;
    for (; i < conditions.size() && conditions[i].first == group; ++i) {
      slot += slot.empty() ? conditions[i].second : " OR " + conditions[i].second;
    }
    if (slot.empty()) continue;
    where += where.empty() ? "(" + slot + ")" : " AND (" + slot + ")";
  }
  // LESSEQUAL first, or it would leave a stray "EQUAL" behind.
  Replace(where, "LESSEQUAL", "<=");
  Replace(where, "LESSTHAN", "<");
  return where;
}

// DataSetSQL held the template once, but a loaded profile or the advanced
// edit has replaced it since; it serves only when the data set is gone.
std::string TemplateOf(const StatementInputs& in) {
  XmlNode data_set = FindDataSet(*in.ed, in.data_set);
  return data_set ? ChildText(data_set, "SQL") : *in.data_set_sql;
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

std::string ViewSQL(const StatementInputs& in, bool forceTemplate, const Part& field_list,
                    const Part& where_list) {
  if (AdvancedFilterInForce(in, forceTemplate)) return "CQ:" + *in.data_set_sql;
  const std::string fields = field_list();
  const std::string where = where_list();
  const std::string& first_sort = in.sort[0];
  const std::string& second_sort = in.sort[1];
  // Built even from an empty first sort picker.
  std::string order = " ORDER BY " + SortField(in, first_sort) + " " + in.direction[0];
  // Grouping orders by the first sort column only.
  if (!in.group && !first_sort.empty() && !second_sort.empty()) {
    order += ", " + SortField(in, second_sort) + " " + in.direction[1];
  }
  std::string statement = FillCommon(TemplateOf(in), fields, where, order);
  Replace(statement, "%GROUPING%", "");
  Replace(statement, "%ANDGROUPING%", "");
  return "CQ:" + statement;
}

std::string ReportSQL(const StatementInputs& in, bool forceTemplate, const Part& field_list,
                      const Part& where_list) {
  std::string statement;
  if (!AdvancedFilterInForce(in, forceTemplate)) {
    const std::string fields = field_list();
    std::string where = where_list();
    // Undo the value escapes, then break the string around every "<...>" so
    // a "<$NAME>" value becomes the report variable $NAME. Operators made
    // from LESSTHAN and LESSEQUAL are broken as well; that is the design.
    Replace(where, "#@!", "<");
    Replace(where, "!@#", ">");
    Replace(where, "<", "\" + ");
    Replace(where, ">", " + \"");

    // The first sort column is the group key, the second the order.
    const std::string& key_column = in.sort[0];
    const std::string format = Attribute(in, key_column, "FieldFormat");
    const std::string mark = format == "String" ? "'" : format == "Date" ? "#" : "";
    const std::string key_field = SortField(in, key_column);
    const std::string report_name = QualifyReportField(key_field);
    const std::string grouping =
        key_field + "=" + mark + "\" + FXA([" + report_name + "]) + \"" + mark + " ";
    const std::string order =
        " ORDER BY " + SortField(in, in.sort[1]) + " " + in.direction[1];

    statement = FillCommon(TemplateOf(in), fields, where, order);
    if (statement.find("%GROUPING%") != std::string::npos) {
      statement = ReplaceAll(statement, "%GROUPING%", where.empty() ? grouping : " AND " + grouping);
    }
    Replace(statement, "%ANDGROUPING%", " AND " + grouping);
  }
  return "\"CQ:" + statement + "\"";
}

BuiltStatement Built(const Part& build) {
  try {
    return {build(), false};
  } catch (const std::exception& e) {
    return {e.what(), true};
  }
}

}  // namespace

StatementInputs StatementInputsOf(frmAcctViewEdit& ed) {
  StatementInputs in;
  in.ed = &ed;
  in.data_set = ed.cmbDataSet.Text();
  in.used_columns = &ed.lstUsedColumns.Items();
  in.filter_columns = &ed.lstFilters.Columns();
  in.filter_rows = &ed.lstFilters.Items();
  in.advanced = ed.optFilter.Value(1);
  in.data_set_sql = &ed.DataSetSQL;
  for (std::size_t i = 0; i < 2; ++i) {
    in.sort[i] = ed.cmbSort[i].Text();
    in.direction[i] = ed.cmbSortASCDESC[i].Text();
  }
  in.group = ed.chkSortGroup.Checked();
  return in;
}

std::string DataSetTemplate(frmAcctViewEdit& ed) { return TemplateOf(StatementInputsOf(ed)); }

std::string BuildFieldList(frmAcctViewEdit& ed) { return FieldList(StatementInputsOf(ed)); }

std::string BuildWhereList(frmAcctViewEdit& ed) { return WhereList(StatementInputsOf(ed)); }

std::string BuildViewSQL(frmAcctViewEdit& ed, bool forceTemplate) {
  const StatementInputs in = StatementInputsOf(ed);
  return ViewSQL(
      in, forceTemplate, [&] { return FieldList(in); }, [&] { return WhereList(in); });
}

std::string BuildReportSQL(frmAcctViewEdit& ed, bool forceTemplate) {
  const StatementInputs in = StatementInputsOf(ed);
  return ReportSQL(
      in, forceTemplate, [&] { return FieldList(in); }, [&] { return WhereList(in); });
}

ProfileStatements BuildProfileStatements(frmAcctViewEdit& ed) {
  return BuildProfileStatements(StatementInputsOf(ed));
}

ProfileStatements BuildProfileStatements(const StatementInputs& in) {
  const Part field_list = [&] { return FieldList(in); };
  const Part where_list = [&] { return WhereList(in); };
  // Without used columns the field list shows its message each time.
  const bool keep_fields = !in.used_columns->empty();
  KeptPart kept_fields(field_list);
  KeptPart kept_where(where_list);
  const Part fields = keep_fields ? Part(std::ref(kept_fields)) : field_list;
  const Part where = std::ref(kept_where);
  ProfileStatements built;
  built.field_list = Built(fields);
  built.where_list = Built(where);
  built.view_sql = Built([&] { return ViewSQL(in, false, fields, where); });
  built.report_sql = Built([&] { return ReportSQL(in, false, fields, where); });
  return built;
}

std::string QualifyReportField(const std::string& field) {
  static constexpr const char* kPrefixes[] = {"ACCTS.",     "ACCT_HISTORY.", "CUST_INFO.",
                                              "PTP.",       "NOTES.",        "DEAL_INFO.",
                                              "FIN_INFO.",  "INV_INFO."};
  std::string name = field;
  for (const char* prefix : kPrefixes) Replace(name, prefix, "");
  return "INV_INFO." + name;
}

const std::string& ColumnMemo::Attribute(frmAcctViewEdit& ed, const std::string& data_set,
                                         const std::string& column, const char* element) {
  if (setup_.Moved(ed.SetupDoc)) texts_.clear();
  key_.assign(data_set).push_back('\0');
  key_.append(column).push_back('\0');
  key_.append(element);
  const auto known = texts_.find(key_);
  if (known != texts_.end()) return known->second;
  return texts_.emplace(key_, ColumnAttributeOf(ed, data_set, column, element)).first->second;
}

}  // namespace cvve
