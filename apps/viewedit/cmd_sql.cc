// viewedit sql: the statements of one profile or of every profile of a file
// set, built by the editor's own query builder on a headless editor, as JSON.
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "base/text.h"
#include "commands.h"
#include "file_sets.h"
#include "component/editor_environment.h"
#include "component/frm_acct_view_edit.h"
#include "query/sql_builder.h"
#include "query/statement_batch.h"
#include "ui/headless_dialog_host.h"
#include "ui/headless_prompter.h"
#include "viewfiles/document_cursor.h"

namespace viewedit {

namespace {

using nlohmann::json;

json Messages(const cvve::ui::HeadlessPrompter& prompter) {
  json list = json::array();
  for (const auto& shown : prompter.Shown()) {
    json message{{"kind", shown.kind}, {"text", shown.text}, {"title", shown.title}};
    if (shown.kind == "msgbox") {
      message["buttons"] = shown.buttons;
      message["icon"] = shown.icon;
    }
    list.push_back(std::move(message));
  }
  return list;
}

// A statement's text, or {"error": description} when its builder failed.
json Statement(cvve::BuiltStatement&& built) {
  return built.failed ? json{{"error", std::move(built.text)}} : json(std::move(built.text));
}

json DescribeFileSet(const FileSet& set, const HostOptions& options,
                     const std::string& only_profile) {
  LoadedFileSet loaded(set, options);
  cvve::DefaultHostServices& host = loaded.host;
  cvve::ui::HeadlessPrompter& prompter = loaded.prompter;
  auto& ed = loaded.editor;

  json result{{"fileset", set.label},
              {"folder", host.view_files_folder},
              {"messages", Messages(prompter)},
              {"profiles", json::array()}};

  auto profiles = ProfilesOf(*ed);
  if (!only_profile.empty()) {
    std::erase_if(profiles, [&](const auto& p) { return p.first != only_profile; });
    if (profiles.empty()) {
      throw std::runtime_error("no profile '" + only_profile + "' in file set '" + set.label +
                               "'");
    }
  }
  cvve::StatementBatch batch(*ed);
  for (const auto& [name, kind] : profiles) {
    prompter.ClearShown();
    ed->ProfileChanged = false;
    cvve::StatementBatch::Result next = batch.Next(name);
    json profile{{"name", name}, {"kind", kind}, {"dataset", std::move(next.data_set)}};
    cvve::ProfileStatements& built = next.statements;
    profile["fieldList"] = Statement(std::move(built.field_list));
    profile["whereList"] = Statement(std::move(built.where_list));
    profile["viewSQL"] = Statement(std::move(built.view_sql));
    profile["reportSQL"] = Statement(std::move(built.report_sql));
    profile["messages"] = Messages(prompter);
    result["profiles"].push_back(std::move(profile));
  }
  return result;
}

}  // namespace

void RegisterSqlCommand(CLI::App& app, HostOptions& options) {
  struct Arguments {
    std::string profile;
    std::vector<std::string> file_sets;
  };
  auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand(
      "sql",
      "Print the field list, where list, view statement and report statement of every profile "
      "of a file set (or of one, with --profile) as JSON, without a display.\n"
      "FILESET is acct, inv or eod (the entry methods' file sets in the views folder), or "
      "VIEWS,DEFAULTS,SETUP: three file names, comma-separated, in the views folder (or, when "
      "they carry a folder, all three in that one folder). With one FILESET the output is one "
      "object {\"fileset\", \"folder\", \"messages\", \"profiles\": [{\"name\", \"kind\", "
      "\"dataset\", \"fieldList\", \"whereList\", \"viewSQL\", \"reportSQL\", \"messages\"}]}; "
      "with several, an array of them. A statement whose builder failed is {\"error\": text}; "
      "\"messages\" lists the message boxes shown while loading and building.");
  AddHostOptions(*command, options);
  command->add_option("--profile", arguments->profile, "Only the profile of this name");
  command->add_option("FILESET", arguments->file_sets, "acct | inv | eod | VIEWS,DEFAULTS,SETUP")
      ->required();
  command->callback([arguments, &options] {
    json output = json::array();
    try {
      for (const std::string& argument : arguments->file_sets) {
        output.push_back(DescribeFileSet(ParseFileSet(argument), options, arguments->profile));
      }
    } catch (const std::exception& e) {
      std::cerr << "viewedit sql: " << e.what() << "\n";
      throw CLI::RuntimeError(1);
    }
    const json& shown = output.size() == 1 ? output[0] : output;
    std::cout << shown.dump(2, ' ', false, json::error_handler_t::replace) << "\n";
  });
}

}  // namespace viewedit
