#include "profiles/profile_loader.h"

#include <cmath>
#include <exception>
#include <optional>
#include <vector>

#include "base/error.h"
#include "base/text.h"
#include "component/frm_acct_view_edit.h"
#include "filters/filter_list.h"
#include "profiles/views_tree.h"
#include "ui/prompter.h"
#include "variables/variable_commands.h"
#include "viewfiles/profile_record.h"

namespace cvve {

namespace {

// A stored number as the host converts it: 0 for text that is no number.
int StoredInt(const std::string& text) { return static_cast<int>(RoundedVal(text)); }

// The two failures that end a load show this; all others are skipped.
void ShowLoadError(frmAcctViewEdit& ed, const std::exception& e) {
  ResumeNext([&] { ed.ShowError("There was an error loading this profile:", e); });
}

void ListUsedColumns(frmAcctViewEdit& ed, XmlNode record) {
  ed.lstAvailColumns.SetVisible(false);
  ed.lstUsedColumns.SetVisible(false);
  std::vector<std::string> names;
  UsedColumnNames(FirstChildElement(record, "Columns"), names);
  for (const std::string& text : names) {
    ed.lstUsedColumns.AddItem(text);
    std::vector<int> offered = ed.lstAvailColumns.FindAll(text);
    for (auto it = offered.rbegin(); it != offered.rend(); ++it) ed.lstAvailColumns.RemoveItem(*it);
  }
  for (ui::ComboBox& sort : ed.cmbSort) sort.Clear();
  for (const std::string& used : ed.lstUsedColumns.Items()) {
    for (ui::ComboBox& sort : ed.cmbSort) sort.AddItem(used);
  }
  ed.lstAvailColumns.SetVisible(true);
  ed.lstUsedColumns.SetVisible(true);
}

// A load that stops early leaves the filter list as the data set's click
// would have: filled, with the views cursor where the load left it.
void FillDeferredFilters(frmAcctViewEdit& ed) {
  if (!ed.filter_fill_pending) return;
  ed.filter_fill_pending = false;
  const XmlNode views_at = ed.ViewsDoc.CurrentNode();
  ResumeNext([&] {
    LoadFilters(ed);
    ApplyFilterChecks(ed);
  });
  ed.ViewsDoc.SetCurrentNode(views_at);
}

}  // namespace

void EnableProfileControls(frmAcctViewEdit& ed, int kind) {
  const bool editable = kind == 2;
  ed.cmbAcctViewType.SetEnabled(editable);
  ed.cmbDataSet.SetEnabled(editable);
  ed.optFilter.SetEnabled(editable);
  ed.lstFilters.SetEnabled(editable);
  ed.cmdAdvancedFilter.SetEnabled(editable);
  ed.lstvwTabs.SetEnabled(true);
  // What a profile of any kind may change, disabled while no node is chosen.
  for (ui::Control* control : std::initializer_list<ui::Control*>{
           &ed.lstAvailColumns, &ed.lstUsedColumns, &ed.cmdAddForm, &ed.cmdRemoveForm,
           &ed.cmdRemoveAll, &ed.cmdMove[0], &ed.cmdMove[1], &ed.fraInstructions}) {
    control->SetEnabled(true);
  }
  // The set option's click puts the filter controls in step with the mode.
  if (editable) ed.optFilter.SetValue(ed.optFilter.SetIndex());
}

void LoadProfile(frmAcctViewEdit& ed, const std::string& name) {
  DocumentCursor* base = nullptr;
  DocumentCursor* custom = nullptr;
  std::string data_set;

  // Steps 1 to 4 and the reading of the data set: a failure ends the load.
  try {
    ed.ClearProfile();
    ed.txtCurrProf.SetText(name);

    const int kind = ProfileKind(ed, name);
    switch (kind) {
      case 0:
        SelectProfile(ed, name);
        base = custom = &ed.DefaultsDoc;
        break;
      case 1:
        SelectProfile(ed, name);
        SelectProfileCustom(ed, name);
        base = &ed.DefaultsDoc;
        custom = &ed.ViewsDoc;
        break;
      case 2:
        SelectProfileCustom(ed, name);
        base = custom = &ed.ViewsDoc;
        break;
      default:
        break;  // no node of that name: no record either
    }

    EnableProfileControls(ed, kind);

    if (!base || !base->CurrentNode()) {
      ResumeNext([&] {
        ed.Prompt().MsgBox(
            "An error was encounted loading this profile.  If this persists, you may need to "
            "delete this profile and recreate it.",
            ui::Buttons::kOk, ui::Icon::kCritical, "Error");
      });
      return;
    }
    data_set = base->GetValue("DataSet");
  } catch (const std::exception& e) {
    ShowLoadError(ed, e);
    return;
  }

  // From here a failing step is skipped, until the used columns are listed.
  // Choosing the data set reloads its columns and filters, which moves the
  // cursors; they are put back afterwards.
  const XmlNode base_node = base->CurrentNode();
  const XmlNode custom_node = custom->CurrentNode();
  // Each read goes to the record its cursor is on at that moment, as GetValue would.
  RecordValues custom_values, base_own_values;
  RecordValues& base_values = base == custom ? custom_values : base_own_values;
  auto custom_value = [&](const std::string& element) { return custom_values.Get(*custom, element); };
  auto base_value = [&](const std::string& element) { return base_values.Get(*base, element); };
  // The filter list is filled again at the end of the load; between the
  // two fills it is read only by the advanced option's click, whose
  // statement is then replaced by the stored one.
  ed.defer_filter_fill = true;
  ResumeNext([&] { ed.cmbDataSet.SetListIndex(-1); });
  ResumeNext([&] { ed.cmbDataSet.SetText(data_set); });
  ResumeNext([&] {
    if (ed.cmbDataSet.FindText(data_set) < 0) ed.cmbDataSet.SetListIndex(0);
  });
  ed.defer_filter_fill = false;
  base->SetCurrentNode(base_node);
  custom->SetCurrentNode(custom_node);

  const char* const kDirection[] = {"SortASCDESC", "SortASCDESC2"};
  for (int i = 0; i < 2; ++i) {
    ui::ComboBox& direction = ed.cmbSortASCDESC[static_cast<std::size_t>(i)];
    ResumeNext([&] { direction.SetListIndex(0); });
    ResumeNext([&] { direction.SetText(custom_value(kDirection[i])); });
  }

  std::string sort_by, sort_by2;
  ResumeNext([&] { sort_by = custom_value("SortBy"); });
  ResumeNext([&] { sort_by2 = custom_value("SortBy2"); });
  for (ui::ComboBox& sort : ed.cmbSort) ResumeNext([&] { sort.SetListIndex(0); });

  ResumeNext([&] { ed.chkSortGroup.SetValue(StoredInt(custom_value("DoGrouping"))); });
  ResumeNext([&] { ed.chkAverages.SetValue(StoredInt(custom_value("DoAverages"))); });
  ResumeNext([&] { ed.chkTotals.SetValue(StoredInt(custom_value("DoTotals"))); });
  ResumeNext([&] { ed.chkShowLineCount.SetValue(StoredInt(custom_value("DoLineCount"))); });

  ResumeNext(
      [&] { ed.cmbOrientation.SetListIndex(StoredInt(custom_value("PageOrientation"))); });
  ResumeNext([&] { ed.cmbPageSize.SetListIndex(StoredInt(custom_value("PageSize"))); });
  ResumeNext([&] { ed.chkMultiLine.SetValue(StoredInt(custom_value("PageMultiLine"))); });

  ResumeNext([&] { ed.Variables().ClearForm(); });
  std::string first_name, second_name;
  ResumeNext([&] { first_name = custom_value("Var0Name"); });
  ResumeNext([&] { second_name = custom_value("Var1Name"); });
  ResumeNext([&] {
    ed.chkStartEnd.SetValue(first_name == "START_DATE" && second_name == "END_DATE" ? 1 : 0);
  });
  for (int slot = 0; slot < kVariableSlots; ++slot) {
    const std::string prefix = "Var" + std::to_string(slot);
    std::string caption, type, var_name;
    ResumeNext([&] { caption = custom_value(prefix + "Caption"); });
    ResumeNext([&] { type = custom_value(prefix + "Type"); });
    ResumeNext([&] { var_name = custom_value(prefix + "Name"); });
    ResumeNext([&] { ed.Variables().SetVariable(slot, caption, type, var_name); });
  }
  ResumeNext([&] { FillVariableChoices(ed); });

  // The used columns and the sort drop-downs built from them: a failure ends the load.
  try {
    ListUsedColumns(ed, custom->CurrentNode());
  } catch (const std::exception& e) {
    ShowLoadError(ed, e);
    FillDeferredFilters(ed);
    return;
  }
  // A name that is not a used column leaves the first entry.
  for (ui::ComboBox& sort : ed.cmbSort) ResumeNext([&] { sort.SetListIndex(0); });
  ResumeNext([&] { ed.cmbSort[0].SetText(sort_by); });
  ResumeNext([&] { ed.cmbSort[1].SetText(sort_by2); });

  ResumeNext([&] {
    const std::string tabs = custom_value("Tabs");
    for (int row = 1; row <= ed.lstvwTabs.ItemCount(); ++row) ed.lstvwTabs.SetChecked(row, false);
    for (const std::string& id : Split(tabs, ',')) {
      ResumeNext([&] {
        int row = ed.lstvwTabs.FindKey("T" + id);
        if (row == 0) throw Error("Element not found");
        ed.lstvwTabs.SetChecked(row, true);
      });
    }
  });

  ResumeNext([&] {
    const long view_type = static_cast<long>(RoundedVal(base_value("AcctViewType")));
    for (int i = 0; i < ed.cmbAcctViewType.ListCount(); ++i) {
      if (ed.cmbAcctViewType.ItemData(i) == view_type) {
        ed.cmbAcctViewType.SetListIndex(i);
        break;
      }
    }
  });

  // Empty or non-numeric text fails the whole-number conversion: the option
  // buttons keep their state.
  ResumeNext([&] {
    std::optional<double> filter_type = StrictNumber(base_value("FilterType"));
    if (!filter_type) throw Error("Type mismatch");
    const double index = std::nearbyint(*filter_type);  // half to even, as the host rounds
    if (std::fabs(index) > 32767) throw Error("Overflow");
    ed.optFilter.SetValue(static_cast<int>(index));
  });

  ed.CurrentProfileName = name;
  ResumeNext([&] { ed.DataSetSQL = base_value("SQL"); });

  ed.filter_fill_pending = false;
  ResumeNext([&] { LoadFilters(ed); });
  ed.ProfileChanged = false;
}

}  // namespace cvve
