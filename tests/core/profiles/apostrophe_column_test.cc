// A used column whose name makes its look-up invalid fails the save with the
// save's own error message instead of vanishing from the profile.
#include <gtest/gtest.h>

#include "base/text.h"
#include "fixtures.h"
#include "profiles/profile_commands.h"
#include "viewfiles/profile_record.h"

namespace cvve::testing {
namespace {

TEST(ApostropheColumnTest, TheSaveEndsWithItsErrorAndDropsNothing) {
  struct Case {
    const char* column;
    bool fails;
  };
  for (const Case& c : {Case{"Owner's Note", true}, Case{"Owners Note", false}}) {
    SCOPED_TRACE(c.column);
    HeadlessEditor h;
    h.Open(kViews, kDefaults,
           ReplaceAll(kSetup, "<Name>Note</Name>", std::string("<Name>") + c.column + "</Name>"));
    Select(h, "All Accounts");
    AddColumn(h, c.column);
    h->cmdSaveProfile.Click();
    XmlNode record = FindProfileElement(h->ViewsDoc, "All Accounts");
    if (c.fails) {
      EXPECT_TRUE(h.LastMessage().starts_with("Error in cmdSaveProfile_Click: \r\n\r\n"))
          << ShownPrompts(h);
      // The save stopped before it wrote anything into the record it made.
      EXPECT_FALSE(record.child("Columns"));
      EXPECT_FALSE(record.child("DoTotals"));
      EXPECT_TRUE(h->ProfileChanged);             // the column is still on screen, unsaved
      EXPECT_EQ(h->lstUsedColumns.Items().back(), c.column);
    } else {
      EXPECT_EQ(ChildText(record.child("Columns").last_child(), "Name"), c.column);
    }
  }
}

}  // namespace
}  // namespace cvve::testing
