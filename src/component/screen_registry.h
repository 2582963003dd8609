#pragma once
// The screen that hosts without one of their own (the default-constructed
// clsViewEdit, the C face) get: the window library registers its factory
// when it is linked in; without it the editor runs headless.
#include <functional>
#include <memory>

#include "cvviewedit/host_settings.h"
#include "reports/report_engine.h"
#include "ui/form.h"
#include "ui/prompter.h"

namespace cvve {

struct Screen {
  virtual ~Screen() = default;
  virtual ui::Prompter& prompter() = 0;
  virtual ui::DialogHost& dialogs() = 0;
  virtual ReportEngine* reports() { return nullptr; }
  // Readies the screen for one entry call and holds it ready while the
  // result lives (a window system connection the host did not make). Throws
  // when the screen cannot show the editor at all.
  virtual std::shared_ptr<void> EnterCall() { return nullptr; }
};

using ScreenFactory = std::function<std::unique_ptr<Screen>(const HostSettings&)>;
void RegisterScreenFactory(ScreenFactory factory);
// The registered screen for these settings (its reports run on their
// database), else a headless one.
std::unique_ptr<Screen> MakeDefaultScreen(const HostSettings& settings = HostSettings());

}  // namespace cvve
