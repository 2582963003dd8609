#include "variables/frm_variables.h"

#include "base/error.h"
#include "variables/variable_values.h"

namespace cvve {

namespace {
template <class Control, std::size_t... I>
std::array<Control, sizeof...(I)> MakeArray(const char* name, std::index_sequence<I...>) {
  return {Control(std::string(name) + "(" + std::to_string(I) + ")")...};
}
std::array<ui::ComboBox, kVariableSlots> MakeTypePickers() {
  return {ui::ComboBox("cmbVariable(0)", ui::ComboBox::Style::kEditable),
          ui::ComboBox("cmbVariable(1)", ui::ComboBox::Style::kEditable),
          ui::ComboBox("cmbVariable(2)", ui::ComboBox::Style::kEditable),
          ui::ComboBox("cmbVariable(3)", ui::ComboBox::Style::kEditable)};
}
}  // namespace

frmVariables::frmVariables()
    : ui::Form("frmVariables"),
      txtVariableCaption(
          MakeArray<ui::TextBox>("txtVariableCaption", std::make_index_sequence<kVariableSlots>())),
      cmbVariable(MakeTypePickers()),
      txtVariableName(
          MakeArray<ui::TextBox>("txtVariableName", std::make_index_sequence<kVariableSlots>())),
      txtValue(MakeArray<ui::TextBox>("txtValue", std::make_index_sequence<kVariableSlots>())) {
  for (auto& picker : cmbVariable) {
    for (const char* type : kVariableTypes) picker.AddItem(type);
  }
  lblMessage.SetText(kVariablesMessage);
  cmdOK.on_click = [this] { cmdOK_Click(); };
  ClearForm();  // the dialog starts empty when it is loaded
}

void frmVariables::CheckSlot(int slot) {
  if (slot < 0 || slot >= kVariableSlots) throw Error("Subscript out of range");
}

bool frmVariables::HasVariables() const {
  for (int i = 0; i < kVariableSlots; ++i) {
    if (!txtVariableName[i].Text().empty() && !txtVariableCaption[i].Text().empty()) return true;
  }
  return false;
}

void frmVariables::InputMode(bool value_entry) {
  value_entry_ = value_entry;
  for (int i = 0; i < kVariableSlots; ++i) {
    txtVariableCaption[i].SetEnabled(!value_entry);
    cmbVariable[i].SetEnabled(!value_entry);
    txtVariableName[i].SetEnabled(!value_entry);
  }
  definition_fields_window_colour = !value_entry;
  width_twips = value_entry ? 8400 : 6795;
}

void frmVariables::ClearForm() {
  for (int i = 0; i < kVariableSlots; ++i) {
    txtVariableCaption[i].SetText("");
    txtVariableName[i].SetText("");
    cmbVariable[i].SetListIndex(0);
  }
}

void frmVariables::SetVariable(int slot, const std::string& caption, const std::string& type,
                               const std::string& name) {
  CheckSlot(slot);
  txtVariableCaption[slot].SetText(caption);
  cmbVariable[slot].SetText(type);
  txtVariableName[slot].SetText(name);
}

void frmVariables::GetVariable(int slot, std::string& caption, std::string& type,
                               std::string& name) const {
  CheckSlot(slot);
  caption = txtVariableCaption[slot].Text();
  type = cmbVariable[slot].Text();
  name = txtVariableName[slot].Text();
}

void frmVariables::cmdOK_Click() {
  bad_value_slot_ = -1;
  if (value_entry_) {
    for (int i = 0; i < kVariableSlots; ++i) {
      const std::string& value = txtValue[i].Text();
      if (txtVariableName[i].Text().empty() || value.empty()) continue;
      const auto problem = VariableValueProblem(cmbVariable[i].Text(), value);
      if (!problem) continue;
      bad_value_slot_ = i;
      Touch();
      if (on_bad_value) {
        on_bad_value(BadVariableMessage(txtVariableName[i].Text(), value, *problem), i);
      }
      return;
    }
  }
  Hide();
}

std::string frmVariables::GetValue(int slot) const {
  CheckSlot(slot);
  return txtValue[slot].Text();
}

}  // namespace cvve
