#include "profiles/views_tree.h"

#include <cstring>
#include <exception>
#include <filesystem>
#include <optional>
#include <vector>

#include "base/error.h"
#include "base/text.h"
#include "component/frm_acct_view_edit.h"
#include "filesafety/guarded_writes.h"
#include "host/host_services.h"
#include "profiles/profile_loader.h"
#include "profiles/profile_saver.h"
#include "ui/prompter.h"

namespace cvve {

namespace {

constexpr const char* kUserWherePlaceholder = "%USERWHERE%";

// The tree builder's one message, shown at most once per build.
class BuildErrorReporter {
 public:
  explicit BuildErrorReporter(frmAcctViewEdit& ed) : ed_(ed) {}
  void Report(const std::exception& e) {
    if (shown_) return;
    shown_ = true;
    ResumeNext([&] {
      ed_.Prompt().MsgBox(
          "Error opening account views file.  Please close " + ed_.Host().HostName() +
              " and restart it." + kCrLf + kCrLf +
              "If you still encounter this error, you may need to re-set up your account views "
              "in the Account View Manager." +
              kCrLf + kCrLf + "Extended Info: " + Describe(e),
          ui::Buttons::kOk, ui::Icon::kCritical, "Error");
    });
  }
  // Runs one element's steps; a failure ends that element and is reported.
  template <class Step>
  void Run(Step&& step) {
    try {
      step();
    } catch (const std::exception& e) {
      Report(e);
    } catch (...) {
      Report(Error("Unknown error"));
    }
  }

 private:
  frmAcctViewEdit& ed_;
  bool shown_ = false;
};

// The host's users, asked for once per build and only when a profile needs them.
class UserList {
 public:
  explicit UserList(frmAcctViewEdit& ed) : ed_(ed) {}
  const std::vector<std::string>& Get() {
    if (!users_) users_ = ed_.Host().Users();
    return *users_;
  }

