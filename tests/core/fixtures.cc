#include "fixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "base/error.h"

namespace cvve::testing {

// Folders 0, 1, 2 and a hidden 99. "Accounts" has the statement builder's
// worked-example template, typed and sized columns (Balance with two Field
// children, a computed "$" sort field, a column without sort field whose
// Field is in lower case) and filters of one, two and no values plus one
// with no definition. "Inventory" has every other placeholder. "NoFilters"
// lacks its Filters element and holds a nameless and two equally named
// columns. Tab indexes 1, 2, 3, 5.
const std::string kSetup = R"(<ViewSetup>
  <RootNodes><Root><Index>0</Index><Name>System Views</Name></Root>
    <Root><Index>1</Index><Name>Collections</Name></Root><Root><Index>99</Index><Name>Hidden</Name></Root>
    <Root><Index>2</Index><Name>Sales</Name></Root></RootNodes>
  <DataSets>
    <DataSet><Name>Accounts</Name>
      <SQL>SELECT %FIELDLIST% FROM ACCTS WHERE %WHERELIST% %GROUPING% %ORDERLIST%</SQL>
      <Columns>
        <Column><Name>Account</Name><Field>AcctNum</Field><SortField>ACCTS.AcctNum</SortField><FieldFormat>String</FieldFormat><Width>1200</Width><Alignment>Left</Alignment></Column>
        <Column><Name>Balance</Name><Field>ACCTS.Balance</Field><Field>ACCTS.Bal2</Field><SortField>ACCTS.Balance</SortField><FieldFormat>Currency</FieldFormat><Width>1500</Width><Alignment>Right</Alignment></Column>
        <Column><Name>Salesman</Name><Field>Salesman</Field><SortField>ACCTS.Salesman</SortField><FieldFormat>String</FieldFormat><Width>2000</Width><Alignment>Left</Alignment></Column>
        <Column><Name>Due Date</Name><Field>$DUE_DATE</Field><SortField>ACCTS.Due</SortField><FieldFormat>Date</FieldFormat><Width>1100</Width><Alignment>Center</Alignment></Column>
        <Column><Name>Days Late</Name><Field>$DAYS</Field><SortField>$DAYS_LATE</SortField><FieldFormat>Number</FieldFormat><Width>800</Width><Alignment>Right</Alignment></Column>
        <Column><Name>Note</Name><Field>acctnum</Field></Column>
      </Columns>
      <Filters>
        <Filter><Name>Status is</Name><Index>1</Index><InputNum>1</InputNum><Label1>is</Label1><Label2>unused</Label2><SQL>ACCTS.Status='%DATA1%'</SQL><Group>1</Group><Defaults>A</Defaults></Filter>
        <Filter><Name>Due between</Name><Index>2</Index><InputNum>2</InputNum><Label1>from</Label1><Label2>to</Label2><SQL>ACCTS.Due BETWEEN '%DATA1%' AND '%DATA2%'</SQL><Group>2</Group><Defaults>01/01/2020|12/31/2020</Defaults></Filter>
        <Filter><Name>Active only</Name><Index>3</Index><InputNum>0</InputNum><Label1>is</Label1><Label2>and</Label2><SQL>ACCTS.Active=1</SQL><Group>0</Group><Defaults/></Filter>
        <Filter><Name>Bare</Name><Index>4</Index></Filter>
      </Filters>
    </DataSet>
    <DataSet><Name>Inventory</Name>
      <SQL>SELECT %FIELDLIST% FROM INV WHERE 1=1%ANDWHERELIST%%ANDGROUPING% [%WHERELIST%] {%GROUPING%}%ORDERLIST%</SQL>
      <Columns>
        <Column><Name>Stock</Name><SortField>INV_INFO.Stock</SortField><FieldFormat>String</FieldFormat></Column>
        <Column><Name>Arrived</Name><SortField>INV_INFO.Arrived</SortField><FieldFormat>Date</FieldFormat></Column>
      </Columns>
      <Filters>
        <Filter><Name>Arrived by</Name><Index>7</Index><InputNum>1</InputNum><Label1>by</Label1><SQL>INV_INFO.Arrived LESSEQUAL '%DATA1%'</SQL><Group>3</Group></Filter>
      </Filters>
    </DataSet>
    <DataSet><Name>NoFilters</Name><SQL>SELECT %FIELDLIST% FROM ODD</SQL>
      <Columns>
        <Column><Name>Twin</Name><SortField>first</SortField></Column>
        <Column><Field>nameless</Field></Column>
        <!-- a comment among the columns -->
        <Column><Name>Twin</Name><SortField>second</SortField></Column>
      </Columns>
    </DataSet>
    <DataSet><Name>EmptyFilters</Name><SQL>y</SQL><Columns/><Filters/></DataSet>
  </DataSets>
  <Tabs><Tab><Index>1</Index><Name>General</Name></Tab><Tab><Index>2</Index><Name>Payments</Name></Tab>
    <Tab><Index>3</Index><Name>Notes</Name></Tab><Tab><Index>5</Index><Name>History</Name></Tab></Tabs>
</ViewSetup>)";

