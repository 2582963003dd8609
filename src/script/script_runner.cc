#include "script/script_runner.h"

#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <ostream>
#include <sstream>
#include <utility>

#include "base/error.h"
#include "base/text.h"
#include "component/editor_environment.h"
#include "component/frm_acct_view_edit.h"
#include "cvviewedit/cls_view_edit.h"
#include "filters/value_editors.h"
#include "host/host_services.h"
#include "query/sql_builder.h"
#include "results/results.h"
#include "script/editor_state.h"
#include "script/preview_recorder.h"
#include "script/script_line.h"
#include "ui/headless_dialog_host.h"
#include "ui/headless_prompter.h"

namespace cvve::script {

ScriptError::ScriptError(int line, const std::string& reason)
    : std::runtime_error("line " + std::to_string(line) + ": " + reason),
      line_(line),
      reason_(reason) {}

namespace {

bool Fits(ui::Answer answer, ui::Buttons buttons) {
  switch (buttons) {
    case ui::Buttons::kOk:
      return answer == ui::Answer::kOk;
    case ui::Buttons::kOkCancel:
      return answer == ui::Answer::kOk || answer == ui::Answer::kCancel;
    case ui::Buttons::kYesNo:
      return answer == ui::Answer::kYes || answer == ui::Answer::kNo;
    case ui::Buttons::kYesNoCancel:
      return answer != ui::Answer::kOk;
  }
  return false;
}

// The headless prompter with the script's own queues. A message box with
// only an OK button needs no answer, so it leaves a queued Yes or No to the
// question it belongs to (it takes a queued OK, so `answer OK` may
// acknowledge it). An answer that fits none of the buttons is a script
// error, reported after the command that showed the box.
class ScriptPrompter : public ui::HeadlessPrompter {
 public:
  void Queue(ui::Answer answer, int line) { answers_.push_back({answer, line}); }
  void QueueText(std::string text, int line) { inputs_.push_back({std::move(text), line}); }

  ui::Answer MsgBox(const std::string& text, ui::Buttons buttons, ui::Icon icon,
                    const std::string& title) override {
    if (!answers_.empty()) {
      const QueuedAnswer front = answers_.front();
      if (buttons != ui::Buttons::kOk || front.answer == ui::Answer::kOk) {
        answers_.pop_front();
        if (Fits(front.answer, buttons)) {
          HeadlessPrompter::QueueAnswer(front.answer);
        } else if (problem_.empty()) {
          problem_ = std::string("the answer ") + ui::ToString(front.answer) + " queued on line " +
                     std::to_string(front.line) + " does not fit the buttons " +
                     ui::ToString(buttons) + " of the message \"" + text + "\"";
        }
      }
    }
    return HeadlessPrompter::MsgBox(text, buttons, icon, title);
  }

  std::string InputBox(const std::string& prompt, const std::string& title,
                       const std::string& default_text) override {
    if (!inputs_.empty()) {
      HeadlessPrompter::QueueInput(std::move(inputs_.front().text));
      inputs_.pop_front();
    }
    return HeadlessPrompter::InputBox(prompt, title, default_text);
  }

  // The first answer-fitting problem since the last call ("" when none).
  std::string TakeProblem() { return std::exchange(problem_, {}); }

  // What is still queued, as the error that leaving it there is, reported at
  // `end_line` (where the script ended) and naming the line that queued it.
  std::optional<ScriptError> Leftover(int end_line) const {
    std::optional<ScriptError> error;
    int queued_on = 0;
    if (!answers_.empty()) {
      queued_on = answers_.front().line;
      error.emplace(end_line, std::string("the answer ") + ui::ToString(answers_.front().answer) +
                                  " queued on line " + std::to_string(queued_on) +
                                  " was never asked for");
    }
    if (!inputs_.empty() && (!error || inputs_.front().line < queued_on)) {
      error.emplace(end_line, "the input \"" + inputs_.front().text + "\" queued on line " +
                                  std::to_string(inputs_.front().line) + " was never asked for");
    }
    return error;
  }
  // The first write that failed, as the error it is for the script.
  std::optional<ScriptError> FailedWrite() const { return failed_write_; }
  void WriteFailed(const std::string& path, const std::string& reason) override {
    HeadlessPrompter::WriteFailed(path, reason);
    if (!failed_write_) failed_write_.emplace(line_, "could not write '" + path + "': " + reason);
  }
  // Where the script says a file was kept: standard error, since it has no status bar.
  void ShowStatus(const std::string& text) override {
    HeadlessPrompter::ShowStatus(text);
    std::cerr << "viewedit: " << text << "\n";
  }
  void SetLine(int line) { line_ = line; }
  void DropQueued() {
    answers_.clear();
    inputs_.clear();
  }

