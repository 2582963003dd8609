#pragma once
// What the profile on screen selects: its view statement run on the editor's
// database, as the host's list window would show it. The core builds the
// statement and lays the rows out; running it belongs to a Source the host
// gives (the report engine's guarded connection), so the core stays free of
// any database library.
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <variant>
#include <vector>

namespace cvve {
class frmAcctViewEdit;
}

namespace cvve::results {

// A database value: NULL, a whole number, a number or text.
using Cell = std::variant<std::monostate, long long, double, std::string>;

// A used column the view statement selects, with the setup file's format.
struct ShownColumn {
  std::string name;
  std::string format;
};

struct Table {
  std::vector<std::string> columns;       // as the database names them
  std::vector<std::vector<Cell>> rows;    // the first rows only
  std::vector<std::vector<std::string>> shown;  // the same rows in their columns' formats
  long long count = 0;                    // every row the statement selects
  std::vector<std::string> formats;       // the columns' formats, when known
  std::string statement;                  // as it ran
  std::string error;                      // the database's message; "" when it ran
  long long error_position = -1;          // the byte of `statement` the error names
  long long millis = 0;                   // the time the database took
};

// Runs a view statement on the editor's database.
class Source {
 public:
  virtual ~Source() = default;
  // `view_sql` as the editor builds it; the source makes it runnable (the
  // host's user condition, "CQ:" gone). Keeps the first `keep_rows` rows,
  // shown in `formats` (by position; missing ones show the value as it is),
  // and counts all. Never throws: failures come back in `error`.
  virtual Table Run(const std::string& view_sql, const std::vector<std::string>& formats,
                    std::size_t keep_rows) = 0;
  // A report's rows: `definition` (the text of a report definition) run as
  // the report engine runs it, in the report's columns and order, each cell
  // as the report shows it (text). On a refused statement, `statement` is
  // the one the database's error points into.
  virtual Table RunReport(const std::string& definition, std::size_t keep_rows) = 0;
};

// The used columns the view statement selects, in their order (computed
// "$" columns are not selected).
std::vector<ShownColumn> ShownColumns(frmAcctViewEdit& ed);
// The formats of ShownColumns, for Source::Run.
std::vector<std::string> ShownFormats(frmAcctViewEdit& ed);

// The view statement of the profile on screen, built without showing any of
// the builders' messages. Throws cvve::Error with the reason when it cannot
// be built (no profile, no columns).
std::string ViewStatement(frmAcctViewEdit& ed);

// The report definition the editor writes for the profile on screen (in
// report mode), built without showing any of the builders' messages. Throws
// cvve::Error with the reason when it cannot be built.
std::string ReportDefinition(frmAcctViewEdit& ed);

// Runs the profile on screen: its view statement, or in report mode its
// report; a statement that cannot be built comes back as an error too.
Table RunProfile(frmAcctViewEdit& ed, Source& source, std::size_t keep_rows);

// A value cell of the filter list: its 1-based item and the 0-based column
// of the list (as the window shows it).
struct ValueCell {
  int item;
  int column;
};

// The checked filters' value cells whose text is where the database's error
// points in `statement` (the statement as it ran): the values go into the
// statement verbatim, so the failing one is the one around the position.
std::vector<ValueCell> ValuesAt(frmAcctViewEdit& ed, const std::string& statement,
                                long long position);

// {"count", "columns", "rows", "error", "millis"}, plus "position" and
// "statement" when the database refused it. Cells keep their JSON types.
nlohmann::json ToJson(const Table& table);
nlohmann::json CellJson(const Cell& cell);
// A value as text, unformatted ("" for NULL).
std::string CellText(const Cell& cell);

// The statement around `position` on one line, with a caret line under it
// pointing at it: at most `width` characters either side.
std::string ErrorExcerpt(const std::string& statement, long long position, std::size_t width = 40);

// A table for a terminal: columns padded to their widest value, a rule
// under the header; the columns flagged in `right` (amounts) right-aligned.
std::string AlignedTable(const std::vector<std::string>& header,
                         const std::vector<std::vector<std::string>>& rows,
                         const std::vector<bool>& right = {});
// Whether a column format shows amounts (Currency, Number, Integer).
bool IsAmountFormat(const std::string& format);
// RFC 4180 CSV: fields with a comma, quote or line break are quoted.
std::string CsvTable(const std::vector<std::string>& header,
                     const std::vector<std::vector<std::string>>& rows);

}  // namespace cvve::results
