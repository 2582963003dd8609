#pragma once
// A file set for the saving, command, report-writer and preview tests: one
// data set with typed, aligned and sized columns and three filters, a plain
// and a customised system profile, and a user profile that still lists a
// column and a filter its data set no longer has. Plus helpers to open the
// editor on custom reports and to make file writes fail halfway.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "test_support.h"
#include "viewfiles/document_cursor.h"

namespace cvve::testing {

inline const std::string kSaveSetup = R"(<ViewSetup>
  <RootNodes>
    <Root><Index>0</Index><Name>System Views</Name></Root>
    <Root><Index>1</Index><Name>Collections</Name></Root>
  </RootNodes>
  <DataSets>
    <DataSet><Name>Accounts</Name>
      <SQL>SELECT %FIELDLIST% FROM ACCTS WHERE 1=1 %ANDWHERELIST% %ANDGROUPING% %ORDERLIST%</SQL>
      <Columns>
        <Column><Name>Account</Name><Field>AcctNum</Field><SortField>ACCTS.AcctNum</SortField><FieldFormat>String</FieldFormat><Width>1200</Width><Alignment>Left</Alignment></Column>
        <Column><Name>Balance</Name><Field>Balance</Field><SortField>ACCTS.Balance</SortField><FieldFormat>Currency</FieldFormat><Width>1500</Width><Alignment>Right</Alignment></Column>
        <Column><Name>Salesman</Name><Field>Salesman</Field><SortField>ACCTS.Salesman</SortField><FieldFormat>String</FieldFormat><Width>2000</Width><Alignment>Left</Alignment></Column>
        <Column><Name>Due Date</Name><Field>Due</Field><SortField>ACCTS.Due</SortField><FieldFormat>Date</FieldFormat><Width>1100</Width><Alignment>Center</Alignment></Column>
        <Column><Name>Days Late</Name><Field>$DAYS</Field><SortField>$DAYS_LATE</SortField><FieldFormat>Number</FieldFormat><Width>800</Width><Alignment>Right</Alignment></Column>
      </Columns>
      <Filters>
        <Filter><Name>Status is</Name><Index>1</Index><InputNum>1</InputNum><Label1>=</Label1><Label2></Label2><SQL>ACCTS.Status='%DATA1%'</SQL><Group>1</Group><Defaults>A</Defaults></Filter>
        <Filter><Name>Due between</Name><Index>2</Index><InputNum>2</InputNum><Label1>from</Label1><Label2>to</Label2><SQL>ACCTS.Due BETWEEN '%DATA1%' AND '%DATA2%'</SQL><Group>2</Group><Defaults>|</Defaults></Filter>
        <Filter><Name>Active only</Name><Index>3</Index><InputNum>0</InputNum><Label1></Label1><Label2></Label2><SQL>ACCTS.Active=1</SQL><Group>3</Group><Defaults></Defaults></Filter>
      </Filters>
    </DataSet>
    <DataSet><Name>Inventory</Name><SQL>SELECT %FIELDLIST% FROM INV %ORDERLIST%</SQL>
      <Columns><Column><Name>Stock</Name><SortField>INV.Stock</SortField></Column></Columns>
    </DataSet>
  </DataSets>
  <Tabs>
    <Tab><Index>1</Index><Name>General</Name></Tab>
    <Tab><Index>2</Index><Name>Payments</Name></Tab>
    <Tab><Index>3</Index><Name>Notes</Name></Tab>
  </Tabs>
</ViewSetup>)";

inline const std::string kSaveDefaults = R"(<Views><Profiles>
  <Profile><Name>All Accounts</Name><DataSet>Accounts</DataSet><AcctViewType>0</AcctViewType>
    <FilterType>0</FilterType><SQL></SQL><SortBy>Account</SortBy><SortASCDESC>ASC</SortASCDESC>
    <Columns><Column><Name>Account</Name></Column><Column><Name>Balance</Name></Column></Columns>
    <Tabs>1</Tabs>
    <FilterChecks><Filter><Index>1</Index><Name>Status is</Name><Value>True</Value><Data1>A</Data1><Data2/></Filter></FilterChecks>
  </Profile>
  <Profile><Name>Past Due</Name><DataSet>Accounts</DataSet><AcctViewType>1</AcctViewType>
    <FilterType>0</FilterType><SQL></SQL><SortBy>Balance</SortBy><SortASCDESC>DESC</SortASCDESC>
    <DoTotals>0</DoTotals>
    <Columns><Column><Name>Account</Name></Column><Column><Name>Balance</Name></Column></Columns>
    <Tabs>1,3</Tabs>
    <FilterChecks><Filter><Index>3</Index><Name>Active only</Name><Value>True</Value><Data1/><Data2/></Filter></FilterChecks>
  </Profile>
