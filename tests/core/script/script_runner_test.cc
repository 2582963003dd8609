#include "script/script_runner.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "component/frm_acct_view_edit.h"
#include "host/host_services.h"
#include "reports/report_engine.h"
#include "test_support.h"
#include "ui/headless_prompter.h"

namespace cvve::script {
namespace {

using cvve::testing::TempDir;

// One data set with three columns and two filters: 1 Balance (one value,
// default 100) and 2 Opened (two values).
const char* kSetup = R"(<ViewSetup>
  <RootNodes><Root><Index>0</Index><Name>All</Name></Root></RootNodes>
  <DataSets>
    <DataSet>
      <Name>Accounts</Name>
      <SQL>SELECT %FIELDLIST% FROM ACCTS WHERE 1=1 %ANDWHERELIST% %ORDERLIST%</SQL>
      <Columns>
        <Column><Name>Account</Name><Field>AcctNum</Field><SortField>ACCTS.AcctNum</SortField><FieldFormat>Integer</FieldFormat></Column>
        <Column><Name>Balance</Name><Field>Balance</Field><SortField>ACCTS.Balance</SortField><FieldFormat>Currency</FieldFormat></Column>
        <Column><Name>Status</Name><Field>Status</Field><SortField>ACCTS.Status</SortField><FieldFormat>String</FieldFormat></Column>
      </Columns>
      <Filters>
        <Filter><Name>Balance over</Name><Index>1</Index><InputNum>1</InputNum><Label1>over</Label1><SQL>ACCTS.Balance &gt; %DATA1%</SQL><Group>1</Group><Defaults>100</Defaults></Filter>
        <Filter><Name>Opened</Name><Index>2</Index><InputNum>2</InputNum><Label1>from</Label1><Label2>to</Label2><SQL>ACCTS.Opened BETWEEN '%DATA1%' AND '%DATA2%'</SQL><Group>2</Group><Defaults>2024-01-01|2024-12-31</Defaults></Filter>
      </Filters>
    </DataSet>
  </DataSets>
  <Tabs><Tab><Index>1</Index><Name>General</Name></Tab><Tab><Index>2</Index><Name>Notes</Name></Tab></Tabs>
</ViewSetup>)";

const char* kDefaults = R"(<Views><Profiles>
  <Profile><Name>System View</Name><DataSet>Accounts</DataSet><AcctViewType>0</AcctViewType><FilterType>0</FilterType>
    <Columns><Column><Name>Account</Name></Column></Columns></Profile>
</Profiles></Views>)";

const char* kViews = R"(<Views><Profiles>
  <Profile><Name>Mine</Name><DataSet>Accounts</DataSet><AcctViewType>0</AcctViewType><FilterType>0</FilterType>
    <Columns><Column><Name>Account</Name></Column><Column><Name>Balance</Name></Column></Columns>
    <SortBy>Account</SortBy><SortASCDESC>ASC</SortASCDESC><Tabs>1</Tabs></Profile>
</Profiles></Views>)";

struct ScriptRunnerTest : ::testing::Test {
  ScriptRunnerTest() {
    dir.Write("setup.xml", kSetup);
    dir.Write("defs.xml", kDefaults);
    dir.Write("views.xml", kViews);
    host.view_files_folder = dir.Path().string();
    host.reports_base_folder = dir.Path().string();
    host.users = {};
    host.executable_name = "viewedit";
  }

  // Runs the script; "" when it succeeded, else the error's text.
  std::string Run(const std::string& script) {
    try {
      runner.Run(script);
      return "";
    } catch (const ScriptError& e) {
      return e.what();
    }
  }

  TempDir dir;
  DefaultHostServices host;
  std::ostringstream out;
  ScriptRunner runner{host, out};
};

constexpr const char* kOpen = "open edit views.xml defs.xml setup.xml\n";

