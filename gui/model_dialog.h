#pragma once
// A modal dialog that is the face of a core form (ui::Form): it stays open
// for as long as the form is visible. Its widgets are bound through its own
// Binder; closing by the window frame or Escape runs the form's own closing
// button, since these dialogs have no cancel.
#include <QDialog>

#include "gui/binder.h"
#include "ui/form.h"

namespace cvve::gui {

class ModelDialog : public QDialog {
  Q_OBJECT

 public:
  ModelDialog(ui::Form& form, QWidget* parent);
  Binder& binder() { return binder_; }
  // Shows the form and runs the dialog until the form is hidden.
  void RunModal();
  void reject() override;

 protected:
  // What the frame's close button and Escape do.
  virtual void CloseByFrame() = 0;
  // Window-level state that follows the models (sizes, colours).
  virtual void AfterRefresh() {}

 private:
  ui::Form& form_;
  Binder binder_;
};

}  // namespace cvve::gui
