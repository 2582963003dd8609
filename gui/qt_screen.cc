#include "gui/qt_screen.h"

#include <QApplication>
#include <cstdlib>

#include "reports/report_engine.h"
#include "ui/headless_dialog_host.h"
#include "ui/headless_prompter.h"

namespace cvve::gui {

namespace {

bool Set(const char* name) {
  const char* value = std::getenv(name);
  return value && *value;
}

struct HeadlessScreen : Screen {
  ui::Prompter& prompter() override { return prompter_; }
  ui::DialogHost& dialogs() override { return dialogs_; }
  ui::HeadlessPrompter prompter_;
  ui::HeadlessDialogHost dialogs_;
};

std::unique_ptr<Screen> MakeQtScreen() {
  if (!QApplication::instance()) {
    if (!HasDisplay()) return std::make_unique<HeadlessScreen>();
    static int argc = 1;
    static char name[] = "cvviewedit";
    static char* argv[] = {name, nullptr};
    new QApplication(argc, argv);
  }
  return std::make_unique<QtScreen>();
}

const bool kRegistered = (RegisterQtScreen(), true);

}  // namespace

bool HasDisplay() { return Set("QT_QPA_PLATFORM") || Set("DISPLAY") || Set("WAYLAND_DISPLAY"); }

QtScreen::QtScreen(std::unique_ptr<ReportEngine> reports) : reports_(std::move(reports)) {}
QtScreen::~QtScreen() = default;

void RegisterQtScreen() {
  (void)kRegistered;
  RegisterScreenFactory(&MakeQtScreen);
}

}  // namespace cvve::gui
