#include "file_sets.h"

#include <filesystem>
#include <set>
#include <stdexcept>

#include "base/text.h"
#include "viewfiles/document_cursor.h"

namespace viewedit {

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

LoadedFileSet::LoadedFileSet(const FileSet& set, const HostOptions& options)
    : host(MakeHost(options)), env{host, prompter, dialogs, nullptr} {
  if (!set.folder.empty()) {
    host.view_files_folder =
        cvve::WithoutTrailingSeparator(std::filesystem::absolute(set.folder).string());
  }
  editor = std::make_unique<cvve::frmAcctViewEdit>(env);
  editor->SetReportMode(0);
  editor->LoadFiles(set.views, set.defaults, set.setup);
}

}  // namespace viewedit