 private:
  struct QueuedAnswer {
    ui::Answer answer;
    int line;
  };
  struct QueuedInput {
    std::string text;
    int line;
  };
  std::deque<QueuedAnswer> answers_;
  std::deque<QueuedInput> inputs_;
  std::string problem_;
  std::optional<ScriptError> failed_write_;
  int line_ = 0;
};

std::optional<ui::Answer> ParseAnswer(const std::string& word) {
  static const std::map<std::string, ui::Answer> kAnswers{{"yes", ui::Answer::kYes},
                                                          {"no", ui::Answer::kNo},
                                                          {"cancel", ui::Answer::kCancel},
                                                          {"ok", ui::Answer::kOk}};
  auto it = kAnswers.find(ToLower(word));
  if (it == kAnswers.end()) return std::nullopt;
  return it->second;
}

// "#N" as an index, nothing for any other text.
std::optional<int> ParseIndex(const std::string& text) {
  if (text.size() < 2 || text[0] != '#') return std::nullopt;
  int index = 0;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] < '0' || text[i] > '9' || index > 100000) return std::nullopt;
    index = index * 10 + (text[i] - '0');
  }
  return index;
}

std::string Quoted(const std::string& text) { return "'" + text + "'"; }

// The rows `results` prints unless told otherwise: as many as the window shows.
constexpr std::size_t kShownRows = 200;

}  // namespace

struct ScriptRunner::Impl {
  Impl(HostServices& h, std::ostream& o, ReportEngine* reports, results::Source* rows)
      : host(h),
        out(o),
        rows_source(rows),
        recorder(reports ? std::make_unique<PreviewRecorder>(*reports) : nullptr),
        env{h, prompter, dialogs, recorder.get()},
        component(env) {
    dialogs.SetDriver([this](ui::Form& form) { Drive(form); });
  }

  using Command = void (Impl::*)(Args&);

  HostServices& host;
  std::ostream& out;
  results::Source* rows_source;  // the editor's database, if any
  ScriptPrompter prompter;
  ui::HeadlessDialogHost dialogs;
  std::unique_ptr<PreviewRecorder> recorder;  // in front of the report engine, if any
  ScriptExtension* extension = nullptr;       // the host's own commands
  EditorEnvironment env;
  clsViewEdit component;

  std::vector<ScriptLine> lines;
  std::function<bool(std::string&)> source;  // more lines, when read as they arrive
  int read_count = 0;
  std::size_t next = 0;
  int current_line = 0;
  std::optional<ScriptError> failure;
  int unanswered_seen = 0;
  // The editor control that has the keyboard focus ("" for none): acting on
  // another control takes it away, as a click elsewhere does on screen.
  std::string focus;

  // --- running ---

  void Run(std::string_view script) {
    lines = ParseScript(script);
    source = nullptr;
    RunLines();
  }

  // Lines as they arrive: each runs before the next is read, so another
  // program can drive the editor step by step.
  void Run(std::istream& in) {
    lines.clear();
    read_count = 0;
    source = [&in](std::string& text) { return static_cast<bool>(std::getline(in, text)); };
    RunLines();
  }

  // True when a line is waiting to run (reading the next one if needed).
  bool HasMore() {
    while (next >= lines.size() && source) {
      std::string text;
      if (!source(text)) {
        source = nullptr;
        break;
      }
      ++read_count;
      for (ScriptLine& line : ParseScript(text)) {
        line.number = read_count;
        lines.push_back(std::move(line));
      }
    }
    return next < lines.size();
  }

  void RunLines() {
    next = 0;
    failure.reset();
    // What an earlier run left unchecked (after its failure) is not this run's.
    unanswered_seen = prompter.Unanswered();
    prompter.TakeProblem();
    while (!failure && HasMore()) ExecuteNext();
    if (!failure) failure = prompter.FailedWrite();
    if (!failure && !lines.empty()) failure = prompter.Leftover(lines.back().number);
    if (failure) {
      prompter.DropQueued();
      ScriptError error = std::move(*failure);
      failure.reset();
      throw error;
    }
  }

  void ExecuteNext() {
    // A copy: lines read while this one runs may move the vector.
    const ScriptLine line = lines[next++];
    const int outer = std::exchange(current_line, line.number);
    prompter.SetLine(line.number);
    try {
      Execute(line);
      CheckPrompts();
      if (source) out.flush();
    } catch (const ScriptError& e) {
      Fail(e);
    } catch (const std::exception& e) {
      Fail(ScriptError(line.number, Describe(e)));
    }
    current_line = outer;
    prompter.SetLine(outer);
  }

