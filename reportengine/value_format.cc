#include "reportengine/value_format.h"

#include <QDate>
#include <QDateTime>
#include <QLocale>
#include <cmath>
#include <cstdint>
#include <optional>

#include "base/text.h"

namespace cvve::reportengine {

namespace {

using Kind = ValueKind;

const QLocale& UsLocale() {
  static const QLocale locale(QLocale::English, QLocale::UnitedStates);
  return locale;
}

// Cents rounded half away from zero, so 0.005 shows as 0.01 on both signs.
double ToCents(double value) { return std::round(value * 100.0) / 100.0; }

// Below this, a value's cents are exact in a 64-bit integer and in a double.
constexpr double kExactCentsLimit = 1e13;

// What the US locale prints for units / 10^decimals (decimals 0 or 2):
// thousands separated by commas, a minus sign before a negative value. Made
// by hand because a report formats every money cell, and the locale's
// general double-to-text conversion was most of their cost.
// `prefix` ("$", "-$") goes before the digits, in the same string.
QString Grouped(std::int64_t units, int decimals, std::string_view prefix = {}) {
  char text[48];
  char* end = text + sizeof text;
  char* at = end;
  std::uint64_t rest = units < 0 ? 0 - static_cast<std::uint64_t>(units)
                                 : static_cast<std::uint64_t>(units);
  for (int i = 0; i < decimals; ++i, rest /= 10) *--at = static_cast<char>('0' + rest % 10);
  if (decimals > 0) *--at = '.';
  int digits = 0;
  do {
    if (digits > 0 && digits % 3 == 0) *--at = ',';
    *--at = static_cast<char>('0' + rest % 10);
    rest /= 10;
    ++digits;
  } while (rest > 0);
  if (units < 0) *--at = '-';
  for (auto c = prefix.rbegin(); c != prefix.rend(); ++c) *--at = *c;
  return QString::fromLatin1(at, static_cast<qsizetype>(end - at));
}

// The value in whole cents, when it is small enough to be exact.
std::optional<std::int64_t> Cents(double value) {
  if (!(std::fabs(value) < kExactCentsLimit)) return std::nullopt;  // NaN too
  return std::llround(value * 100.0);
}

QString Money(double value) {
  if (const std::optional<std::int64_t> cents = Cents(value)) {
    return Grouped(*cents < 0 ? -*cents : *cents, 2, *cents < 0 ? "-$" : "$");
  }
  const double cents = ToCents(value);
  const QString digits = UsLocale().toString(std::fabs(cents), 'f', 2);
  return (cents < 0 ? QStringLiteral("-$") : QStringLiteral("$")) + digits;
}

QString TwoDecimals(double value) {
  if (const std::optional<std::int64_t> cents = Cents(value)) return Grouped(*cents, 2);
  return UsLocale().toString(ToCents(value) + 0.0, 'f', 2);
}

// Whole numbers without decimals (a mileage), others with two.
QString Decimal(double value) {
  if (const std::optional<std::int64_t> cents = Cents(value)) {
    return *cents % 100 == 0 ? Grouped(*cents / 100, 0) : Grouped(*cents, 2);
  }
  const double cents = ToCents(value) + 0.0;
  return UsLocale().toString(cents, 'f', cents == std::trunc(cents) ? 0 : 2);
}

QString Whole(double value) { return QString::number(static_cast<qint64>(std::llround(value))); }

// "MM/DD/YYYY" from a text that starts with "YYYY-MM-DD" (a time may follow).
QString DateText(const QString& text) {
  // Rearranged by hand rather than parsed and printed through QDate: a long
  // report has tens of thousands of dates, and this is most of their cost.
  if (text.size() < 10 || text[4] != QLatin1Char('-') || text[7] != QLatin1Char('-')) return text;
  int parts[3] = {0, 0, 0};
  const int starts[3] = {0, 5, 8};
  const int lengths[3] = {4, 2, 2};
  for (int p = 0; p < 3; ++p) {
    for (int i = starts[p]; i < starts[p] + lengths[p]; ++i) {
      if (!text[i].isDigit()) return text;
      parts[p] = parts[p] * 10 + text[i].digitValue();
    }
  }
  if (!QDate::isValid(parts[0], parts[1], parts[2])) return text;
  QString date(10, Qt::Uninitialized);
  QChar* out = date.data();
  const QChar* in = text.constData();
  const int order[10] = {5, 6, -1, 8, 9, -1, 0, 1, 2, 3};  // MM/DD/YYYY
  for (int i = 0; i < 10; ++i) out[i] = order[i] < 0 ? QChar(u'/') : in[order[i]];
  return date;
}

// The same from the database's UTF-8 bytes: "MM/DD/YYYY" when they start
// with a valid "YYYY-MM-DD", else nothing (the text is then shown as it is,
// or, beyond ASCII, looked at as DateText does).
std::optional<QString> AsciiDate(std::string_view text) {
  if (text.size() < 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
  int parts[3] = {0, 0, 0};
  const int starts[3] = {0, 5, 8};
  const int lengths[3] = {4, 2, 2};
  for (int p = 0; p < 3; ++p) {
    for (int i = starts[p]; i < starts[p] + lengths[p]; ++i) {
      const char c = text[static_cast<std::size_t>(i)];
      if (c < '0' || c > '9') return std::nullopt;
      parts[p] = parts[p] * 10 + (c - '0');
    }
  }
  if (!QDate::isValid(parts[0], parts[1], parts[2])) return std::nullopt;
  const char date[10] = {text[5], text[6], '/', text[8], text[9], '/',
                         text[0], text[1], text[2], text[3]};
  return QString::fromLatin1(date, 10);
}

bool Ascii(std::string_view text) {
  for (const char c : text) {
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  }
  return true;
}

QString TextOf(const SqlValue& value) {
  return QString::fromUtf8(value.text.data(), static_cast<qsizetype>(value.text.size()));
}

// A number in a Currency, Number or Integer column.
QString NumberCell(double number, Kind kind) {
  switch (kind) {
    case Kind::kCurrency:
      return Money(number);
    case Kind::kNumber:
      return Decimal(number);
    default:
      return Whole(number);
  }
}

}  // namespace

ValueKind KindOf(std::string_view format) {
  const std::string lower = ToLower(format);
  if (lower == "date") return Kind::kDate;
  if (lower == "currency") return Kind::kCurrency;
  if (lower == "number") return Kind::kNumber;
  if (lower == "integer") return Kind::kInteger;
  return Kind::kText;
}

std::optional<double> NumericValue(const QVariant& value) {
  if (value.isNull()) return std::nullopt;
  switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
      return value.toDouble();
    default:
      break;
  }
  bool ok = false;
  const double number = value.toString().trimmed().toDouble(&ok);
  if (!ok) return std::nullopt;
  return number;
}

QString RawText(const QVariant& value) {
  if (value.isNull()) return QString();
  if (value.typeId() == QMetaType::QDate) return value.toDate().toString(Qt::ISODate);
  if (value.typeId() == QMetaType::QDateTime) {
    return value.toDateTime().date().toString(Qt::ISODate);
  }
  return value.toString();
}

QString FormatCell(const QVariant& value, ValueKind kind) {
  if (value.isNull()) return QString();
  switch (kind) {
    case Kind::kDate:
      if (value.typeId() == QMetaType::QDate || value.typeId() == QMetaType::QDateTime) {
        return value.toDate().toString(QStringLiteral("MM/dd/yyyy"));
      }
      return DateText(value.toString());
    case Kind::kCurrency:
    case Kind::kNumber:
    case Kind::kInteger:
      if (const std::optional<double> number = NumericValue(value)) return NumberCell(*number, kind);
      break;
    case Kind::kText:
      break;
  }
  return value.toString();
}

QString FormatCell(const SqlValue& value, ValueKind kind) {
  const bool as_text = kind == Kind::kText || kind == Kind::kDate;
  switch (value.type) {
    case SqlValue::Type::kNull:
      return QString();
    case SqlValue::Type::kInteger:
      return as_text ? QString::number(value.integer)
                     : NumberCell(static_cast<double>(value.integer), kind);
    case SqlValue::Type::kReal:
      return as_text ? QVariant(value.real).toString() : NumberCell(value.real, kind);
    case SqlValue::Type::kText:
      break;
  }
  if (kind == Kind::kText) return TextOf(value);
  if (kind == Kind::kDate && Ascii(value.text.substr(0, 10))) {
    if (std::optional<QString> date = AsciiDate(value.text)) return *std::move(date);
    return TextOf(value);
  }
  return FormatCell(QVariant(TextOf(value)), kind);
}

std::optional<double> NumericValue(const SqlValue& value) {
  switch (value.type) {
    case SqlValue::Type::kNull:
      return std::nullopt;
    case SqlValue::Type::kInteger:
      return static_cast<double>(value.integer);
    case SqlValue::Type::kReal:
      return value.real;
    case SqlValue::Type::kText:
      break;
  }
  return NumericValue(QVariant(TextOf(value)));
}

QString FormatTotal(double value, std::string_view format) {
  switch (KindOf(format)) {
    case Kind::kCurrency:
      return Money(value);
    case Kind::kInteger:
      return Whole(value);
    default:
      return Decimal(value);
  }
}

QString FormatAverage(double value, std::string_view format) {
  return KindOf(format) == Kind::kCurrency ? Money(value) : TwoDecimals(value);
}

}  // namespace cvve::reportengine
