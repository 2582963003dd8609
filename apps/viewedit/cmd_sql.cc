// viewedit sql: the statements of one profile or of every profile of a file
// set, built by the editor's own query builder on a headless editor, as JSON.
#include <exception>
#include <filesystem>
#include <functional>
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
#include "component/editor_environment.h"
#include "component/frm_acct_view_edit.h"
#include "profiles/profile_loader.h"
#include "query/sql_builder.h"
#include "ui/headless_dialog_host.h"
#include "ui/headless_prompter.h"
#include "viewfiles/document_cursor.h"

namespace viewedit {

namespace {

using nlohmann::json;

struct FileSet {
  std::string label;
  std::string folder;  // empty: the views folder of the options
  std::string views, defaults, setup;
};

// The entry methods' file sets, or three file names given as VIEWS,DEFAULTS,SETUP.
FileSet ParseFileSet(const std::string& argument) {
  if (argument == "acct") return {argument, "", "acctviews.xml", "acctviewsdef.xml", "viewsetup.xml"};
  if (argument == "inv") return {argument, "", "v_invviews.xml", "v_invdef.xml", "v_invsetup.xml"};
  if (argument == "eod") return {argument, "", "eodviews.xml", "eoddef.xml", "eodsetup.xml"};
  const std::vector<std::string> names = cvve::Split(argument, ',');
  if (names.size() != 3) {
    throw std::runtime_error("'" + argument +
                             "' is no file set: use acct, inv, eod or VIEWS,DEFAULTS,SETUP");
  }
  FileSet set{argument, "", "", "", ""};
  std::vector<std::string> files;
  for (const std::string& name : names) {
    const std::filesystem::path path(name);
    if (path.filename().empty()) throw std::runtime_error("'" + name + "' names no file");
    const std::string folder = path.parent_path().string();
    if (files.empty()) {
      set.folder = folder;
    } else if (folder != set.folder) {
      throw std::runtime_error("the three files of '" + argument + "' must lie in one folder");
    }
    files.push_back(path.filename().string());
  }
  set.views = files[0];
  set.defaults = files[1];
  set.setup = files[2];
  return set;
}

// Profile names of the file set in tree order with their kinds: the defaults
// file's (0, or 1 when the views file customises it), then the views file's own (2).
std::vector<std::pair<std::string, int>> ProfilesOf(cvve::frmAcctViewEdit& ed) {
  auto names_in = [](const cvve::DocumentCursor& doc) {
    std::vector<std::string> names;
    for (cvve::XmlNode node : cvve::SelectNodes(doc.Root(), "Profiles/Profile")) {
      std::string name = cvve::ChildText(node, "Name");
      if (!name.empty()) names.push_back(std::move(name));
    }
    return names;
  };
  const std::vector<std::string> defaults = names_in(ed.DefaultsDoc);
  const std::vector<std::string> views = names_in(ed.ViewsDoc);
  const std::set<std::string> in_views(views.begin(), views.end());
  const std::set<std::string> in_defaults(defaults.begin(), defaults.end());
  std::vector<std::pair<std::string, int>> profiles;
  std::set<std::string> seen;
  for (const std::string& name : defaults) {
    if (seen.insert(name).second) profiles.emplace_back(name, in_views.count(name) ? 1 : 0);
  }
  for (const std::string& name : views) {
    if (!in_defaults.count(name) && seen.insert(name).second) profiles.emplace_back(name, 2);
  }
  return profiles;
}

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
json Statement(const std::function<std::string()>& build) {
  try {
    return build();
  } catch (const std::exception& e) {
    return json{{"error", e.what()}};
  }
}

json DescribeFileSet(const FileSet& set, const HostOptions& options,
                     const std::string& only_profile) {
  cvve::DefaultHostServices host = MakeHost(options);
  if (!set.folder.empty()) {
    host.view_files_folder =
        cvve::WithoutTrailingSeparator(std::filesystem::absolute(set.folder).string());
  }
  cvve::ui::HeadlessPrompter prompter;
  cvve::ui::HeadlessDialogHost dialogs;
  cvve::EditorEnvironment env{host, prompter, dialogs, nullptr};
  auto ed = std::make_unique<cvve::frmAcctViewEdit>(env);
  ed->SetReportMode(0);
  ed->LoadFiles(set.views, set.defaults, set.setup);

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
  for (const auto& [name, kind] : profiles) {
    prompter.ClearShown();
    ed->ProfileChanged = false;
    cvve::LoadProfile(*ed, name);
    json profile{{"name", name}, {"kind", kind}, {"dataset", ed->cmbDataSet.Text()}};
    profile["fieldList"] = Statement([&] { return cvve::BuildFieldList(*ed); });
    profile["whereList"] = Statement([&] { return cvve::BuildWhereList(*ed); });
    profile["viewSQL"] = Statement([&] { return cvve::BuildViewSQL(*ed, false); });
    profile["reportSQL"] = Statement([&] { return cvve::BuildReportSQL(*ed, false); });
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
