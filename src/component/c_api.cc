#include "cvviewedit/c_api.h"

#include <exception>
#include <string>

#include "component/screen_registry.h"
#include "cvviewedit/cls_view_edit.h"
#include "ui/headless_dialog_host.h"
#include "ui/headless_prompter.h"

namespace cvve {
namespace {

struct HeadlessScreen : Screen {
  ui::Prompter& prompter() override { return prompter_; }
  ui::DialogHost& dialogs() override { return dialogs_; }
  ui::HeadlessPrompter prompter_;
  ui::HeadlessDialogHost dialogs_;
};

ScreenFactory& Factory() {
  static ScreenFactory factory;
  return factory;
}

}  // namespace

void RegisterScreenFactory(ScreenFactory factory) { Factory() = std::move(factory); }

std::unique_ptr<Screen> MakeDefaultScreen(const HostSettings& settings) {
  if (Factory()) return Factory()(settings);
  return std::make_unique<HeadlessScreen>();
}

}  // namespace cvve

struct cvViewEdit {
  cvve::clsViewEdit component;
  std::string last_error;
};

namespace {
template <class Call>
int Guarded(cvViewEdit* c, Call&& call) {
  if (!c) return 1;
  c->last_error.clear();
  try {
    call();
    return 0;
  } catch (const std::exception& e) {
    c->last_error = e.what();
  } catch (...) {
    c->last_error = "unknown failure";
  }
  return 1;
}
}  // namespace

extern "C" {

cvViewEdit* cvViewEdit_Create(void) {
  try {
    return new cvViewEdit();
  } catch (...) {
    return nullptr;
  }
}

void cvViewEdit_Destroy(cvViewEdit* component) { delete component; }

int cvViewEdit_ViewEdit(cvViewEdit* c, const char* views, const char* defaults,
                        const char* setup) {
  return Guarded(c, [&] {
    c->component.ViewEdit(views ? views : "", defaults ? defaults : "", setup ? setup : "");
  });
}

int cvViewEdit_AcctViewEdit(cvViewEdit* c) {
  return Guarded(c, [&] { c->component.AcctViewEdit(); });
}
int cvViewEdit_InvViewEdit(cvViewEdit* c) {
  return Guarded(c, [&] { c->component.InvViewEdit(); });
}
int cvViewEdit_EODViewEdit(cvViewEdit* c) {
  return Guarded(c, [&] { c->component.EODViewEdit(); });
}
int cvViewEdit_ReportEdit(cvViewEdit* c) {
  return Guarded(c, [&] { c->component.ReportEdit(); });
}

const char* cvViewEdit_LastError(const cvViewEdit* c) { return c ? c->last_error.c_str() : ""; }

const char* cvViewEdit_Version(void) { return cvve::Version(); }

}  // extern "C"
