#include "cvviewedit/cls_view_edit.h"

#include <filesystem>

#include "base/error.h"
#include "component/frm_acct_view_edit.h"
#include "host/host_services.h"
#include "ui/form.h"

namespace cvve {

struct clsViewEdit::Impl {
  explicit Impl(const EditorEnvironment& e) : env(e) {}
  EditorEnvironment env;
  std::unique_ptr<frmAcctViewEdit> editor;
};

clsViewEdit::clsViewEdit(const EditorEnvironment& env) : impl_(std::make_unique<Impl>(env)) {}
clsViewEdit::~clsViewEdit() = default;

frmAcctViewEdit* clsViewEdit::Editor() { return impl_->editor.get(); }

frmAcctViewEdit& clsViewEdit::EnsureEditor() {
  // One editor window: a closed one is replaced by a freshly loaded one.
  if (!impl_->editor || !impl_->editor->Visible()) {
    impl_->editor.reset();
    impl_->editor = std::make_unique<frmAcctViewEdit>(impl_->env);
  }
  return *impl_->editor;
}

void clsViewEdit::ViewEdit(const std::string& sViewsFile, const std::string& sViewsFileDef,
                           const std::string& sViewSetupFile) {
  frmAcctViewEdit& editor = EnsureEditor();
  editor.SetReportMode(0);
  editor.LoadFiles(sViewsFile, sViewsFileDef, sViewSetupFile);
  impl_->env.dialogs.RunModal(editor);
}

void clsViewEdit::AcctViewEdit() { ViewEdit("acctviews.xml", "acctviewsdef.xml", "viewsetup.xml"); }
void clsViewEdit::InvViewEdit() { ViewEdit("v_invviews.xml", "v_invdef.xml", "v_invsetup.xml"); }
void clsViewEdit::EODViewEdit() { ViewEdit("eodviews.xml", "eoddef.xml", "eodsetup.xml"); }

void clsViewEdit::ReportEdit() {
  const std::string folder = impl_->env.host.ReportsBaseFolder() + "/Custom Reports/";
  ResumeNext([&] {
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);  // existing already is no error
  });
  frmAcctViewEdit* editor = nullptr;
  ResumeNext([&] { editor = &EnsureEditor(); });
  if (!editor) return;
  ResumeNext([&] { editor->SetReportMode(-1); });
  ResumeNext([&] { editor->LoadFiles(folder, "", "reportsetup.xml"); });
  ResumeNext([&] { impl_->env.dialogs.RunModal(*editor); });
}

}  // namespace cvve
