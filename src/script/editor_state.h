#pragma once
// The editor's state as JSON, as `viewedit script` prints and checks it:
// the file-set state, every control of the editor by its name, the two
// dialogs, the save notice and the wait cursor; and the record of prompts.
// Reading the state changes nothing (the variables dialog is not created).
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "ui/combo_box.h"
#include "ui/list_box.h"
#include "ui/list_view.h"
#include "ui/simple_controls.h"
#include "ui/tree_view.h"

namespace cvve {
class frmAcctViewEdit;
namespace ui {
class HeadlessPrompter;
}
}  // namespace cvve

namespace cvve::script {

using Json = nlohmann::ordered_json;

using ControlPtr =
    std::variant<ui::ComboBox*, ui::ListBox*, ui::ListView*, ui::TreeView*, ui::CheckBox*,
                 ui::OptionGroup*, ui::TextBox*, ui::CommandButton*, ui::Frame*>;
struct ControlRef {
  std::string name;  // as the editor names it, e.g. "cmbSort(1)"
  ControlPtr control;
};

// Every control of the editor, in the order the state lists them.
std::vector<ControlRef> EditorControls(frmAcctViewEdit& ed);
// The control of that name; nothing when the editor has none.
std::optional<ControlRef> FindControl(frmAcctViewEdit& ed, const std::string& name);

// The whole state object.
Json EditorState(frmAcctViewEdit& ed, const ui::HeadlessPrompter& prompter);
// One control's JSON, or one top-level member of the state (e.g.
// "frmVariables", "ProfileChanged"); nothing when there is no such name.
std::optional<Json> EditorStatePart(frmAcctViewEdit& ed, const ui::HeadlessPrompter& prompter,
                                    const std::string& name);
// Every prompt shown so far, oldest first.
Json MessagesJson(const ui::HeadlessPrompter& prompter);
// A colour kept blue-green-red (0xBBGGRR) as "#RRGGBB".
std::string ColorText(std::uint32_t bgr);

}  // namespace cvve::script
