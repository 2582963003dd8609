#include "gui/model_dialog.h"

namespace cvve::gui {

ModelDialog::ModelDialog(ui::Form& form, QWidget* parent) : QDialog(parent), form_(form) {
  setObjectName(QString::fromStdString(form.Name()));
  setModal(true);
  binder_.after_refresh = [this] {
    AfterRefresh();
    if (!form_.Visible() && isVisible()) done(QDialog::Accepted);
  };
}

void ModelDialog::RunModal() {
  form_.Show();
  binder_.RefreshAll(true);
  exec();
  // However the dialog ended, the form is hidden now.
  form_.Hide();
}

void ModelDialog::reject() {
  binder_.Act([this] { CloseByFrame(); });
  if (!form_.Visible() && isVisible()) QDialog::reject();
}

}  // namespace cvve::gui