TEST_F(ScriptRunnerTest, BadLinesFailWithTheirLineNumber) {
  struct Case {
    std::string script;
    std::string error;
  };
  const Case cases[] = {
      {"# comment\n\nfrobnicate now\n", "line 3: unknown command 'frobnicate'"},
      {"answer Maybe\n", "line 1: unknown answer 'Maybe': Yes, No, Cancel or OK"},
      {"answer Yes No\n", "line 1: unexpected argument 'No'"},
      {"open elsewhere\n", "line 1: unknown file set 'elsewhere': acct, inv, eod, report or edit"},
      {"open edit views.xml defs.xml\n", "line 1: missing SETUP file"},
      {"state\n", "line 1: no editor yet: `open` one first"},
      {"click cmdOK\n", "line 1: the editor is not open: `open` it first"},
      {std::string(kOpen) + "click cmdNothing\n", "line 2: the editor has no control 'cmdNothing'"},
      {std::string(kOpen) + "click lstFilters\n",
       "line 2: click works on command buttons, check boxes and optFilter(0)/(1); 'lstFilters' "
       "is none of them"},
      {std::string(kOpen) + "select cmbDataSet Nowhere\n",
       "line 2: cmbDataSet has no entry 'Nowhere'"},
      {std::string(kOpen) + "select cmbOrientation #7\n", "line 2: cmbOrientation has no entry #7"},
      {std::string(kOpen) + "select cmbDataSet\n", "line 2: missing TEXT or #INDEX"},
      {std::string(kOpen) + "select tvwViews Nobody\n",
       "line 2: tvwViews has no node with the key or text 'Nobody'"},
      {std::string(kOpen) + "check lstFilters 9 on\n",
       "line 2: lstFilters has no item with the key '9'"},
      {std::string(kOpen) + "check lstFilters 1 maybe\n",
       "line 2: expected on or off, not 'maybe'"},
      {std::string(kOpen) + "cell lstFilters 1 Data3\n",
       "line 2: lstFilters has no column 'Data3'"},
      {std::string(kOpen) + "type 45\n",
       "line 2: no value editor is open: open one with `cell lstFilters KEY Data1|Data2`"},
      {std::string(kOpen) + "key Tab\n", "line 2: unknown key 'Tab': Enter or Escape"},
      {std::string(kOpen) + "set frmVariables 0 caption x\n", "line 2: frmVariables is not shown"},
      {std::string(kOpen) + "click frmVariables.cmdOK\n", "line 2: frmVariables is not shown"},
      {std::string(kOpen) + "open acct\n", "line 2: the editor is open already"},
      {std::string(kOpen) + "messages please\n",
       "line 2: messages takes nothing or clear, not 'please'"},
      {std::string(kOpen) + "file missing.xml\n",
       "line 2: cannot read '" + dir.Path().string() + "/missing.xml'"},
      {std::string(kOpen) + "expect nopointer 1\n", "line 2: bad JSON pointer 'nopointer'"},
      {std::string(kOpen) + "expect /nothing/here 1\n",
       "line 2: expect /nothing/here: the state has nothing there (expected 1)"},
  };
  for (const Case& c : cases) {
    const std::string error = Run(c.script);
    EXPECT_EQ(error.substr(0, c.error.size()), c.error) << c.script;
  }
}

TEST_F(ScriptRunnerTest, ExpectComparesJsonAndNamesBothValues) {
  EXPECT_EQ(Run(std::string(kOpen) +
                "expect /controls/cmbDataSet/text Accounts\n"  // a bare word is a string
                "expect /controls/cmbDataSet/listIndex 0\n"
                "expect /ProfileChanged false\n"
                "expect /controls/lstUsedColumns/items [\"Account\", \"Balance\"]\n"
                "expect /controls/cmbDataSet/text \"Inventory\"\n"
                "click chkTotals\n"),
            "line 6: expect /controls/cmbDataSet/text: expected \"Inventory\", actual "
            "\"Accounts\"");
  // The failure closed the editor without running the lines after it.
  ASSERT_NE(runner.Editor(), nullptr);
  EXPECT_FALSE(runner.Editor()->Visible());
  EXPECT_EQ(runner.Editor()->chkTotals.Value(), 0);
}

