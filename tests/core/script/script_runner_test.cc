#include "script/script_runner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "base/text.h"
#include "component/frm_acct_view_edit.h"
#include "fixtures.h"
#include "ui/headless_prompter.h"

namespace cvve::script {
namespace {

// The shared file set; after `open` the editor shows "All Accounts" (easy
// filter, Account and Balance used); "Loose" is a user profile without
// columns or variables, "Mine" one with variables on the advanced filter.
struct ScriptRunnerTest : ::testing::Test {
  ScriptRunnerTest() {
    dir.Write("setup.xml", testing::kSetup);
    dir.Write("defs.xml", testing::kDefaults);
    dir.Write("views.xml", testing::kViews);
    host.view_files_folder = dir.Path().string();
    host.reports_base_folder = dir.Path().string();
    host.executable_name = "viewedit";
  }
  // Runs the script after `open`; "" when it succeeded, else the error's text.
  std::string Run(const std::string& script, bool open = true) {
    try {
      runner.Run((open ? "open edit views.xml defs.xml setup.xml\n" : "") + script);
      return "";
    } catch (const ScriptError& e) {
      return e.what();
    }
  }
  // Runs each script (after `open` when `opened`): it must fail on its last
  // line for the reason given.
  void ExpectLastLineFails(bool opened,
                           const std::vector<std::pair<std::string, std::string>>& cases) {
    for (const auto& [script, reason] : cases) {
      const auto line = std::count(script.begin(), script.end(), '\n') + (opened ? 1 : 0);
      const std::string error = Run(script, opened);
      EXPECT_TRUE(StartsWith(error, "line " + std::to_string(line) + ": " + reason)) << error;
    }
  }
  testing::TempDir dir;
  DefaultHostServices host;
  std::ostringstream out;
  ScriptRunner runner{host, out};
};

TEST_F(ScriptRunnerTest, BadLinesFailWithTheirLineNumber) {
  ExpectLastLineFails(
      false, {{"# comment\n\nfrobnicate now\n", "unknown command 'frobnicate'"},
              {"answer Maybe\n", "unknown answer 'Maybe': Yes, No, Cancel or OK"},
              {"answer Yes No\n", "unexpected argument 'No'"},
              {"open elsewhere\n", "unknown file set 'elsewhere': acct, inv, eod, report or edit"},
              {"open edit views.xml defs.xml\n", "missing SETUP file"},
              {"state\n", "no editor yet: `open` one first"},
              {"click cmdOK\n", "the editor is not open: `open` it first"}});
  ExpectLastLineFails(
      true,
      {{"click cmdNothing\n", "the editor has no control 'cmdNothing'"},
       {"click lstFilters\n",
        "click works on command buttons, check boxes and optFilter(0)/(1); "
        "'lstFilters' is none of them"},
       {"select cmbDataSet Nowhere\n", "cmbDataSet has no entry 'Nowhere'"},
       {"select cmbOrientation #7\n", "cmbOrientation has no entry #7"},
       {"select cmbDataSet\n", "missing TEXT or #INDEX"},
       {"select tvwViews Nobody\n", "tvwViews has no node with the key or text 'Nobody'"},
       {"check lstFilters 9 on\n", "lstFilters has no item with the key '9'"},
       {"check lstFilters 1 maybe\n", "expected on or off, not 'maybe'"},
       {"cell lstFilters 1 Data3\n", "lstFilters has no column 'Data3'"},
       {"type 45\n", "no value editor is open: open one with `cell lstFilters KEY Data1|Data2`"},
       {"key F5\n", "unknown key 'F5': Enter, Escape or Tab"},
       {"set frmVariables 0 caption x\n", "frmVariables is not shown"},
       {"open acct\n", "the editor is open already"},
       {"messages please\n", "messages takes nothing or clear, not 'please'"},
       {"file missing.xml\n", "cannot read '" + dir.Path().string() + "/missing.xml'"}});
}

TEST_F(ScriptRunnerTest, ExpectationsDisabledControlsAndDialogsFailTheirLine) {
  ExpectLastLineFails(
      true, {{"expect nopointer 1\n", "bad JSON pointer 'nopointer'"},
             {"expect /nothing/here 1\n",
              "expect /nothing/here: the state has nothing there (expected 1)"},
             {"expect /controls/cmbDataSet/text \"Inventory\"\n",
              "expect /controls/cmbDataSet/text: expected \"Inventory\", actual \"Accounts\""},
             {"select cmbDataSet #1\n", "cmbDataSet is disabled"},
             {"select tvwViews Loose\nclick cmdAdvancedFilter\n", "cmdAdvancedFilter is disabled"},
             {"click cmdEditVariables\nclick chkTotals\n",
              "frmVariables is shown modally: close it first"},
             {"click cmdEditVariables\nclick cmdClose\n",
              "frmVariables is shown modally and has no button 'cmdClose' (frmVariables: cmdOK; "
              "frmAcctViewAdvanced: cmdClose)"},
             {"select tvwViews Loose\ncell lstFilters 1 Data1\nchoose <$X>\n",
              "txtData1LV offers no entry '<$X>' (it offers '')"}});
  // Questions need a queued answer that fits, and every answer must be used.
  const std::string question =
      "\"You have made changes to the current profile.  Would you like to save these changes?\"";
  EXPECT_EQ(Run("click chkTotals\nclick cmdOK\n"),
            "line 3: no answer queued for the message " + question +
                " (title \"Save Changes\", buttons YesNoCancel); queue one with `answer`");
  EXPECT_EQ(Run("click chkTotals\nanswer OK\nclick cmdOK\n"),
            "line 4: the answer OK queued on line 3 does not fit the buttons YesNoCancel of the "
            "message " +
                question);
  EXPECT_EQ(Run("answer Yes\ninput name\nclick cmdCancel\n"),
            "line 4: the answer Yes queued on line 2 was never asked for");
  EXPECT_EQ(Run("input name\nclick cmdCancel\n"),
            "line 3: the input \"name\" queued on line 2 was never asked for");
}

TEST_F(ScriptRunnerTest, AFailureOrTheEndClosesTheEditorWithoutSaving) {
  const std::string before = dir.Read("views.xml");
  EXPECT_EQ(Run("expect /controls/cmbDataSet/text Accounts\n"  // a bare word is a string
                "expect /controls/cmbDataSet/listIndex 0\n"
                "expect /ProfileChanged false\n"
                "expect /controls/lstUsedColumns/items [\"Account\", \"Balance\"]\n"
                "expect /controls/txtCurrProf/text Nobody\n"
                "click chkTotals\n")
                .substr(0, 6),
            "line 6");
  ASSERT_NE(runner.Editor(), nullptr);
  EXPECT_FALSE(runner.Editor()->Visible());
  EXPECT_EQ(runner.Editor()->chkTotals.Value(), 0);  // the lines after it did not run

  EXPECT_EQ(Run("select tvwViews Mine\nclick chkTotals\n"), "");
  EXPECT_FALSE(runner.Editor()->Visible());
  // A dialog left open goes first, as its own button closes it.
  EXPECT_EQ(Run("click cmdEditVariables\nset frmVariables 3 name LEFT\n"), "");
  EXPECT_FALSE(runner.Editor()->Visible() || runner.Editor()->Variables().Visible());
  EXPECT_EQ(runner.Editor()->Variables().txtVariableName[3].Text(), "LEFT");
  EXPECT_EQ(dir.Read("views.xml"), before);
}

TEST_F(ScriptRunnerTest, AWriteThatFailedFailsTheScriptAtItsLine) {
  // The views file's place is taken by a folder: OK cannot write there.
  namespace fs = std::filesystem;
  fs::remove(dir.Path() / "views.xml");
  fs::create_directories(dir.Path() / "views.xml");
  const std::string error = Run("click cmdOK\nclick cmdCancel\n");
  EXPECT_TRUE(error.starts_with("line 2: could not write '")) << error;
  // The classic message box was shown, and the script went on to the end.
  ASSERT_NE(runner.Editor(), nullptr);
  EXPECT_FALSE(runner.Editor()->Visible());
  bool classic_box = false;
  for (const auto& shown : runner.Prompter().Shown()) {
    classic_box = classic_box || shown.text.starts_with("Error in cmdOK_Click: ");
  }
  EXPECT_TRUE(classic_box);
}

TEST_F(ScriptRunnerTest, APlainMessageWithNoAnswerWaitingIsNotQueued) {
  struct Case {
    std::string script;
    bool queued;
  };
  // A system profile cannot be renamed: an OK-only box.
  for (const Case& c : {Case{"select tvwViews Past Due\nclick cmdEditProfile\n", false},
                        Case{"select tvwViews Past Due\nanswer OK\nclick cmdEditProfile\n", true}}) {
    SCOPED_TRACE(c.script);
    runner.Prompter().ClearShown();
    EXPECT_EQ(Run(c.script), "");
    ASSERT_FALSE(runner.Prompter().Shown().empty());
    const ui::ShownPrompt& shown = runner.Prompter().Shown().back();
    EXPECT_EQ(shown.title, "Edit Name");
    EXPECT_EQ(shown.queued, c.queued);
  }
}

TEST_F(ScriptRunnerTest, LinesFromAStreamRunAsTheyArrive) {
  std::istringstream in("open edit views.xml defs.xml setup.xml\nstate ProfileChanged\n"
                        "answer Yes\nclick cmdCancel\n");
  try {
    runner.Run(in);
    FAIL() << "the unused answer must fail the script";
  } catch (const ScriptError& e) {
    EXPECT_EQ(std::string(e.what()), "line 4: the answer Yes queued on line 3 was never asked for");
  }
  EXPECT_EQ(out.str(), "false\n");
}

}  // namespace
}  // namespace cvve::script