 private:
  frmAcctViewEdit& ed_;
  std::optional<std::vector<std::string>> users_;
};

// One entry per named user, then "SYSTEM". An entry that cannot be added (a
// user named twice) is left out.
void AddUserEntries(ui::TreeView& tree, ui::NodeId profile_node, UserList& users) {
  if (profile_node == ui::kNoNode) throw Error("Object variable or With block variable not set");
  const std::string profile = tree.Node(profile_node).text;
  for (const std::string& user : users.Get()) {
    if (user.empty()) continue;
    ResumeNext([&] {
      ui::NodeId node = tree.Add(profile_node, UserEntryKey(profile, user), user, "user");
      tree.SetTag(node, "USERVIEW");
    });
  }
  ResumeNext([&] {
    ui::NodeId node = tree.Add(profile_node, SystemEntryKey(profile), "SYSTEM", "user");
    tree.SetTag(node, "USERVIEW");
  });
}

// The children of a profile record the tree needs, read in one pass (the
// first child of each name counts, as ChildText reads it): a large file
// holds tens of thousands of records of some thirty children each.
struct RecordFields {
  std::string name;
  std::string type;
  bool user_where = false;
};

RecordFields ReadRecord(XmlNode profile) {
  RecordFields fields;
  bool have_name = false, have_type = false, have_sql = false;
  for (XmlNode child = profile.first_child(); child && !(have_name && have_type && have_sql);
       child = child.next_sibling()) {
    if (child.type() != pugi::node_element) continue;
    const char* element = child.name();
    if (!have_name && std::strcmp(element, "Name") == 0) {
      fields.name = NodeText(child);
      have_name = true;
    } else if (!have_type && std::strcmp(element, "AcctViewType") == 0) {
      fields.type = NodeText(child);
      have_type = true;
    } else if (!have_sql && std::strcmp(element, "SQL") == 0) {
      fields.user_where = Contains(NodeText(child), kUserWherePlaceholder);
      have_sql = true;
    }
  }
  return fields;
}

ui::NodeId RequireNode(const ui::TreeView& tree, const std::string& key) {
  ui::NodeId node = tree.FindKey(key);
  if (node == ui::kNoNode) throw Error("Element not found");
  return node;
}

void AddFolders(frmAcctViewEdit& ed, BuildErrorReporter& errors) {
  ui::TreeView& tree = ed.tvwViews;
  DocumentCursor& setup = ed.SetupDoc;
  setup.GoToChild("");
  setup.GoToChild("RootNodes");
  for (XmlNode root = setup.GoToChild("Root"); root; root = NextSibling(root)) {
    errors.Run([&] {
      const std::string index = ChildText(root, "Index");
      if (index == "99") return;  // the hidden folder
      const std::string name = ChildText(root, "Name");
      ui::NodeId folder = tree.Add(ui::kNoNode, "ROOT" + index, name, "closed", "open");
      ed.cmbAcctViewType.AddItem(name, static_cast<long>(RoundedVal(index)));
      tree.SetSorted(folder, true);
      tree.SetBold(folder, true);
    });
  }
}

void AddDefaultProfiles(frmAcctViewEdit& ed, BuildErrorReporter& errors, UserList& users) {
  ui::TreeView& tree = ed.tvwViews;
  DocumentCursor& defaults = ed.DefaultsDoc;
  defaults.GoToChild("");
  XmlNode profiles = defaults.GoToChild("Profiles");
  for (XmlNode profile = profiles.first_child(); profile; profile = NextSibling(profile)) {
    errors.Run([&] {
      const RecordFields record = ReadRecord(profile);
      ui::NodeId parent = RequireNode(tree, record.type == "99" ? "ROOT0" : "ROOT" + record.type);
      ui::NodeId node = tree.Add(parent, "", record.name, "AcctView");
      tree.SetKey(node, record.name);
      tree.SetTag(node, "0");
      if (record.user_where) AddUserEntries(tree, node, users);
    });
  }
}

// Each step that fails is skipped and the pass goes on.
void AddViewsProfiles(frmAcctViewEdit& ed, UserList& users) {
  ui::TreeView& tree = ed.tvwViews;
  DocumentCursor& views = ed.ViewsDoc;
  views.GoToChild("");
  XmlNode profiles = views.GoToChild("Profiles");
  for (XmlNode profile = profiles.first_child(); profile; profile = NextSibling(profile)) {
    const RecordFields record = ReadRecord(profile);
    const std::string& name = record.name;
    if (name.empty()) continue;
    // Every node of that text is overridden by the views file: the text
    // index keeps this linear in the number of profiles.
    const std::vector<ui::NodeId>& same_text = tree.FindText(name);
    ui::NodeId profile_node = ui::kNoNode;
    if (!same_text.empty()) {
      profile_node = same_text.front();
      for (ui::NodeId node : same_text) ResumeNext([&] { tree.SetTag(node, "1"); });
    } else {
      ui::NodeId parent = ui::kNoNode;
      bool found = ResumeNext([&] {
        const std::string& type = record.type;
        parent = RequireNode(tree, type == "99" || type.empty() ? "ROOT0" : "ROOT" + type);
      });
      if (found) {
        ResumeNext([&] {
          profile_node = tree.Add(parent, name, name, "AcctView");
          tree.SetTag(profile_node, "2");
        });
      }
    }
    if (record.user_where) ResumeNext([&] { AddUserEntries(tree, profile_node, users); });
  }
}

void AddReportFiles(frmAcctViewEdit& ed) {
  namespace fs = std::filesystem;
  ui::TreeView& tree = ed.tvwViews;
  ui::NodeId folder_node = tree.Add(ui::kNoNode, "ROOT", "Custom Reports", "closed", "open");
  const std::string folder = ed.Host().ReportsBaseFolder() + "/Custom Reports/";
  std::error_code ec;
  // A folder that cannot be listed holds no reports.
  for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
    std::error_code type_ec;
    if (!it->is_regular_file(type_ec)) continue;
    const std::string file = it->path().filename().string();
    // Only ".cvx" as written: a report is opened again by its name + ".cvx",
    // and this file system tells letter cases apart.
    if (!EndsWith(file, ".cvx")) continue;
    ui::NodeId node = tree.Add(folder_node, "", file.substr(0, file.size() - 4), "SNotes");
    tree.SetTag(node, folder + file);
  }
  tree.SetSorted(folder_node, true);
  tree.SetExpanded(folder_node, true);
  tree.EnsureVisible(folder_node);
}

void SelectNamedNode(frmAcctViewEdit& ed, const std::string& sSelectName) {
  ui::TreeView& tree = ed.tvwViews;
  if (!sSelectName.empty()) {
    const std::vector<ui::NodeId>& hits = tree.FindText(sSelectName);
    if (!hits.empty()) {
      tree.SetSelectedNode(hits.front());
      tree.EnsureVisible(hits.front());
    }
  }
  if (tree.SelectedNode() == ui::kNoNode) {
    ui::NodeId root0 = tree.FindKey("ROOT0");
    if (root0 != ui::kNoNode && !tree.Children(root0).empty()) {
      ui::NodeId first = tree.Children(root0).front();
      tree.SetSelectedNode(first);
      tree.EnsureVisible(first);
    }
  }
}

}  // namespace