TEST_F(ScriptRunnerTest, AScriptEndingWithTheEditorOpenClosesItWithoutSaving) {
  const std::string before = dir.Read("views.xml");
  EXPECT_EQ(Run(std::string(kOpen) + "select tvwViews Mine\nclick chkTotals\n"), "");
  EXPECT_FALSE(runner.Editor()->Visible());
  EXPECT_EQ(dir.Read("views.xml"), before);

  // A dialog left open goes first, as its own button closes it.
  EXPECT_EQ(Run(std::string(kOpen) + "click cmdEditVariables\nset frmVariables 3 name LEFT\n"), "");
  EXPECT_FALSE(runner.Editor()->Visible());
  EXPECT_FALSE(runner.Editor()->Variables().Visible());
  EXPECT_EQ(runner.Editor()->Variables().txtVariableName[3].Text(), "LEFT");
  EXPECT_EQ(dir.Read("views.xml"), before);
}

TEST_F(ScriptRunnerTest, AQuestionWithoutAnAnswerFailsNamingIt) {
  EXPECT_EQ(Run(std::string(kOpen) + "select tvwViews Mine\nclick chkTotals\nclick cmdOK\n"),
            "line 4: no answer queued for the message \"You have made changes to the current "
            "profile.  Would you like to save these changes?\" (title \"Save Changes\", buttons "
            "YesNoCancel); queue one with `answer`");
}

TEST_F(ScriptRunnerTest, AnswersAreCheckedAgainstTheButtonsAndMustAllBeUsed) {
  EXPECT_EQ(
      Run(std::string(kOpen) + "select tvwViews Mine\nclick chkTotals\nanswer OK\nclick cmdOK\n"),
      "line 5: the answer OK queued on line 4 does not fit the buttons YesNoCancel of the "
      "message \"You have made changes to the current profile.  Would you like to save "
      "these changes?\"");
  EXPECT_EQ(Run(std::string(kOpen) + "answer Yes\ninput name\nclick cmdCancel\n"),
            "line 2: the answer Yes was queued but never asked for");
  EXPECT_EQ(Run(std::string(kOpen) + "input name\nclick cmdCancel\n"),
            "line 2: the input \"name\" was queued but never asked for");
}

TEST_F(ScriptRunnerTest, SavesThroughTheQuestionAndWritesTheViewsFile) {
  EXPECT_EQ(Run(std::string(kOpen) + "select tvwViews Mine\n"
                                     "click chkTotals\n"
                                     "expect /ProfileChanged true\n"
                                     "answer Yes\n"
                                     "click cmdOK\n"
                                     "expect /editorOpen false\n"
                                     "expect /lastMessage/answer Yes\n"
                                     "file views.xml\n"),
            "");
  const std::string saved = dir.Read("views.xml");
  EXPECT_NE(saved.find("<DoTotals>1</DoTotals>"), std::string::npos);
  EXPECT_NE(out.str().find("<DoTotals>1</DoTotals>"), std::string::npos);  // `file` printed it
}

TEST_F(ScriptRunnerTest, AnOkMessageLeavesAQueuedYesForTheQuestion) {
  // Deleting a system profile first says so (OK only), then asks (Yes/No).
  EXPECT_EQ(Run(std::string(kOpen) +
                "select tvwViews \"System View\"\n"
                "answer Yes\n"
                "click cmdDeleteProfile\n"
                "expect /messages/0/buttons OK\n"
                "expect /messages/0/answer OK\n"
                "expect /messages/1/text \"Are you sure you want to delete the profile 'System "
                "View'?\"\n"
                "expect /messages/1/answer Yes\n"
                "click cmdCancel\n"),
            "");
}

TEST_F(ScriptRunnerTest, NestedDialogTakesTheFollowingLinesUntilItCloses) {
  EXPECT_EQ(Run(std::string(kOpen) +
                "select tvwViews Mine\n"
                "click cmdEditVariables\n"
                "expect /frmVariables/visible true\n"
                "expect /frmVariables/inputMode false\n"
                "set frmVariables 2 caption \"Min Balance:\"\n"
                "set frmVariables 2 type Text\n"
                "set frmVariables 2 name MIN_BAL\n"
                "click cmdOK\n"  // the dialog's OK, which is in front
                "expect /frmVariables/visible false\n"
                "expect /frmVariables/slots/2 {\"caption\":\"Min Balance:\",\"type\":\"Text\","
                "\"name\":\"MIN_BAL\",\"value\":\"\"}\n"
                // The value editors offer the markers once the choices are refilled.
                "expect /controls/txtData1LV/items [\"\"]\n"
                "click chkStartEnd\n"
                "expect /controls/txtData1LV/items [\"\",\"<$START_DATE>\",\"<$END_DATE>\","
                "\"<$MIN_BAL>\"]\n"
                "expect /editorOpen true\n"
                "click cmdCancel\n"),
            "");
}

