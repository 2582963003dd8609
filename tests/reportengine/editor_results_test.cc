// The rows of the profile on screen, run through the guarded connection from
// a headless editor (`results` of the script) and from `viewedit list`: they
// are what a direct query of the same statement returns, a bad filter value
// or advanced filter comes back as the database's message with its place,
// and looking at the rows never marks the profile changed. In report mode
// they are the report's rows, group by group.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string_view>

#include "component/frm_acct_view_edit.h"
#include "host/host_services.h"
#include "report_test_support.h"
#include "reportengine/language/report_expression.h"
#include "reportengine/results/guarded_source.h"
#include "reportengine/value_format.h"
#include "results/results.h"
#include "script/script_runner.h"

namespace cvve::reportengine {
namespace {

using nlohmann::json;
using testing::RunCommand;
using testing::SmallDatabase;
using testing::SqlRows;
using testing::SqlValue;
using testing::TempFolder;

// Every JSON document a script printed, in order.
std::vector<json> Documents(const std::string& text) {
  std::vector<json> documents;
  std::istringstream in(text);
  while ((in >> std::ws).peek() != std::char_traits<char>::eof()) {
    json document;
    in >> document;
    documents.push_back(std::move(document));
  }
  return documents;
}

// The JSON the script printed; `after` sees the editor as the script left it.
std::vector<json> RunScript(const std::string& script,
                            const std::function<void(frmAcctViewEdit&)>& after = {}) {
  std::ostringstream out;
  DefaultHostServices host;
  GuardedSource source({SmallDatabase(), "", {}});
  script::ScriptRunner runner(host, out, nullptr, &source);
  runner.Run(script);
  if (after) after(*runner.Editor());
  return Documents(out.str());
}

// A cell of `results` against the same value read by the sqlite3 C API.
void ExpectSameValue(const json& cell, const std::string& direct, const std::string& where) {
  if (cell.is_null()) {
    EXPECT_EQ(direct, "") << where;
  } else if (cell.is_number()) {
    EXPECT_NEAR(cell.get<double>(), std::stod(direct), 1e-9) << where;
  } else {
    EXPECT_EQ(cell.get<std::string>(), direct) << where;
  }
}

TEST(EditorResults, RowsAndCountAreThoseOfADirectQuery) {
  const char* profiles[] = {"All Active Accounts", "North Lot Weekly Payers", "Past Due 30+",
                            "Customer Directory", "My Collection Queue"};
  for (const char* profile : profiles) {
    const std::vector<json> printed =
        RunScript(std::string("open acct\nselect tvwViews ") + profile + "\nresults 100000\nsql\n");
    ASSERT_EQ(printed.size(), 2u) << profile;
    const json& results = printed[0];
    ASSERT_TRUE(results["error"].is_null()) << profile << ": " << results["error"];
    const std::string statement =
        RunnableStatement(printed[1]["viewSQL"].get<std::string>(), "");
    const auto direct = SqlRows(SmallDatabase(), statement);
    EXPECT_EQ(results["count"], direct.size()) << profile;
    ASSERT_EQ(results["rows"].size(), direct.size()) << profile;
    for (std::size_t r = 0; r < direct.size(); ++r) {
      ASSERT_EQ(results["rows"][r].size(), direct[r].size()) << profile;
      for (std::size_t c = 0; c < direct[r].size(); ++c) {
        ExpectSameValue(results["rows"][r][c], direct[r][c],
                        std::string(profile) + " row " + std::to_string(r));
      }
    }
  }
}

TEST(EditorResults, TheFirstRowsAreKeptAndAllCounted) {
  const std::vector<json> printed =
      RunScript("open acct\nselect tvwViews All Active Accounts\nresults 5\nresults\n");
  ASSERT_EQ(printed.size(), 2u);
  EXPECT_EQ(printed[0]["rows"].size(), 5u);
  EXPECT_EQ(printed[0]["count"], printed[1]["count"]);
  EXPECT_GT(printed[1]["count"].get<long long>(), 5);
  EXPECT_EQ(printed[1]["rows"].size(),
            std::min<std::size_t>(200, printed[1]["count"].get<std::size_t>()));
  // The used columns, by the names the user chose them by.
  EXPECT_EQ(printed[0]["columns"][0], "Account #");
}

TEST(EditorResults, ABadValueOrAdvancedFilterShowsTheDatabasesMessageAndPlace) {
  struct Case {
    std::string edit;      // script lines after selecting the profile
    std::string message;   // part of the database's message
    std::string at;        // what the statement holds at the position
    std::string value;     // the filter value the window marks ("" none)
  };
  const Case cases[] = {
      {"check lstFilters 14 on\ncell lstFilters 14 Data1\ntype O'Brien\nkey Enter\n", "syntax error",
       "Brien", "O'Brien"},
      {"check lstFilters 5 on\ncell lstFilters 5 Data1\ntype abc\nkey Enter\n", "no such column: abc",
       "abc", "abc"},
      {"click optFilter(1)\nclick cmdAdvancedFilter\nset frmAcctViewAdvanced txtSQL SELECT "
       "ACCTS.AcctNum FROM ACCTS WHERE ACCTS.Balnce > 5\nclick cmdClose\n",
       "no such column: ACCTS.Balnce", "ACCTS.Balnce", ""},
  };
  for (const Case& c : cases) {
    std::vector<std::string> marked;
    long long position = -1;
    std::string statement;
    const std::vector<json> printed = RunScript(
        "open acct\nselect tvwViews North Lot Weekly Payers\n" + c.edit + "results\n",
        [&](frmAcctViewEdit& ed) {
          GuardedSource source({SmallDatabase(), "", {}});
          const results::Table table = results::RunProfile(ed, source, 0);
          position = table.error_position;
          statement = table.statement;
          for (const results::ValueCell& cell : results::ValuesAt(ed, statement, position)) {
            marked.push_back(ed.lstFilters.SubItem(cell.item, cell.column));
          }
        });
    ASSERT_EQ(printed.size(), 1u) << c.edit;
    EXPECT_EQ(marked, c.value.empty() ? std::vector<std::string>{}
                                      : std::vector<std::string>{c.value});
    const json& results = printed[0];
    ASSERT_TRUE(results["error"].is_string()) << c.edit;
    EXPECT_NE(results["error"].get<std::string>().find(c.message), std::string::npos)
        << results["error"];
    ASSERT_TRUE(results["position"].is_number()) << c.edit;
    EXPECT_EQ(results["statement"], statement);
    EXPECT_EQ(results["position"], position);
    EXPECT_EQ(statement.substr(results["position"].get<std::size_t>(), c.at.size()), c.at)
        << statement;
    EXPECT_EQ(results["count"], 0);
  }
}

TEST(EditorResults, EditingAFilterValueChangesTheRowsNotProfileChanged) {
  const std::vector<json> printed = RunScript(
      "open acct\nselect tvwViews North Lot Weekly Payers\n"
      "results 0\nsql\n"
      "expect /ProfileChanged false\n"
      "check lstFilters 5 on\ncell lstFilters 5 Data1\ntype 2500\nkey Enter\n"
      "results 0\nsql\n");
  ASSERT_EQ(printed.size(), 4u);
  auto direct_count = [](const json& sql) {
    return std::stoll(SqlValue(SmallDatabase(), "SELECT COUNT(*) FROM (" +
                                                    RunnableStatement(sql["viewSQL"], "") + ")"));
  };
  EXPECT_EQ(printed[0]["count"], direct_count(printed[1]));
  EXPECT_EQ(printed[2]["count"], direct_count(printed[3]));
  EXPECT_NE(printed[0]["count"], printed[2]["count"]);
  EXPECT_NE(printed[3]["viewSQL"].get<std::string>().find("ACCTS.Balance > 2500"), std::string::npos);
}

// A report's statement evaluated for one group (nullptr: none), as a person
// would type it into the database: FXA's value with its quotes doubled.
std::string ReportStatement(const std::string& expression, const std::string* group) {
  ExpressionContext context;
  context.fxa = [group](std::string_view) -> std::optional<std::string> {
    if (!group) return std::nullopt;
    std::string quoted;
    for (char c : *group) quoted += c == '\'' ? std::string("''") : std::string(1, c);
    return quoted;
  };
  return PrepareStatement(EvaluateExpression(expression, context).value, "");
}

// A report cell against the database's value: amounts by their number (the
// report shows them as $1,234.50), the rest as text.
void ExpectSameReportCell(const std::string& shown, const std::string& direct,
                          const ReportColumn& column, const std::string& where) {
  if (KindOf(column.format) == ValueKind::kText) {
    EXPECT_EQ(shown, direct) << where;
    return;
  }
  std::string digits;
  for (char c : shown) {
    if (c != '$' && c != ',') digits += c;
  }
  ASSERT_FALSE(digits.empty()) << where;
  EXPECT_NEAR(std::stod(digits), std::stod(direct), 0.005) << where << ": " << shown;
}

TEST(EditorResults, InReportModeTheRowsAreThoseOfTheReportsStatementPerGroup) {
  std::string definition;
  const std::vector<json> printed =
      RunScript("open report\nselect tvwViews Collections By Collector\nresults 100000\n",
                [&](frmAcctViewEdit& ed) { definition = results::ReportDefinition(ed); });
  ASSERT_EQ(printed.size(), 1u);
  const json& results = printed[0];
  ASSERT_TRUE(results["error"].is_null()) << results["error"];
  const ReportDefinition def = ParseReportDefinition(definition, "test");
  ASSERT_TRUE(def.grouped);

  // The report's columns, in its order, computed ones included.
  ASSERT_EQ(results["columns"].size(), def.columns.size());
  for (std::size_t c = 0; c < def.columns.size(); ++c) {
    EXPECT_EQ(results["columns"][c], def.columns[c].title);
  }
  // Group by group, each group's rows as its statement selects them.
  std::vector<std::vector<std::string>> direct;
  for (const auto& group : SqlRows(SmallDatabase(), ReportStatement(def.group_statement, nullptr))) {
    for (auto& row : SqlRows(SmallDatabase(), ReportStatement(def.statement, &group[0]))) {
      direct.push_back(std::move(row));
    }
  }
  ASSERT_GT(direct.size(), 3u);
  EXPECT_EQ(results["count"], direct.size());
  ASSERT_EQ(results["rows"].size(), direct.size());
  for (std::size_t r = 0; r < direct.size(); ++r) {
    std::size_t from_database = 0;
    for (std::size_t c = 0; c < def.columns.size(); ++c) {
      const std::string shown = results["rows"][r][c].get<std::string>();
      const std::string where = "row " + std::to_string(r) + " column " + def.columns[c].title;
      if (def.columns[c].Computed()) {
        EXPECT_EQ(shown, "") << where;
      } else {
        ExpectSameReportCell(shown, direct[r][from_database++], def.columns[c], where);
      }
    }
  }
}

TEST(EditorResults, InReportModeABadValueShowsTheDatabasesMessageInTheStatementItBroke) {
  std::vector<std::string> marked;
  const std::vector<json> printed = RunScript(
      "open report\nselect tvwViews Collections By Collector\n"
      "check lstFilters 7 on\ncell lstFilters 7 Data1\ntype O'Brien\nkey Enter\nresults\n",
      [&](frmAcctViewEdit& ed) {
        GuardedSource source({SmallDatabase(), "", {}});
        const results::Table table = results::RunProfile(ed, source, 0);
        for (const results::ValueCell& cell :
             results::ValuesAt(ed, table.statement, table.error_position)) {
          marked.push_back(ed.lstFilters.SubItem(cell.item, cell.column));
        }
      });
  ASSERT_EQ(printed.size(), 1u);
  const json& results = printed[0];
  // The database's own words, not the report's wrapping of them, and the
  // statement it refused: the group statement, which runs first.
  ASSERT_TRUE(results["error"].is_string()) << results;
  EXPECT_EQ(results["error"].get<std::string>().rfind("near \"Brien\": syntax error", 0), 0u)
      << results["error"];
  ASSERT_TRUE(results["position"].is_number()) << results;
  const std::string statement = results["statement"];
  EXPECT_EQ(statement.rfind("SELECT DISTINCT ACCTS.Collector", 0), 0u) << statement;
  EXPECT_EQ(statement.substr(results["position"].get<std::size_t>(), 5), "Brien") << statement;
  EXPECT_EQ(marked, std::vector<std::string>{"O'Brien"});
}

class ListCommandTest : public ::testing::Test {
 protected:
  int List(const std::string& arguments, std::string* output) {
    return RunCommand("QT_QPA_PLATFORM=offscreen XDG_CACHE_HOME='" + folder_.Path("cache") +
                          "' XDG_CONFIG_HOME='" + folder_.Path("config") + "' '" VIEWEDIT_PATH
                          "' list " + arguments + " 2>/dev/null",
                      output);
  }
  TempFolder folder_;
};

TEST_F(ListCommandTest, PrintsTheRowsOfADemoProfileThenTheCount) {
  const std::string database = " --database '" + SmallDatabase() + "'";
  std::string json_text;
  ASSERT_EQ(List("acct --profile 'North Lot Weekly Payers' --json --limit 0" + database, &json_text),
            0)
      << json_text;
  const json all = json::parse(json_text);
  const long long count = all["count"];
  ASSERT_GT(count, 3);

  std::string table;
  ASSERT_EQ(List("acct --profile 'North Lot Weekly Payers' --limit 3" + database, &table), 0);
  std::istringstream lines(table);
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line, "Profile North Lot Weekly Payers (Accounts):");
  std::getline(lines, line);
  EXPECT_EQ(line.rfind("Account #  Last Name", 0), 0u) << line;
  std::getline(lines, line);
  EXPECT_EQ(line.find_first_not_of("- "), std::string::npos) << line;
  for (int r = 0; r < 3; ++r) {
    std::getline(lines, line);
    const json& first = all["rows"][r][0];
    EXPECT_EQ(line.rfind(first.is_string() ? first.get<std::string>() : first.dump(), 0), 0u)
        << line;
  }
  std::getline(lines, line);
  EXPECT_EQ(line, std::to_string(count) + " rows (the first 3 shown; --limit 0 shows all)");

