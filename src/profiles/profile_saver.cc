#include "profiles/profile_saver.h"

#include <algorithm>
#include <array>
#include <string>

#include "base/error.h"
#include "base/text.h"
#include "filesafety/guarded_writes.h"
#include "component/frm_acct_view_edit.h"
#include "profiles/views_tree.h"
#include "query/sql_builder.h"
#include "reports/report_file_writer.h"
#include "ui/prompter.h"
#include "viewfiles/profile_record.h"
#include "viewfiles/setup_file.h"

namespace cvve {

namespace {

constexpr const char* kSaveErrorLead = "An error was encountered when saving the current profile:";
constexpr int kUserProfile = 2;

void ShowSaveError(frmAcctViewEdit& ed, const std::string& detail) {
  ed.Prompt().MsgBox(std::string(kSaveErrorLead) + kCrLf + kCrLf + detail, ui::Buttons::kOk,
                     ui::Icon::kCritical, "Error");
}

XmlNode RequireRecord(frmAcctViewEdit& ed) {
  XmlNode record = ed.CurrentProfileNode();
  if (!record) throw Error("Object variable or With block variable not set");
  return record;
}

const DocumentCursor& OwnerOf(frmAcctViewEdit& ed, XmlNode node) {
  return node.root() == ed.DefaultsDoc.Document() ? ed.DefaultsDoc : ed.ViewsDoc;
}

// The views file's record of `name`, created (with its root and Profiles on
// a fresh install) when missing. Empty when it still cannot be selected, for
// instance with an apostrophe in the name: the record just added is then
// taken back, so that retries do not pile up unreachable records, and the
// editor's current profile node is what it was.
XmlNode SelectOrCreateRecord(frmAcctViewEdit& ed, const std::string& name) {
  const XmlNode before = ed.CurrentProfileNode();
  if (XmlNode record = SelectProfileCustom(ed, name)) return record;
  DocumentCursor& views = ed.ViewsDoc;
  XmlNode created;
  ResumeNext([&] {
    views.GoToChild("", true);
    views.GoToChild("Profiles", true);
    created = views.AddChild("Profile");
    views.SetValue("Name", name);
    ed.ProfilesIn(views).Added(created);
  });
  if (XmlNode record = SelectProfileCustom(ed, name)) return record;
  views.GoToChild("");
  if (created) {
    ed.ProfilesIn(views).Changed();
    created.parent().remove_child(created);
  }
  if (before) ed.SetCurrentProfileNode(before, OwnerOf(ed, before));
  return {};
}

}  // namespace

bool SaveProfile(frmAcctViewEdit& ed, const std::vector<std::string>& also_remove) {
  if (!ed.CurrentProfileNode()) {
    ed.Prompt().MsgBox("Please select a profile from above first.", ui::Buttons::kOk,
                       ui::Icon::kExclamation, "No Profile Selected");
    return false;
  }
  const std::string name = ed.CurrentProfileName;
  const XmlNode record = SelectOrCreateRecord(ed, name);
  if (!record) {
    ShowSaveError(ed, "Custom profile settings could not be created.");
    return false;
  }
  // A report has no defaults record: it is always its user's own profile.
  const int kind = ed.InReportMode() ? kUserProfile : ProfileKind(ed, name);

  WriteProfileColumns(ed);
  WriteProfileTabs(ed);

  // From here on a failing step is skipped and the save goes on. Each step
  // starts on the record, wherever the step before left the cursor.
  DocumentCursor& views = ed.ViewsDoc;
  auto step = [&](auto&& write) {
    ResumeNext([&] {
      views.SetCurrentNode(record);
      write();
    });
  };
  auto check = [](const ui::CheckBox& box) { return Str(box.Value()); };

  static constexpr std::array<const char*, 2> kSortByField{"SortByField", "SortByField2"};
  static constexpr std::array<const char*, 2> kSortBy{"SortBy", "SortBy2"};
  static constexpr std::array<const char*, 2> kSortDirection{"SortASCDESC", "SortASCDESC2"};
  for (std::size_t i = 0; i < 2; ++i) {
    step([&] {
      // A column the setup file does not know leaves the stored field as it was.
      const std::string column = ed.cmbSort[i].Text();
      if (SelectColumn(ed, column)) views.SetValue(kSortByField[i], ColumnSortField(ed, column));
    });
  }
  for (std::size_t i = 0; i < 2; ++i)
    step([&] { views.SetValue(kSortBy[i], ed.cmbSort[i].Text()); });
  for (std::size_t i = 0; i < 2; ++i) {
    step([&] { views.SetValue(kSortDirection[i], ed.cmbSortASCDESC[i].Text()); });
  }

  step([&] { views.SetValue("DoGrouping", check(ed.chkSortGroup)); });
  step([&] { views.SetValue("DoAverages", check(ed.chkAverages)); });
  step([&] { views.SetValue("DoTotals", check(ed.chkTotals)); });
  step([&] { views.SetValue("DoLineCount", check(ed.chkShowLineCount)); });
  step([&] { views.SetValue("PageOrientation", Str(ed.cmbOrientation.ListIndex())); });
  step([&] { views.SetValue("PageSize", Str(ed.cmbPageSize.ListIndex())); });
  step([&] { views.SetValue("PageMultiLine", check(ed.chkMultiLine)); });

  for (int slot = 0; slot < kVariableSlots; ++slot) {
    std::string caption, type, variable;
    step([&] { ed.Variables().GetVariable(slot, caption, type, variable); });
    const std::string stem = "Var" + Str(slot);
    step([&] { views.SetValueBlock(stem + "Caption", caption); });
    step([&] { views.SetValueBlock(stem + "Type", type); });
    step([&] { views.SetValueBlock(stem + "Name", variable); });
  }

  // A system profile's data set, view type, filters and SQL are the
  // defaults file's and never written.
  if (kind == kUserProfile) {
    step([&] { SaveFilterChecks(ed); });
    step([&] { SaveProfileSource(ed); });
    if (ed.optFilter.Value(0)) {
      step([&] { views.SetValueBlock("SQLWhereList", BuildWhereList(ed)); });
      step([&] { views.SetValueBlock("SQLFieldList", BuildFieldList(ed)); });
      step([&] { views.SetValue("SQL", ""); });
    } else {
      step([&] { views.SetValue("SQL", BuildViewSQL(ed, false)); });
    }
  }

  bool written = true;
  if (ed.InReportMode()) {
    // Both files or neither: a definition that cannot be built writes nothing.
    DocumentCursor definition;
    written = BuildReportFile(ed, definition);
    if (written) {
      const std::string cvr_path = ReplaceAll(ed.ViewsPath, ".cvx", ".cvr");
      switch (filesafety::WriteReportFiles(ed, ed.ViewsPath, views.ToString(), cvr_path,
                                           definition.ToString(), also_remove, true)) {
        case filesafety::ReportWrite::kWritten:
          break;
        case filesafety::ReportWrite::kKeptTheirs:
          ed.ProfileChanged = false;
          return false;
        case filesafety::ReportWrite::kNotWritten:
          written = false;
          break;
      }
    }
  } else {
    ed.views_edits.Saved(name);
  }
  // What did not reach the disk is still a change to keep.
  ed.ProfileChanged = !written;
  // In view mode the views file is written by OK alone.
  if (!ed.InReportMode() && std::find(ed.UnwrittenProfiles.begin(), ed.UnwrittenProfiles.end(),
                                      name) == ed.UnwrittenProfiles.end()) {
    ed.UnwrittenProfiles.push_back(name);
  }
  return written;
}

void SaveFilterChecks(frmAcctViewEdit& ed) {
  const XmlNode record = RequireRecord(ed);
  DocumentCursor& views = ed.ViewsDoc;
  const ui::ListView& list = ed.lstFilters;
  views.SetCurrentNode(record);
  XmlNode checks = views.GoToChild("FilterChecks", true);
  for (int row = 1; row <= list.ItemCount(); ++row) {
    const ui::ListItem& item = list.Item(row);
    // Filters no longer in the list keep their elements.
    if (XmlNode filter = SelectSingleNode(checks, "Filter[Index='" + item.key + "']")) {
      views.SetCurrentNode(filter);
    } else {
      views.AddChild("Filter");
    }
    views.SetValue("Index", item.key);
    views.SetValue("Name", item.text);
    views.SetValue("Value", item.checked ? "True" : "False");
    for (int position = 1; position <= list.ColumnCount(); ++position) {
      const std::string& key = list.Column(position).key;
      if (key == "Data1" || key == "Data2") views.SetValue(key, list.SubItem(row, position - 1));
    }
    views.SetCurrentNode(record);
    checks = views.GoToChild("FilterChecks");
  }
  views.SetCurrentNode(record);
  views.SetValue("FilterType", Str(ed.optFilter.SetIndex()));
}

void SaveProfileSource(frmAcctViewEdit& ed) {
  const XmlNode record = RequireRecord(ed);
  DocumentCursor& views = ed.ViewsDoc;
  ResumeNext([&] {
    views.SetCurrentNode(record);
    views.SetValue("DataSet", ed.cmbDataSet.Text());
  });
  ResumeNext([&] {
    const ui::ComboBox& type = ed.cmbAcctViewType;
    const long data = type.ItemData(type.ListIndex());
    views.SetCurrentNode(record);
    views.SetValue("AcctViewType", Str(data));
  });
}

}  // namespace cvve
