#include "cvviewedit/cls_view_edit.h"

#include <filesystem>

#include "base/error.h"
#include "component/editor_environment.h"
#include "component/frm_acct_view_edit.h"
#include "component/screen_registry.h"
#include "host/host_services.h"
#include "ui/form.h"

#ifndef CVVE_VERSION
#define CVVE_VERSION "0.0.0"
#endif

namespace cvve {

const char* Version() { return CVVE_VERSION; }

struct clsViewEdit::Impl {
  // Made from settings: the host services and screen are the object's own.
  explicit Impl(const HostSettings& settings)
      : own_host(std::make_unique<DefaultHostServices>(settings)),
        own_screen(MakeDefaultScreen(settings)),
        env(EditorEnvironment{*own_host, own_screen->prompter(), own_screen->dialogs(),
                              own_screen->reports()}) {}
  explicit Impl(const EditorEnvironment& e) : env(e) {}

  std::unique_ptr<DefaultHostServices> own_host;
  std::unique_ptr<Screen> own_screen;
  EditorEnvironment env;
  std::unique_ptr<frmAcctViewEdit> editor;
};

clsViewEdit::clsViewEdit() : clsViewEdit(HostSettings::Load()) {}
clsViewEdit::clsViewEdit(const HostSettings& settings)
    : impl_(std::make_unique<Impl>(settings)) {}
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
  const std::shared_ptr<void> call =
      impl_->own_screen ? impl_->own_screen->EnterCall() : nullptr;
  frmAcctViewEdit& editor = EnsureEditor();
  editor.SetReportMode(0);
  editor.LoadFiles(sViewsFile, sViewsFileDef, sViewSetupFile);
  impl_->env.dialogs.RunModal(editor);
}

void clsViewEdit::AcctViewEdit() { ViewEdit("acctviews.xml", "acctviewsdef.xml", "viewsetup.xml"); }
void clsViewEdit::InvViewEdit() { ViewEdit("v_invviews.xml", "v_invdef.xml", "v_invsetup.xml"); }
void clsViewEdit::EODViewEdit() { ViewEdit("eodviews.xml", "eoddef.xml", "eodsetup.xml"); }

void clsViewEdit::ReportEdit() {
  // A screen that cannot show the editor leaves nothing to go on with.
  std::shared_ptr<void> call;
  if (impl_->own_screen && !ResumeNext([&] { call = impl_->own_screen->EnterCall(); })) return;
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
