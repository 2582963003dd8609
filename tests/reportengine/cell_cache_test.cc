// A column's kept cells: whatever the values and however they collide in
// the table, every cell is the text FormatCell makes of its value, and a
// value met again shares the text made the first time.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "reportengine/cell_cache.h"
#include "reportengine/value_format.h"

namespace cvve::reportengine {
namespace {

SqlValue Text(std::string_view text) {
  SqlValue value;
  value.type = SqlValue::Type::kText;
  value.text = text;
  return value;
}

SqlValue Integer(std::int64_t number) {
  SqlValue value;
  value.type = SqlValue::Type::kInteger;
  value.integer = number;
  return value;
}

SqlValue Real(double number) {
  SqlValue value;
  value.type = SqlValue::Type::kReal;
  value.real = number;
  return value;
}

const ValueKind kKinds[] = {ValueKind::kText, ValueKind::kDate, ValueKind::kCurrency,
                            ValueKind::kNumber, ValueKind::kInteger};

TEST(CellCacheTest, EveryCellIsTheFormattedValueAndRepeatsShareTheirText) {
  // Values whose keys could be confused: the same bits as an integer and as
  // a real, a text of the same digits, a text that only starts alike, a
  // NULL, an empty text, a text too long to keep, a date and a non-date.
  double five = 5.0;
  std::int64_t five_bits = 0;
  std::memcpy(&five_bits, &five, sizeof five_bits);
  const std::string long_text(40, 'x');
  const std::vector<SqlValue> values = {
      Integer(5),        Real(5.0),       Text("5"),           Integer(five_bits),
      Text("5.00"),      Text("50"),      SqlValue(),          Text(""),
      Text(long_text),   Text("2026-03-05"), Text("2026-02-31"), Real(-0.005),
      Real(1234567.891), Integer(-42),    Text("O'Brien"),     Text("Ré")};
  for (const ValueKind kind : kKinds) {
    // In one column, in turn and again: each the formatted value, whatever
    // shared its slot before.
    CellCache cache(kind);
    for (int round = 0; round < 3; ++round) {
      for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(cache.Format(values[i]), FormatCell(values[i], kind))
            << "kind " << static_cast<int>(kind) << ", value " << i << ", round " << round;
      }
    }
    // A value met again comes back as the very text made first (no new
    // one), unless it is not kept at all.
    for (std::size_t i = 0; i < values.size(); ++i) {
      CellCache column(kind);
      const QString first = column.Format(values[i]);
      const QString again = column.Format(values[i]);
      EXPECT_EQ(again, first);
      const bool kept = values[i].type != SqlValue::Type::kNull && values[i].text.size() <= 32 &&
                        !first.isEmpty();
      if (kept) {
        EXPECT_EQ(again.constData(), first.constData())
            << "kind " << static_cast<int>(kind) << ", value " << i;
      } else if (!first.isEmpty()) {
        EXPECT_NE(again.constData(), first.constData())
            << "kind " << static_cast<int>(kind) << ", value " << i;
      }
    }
  }
}

TEST(CellCacheTest, CollidingAndNeverRepeatingValuesStayRight) {
  // Far more distinct values than the table holds: they evict each other,
  // and a column of values that never repeat stops looking them up.
  std::vector<std::string> texts;
  for (int i = 0; i < 5000; ++i) texts.push_back("A" + std::to_string(i * 7919 % 100003));
  for (const ValueKind kind : kKinds) {
    CellCache unique(kind);
    for (int pass = 0; pass < 2; ++pass) {
      for (std::size_t i = 0; i < texts.size(); ++i) {
        const SqlValue value = i % 2 == 0 ? Text(texts[i]) : Real(static_cast<double>(i) / 3);
        ASSERT_EQ(unique.Format(value), FormatCell(value, kind)) << i;
      }
    }
    EXPECT_FALSE(unique.Looking()) << "kind " << static_cast<int>(kind);

    // A few values over and over keep being looked up.
    CellCache repeating(kind);
    for (int i = 0; i < 10000; ++i) {
      const SqlValue value = i % 3 == 0 ? Integer(i % 40) : Text(texts[static_cast<std::size_t>(i % 25)]);
      ASSERT_EQ(repeating.Format(value), FormatCell(value, kind)) << i;
    }
    EXPECT_TRUE(repeating.Looking()) << "kind " << static_cast<int>(kind);
  }
}

}  // namespace
}  // namespace cvve::reportengine