  std::string csv;
  ASSERT_EQ(List("acct --profile 'North Lot Weekly Payers' --csv --limit 0" + database, &csv), 0);
  EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), count + 1);

  // Without a profile: the file set's profiles, then the first one's rows.
  std::string overview;
  ASSERT_EQ(List("acct" + database, &overview), 0);
  EXPECT_NE(overview.find("Profiles of acct:"), std::string::npos);
  bool listed = false;
  std::istringstream overview_lines(overview);
  while (std::getline(overview_lines, line)) {
    listed = listed || (line.rfind("North Lot Weekly Payers ", 0) == 0 &&
                        line.size() > 4 && line.substr(line.size() - 4) == "user");
  }
  EXPECT_TRUE(listed) << overview;
  EXPECT_NE(overview.find("Profile All Active Accounts ("), std::string::npos) << overview;
}

TEST_F(ListCommandTest, ARefusedStatementExitsWithTheMessageAndPlace) {
  const std::string views = folder_.Path("views");
  std::string output;
  // A filter value that breaks the statement, saved in a copy of the demo data.
  ASSERT_EQ(RunCommand("cp -r '" CVVE_DEMO_DIR "' '" + views + "'"), 0);
  const std::string script = folder_.Write(
      "save.script",
      "open acct\nselect tvwViews North Lot Weekly Payers\ncheck lstFilters 14 on\n"
      "cell lstFilters 14 Data1\ntype O'Hara\nkey Enter\nanswer Yes\nclick cmdOK\n");
  ASSERT_EQ(RunCommand("'" VIEWEDIT_PATH "' script '" + script + "' --views-folder '" + views + "'",
                       &output),
            0)
      << output;
  const int code = RunCommand("QT_QPA_PLATFORM=offscreen '" VIEWEDIT_PATH
                              "' list acct --profile 'North Lot Weekly Payers' --views-folder '" +
                                  views + "' --database '" + SmallDatabase() + "'",
                              &output);
  EXPECT_EQ(code, 3) << output;
  EXPECT_NE(output.find("syntax error"), std::string::npos) << output;
  EXPECT_NE(output.find("Hara%'"), std::string::npos) << output;
  EXPECT_NE(output.find("^"), std::string::npos) << output;
}

}  // namespace
}  // namespace cvve::reportengine
