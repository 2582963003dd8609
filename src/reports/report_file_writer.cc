#include "reports/report_file_writer.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "base/error.h"
#include "base/text.h"
#include "component/frm_acct_view_edit.h"
#include "query/sql_builder.h"
#include "reports/summary_rule.h"
#include "ui/prompter.h"
#include "viewfiles/document_cursor.h"
#include "viewfiles/setup_file.h"

namespace cvve {

namespace {

constexpr std::size_t kMaxReportNameBytes = 200;
constexpr double kMaxWidthTwips = 1000000;  // what the engine accepts

// Variable names of the report language: ASCII letters, digits and "_".
bool IsVariableChar(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

// A width as whole twips; "" (the engine's default width) for text that is
// no width, so one odd setup value does not make the report unreadable.
std::string Twips(const std::string& width) {
  const std::optional<double> value = StrictNumber(width);
  if (!value || *value < 0 || *value > kMaxWidthTwips) return "";
  return Str(std::llround(*value));
}

XmlNode Add(XmlNode parent, const char* name, const std::string& value) {
  XmlNode child = parent.append_child(name);
  SetNodeText(child, value);
  return child;
}

// The statement that lists a grouped report's group values, in report order:
// the template with the key as a DISTINCT field list, the where list opened
// for variables as the report statement opens it, no grouping condition.
std::string GroupStatementExpression(frmAcctViewEdit& ed, const std::string& key_field) {
  // On an advanced filter the report statement is empty; so are the groups.
  if (ed.optFilter.Value(1)) return "\"CQ:\"";
  auto quoted = [](const std::string& text) { return ReplaceAll(text, "\"", "\"\""); };
  std::string where = ReplaceAll(ReplaceAll(BuildWhereList(ed), "#@!", "<"), "!@#", ">");
  where = ReplaceAll(ReplaceAll(quoted(where), "<", "\" + "), ">", " + \"");
  std::string sql = quoted(DataSetTemplate(ed));
  sql = ReplaceAll(sql, "%FIELDLIST%", "DISTINCT " + quoted(key_field));
  sql = ReplaceAll(sql, "%WHERELIST%", where);
  sql = ReplaceAll(sql, "%ANDWHERELIST%", where.empty() ? std::string() : " AND " + where);
  sql = ReplaceAll(sql, "%ORDERLIST%",
                   " ORDER BY " + quoted(key_field) + " " + quoted(ed.cmbSortASCDESC[0].Text()));
  sql = ReplaceAll(sql, "%GROUPING%", "");
  sql = ReplaceAll(sql, "%ANDGROUPING%", "");
  return "\"CQ:" + sql + "\"";
}

}  // namespace

std::string ViewStatementExpression(const std::string& view_sql) {
  const std::string quoted = "\"" + ReplaceAll(view_sql, "\"", "\"\"") + "\"";
  std::string out;
  out.reserve(quoted.size());
  std::size_t pos = 0;
  while (pos < quoted.size()) {
    const std::size_t hit = quoted.find("#@!$", pos);
    if (hit == std::string::npos) break;
    std::size_t end = hit + 4;
    while (end < quoted.size() && IsVariableChar(quoted[end])) ++end;
    if (end > hit + 4 && quoted.compare(end, 3, "!@#") == 0) {
      out.append(quoted, pos, hit - pos);
      out += "\" + $" + quoted.substr(hit + 4, end - hit - 4) + " + \"";
      pos = end + 3;
    } else {
      // Not a variable marker: the escapes stay for the engine to undo.
      out.append(quoted, pos, hit + 1 - pos);
      pos = hit + 1;
    }
  }
  out.append(quoted, pos, std::string::npos);
  return out;
}

bool SaveReportFile(frmAcctViewEdit& ed, const std::string& path) {
  DocumentCursor report;
  if (!BuildReportFile(ed, report)) return false;
  try {
    report.Save(path);
    return true;
  } catch (const std::exception& e) {
    ed.Prompt().MsgBox("Error in SaveReportFile: " + Describe(e), ui::Buttons::kOk,
                       ui::Icon::kCritical, "Error");
    ed.Prompt().WriteFailed(path, Describe(e));
    return false;
  }
}

bool BuildReportFile(frmAcctViewEdit& ed, DocumentCursor& report) {
  try {
    report.Reset();
    pugi::xml_document& doc = report.Document();
    XmlNode declaration = doc.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    XmlNode root = doc.append_child("CustomReport");
    root.append_attribute("version") = "1";

    const bool grouped = ed.chkSortGroup.Checked();
    Add(root, "Name", ed.txtCurrProf.Text());
    Add(root, "DataSet", ed.cmbDataSet.Text());
    Add(root, "Statement",
        grouped ? BuildReportSQL(ed, false) : ViewStatementExpression(BuildViewSQL(ed, false)));
    Add(root, "Grouped", grouped ? "1" : "0");
    if (grouped) {
      const std::string key_column = ed.cmbSort[0].Text();
      const std::string key_field = ColumnSortField(ed, key_column);
      Add(root, "GroupField", key_field);
      Add(root, "GroupReportField", QualifyReportField(key_field));
      Add(root, "GroupFormat", ColumnFieldFormat(ed, key_column));
      Add(root, "GroupTitle", key_column);
      Add(root, "GroupStatement", GroupStatementExpression(ed, key_field));
    }

    XmlNode columns = root.append_child("Columns");
    for (const std::string& title : ed.lstUsedColumns.Items()) {
      // A column the data set no longer offers has nothing to show: left
      // out, as the profile document leaves it out.
      if (!SelectColumn(ed, title)) continue;
      const std::string field = ColumnSortField(ed, title);
      XmlNode column = columns.append_child("Column");
      Add(column, "Title", title);
      Add(column, "Field", field);
      Add(column, "ReportField", QualifyReportField(field));
      Add(column, "Alignment", ColumnAttribute(ed, title, "Alignment"));
      const std::string format = ColumnFieldFormat(ed, title);
      Add(column, "Format", format);
      Add(column, "Width", Twips(ColumnAttribute(ed, title, "Width")));
      Add(column, "Total", TotalledByFormat(format) ? "1" : "0");
      Add(column, "Average", AveragedByFormat(format) ? "1" : "0");
    }

    XmlNode variables = root.append_child("Variables");
    for (int slot = 0; slot < kVariableSlots; ++slot) {
      std::string caption, type, name;
      ed.Variables().GetVariable(slot, caption, type, name);
      if (name.empty() || caption.empty()) continue;  // only defined slots
      XmlNode variable = variables.append_child("Variable");
      Add(variable, "Name", "$" + name);
      Add(variable, "Caption", caption);
      Add(variable, "Type", type);
    }

    Add(root, "Totals", Str(ed.chkTotals.Value()));
    Add(root, "Averages", Str(ed.chkAverages.Value()));
    Add(root, "LineCount", Str(ed.chkShowLineCount.Value()));
    // No selection prints as the first entry, as a cleared profile shows it.
    Add(root, "PageSize", Str(std::max(0, ed.cmbPageSize.ListIndex())));
    Add(root, "PageOrientation", Str(std::max(0, ed.cmbOrientation.ListIndex())));
    Add(root, "MultiLine", Str(ed.chkMultiLine.Value()));
    return true;
  } catch (const std::exception& e) {
    ed.Prompt().MsgBox("Error in SaveReportFile: " + Describe(e), ui::Buttons::kOk,
                       ui::Icon::kCritical, "Error");
    return false;
  }
}

bool IsUsableReportName(const std::string& name) {
  return !name.empty() && name.size() <= kMaxReportNameBytes && name.front() != '.' &&
         name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
}

bool CheckReportName(frmAcctViewEdit& ed, const std::string& name) {
  if (IsUsableReportName(name)) return true;
  ed.Prompt().MsgBox("The name '" + name +
                         "' cannot be used for a report.  A report's name is also the name of "
                         "its files in the Custom Reports folder, so it may not contain \"/\", "
                         "may not begin with \".\" and may not be longer than 200 bytes.",
                     ui::Buttons::kOk, ui::Icon::kExclamation, "Invalid Report Name");
  return false;
}

}  // namespace cvve
