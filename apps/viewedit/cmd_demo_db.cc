// viewedit demo-db: writes the demo dealer database (SQLite) that the demo
// views and reports run on.
#include <chrono>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>

#include "commands.h"

#if CVVE_WITH_QT
#include "reportengine/demo_database.h"
#endif

namespace viewedit {

void RegisterDemoDbCommand(CLI::App& app) {
  struct Arguments {
    int accounts = 2000;
    std::string out = "dealer.db";
    std::uint64_t seed = 1;
    std::string schema;
    std::string today;
  };
  auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand(
      "demo-db",
      "Write the demo dealer database (SQLite): customers, vehicles, deals, financing and "
      "accounts with receipts, promises to pay and notes, the same for the same seed.");
  command->add_option("--accounts", arguments->accounts, "Number of financed accounts")
      ->capture_default_str()
      ->check(CLI::Range(0, 10000000));
  command->add_option("--out", arguments->out, "The database file to write (replaced)")
      ->capture_default_str();
  command->add_option("--seed", arguments->seed, "Seed of the generator")->capture_default_str();
  command->add_option("--today", arguments->today,
                      "The day the data is as of, YYYY-MM-DD (default: 2026-03-16)");
  command->add_option("--schema", arguments->schema,
                      "The schema to create (default: schema.sql of the demo data)");
  command->callback([arguments] {
#if CVVE_WITH_QT
    namespace re = cvve::reportengine;
    re::DemoDatabaseOptions options;
    options.accounts = arguments->accounts;
    options.seed = arguments->seed;
    options.schema_path = arguments->schema;
    options.today = arguments->today;
    try {
      const auto start = std::chrono::steady_clock::now();
      const re::DemoDatabaseCounts counts = re::GenerateDemoDatabase(arguments->out, options);
      const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
      std::cerr << "viewedit demo-db: wrote " << arguments->out << " (" << counts.accounts
                << " accounts, " << counts.customers << " customers, " << counts.vehicles
                << " vehicles, " << counts.deals << " deals, " << counts.history << " receipts, "
                << counts.promises << " promises, " << counts.notes << " notes) in "
                << std::fixed << std::setprecision(2) << took.count() << " s\n";
    } catch (const std::exception& e) {
      std::cerr << "viewedit demo-db: " << e.what() << "\n";
      throw CLI::RuntimeError(1);
    }
#else
    std::cerr << "viewedit demo-db: this build has no report engine (configure with "
                 "-DCVVE_WITH_QT=ON)\n";
    throw CLI::RuntimeError(1);
#endif
  });
}

}  // namespace viewedit