</Profiles></Views>)";

// "Past Due" customised; "Mine" a user profile.
inline const std::string kSaveViews = R"(<Views><Profiles>
  <Profile><Name>Past Due</Name><SortBy>Due Date</SortBy><SortASCDESC>ASC</SortASCDESC>
    <DoTotals>1</DoTotals>
    <Columns><Column><Name>Due Date</Name></Column><Column><Name>Salesman</Name></Column></Columns>
    <Tabs>2</Tabs></Profile>
  <Profile><Name>Mine</Name><DataSet>Accounts</DataSet><AcctViewType>1</AcctViewType>
    <FilterType>0</FilterType><SQL></SQL>
    <SortBy>Account</SortBy><SortByField>OLD.Field</SortByField><SortASCDESC>DESC</SortASCDESC>
    <Columns><Column><Name>Account</Name></Column><Column><Name>Gone Column</Name></Column></Columns>
    <FilterChecks><Filter><Index>9</Index><Name>Retired filter</Name><Value>True</Value><Data1>x</Data1><Data2/></Filter></FilterChecks>
    <Tabs>1</Tabs></Profile>
</Profiles></Views>)";

// The profile document of a custom report.
inline std::string ReportDocument(const std::string& name) {
  return "<Views><Profiles><Profile><Name>" + name +
         "</Name><DataSet>Accounts</DataSet><AcctViewType>0</AcctViewType>"
         "<FilterType>0</FilterType><SQL/><SortBy>Account</SortBy><SortASCDESC>ASC</SortASCDESC>"
         "<Columns><Column><Name>Account</Name></Column><Column><Name>Balance</Name></Column>"
         "</Columns></Profile></Profiles></Views>";
}

inline std::string ReportsFolder(const HeadlessEditor& h) {
  return (h.dir.Path() / "Custom Reports").string();
}

// Writes the reports (name, .cvx text) and opens the editor in report mode,
// as ReportEdit does.
inline void OpenReports(HeadlessEditor& h,
                        const std::vector<std::pair<std::string, std::string>>& reports) {
  h.dir.Write("reportsetup.xml", kSaveSetup);
  std::filesystem::create_directories(ReportsFolder(h));
  for (const auto& [name, text] : reports) h.dir.Write("Custom Reports/" + name + ".cvx", text);
  h->SetReportMode(-1);
  h->LoadFiles(ReportsFolder(h) + "/", "", "reportsetup.xml");
}

// A user's click on the first tree node with that text.
inline void Select(HeadlessEditor& h, const std::string& name) {
  const auto& hits = h->tvwViews.FindText(name);
  ASSERT_FALSE(hits.empty()) << name;
  h->tvwViews.UserSelect(hits.front());
}

inline std::vector<std::string> ChildNames(XmlNode node) {
  std::vector<std::string> names;
  for (XmlNode child = node.first_child(); child; child = child.next_sibling()) {
    if (child.type() == pugi::node_element) names.emplace_back(child.name());
  }
  return names;
}

inline std::vector<std::string> ProfileNames(const DocumentCursor& doc) {
  std::vector<std::string> names;
  for (XmlNode p = doc.Root().child("Profiles").child("Profile"); p;
       p = p.next_sibling("Profile")) {
    names.push_back(ChildText(p, "Name"));
  }
  return names;
}

// A message box as "title|buttons|icon|text", to check all four at once.
inline std::string Box(const std::string& title, const std::string& buttons,
                       const std::string& icon, const std::string& text) {
  return title + "|" + buttons + "|" + icon + "|" + text;
}
inline std::string Box(const ui::ShownPrompt& shown) {
  return Box(shown.title, shown.buttons, shown.icon, shown.text);
}

// Every prompt shown so far, one a line, for failure messages.
inline std::string ShownPrompts(const HeadlessEditor& h) {
  std::string text;
  for (const auto& shown : h.prompter.Shown()) {
    text += shown.kind + " [" + shown.title + "] " + shown.text + " -> " + shown.answer + "\n";
  }
  return text;
}

// The names in a folder, sorted.
inline std::vector<std::string> FilesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// While alive, no file of this process may grow beyond `bytes`: a write
// past it fails halfway (EFBIG), whoever runs the test, root included.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &old_);
    old_handler_ = signal(SIGXFSZ, SIG_IGN);
    rlimit limited = old_;
    limited.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limited);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &old_);
    signal(SIGXFSZ, old_handler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit old_{};
  sighandler_t old_handler_ = SIG_DFL;
};

}  // namespace cvve::testing
