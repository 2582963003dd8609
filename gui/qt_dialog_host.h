#pragma once
// Shows the editor's forms on Qt: the editor window as a modal top-level
// window, frmVariables and frmAcctViewAdvanced as modal dialogs over it. Each
// RunModal returns once the form has hidden itself.
#include <functional>
#include <optional>
#include <vector>

#include "reportengine/results/guarded_source.h"

#include "ui/form.h"

class QWidget;

namespace cvve::gui {

class EditorWindow;
class ModelDialog;

class QtDialogHost : public ui::DialogHost {
 public:
  // A form this host has no face for is shown headless: hidden again at once.
  void RunModal(ui::Form& form) override;

  // Called when the editor window is shown (the launcher's screenshot, tests).
  std::function<void(EditorWindow&)> on_editor_shown;
  // Called when a dialog is shown, before its modal loop (tests).
  std::function<void(ModelDialog&)> on_dialog_shown;

  // The editor's database: the window shows the rows of the profile on
  // screen and the advanced filter dialog can test its statement. Without
  // one neither is offered.
  std::optional<reportengine::EditorDatabase> database;

  // The editor window now open, innermost last.
  const std::vector<EditorWindow*>& OpenEditors() const { return editors_; }

 private:
  std::vector<EditorWindow*> editors_;
};

}  // namespace cvve::gui
