#include "reportengine/guard/limits.h"

#include <QSettings>
#include <cmath>
#include <memory>

#include "base/error.h"

namespace cvve::reportengine {

namespace {

std::unique_ptr<QSettings> SettingsFile() {
  return std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                     QStringLiteral("cvviewedit"), QStringLiteral("cvviewedit"));
}

std::string Seconds(long long ms) {
  if (ms % 1000 == 0) return std::to_string(ms / 1000);
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.3g", static_cast<double>(ms) / 1000.0);
  return buffer;
}

void CheckTimeout(double seconds, const std::string& where) {
  // Below a millisecond a limit could never be met; beyond a year it is a typo.
  if (!std::isfinite(seconds) || seconds < 0.001 || seconds > 365.0 * 24 * 3600) {
    throw Error(where + " must be a number of seconds above 0, not " + std::to_string(seconds));
  }
}

}  // namespace

std::string LimitsSettingsFile() { return SettingsFile()->fileName().toStdString(); }

QueryLimits ResolveLimits(std::optional<double> timeout_seconds,
                          std::optional<long long> row_limit) {
  QueryLimits limits;
  const std::unique_ptr<QSettings> settings_file = SettingsFile();
  const QSettings& settings = *settings_file;
  const std::string file = settings.fileName().toStdString();
  const QVariant timeout = settings.value(QStringLiteral("database/timeout_seconds"));
  if (timeout.isValid()) {
    bool ok = false;
    const double seconds = timeout.toString().trimmed().toDouble(&ok);
    const std::string where = "timeout_seconds in the [database] section of " + file;
    if (!ok) throw Error(where + " is '" + timeout.toString().toStdString() + "', not a number");
    CheckTimeout(seconds, where);
    limits.timeout_ms = std::llround(seconds * 1000);
  }
  const QVariant rows = settings.value(QStringLiteral("database/row_limit"));
  if (rows.isValid()) {
    bool ok = false;
    const long long value = rows.toString().trimmed().toLongLong(&ok);
    if (!ok || value < 1) {
      throw Error("row_limit in the [database] section of " + file + " is '" +
                  rows.toString().toStdString() + "', not a number of rows above 0");
    }
    limits.row_limit = value;
  }
  if (timeout_seconds) {
    CheckTimeout(*timeout_seconds, "--timeout");
    limits.timeout_ms = std::llround(*timeout_seconds * 1000);
  }
  if (row_limit) {
    if (*row_limit < 1) {
      throw Error("--row-limit must be a number of rows above 0, not " +
                  std::to_string(*row_limit));
    }
    limits.row_limit = *row_limit;
  }
  return limits;
}

std::string TimeoutMessage(const QueryLimits& limits) {
  return "the statement ran longer than the time limit of " + Seconds(limits.timeout_ms) +
         " seconds and was stopped; raise it with --timeout SECONDS or timeout_seconds in the "
         "[database] section of " +
         LimitsSettingsFile();
}

std::string RowLimitMessage(const QueryLimits& limits) {
  return "the statement returned more than the row limit of " + std::to_string(limits.row_limit) +
         " rows and was stopped; raise it with --row-limit N or row_limit in the [database] "
         "section of " +
         LimitsSettingsFile();
}

}  // namespace cvve::reportengine
