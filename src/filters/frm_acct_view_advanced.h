#pragma once
// The advanced filter dialog: one text box holding the hand-written
// statement. "CQ:" is stripped on the way in and out, so the user never sees
// or types the mark that the statement builder adds.
#include <string>

#include "ui/form.h"
#include "ui/simple_controls.h"

namespace cvve {

class frmAcctViewAdvanced : public ui::Form {
 public:
  frmAcctViewAdvanced();
  std::string SQL() const;
  void SetSQL(const std::string& sql);
  // Hides the dialog, which ends its modal show; the dialog stays loaded.
  void cmdClose_Click() { Hide(); }

  // Geometry of the dialog and its text box, in twips.
  static constexpr int kWidthTwips = 6615;
  static constexpr int kHeightTwips = 2985;
  static constexpr int kTextLeft = 120, kTextTop = 120, kTextWidth = 6375, kTextHeight = 1815;
  // Centred on a screen of that size (twips): left and top of the dialog.
  static int CentredLeft(int screen_width) { return (screen_width - kWidthTwips) / 2; }
  static int CentredTop(int screen_height) { return (screen_height - kHeightTwips) / 2; }

  ui::TextBox txtSQL{"txtSQL"};
  ui::CommandButton cmdClose{"cmdClose", "Close"};
};

}  // namespace cvve
