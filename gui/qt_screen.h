#pragma once
// The Qt screen: the Prompter and DialogHost on Qt, and the report engine
// that preview uses.
#include <memory>

#include "component/screen_registry.h"
#include "gui/qt_dialog_host.h"
#include "gui/qt_prompter.h"

namespace cvve::gui {

// True when Qt can open windows: QT_QPA_PLATFORM names a platform, or
// DISPLAY or WAYLAND_DISPLAY is set.
bool HasDisplay();

class QtScreen : public Screen {
 public:
  explicit QtScreen(std::unique_ptr<ReportEngine> reports = nullptr);
  ~QtScreen() override;
  ui::Prompter& prompter() override { return prompter_; }
  ui::DialogHost& dialogs() override { return dialogs_; }
  ReportEngine* reports() override { return reports_.get(); }
  QtPrompter& qt_prompter() { return prompter_; }
  QtDialogHost& qt_dialogs() { return dialogs_; }

 private:
  QtPrompter prompter_;
  QtDialogHost dialogs_;
  std::unique_ptr<ReportEngine> reports_;
};

}  // namespace cvve::gui
