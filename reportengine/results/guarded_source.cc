#include "reportengine/results/guarded_source.h"

#include <QDate>
#include <QDateTime>
#include <chrono>
#include <exception>

#include "base/error.h"
#include "reportengine/guard/guarded_connection.h"
#include "reportengine/language/report_expression.h"
#include "reportengine/value_format.h"

namespace cvve::reportengine {

std::string RunnableStatement(const std::string& view_sql, const std::string& user_where) {
  return PrepareStatement(view_sql, user_where);
}

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

GuardedSource::GuardedSource(EditorDatabase database) : database_(std::move(database)) {}
GuardedSource::~GuardedSource() = default;

results::Table GuardedSource::Run(const std::string& view_sql,
                                  const std::vector<std::string>& formats, std::size_t keep_rows) {
  results::Table table;
  table.statement = RunnableStatement(view_sql, database_.user_where);
  const auto started = std::chrono::steady_clock::now();
  try {
    if (!connection_) connection_ = std::make_unique<GuardedConnection>(database_.url, database_.limits);
    GuardedQuery query = connection_->Execute(table.statement);
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
  table.millis = std::chrono::duration_cast<std::chrono::milliseconds>(
                     std::chrono::steady_clock::now() - started)
                     .count();
  return table;
}

}  // namespace cvve::reportengine
