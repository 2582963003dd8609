#include "component/frm_acct_view_edit.h"

#include <utility>

#include "base/error.h"
#include "base/text.h"
#include "columns/column_selection.h"
#include "filesafety/guarded_writes.h"
#include "filters/advanced_filter.h"
#include "filters/filter_list.h"
#include "filters/value_editors.h"
#include "host/host_services.h"
#include "opening/read_ahead.h"
#include "profiles/profile_commands.h"
#include "profiles/profile_saver.h"
#include "profiles/views_tree.h"
#include "reports/export_preview.h"
#include "ui/prompter.h"
#include "variables/variable_commands.h"
#include "viewfiles/setup_file.h"

namespace cvve {

const std::vector<std::string>& frmAcctViewEdit::SortDirections() {
  static const std::vector<std::string> kEntries{"ASC", "DESC"};
  return kEntries;
}

const std::vector<std::string>& frmAcctViewEdit::PageOrientations() {
  static const std::vector<std::string> kEntries{"Portrait", "Landscape"};
  return kEntries;
}

const std::vector<std::string>& frmAcctViewEdit::PageSizes() {
  static const std::vector<std::string> kEntries{"Letter", "Legal", "A4", "Ledger"};
  return kEntries;
}

frmAcctViewEdit::frmAcctViewEdit(EditorEnvironment env)
    : ui::Form("frmAcctViewEdit"), env_(env) {
  // What the form's start-up does once: fixed lists, column layouts, events.
  for (auto& combo : cmbSortASCDESC) {
    for (const auto& e : SortDirections()) combo.AddItem(e);
  }
  for (const auto& e : PageOrientations()) cmbOrientation.AddItem(e);
  for (const auto& e : PageSizes()) cmbPageSize.AddItem(e);
  lstvwTabs.AddColumn({"", "Tabs", ui::Alignment::kLeft, 2880});
  SetupFilterColumns(*this);
  txtData1LV.SetVisible(false);
  txtData2LV.SetVisible(false);
  cmdAdvancedFilter.SetEnabled(false);
  WireEvents();
}

frmAcctViewEdit::~frmAcctViewEdit() = default;

void frmAcctViewEdit::WireEvents() {
  tvwViews.on_node_click = [this](ui::NodeId node) { tvwViews_NodeClick(*this, node); };
  cmbDataSet.on_click = [this] { cmbDataSet_Click(*this); };
  for (ui::ComboBox* combo : {&cmbAcctViewType, &cmbOrientation, &cmbPageSize, &cmbSort[0],
                              &cmbSort[1], &cmbSortASCDESC[0], &cmbSortASCDESC[1]}) {
    combo->on_click = [this] { MarkProfileChanged(*this); };
  }
  for (ui::CheckBox* box : {&chkAverages, &chkShowLineCount, &chkSortGroup, &chkTotals}) {
    box->on_click = [this] { MarkProfileChanged(*this); };
  }
  chkStartEnd.on_click = [this] { chkStartEnd_Click(*this); };
  lstvwTabs.on_item_check = [this](int) { MarkProfileChanged(*this); };
  lstFilters.on_item_check = [this](int row) { lstFilters_ItemCheck(*this, row); };
  lstAvailColumns.on_dbl_click = [this] { cmdAddForm_Click(*this); };
  lstUsedColumns.on_dbl_click = [this] { cmdRemoveForm_Click(*this); };
  cmdAddForm.on_click = [this] { cmdAddForm_Click(*this); };
  cmdRemoveForm.on_click = [this] { cmdRemoveForm_Click(*this); };
  cmdRemoveAll.on_click = [this] { cmdRemoveAll_Click(*this); };
  cmdMove[0].on_click = [this] { cmdMove_Click(*this, 0); };
  cmdMove[1].on_click = [this] { cmdMove_Click(*this, 1); };
  txtData1LV.on_change = [this] { txtDataLV_Change(*this, 1); };
  txtData2LV.on_change = [this] { txtDataLV_Change(*this, 2); };
  txtData1LV.on_click = [this] { txtDataLV_Click(*this, 1); };
  txtData2LV.on_click = [this] { txtDataLV_Click(*this, 2); };
  optFilter.on_click = [this](int index) { optFilter_Click(*this, index); };
  cmdAdvancedFilter.on_click = [this] { cmdAdvancedFilter_Click(*this); };
  cmdEditVariables.on_click = [this] { cmdEditVariables_Click(*this); };
  cmdNewProfile.on_click = [this] { cmdNewProfile_Click(*this); };
  cmdCopyProfile.on_click = [this] { cmdCopyProfile_Click(*this); };
  cmdEditProfile.on_click = [this] { cmdEditProfile_Click(*this); };
  cmdDeleteProfile.on_click = [this] { cmdDeleteProfile_Click(*this); };
  cmdSaveProfile.on_click = [this] { cmdSaveProfile_Click(*this); };
  cmdSaveProfile.on_lost_focus = [this] { cmdSaveProfile_LostFocus(*this); };
  cmdExport.on_click = [this] { cmdExport_Click(*this); };
  cmdPreviewReport.on_click = [this] { cmdPreviewReport_Click(*this); };
  cmdOK.on_click = [this] { cmdOK_Click(); };
  cmdCancel.on_click = [this] { cmdCancel_Click(); };
}

void frmAcctViewEdit::SetReportMode(std::int16_t mode) {
  report_mode_ = mode;
  if (on_report_mode_changed) on_report_mode_changed();
}

frmVariables& frmAcctViewEdit::Variables() {
  if (!variables_) {
    variables_ = std::make_unique<frmVariables>();
    variables_->on_bad_value = [this](const std::string& message, int) {
      Prompt().MsgBox(message, ui::Buttons::kOk, ui::Icon::kExclamation, "Report Variables");
    };
  }
  return *variables_;
}

XmlNode frmAcctViewEdit::CurrentProfileNode() const {
  if (!current_profile_owner_ ||
      current_profile_owner_->Generation() != current_profile_generation_) {
    return {};
  }
  return current_profile_node_;
}

void frmAcctViewEdit::SetCurrentProfileNode(XmlNode node, const DocumentCursor& owner) {
  current_profile_node_ = node;
  current_profile_owner_ = &owner;
  current_profile_generation_ = owner.Generation();
}

void frmAcctViewEdit::LoadFiles(const std::string& sViewsFile, const std::string& sViewsFileDef,
                                const std::string& sViewSetupFile) {
  SetupDoc.Reset();
  ViewsDoc.Reset();
  DefaultsDoc.Reset();
  FilterErrorShown = false;
  UnwrittenProfiles.clear();

  const std::string folder = Host().ViewFilesFolder();
  ViewsPath = InReportMode() ? sViewsFile : folder + "/" + sViewsFile;
  DefaultsPath = folder + "/" + sViewsFileDef;
  SetupPath = folder + "/" + sViewSetupFile;

  // The load's result is not looked at: a file that does not parse leaves its
  // document as the parser left it.
  auto is_xml = [](const std::string& path) {
    return path.size() >= 4 && ToLower(path.substr(path.size() - 4)) == ".xml";
  };
  // Files read ahead are taken instead of read again, once.
  opening::ReadAhead* const ahead = std::exchange(env_.read_ahead, nullptr);
  auto read_ahead = [ahead](const std::string& path) {
    return ahead ? ahead->Take(path) : nullptr;
  };
  auto load = [&read_ahead](DocumentCursor& doc, const std::string& path) {
    if (std::unique_ptr<opening::ParsedFile> file = read_ahead(path)) {
      doc.Reset();
      doc.Document() = std::move(file->document);
    } else {
      doc.Load(path);
    }
  };
  if (is_xml(DefaultsPath) && Host().FileExists(DefaultsPath)) load(DefaultsDoc, DefaultsPath);
  if (InReportMode()) {
    // An interrupted change of report files is finished before they are listed.
    views_loaded = {};
    views_edits.Clear();
    report_loaded_cvx = report_loaded_cvr = {};
    filesafety::RecoverReportsFolder(ViewsPath);
  } else {
    const bool by_rule = is_xml(ViewsPath) && Host().FileExists(ViewsPath);
    std::unique_ptr<opening::ParsedFile> views = by_rule ? read_ahead(ViewsPath) : nullptr;
    filesafety::LoadViewsFile(*this, by_rule, views.get());
  }
  if (Host().FileExists(SetupPath)) load(SetupDoc, SetupPath);
  if (ahead) ahead->Drop();

  for (int position = 1; position <= lstFilters.ColumnCount(); ++position) {
    const std::string& key = lstFilters.Column(position).key;
    if (key == "Data1") Data1Column = static_cast<std::int16_t>(position);
    if (key == "Data2") Data2Column = static_cast<std::int16_t>(position);
  }

  if (Host().ExecutableName() != "ViewEdit") cell_painter_installed = true;

  ClearProfile();
  LoadViewsTree(*this, "");
  LoadDataSets(*this);
  RefreshSelectedNode();
  txtData1LV.SetVisible(false);
  txtData2LV.SetVisible(false);
  ProfileChanged = false;
}

void frmAcctViewEdit::ClearProfile() {
  lstUsedColumns.Clear();
  lstvwTabs.ClearItems();
  if (lstFilters.ItemCount() == 0) {
    LoadFilters(*this);
  } else {
    for (int row = 1; row <= lstFilters.ItemCount(); ++row) lstFilters.SetChecked(row, false);
  }
  cmbOrientation.SetListIndex(0);
  cmbPageSize.SetListIndex(0);
  LoadTabs(*this);
  ProfileChanged = false;
}

void frmAcctViewEdit::RefreshSelectedNode() {
  ResumeNext([this] {
    ui::NodeId node = tvwViews.SelectedNode();
    if (node != ui::kNoNode) tvwViews_NodeClick(*this, node);
  });
}

void frmAcctViewEdit::ShowError(const std::string& sentence, const std::exception& e) {
  Prompt().MsgBox(sentence + kCrLf + kCrLf + Describe(e), ui::Buttons::kOk, ui::Icon::kCritical,
                  "Error");
}

void frmAcctViewEdit::cmdOK_Click() {
  if (ProfileChanged) {
    ui::Answer answer = Prompt().MsgBox(
        "You have made changes to the current profile.  Would you like to save these changes?",
        ui::Buttons::kYesNoCancel, ui::Icon::kQuestion, "Save Changes");
    if (answer == ui::Answer::kCancel) return;
    ProfileChanged = false;
    if (answer == ui::Answer::kYes) {
      try {
        SaveProfile(*this);
      } catch (const std::exception& e) {
        ProfileChanged = true;
        ShowError("Error in cmdOK_Click: ", e);
        return;
      }
      // A report whose files could not be written keeps the editor open
      // (the save said why), so the changes are not lost.
      if (ProfileChanged) return;
    }
  }
  if (!InReportMode()) {
    // Under the file's lock, merged with what others wrote meanwhile; on any
    // failure the old file is whole, the user was told, and the editor stays
    // open so nothing is lost.
    if (!filesafety::WriteViewsFile(*this)) return;
    UnwrittenProfiles.clear();
  }
  Close();
}

void frmAcctViewEdit::cmdCancel_Click() { Close(); }

void frmAcctViewEdit::Close() {
  Hide();
  Form_Unload();
}

void frmAcctViewEdit::Form_Unload() {
  ResumeNext([this] { cell_painter_installed = false; });
  ResumeNext([this] {
    if (variables_) variables_->Hide();
  });
}

}  // namespace cvve
