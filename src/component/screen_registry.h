#pragma once
// The screen that hosts without one of their own (the C face) get: the window
// library registers its factory when it is linked in; without it the editor
// runs headless.
#include <functional>
#include <memory>

#include "reports/report_engine.h"
#include "ui/form.h"
#include "ui/prompter.h"

namespace cvve {

struct Screen {
  virtual ~Screen() = default;
  virtual ui::Prompter& prompter() = 0;
  virtual ui::DialogHost& dialogs() = 0;
  virtual ReportEngine* reports() { return nullptr; }
};

using ScreenFactory = std::function<std::unique_ptr<Screen>()>;
void RegisterScreenFactory(ScreenFactory factory);
// The registered screen, else a headless one.
std::unique_ptr<Screen> MakeDefaultScreen();

}  // namespace cvve
