#pragma once
// The report variables dialog, which is also the store of the four variable
// slots: each slot's caption, type, name and value live in its controls.
#include <array>
#include <functional>
#include <string>

#include "ui/combo_box.h"
#include "ui/form.h"
#include "ui/simple_controls.h"

namespace cvve {

inline constexpr int kVariableSlots = 4;
inline constexpr const char* kVariableTypes[] = {
    "Date", "Text", "Check", "Account", "Deal", "Vehicle", "Customer", "Salesperson", "InvCat",
    "AcctBooks"};
inline constexpr const char* kVariablesMessage =
    "This form has variables that must be filled in to preivew the report.  Please enter values "
    "in the 'Values' column below.";

class frmVariables : public ui::Form {
 public:
  frmVariables();

  // True when a slot has both a name and a caption.
  bool HasVariables() const;
  // false: definition mode (fields editable, 6795 twips); true: value entry
  // (definitions read-only, 8400 twips).
  void InputMode(bool value_entry);
  bool InValueEntryMode() const { return value_entry_; }
  // Every slot's caption and name emptied and its type set to "Date".
  void ClearForm();
  // Slot outside 0..3 throws cvve::Error (out of range).
  void SetVariable(int slot, const std::string& caption, const std::string& type,
                   const std::string& name);
  void GetVariable(int slot, std::string& caption, std::string& type, std::string& name) const;
  std::string GetValue(int slot) const;
  // Closes the dialog; definitions and values stay. In value entry a value
  // that does not suit its variable's type keeps the dialog open on that
  // slot and is reported through on_bad_value.
  void cmdOK_Click();
  // The slot OK last refused (-1: none).
  int BadValueSlot() const { return bad_value_slot_; }
  // Told the message naming the variable and the value, and the slot.
  std::function<void(const std::string& message, int slot)> on_bad_value;

  // The dimension InputMode sets, in twips.
  int width_twips = 6795;
  // Whether the definition fields show the window colour (true) or the
  // button-face colour of read-only fields (false).
  bool definition_fields_window_colour = true;

  std::array<ui::TextBox, kVariableSlots> txtVariableCaption;
  std::array<ui::ComboBox, kVariableSlots> cmbVariable;
  std::array<ui::TextBox, kVariableSlots> txtVariableName;
  std::array<ui::TextBox, kVariableSlots> txtValue;
  ui::CommandButton cmdOK{"cmdOK", "OK"};
  ui::TextBox lblMessage{"lblMessage"};

 private:
  static void CheckSlot(int slot);
  bool value_entry_ = false;
  int bad_value_slot_ = -1;
};

}  // namespace cvve