  void Fail(const ScriptError& error) {
    if (!failure) failure = error;
  }

  // A form shown modally: the following lines act on it until it is hidden.
  void Drive(ui::Form& form) {
    try {
      CheckPrompts();  // a question asked before the form came belongs to its command
    } catch (const ScriptError& e) {
      Fail(e);
    }
    while (form.Visible() && !failure && HasMore()) ExecuteNext();
    if (form.Visible()) CloseQuietly(form);
  }

  // As if the form's window were closed: the editor without saving, a dialog
  // as its own button leaves it.
  void CloseQuietly(ui::Form& form) {
    frmAcctViewEdit* ed = component.Editor();
    if (ed && &form == static_cast<ui::Form*>(ed)) {
      ResumeNext([ed] { ed->Close(); });
    } else {
      form.Hide();
    }
  }

  void Execute(const ScriptLine& line) {
    static const std::map<std::string, Command> kCommands{
        {"open", &Impl::Open},         {"answer", &Impl::AnswerCmd}, {"input", &Impl::Input},
        {"select", &Impl::Select},     {"click", &Impl::Click},      {"blur", &Impl::Blur},
        {"dblclick", &Impl::DblClick}, {"check", &Impl::Check},      {"cell", &Impl::Cell},
        {"edit", &Impl::Edit},
        {"type", &Impl::Type},         {"choose", &Impl::Choose},    {"key", &Impl::Key},
        {"set", &Impl::Set},           {"state", &Impl::State},      {"messages", &Impl::Messages},
        {"file", &Impl::File},         {"sql", &Impl::Sql},          {"expect", &Impl::Expect},
        {"results", &Impl::Results},
    };
    auto it = kCommands.find(line.command);
    if (it == kCommands.end()) {
      if (extension && extension->Run(line.command, line.rest, out)) return;
      throw Bad("unknown command " + Quoted(line.command));
    }
    Args args(line.rest);
    (this->*(it->second))(args);
  }

  // A question with no answer queued, or an answer that fit no button.
  void CheckPrompts() {
    std::string problem = prompter.TakeProblem();
    if (!problem.empty()) throw Bad(problem);
    if (prompter.Unanswered() <= unanswered_seen) return;
    unanswered_seen = prompter.Unanswered();
    const auto& shown = prompter.Shown();
    for (auto it = shown.rbegin(); it != shown.rend(); ++it) {
      // A plain message takes no answer and is never the one missing one.
      if (it->queued || (it->kind == "msgbox" && it->buttons == ui::ToString(ui::Buttons::kOk))) {
        continue;
      }
      if (it->kind == "inputbox") {
        throw Bad("no input queued for the input box \"" + it->text + "\" (title \"" + it->title +
                  "\"); queue one with `input`");
      }
      throw Bad("no answer queued for the message \"" + it->text + "\" (title \"" + it->title +
                "\", buttons " + it->buttons + "); queue one with `answer`");
    }
    throw Bad("a question was shown with no answer queued");
  }

  ScriptError Bad(const std::string& reason) const { return ScriptError(current_line, reason); }

  // Runs an editor operation; its failure fails the line with `what` first.
  template <class Step>
  void Perform(const std::string& what, Step&& step) {
    try {
      std::forward<Step>(step)();
    } catch (const ScriptError&) {
      throw;
    } catch (const std::exception& e) {
      throw Bad(what + ": " + Describe(e));
    }
  }

  // --- the editor and its controls ---

  frmAcctViewEdit& AnyEditor() {
    frmAcctViewEdit* ed = component.Editor();
    if (!ed) throw Bad("no editor yet: `open` one first");
    return *ed;
  }

  // The editor, open and not covered by a modal dialog.
  frmAcctViewEdit& OpenEditor() {
    frmAcctViewEdit* ed = component.Editor();
    if (!ed || !ed->Visible()) throw Bad("the editor is not open: `open` it first");
    if (!dialogs.Open().empty() && dialogs.Open().back() != static_cast<ui::Form*>(ed)) {
      throw Bad(dialogs.Open().back()->Name() + " is shown modally: close it first");
    }
    return *ed;
  }

  // The modal dialog in front of the editor, nullptr when none.
  ui::Form* FrontDialog() {
    if (dialogs.Open().empty()) return nullptr;
    ui::Form* front = dialogs.Open().back();
    return front == static_cast<ui::Form*>(component.Editor()) ? nullptr : front;
  }

  void RequireUsable(const ui::Control& control) const {
    if (!control.Visible()) throw Bad(control.Name() + " is hidden");
    if (!control.Enabled()) throw Bad(control.Name() + " is disabled");
  }

