#include "reportengine/value_format.h"

#include <gtest/gtest.h>

#include <QDate>
#include <QLocale>
#include <cmath>
#include <random>
#include <vector>

namespace cvve::reportengine {
namespace {

TEST(ValueFormatTest, CellsByFormat) {
  struct Case {
    QVariant value;
    const char* format;
    const char* shown;
  };
  const Case cases[] = {
      {QVariant(1234.5), "Currency", "$1,234.50"},
      {QVariant(-1234567.891), "Currency", "-$1,234,567.89"},
      {QVariant(-0.001), "Currency", "$0.00"},
      {QVariant(QStringLiteral("99.9")), "currency", "$99.90"},
      {QVariant(QStringLiteral("n/a")), "Currency", "n/a"},
      {QVariant(QStringLiteral("2026-03-05")), "Date", "03/05/2026"},
      {QVariant(QStringLiteral("2026-03-05 14:30:00")), "Date", "03/05/2026"},
      {QVariant(QStringLiteral("soon")), "Date", "soon"},
      {QVariant(QStringLiteral("2026-13-05")), "Date", "2026-13-05"},
      {QVariant(QStringLiteral("2026-02-30")), "Date", "2026-02-30"},
      {QVariant(QStringLiteral("2026-O3-05")), "Date", "2026-O3-05"},
      {QVariant(1234.567), "Number", "1,234.57"},
      {QVariant(QStringLiteral("145163.0")), "Number", "145,163"},
      {QVariant(0.001), "Number", "0"},
      {QVariant(10023), "Integer", "10023"},
      {QVariant(12.5), "Integer", "13"},
      {QVariant(QStringLiteral("007")), "String", "007"},
      {QVariant(), "Currency", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.value.toString().toStdString() + " as " + c.format);
    EXPECT_EQ(FormatCell(c.value, c.format).toStdString(), c.shown);
  }
}

TEST(ValueFormatTest, TotalsAndAverages) {
  EXPECT_EQ(FormatTotal(1234567.125, "Currency").toStdString(), "$1,234,567.13");
  EXPECT_EQ(FormatTotal(2575, "Integer").toStdString(), "2575");
  EXPECT_EQ(FormatTotal(31759225, "Number").toStdString(), "31,759,225");
  EXPECT_EQ(FormatAverage(12, "Integer").toStdString(), "12.00");
  EXPECT_EQ(FormatAverage(28.934, "Integer").toStdString(), "28.93");
  EXPECT_EQ(FormatAverage(6028.976, "Currency").toStdString(), "$6,028.98");
}

// Money and numbers are printed without the locale's conversion; what they
// show must be what the US locale shows, across magnitudes, signs, halves
// and values too large for exact cents.
TEST(ValueFormatTest, NumbersReadAsTheUsLocaleWritesThem) {
  const QLocale us(QLocale::English, QLocale::UnitedStates);
  auto cents = [](double v) { return std::round(v * 100.0) / 100.0; };
  std::vector<double> values = {0,        -0.0,      0.004,       0.005,       -0.005,
                                0.015,    1.005,     999.995,     -999.995,    1000,
                                99999.99, 100000.5,  -1234567.89, 12345678.9,  9999999999.994,
                                -9.5e12,  1.5e13,    -2.5e14,     1e300,       123456789012.345};
  std::mt19937_64 random(14);
  std::uniform_real_distribution<double> magnitude(-3, 12);
  for (int i = 0; i < 2000; ++i) {
    const double v = std::pow(10.0, magnitude(random)) * (i % 2 ? -1 : 1);
    values.push_back(i % 3 ? v : std::round(v));
  }
  for (double v : values) {
    SCOPED_TRACE(v);
    const double c = cents(v);
    const QString money =
        (c < 0 ? QStringLiteral("-$") : QStringLiteral("$")) + us.toString(std::fabs(c), 'f', 2);
    EXPECT_EQ(FormatCell(QVariant(v), "Currency"), money);
    const double n = c + 0.0;
    EXPECT_EQ(FormatCell(QVariant(v), "Number"), us.toString(n, 'f', n == std::trunc(n) ? 0 : 2));
    EXPECT_EQ(FormatAverage(v, "Number"), us.toString(n, 'f', 2));
  }
}

TEST(ValueFormatTest, NumericValueAndRawText) {
  EXPECT_EQ(NumericValue(QVariant(2.5)).value_or(-1), 2.5);
  EXPECT_EQ(NumericValue(QVariant(QStringLiteral(" 17.25 "))).value_or(-1), 17.25);
  EXPECT_FALSE(NumericValue(QVariant(QStringLiteral("17 dollars"))).has_value());
  EXPECT_FALSE(NumericValue(QVariant()).has_value());
  EXPECT_EQ(RawText(QVariant(QDate(2026, 3, 5))).toStdString(), "2026-03-05");
  EXPECT_TRUE(RawText(QVariant()).isNull());
}

}  // namespace
}  // namespace cvve::reportengine
