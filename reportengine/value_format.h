#pragma once
// How a report shows the values of its columns, by the column's format:
// Date as MM/DD/YYYY, Currency as $1,234.56, Number as 1,234.56 (1,234 when
// whole), Integer as a whole number; anything else as the database gives it.
#include <QString>
#include <QVariant>
#include <optional>
#include <string_view>

#include "reportengine/guard/sql_value.h"

namespace cvve::reportengine {

enum class ValueKind { kText, kDate, kCurrency, kNumber, kInteger };

// The kind of a format name (any case); kText for names it does not know.
ValueKind KindOf(std::string_view format);

// The display text of a database value; "" for NULL. A value that does not
// fit the format (text in a Currency column, a date that is no date) is
// shown as it is.
QString FormatCell(const QVariant& value, ValueKind kind);
inline QString FormatCell(const QVariant& value, std::string_view format) {
  return FormatCell(value, KindOf(format));
}

// The same for a value read in place from SQLite: the text FormatCell gives
// the QVariant QtSql's driver makes of it.
QString FormatCell(const SqlValue& value, ValueKind kind);

// The number in a value, for totals and averages; nothing for NULL and for
// text that is not entirely a number.
std::optional<double> NumericValue(const QVariant& value);
std::optional<double> NumericValue(const SqlValue& value);

// A total of a numeric column in the column's format; an average always
// shows two decimals (with "$" for Currency).
QString FormatTotal(double value, std::string_view format);
QString FormatAverage(double value, std::string_view format);

// A value as FXA hands it to the statement: dates as YYYY-MM-DD, others as
// their text.
QString RawText(const QVariant& value);

}  // namespace cvve::reportengine
