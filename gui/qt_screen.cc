#include "gui/qt_screen.h"

#include <cstdlib>

#include "reports/report_engine.h"

namespace cvve::gui {

namespace {

bool Set(const char* name) {
  const char* value = std::getenv(name);
  return value && *value;
}

}  // namespace

bool HasDisplay() { return Set("QT_QPA_PLATFORM") || Set("DISPLAY") || Set("WAYLAND_DISPLAY"); }

QtScreen::QtScreen(std::unique_ptr<ReportEngine> reports) : reports_(std::move(reports)) {}
QtScreen::~QtScreen() = default;

}  // namespace cvve::gui
