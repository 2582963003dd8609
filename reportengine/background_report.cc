#include "reportengine/background_report.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QProgressDialog>
#include <QWidget>
#include <memory>
#include <mutex>

#include "reportengine/report_viewer.h"

namespace cvve::reportengine {

namespace {

constexpr int kDialogDelayMs = 400;

// What the worker reports for the dialog to show.
struct Progress {
  std::mutex mutex;
  QString stage = QStringLiteral("Running the statement");
  long long done = 0;
  long long total = 0;
};

// The frame of the layout: paper, fonts, title; it depends on the
// definition only.
ReportLayout FrameOf(const ReportDefinition& def) {
  return StreamingPaginator(def, [](const PageDescription&) {}).Frame();
}

}  // namespace

LiveReport::LiveReport(ReportDefinition def, const RunSettings& settings, const std::string& url,
                       const QueryLimits& limits)
    : def_(std::make_shared<const ReportDefinition>(std::move(def))),
      data_(std::make_shared<ReportData>()) {
  std::map<std::string, std::string> values;
  for (const auto& [name, value] : settings.variables) values[VariableKey(name)] = value;
  CheckVariables(*def_, values);
  pages_ = std::make_shared<LivePages>(FrameOf(*def_));

  auto progress = std::make_shared<Progress>();
  RunSettings run = settings;
  // Cancel reaches the connection directly; the progress only reports.
  run.progress = nullptr;
  runner_ = std::make_unique<BackgroundRunner>(url, limits);
  QObject::connect(runner_.get(), &BackgroundRunner::finished, runner_.get(),
                   [this](const RunOutcome& result) {
                     outcome_ = result;
                     if (!result.Ok()) pages_->Stop(QString::fromStdString(result.error));
                   });
  runner_->StartJob([def = def_, run, data = data_, pages = pages_](GuardedConnection& db) {
    // The layout's own fonts, made and used in this thread.
    StreamingPaginator paginator(*def,
                                 [&pages](PageDescription page) { pages->Add(std::move(page)); });
    RowCollector rows(def->columns.size());
    RowTee sink{&paginator, &rows};
    StreamReport(*def, db, run, sink);
    *data = rows.Take();
    pages->Complete(paginator.PageCount(),
                    [&paginator](int page) { return paginator.ClosingTexts(page); });
  });
}

// The runner cancels what still runs and waits for it.
LiveReport::~LiveReport() = default;

void LiveReport::Cancel() {
  if (runner_) runner_->Cancel();
}

void LiveReport::WaitForFirstPage(QWidget* parent) {
  QElapsedTimer timer;
  timer.start();
  std::unique_ptr<QProgressDialog> dialog;
  const QPointer<QWidget> owner(parent);
  while (!outcome_ && pages_->Count() == 0) {
    if (!dialog && timer.elapsed() >= kDialogDelayMs) {
      dialog = std::make_unique<QProgressDialog>(QStringLiteral("Running the statement"),
                                                 QStringLiteral("Cancel"), 0, 0, owner.data());
      dialog->setWindowTitle(QStringLiteral("Report"));
      dialog->setWindowModality(Qt::WindowModal);
      dialog->setMinimumDuration(0);
      dialog->show();
    }
    if (dialog && dialog->wasCanceled()) runner_->Cancel();
    // Until the dialog is up, clicks wait: the window must not start a
    // second run under the first.
    QCoreApplication::processEvents(dialog ? QEventLoop::AllEvents
                                           : QEventLoop::ExcludeUserInputEvents);
    if (!outcome_ && pages_->Count() == 0) runner_->Wait(10);
  }
  if (outcome_) ThrowOutcome(*outcome_);
}

bool LiveReport::WaitForEnd(int timeout_ms) {
  QElapsedTimer timer;
  timer.start();
  while (!outcome_) {
    if (timeout_ms >= 0 && timer.elapsed() > timeout_ms) return false;
    QCoreApplication::processEvents();
    if (!outcome_) runner_->Wait(10);
  }
  // `finished` may still be queued behind the worker's end.
  QCoreApplication::processEvents();
  return true;
}

std::unique_ptr<ReportViewerWindow> OpenLiveViewer(LiveReport& run, QWidget* parent) {
  auto window = std::make_unique<ReportViewerWindow>(run.Pages(), [&run] { run.Cancel(); }, parent);
  window->SetRows(&run.Definition(), &run.Data());
  return window;
}

void ShowLiveReport(LiveReport& run, QWidget* parent) { OpenLiveViewer(run, parent)->exec(); }

void ThrowOutcome(const RunOutcome& outcome) {
  switch (outcome.status) {
    case RunOutcome::Status::kDone:
      return;
    case RunOutcome::Status::kCancelled:
      throw Cancelled();
    case RunOutcome::Status::kRefused:
      throw GuardError(GuardError::Kind::kRefused, outcome.error);
    case RunOutcome::Status::kTimeout:
      throw GuardError(GuardError::Kind::kTimeout, outcome.error);
    case RunOutcome::Status::kRowLimit:
      throw GuardError(GuardError::Kind::kRowLimit, outcome.error);
    case RunOutcome::Status::kFailed:
      break;
  }
  throw Error(outcome.error);
}

}  // namespace cvve::reportengine
