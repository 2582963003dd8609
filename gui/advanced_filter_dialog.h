#pragma once
// The face of frmAcctViewAdvanced ("Advanced Filter"): the statement box
// txtSQL at left 120, top 120, 6375 by 1815 twips, and "Close". The dialog
// is centred on the screen when it opens.
#include "filters/frm_acct_view_advanced.h"
#include "gui/model_dialog.h"

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace cvve::reportengine {
struct EditorDatabase;
}

namespace cvve::gui {

class StatementTest;

class AdvancedFilterDialog : public ModelDialog {
  Q_OBJECT

 public:
  AdvancedFilterDialog(frmAcctViewAdvanced& form, QWidget* parent);
  QPlainTextEdit* sqlBox() const { return sql_; }
  // Adds "Test": runs the text on `database` in the background and shows
  // the row count or the database's message under it. "Close" is as before.
  void OfferTest(const reportengine::EditorDatabase& database);
  QPushButton* testButton() const { return test_; }
  QLabel* testResult() const { return test_result_; }

 protected:
  void CloseByFrame() override { form_.cmdClose_Click(); }
  void showEvent(QShowEvent* event) override;

 private:
  frmAcctViewAdvanced& form_;
  QPlainTextEdit* sql_ = nullptr;
  QPushButton* close_ = nullptr;
  QPushButton* test_ = nullptr;
  QLabel* test_result_ = nullptr;
  StatementTest* tester_ = nullptr;
};

}  // namespace cvve::gui
