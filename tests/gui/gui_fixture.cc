#include "gui_fixture.h"

#include <QApplication>
#include <QCheckBox>
#include <QPushButton>
#include <QTest>

#include "gui/tree_model.h"

namespace cvve::guitest {

const char* const kSetup = R"(<ViewSetup>
  <RootNodes>
    <Root><Index>0</Index><Name>All Accounts</Name></Root>
    <Root><Index>1</Index><Name>Collections</Name></Root>
  </RootNodes>
  <DataSets>
    <DataSet>
      <Name>Accounts</Name>
      <SQL>SELECT %FIELDLIST% FROM ACCTS WHERE ACCTS.Open=1 %ANDWHERELIST%%ORDERLIST%</SQL>
      <Columns>
        <Column><Name>Account #</Name><Field>AcctNum</Field><SortField>ACCTS.AcctNum</SortField><FieldFormat>String</FieldFormat><Width>1200</Width><Alignment>Left</Alignment></Column>
        <Column><Name>Balance</Name><Field>Balance</Field><SortField>ACCTS.Balance</SortField><FieldFormat>Currency</FieldFormat><Width>1200</Width><Alignment>Right</Alignment></Column>
        <Column><Name>Last Name</Name><Field>LastName</Field><SortField>ACCTS.LastName</SortField><FieldFormat>String</FieldFormat><Width>1800</Width><Alignment>Left</Alignment></Column>
      </Columns>
      <Filters>
        <Filter><Name>Active accounts</Name><Index>1</Index><InputNum>0</InputNum><Label1/><Label2/><SQL>ACCTS.Status='A'</SQL><Group>1</Group><Defaults/></Filter>
        <Filter><Name>Balance</Name><Index>2</Index><InputNum>1</InputNum><Label1>is over</Label1><Label2/><SQL>ACCTS.Balance &gt; %DATA1%</SQL><Group>2</Group><Defaults>0</Defaults></Filter>
        <Filter><Name>Next payment due</Name><Index>3</Index><InputNum>2</InputNum><Label1>between</Label1><Label2>and</Label2><SQL>ACCTS.NextDue BETWEEN '%DATA1%' AND '%DATA2%'</SQL><Group>3</Group><Defaults>2026-01-01|2026-12-31</Defaults></Filter>
      </Filters>
    </DataSet>
  </DataSets>
  <Tabs>
    <Tab><Index>1</Index><Name>General</Name></Tab>
    <Tab><Index>2</Index><Name>Payments</Name></Tab>
  </Tabs>
</ViewSetup>
)";

namespace {

// A profile of the "Accounts" data set showing and sorting by one column.
std::string Profile(const std::string& name, int type, const std::string& column,
                    const std::string& direction, const std::string& tabs) {
  return "<Profile><Name>" + name + "</Name><DataSet>Accounts</DataSet><AcctViewType>" +
         std::to_string(type) + "</AcctViewType><FilterType>0</FilterType><SQL/>" +
         "<Columns><Column><Name>" + column + "</Name></Column></Columns><SortBy>" + column +
         "</SortBy><SortASCDESC>" + direction + "</SortASCDESC><Tabs>" + tabs + "</Tabs></Profile>";
}

}  // namespace

const std::string kDefaults = "<Views><Profiles>" +
                              Profile("Account Lookup", 0, "Account #", "ASC", "1") +
                              "</Profiles></Views>";
const std::string kViews =
    "<Views><Profiles>" + Profile("My Accounts", 1, "Account #", "ASC", "1") +
    Profile("Old Accounts", 1, "Last Name", "DESC", "2") + "</Profiles></Views>";

GuiEditor::GuiEditor(Prompts prompts, std::string executable)
    : env{host,
          prompts == Prompts::kQt ? static_cast<ui::Prompter&>(qt_prompter)
                                  : static_cast<ui::Prompter&>(recorded),
          dialogs, nullptr} {
  host.view_files_folder = dir.Path().string();
  host.reports_base_folder = dir.Path().string();
  host.users = {"alice", "bob"};
  host.executable_name = std::move(executable);
  ed = std::make_unique<frmAcctViewEdit>(env);
}

GuiEditor::~GuiEditor() {
  testers.clear();
  window.reset();
  ed.reset();
}

void GuiEditor::Load() {
  dir.Write("views.xml", kViews);
  dir.Write("defs.xml", kDefaults);
  dir.Write("setup.xml", kSetup);
  ed->SetReportMode(0);
  ed->LoadFiles("views.xml", "defs.xml", "setup.xml");
}

void GuiEditor::Open(const char* profile) {
  Load();
  ed->Show();
  window = std::make_unique<gui::EditorWindow>(*ed);
  window->show();
  window->activateWindow();
  QVERIFY(QTest::qWaitForWindowActive(window.get()));
  filters = window->filterList();
  // The window's item models are checked all along the session.
  for (const char* name : {"tvwViews", "lstFilters", "lstvwTabs"}) {
    testers.push_back(std::make_unique<QAbstractItemModelTester>(
        Find<QTreeView>(name)->model(), QAbstractItemModelTester::FailureReportingMode::QtTest));
  }
  Settle();
  if (profile) ClickNode(profile);
}

void GuiEditor::Settle() const {
  for (int i = 0; i < 5; ++i) QCoreApplication::processEvents();
}

void GuiEditor::ClickNode(const std::string& text) {
  const auto& found = ed->tvwViews.FindText(text);
  QVERIFY2(!found.empty(), text.c_str());
  ClickNodeKey(ed->tvwViews.Node(found.front()).key);
}

void GuiEditor::ClickNodeKey(const std::string& key) {
  auto* tree = Find<QTreeView>("tvwViews");
  auto* nodes = static_cast<gui::TreeModel*>(tree->model());
  const ui::NodeId id = ed->tvwViews.FindKey(key);
  QVERIFY2(id != ui::kNoNode, key.c_str());
  const QModelIndex index = nodes->IndexOf(id);
  tree->scrollTo(index);
  QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(index).center());
  Settle();
}

QRect GuiEditor::FilterCellRect(int row, int column) const {
  return filters->visualRect(filters->model()->index(row - 1, column));
}

void GuiEditor::ClickFilterCell(int row, int column) {
  QTest::mouseClick(filters->viewport(), Qt::LeftButton, {}, FilterCellRect(row, column).center());
  Settle();
}

void GuiEditor::ClickCheck(const char* name) {
  auto* box = Find<QCheckBox>(name);
  QVERIFY2(box, name);
  // On the indicator: a wide box's centre may lie beyond its caption.
  QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
  Settle();
}

void GuiEditor::Press(QWidget* on, Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(on, key, modifiers);
  Settle();
}

void GuiEditor::ClickButton(const char* name) {
  auto* button = Find<QPushButton>(name);
  QVERIFY2(button, name);
  QTest::mouseClick(button, Qt::LeftButton);
  Settle();
}

}  // namespace cvve::guitest
