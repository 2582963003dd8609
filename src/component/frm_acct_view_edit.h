#pragma once
// The account view editor: the one holder of state. Its controls are public
// members, as a form's controls are; the editor's logic lives in the
// subsystem folders as functions on this form, and the constructor wires each
// control's events to them.
#include <array>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "component/editor_environment.h"
#include "filesafety/file_identity.h"
#include "filesafety/views_merge.h"
#include "filters/filter_list.h"
#include "filters/frm_acct_view_advanced.h"
#include "ui/combo_box.h"
#include "ui/form.h"
#include "ui/list_box.h"
#include "ui/list_view.h"
#include "ui/simple_controls.h"
#include "ui/tree_view.h"
#include "variables/frm_variables.h"
#include "viewfiles/document_cursor.h"
#include "viewfiles/name_index.h"

namespace cvve {

inline constexpr std::uint32_t kEditableCellColor = 0xC0FFFF;  // pale yellow, BGR

class frmAcctViewEdit : public ui::Form {
 public:
  explicit frmAcctViewEdit(EditorEnvironment env);
  ~frmAcctViewEdit() override;

  EditorEnvironment& Env() { return env_; }
  HostServices& Host() { return env_.host; }
  ui::Prompter& Prompt() { return prompter_override_ ? *prompter_override_ : env_.prompter; }
  // While set, Prompt() answers through `prompter` instead of the
  // environment's (nullptr restores it): the statement pane builds statements
  // without showing their messages.
  void SetPrompterOverride(ui::Prompter* prompter) { prompter_override_ = prompter; }
  // An operation's failure message: `sentence`, two line breaks and the
  // failure's description, in an "Error" box with the critical icon and OK.
  void ShowError(const std::string& sentence, const std::exception& e);

  // 0 view mode, anything else report mode. Writing rearranges the window.
  std::int16_t ReportMode() const { return report_mode_; }
  void SetReportMode(std::int16_t mode);
  bool InReportMode() const { return report_mode_ != 0; }

  // Binds the editor to a file set and fills every list from it.
  void LoadFiles(const std::string& sViewsFile, const std::string& sViewsFileDef,
                 const std::string& sViewSetupFile);
  void ClearProfile();
  // Runs the node selection on the selected node, ignoring any failure.
  void RefreshSelectedNode();
  void cmdOK_Click();
  void cmdCancel_Click();
  // Whenever the editor closes.
  void Form_Unload();
  // Hides the window and runs Form_Unload.
  void Close();

  // The report variables dialog, created on first use and kept.
  frmVariables& Variables();
  bool VariablesLoaded() const { return variables_ != nullptr; }
  // The advanced filter dialog exists only during an advanced edit.
  std::unique_ptr<frmAcctViewAdvanced> advanced_dialog;

  // The current profile record; empty once its document was reloaded.
  XmlNode CurrentProfileNode() const;
  void SetCurrentProfileNode(XmlNode node, const DocumentCursor& owner);

  // --- file set ---
  std::string ViewsPath, DefaultsPath, SetupPath;
  DocumentCursor ViewsDoc, DefaultsDoc, SetupDoc;
  // The profile records of ViewsDoc or DefaultsDoc by name.
  ProfileIndex& ProfilesIn(const DocumentCursor& doc) {
    return &doc == &DefaultsDoc ? defaults_profiles_ : views_profiles_;
  }
  // The setup file's column definitions of a data set by name.
  ColumnIndex& SetupColumns() { return setup_columns_; }
  // The filter list's rows of each data set, before a profile's entries.
  FilterRowTemplates& FilterTemplates() { return filter_templates_; }
  std::int16_t Data1Column = 0, Data2Column = 0;
  bool FilterErrorShown = false;
  // While a profile loads, the data set's click may leave the filter list to
  // the load's own fill at its end (see LoadProfile); pending until filled.
  bool defer_filter_fill = false;
  bool filter_fill_pending = false;
  // The tab list as the setup file of that generation lays it out (LoadTabs).
  std::optional<std::vector<ui::ListItem>> tab_rows;
  std::uint64_t tab_rows_generation = 0;
  bool ProfileChanged = false;
  // Profiles saved in view mode since the views file was read or written, in
  // the order first saved: they reach the disk only with OK (Cancel drops them).
  std::vector<std::string> UnwrittenProfiles;
  std::string DataSetSQL;
  // The views file as loaded, and what this editor did to its profiles since
  // (for the merge at OK when the file changed on disk meanwhile).
  filesafety::LoadedFile views_loaded;
  filesafety::EditJournal views_edits;
  // The current report's two files as loaded or last written (report mode).
  filesafety::LoadedFile report_loaded_cvx, report_loaded_cvr;
  std::string CurrentProfileName;
  std::vector<std::int32_t> FilterRowColor;
  std::vector<std::int16_t> FilterRowInputCount;
  // Set by LoadFiles unless the program is called "ViewEdit": the screen then
  // paints the filter cells from the two arrays above.
  bool cell_painter_installed = false;
  // Twips per screen pixel (15 at 96 dpi); the screen adapter keeps it true.
  int TwipsPerPixelX = 15, TwipsPerPixelY = 15;