  ControlRef Control(frmAcctViewEdit& ed, const std::string& name) {
    std::optional<ControlRef> ref = FindControl(ed, name);
    if (!ref) throw Bad("the editor has no control " + Quoted(name));
    return *ref;
  }

  // Gives `target` the focus; the control that had it loses it first.
  void FocusOn(frmAcctViewEdit& ed, const std::string& target) {
    if (focus == target) return;
    std::string leaving = std::exchange(focus, target);
    LoseFocus(ed, leaving);
  }

  void LoseFocus(frmAcctViewEdit& ed, const std::string& name) {
    for (int which : {1, 2}) {
      ui::ComboBox& box = ValueEditor(ed, which);
      if (box.Name() == name) {
        if (box.Focused())
          Perform(name + " losing the focus", [&] { txtDataLV_LostFocus(ed, which); });
        return;
      }
    }
    if (std::optional<ControlRef> ref = FindControl(ed, name)) {
      if (auto* button = std::get_if<ui::CommandButton*>(&ref->control)) {
        if ((*button)->on_lost_focus) {
          Perform(name + " losing the focus", [&] { (*button)->on_lost_focus(); });
        }
      }
    }
  }

  // After an action: a value editor that took the focus holds it.
  void NoteFocus(frmAcctViewEdit& ed) {
    for (int which : {1, 2}) {
      if (ValueEditor(ed, which).Focused()) focus = ValueEditor(ed, which).Name();
    }
  }

  // The value editor the user works in: the focused one, else the one shown.
  int OpenValueEditor(frmAcctViewEdit& ed) {
    for (int which : {1, 2}) {
      if (ValueEditor(ed, which).Focused()) return which;
    }
    for (int which : {1, 2}) {
      if (ValueEditor(ed, which).Visible()) return which;
    }
    throw Bad("no value editor is open: open one with `cell lstFilters KEY Data1|Data2`");
  }

  template <class Action>
  void UserAction(frmAcctViewEdit& ed, const std::string& name, const std::string& what,
                  Action&& action) {
    FocusOn(ed, name);
    Perform(what, std::forward<Action>(action));
    NoteFocus(ed);
  }

  // The state with the previews shown so far.
  Json FullState(frmAcctViewEdit& ed) {
    Json state = EditorState(ed, prompter);
    state["previews"] = PreviewsJson();
    return state;
  }

  Json PreviewsJson() const {
    Json list = Json::array();
    if (!recorder) return list;
    for (const ShownPreview& shown : recorder->Shown()) {
      Json variables = Json::object();
      for (const auto& [name, value] : shown.variables) variables[name] = value;
      list.push_back({{"file", shown.file}, {"pages", shown.pages}, {"variables", variables}});
    }
    return list;
  }

  // --- commands ---

  void Open(Args& args) {
    const std::string which = args.Word("file set: acct, inv, eod, report or edit");
    frmAcctViewEdit* ed = component.Editor();
    if (ed && ed->Visible()) throw Bad("the editor is open already");
    std::function<void()> entry;
    if (which == "acct") {
      entry = [this] { component.AcctViewEdit(); };
    } else if (which == "inv") {
      entry = [this] { component.InvViewEdit(); };
    } else if (which == "eod") {
      entry = [this] { component.EODViewEdit(); };
    } else if (which == "report") {
      entry = [this] { component.ReportEdit(); };
    } else if (which == "edit") {
      std::string views = args.Word("VIEWS file");
      std::string defaults = args.Word("DEFAULTS file");
      std::string setup = args.Word("SETUP file");
      entry = [this, views, defaults, setup] { component.ViewEdit(views, defaults, setup); };
    } else {
      throw Bad("unknown file set " + Quoted(which) + ": acct, inv, eod, report or edit");
    }
    args.End();
    focus.clear();
    Perform("open " + which, entry);
    focus.clear();
  }

  void AnswerCmd(Args& args) {
    const std::string word = args.Word("answer: Yes, No, Cancel or OK");
    args.End();
    std::optional<ui::Answer> answer = ParseAnswer(word);
    if (!answer) throw Bad("unknown answer " + Quoted(word) + ": Yes, No, Cancel or OK");
    prompter.Queue(*answer, current_line);
  }

  void Input(Args& args) { prompter.QueueText(args.Rest(), current_line); }

