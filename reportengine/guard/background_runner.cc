#include "reportengine/guard/background_runner.h"

#include <QElapsedTimer>
#include <algorithm>
#include <QMetaType>
#include "reportengine/guard/guarded_connection.h"

namespace cvve::reportengine {

BackgroundRunner::BackgroundRunner(std::string url, QueryLimits limits, QObject* parent)
    : QObject(parent), url_(std::move(url)), limits_(limits) {
  qRegisterMetaType<RunOutcome>("cvve::reportengine::RunOutcome");
}

BackgroundRunner::~BackgroundRunner() {
  Cancel();
  if (worker_.joinable()) worker_.join();
}

bool BackgroundRunner::Running() const {
  std::lock_guard lock(mutex_);
  return running_;
}

void BackgroundRunner::Cancel() {
  std::lock_guard lock(mutex_);
  if (!running_) return;
  cancel_requested_ = true;
  if (connection_ != nullptr) connection_->Cancel();
}

bool BackgroundRunner::Wait(int timeout_ms) {
  std::unique_lock lock(mutex_);
  return ended_.wait_for(lock, std::chrono::milliseconds(timeout_ms), [this] { return !running_; });
}

bool BackgroundRunner::Start(const std::string& statement, int batch_rows) {
  const int batch = std::max(1, batch_rows);
  return Launch([this, statement, batch](GuardedConnection& connection) {
    GuardedQuery query = connection.Execute(statement);
    QStringList names;
    for (int c = 0; c < query.ColumnCount(); ++c) names << query.ColumnName(c);
    emit columnsReady(names);
    QList<QVariantList> rows;
    const int width = static_cast<int>(names.size());
    while (query.Next()) {
      QVariantList row;
      row.reserve(width);
      for (int c = 0; c < width; ++c) row << query.Value(c);
      rows << row;
      if (rows.size() >= batch) emit rowsReady(std::exchange(rows, {}));
    }
    if (!rows.isEmpty()) emit rowsReady(rows);
    return query.Rows();
  });
}

bool BackgroundRunner::StartJob(std::function<void(GuardedConnection&)> job) {
  return Launch([job = std::move(job)](GuardedConnection& connection) {
    job(connection);
    return 0LL;
  });
}

bool BackgroundRunner::Launch(std::function<long long(GuardedConnection&)> work) {
  {
    std::lock_guard lock(mutex_);
    // Once `finished` is on its way, a slot receiving it may start again.
    if (running_ && !finishing_) return false;
  }
  if (worker_.joinable()) worker_.join();
  {
    std::lock_guard lock(mutex_);
    running_ = true;
    finishing_ = false;
    cancel_requested_ = false;
  }
  worker_ = std::thread([this, work = std::move(work)] {
    QElapsedTimer timer;
    timer.start();
    RunOutcome outcome;
    try {
      GuardedConnection connection(url_, limits_);
      {
        std::lock_guard lock(mutex_);
        connection_ = &connection;
        // A Cancel that came while the connection was opening.
        if (cancel_requested_) connection.Cancel();
      }
      struct Release {
        BackgroundRunner* runner;
        ~Release() {
          std::lock_guard lock(runner->mutex_);
          runner->connection_ = nullptr;
        }
      } release{this};
      if (cancel_requested_) throw Cancelled();
      outcome.rows = work(connection);
    } catch (const Cancelled& e) {
      outcome.status = RunOutcome::Status::kCancelled;
      outcome.error = e.what();
    } catch (const GuardError& e) {
      outcome.status = e.kind() == GuardError::Kind::kRefused   ? RunOutcome::Status::kRefused
                       : e.kind() == GuardError::Kind::kTimeout ? RunOutcome::Status::kTimeout
                                                                 : RunOutcome::Status::kRowLimit;
      outcome.error = e.what();
    } catch (const StatementError& e) {
      outcome.status = RunOutcome::Status::kFailed;
      outcome.error = e.what();
      outcome.error_position = e.position();
    } catch (const std::exception& e) {
      outcome.status = RunOutcome::Status::kFailed;
      outcome.error = e.what();
    }
    {
      std::lock_guard lock(mutex_);
      // A cancel that landed after the work ended does not turn it into one.
      if (cancel_requested_ && outcome.status == RunOutcome::Status::kFailed) {
        outcome.status = RunOutcome::Status::kCancelled;
      }
    }
    outcome.elapsed_ms = timer.elapsed();
    {
      std::lock_guard lock(mutex_);
      finishing_ = true;
    }
    emit finished(outcome);
    {
      std::lock_guard lock(mutex_);
      running_ = false;
    }
    ended_.notify_all();
  });
  return true;
}

}  // namespace cvve::reportengine