  // --- controls ---
  ui::TreeView tvwViews{"tvwViews"};
  ui::TextBox txtCurrProf{"txtCurrProf"};
  ui::ComboBox cmbAcctViewType{"cmbAcctViewType"};
  ui::ComboBox cmbDataSet{"cmbDataSet"};
  ui::ListBox lstAvailColumns{"lstAvailColumns"};
  ui::ListBox lstUsedColumns{"lstUsedColumns"};
  ui::CommandButton cmdAddForm{"cmdAddForm", ">"};
  ui::CommandButton cmdRemoveForm{"cmdRemoveForm", "<"};
  ui::CommandButton cmdRemoveAll{"cmdRemoveAll", "<<"};
  std::array<ui::CommandButton, 2> cmdMove{ui::CommandButton{"cmdMove(0)", "Move Up"},
                                           ui::CommandButton{"cmdMove(1)", "Move Down"}};
  ui::ListView lstvwTabs{"lstvwTabs"};
  ui::ListView lstFilters{"lstFilters"};
  ui::ComboBox txtData1LV{"txtData1LV", ui::ComboBox::Style::kEditable};
  ui::ComboBox txtData2LV{"txtData2LV", ui::ComboBox::Style::kEditable};
  ui::OptionGroup optFilter{"optFilter", {"5. Easy Filter", "Advanced Filter"}};
  ui::CommandButton cmdAdvancedFilter{"cmdAdvancedFilter", "Advanced Filter Edit..."};
  std::array<ui::ComboBox, 2> cmbSort{ui::ComboBox{"cmbSort(0)"}, ui::ComboBox{"cmbSort(1)"}};
  std::array<ui::ComboBox, 2> cmbSortASCDESC{ui::ComboBox{"cmbSortASCDESC(0)"},
                                             ui::ComboBox{"cmbSortASCDESC(1)"}};
  ui::CheckBox chkSortGroup{"chkSortGroup", "Group By First Sort"};
  ui::CheckBox chkTotals{"chkTotals", "Totals"};
  ui::CheckBox chkAverages{"chkAverages", "Averages"};
  ui::CheckBox chkShowLineCount{"chkShowLineCount", "Line Count"};
  ui::CheckBox chkStartEnd{"chkStartEnd", "Start/End Date Variables"};
  ui::CheckBox chkMultiLine{"chkMultiLine", "Multi-Line Rows"};
  ui::ComboBox cmbOrientation{"cmbOrientation"};
  ui::ComboBox cmbPageSize{"cmbPageSize"};
  ui::CommandButton cmdEditVariables{"cmdEditVariables", "Edit Input Variables..."};
  ui::CommandButton cmdNewProfile{"cmdNewProfile", "New"};
  ui::CommandButton cmdCopyProfile{"cmdCopyProfile", "Copy"};
  ui::CommandButton cmdEditProfile{"cmdEditProfile", "Edit Name"};
  ui::CommandButton cmdDeleteProfile{"cmdDeleteProfile", "Delete"};
  ui::CommandButton cmdSaveProfile{"cmdSaveProfile", "Save"};
  ui::CommandButton cmdExport{"cmdExport", "Export"};
  ui::CommandButton cmdPreviewReport{"cmdPreviewReport", "Preview Report"};
  ui::CommandButton cmdOK{"cmdOK", "OK"};
  ui::CommandButton cmdCancel{"cmdCancel", "Cancel"};
  ui::Frame fraInstructions{"fraInstructions", "Instructions"};

  // Entries of the fixed drop-downs, in list order (stored as positions or text).
  static const std::vector<std::string>& SortDirections();
  static const std::vector<std::string>& PageOrientations();
  static const std::vector<std::string>& PageSizes();

  // Fired after ReportMode is written, so a screen can rearrange itself.
  ui::Handler on_report_mode_changed;

 private:
  void WireEvents();
  EditorEnvironment env_;
  std::int16_t report_mode_ = 0;
  std::unique_ptr<frmVariables> variables_;
  XmlNode current_profile_node_;
  const DocumentCursor* current_profile_owner_ = nullptr;
  std::uint64_t current_profile_generation_ = 0;
  ProfileIndex views_profiles_, defaults_profiles_;
  ColumnIndex setup_columns_;
  FilterRowTemplates filter_templates_;
  ui::Prompter* prompter_override_ = nullptr;
};

}  // namespace cvve