  void Select(Args& args) {
    const std::string name = args.Word("CONTROL");
    const std::string target = args.Rest();
    if (target.empty()) throw Bad("missing TEXT or #INDEX");
    frmAcctViewEdit& ed = OpenEditor();
    const std::string what = "select " + name + " " + target;
    if (name == ed.tvwViews.Name()) {
      ui::TreeView& tree = ed.tvwViews;
      ui::NodeId node = tree.FindKey(target);
      if (node == ui::kNoNode) {
        for (ui::NodeId id : tree.DisplayOrder()) {
          if (tree.Node(id).text == target) {
            node = id;
            break;
          }
        }
      }
      if (node == ui::kNoNode)
        throw Bad("tvwViews has no node with the key or text " + Quoted(target));
      RequireUsable(tree);
      UserAction(ed, name, what, [&] { tree.UserSelect(node); });
      return;
    }
    ControlRef ref = Control(ed, name);
    auto choose = [&](const auto& list, int count, auto find) {
      std::optional<int> index = ParseIndex(target);
      if (!index) index = find(target);
      if (*index < 0 || *index >= count) {
        throw Bad(name + " has no entry " + (ParseIndex(target) ? target : Quoted(target)));
      }
      RequireUsable(list);
      return *index;
    };
    if (auto* combo = std::get_if<ui::ComboBox*>(&ref.control);
        combo && *combo != &ed.txtData1LV && *combo != &ed.txtData2LV) {
      ui::ComboBox& c = **combo;
      int index = choose(c, c.ListCount(), [&](const std::string& t) { return c.FindText(t); });
      UserAction(ed, name, what, [&] { c.SetListIndex(index); });
    } else if (auto* list = std::get_if<ui::ListBox*>(&ref.control)) {
      ui::ListBox& l = **list;
      int index = choose(l, l.ListCount(), [&](const std::string& t) {
        std::vector<int> all = l.FindAll(t);
        return all.empty() ? -1 : all.front();
      });
      UserAction(ed, name, what, [&] { l.SetListIndex(index); });
    } else {
      throw Bad("select works on drop-downs, list boxes and tvwViews; " + Quoted(name) +
                " is none of them");
    }
  }

  void Click(Args& args) {
    const std::string name = args.Word("CONTROL");
    args.End();
    if (ui::Form* dialog = FrontDialog()) {
      ClickInDialog(*dialog, name);
      return;
    }
    if (StartsWith(name, "frmVariables.") || StartsWith(name, "frmAcctViewAdvanced.")) {
      throw Bad(name.substr(0, name.find('.')) + " is not shown");
    }
    frmAcctViewEdit& ed = OpenEditor();
    const std::string what = "click " + name;
    if (name == "optFilter(0)" || name == "optFilter(1)") {
      RequireUsable(ed.optFilter);
      const int index = name[10] - '0';
      UserAction(ed, name, what, [&] { ed.optFilter.SetValue(index); });
      return;
    }
    ControlRef ref = Control(ed, name);
    if (auto* button = std::get_if<ui::CommandButton*>(&ref.control)) {
      RequireUsable(**button);
      UserAction(ed, name, what, [&] { (*button)->Click(); });
    } else if (auto* box = std::get_if<ui::CheckBox*>(&ref.control)) {
      RequireUsable(**box);
      UserAction(ed, name, what, [&] { (*box)->UserClick(); });
    } else {
      throw Bad("click works on command buttons, check boxes and optFilter(0)/(1); " +
                Quoted(name) + " is none of them");
    }
  }

  void ClickInDialog(ui::Form& dialog, const std::string& name) {
    std::string button = name;
    if (StartsWith(name, dialog.Name() + ".")) button = name.substr(dialog.Name().size() + 1);
    frmAcctViewEdit& ed = AnyEditor();
    ui::CommandButton* target = nullptr;
    if (ed.VariablesLoaded() && &dialog == static_cast<ui::Form*>(&ed.Variables())) {
      if (button == "cmdOK") target = &ed.Variables().cmdOK;
    } else if (ed.advanced_dialog && &dialog == static_cast<ui::Form*>(ed.advanced_dialog.get())) {
      if (button == "cmdClose") target = &ed.advanced_dialog->cmdClose;
    }
    if (!target && (FindControl(ed, name) || StartsWith(name, "optFilter("))) {
      throw Bad(dialog.Name() + " is shown modally: close it first");
    }
    if (!target) {
      throw Bad(dialog.Name() + " is shown modally and has no button " + Quoted(button) +
                " (frmVariables: cmdOK; frmAcctViewAdvanced: cmdClose)");
    }
    RequireUsable(*target);
    Perform("click " + name, [&] { target->Click(); });
  }