TEST_F(ScriptRunnerTest, TheEditorCannotBeUsedBehindAModalDialog) {
  EXPECT_EQ(Run(std::string(kOpen) + "click cmdEditVariables\nclick chkTotals\n"),
            "line 3: frmVariables is shown modally: close it first");
  EXPECT_FALSE(runner.Editor()->Visible());
  EXPECT_FALSE(runner.Editor()->Variables().Visible());
  EXPECT_EQ(Run(std::string(kOpen) + "click cmdEditVariables\nclick cmdClose\n"),
            "line 3: frmVariables is shown modally and has no button 'cmdClose' (frmVariables: "
            "cmdOK; frmAcctViewAdvanced: cmdClose)");
}

TEST_F(ScriptRunnerTest, DisabledControlsRefuseTheUser) {
  // A system profile's data set cannot be changed; the edit button works only
  // in advanced mode.
  EXPECT_EQ(Run(std::string(kOpen) + "select tvwViews \"System View\"\nselect cmbDataSet #0\n"),
            "line 3: cmbDataSet is disabled");
  EXPECT_EQ(Run(std::string(kOpen) + "select tvwViews Mine\nclick cmdAdvancedFilter\n"),
            "line 3: cmdAdvancedFilter is disabled");
}

TEST_F(ScriptRunnerTest, ValueEditorOpensOverTheCellAndLosesFocusToTheNextControl) {
  EXPECT_EQ(
      Run(std::string(kOpen) +
          "select tvwViews Mine\n"
          "cell lstFilters 2 Data2\n"
          "expect /controls/txtData2LV/visible true\n"
          "expect /controls/txtData2LV/focused true\n"
          "expect /controls/txtData2LV/text 2024-12-31\n"
          "expect /controls/lstFilters/enabled false\n"
          "type 2025-06-30\n"
          "expect /controls/lstFilters/items/1/cells/Data2 2025-06-30\n"
          // A click elsewhere takes the focus: the box goes, the list comes back.
          "check lstFilters 1 on\n"
          "expect /controls/txtData2LV/visible false\n"
          "expect /controls/lstFilters/enabled true\n"
          "expect /controls/lstFilters/items/0/checked true\n"
          "cell lstFilters 1 Data1\n"
          "type 45\n"
          "key Escape\n"
          "expect /controls/txtData1LV/visible false\n"
          "expect /controls/lstFilters/enabled true\n"
          "expect /controls/lstFilters/items/0/cells/Data1 \"45\"\n"
          "expect /controls/lstFilters/items/0/colors {\"Data1\":\"#FFFFC0\",\"Data2\":null}\n"
          "cell lstFilters 1 Data1\n"
          "choose \"\"\n"
          "blur\n"
          "expect /controls/lstFilters/items/0/cells/Data1 \"\"\n"
          "click cmdCancel\n"),
      "");
}

TEST_F(ScriptRunnerTest, ChooseOffersOnlyTheListedEntries) {
  EXPECT_EQ(
      Run(std::string(kOpen) + "select tvwViews Mine\ncell lstFilters 1 Data1\nchoose <$X>\n"),
      "line 4: txtData1LV offers no entry '<$X>' (it offers '')");
}

