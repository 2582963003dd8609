#pragma once
// The demo dealer database: the tables of data/demo/schema.sql filled with
// deterministic, plausible data (customers, vehicles of real makes and
// models, deals, financing, accounts with receipts, promises to pay and
// notes), dated around early 2026.
#include <cstdint>
#include <string>
#include <vector>

namespace cvve::reportengine {

struct DemoDatabaseOptions {
  int accounts = 2000;
  std::uint64_t seed = 1;
  std::string schema_path;         // empty: schema.sql of the demo data folder
  std::vector<std::string> users;  // empty: the demo data's users
  std::string today;               // "YYYY-MM-DD" the data is as of; empty: kDemoToday
};

struct DemoDatabaseCounts {
  std::int64_t customers = 0, vehicles = 0, deals = 0, accounts = 0, history = 0, promises = 0,
               notes = 0;
};

// The day the demo data is "as of" unless told otherwise: due dates,
// lateness and promises are spread around it. The demo view files date their
// fixed values around it too.
inline constexpr const char* kDemoToday = "2026-03-16";

// Writes a new database at `path` (replacing a file there only once the new
// one is complete). Throws cvve::Error when the schema cannot be read or
// executed, `today` is no date, or the file cannot be written; no file is
// left behind then.
DemoDatabaseCounts GenerateDemoDatabase(const std::string& path,
                                        const DemoDatabaseOptions& options);

// The schema file used when none is given.
std::string DefaultSchemaPath();

}  // namespace cvve::reportengine