  void Blur(Args& args) {
    frmAcctViewEdit& ed = OpenEditor();
    if (args.Empty()) {
      const int which = OpenValueEditor(ed);
      Perform("blur", [&] { txtDataLV_LostFocus(ed, which); });
      if (focus == ValueEditor(ed, which).Name()) focus.clear();
      return;
    }
    const std::string name = args.Word("CONTROL");
    args.End();
    ControlRef ref = Control(ed, name);
    if (auto* combo = std::get_if<ui::ComboBox*>(&ref.control);
        combo && (*combo == &ed.txtData1LV || *combo == &ed.txtData2LV)) {
      const int which = *combo == &ed.txtData2LV ? 2 : 1;
      Perform("blur " + name, [&] { txtDataLV_LostFocus(ed, which); });
    } else if (auto* button = std::get_if<ui::CommandButton*>(&ref.control)) {
      if ((*button)->on_lost_focus) Perform("blur " + name, [&] { (*button)->on_lost_focus(); });
    } else {
      throw Bad("blur works on command buttons and the value editors; " + Quoted(name) +
                " is none of them");
    }
    if (focus == name) focus.clear();
  }

  void DblClick(Args& args) {
    const std::string name = args.Word("CONTROL");
    const std::string target = args.Rest();
    frmAcctViewEdit& ed = OpenEditor();
    ControlRef ref = Control(ed, name);
    auto* list = std::get_if<ui::ListBox*>(&ref.control);
    if (!list) throw Bad("dblclick works on list boxes; " + Quoted(name) + " is not one");
    ui::ListBox& l = **list;
    RequireUsable(l);
    int index = l.ListIndex();
    if (!target.empty()) {
      std::optional<int> parsed = ParseIndex(target);
      if (!parsed) {
        std::vector<int> all = l.FindAll(target);
        parsed = all.empty() ? -1 : all.front();
      }
      if (*parsed < 0 || *parsed >= l.ListCount()) {
        throw Bad(name + " has no entry " + (ParseIndex(target) ? target : Quoted(target)));
      }
      index = *parsed;
    }
    // The first click of a double click selects the entry under the pointer.
    UserAction(ed, name, "dblclick " + name, [&] {
      l.SetListIndex(index);
      if (l.on_dbl_click) l.on_dbl_click();
    });
  }

  ui::ListView& ListViewControl(frmAcctViewEdit& ed, const std::string& name) {
    ControlRef ref = Control(ed, name);
    auto* list = std::get_if<ui::ListView*>(&ref.control);
    if (!list) throw Bad(Quoted(name) + " is not a list view (lstFilters or lstvwTabs)");
    return **list;
  }

  int ItemByKey(const ui::ListView& list, const std::string& key) const {
    int position = list.FindKey(key);
    if (position == 0) throw Bad(list.Name() + " has no item with the key " + Quoted(key));
    return position;
  }

  void Check(Args& args) {
    const std::string name = args.Word("CONTROL");
    const std::string key = args.Word("KEY");
    const std::string state = args.Word("on or off");
    args.End();
    if (state != "on" && state != "off") throw Bad("expected on or off, not " + Quoted(state));
    frmAcctViewEdit& ed = OpenEditor();
    ui::ListView& list = ListViewControl(ed, name);
    const int position = ItemByKey(list, key);
    FocusOn(ed, name);  // a click elsewhere closes an open value editor first
    RequireUsable(list);
    UserAction(ed, name, "check " + name + " " + key,
               [&] { list.UserCheck(position, state == "on"); });
  }

  void Cell(Args& args) {
    const std::string name = args.Word("CONTROL");
    const std::string key = args.Word("KEY");
    const std::string column = args.Word("COLUMN");
    args.End();
    frmAcctViewEdit& ed = OpenEditor();
    if (name != ed.lstFilters.Name()) throw Bad("cell works on lstFilters only");
    ui::ListView& list = ed.lstFilters;
    const int position = ItemByKey(list, key);
    int col = list.ColumnPosition(column);
    for (int c = 1; col == 0 && c <= list.ColumnCount(); ++c) {
      if (list.Column(c).key.empty() && list.Column(c).header == column) col = c;
    }
    if (col == 0) throw Bad("lstFilters has no column " + Quoted(column));
    FocusOn(ed, name);  // the press takes the focus from an open value editor
    RequireUsable(list);
    const TwipsPoint at = CellCentre(list, position, col);
    UserAction(ed, name, "cell " + key + " " + column,
               [&] { lstFilters_MouseDown(ed, 1, 0, at.x, at.y); });
  }

  // F2 or Enter on a filter row: its first value cell opens.
  void Edit(Args& args) {
    const std::string name = args.Word("CONTROL");
    const std::string key = args.Word("KEY");
    args.End();
    frmAcctViewEdit& ed = OpenEditor();
    if (name != ed.lstFilters.Name()) throw Bad("edit works on lstFilters only");
    ui::ListView& list = ed.lstFilters;
    const int position = ItemByKey(list, key);
    FocusOn(ed, name);
    RequireUsable(list);
    UserAction(ed, name, "edit " + key,
               [&] { static_cast<void>(lstFilters_OpenValueCell(ed, position, 1)); });
  }

