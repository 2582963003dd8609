#pragma once
// A report run from the window: the statements run and the pages are laid
// out on a BackgroundRunner, so that the window keeps drawing and the viewer
// can open on the first page while later ones are still being made. Until
// that first page a progress dialog (after a moment) has Cancel, which stops
// the statement at the database; then the viewer's own Cancel does.
#include <QObject>
#include <memory>
#include <optional>
#include <string>

#include "reportengine/guard/background_runner.h"
#include "reportengine/guard/limits.h"
#include "reportengine/live_pages.h"
#include "reportengine/report_runner.h"

class QWidget;

namespace cvve::reportengine {

class LiveReport {
 public:
  // Checks the variables in this thread (throws BadVariable), then starts
  // the run on a connection of its own to `url`.
  LiveReport(ReportDefinition def, const RunSettings& settings, const std::string& url,
             const QueryLimits& limits);
  // Cancels what still runs and waits for it.
  ~LiveReport();
  LiveReport(const LiveReport&) = delete;
  LiveReport& operator=(const LiveReport&) = delete;

  // Processes the window's events until the first page is laid out or the
  // run ends, with the progress dialog after a moment. Throws what RunReport
  // throws when the run ends without completing before its first page
  // (Cancelled among them).
  void WaitForFirstPage(QWidget* parent);
  // Processes events until the run ends; false on timeout (tests, benchmarks).
  bool WaitForEnd(int timeout_ms);

  const ReportDefinition& Definition() const { return *def_; }
  std::shared_ptr<LivePages> Pages() const { return pages_; }
  void Cancel();
  bool Finished() const { return outcome_.has_value(); }
  // The rows, complete once Finished() with kDone.
  const ReportData& Data() const { return *data_; }
  const std::optional<RunOutcome>& Outcome() const { return outcome_; }

 private:
  std::shared_ptr<const ReportDefinition> def_;
  std::shared_ptr<LivePages> pages_;
  std::shared_ptr<ReportData> data_;
  std::unique_ptr<BackgroundRunner> runner_;
  std::optional<RunOutcome> outcome_;
};

// Throws the error a run's outcome stands for (nothing for kDone).
void ThrowOutcome(const RunOutcome& outcome);

class ReportViewerWindow;

// The viewer window on a run that may still be laying out pages, its
// Cancel stopping the run: the editor's preview, `viewedit report FILE` and
// the script's viewer all show a run in it. `run` must outlive the window.
std::unique_ptr<ReportViewerWindow> OpenLiveViewer(LiveReport& run, QWidget* parent);
// The same, shown modally until it is closed.
void ShowLiveReport(LiveReport& run, QWidget* parent);

}  // namespace cvve::reportengine
