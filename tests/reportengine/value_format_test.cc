#include "reportengine/value_format.h"

#include <gtest/gtest.h>

#include <QDate>

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
