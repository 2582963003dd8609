#include <gtest/gtest.h>

#include "base/error.h"
#include "fixtures.h"
#include "variables/frm_variables.h"
#include "variables/variable_commands.h"

namespace cvve::testing {
namespace {

struct Slot {
  std::string caption, type, name;
  bool operator==(const Slot&) const = default;
};

Slot Get(const frmVariables& store, int slot) {
  Slot s;
  store.GetVariable(slot, s.caption, s.type, s.name);
  return s;
}

TEST(FrmVariablesTest, SlotsTypesAndClearing) {
  frmVariables store;  // starts cleared, every type on "Date"
  EXPECT_EQ(Get(store, 2), (Slot{"", "Date", ""}));
  store.SetVariable(3, "Dealer:", "AcctBooks", "DEALER");
  store.SetVariable(1, "", "", "");  // an empty type is accepted
  EXPECT_EQ(Get(store, 3), (Slot{"Dealer:", "AcctBooks", "DEALER"}));
  EXPECT_EQ(Get(store, 1), (Slot{"", "", ""}));
  EXPECT_THROW(store.SetVariable(4, "a", "Date", "b"), Error);
  EXPECT_THROW(store.SetVariable(-1, "a", "Date", "b"), Error);
  EXPECT_THROW(store.GetValue(4), Error);
  store.ClearForm();
  for (int slot = 0; slot < kVariableSlots; ++slot) {
    EXPECT_EQ(Get(store, slot), (Slot{"", "Date", ""})) << slot;  // "Date", not empty
  }
  store.InputMode(true);  // value entry: the definitions are locked
  EXPECT_EQ(store.width_twips, 8400);
  EXPECT_FALSE(store.cmbVariable[3].Enabled() || store.txtVariableName[0].Enabled() ||
               store.txtVariableCaption[1].Enabled());
  EXPECT_TRUE(store.txtValue[2].Enabled());
  store.InputMode(false);
  EXPECT_EQ(store.width_twips, 6795);
  EXPECT_TRUE(store.cmbVariable[3].Enabled() && store.txtVariableName[0].Enabled());
}

TEST(FrmVariablesTest, HasVariablesNeedsNameAndCaption) {
  const struct {
    const char *caption, *type, *name;
    bool defined;
  } cases[] = {{"Start:", "Date", "START", true},
               {"", "Date", "START", false},
               {"Start:", "Date", "", false},
               {"Start:", "", "START", true}};  // the type does not count
  for (const auto& c : cases) {
    frmVariables store;
    store.SetVariable(2, c.caption, c.type, c.name);
    EXPECT_EQ(store.HasVariables(), c.defined) << c.caption << "/" << c.name;
  }
}

TEST(VariableCommandsTest, StartEndBoxFillsAndEmptiesSlotsZeroAndOne) {
  HeadlessEditor h;
  h->txtData1LV.AddItem("stale");
  FillVariableChoices(*h);  // no defined slot: only the empty entry
  EXPECT_EQ(Entries(h->txtData1LV), Names{""});
  EXPECT_EQ(Entries(h->txtData2LV), Names{""});

  frmVariables& store = h->Variables();
  store.SetVariable(0, "Mine:", "Text", "MINE");
  store.SetVariable(2, "Two:", "Text", "TWO");
  store.SetVariable(3, "", "Check", "THREE");  // no caption, still offered
  h->chkStartEnd.UserClick();
  const Slot start{"Start Date:", "Date", "START_DATE"}, end{"End Date:", "Date", "END_DATE"};
  EXPECT_EQ(Get(store, 0), start);
  EXPECT_EQ(Get(store, 1), end);
  EXPECT_EQ(Get(store, 2), (Slot{"Two:", "Text", "TWO"}));
  EXPECT_EQ(Entries(h->txtData1LV),
            (Names{"", "<$START_DATE>", "<$END_DATE>", "<$TWO>", "<$THREE>"}));
  // Setting it again by code rewrites the same values.
  store.SetVariable(1, "Other:", "Text", "OTHER");
  h->chkStartEnd.SetValue(0);
  h->chkStartEnd.SetValue(1);
  EXPECT_EQ(Get(store, 1), end);
  // Clearing empties both slots, whatever they held.
  store.SetVariable(0, "Custom:", "Deal", "CUSTOM");
  h->chkStartEnd.UserClick();
  EXPECT_EQ(Get(store, 0), (Slot{"", "", ""}));
  EXPECT_EQ(Get(store, 1), (Slot{"", "", ""}));
  EXPECT_EQ(Get(store, 3), (Slot{"", "Check", "THREE"}));
  EXPECT_EQ(Entries(h->txtData2LV), (Names{"", "<$TWO>", "<$THREE>"}));
}

TEST(VariableCommandsTest, EditVariablesOpensTheStoreInDefinitionMode) {
  HeadlessEditor h;
  h->Variables().InputMode(true);
  bool shown = false;
  h.dialogs.SetDriver([&](ui::Form& form) {
    shown = true;
    EXPECT_EQ(&form, &h->Variables());
    EXPECT_TRUE(form.Visible());
    EXPECT_FALSE(h->Variables().InValueEntryMode());
    EXPECT_TRUE(h->Variables().txtVariableName[0].Enabled());
    h->Variables().SetVariable(0, "Lot:", "Text", "LOT");
    h->Variables().cmdOK.Click();
  });
  h->cmdEditVariables.Click();
  EXPECT_TRUE(shown);
  EXPECT_FALSE(h->Variables().Visible());
  EXPECT_EQ(Get(h->Variables(), 0), (Slot{"Lot:", "Text", "LOT"}));  // kept after closing
}

}  // namespace
}  // namespace cvve::testing
