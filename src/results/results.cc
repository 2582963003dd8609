#include "results/results.h"

#include <algorithm>
#include <cctype>
#include <exception>

#include "base/error.h"
#include "component/frm_acct_view_edit.h"
#include "query/quiet_prompts.h"
#include "query/sql_builder.h"
#include "reports/report_file_writer.h"
#include "viewfiles/document_cursor.h"
#include "viewfiles/setup_file.h"

namespace cvve::results {

namespace {

// Characters, not bytes, so that accented names line up.
std::size_t Width(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

}  // namespace

std::vector<ShownColumn> ShownColumns(frmAcctViewEdit& ed) {
  std::vector<ShownColumn> columns;
  for (const std::string& column : ed.lstUsedColumns.Items()) {
    const std::string field = ColumnSortField(ed, column);
    if (field.empty() || field[0] == '$') continue;
    columns.push_back({column, ColumnFieldFormat(ed, column)});
  }
  return columns;
}

std::vector<std::string> ShownFormats(frmAcctViewEdit& ed) {
  std::vector<std::string> formats;
  for (ShownColumn& column : ShownColumns(ed)) formats.push_back(std::move(column.format));
  return formats;
}

std::string ViewStatement(frmAcctViewEdit& ed) {
  if (!ed.CurrentProfileNode()) throw Error("no profile is selected");
  QuietPrompts quiet(ed);
  std::string statement = BuildViewSQL(ed, false);
  if (!quiet.Shown().empty()) throw Error(quiet.Shown().front().text);
  if (statement.empty()) throw Error("the profile has no statement");
  return statement;
}

std::string ReportDefinition(frmAcctViewEdit& ed) {
  if (!ed.CurrentProfileNode()) throw Error("no profile is selected");
  QuietPrompts quiet(ed);
  DocumentCursor report;
  const bool built = BuildReportFile(ed, report);
  if (!quiet.Shown().empty()) throw Error(quiet.Shown().front().text);
  if (!built) throw Error("the report cannot be built");
  return report.ToString();
}

Table RunProfile(frmAcctViewEdit& ed, Source& source, std::size_t keep_rows) {
  if (ed.InReportMode()) {
    std::string definition;
    try {
      definition = ReportDefinition(ed);
    } catch (const std::exception& e) {
      Table table;
      table.error = Describe(e);
      return table;
    }
    return source.RunReport(definition, keep_rows);
  }
  std::string statement;
  std::vector<std::string> formats;
  try {
    statement = ViewStatement(ed);
    formats = ShownFormats(ed);
  } catch (const std::exception& e) {
    Table table;
    table.error = Describe(e);
    return table;
  }
  Table table = source.Run(statement, formats, keep_rows);
  // The columns by the names the user chose them by, when the statement
  // selects exactly those (an advanced filter may select others).
  if (table.error.empty() && table.columns.size() == formats.size()) {
    std::vector<std::string> names;
    for (ShownColumn& column : ShownColumns(ed)) names.push_back(std::move(column.name));
    table.columns = std::move(names);
  }
  return table;
}

std::vector<ValueCell> ValuesAt(frmAcctViewEdit& ed, const std::string& statement,
                                long long position) {
  std::vector<ValueCell> cells;
  if (position < 0) return cells;
  const auto at = static_cast<std::size_t>(position);
  const ui::ListView& list = ed.lstFilters;
  for (int item = 1; item <= list.ItemCount(); ++item) {
    if (!list.Item(item).checked) continue;
    for (int column = 1; column <= list.ColumnCount(); ++column) {
      const std::string& key = list.Column(column).key;
      if (key != "Data1" && key != "Data2") continue;
      const std::string value = list.SubItem(item, column - 1);
      if (value.empty()) continue;
      bool found = false;
      for (std::size_t from = statement.find(value); from != std::string::npos && !found;
           from = statement.find(value, from + 1)) {
        // The error may name the value's first byte, a byte inside it, or
        // the quote that ends it early.
        found = at >= from && at <= from + value.size();
      }
      if (found) cells.push_back({item, column - 1});
    }
  }
  return cells;
}

nlohmann::json CellJson(const Cell& cell) {
  return std::visit(
      [](const auto& value) -> nlohmann::json {
        using T = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<T, std::monostate>) {
          return nullptr;
        } else {
          return value;
        }
      },
      cell);
}

std::string CellText(const Cell& cell) {
  if (const auto* text = std::get_if<std::string>(&cell)) return *text;
  if (const auto* whole = std::get_if<long long>(&cell)) return std::to_string(*whole);
  if (const auto* number = std::get_if<double>(&cell)) {
    const nlohmann::json shortest = *number;  // the shortest text that reads back the same
    return shortest.dump();
  }
  return "";
}

nlohmann::json ToJson(const Table& table) {
  nlohmann::json rows = nlohmann::json::array();
  for (const auto& row : table.rows) {
    nlohmann::json cells = nlohmann::json::array();
    for (const Cell& cell : row) cells.push_back(CellJson(cell));
    rows.push_back(std::move(cells));
  }
  nlohmann::json result{{"count", table.count},
                        {"columns", table.columns},
                        {"rows", std::move(rows)},
                        {"error", table.error.empty() ? nlohmann::json() : nlohmann::json(table.error)},
                        {"millis", table.millis}};
  if (!table.error.empty()) {
    result["position"] =
        table.error_position >= 0 ? nlohmann::json(table.error_position) : nlohmann::json();
    result["statement"] = table.statement;
  }
  return result;
}

std::string ErrorExcerpt(const std::string& statement, long long position, std::size_t width) {
  if (position < 0) return "";
  const std::size_t at = std::min(static_cast<std::size_t>(position), statement.size());
  std::size_t from = at > width ? at - width : 0;
  std::size_t to = std::min(statement.size(), at + width);
  // Never cut a character in two.
  while (from > 0 && (static_cast<unsigned char>(statement[from]) & 0xC0) == 0x80) --from;
  while (to < statement.size() && (static_cast<unsigned char>(statement[to]) & 0xC0) == 0x80) ++to;
  std::string line = statement.substr(from, to - from);
  std::replace_if(line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r' || c == '\t'; }, ' ');
  const std::string lead = from > 0 ? "..." : "";
  const std::string tail = to < statement.size() ? "..." : "";
  const std::size_t caret = lead.size() + Width(statement.substr(from, at - from));
  return lead + line + tail + "\n" + std::string(caret, ' ') + "^";
}

bool IsAmountFormat(const std::string& format) {
  std::string lower = format;
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower == "currency" || lower == "number" || lower == "integer";
}

std::string AlignedTable(const std::vector<std::string>& header,
                         const std::vector<std::vector<std::string>>& rows,
                         const std::vector<bool>& right) {
  std::vector<std::size_t> widths(header.size(), 0);
  std::vector<bool> numeric(header.size(), false);
  for (std::size_t c = 0; c < header.size() && c < right.size(); ++c) numeric[c] = right[c];
  for (std::size_t c = 0; c < header.size(); ++c) widths[c] = Width(header[c]);
  for (const auto& row : rows) {
    for (std::size_t c = 0; c < header.size() && c < row.size(); ++c) {
      widths[c] = std::max(widths[c], Width(row[c]));
    }
  }
  auto line = [&](const std::vector<std::string>& cells, bool is_header) {
    std::string text;
    for (std::size_t c = 0; c < header.size(); ++c) {
      const std::string value = c < cells.size() ? cells[c] : "";
      const std::string pad(widths[c] - std::min(widths[c], Width(value)), ' ');
      if (c > 0) text += "  ";
      text += (numeric[c] && !is_header) ? pad + value : value + pad;
    }
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text + "\n";
  };
  std::string text = line(header, true);
  std::string rule;
  for (std::size_t c = 0; c < header.size(); ++c) {
    rule += (c > 0 ? "  " : "") + std::string(widths[c], '-');
  }
  text += rule + "\n";
  for (const auto& row : rows) text += line(row, false);
  return text;
}

std::string CsvTable(const std::vector<std::string>& header,
                     const std::vector<std::vector<std::string>>& rows) {
  auto field = [](const std::string& value) {
    if (value.find_first_of(",\"\r\n") == std::string::npos) return value;
    std::string quoted = "\"";
    for (char c : value) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
  };
  auto line = [&](const std::vector<std::string>& cells) {
    std::string text;
    for (std::size_t c = 0; c < cells.size(); ++c) text += (c > 0 ? "," : "") + field(cells[c]);
    return text + "\r\n";
  };
  std::string text = line(header);
  for (const auto& row : rows) text += line(row);
  return text;
}

}  // namespace cvve::results
