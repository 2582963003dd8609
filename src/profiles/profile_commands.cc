#include "profiles/profile_commands.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "base/error.h"
#include "base/text.h"
#include "component/frm_acct_view_edit.h"
#include "filesafety/guarded_writes.h"
#include "host/host_services.h"
#include "profiles/profile_saver.h"
#include "profiles/views_tree.h"
#include "reports/report_file_writer.h"
#include "ui/prompter.h"
#include "variables/variable_commands.h"
#include "viewfiles/profile_record.h"

namespace cvve {

namespace {

namespace fs = std::filesystem;

constexpr int kUserProfile = 2;
constexpr const char* kSaveChangesQuestion =
    "You have made changes to the current profile.  Would you like to save these changes?";

void ShowErrorText(frmAcctViewEdit& ed, const std::string& text) {
  ed.Prompt().MsgBox(text, ui::Buttons::kOk, ui::Icon::kCritical, "Error");
}

// The kind in the selected tree node's tag (0 or 1 system, 2 user); a tag
// that is no number, or no selection, counts as 0.
int SelectedKind(frmAcctViewEdit& ed) {
  const ui::NodeId node = ed.tvwViews.SelectedNode();
  if (node == ui::kNoNode) return 0;
  return static_cast<int>(RoundedVal(ed.tvwViews.Node(node).tag));
}

bool IsSystemProfileInViewMode(frmAcctViewEdit& ed) {
  return !ed.InReportMode() && SelectedKind(ed) < kUserProfile;
}

const DocumentCursor& OwnerOf(frmAcctViewEdit& ed, XmlNode node) {
  return node.root() == ed.DefaultsDoc.Document() ? ed.DefaultsDoc : ed.ViewsDoc;
}

// A report's two files: the profile document and the report definition.
struct ReportFiles {
  std::string cvx, cvr;
  explicit ReportFiles(const std::string& cvx_path)
      : cvx(cvx_path), cvr(ReplaceAll(cvx_path, ".cvx", ".cvr")) {}
  bool AnyExists() const {
    std::error_code ec;
    return fs::exists(cvx, ec) || fs::exists(cvr, ec);
  }
};

// The files of report `name` beside the current report.
ReportFiles SiblingReport(frmAcctViewEdit& ed, const std::string& name) {
  return ReportFiles((fs::path(ed.ViewsPath).parent_path() / (name + ".cvx")).string());
}

std::string CustomReportsFolder(frmAcctViewEdit& ed) {
  return ed.Host().ReportsBaseFolder() + "/Custom Reports/";
}

// Asks before a command writes over another report's files; true to go on.
bool MayOverwrite(frmAcctViewEdit& ed, const std::string& name, const std::string& title) {
  return ed.Prompt().MsgBox(
             "A report named '" + name + "' already exists.  Would you like to replace it?",
             ui::Buttons::kYesNo, ui::Icon::kQuestion, title) == ui::Answer::kYes;
}

// Every Profile under the views file's Profiles whose Name is `from` gets
// `to`; how many.
int RenameRecords(frmAcctViewEdit& ed, const std::string& from, const std::string& to) {
  int renamed = 0;
  ed.ProfilesIn(ed.ViewsDoc).Changed();
  XmlNode profiles = ed.ViewsDoc.Root().child("Profiles");
  for (XmlNode p = profiles.child("Profile"); p; p = p.next_sibling("Profile")) {
    if (ChildText(p, "Name") != from) continue;
    SetNodeText(p.child("Name"), to);
    ++renamed;
  }
  return renamed;
}

void SetCurrentName(frmAcctViewEdit& ed, const std::string& name) {
  ed.CurrentProfileName = name;
  ed.txtCurrProf.SetText(name);
}

// A report definition under a new report name. It is read and written again
// rather than copied byte for byte so that its Name follows the copy. A
// missing source is nothing to copy.
std::optional<std::string> CopiedReportDefinition(const std::string& from,
                                                  const std::string& name) {
  std::error_code ec;
  if (!fs::exists(from, ec)) return std::nullopt;
  DocumentCursor definition;
  // Whitespace-only values are values here, not indentation.
  const pugi::xml_parse_result parsed = definition.Document().load_file(
      from.c_str(), pugi::parse_default | pugi::parse_declaration | pugi::parse_ws_pcdata_single);
  if (!parsed) throw Error("Cannot read '" + from + "': " + parsed.description());
  if (XmlNode title = definition.Root().child("Name")) SetNodeText(title, name);
  return definition.ToString();
}

}  // namespace

void cmdNewProfile_Click(frmAcctViewEdit& ed) {
  try {
    if (ed.ProfileChanged) {
      const ui::Answer answer = ed.Prompt().MsgBox(kSaveChangesQuestion, ui::Buttons::kYesNoCancel,
                                                   ui::Icon::kQuestion, "Save Changes");
      if (answer == ui::Answer::kCancel) return;
      ed.ProfileChanged = false;
      if (answer == ui::Answer::kYes) SaveProfile(ed);
    }
    const std::string name =
        ed.Prompt().InputBox("Enter a name for the new profile:", "New Profile", "");
    if (name.empty()) return;

    std::string report_path;
    if (ed.InReportMode()) {
      if (!CheckReportName(ed, name)) return;
      report_path = CustomReportsFolder(ed) + name + ".cvx";
      if (ReportFiles(report_path).AnyExists() && !MayOverwrite(ed, name, "New Profile")) return;
      // A report is one profile in a document of its own, and the tree lists
      // only reports on disk: the new document is written at once.
      DocumentCursor fresh;
      fresh.GoToChild("", true);
      fresh.GoToChild("Profiles", true);
      fresh.AddChild("Profile");
      fresh.SetValue("Name", name);
      fresh.SetValue("AcctViewType", "0");
      if (filesafety::WriteReportFiles(ed, report_path, fresh.ToString(), "", std::nullopt, {},
                                       false) != filesafety::ReportWrite::kWritten) {
        return;  // it said why
      }
      ed.ViewsDoc.Load(report_path);
    } else {
      // A fresh install has no views file yet: root and Profiles are made.
      DocumentCursor& views = ed.ViewsDoc;
      views.GoToChild("", true);
      views.GoToChild("Profiles", true);
      views.AddChild("Profile");
      views.SetValue("Name", name);
      views.SetValue("AcctViewType", "0");
      ed.views_edits.Saved(name);
      ed.ProfilesIn(views).Added(views.CurrentNode());
    }

    ed.Variables().ClearForm();
    FillVariableChoices(ed);
    ed.chkTotals.SetValue(1);
    ed.chkAverages.SetValue(1);
    if (ed.InReportMode()) ed.ViewsPath = report_path;
    ed.ProfileChanged = false;
    LoadViewsTree(ed, name);
  } catch (const std::exception& e) {
    ShowErrorText(ed, "Error in cmdNewProfile_click: " + Describe(e));
  }
}

void cmdCopyProfile_Click(frmAcctViewEdit& ed) {
  try {
    const std::string old_name = ed.txtCurrProf.Text();
    const std::string new_name = ed.Prompt().InputBox(
        "Enter a name for the new profile:", "Copy Profile", "Copy of " + old_name);
    if (new_name.empty()) return;

    if (ed.InReportMode()) {
      if (!CheckReportName(ed, new_name)) return;
      const ReportFiles source(ed.ViewsPath);
      const ReportFiles target = SiblingReport(ed, new_name);
      const bool onto_itself = target.cvx == source.cvx;
      if (target.AnyExists() && !MayOverwrite(ed, new_name, "Copy Profile")) return;
      if (!SaveProfile(ed)) return;  // it said why
      if (!onto_itself) {
        std::optional<std::string> definition;
        try {
          definition = CopiedReportDefinition(source.cvr, new_name);
        } catch (const std::exception& e) {
          // The profile document is copied; its next save writes the definition.
          ed.ShowError("Error copying profile:", e);
        }
        RenameRecords(ed, old_name, new_name);
        // Both files of the copy as one change; a target definition with no
        // source to copy goes, so no other report's definition is left paired.
        const std::vector<std::string> stale =
            definition ? std::vector<std::string>{} : std::vector<std::string>{target.cvr};
        if (filesafety::WriteReportFiles(ed, target.cvx, ed.ViewsDoc.ToString(), target.cvr,
                                         definition, stale,
                                         false) != filesafety::ReportWrite::kWritten) {
          // The document stays the source report's.
          RenameRecords(ed, new_name, old_name);
          return;
        }
        ed.ViewsPath = target.cvx;
        SetCurrentName(ed, new_name);
      }
    } else {
      const XmlNode before = ed.CurrentProfileNode();
      XmlNode source = SelectProfile(ed, old_name);
      if (!source) source = SelectProfileCustom(ed, old_name);
      if (!source) {
        if (before) ed.SetCurrentProfileNode(before, OwnerOf(ed, before));
        ShowErrorText(ed, "Error copying profile:  Profile not found.");
        return;
      }
      // A system profile is copied from its defaults record, without the
      // user's customisation; the copy is a user profile.
      DocumentCursor& views = ed.ViewsDoc;
      views.GoToChild("", true);
      XmlNode copy = views.GoToChild("Profiles", true).append_copy(source);
      views.SetCurrentNode(copy);
      views.SetValue("Name", new_name);
      ed.views_edits.Saved(new_name);
      ed.ProfilesIn(views).Added(copy);
    }
    LoadViewsTree(ed, new_name);
  } catch (const std::exception& e) {
    ed.ShowError("Error in cmdCopyProfile_Click: ", e);
  }
}

void cmdEditProfile_Click(frmAcctViewEdit& ed) {
  try {
    if (IsSystemProfileInViewMode(ed)) {
      ed.Prompt().MsgBox("This is a system profile.  The profile name may not be changed.",
                         ui::Buttons::kOk, ui::Icon::kExclamation, "Edit Name");
      return;
    }
    if (ed.ProfileChanged &&
        ed.Prompt().MsgBox(
            "You have unsved changes, would you like to save these changes before proceeding?",
            ui::Buttons::kYesNo, ui::Icon::kQuestion, "Save Changes") == ui::Answer::kYes) {
      SaveProfile(ed);
    }
    const std::string new_name =
        ed.Prompt().InputBox("Enter a new name for the profile:", "Edit Profile Name", "");
    if (new_name.empty()) return;
    const std::string old_name = ed.txtCurrProf.Text();

    if (!ed.InReportMode()) {
      RenameRecords(ed, old_name, new_name);
      ed.views_edits.Renamed(old_name, new_name);
      // Later saves must find the record under its new name.
      SetCurrentName(ed, new_name);
      LoadViewsTree(ed, new_name);
      return;
    }

    if (!CheckReportName(ed, new_name)) return;
    const ReportFiles source(ed.ViewsPath);
    const ReportFiles target = SiblingReport(ed, new_name);
    const bool same_files = target.cvx == source.cvx;
    const bool target_existed = !same_files && target.AnyExists();
    if (target_existed && !MayOverwrite(ed, new_name, "Edit Profile Name")) return;

    // The new pair and the removal of the old one are one change, so a
    // failed write (or a crash) leaves the report as it was under its old name.
    const std::string old_path = ed.ViewsPath;
    RenameRecords(ed, old_name, new_name);
    SetCurrentName(ed, new_name);
    ed.ViewsPath = target.cvx;
    if (!SaveProfile(ed, same_files ? std::vector<std::string>{}
                                    : std::vector<std::string>{source.cvx, source.cvr})) {
      RenameRecords(ed, new_name, old_name);
      SetCurrentName(ed, old_name);
      ed.ViewsPath = old_path;
      return;
    }
    LoadViewsTree(ed, new_name);
  } catch (const std::exception& e) {
    ed.ShowError("Error in cmdEditProfile_Click: ", e);
  }
}

void cmdDeleteProfile_Click(frmAcctViewEdit& ed) {
  const std::string name = ed.txtCurrProf.Text();
  try {
    if (IsSystemProfileInViewMode(ed)) {
      ed.Prompt().MsgBox(
          "This is a system profile.  The delete function will reset any customizations made, "
          "but will not remove the profile entirely.",
          ui::Buttons::kOk, ui::Icon::kExclamation, "Delete Profile");
    }
    if (ed.Prompt().MsgBox("Are you sure you want to delete the profile '" + name + "'?",
                           ui::Buttons::kYesNo, ui::Icon::kQuestion,
                           "Delete Profile") != ui::Answer::kYes) {
      return;
    }

    if (ed.InReportMode()) {
      if (EndsWith(ToUpper(ed.ViewsPath), ".CVX")) {
        const ReportFiles files(ed.ViewsPath);
        filesafety::RemoveReportFiles(ed, {files.cvx, files.cvr});
      }
      ed.ProfileChanged = false;
      ed.ClearProfile();
      ed.ViewsPath.clear();
      // The report's document went with its files: nothing is left to save into.
      ed.ViewsDoc.Reset();
    } else {
      XmlNode profiles = ed.ViewsDoc.Root().child("Profiles");
      XmlNode found;
      for (XmlNode p = profiles.child("Profile"); p; p = p.next_sibling("Profile")) {
        if (ChildText(p, "Name") == name) {
          found = p;
          break;
        }
      }
      if (found) {
        // No handle may be left on the removed element.
        if (ed.CurrentProfileNode() == found) ed.SetCurrentProfileNode({}, ed.ViewsDoc);
        ed.ViewsDoc.GoToChild("");
        ed.ProfilesIn(ed.ViewsDoc).Changed();
        profiles.remove_child(found);
        ed.views_edits.Deleted(name);
        // The removed record's unsaved changes have nothing left to go to.
        ed.ProfileChanged = false;
      } else {
        ShowErrorText(ed, "Profile not found.  The profile was not deleted.");
      }
    }
    LoadViewsTree(ed, "");
  } catch (const std::exception& e) {
    ed.ShowError("Error encountered while deleting profile '" + name + "':", e);
  }
}

void cmdSaveProfile_Click(frmAcctViewEdit& ed) {
  bool saved = false;
  ed.Prompt().SetWaitCursor(true);
  try {
    saved = SaveProfile(ed);
    if (saved) LoadViewsTree(ed, ed.txtCurrProf.Text());
  } catch (const std::exception& e) {
    ed.Prompt().SetWaitCursor(false);
    ed.ShowError("Error in cmdSaveProfile_Click: ", e);
    return;
  }
  ed.Prompt().SetWaitCursor(false);
  // A save that stopped has already said why; it is not announced.
  if (!saved) return;
  ed.Prompt().ShowNotice("Save Profile", ed.InReportMode() ? "Your report has been saved."
                                                           : "Your view profile has been saved.");
}

void cmdSaveProfile_LostFocus(frmAcctViewEdit& ed) {
  ResumeNext([&] { ed.Prompt().CloseNotice(); });
}

}  // namespace cvve