// System profiles; "Past Due" is customised in the views file.
const std::string kDefaults = R"(<Views><Profiles>
  <Profile><Name>Past Due</Name><DataSet>Accounts</DataSet><AcctViewType>1</AcctViewType>
    <FilterType>0</FilterType><SQL></SQL><SortBy>Balance</SortBy><SortASCDESC>DESC</SortASCDESC>
    <Columns><Column><Name>Account</Name></Column><Column><Name>Balance</Name></Column></Columns>
    <Tabs>1,3</Tabs><DoTotals>0</DoTotals>
    <FilterChecks><Filter><Index>3</Index><Name>Active only</Name><Value>True</Value><Data1/><Data2/></Filter></FilterChecks></Profile>
  <Profile><Name>All Accounts</Name><DataSet>Accounts</DataSet><AcctViewType>0</AcctViewType>
    <FilterType>0</FilterType><SQL>CQ:SELECT stored</SQL><SortBy>Account</SortBy><SortASCDESC>ASC</SortASCDESC>
    <Columns><Column><Name>Account</Name></Column><Column><Name>Balance</Name></Column></Columns>
    <FilterChecks><Filter><Index>1</Index><Name>Status is</Name><Value>True</Value><Data1>B</Data1><Data2/></Filter>
      <Filter><Index>2</Index><Name>Due between</Name><Value>True</Value><Data1></Data1><Data2>06/30/2020</Data2></Filter></FilterChecks></Profile>
  <Profile><Name>My Accounts</Name><DataSet>Accounts</DataSet><AcctViewType>99</AcctViewType>
    <SQL>SELECT * FROM ACCTS WHERE %USERWHERE%</SQL></Profile>
  <Profile><Name>Aged Stock</Name><DataSet>Inventory</DataSet><AcctViewType>2</AcctViewType>
    <FilterType>1</FilterType><SQL>CQ:SELECT aged</SQL></Profile>
</Profiles></Views>)";

