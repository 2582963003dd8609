#include "script/editor_state.h"

#include <cstdio>

#include "component/frm_acct_view_edit.h"
#include "filters/filter_list.h"
#include "ui/headless_prompter.h"

namespace cvve::script {

namespace {

template <class... F>
struct Overloaded : F... {
  using F::operator()...;
};
template <class... F>
Overloaded(F...) -> Overloaded<F...>;

Json ComboJson(const ui::ComboBox& combo, bool with_item_data) {
  Json items = Json::array();
  Json data = Json::array();
  for (const auto& entry : combo.Entries()) {
    items.push_back(entry.text);
    data.push_back(entry.item_data);
  }
  Json j;
  j["items"] = items;
  if (with_item_data) j["itemData"] = data;
  j["listIndex"] = combo.ListIndex();
  j["text"] = combo.Text();
  j["enabled"] = combo.Enabled();
  j["visible"] = combo.Visible();
  return j;
}

Json ValueEditorJson(const ui::ComboBox& box) {
  Json j = ComboJson(box, false);
  j["focused"] = box.Focused();
  j["left"] = box.Left();
  j["top"] = box.Top();
  j["width"] = box.Width();
  return j;
}

Json ListBoxJson(const ui::ListBox& list) {
  return Json{{"items", list.Items()},
              {"listIndex", list.ListIndex()},
              {"enabled", list.Enabled()},
              {"visible", list.Visible()}};
}

Json ColorJson(const frmAcctViewEdit& ed, int row, int sub_item) {
  std::optional<std::uint32_t> color = FilterCellColor(ed, row, sub_item);
  return color ? Json(ColorText(*color)) : Json(nullptr);
}

Json ListViewJson(const frmAcctViewEdit& ed, const ui::ListView& list) {
  const bool is_filter_list = &list == &ed.lstFilters;
  Json columns = Json::array();
  bool all_keyed = true;
  for (int c = 1; c <= list.ColumnCount(); ++c) {
    const ui::ListColumn& column = list.Column(c);
    columns.push_back(
        {{"key", column.key}, {"header", column.header}, {"width", column.width_twips}});
    if (c > 1 && column.key.empty()) all_keyed = false;
  }
  Json items = Json::array();
  for (int i = 1; i <= list.ItemCount(); ++i) {
    const ui::ListItem& item = list.Item(i);
    Json j{{"key", item.key}, {"text", item.text}, {"tag", item.tag}, {"checked", item.checked}};
    if (list.ColumnCount() > 1) {
      if (all_keyed) {
        Json cells = Json::object();
        for (int c = 2; c <= list.ColumnCount(); ++c) {
          cells[list.Column(c).key] = list.SubItem(i, c - 1);
        }
        j["cells"] = cells;
      } else {
        j["subItems"] = item.sub_items;
      }
    }
    if (is_filter_list) {
      // The painter works on sub-items 2 and 4, whatever their keys.
      j["colors"] = {{"Data1", ColorJson(ed, i - 1, 2)}, {"Data2", ColorJson(ed, i - 1, 4)}};
    }
    items.push_back(j);
  }
  Json selected = nullptr;
  if (list.SelectedItem() > 0) selected = list.Item(list.SelectedItem()).key;
  return Json{{"columns", columns},
              {"items", items},
              {"selected", selected},
              {"enabled", list.Enabled()},
              {"visible", list.Visible()}};
}

Json TreeJson(const ui::TreeView& tree) {
  Json nodes = Json::array();
  for (ui::NodeId id : tree.DisplayOrder()) {
    const ui::TreeNode& node = tree.Node(id);
    nodes.push_back(
        {{"key", node.key},
         {"text", node.text},
         {"image", node.image},
         {"tag", node.tag},
         {"parent", node.parent == ui::kNoNode ? Json(nullptr) : Json(tree.Node(node.parent).key)},
         {"bold", node.bold},
         {"expanded", node.expanded}});
  }
  Json selected = nullptr;
  Json selected_text = nullptr;
  if (tree.Exists(tree.SelectedNode())) {
    selected = tree.Node(tree.SelectedNode()).key;
    selected_text = tree.Node(tree.SelectedNode()).text;
  }
  return Json{{"nodes", nodes},
              {"selected", selected},
              {"selectedText", selected_text},
              {"enabled", tree.Enabled()},
              {"visible", tree.Visible()}};
}

Json ControlJson(frmAcctViewEdit& ed, const ControlRef& ref) {
  return std::visit(
      Overloaded{
          [&](ui::ComboBox* c) {
            if (c == &ed.txtData1LV || c == &ed.txtData2LV) return ValueEditorJson(*c);
            return ComboJson(*c, c == &ed.cmbAcctViewType);
          },
          [](ui::ListBox* c) { return ListBoxJson(*c); },
          [&](ui::ListView* c) { return ListViewJson(ed, *c); },
          [](ui::TreeView* c) { return TreeJson(*c); },
          [](ui::CheckBox* c) {
            return Json{
                {"value", c->Value()}, {"enabled", c->Enabled()}, {"visible", c->Visible()}};
          },
          [](ui::OptionGroup* c) {
            return Json{
                {"value", c->SetIndex()}, {"enabled", c->Enabled()}, {"visible", c->Visible()}};
          },
          [](ui::TextBox* c) {
            return Json{{"text", c->Text()}, {"enabled", c->Enabled()}, {"visible", c->Visible()}};
          },
          [](ui::CommandButton* c) {
            return Json{{"enabled", c->Enabled()}, {"visible", c->Visible()}};
          },
          [](ui::Frame* c) {
            return Json{{"enabled", c->Enabled()}, {"visible", c->Visible()}};
          },
      },
      ref.control);
}

Json VariablesJson(frmAcctViewEdit& ed) {
  if (!ed.VariablesLoaded()) {
    return Json{{"loaded", false},
                {"visible", false},
                {"inputMode", false},
                {"width", nullptr},
                {"slots", Json::array()}};
  }
  frmVariables& dialog = ed.Variables();
  Json slots = Json::array();
  for (int slot = 0; slot < kVariableSlots; ++slot) {
    slots.push_back({{"caption", dialog.txtVariableCaption[slot].Text()},
                     {"type", dialog.cmbVariable[slot].Text()},
                     {"name", dialog.txtVariableName[slot].Text()},
                     {"value", dialog.txtValue[slot].Text()}});
  }
  return Json{{"loaded", true},
              {"visible", dialog.Visible()},
              {"inputMode", dialog.InValueEntryMode()},
              {"width", dialog.width_twips},
              {"slots", slots}};
}

Json AdvancedJson(const frmAcctViewEdit& ed) {
  if (!ed.advanced_dialog) return Json{{"open", false}, {"txtSQL", nullptr}};
  return Json{{"open", ed.advanced_dialog->Visible()},
              {"txtSQL", ed.advanced_dialog->txtSQL.Text()}};
}

}  // namespace

std::string ColorText(std::uint32_t bgr) {
  char text[8];
  std::snprintf(text, sizeof text, "#%02X%02X%02X", bgr & 0xFFu, (bgr >> 8) & 0xFFu,
                (bgr >> 16) & 0xFFu);
  return text;
}

std::vector<ControlRef> EditorControls(frmAcctViewEdit& ed) {
  // Listed one by one: a control added to the editor must be added here too.
  std::vector<ControlRef> refs;
  auto add = [&refs](auto& control) { refs.push_back({control.Name(), &control}); };
  add(ed.tvwViews);
  add(ed.txtCurrProf);
  add(ed.cmbAcctViewType);
  add(ed.cmbDataSet);
  add(ed.lstAvailColumns);
  add(ed.lstUsedColumns);
  add(ed.cmdAddForm);
  add(ed.cmdRemoveForm);
  add(ed.cmdRemoveAll);
  add(ed.cmdMove[0]);
  add(ed.cmdMove[1]);
  add(ed.lstvwTabs);
  add(ed.lstFilters);
  add(ed.txtData1LV);
  add(ed.txtData2LV);
  add(ed.optFilter);
  add(ed.cmdAdvancedFilter);
  add(ed.cmbSort[0]);
  add(ed.cmbSort[1]);
  add(ed.cmbSortASCDESC[0]);
  add(ed.cmbSortASCDESC[1]);
  add(ed.chkSortGroup);
  add(ed.chkTotals);
  add(ed.chkAverages);
  add(ed.chkShowLineCount);
  add(ed.chkStartEnd);
  add(ed.chkMultiLine);
  add(ed.cmbOrientation);
  add(ed.cmbPageSize);
  add(ed.cmdEditVariables);
  add(ed.cmdNewProfile);
  add(ed.cmdCopyProfile);
  add(ed.cmdEditProfile);
  add(ed.cmdDeleteProfile);
  add(ed.cmdSaveProfile);
  add(ed.cmdExport);
  add(ed.cmdPreviewReport);
  add(ed.cmdOK);
  add(ed.cmdCancel);
  add(ed.fraInstructions);
  return refs;
}

std::optional<ControlRef> FindControl(frmAcctViewEdit& ed, const std::string& name) {
  for (ControlRef& ref : EditorControls(ed)) {
    if (ref.name == name) return ref;
  }
  return std::nullopt;
}

Json EditorState(frmAcctViewEdit& ed, const ui::HeadlessPrompter& prompter) {
  Json controls = Json::object();
  for (const ControlRef& ref : EditorControls(ed)) controls[ref.name] = ControlJson(ed, ref);
  Json state;
  state["editorOpen"] = ed.Visible();
  state["ReportMode"] = ed.ReportMode();
  state["ProfileChanged"] = ed.ProfileChanged;
  state["UnwrittenProfiles"] = ed.UnwrittenProfiles;
  state["ViewsPath"] = ed.ViewsPath;
  state["DefaultsPath"] = ed.DefaultsPath;
  state["SetupPath"] = ed.SetupPath;
  state["DataSetSQL"] = ed.DataSetSQL;
  state["Data1Column"] = ed.Data1Column;
  state["Data2Column"] = ed.Data2Column;
  state["CurrentProfileName"] = ed.CurrentProfileName;
  state["FilterErrorShown"] = ed.FilterErrorShown;
  state["controls"] = controls;
  state["frmVariables"] = VariablesJson(ed);
  state["frmAcctViewAdvanced"] = AdvancedJson(ed);
  state["notice"] = {{"open", prompter.NoticeOpen()}, {"text", prompter.NoticeText()}};
  state["waitCursor"] = prompter.WaitCursor();
  return state;
}

std::optional<Json> EditorStatePart(frmAcctViewEdit& ed, const ui::HeadlessPrompter& prompter,
                                    const std::string& name) {
  if (std::optional<ControlRef> ref = FindControl(ed, name)) return ControlJson(ed, *ref);
  Json state = EditorState(ed, prompter);
  if (name != "controls" && state.contains(name)) return state[name];
  return std::nullopt;
}

Json MessagesJson(const ui::HeadlessPrompter& prompter) {
  Json list = Json::array();
  for (const ui::ShownPrompt& shown : prompter.Shown()) {
    list.push_back({{"kind", shown.kind},
                    {"text", shown.text},
                    {"title", shown.title},
                    {"buttons", shown.buttons},
                    {"icon", shown.icon},
                    {"default", shown.default_text},
                    {"answer", shown.answer},
                    {"queued", shown.queued}});
  }
  return list;
}

}  // namespace cvve::script
