#pragma once
// How long one statement may run and how many rows it may return. The
// defaults hold unless the administrator's settings file or the command line
// says otherwise (the command line wins).
#include <optional>
#include <string>

namespace cvve::reportengine {

struct QueryLimits {
  long long timeout_ms = 60'000;
  long long row_limit = 1'000'000;
};

// The settings file that holds the limits:
// $XDG_CONFIG_HOME/cvviewedit/cvviewedit.ini (else ~/.config/...).
std::string LimitsSettingsFile();

// The defaults, overridden by `timeout_seconds` and `row_limit` of the
// settings file's [database] section, then by the given values. Throws
// cvve::Error naming the key or option for a value that is not a positive
// number.
QueryLimits ResolveLimits(std::optional<double> timeout_seconds = std::nullopt,
                          std::optional<long long> row_limit = std::nullopt);

// The messages that end a run at a limit; each says how to raise it.
std::string TimeoutMessage(const QueryLimits& limits);
std::string RowLimitMessage(const QueryLimits& limits);

}  // namespace cvve::reportengine