// The customisation of "Past Due" also holds source elements that must
// never be read or written; "Mine" is a user profile on the advanced filter
// that still lists a column and a filter its data set no longer has.
const std::string kViews = R"(<Views><Profiles>
  <Profile><Name>Past Due</Name><DataSet>Inventory</DataSet><AcctViewType>2</AcctViewType>
    <FilterType>1</FilterType><SQL>CQ:never read</SQL>
    <SortBy>Salesman</SortBy><SortASCDESC>ASC</SortASCDESC><SortBy2>Nowhere</SortBy2><SortASCDESC2>SIDEWAYS</SortASCDESC2>
    <DoTotals>1</DoTotals><DoAverages>1</DoAverages><PageOrientation>1</PageOrientation><PageSize>7</PageSize>
    <Columns><Column><Name>Salesman</Name></Column><Column><Name>Due Date</Name></Column></Columns>
    <Tabs>2</Tabs></Profile>
  <Profile><Name>Mine</Name><DataSet>Accounts</DataSet><AcctViewType>2</AcctViewType>
    <FilterType>1</FilterType><SQL>CQ:SELECT custom</SQL>
    <FilterChecks><Filter><Index>9</Index><Name>Retired filter</Name><Value>True</Value><Data1>x</Data1><Data2/></Filter>
      <Filter><Index>3</Index><Name>Active only</Name><Value>True</Value><Data1/><Data2/></Filter></FilterChecks>
    <SortBy>Account</SortBy><SortByField>OLD.Field</SortByField><SortASCDESC>DESC</SortASCDESC>
    <Columns><Column><Name>Account</Name></Column><Column><Name>Gone Column</Name></Column></Columns>
    <Tabs>1,3</Tabs>
    <Var0Caption>Start Date:</Var0Caption><Var0Type>Date</Var0Type><Var0Name>START_DATE</Var0Name>
    <Var1Caption>End Date:</Var1Caption><Var1Type>Date</Var1Type><Var1Name>END_DATE</Var1Name>
    <Var2Caption></Var2Caption><Var2Type>Text</Var2Type><Var2Name>DEALER</Var2Name></Profile>
  <Profile><Name>Loose</Name><DataSet>Accounts</DataSet><AcctViewType></AcctViewType></Profile>
  <Profile><Name>Parked</Name><DataSet>Accounts</DataSet><AcctViewType>99</AcctViewType></Profile>
  <Profile><Name>Orphan</Name><DataSet>Accounts</DataSet><AcctViewType>7</AcctViewType></Profile>
  <Profile><Name></Name><AcctViewType>2</AcctViewType></Profile>
  <Profile><Name>Team</Name><DataSet>Accounts</DataSet><AcctViewType>1</AcctViewType>
    <SQL>SELECT x WHERE %USERWHERE%</SQL></Profile>
</Profiles></Views>)";

std::string ViewsFile(const std::vector<std::pair<std::string, std::string>>& profiles) {
  std::string text = "<Views><Profiles>";
  for (const auto& [name, elements] : profiles) {
    text += "<Profile><Name>" + name + "</Name>" + elements + "</Profile>";
  }
  return text + "</Profiles></Views>";
}

std::string ReportDocument(const std::string& name) {
  return ViewsFile({{name,
                     "<DataSet>Accounts</DataSet><AcctViewType>0</AcctViewType><FilterType>0"
                     "</FilterType><SQL/><SortBy>Account</SortBy><SortASCDESC>ASC</SortASCDESC>"
                     "<Columns><Column><Name>Account</Name></Column><Column><Name>Balance</Name>"
                     "</Column></Columns>"}});
}

std::string ReportsFolder(const HeadlessEditor& h) {
  return (h.dir.Path() / "Custom Reports").string();
}

void OpenReports(HeadlessEditor& h,
                 const std::vector<std::pair<std::string, std::string>>& reports) {
  h.dir.Write("reportsetup.xml", kSetup);
  std::filesystem::create_directories(ReportsFolder(h));
  for (const auto& [name, text] : reports) h.dir.Write("Custom Reports/" + name + ".cvx", text);
  h->SetReportMode(-1);
  h->LoadFiles(ReportsFolder(h) + "/", "", "reportsetup.xml");
}

void OpenFileSet(HeadlessEditor& h, const std::string& name) {
  h.Open(kViews, kDefaults, kSetup);
  if (!name.empty()) Select(h, name);
}

void OpenSalesReport(HeadlessEditor& h) {
  OpenReports(h, {{"Sales", ReportDocument("Sales")}});
  Select(h, "Sales");
}

void Select(HeadlessEditor& h, const std::string& name) {
  const auto& hits = h->tvwViews.FindText(name);
  ASSERT_FALSE(hits.empty()) << name;
  h->tvwViews.UserSelect(hits.front());
}

