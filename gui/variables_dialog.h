#pragma once
// The face of frmVariables ("Report Variables"): four rows under "Variable
// Caption", "Variable Type", "Variable Name" and "Value:". In definition mode
// the dialog is 6795 twips wide and shows the definitions; in value-entry
// mode it is 8400 twips wide, shows the message and the value column, and
// the definitions are read-only in the button-face colour.
#include <QLabel>
#include <array>

#include "gui/model_dialog.h"
#include "variables/frm_variables.h"

class QLineEdit;
class QComboBox;
class QPushButton;

namespace cvve::gui {

class VariablesDialog : public ModelDialog {
  Q_OBJECT

 public:
  VariablesDialog(frmVariables& form, QWidget* parent);

 protected:
  void CloseByFrame() override { form_.cmdOK_Click(); }
  void AfterRefresh() override;

 private:
  frmVariables& form_;
  QLabel* message_ = nullptr;
  QLabel* value_heading_ = nullptr;
  std::array<QLineEdit*, kVariableSlots> captions_{};
  std::array<QComboBox*, kVariableSlots> types_{};
  std::array<QLineEdit*, kVariableSlots> names_{};
  std::array<QLineEdit*, kVariableSlots> values_{};
};

}  // namespace cvve::gui