TEST_F(ScriptRunnerTest, StateListsEveryControlOfTheEditor) {
  ASSERT_EQ(Run(std::string(kOpen) + "state\nstate cmbSort(0)\n"), "");
  std::string text = out.str();
  const std::size_t split = text.find("\n}\n") + 3;
  const auto state = nlohmann::json::parse(text.substr(0, split));
  const char* names[] = {"tvwViews",          "txtCurrProf",
                         "cmbAcctViewType",   "cmbDataSet",
                         "lstAvailColumns",   "lstUsedColumns",
                         "cmdAddForm",        "cmdRemoveForm",
                         "cmdRemoveAll",      "cmdMove(0)",
                         "cmdMove(1)",        "lstvwTabs",
                         "lstFilters",        "txtData1LV",
                         "txtData2LV",        "optFilter",
                         "cmdAdvancedFilter", "cmbSort(0)",
                         "cmbSort(1)",        "cmbSortASCDESC(0)",
                         "cmbSortASCDESC(1)", "chkSortGroup",
                         "chkTotals",         "chkAverages",
                         "chkShowLineCount",  "chkStartEnd",
                         "chkMultiLine",      "cmbOrientation",
                         "cmbPageSize",       "cmdEditVariables",
                         "cmdNewProfile",     "cmdCopyProfile",
                         "cmdEditProfile",    "cmdDeleteProfile",
                         "cmdSaveProfile",    "cmdExport",
                         "cmdPreviewReport",  "cmdOK",
                         "cmdCancel",         "fraInstructions"};
  for (const char* name : names) EXPECT_TRUE(state["controls"].contains(name)) << name;
  EXPECT_EQ(state["controls"].size(), std::size(names));
  for (const char* key :
       {"ReportMode", "ProfileChanged", "ViewsPath", "DefaultsPath", "SetupPath", "DataSetSQL",
        "Data1Column", "Data2Column", "CurrentProfileName", "FilterErrorShown", "frmVariables",
        "frmAcctViewAdvanced", "notice", "waitCursor"}) {
    EXPECT_TRUE(state.contains(key)) << key;
  }
  EXPECT_EQ(state["ViewsPath"], dir.Path().string() + "/views.xml");
  EXPECT_EQ(state["controls"]["tvwViews"]["selected"], "Mine");
  EXPECT_EQ(state["controls"]["lstvwTabs"]["items"][0]["checked"], true);
  EXPECT_EQ(state["controls"]["lstFilters"]["items"][1]["cells"]["Param2"], "to");

  const auto sort = nlohmann::json::parse(text.substr(split));
  EXPECT_EQ(sort["text"], "Account");
  EXPECT_EQ(sort["items"], nlohmann::json::parse(R"(["Account","Balance"])"));
}

TEST_F(ScriptRunnerTest, MessagesRecordsPromptsUntilCleared) {
  ASSERT_EQ(
      Run(std::string(kOpen) + "select tvwViews Mine\n"
                               "input \n"  // an empty answer ends New without creating anything
                               "click cmdNewProfile\n"
                               "messages\n"
                               "messages clear\n"
                               "messages\n"
                               "click cmdCancel\n"),
      "");
  const std::string text = out.str();
  const std::size_t split = text.find("\n]\n") + 3;
  const auto first = nlohmann::json::parse(text.substr(0, split));
  ASSERT_EQ(first.size(), 1u);
  EXPECT_EQ(first[0]["kind"], "inputbox");
  EXPECT_EQ(first[0]["text"], "Enter a name for the new profile:");
  EXPECT_EQ(first[0]["title"], "New Profile");
  EXPECT_EQ(first[0]["answer"], "");
  EXPECT_EQ(first[0]["queued"], true);
  EXPECT_EQ(nlohmann::json::parse(text.substr(split)), nlohmann::json::array());
}

TEST_F(ScriptRunnerTest, SqlPrintsTheBuiltStatementsAndTheirErrors) {
  ASSERT_EQ(Run(std::string(kOpen) + "select tvwViews Mine\ncheck lstFilters 1 on\nsql\n"), "");
  const auto sql = nlohmann::json::parse(out.str());
  EXPECT_EQ(sql["fieldList"], "ACCTS.AcctNum,ACCTS.Balance");
  EXPECT_EQ(sql["whereList"], "(ACCTS.Balance > 100)");
  // The second sort drop-down fell back to its first entry, so it sorts too.
  EXPECT_EQ(sql["viewSQL"],
            "CQ:SELECT ACCTS.AcctNum,ACCTS.Balance FROM ACCTS WHERE 1=1  AND (ACCTS.Balance > 100) "
            " ORDER BY ACCTS.AcctNum ASC, ACCTS.AcctNum ASC");
  EXPECT_TRUE(sql["reportSQL"].is_string());
}