std::string UserEntryKey(const std::string& profile, const std::string& user) {
  // The length keeps "a|b" + "c" apart from "a" + "b|c".
  return "USER" + Str(static_cast<std::int64_t>(profile.size())) + "|" + profile + "|" + user;
}

std::string SystemEntryKey(const std::string& profile) { return "USERSYS|" + profile; }

void LoadViewsTree(frmAcctViewEdit& ed, const std::string& sSelectName) {
  BuildErrorReporter errors(ed);
  UserList users(ed);
  errors.Run([&] {
    ed.tvwViews.Clear();
    ed.cmbAcctViewType.Clear();
  });
  const std::string& path = ed.ViewsPath;
  const bool view_mode = path.size() >= 4 && ToLower(path.substr(path.size() - 4)) == ".xml";
  if (view_mode) {
    AddFolders(ed, errors);
    AddDefaultProfiles(ed, errors, users);
    AddViewsProfiles(ed, users);
    errors.Run([&] {
      ui::NodeId search = ed.tvwViews.Add(ui::kNoNode, "ROOTSearch", "Search Results", "Search");
      ed.tvwViews.SetSorted(search, true);
      ed.tvwViews.SetBold(search, true);
    });
  } else {
    errors.Run([&] { AddReportFiles(ed); });
  }
  errors.Run([&] { SelectNamedNode(ed, sSelectName); });
  ed.RefreshSelectedNode();
}

int ProfileKind(frmAcctViewEdit& ed, const std::string& name) {
  const std::vector<ui::NodeId>& nodes = ed.tvwViews.FindText(name);
  if (nodes.empty()) return -1;
  // A report's tag is its file path; every report is the user's own, and the
  // report mode has no defaults file to hold a system profile.
  if (ed.InReportMode()) return 2;
  return static_cast<int>(RoundedVal(ed.tvwViews.Node(nodes.front()).tag));
}

void tvwViews_NodeClick(frmAcctViewEdit& ed, ui::NodeId node) {
  try {
    if (ed.ProfileChanged) {
      ui::Answer answer = ed.Prompt().MsgBox(
          "You have made changes to this profile.  Would you like to save these changes?",
          ui::Buttons::kYesNoCancel, ui::Icon::kQuestion, "Save Changes");
      if (answer == ui::Answer::kCancel) return;  // the changes stay on screen
      ed.ProfileChanged = false;
      if (answer == ui::Answer::kYes) static_cast<void>(SaveProfile(ed));
    }
    if (node == ui::kNoNode) {
      DisableProfileEditing(ed);
      return;
    }
    const ui::TreeNode& chosen = ed.tvwViews.Node(node);
    if (StartsWith(chosen.key, "ROOT")) return;  // a folder loads nothing
    const std::string name = chosen.text;
    if (ed.InReportMode()) {
      ed.ViewsPath = ed.Host().ReportsBaseFolder() + "/Custom Reports/" + name + ".cvx";
      ed.ViewsDoc.Load(ed.ViewsPath);
      filesafety::RememberReport(ed);
    }
    LoadProfile(ed, name);
  } catch (const std::exception& e) {
    ResumeNext([&] { ed.ShowError("Error loading account view:", e); });
  }
}

void DisableProfileEditing(frmAcctViewEdit& ed) {
  for (ui::Control* control : std::initializer_list<ui::Control*>{
           &ed.cmbAcctViewType, &ed.cmbDataSet, &ed.lstAvailColumns, &ed.lstUsedColumns,
           &ed.cmdAddForm, &ed.cmdRemoveForm, &ed.cmdRemoveAll, &ed.cmdMove[0], &ed.cmdMove[1],
           &ed.lstvwTabs, &ed.optFilter, &ed.fraInstructions}) {
    control->SetEnabled(false);
  }
}

}  // namespace cvve
