#include "reportengine/results/guarded_source.h"

#include <QDate>
#include <QDateTime>
#include <chrono>
#include <exception>

#include "base/error.h"
#include "reportengine/guard/guarded_connection.h"
#include "reportengine/language/report_definition.h"
#include "reportengine/language/report_expression.h"
#include "reportengine/report_runner.h"
#include "reportengine/value_format.h"

namespace cvve::reportengine {

std::string RunnableStatement(const std::string& view_sql, const std::string& user_where) {
  return PrepareStatement(view_sql, user_where);
}

namespace {

long long MillisSince(std::chrono::steady_clock::time_point started) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                               started)
      .count();
}

}  // namespace

results::Cell CellOf(const QVariant& value) {
  if (value.isNull() || !value.isValid()) return std::monostate{};
  switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::Bool:
      return value.toLongLong();
    case QMetaType::Double:
    case QMetaType::Float:
      return value.toDouble();
    default:
      return RawText(value).toStdString();
  }
}

results::Table RunReportTable(const std::string& definition, GuardedConnection& db,
                              const std::string& user_where, std::size_t keep_rows) {
  results::Table table;
  try {
    const ReportDefinition def = ParseReportDefinition(definition, "the report");
    RunSettings settings;
    settings.user_where = user_where;
    const ReportData data = RunReport(def, db, settings);
    for (const ReportColumn& column : def.columns) {
      table.columns.push_back(column.title);
      table.formats.push_back(column.format);
    }
    const std::size_t width = def.columns.size();
    for (const ReportGroup& group : data.groups) {
      for (std::size_t at = 0; at + width <= group.cells.size() && table.rows.size() < keep_rows;
           at += width) {
        std::vector<results::Cell> row;
        std::vector<std::string> shown;
        for (std::size_t c = 0; c < width; ++c) {
          shown.push_back(group.cells[at + c].toStdString());
          row.emplace_back(shown.back());
        }
        table.rows.push_back(std::move(row));
        table.shown.push_back(std::move(shown));
      }
    }
    table.count = data.RowCount();
  } catch (const Cancelled&) {
    throw;
  } catch (const StatementError& e) {
    // The database's own words and place, as a view statement's error shows them.
    table.error = e.reason().empty() ? e.what() : e.reason();
    table.error_position = e.position();
    table.statement = e.statement();
  } catch (const std::exception& e) {
    table.error = Describe(e);
  }
  return table;
}

GuardedSource::GuardedSource(EditorDatabase database) : database_(std::move(database)) {}
GuardedSource::~GuardedSource() = default;

results::Table GuardedSource::Run(const std::string& view_sql,
                                  const std::vector<std::string>& formats, std::size_t keep_rows) {
  results::Table table;
  table.statement = RunnableStatement(view_sql, database_.user_where);
  const auto started = std::chrono::steady_clock::now();
  try {
    GuardedQuery query = Connection().Execute(table.statement);
    const int width = query.ColumnCount();
    for (int c = 0; c < width; ++c) table.columns.push_back(query.ColumnName(c).toStdString());
    while (query.Next()) {
      if (table.rows.size() < keep_rows) {
        std::vector<results::Cell> row;
        std::vector<std::string> shown;
        for (int c = 0; c < width; ++c) {
          const QVariant value = query.Value(c);
          row.push_back(CellOf(value));
          const std::size_t at = static_cast<std::size_t>(c);
          shown.push_back(FormatCell(value, at < formats.size() ? formats[at] : "").toStdString());
        }
        table.rows.push_back(std::move(row));
        table.shown.push_back(std::move(shown));
      }
    }
    table.count = query.Rows();
  } catch (const StatementError& e) {
    table.error = e.what();
    table.error_position = e.position();
  } catch (const std::exception& e) {
    table.error = Describe(e);
  }
  table.millis = MillisSince(started);
  return table;
}

GuardedConnection& GuardedSource::Connection() {
  if (!connection_) connection_ = std::make_unique<GuardedConnection>(database_.url, database_.limits);
  return *connection_;
}

results::Table GuardedSource::RunReport(const std::string& definition, std::size_t keep_rows) {
  const auto started = std::chrono::steady_clock::now();
  results::Table table;
  try {
    table = RunReportTable(definition, Connection(), database_.user_where, keep_rows);
  } catch (const std::exception& e) {
    table.error = Describe(e);
  }
  table.millis = MillisSince(started);
  return table;
}

}  // namespace cvve::reportengine
