// Loading a profile may leave the filter list to the load's own fill at its
// end, and the four statements of a profile are built with one field list
// and one where list. Both shortcuts must leave everything as the full path
// does: the editor's whole state, the messages and their order, where the
// cursors stand, and each statement or its error. A batch of profiles reads
// the plain ones straight from their records: it must give the same
// statements, data set and messages as loading each, and once its controls
// are brought up to date, the same editor.
#include "query/sql_builder.h"

#include <gtest/gtest.h>

#include <exception>
#include <functional>
#include <string>
#include <vector>

#include "base/text.h"
#include "component/frm_acct_view_edit.h"
#include "filters/filter_list.h"
#include "fixtures.h"
#include "profiles/profile_loader.h"
#include "query/statement_batch.h"
#include "script/editor_state.h"

namespace cvve::testing {
namespace {

const std::string kNoColumns = "<AcctViewType>2</AcctViewType><FilterType>0</FilterType>";

// User profiles around the shared defaults file (whose "Past Due" this
// file customises on another data set).
const std::string kOddViews = ViewsFile({
    {"Past Due",
     "<DataSet>Inventory</DataSet><AcctViewType>2</AcctViewType><FilterType>0</FilterType>"
     "<SortBy>Stock</SortBy><Columns><Column><Name>Stock</Name></Column>"
     "<Column><Name>Arrived</Name></Column></Columns>"
     "<FilterChecks><Filter><Index>7</Index><Value>True</Value><Data1>&lt;$END&gt;</Data1>"
     "</Filter></FilterChecks>"},
    {"Gone Set", "<DataSet>Vanished</DataSet>" + kNoColumns +
                     "<Columns><Column><Name>Account</Name></Column></Columns>"},
    {"Twice",
     "<DataSet>Accounts</DataSet><AcctViewType>2</AcctViewType><FilterType>0</FilterType>"
     "<SortBy>Balance</SortBy><SortBy2>Account</SortBy2><SortASCDESC2>DESC</SortASCDESC2>"
     "<Columns><Column><Name>Account</Name></Column><Column><Name>Balance</Name></Column>"
     "</Columns><FilterChecks><Filter><Index>1</Index><Value>True</Value><Data1>C</Data1>"
     "</Filter><Filter><Index>4</Index><Value>True</Value></Filter></FilterChecks>"},
    {"Twice", "<DataSet>Inventory</DataSet>" + kNoColumns},
    {"O'Hara",
     "<DataSet>Accounts</DataSet><AcctViewType>2</AcctViewType><FilterType>0</FilterType>"
     "<SortBy>Salesman</SortBy><DoGrouping>1</DoGrouping>"
     "<Columns><Column><Name>Salesman</Name></Column><Column><Name>Due Date</Name></Column>"
     "</Columns><FilterChecks><Filter><Index>2</Index><Value>True</Value>"
     "<Data1>01/01/2021</Data1><Data2>it's</Data2></Filter></FilterChecks>"},
    {"No Columns", "<DataSet>Accounts</DataSet>" + kNoColumns +
                       "<FilterChecks><Filter><Index>3</Index><Value>True</Value></Filter>"
                       "</FilterChecks>"},
    {"Computed Only", "<DataSet>Accounts</DataSet>" + kNoColumns +
                          "<Columns><Column><Name>Days Late</Name></Column></Columns>"},
    {"Advanced Bare",
     "<DataSet>Accounts</DataSet><AcctViewType>2</AcctViewType><FilterType>1</FilterType>"
     "<SQL>CQ:SELECT kept</SQL>"},
    {"Advanced",
     "<DataSet>Inventory</DataSet><AcctViewType>2</AcctViewType><FilterType>1</FilterType>"
     "<SQL>CQ:SELECT own</SQL><Columns><Column><Name>Stock</Name></Column></Columns>"},
    // Its data set's missing filters are reported before the advanced
    // option's click asks for the fields.
    {"Advanced No Filters",
     "<DataSet>NoFilters</DataSet><AcctViewType>2</AcctViewType><FilterType>1</FilterType>"},
    {"No Filters Set", "<DataSet>NoFilters</DataSet>" + kNoColumns +
                           "<Columns><Column><Name>Twin</Name></Column></Columns>"},
    {"Empty Filters", "<DataSet>EmptyFilters</DataSet>" + kNoColumns},
    // Plain ones, read from their records by a batch: a repeated entry (the
    // first counts), a value that leaves the check alone, sorts that are not
    // used columns and a direction that is not offered, grouping.
    {"Plain Checked",
     "<DataSet>Accounts</DataSet><AcctViewType>2</AcctViewType><FilterType>0</FilterType>"
     "<SortBy>Balance</SortBy><SortASCDESC>DESC</SortASCDESC><SortBy2>Nowhere</SortBy2>"
     "<SortASCDESC2>UP</SortASCDESC2><DoGrouping>1</DoGrouping>"
     "<Columns><Column><Name>Account</Name></Column><Column><Name>Balance</Name></Column>"
     "<!-- dropped --><Column><Name>Salesman</Name></Column></Columns>"
     "<FilterChecks><Filter><Index>1</Index><Value>True</Value><Data1>&lt;$END&gt;</Data1></Filter>"
     "<Filter><Index>2</Index><Value>True</Value><Data2>07/01/2021</Data2></Filter>"
     "<Filter><Index>1</Index><Value>False</Value></Filter>"
     "<Filter><Index>3</Index><Value>Maybe</Value></Filter></FilterChecks>"},
    // A view type that is not offered keeps the one chosen before; a filter
    // type that rounds to the easy one.
    {"Plain Unlisted",
     "<DataSet>Inventory</DataSet><AcctViewType>42</AcctViewType><FilterType>0.4</FilterType>"
     "<DoTotals>1.2</DoTotals><SortBy>Arrived</SortBy><Columns><Column><Name>Stock</Name>"
     "</Column><Column><Name>Arrived</Name></Column></Columns><FilterChecks><Filter>"
     "<Index>7</Index><Value>True</Value><Data1>01/01/2022</Data1></Filter></FilterChecks>"},
    // More saved entries than a short list holds, repeats among them.
    {"Plain Many",
     "<DataSet>Accounts</DataSet><AcctViewType>1</AcctViewType><FilterType>0</FilterType>"
     "<Columns><Column><Name>Due Date</Name></Column><Column><Name>Account</Name></Column>"
     "</Columns><FilterChecks>" +
         [] {
           std::string entries;
           for (int i = 0; i < 14; ++i) {
             entries += "<Filter><Index>" + std::to_string(20 + i) +
                        "</Index><Value>True</Value></Filter>";
           }
           return entries;
         }() +
         "<Filter><Index>2</Index><Value>False</Value></Filter>"
         "<Filter><Index>4</Index><Value>True</Value></Filter>"
         "<Filter><Index>2</Index><Value>True</Value><Data1>x</Data1></Filter>"
         "<Filter><Index>1</Index><Value>True</Value><Data1>Z</Data1></Filter>"
         "<Filter><Index>1</Index><Value>False</Value></Filter></FilterChecks>"},
    // A check box value the box refuses keeps the one before.
    {"Refused Box", "<DataSet>Accounts</DataSet>" + kNoColumns +
                        "<DoGrouping>2</DoGrouping><Columns><Column><Name>Account</Name>"
                        "</Column></Columns>"},
    {"Plain Bare", "<DataSet>Accounts</DataSet>" + kNoColumns},
});

// Every kind: customised and plain system profiles, user profiles,
// duplicates, an apostrophe, a missing data set, and no record at all.
const std::vector<std::string> kNames = {
    "Past Due",       "All Accounts",        "Gone Set",       "Twice",
    "O'Hara",         "Aged Stock",          "No Columns",     "Computed Only",
    "Advanced Bare",  "My Accounts",         "Advanced",       "Advanced No Filters",
    "No Filters Set", "Empty Filters",       "Nobody",         "Twice",
};

// Plain profiles around every odd kind, so that each odd one follows plain
// ones read from their records, and plain ones follow each odd one.
std::vector<std::string> BatchOrder() {
  const std::vector<std::string> plain = {"Plain Checked", "All Accounts", "Plain Unlisted",
                                          "Plain Many", "Plain Bare"};
  std::vector<std::string> order = plain;
  std::size_t next = 0;
  for (const char* odd : {"Refused Box", "Past Due", "Advanced Bare", "Nobody",
                                 "Empty Filters", "Gone Set", "Advanced No Filters", "O'Hara",
                                 "No Columns", "Aged Stock", "Computed Only"}) {
    order.push_back(odd);
    for (int i = 0; i < 2; ++i) order.push_back(plain[next++ % plain.size()]);
  }
  return order;
}

std::string Position(XmlNode node) {
  return node ? std::to_string(node.offset_debug()) + " " + node.path() : "none";
}

struct Outcome {
  std::vector<BuiltStatement> statements;
  std::string views_at, defaults_at;
  script::Json state;
};

BuiltStatement Build(const std::function<std::string()>& build) {
  try {
    return {build(), false};
  } catch (const std::exception& e) {
    return {e.what(), true};
  }
}

Outcome After(HeadlessEditor& h, std::vector<BuiltStatement> statements) {
  return {std::move(statements), Position(h->ViewsDoc.CurrentNode()),
          Position(h->DefaultsDoc.CurrentNode()), script::EditorState(*h, h.prompter)};
}

// The full path: without a kept template the data set's click fills the
// list itself, and each statement builds its own parts.
Outcome LoadInFull(HeadlessEditor& h, const std::string& name) {
  h.prompter.ClearShown();
  h->FilterTemplates().Clear();
  LoadProfile(*h, name);
  frmAcctViewEdit& ed = *h;
  return After(h, {Build([&] { return BuildFieldList(ed); }),
                   Build([&] { return BuildWhereList(ed); }),
                   Build([&] { return BuildViewSQL(ed, false); }),
                   Build([&] { return BuildReportSQL(ed, false); })});
}

Outcome LoadAsTheCommandDoes(HeadlessEditor& h, const std::string& name) {
  h.prompter.ClearShown();
  LoadProfile(*h, name);
  const ProfileStatements built = BuildProfileStatements(*h);
  return After(h, {built.field_list, built.where_list, built.view_sql, built.report_sql});
}

TEST(ProfileStatementsTest, ShortcutsLeaveWhatTheFullPathLeavesOnOddProfiles) {
  HeadlessEditor full, quick;
  full.Open(kOddViews, kDefaults, kSetup);
  quick.Open(kOddViews, kDefaults, kSetup);
  int failures = 0, messages = 0;
  // Twice through, forwards and backwards: each load follows profiles of
  // other data sets and kinds, with the templates kept from earlier loads.
  std::vector<std::string> order = kNames;
  order.insert(order.end(), kNames.rbegin(), kNames.rend());
  for (const std::string& name : order) {
    const Outcome expected = LoadInFull(full, name);
    const Outcome got = LoadAsTheCommandDoes(quick, name);
    ASSERT_EQ(got.statements.size(), expected.statements.size());
    for (std::size_t i = 0; i < expected.statements.size(); ++i) {
      EXPECT_EQ(got.statements[i].text, expected.statements[i].text) << name << " #" << i;
      EXPECT_EQ(got.statements[i].failed, expected.statements[i].failed) << name << " #" << i;
      failures += expected.statements[i].failed ? 1 : 0;
    }
    EXPECT_EQ(got.views_at, expected.views_at) << name;
    EXPECT_EQ(got.defaults_at, expected.defaults_at) << name;
    // The two editors differ only in their folders.
    EXPECT_EQ(ReplaceAll(got.state.dump(1), quick.dir.Path().string(), "DIR"),
              ReplaceAll(expected.state.dump(1), full.dir.Path().string(), "DIR"))
        << name;
    messages += static_cast<int>(full.prompter.Shown().size());
  }
  // The set reaches the failing statements and the messages it is meant to.
  EXPECT_GT(failures, 0);
  EXPECT_GT(messages, 0);
}

std::vector<std::string> Shown(const HeadlessEditor& h) {
  std::vector<std::string> shown;
  for (const ui::ShownPrompt& prompt : h.prompter.Shown()) shown.push_back(Box(prompt));
  return shown;
}

std::string State(HeadlessEditor& h) {
  return ReplaceAll(script::EditorState(*h, h.prompter).dump(1), h.dir.Path().string(), "DIR");
}

TEST(ProfileStatementsTest, BatchGivesWhatLoadingEachProfileGives) {
  HeadlessEditor full, batched;
  full.Open(kOddViews, kDefaults, kSetup);
  batched.Open(kOddViews, kDefaults, kSetup);
  StatementBatch batch(*batched);
  int read_from_records = 0, loaded = 0;
  for (const std::string& name : BatchOrder()) {
    full.prompter.ClearShown();
    LoadProfile(*full, name);
    const ProfileStatements expected = BuildProfileStatements(*full);
    batched.prompter.ClearShown();
    const StatementBatch::Result got = batch.Next(name);

    EXPECT_EQ(got.data_set, full->cmbDataSet.Text()) << name;
    const BuiltStatement* want[] = {&expected.field_list, &expected.where_list,
                                    &expected.view_sql, &expected.report_sql};
    const BuiltStatement* have[] = {&got.statements.field_list, &got.statements.where_list,
                                    &got.statements.view_sql, &got.statements.report_sql};
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_EQ(have[i]->text, want[i]->text) << name << " #" << i;
      EXPECT_EQ(have[i]->failed, want[i]->failed) << name << " #" << i;
    }
    EXPECT_EQ(Shown(batched), Shown(full)) << name;
    EXPECT_EQ(batched->ProfileChanged, full->ProfileChanged) << name;
    // A profile loaded in full stands on controls brought up to date first.
    if (got.loaded) {
      EXPECT_EQ(State(batched), State(full)) << name;
    }
    (got.loaded ? loaded : read_from_records) += 1;
  }
  batch.SyncControls();
  EXPECT_EQ(State(batched), State(full));
  // Both ways were taken, many times each.
  EXPECT_GE(read_from_records, 15);
  EXPECT_GE(loaded, 11);
}

TEST(ProfileStatementsTest, BatchReadsAProfileAgainAfterItsRecordChanged) {
  HeadlessEditor h;
  h.Open(kOddViews, kDefaults, kSetup);
  StatementBatch batch(*h);
  const std::string before = batch.Next("Plain Bare").statements.where_list.text;
  // The same record, now with a check: nothing of the first reading is kept.
  XmlNode record = h->ProfilesIn(h->ViewsDoc).Find(h->ViewsDoc, "Plain Bare");
  ASSERT_TRUE(record);
  XmlNode entry = record.append_child("FilterChecks").append_child("Filter");
  SetNodeText(entry.append_child("Index"), "3");
  SetNodeText(entry.append_child("Value"), "True");
  batch.Next("All Accounts");  // another record in between
  EXPECT_EQ(before, "");
  EXPECT_EQ(batch.Next("Plain Bare").statements.where_list.text, "(ACCTS.Active=1)");
}

TEST(ProfileStatementsTest, MissingColumnsShowTheirMessageForEachStatementThatAsks) {
  HeadlessEditor h;
  h.Open(kOddViews, kDefaults, kSetup);
  h.prompter.ClearShown();
  LoadProfile(*h, "No Columns");
  h.prompter.ClearShown();
  const ProfileStatements built = BuildProfileStatements(*h);
  // Field list, view and report statement each ask for the fields.
  EXPECT_EQ(h.Messages(), Names(3, "You have not selected any fields/columns."));
  EXPECT_FALSE(built.view_sql.failed);
  EXPECT_EQ(built.field_list.text, "");
}

TEST(ProfileStatementsTest, AFailedPartFailsEveryStatementBuiltOnIt) {
  HeadlessEditor h;
  h.Open(kOddViews, kDefaults, kSetup);
  LoadProfile(*h, "Computed Only");
  const ProfileStatements built = BuildProfileStatements(*h);
  for (const BuiltStatement* s : {&built.field_list, &built.view_sql, &built.report_sql}) {
    EXPECT_TRUE(s->failed);
    EXPECT_EQ(s->text, "Invalid procedure call or argument");
  }
  EXPECT_FALSE(built.where_list.failed);
}

}  // namespace
}  // namespace cvve::testing
