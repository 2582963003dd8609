#include "embed/host_screen.h"

#include <QApplication>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/error.h"
#include "component/frm_acct_view_edit.h"
#include "gui/editor_window.h"
#include "gui/qt_screen.h"
#include "reportengine/qt_report_engine.h"

namespace cvve::embed {

namespace {

class HostScreen : public gui::QtScreen {
 public:
  explicit HostScreen(const HostSettings& settings)
      : QtScreen(std::make_unique<reportengine::QtReportEngine>(
            reportengine::EngineSettings{settings.database_url, {}})) {
    const int close_after = AutoCloseMilliseconds();
    if (close_after < 0) return;
    qt_dialogs().on_editor_shown = [close_after](gui::EditorWindow& window) {
      std::fputs("cvviewedit: editor window shown\n", stderr);
      std::fflush(stderr);
      QTimer::singleShot(close_after, &window, [&window] {
        window.binder().Act([&window] { window.editor().cmdCancel.Click(); });
      });
    };
  }

  std::shared_ptr<void> EnterCall() override {
    if (QCoreApplication* app = QCoreApplication::instance()) {
      if (qobject_cast<QApplication*>(app)) return nullptr;
      throw Error(
          "cvViewEdit cannot open the editor window: the host's application object is no "
          "QApplication");
    }
    if (!gui::HasDisplay()) {
      throw Error(
          "cvViewEdit cannot open the editor window: there is no display (DISPLAY, "
          "WAYLAND_DISPLAY and QT_QPA_PLATFORM are not set)");
    }
    // Qt keeps argc by reference for the application's life.
    static int argc = 1;
    static char name[] = "cvviewedit";
    static char* argv[] = {name, nullptr};
    return std::make_shared<QApplication>(argc, argv);
  }
};

const bool kRegistered = (RegisterScreenFactory(&MakeHostScreen), true);

}  // namespace

std::unique_ptr<Screen> MakeHostScreen(const HostSettings& settings) {
  (void)kRegistered;
  return std::make_unique<HostScreen>(settings);
}

int AutoCloseMilliseconds() {
  const char* value = std::getenv("CVVE_TEST_AUTOCLOSE_MS");
  if (!value || !*value) return -1;
  char* end = nullptr;
  const long ms = std::strtol(value, &end, 10);
  if (*end != '\0' || ms < 0 || ms > 600000) return -1;
  return static_cast<int>(ms);
}

}  // namespace cvve::embed
