#include "gui/qt_dialog_host.h"

#include <QEventLoop>
#include <QTimer>

#include "component/frm_acct_view_edit.h"
#include "gui/advanced_filter_dialog.h"
#include "gui/editor_window.h"
#include "gui/qt_prompter.h"
#include "gui/variables_dialog.h"

namespace cvve::gui {

namespace {

QWidget* OwnerOf(const std::vector<EditorWindow*>& editors) {
  if (QWidget* active = DialogParent()) return active;
  return editors.empty() ? nullptr : editors.back();
}

}  // namespace

void QtDialogHost::RunModal(ui::Form& form) {
  if (auto* ed = dynamic_cast<frmAcctViewEdit*>(&form)) {
    EditorWindow window(*ed);
    if (database) window.ShowResults(*database);
    window.setWindowModality(Qt::ApplicationModal);
    QEventLoop loop;
    window.on_closed = [&loop] { loop.quit(); };
    ed->Show();
    window.binder().RefreshAll(true);
    window.show();
    editors_.push_back(&window);
    if (on_editor_shown) {
      QTimer::singleShot(0, &window, [this, &window] {
        if (on_editor_shown) on_editor_shown(window);
      });
    }
    if (ed->Visible()) loop.exec();
    editors_.pop_back();
    ed->Hide();
    return;
  }
  std::unique_ptr<ModelDialog> dialog;
  if (auto* variables = dynamic_cast<frmVariables*>(&form)) {
    dialog = std::make_unique<VariablesDialog>(*variables, OwnerOf(editors_));
  } else if (auto* advanced = dynamic_cast<frmAcctViewAdvanced*>(&form)) {
    auto face = std::make_unique<AdvancedFilterDialog>(*advanced, OwnerOf(editors_));
    if (database) face->OfferTest(*database);
    dialog = std::move(face);
  }
  if (!dialog) {
    form.Show();
    form.Hide();
    return;
  }
  if (on_dialog_shown) {
    ModelDialog* shown = dialog.get();
    QTimer::singleShot(0, shown, [this, shown] {
      if (on_dialog_shown) on_dialog_shown(*shown);
    });
  }
  dialog->RunModal();
}

}  // namespace cvve::gui