  void Type(Args& args) {
    const std::string text = args.Rest();
    frmAcctViewEdit& ed = OpenEditor();
    const int which = OpenValueEditor(ed);
    Perform("type", [&] { ValueEditor(ed, which).SetText(text); });
  }

  void Choose(Args& args) {
    const std::string text = args.Rest();
    frmAcctViewEdit& ed = OpenEditor();
    const int which = OpenValueEditor(ed);
    ui::ComboBox& box = ValueEditor(ed, which);
    const int index = box.FindText(text);
    if (index < 0) {
      std::string offered;
      for (const auto& entry : box.Entries())
        offered += (offered.empty() ? "" : ", ") + Quoted(entry.text);
      throw Bad(box.Name() + " offers no entry " + Quoted(text) + " (it offers " + offered + ")");
    }
    Perform("choose " + text, [&] {
      // Choosing from the list clicks, even on the entry already shown.
      if (index == box.ListIndex()) {
        if (box.on_click) box.on_click();
      } else {
        box.SetListIndex(index);
      }
    });
  }

  void Key(Args& args) {
    const std::string word = args.Word("key: Enter, Escape or Tab");
    args.End();
    int code = 0;
    if (word == "Enter") code = kKeyEnter;
    if (word == "Escape") code = kKeyEscape;
    if (code == 0 && word != "Tab") {
      throw Bad("unknown key " + Quoted(word) + ": Enter, Escape or Tab");
    }
    frmAcctViewEdit& ed = OpenEditor();
    const int which = OpenValueEditor(ed);
    if (word == "Tab") {
      // On to the row's second value cell, or the focus leaves the box.
      Perform("key Tab", [&] {
        if (!txtDataLV_Tab(ed, which)) txtDataLV_LostFocus(ed, which);
      });
      return;
    }
    // As the keyboard delivers them: the key goes down, then its character.
    Perform("key " + word, [&] {
      txtDataLV_KeyDown(ed, which, code);
      txtDataLV_KeyPress(ed, which, code);
    });
  }

  void Set(Args& args) {
    const std::string dialog_name = args.Word("DIALOG");
    ui::Form* dialog = FrontDialog();
    frmAcctViewEdit& ed = AnyEditor();
    if (dialog_name == "frmVariables") {
      const std::string slot_word = args.Word("SLOT");
      const std::string field = args.Word("FIELD: caption, type, name or value");
      const std::string text = args.Rest();
      if (!dialog || !ed.VariablesLoaded() || dialog != static_cast<ui::Form*>(&ed.Variables())) {
        throw Bad("frmVariables is not shown");
      }
      if (slot_word.size() != 1 || slot_word[0] < '0' || slot_word[0] > '3') {
        throw Bad("SLOT must be 0, 1, 2 or 3, not " + Quoted(slot_word));
      }
      const int slot = slot_word[0] - '0';
      frmVariables& vars = ed.Variables();
      ui::TextBox* box = nullptr;
      if (field == "caption") box = &vars.txtVariableCaption[slot];
      if (field == "name") box = &vars.txtVariableName[slot];
      if (field == "value") box = &vars.txtValue[slot];
      if (box) {
        RequireUsable(*box);
        box->SetText(text);
      } else if (field == "type") {
        ui::ComboBox& picker = vars.cmbVariable[slot];
        RequireUsable(picker);
        if (picker.FindText(text) < 0) throw Bad(picker.Name() + " has no entry " + Quoted(text));
        Perform("set type", [&] { picker.SetText(text); });
      } else {
        throw Bad("unknown field " + Quoted(field) + ": caption, type, name or value");
      }
    } else if (dialog_name == "frmAcctViewAdvanced") {
      const std::string control = args.Word("txtSQL");
      const std::string text = args.Rest();
      if (control != "txtSQL") throw Bad("frmAcctViewAdvanced has no text box " + Quoted(control));
      if (!dialog || !ed.advanced_dialog ||
          dialog != static_cast<ui::Form*>(ed.advanced_dialog.get())) {
        throw Bad("frmAcctViewAdvanced is not shown");
      }
      ed.advanced_dialog->txtSQL.SetText(text);
    } else {
      throw Bad("set works on frmVariables and frmAcctViewAdvanced, not " + Quoted(dialog_name));
    }
  }

