#include "variables/variable_values.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "variables/frm_variables.h"

namespace cvve::testing {
namespace {

TEST(VariableValuesTest, DatesAreRealDatesInEitherWriting) {
  const struct {
    const char* text;
    std::optional<std::string> iso;
  } cases[] = {
      {"2026-03-05", "2026-03-05"},
      {"03/05/2026", "2026-03-05"},
      {"3/5/2026", "2026-03-05"},
      {"12/31/2026", "2026-12-31"},
      {"02/29/2024", "2024-02-29"},  // a leap year
      {"2000-02-29", "2000-02-29"},  // divisible by 400: a leap year
      {"02/29/2026", std::nullopt},
      {"1900-02-29", std::nullopt},  // divisible by 100 only: not a leap year
      {"02/31/2026", std::nullopt},
      {"04/31/2026", std::nullopt},
      {"13/45/2026", std::nullopt},
      {"00/10/2026", std::nullopt},
      {"2026-00-10", std::nullopt},
      {"2026-13-01", std::nullopt},
      {"2026-1-5", std::nullopt},  // ISO has two-digit months and days
      {"0000-01-01", std::nullopt},
      {"03/05/26", std::nullopt},
      {"tomorrow", std::nullopt},
      {"", std::nullopt},
      {"2026-03-05 10:00", std::nullopt},
      {"2026-03-05'; DROP TABLE ACCTS; --", std::nullopt},
      {"+3/5/2026", std::nullopt},
      {"03/05/2026/1", std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(IsoFromDate(c.text), c.iso);
  }
}

TEST(VariableValuesTest, EachTypeAcceptsWhatItSays) {
  const struct {
    const char* type;
    const char* value;
    bool good;
  } cases[] = {
      {"Date", "01/31/2026", true},   {"date", "2026-01-31", true},
      {"Date", "02/30/2026", false},  {"Date", "tomorrow", false},
      {"Check", "1", true},           {"Check", "True", true},
      {"Check", "false", true},       {"Check", "-1", true},
      {"Check", "yes please", false}, {"Check", "2", false},
      {"Text", "O'Brien", true},      {"Account", "A-1001", true},
      {"Text", "two\nlines", false},  {"Account", "\x7f", false},
      {"Salesperson", "tab\there", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.type) + " " + c.value);
    EXPECT_EQ(!VariableValueProblem(c.type, c.value).has_value(), c.good);
  }
  EXPECT_EQ(BadVariableMessage("START_DATE", "13/45/2026", *VariableValueProblem("Date", "x")),
            "the value '13/45/2026' of the variable $START_DATE is not a date: give a real date "
            "as MM/DD/YYYY or YYYY-MM-DD");
}

TEST(VariableValuesTest, OkKeepsTheDialogOpenOnABadValue) {
  frmVariables dialog;
  dialog.SetVariable(0, "Start:", "Date", "START_DATE");
  dialog.SetVariable(1, "End:", "Date", "END_DATE");
  dialog.InputMode(true);
  std::vector<std::pair<std::string, int>> told;
  dialog.on_bad_value = [&told](const std::string& message, int slot) {
    told.emplace_back(message, slot);
  };
  dialog.Show();
  dialog.txtValue[0].SetText("03/01/2026");
  dialog.txtValue[1].SetText("13/45/2026");
  dialog.cmdOK.Click();
  EXPECT_TRUE(dialog.Visible());
  EXPECT_EQ(dialog.BadValueSlot(), 1);
  ASSERT_EQ(told.size(), 1u);
  EXPECT_EQ(told[0].second, 1);
  EXPECT_NE(told[0].first.find("'13/45/2026' of the variable $END_DATE"), std::string::npos);

  dialog.txtValue[1].SetText("");  // no value is the run's business (it warns)
  dialog.cmdOK.Click();
  EXPECT_FALSE(dialog.Visible());
  EXPECT_EQ(dialog.BadValueSlot(), -1);

  // Definition mode checks nothing: values are not being entered.
  dialog.InputMode(false);
  dialog.Show();
  dialog.txtValue[0].SetText("tomorrow");
  dialog.cmdOK.Click();
  EXPECT_FALSE(dialog.Visible());
  EXPECT_EQ(told.size(), 1u);
}

}  // namespace
}  // namespace cvve::testing
