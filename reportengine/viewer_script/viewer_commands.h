#pragma once
// `viewer` lines of `viewedit script`: the report viewer that `viewedit
// report FILE` opens, driven without a screen. The run and the window are
// the launcher's own (LiveReport, OpenLiveViewer): the viewer opens on the
// first page while later pages are still being laid out, and its Cancel
// and page count are what a script checks.
//
//   viewer open FILE [NAME=VALUE ...]  run the report, open the viewer
//   viewer state                       the viewer as JSON (below)
//   viewer cancel                      the viewer's Cancel button
//   viewer wait [SECONDS]              until the run ends (default 60)
//   viewer close                       close the window (cancels a run)
//
// `viewer state` prints {"open", "running", "pages", "pageCount" (the text
// beside the page box: "of 3 so far", "of 12", "of 3 (stopped: ...)"),
// "page" (1-based), "outcome" ("running", "done", "cancelled", "failed" ...),
// "rows" (null until the run is done)}.
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

#include "reportengine/qt_report_engine.h"
#include "script/script_runner.h"

namespace cvve::reportengine {

class LiveReport;
class ReportViewerWindow;

class ViewerCommands : public script::ScriptExtension {
 public:
  // The database, %USERWHERE% and limits the reports run with;
  // `ensure_widgets` makes the (offscreen) application object the window
  // needs, when the first viewer opens.
  ViewerCommands(EngineSettings settings, std::function<void()> ensure_widgets);
  ~ViewerCommands() override;
  bool Run(const std::string& command, std::string_view rest, std::ostream& out) override;

 private:
  void Open(std::string_view rest);
  void Close();
  std::string State() const;

  EngineSettings settings_;
  std::function<void()> ensure_widgets_;
  std::unique_ptr<LiveReport> live_;
  std::unique_ptr<ReportViewerWindow> window_;
};

}  // namespace cvve::reportengine