  void State(Args& args) {
    frmAcctViewEdit& ed = AnyEditor();
    if (args.Empty()) {
      out << FullState(ed).dump(2) << "\n";
      return;
    }
    const std::string name = args.Word("CONTROL");
    args.End();
    std::optional<Json> part = EditorStatePart(ed, prompter, name);
    if (!part && name == "previews") part = PreviewsJson();
    if (!part) throw Bad("the state has no control or entry " + Quoted(name));
    out << part->dump(2) << "\n";
  }

  void Messages(Args& args) {
    if (args.Empty()) {
      out << MessagesJson(prompter).dump(2) << "\n";
      return;
    }
    const std::string word = args.Word("clear");
    args.End();
    if (word != "clear") throw Bad("messages takes nothing or clear, not " + Quoted(word));
    prompter.ClearShown();
  }

  void File(Args& args) {
    const std::string path = args.Rest();
    if (path.empty()) throw Bad("missing PATH");
    const std::string full =
        !path.empty() && path[0] == '/' ? path : host.ViewFilesFolder() + "/" + path;
    std::ifstream in(full, std::ios::binary);
    if (!in) throw Bad("cannot read " + Quoted(full));
    std::stringstream text;
    text << in.rdbuf();
    const std::string content = text.str();
    out << content;
    if (content.empty() || content.back() != '\n') out << "\n";
  }

  void Sql(Args& args) {
    args.End();
    frmAcctViewEdit& ed = AnyEditor();
    auto build = [](auto&& builder) -> Json {
      try {
        return builder();
      } catch (const std::exception& e) {
        return Json{{"error", Describe(e)}};
      }
    };
    Json result;
    result["fieldList"] = build([&] { return BuildFieldList(ed); });
    result["whereList"] = build([&] { return BuildWhereList(ed); });
    result["viewSQL"] = build([&] { return BuildViewSQL(ed, false); });
    result["reportSQL"] = build([&] { return BuildReportSQL(ed, false); });
    out << result.dump(2) << "\n";
  }

  // The rows the profile on screen selects, as the window's results show
  // them: the first LIMIT (default 200) and the count of all.
  void Results(Args& args) {
    std::size_t keep = kShownRows;
    if (!args.Empty()) {
      const std::string word = args.Word("LIMIT");
      const std::optional<int> limit = ParseIndex("#" + word);
      if (!limit) throw Bad("LIMIT must be a number of rows, not " + Quoted(word));
      keep = static_cast<std::size_t>(*limit);
    }
    args.End();
    if (!rows_source) throw Bad("there is no database to run the statement on");
    frmAcctViewEdit& ed = AnyEditor();
    out << results::ToJson(results::RunProfile(ed, *rows_source, keep)).dump(2) << "\n";
  }

  void Expect(Args& args) {
    const std::string pointer = args.Word("JSON-POINTER");
    // The folders differ from machine to machine; scripts name them so.
    const std::string value = ReplaceAll(ReplaceAll(args.Raw(), "${VIEWS}", host.ViewFilesFolder()),
                                         "${REPORTS}", host.ReportsBaseFolder());
    if (value.empty()) throw Bad("missing VALUE");
    Json expected = Json::parse(value, nullptr, false);
    if (expected.is_discarded()) expected = value;  // a bare word is a string
    Json::json_pointer where;
    try {
      where = Json::json_pointer(pointer);
    } catch (const std::exception& e) {
      throw Bad("bad JSON pointer " + Quoted(pointer) + ": " + e.what());
    }
    Json doc = FullState(AnyEditor());
    doc["messages"] = MessagesJson(prompter);
    doc["lastMessage"] = doc["messages"].empty() ? Json(nullptr) : doc["messages"].back();
    if (!doc.contains(where)) {
      throw Bad("expect " + pointer + ": the state has nothing there (expected " + expected.dump() +
                ")");
    }
    const Json& actual = doc.at(where);
    if (actual != expected) {
      throw Bad("expect " + pointer + ": expected " + expected.dump() + ", actual " +
                actual.dump());
    }
  }
};

ScriptRunner::ScriptRunner(HostServices& host, std::ostream& out, ReportEngine* reports,
                           results::Source* rows)
    : impl_(std::make_unique<Impl>(host, out, reports, rows)) {}

ScriptRunner::~ScriptRunner() = default;

void ScriptRunner::SetExtension(ScriptExtension* extension) { impl_->extension = extension; }

void ScriptRunner::Run(std::string_view script) { impl_->Run(script); }

void ScriptRunner::Run(std::istream& in) { impl_->Run(in); }

frmAcctViewEdit* ScriptRunner::Editor() { return impl_->component.Editor(); }

ui::HeadlessPrompter& ScriptRunner::Prompter() { return impl_->prompter; }

}  // namespace cvve::script