TEST_F(ScriptRunnerTest, AdvancedFilterDialogEditsTheStatement) {
  EXPECT_EQ(Run(std::string(kOpen) + "select tvwViews Mine\n"
                                     "click optFilter(1)\n"
                                     "click cmdAdvancedFilter\n"
                                     "expect /frmAcctViewAdvanced/open true\n"
                                     "set frmAcctViewAdvanced txtSQL SELECT 1\n"
                                     "click cmdClose\n"
                                     "expect /frmAcctViewAdvanced/open false\n"
                                     "expect /DataSetSQL \"SELECT 1\"\n"
                                     "click cmdCancel\n"),
            "");
}

}  // namespace
}  // namespace cvve::script

namespace cvve::script {
namespace {

// A report engine whose reports declare two date variables and yield three
// pages; it keeps the path each report loaded.
class FakeEngine : public ReportEngine {
 public:
  struct FakeResult : ReportResult {
    int Count() const override { return 3; }
  };
  struct FakeReport : Report {
    explicit FakeReport(FakeEngine& e) : engine(e) {}
    void Load(const std::string& path) override { engine.loaded.push_back(path); }
    int VariableCount() const override { return 2; }
    std::string VariableName(int position) const override {
      return position == 1 ? "$START_DATE" : "$END_DATE";
    }
    std::string VariableValue(int position) const override { return values[position - 1]; }
    void SetVariableValue(int position, const std::string& value) override {
      values[position - 1] = value;
    }
    std::unique_ptr<ReportResult> Run() override { return std::make_unique<FakeResult>(); }
    FakeEngine& engine;
    std::string values[2];
  };
  struct FakeViewer : ReportViewer {
    explicit FakeViewer(FakeEngine& e) : engine(e) {}
    void SetResult(std::unique_ptr<ReportResult> result) override {
      // The engine's viewer gets the engine's own result, not a wrapper.
      engine.got_own_result = dynamic_cast<FakeResult*>(result.get()) != nullptr;
    }
    void Show() override { ++engine.shows; }
    FakeEngine& engine;
  };
  std::unique_ptr<Report> CreateReport() override { return std::make_unique<FakeReport>(*this); }
  std::unique_ptr<ReportViewer> CreateViewer() override {
    return std::make_unique<FakeViewer>(*this);
  }
  std::vector<std::string> loaded;
  bool got_own_result = false;
  int shows = 0;
};

TEST_F(ScriptRunnerTest, PreviewAsksForTheValuesAndRecordsTheReportShown) {
  FakeEngine engine;
  ScriptRunner previewing(host, out, &engine);
  previewing.Run(std::string(kOpen) +
                 "select tvwViews Mine\n"
                 "click chkStartEnd\n"
                 "click cmdPreviewReport\n"
                 "expect /frmVariables/visible true\n"
                 "expect /frmVariables/inputMode true\n"
                 "expect /frmVariables/width 8400\n"
                 "set frmVariables 0 value 2026-01-01\n"
                 "set frmVariables 1 value 2026-01-31\n"
                 "click cmdOK\n"
                 "expect /previews/0/pages 3\n"
                 "expect /previews/0/file \"${VIEWS}/views.xml\"\n"
                 "expect /previews/0/variables {\"$START_DATE\":\"2026-01-01\",\"$END_DATE\":"
                 "\"2026-01-31\"}\n"
                 "click cmdCancel\n");
  EXPECT_EQ(engine.shows, 1);
  EXPECT_TRUE(engine.got_own_result);

  // In value entry the definitions are read-only.
  try {
    previewing.Run(std::string(kOpen) +
                   "select tvwViews Mine\nclick chkStartEnd\nclick cmdPreviewReport\n"
                   "set frmVariables 0 caption Other\n");
    ADD_FAILURE() << "no error";
  } catch (const ScriptError& e) {
    EXPECT_STREQ(e.what(), "line 5: txtVariableCaption(0) is disabled");
  }
}

}  // namespace
}  // namespace cvve::script