void AddColumn(HeadlessEditor& h, const std::string& name) {
  const auto found = h->lstAvailColumns.FindAll(name);
  ASSERT_FALSE(found.empty()) << "no available column " << name;
  h->lstAvailColumns.SetListIndex(found.front());
  h->cmdAddForm.Click();
}

std::vector<std::string> Entries(const ui::ComboBox& combo) {
  std::vector<std::string> texts;
  for (const auto& e : combo.Entries()) texts.push_back(e.text);
  return texts;
}

std::vector<std::string> ProfileNames(const DocumentCursor& doc) {
  std::vector<std::string> names;
  for (XmlNode p = doc.Root().child("Profiles").child("Profile"); p;
       p = p.next_sibling("Profile")) {
    names.push_back(ChildText(p, "Name"));
  }
  return names;
}

std::string Box(const std::string& title, const std::string& buttons, const std::string& icon,
                const std::string& text) {
  return title + "|" + buttons + "|" + icon + "|" + text;
}
std::string Box(const ui::ShownPrompt& shown) {
  return Box(shown.title, shown.buttons, shown.icon, shown.text);
}

std::string ShownPrompts(const HeadlessEditor& h) {
  std::string text;
  for (const auto& shown : h.prompter.Shown()) {
    text += shown.kind + " [" + shown.title + "] " + shown.text + " -> " + shown.answer + "\n";
  }
  return text;
}

std::vector<std::string> FilesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

namespace {

struct FakeResult : ReportResult {
  explicit FakeResult(int pages) : count(pages) {}
  int Count() const override { return count; }
  int count;
};

struct FakeReport : Report {
  explicit FakeReport(FakeEngine& e) : engine(e), values(e.variables.size()) { ++e.log.created; }
  ~FakeReport() override { ++engine.log.released; }
  void Load(const std::string& path) override {
    engine.log.loaded.push_back(path);
    if (engine.load_fails) throw Error("cannot open " + path);
  }
  int VariableCount() const override { return static_cast<int>(values.size()); }
  std::string VariableName(int at) const override { return engine.variables.at(at - 1); }
  std::string VariableValue(int at) const override { return values.at(at - 1); }
  void SetVariableValue(int at, const std::string& value) override {
    values.at(at - 1) = value;
    engine.log.set.emplace_back(at, value);
  }
  std::unique_ptr<ReportResult> Run() override {
    ++engine.log.runs;
    return engine.pages ? std::make_unique<FakeResult>(*engine.pages) : nullptr;
  }
  FakeEngine& engine;
  std::vector<std::string> values;
};

struct FakeViewer : ReportViewer {
  explicit FakeViewer(FakeEngine& e) : engine(e) { ++e.log.created; }
  ~FakeViewer() override { ++engine.log.released; }
  void SetResult(std::unique_ptr<ReportResult> result) override {
    engine.log.handed_count = result ? result->Count() : -1;
    engine.log.own_result = dynamic_cast<FakeResult*>(result.get()) != nullptr;
  }
  void Show() override { ++engine.log.shown; }
  FakeEngine& engine;
};

}  // namespace

std::unique_ptr<Report> FakeEngine::CreateReport() { return std::make_unique<FakeReport>(*this); }
std::unique_ptr<ReportViewer> FakeEngine::CreateViewer() {
  return std::make_unique<FakeViewer>(*this);
}

FileSizeLimit::FileSizeLimit(rlim_t bytes) {
  getrlimit(RLIMIT_FSIZE, &old_);
  old_handler_ = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limited = old_;
  limited.rlim_cur = bytes;
  setrlimit(RLIMIT_FSIZE, &limited);
}

FileSizeLimit::~FileSizeLimit() {
  setrlimit(RLIMIT_FSIZE, &old_);
  std::signal(SIGXFSZ, old_handler_);
}

}  // namespace cvve::testing
