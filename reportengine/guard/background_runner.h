#pragma once
// Runs work on a guarded connection of its own off the user-interface thread,
// so that a window stays alive while a statement runs and its Cancel stops
// the statement at the database.
//
//   BackgroundRunner runner(url, limits);
//   connect(&runner, &BackgroundRunner::columnsReady, ...);  // QStringList
//   connect(&runner, &BackgroundRunner::rowsReady, ...);     // a batch of rows
//   connect(&runner, &BackgroundRunner::finished, ...);      // RunOutcome
//   runner.Start("SELECT ...");
//   ...
//   runner.Cancel();   // from the UI thread, at any time
//
// Signals are emitted from the worker thread; receivers living in the UI
// thread get them queued, in order, and `finished` always comes last, once
// per Start. The connection is opened in the worker (QtSql connections
// belong to their thread) and closed when the work ends. Destroying the
// runner cancels what runs and waits for it.
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantList>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "reportengine/guard/limits.h"

namespace cvve::reportengine {

class GuardedConnection;

struct RunOutcome {
  enum class Status { kDone, kCancelled, kRefused, kTimeout, kRowLimit, kFailed };
  Status status = Status::kDone;
  long long rows = 0;     // rows delivered
  std::string error;      // the message when not kDone (the database's own where it failed)
  long long elapsed_ms = 0;
  long long error_position = -1;  // kFailed: the byte in the statement the database pointed at

  bool Ok() const { return status == Status::kDone; }
};

class BackgroundRunner : public QObject {
  Q_OBJECT

 public:
  BackgroundRunner(std::string url, QueryLimits limits, QObject* parent = nullptr);
  ~BackgroundRunner() override;

  // Starts one statement; its columns, rows (in batches of up to
  // `batch_rows`) and outcome come as signals. False when work is running.
  bool Start(const std::string& statement, int batch_rows = 500);

  // Starts other work on the runner's connection (a whole report); `job`
  // runs in the worker thread and may throw (cvve::Error, GuardError,
  // Cancelled), which becomes the outcome. `rows` of the outcome stays 0.
  bool StartJob(std::function<void(GuardedConnection&)> job);

  // Stops the running work at the database; its outcome is kCancelled.
  void Cancel();
  // Whether work has started and its `finished` is not yet emitted.
  bool Running() const;
  // Waits for the work to end (tests and shutdown); false on timeout.
  bool Wait(int timeout_ms);

 signals:
  void columnsReady(const QStringList& names);
  void rowsReady(const QList<QVariantList>& rows);
  void finished(const cvve::reportengine::RunOutcome& outcome);

 private:
  bool Launch(std::function<long long(GuardedConnection&)> work);

  std::string url_;
  QueryLimits limits_;
  mutable std::mutex mutex_;
  GuardedConnection* connection_ = nullptr;  // while the worker has one
  bool cancel_requested_ = false;
  bool running_ = false;
  bool finishing_ = false;  // `finished` emitted or about to be
  std::condition_variable ended_;
  std::thread worker_;
};

}  // namespace cvve::reportengine

Q_DECLARE_METATYPE(cvve::reportengine::RunOutcome)
