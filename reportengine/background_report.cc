#include "reportengine/background_report.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QProgressDialog>
#include <QWidget>
#include <memory>
#include <mutex>
#include <optional>

#include "reportengine/guard/background_runner.h"

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

}  // namespace

ReportData RunReportInBackground(const ReportDefinition& def, const RunSettings& settings,
                                 const std::string& url, const QueryLimits& limits,
                                 QWidget* parent) {
  std::map<std::string, std::string> values;
  for (const auto& [name, value] : settings.variables) values[VariableKey(name)] = value;
  CheckVariables(def, values);

  auto progress = std::make_shared<Progress>();
  auto data = std::make_shared<ReportData>();
  RunSettings run = settings;
  run.progress = [progress](const QString& stage, long long done, long long total) {
    std::lock_guard lock(progress->mutex);
    progress->stage = stage;
    progress->done = done;
    progress->total = total;
    return true;  // Cancel reaches the connection directly
  };

  BackgroundRunner runner(url, limits);
  std::optional<RunOutcome> outcome;
  QObject::connect(&runner, &BackgroundRunner::finished, &runner,
                   [&outcome](const RunOutcome& result) { outcome = result; });
  runner.StartJob([&def, run, data](GuardedConnection& connection) {
    *data = RunReport(def, connection, run);
  });

  QElapsedTimer timer;
  timer.start();
  std::unique_ptr<QProgressDialog> dialog;
  const QPointer<QWidget> owner(parent);
  while (!outcome) {
    if (!dialog && timer.elapsed() >= kDialogDelayMs) {
      dialog = std::make_unique<QProgressDialog>(progress->stage, QStringLiteral("Cancel"), 0, 0,
                                                 owner.data());
      dialog->setWindowTitle(QStringLiteral("Report"));
      dialog->setWindowModality(Qt::WindowModal);
      dialog->setMinimumDuration(0);
      dialog->show();
    }
    if (dialog) {
      std::lock_guard lock(progress->mutex);
      dialog->setLabelText(progress->total > 0 ? QStringLiteral("%1 (%2 of %3)")
                                                     .arg(progress->stage)
                                                     .arg(progress->done)
                                                     .arg(progress->total)
                                               : QStringLiteral("%1 (%2)")
                                                     .arg(progress->stage)
                                                     .arg(progress->done));
      if (dialog->wasCanceled()) runner.Cancel();
    }
    // Until the dialog is up, clicks wait: the window must not start a
    // second run under the first.
    QCoreApplication::processEvents(dialog ? QEventLoop::AllEvents
                                           : QEventLoop::ExcludeUserInputEvents);
    if (!outcome) runner.Wait(20);
  }
  switch (outcome->status) {
    case RunOutcome::Status::kDone:
      return std::move(*data);
    case RunOutcome::Status::kCancelled:
      throw Cancelled();
    case RunOutcome::Status::kRefused:
      throw GuardError(GuardError::Kind::kRefused, outcome->error);
    case RunOutcome::Status::kTimeout:
      throw GuardError(GuardError::Kind::kTimeout, outcome->error);
    case RunOutcome::Status::kRowLimit:
      throw GuardError(GuardError::Kind::kRowLimit, outcome->error);
    case RunOutcome::Status::kFailed:
      break;
  }
  throw Error(outcome->error);
}

}  // namespace cvve::reportengine
