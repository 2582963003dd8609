// viewedit list: the host's list window for people without a screen. Runs a
// profile's view statement on the editor's database and prints its rows as
// an aligned table (or CSV, JSON), then the row count.
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "commands.h"
#include "file_sets.h"

#if CVVE_WITH_QT
#include "profiles/profile_loader.h"
#include "results/results.h"
#endif

namespace viewedit {

namespace {

constexpr int kFailed = 1;
constexpr int kRefused = 3;

struct ListArguments {
  std::string file_set;
  std::string profile;
  std::size_t limit = 20;
  bool csv = false;
  bool json = false;
};

#if CVVE_WITH_QT
const char* KindName(int kind) { return kind == 2 ? "user" : "system"; }

int List(const ListArguments& args, const HostOptions& options) {
  LoadedFileSet loaded(ParseFileSet(args.file_set), options);
  cvve::frmAcctViewEdit& ed = *loaded.editor;
  const auto profiles = ProfilesOf(ed);
  if (profiles.empty()) throw std::runtime_error("file set '" + args.file_set + "' has no profiles");
  std::string name = profiles.front().first;
  if (!args.profile.empty()) {
    bool found = false;
    for (const auto& profile : profiles) found = found || profile.first == args.profile;
    if (!found) {
      throw std::runtime_error("no profile '" + args.profile + "' in file set '" + args.file_set +
                               "'");
    }
    name = args.profile;
  }
  const bool table_output = !args.csv && !args.json;
  // Without a profile named a person sees what there is to choose from first.
  if (table_output && args.profile.empty()) {
    std::vector<std::vector<std::string>> rows;
    for (const auto& [profile, kind] : profiles) rows.push_back({profile, KindName(kind)});
    std::cout << "Profiles of " << args.file_set << ":\n"
              << cvve::results::AlignedTable({"Profile", "Kind"}, rows) << "\n";
  }
  cvve::LoadProfile(ed, name);
  LazyRowsSource source(options);
  const std::size_t keep = args.limit == 0 ? static_cast<std::size_t>(-1) : args.limit;
  const cvve::results::Table table = cvve::results::RunProfile(ed, source, keep);
  if (!table.error.empty()) {
    std::cerr << "viewedit list: " << name << ": " << table.error << "\n";
    const std::string excerpt = cvve::results::ErrorExcerpt(table.statement, table.error_position);
    if (!excerpt.empty()) std::cerr << excerpt << "\n";
    return kRefused;
  }
  if (args.json) {
    nlohmann::json out = cvve::results::ToJson(table);
    out["profile"] = name;
    std::cout << out.dump(2) << "\n";
    return 0;
  }
  if (args.csv) {
    std::cout << cvve::results::CsvTable(table.columns, table.shown);
    return 0;
  }
  std::vector<bool> right;
  for (const std::string& format : cvve::results::ShownFormats(ed)) {
    right.push_back(cvve::results::IsAmountFormat(format));
  }
  if (right.size() != table.columns.size()) right.clear();
  std::cout << "Profile " << name << " (" << ed.cmbDataSet.Text() << "):\n"
            << cvve::results::AlignedTable(table.columns, table.shown, right);
  const std::string rows = table.count == 1 ? " row" : " rows";
  if (static_cast<long long>(table.shown.size()) < table.count) {
    std::cout << table.count << rows << " (the first " << table.shown.size()
              << " shown; --limit 0 shows all)\n";
  } else {
    std::cout << table.count << rows << "\n";
  }
  return 0;
}
#endif

}  // namespace

void RegisterListCommand(CLI::App& app, HostOptions& options) {
  auto args = std::make_shared<ListArguments>();
  CLI::App* command = app.add_subcommand(
      "list",
      "Run a profile's view statement on the editor's database and print its rows, then the "
      "row count. FILESET as for `viewedit sql`. Without --profile it lists the file set's "
      "profiles and shows the rows of the first. Exit codes: 0 done, 1 the file set or profile "
      "cannot be read, 3 the database refused the statement.");
  AddHostOptions(*command, options);
  AddReportDatabaseOptions(*command, options);
  command->add_option("FILESET", args->file_set, "acct | inv | eod | VIEWS,DEFAULTS,SETUP")
      ->required();
  command->add_option("--profile", args->profile, "The profile to run (default: the first)");
  command->add_option("--limit", args->limit, "Print at most this many rows; 0 prints all")
      ->capture_default_str();
  auto* csv = command->add_flag("--csv", args->csv, "Print CSV (the columns' formats applied)");
  command->add_flag("--json", args->json,
                    "Print {count, columns, rows, error, millis, profile} with the values as "
                    "the database gives them")
      ->excludes(csv);
  command->callback([args, &options] {
    int code = 0;
#if CVVE_WITH_QT
    try {
      code = List(*args, options);
    } catch (const std::exception& e) {
      std::cerr << "viewedit list: " << e.what() << "\n";
      code = kFailed;
    }
#else
    std::cerr << "viewedit list: this build has no database access (configure with "
                 "-DCVVE_WITH_QT=ON)\n";
    code = kFailed;
#endif
    if (code != 0) throw CLI::RuntimeError(code);
  });
}

}  // namespace viewedit
