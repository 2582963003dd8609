// The launcher's report viewer driven by `viewer` lines of a script: it
// opens on the first page while the run goes on, says how many pages so
// far, and its Cancel stops the run and keeps the pages it has.
#include "reportengine/viewer_script/viewer_commands.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "host/host_services.h"
#include "report_test_support.h"
#include "script/script_runner.h"

namespace cvve::reportengine {
namespace {

using nlohmann::json;
using testing::AllAccounts;
using testing::CvrShape;
using testing::Define;
using testing::Endless;
using testing::NoRowLimit;
using testing::SmallDatabase;
using testing::TempFolder;

// What each `viewer state` printed, in order.
std::vector<json> States(const std::string& script, const QueryLimits& limits = NoRowLimit()) {
  std::ostringstream out;
  DefaultHostServices host;
  ViewerCommands viewer({SmallDatabase(), "", limits}, nullptr);
  script::ScriptRunner runner(host, out);
  runner.SetExtension(&viewer);
  runner.Run(script);
  std::vector<json> states;
  std::istringstream in(out.str());
  while ((in >> std::ws).peek() != std::char_traits<char>::eof()) {
    json state;
    in >> state;
    states.push_back(std::move(state));
  }
  return states;
}

TEST(ViewerScriptTest, CancelStopsTheRunAndThePagesSoFarStay) {
  TempFolder folder;
  Define(folder, Endless());
  const std::vector<json> states = States("viewer open \"" + folder.Path("Endless.cvr") +
                                          "\"\nviewer state\nviewer cancel\nviewer wait 30\n"
                                          "viewer state\nviewer close\n");
  ASSERT_EQ(states.size(), 2u);
  const json& running = states[0];
  EXPECT_TRUE(running["running"].get<bool>());
  EXPECT_EQ(running["outcome"], "running");
  EXPECT_EQ(running["page"], 1);
  const int pages = running["pages"].get<int>();
  EXPECT_GE(pages, 1);
  EXPECT_EQ(running["pageCount"], "of " + std::to_string(pages) + " so far");
  EXPECT_TRUE(running["rows"].is_null());

  const json& stopped = states[1];
  EXPECT_FALSE(stopped["running"].get<bool>());
  EXPECT_EQ(stopped["outcome"], "cancelled");
  EXPECT_GE(stopped["pages"].get<int>(), pages);
  EXPECT_EQ(stopped["pageCount"].get<std::string>().rfind(
                "of " + std::to_string(stopped["pages"].get<int>()) + " (stopped: ", 0),
            0u)
      << stopped["pageCount"];
  EXPECT_TRUE(stopped["rows"].is_null());
}

TEST(ViewerScriptTest, ARunThatEndsGetsItsTotal) {
  TempFolder folder;
  Define(folder, AllAccounts());
  const std::vector<json> states =
      States("viewer open \"" + folder.Path("All Accounts.cvr") + "\"\nviewer wait 60\nviewer state\n");
  ASSERT_EQ(states.size(), 1u);
  const json& done = states[0];
  EXPECT_FALSE(done["running"].get<bool>());
  EXPECT_EQ(done["outcome"], "done");
  EXPECT_EQ(done["rows"], 300);
  EXPECT_GT(done["pages"].get<int>(), 2);
  EXPECT_EQ(done["pageCount"], "of " + std::to_string(done["pages"].get<int>()));
}

TEST(ViewerScriptTest, BadLinesFailWithTheirReason) {
  TempFolder folder;
  Define(folder, AllAccounts());
  const std::string open = "viewer open \"" + folder.Path("All Accounts.cvr") + "\"\n";
  const struct {
    std::string script;
    std::string reason;
  } cases[] = {
      {"viewer state\n", "line 1: no viewer is open"},
      {"viewer\n", "line 1: missing viewer action"},
      {open + "viewer fly\n", "line 2: unknown viewer action 'fly'"},
      {open + "viewer wait soon\n", "line 2: viewer wait: 'soon' is no number of seconds"},
      {"viewer open \"" + folder.Path("none.cvr") + "\"\n", "line 1: "},
      {"viewer open \"" + folder.Path("All Accounts.cvr") + "\" START\n",
       "line 1: 'START' is not NAME=VALUE"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.script);
    try {
      States(c.script);
      ADD_FAILURE() << "ran";
    } catch (const script::ScriptError& e) {
      EXPECT_EQ(std::string(e.what()).rfind(c.reason, 0), 0u) << e.what();
    }
  }
  // A refused statement ends the open with the guard's words.
  CvrShape writes = AllAccounts();
  writes.name = "Writes";
  writes.statement = "\"DELETE FROM ACCTS\"";
  Define(folder, writes);
  try {
    States("viewer open \"" + folder.Path("Writes.cvr") + "\"\n");
    ADD_FAILURE() << "ran";
  } catch (const script::ScriptError& e) {
    EXPECT_NE(std::string(e.what()).find("reports only read the database"), std::string::npos)
        << e.what();
  }
}

}  // namespace
}  // namespace cvve::reportengine
