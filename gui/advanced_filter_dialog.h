#pragma once
// The face of frmAcctViewAdvanced ("Advanced Filter"): the statement box
// txtSQL at left 120, top 120, 6375 by 1815 twips, and "Close". The dialog
// is centred on the screen when it opens.
#include "filters/frm_acct_view_advanced.h"
#include "gui/model_dialog.h"

class QPlainTextEdit;

namespace cvve::gui {

class AdvancedFilterDialog : public ModelDialog {
  Q_OBJECT

 public:
  AdvancedFilterDialog(frmAcctViewAdvanced& form, QWidget* parent);
  QPlainTextEdit* sqlBox() const { return sql_; }

 protected:
  void CloseByFrame() override { form_.cmdClose_Click(); }
  void showEvent(QShowEvent* event) override;

 private:
  frmAcctViewAdvanced& form_;
  QPlainTextEdit* sql_ = nullptr;
};

}  // namespace cvve::gui
