// The editor window driven as a user drives it: clicks, keys and typing on
// the offscreen platform, with the file set in a temporary folder.
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <pugixml.hpp>
#include <tuple>

#include "gui/units.h"
#include "gui/statement/statement_view.h"
#include "gui_fixture.h"

using cvve::guitest::GuiEditor;
namespace ui = cvve::ui;

class EditorWindowTest : public QObject {
  Q_OBJECT

 private slots:
  void EditingSessionEndsWithTheExpectedViewsFile();
  void SaveQuestionOnSwitchingProfilesNotOnClosing();
  void InPlaceEditorSitsOverItsCellAndDisablesTheList();
  void CellColoursFollowTheRows();
  void ReportModeMovesThePagePanel();
  void StatementPaneFollowsTheUser();
  void ShortcutsRunTheProfileCommands();
};

namespace {

QStringList Texts(const QListWidget* list) {
  QStringList texts;
  for (int i = 0; i < list->count(); ++i) texts << list->item(i)->text();
  return texts;
}

// The texts at `path` under the profile named `name`, joined by "|".
std::string ProfileValue(const std::string& xml, const std::string& name, const std::string& path) {
  pugi::xml_document doc;
  doc.load_string(xml.c_str());
  std::string joined;
  for (const auto& node :
       doc.select_nodes(("/Views/Profiles/Profile[Name='" + name + "']/" + path).c_str())) {
    joined += (joined.empty() ? "" : "|") + std::string(node.node().text().get());
  }
  return joined;
}

}  // namespace

void EditorWindowTest::EditingSessionEndsWithTheExpectedViewsFile() {
  GuiEditor g;
  g.Open("My Accounts");

  // Tick the "Balance" filter with Space on its row.
  g.ClickFilterCell(2, 0);
  g.filters->setFocus();
  g.Press(g.filters, Qt::Key_Space);
  QVERIFY(g->lstFilters.Item(2).checked);
  QVERIFY(g->ProfileChanged);

  // Click its Data1 cell, type over the default, Enter.
  g.ClickFilterCell(2, 2);
  QComboBox* box = g.window->valueEditor(1);
  QVERIFY(box->isVisible() && box->hasFocus());
  QTest::keyClicks(box, "500");
  g.Press(box, Qt::Key_Return);
  QVERIFY(!box->isVisible());
  QVERIFY(g.filters->isEnabled());
  QCOMPARE(g->lstFilters.SubItem(2, 2), std::string("500"));

  // Add the "Balance" column.
  auto* available = g.Find<QListWidget>("lstAvailColumns");
  const auto balance = available->findItems("Balance", Qt::MatchExactly);
  QCOMPARE(balance.size(), 1);
  QTest::mouseClick(available->viewport(), Qt::LeftButton, {},
                    available->visualItemRect(balance.front()).center());
  g.Settle();
  g.ClickButton("cmdAddForm");
  QCOMPARE(Texts(g.Find<QListWidget>("lstUsedColumns")), QStringList({"Account #", "Balance"}));

  // Tick the second tab on its check box, at the row's left edge.
  auto* tabs = g.Find<QTreeView>("lstvwTabs");
  const QRect row = tabs->visualRect(tabs->model()->index(1, 0));
  QTest::mouseClick(tabs->viewport(), Qt::LeftButton, {},
                    QPoint(row.left() + 10, row.center().y()));
  g.Settle();
  QVERIFY(g->lstvwTabs.Item(2).checked);
  QCOMPARE(tabs->model()->index(1, 0).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));

  g.ClickButton("cmdSaveProfile");
  QVERIFY(!g->ProfileChanged);
  g.ClickButton("cmdOK");
  QVERIFY(!g->Visible() && !g.window->isVisible());
  QCOMPARE(g.recorded.Unanswered(), 0);

  const std::string xml = g.ViewsFileText();
  const std::pair<const char*, const char*> kSaved[] = {
      {"FilterChecks/Filter[Index='2']/Value", "True"},
      {"FilterChecks/Filter[Index='2']/Data1", "500"},
      {"FilterChecks/Filter[Index='3']/Value", "False"},
      {"SQLWhereList", "(ACCTS.Balance > 500)"},
      {"SQLFieldList", "ACCTS.AcctNum,ACCTS.Balance"},
      {"SQL", ""},
      {"Columns/Column/Name", "Account #|Balance"},
      {"Tabs", "1,2"},
  };
  for (const auto& [path, value] : kSaved) QCOMPARE(ProfileValue(xml, "My Accounts", path), value);
  // The other profile is untouched.
  QCOMPARE(ProfileValue(xml, "Old Accounts", "Columns/Column/Name"), std::string("Last Name"));
}

void EditorWindowTest::SaveQuestionOnSwitchingProfilesNotOnClosing() {
  GuiEditor g;
  g.Open("My Accounts");
  auto* totals = g.Find<QCheckBox>("chkTotals");
  auto stored = [&g](const char* name) {
    const std::string query = "//Profile[Name='" + std::string(name) + "']/DoTotals";
    return std::string(g->ViewsDoc.Root().select_node(query.c_str()).node().text().get());
  };
  g.ClickCheck("chkTotals");
  QVERIFY(g->ProfileChanged);
  QVERIFY(g.window->isWindowModified());

  // Cancel: nothing is loaded, the change stays on screen.
  g.recorded.QueueAnswer(ui::Answer::kCancel);
  g.ClickNode("Old Accounts");
  const auto& asked = g.recorded.Shown().back();
  QCOMPARE(asked.text, std::string("You have made changes to this profile.  Would you like to "
                                   "save these changes?"));
  QCOMPARE(asked.title, std::string("Save Changes"));
  QCOMPARE(asked.buttons, std::string("YesNoCancel"));
  QCOMPARE(asked.icon, std::string("question"));
  QCOMPARE(g->txtCurrProf.Text(), std::string("My Accounts"));
  QVERIFY(totals->isChecked());
  QVERIFY(g->ProfileChanged);

  // No: the other profile loads, nothing is saved.
  g.recorded.QueueAnswer(ui::Answer::kNo);
  g.ClickNode("Old Accounts");
  QCOMPARE(g->txtCurrProf.Text(), std::string("Old Accounts"));
  QVERIFY(!g->ProfileChanged);
  QVERIFY(!totals->isChecked());
  QCOMPARE(stored("My Accounts"), std::string());
  QCOMPARE(Texts(g.Find<QListWidget>("lstUsedColumns")), QStringList({"Last Name"}));

  // Yes: the change is saved, then the other profile loads.
  g.ClickCheck("chkTotals");
  g.recorded.QueueAnswer(ui::Answer::kYes);
  g.ClickNode("My Accounts");
  QCOMPARE(g->txtCurrProf.Text(), std::string("My Accounts"));
  QVERIFY(!g->ProfileChanged);
  QVERIFY(!totals->isChecked());
  QCOMPARE(stored("Old Accounts"), std::string("1"));
  QCOMPARE(g.recorded.Unanswered(), 0);

  // Closing the frame is Cancel: no question, the change is dropped.
  g.ClickCheck("chkTotals");
  const std::string before = g.ViewsFileText();
  g.recorded.ClearShown();
  bool closed = false;
  g.window->on_closed = [&closed] { closed = true; };
  g.window->close();
  g.Settle();
  QVERIFY(closed && !g->Visible());
  QVERIFY(g.recorded.Shown().empty());
  QCOMPARE(g.ViewsFileText(), before);
}

void EditorWindowTest::InPlaceEditorSitsOverItsCellAndDisablesTheList() {
  GuiEditor g;
  g.Open("My Accounts");
  QWidget* area = g.window->filterArea();
  const QWidget* viewport = g.filters->viewport();
  QComboBox* first = g.window->valueEditor(1);
  QComboBox* second = g.window->valueEditor(2);

  // Data1 and Data2 of the two-value row: box 1 over its cell one twip
  // narrower, box 2 ten twips narrower; the list is disabled while one is open.
  const std::tuple<int, QComboBox*, QComboBox*, int, const char*> kCells[] = {
      {2, first, second, 1570 - 1, "2026-01-01"}, {4, second, first, 1570 - 10, "2026-12-31"}};
  for (const auto& [column, box, other, twips, text] : kCells) {
    g.ClickFilterCell(3, column);
    QVERIFY(box->isVisible() && box->hasFocus() && !other->isVisible());
    QCOMPARE(box->pos(), viewport->mapTo(area, g.FilterCellRect(3, column).topLeft()));
    QCOMPARE(box->width(), cvve::gui::ToPixelsX(g.window.get(), twips));
    QCOMPARE(box->currentText(), QString(text));
    QVERIFY(!g.filters->isEnabled() && !g->lstFilters.Enabled());
    // Leaving the box hides it and enables the list.
    QTest::mouseClick(g.Find<QListWidget>("lstUsedColumns")->viewport(), Qt::LeftButton);
    g.Settle();
    QVERIFY(!box->isVisible() && g.filters->isEnabled() && g->lstFilters.Enabled());
  }
  // Typing then Escape: the text is kept, the profile not marked.
  g.ClickFilterCell(3, 4);
  QTest::keyClicks(second, "45");
  g.Press(second, Qt::Key_Escape);
  QVERIFY(!second->isVisible() && g.filters->isEnabled());
  QCOMPARE(g->lstFilters.SubItem(3, 4), std::string("45"));
  QVERIFY(!g->ProfileChanged);

  // Data2 of a one-value row, and the caption column: no box opens.
  for (const auto& [row, column] : {std::pair{2, 4}, std::pair{3, 0}}) {
    g.ClickFilterCell(row, column);
    QVERIFY(!first->isVisible() && !second->isVisible());
    QCOMPARE(g->lstFilters.SelectedItem(), row);
  }

  // With start/end dates on, the box offers their markers.
  g.ClickCheck("chkStartEnd");
  g.ClickFilterCell(2, 2);
  QVERIFY(first->isVisible());
  QCOMPARE(first->count(), 3);
  QCOMPARE(first->itemText(1), QString("<$START_DATE>"));
  QCOMPARE(first->itemText(2), QString("<$END_DATE>"));
  // A choice from the drop-down, which holds the focus for a moment.
  first->showPopup();
  QAbstractItemView* popup = first->view();
  QTRY_VERIFY(popup->isVisible());
  QTest::mouseClick(popup->viewport(), Qt::LeftButton, {},
                    popup->visualRect(popup->model()->index(1, 0)).center());
  g.Settle();
  QVERIFY(first->isVisible());
  QCOMPARE(g->lstFilters.SubItem(2, 2), std::string("<$START_DATE>"));
  // The arrow keys walk the entries as choices too.
  g.Press(first, Qt::Key_Down);
  QCOMPARE(g->lstFilters.SubItem(2, 2), std::string("<$END_DATE>"));
}

void EditorWindowTest::CellColoursFollowTheRows() {
  const QColor yellow(255, 255, 192);
  const QColor white(Qt::white);
  const struct {
    int row, column;
    QColor want;
  } kCells[] = {
      {1, 2, white},                   // no value: nothing to edit
      {1, 4, white},  {2, 1, white},   // a label
      {2, 2, yellow},                  // one value: Data1 only
      {2, 4, white},  {3, 2, yellow},  // two values: both
      {3, 4, yellow}, {3, 3, white},
  };
  // Only this system's own executable paints the cells.
  for (const char* executable : {"viewedit", "ViewEdit"}) {
    const bool painted = std::string(executable) == "viewedit";
    GuiEditor g(GuiEditor::Prompts::kRecorded, executable);
    g.Open("My Accounts");
    g.window->resize(1360, 880);  // every cell in view
    g.Settle();
    QCOMPARE(g.window->cellPainterShown(), painted);
    const QImage image = g.filters->viewport()->grab().toImage();
    for (const auto& cell : kCells) {
      const QPoint at = g.FilterCellRect(cell.row, cell.column).topLeft() + QPoint(3, 3);
      const QColor seen = image.pixelColor(at * image.devicePixelRatio());
      if (painted) {
        QCOMPARE(seen, cell.want);
      } else {
        QVERIFY(seen != yellow);
      }
    }
  }
}

void EditorWindowTest::ReportModeMovesThePagePanel() {
  GuiEditor g;
  g.Open();
  auto* page = g.Find<QWidget>("pagePanel");
  auto* view_page_box = qobject_cast<QGroupBox*>(page->parentWidget());
  QVERIFY(view_page_box && view_page_box->title().startsWith("&7."));
  for (int mode : {-1, 0}) {
    g->SetReportMode(mode);
    QVERIFY(page->isVisible());
    auto* box = qobject_cast<QGroupBox*>(page->parentWidget());
    if (mode == 0) {
      QCOMPARE(box, view_page_box);
    } else {
      QCOMPARE(box->title(), QString("&3. Report Page And Input Variables"));
    }
  }
}

void EditorWindowTest::StatementPaneFollowsTheUser() {
  GuiEditor g;
  g.Open("Old Accounts");
  // The pane shows what saving would store, and follows each change.
  auto pane = [&g] { return g.window->statementPane()->toPlainText(); };
  QVERIFY2(pane().contains("SQLFieldList: ACCTS.LastName"), qPrintable(pane()));
  // With no column left the builder's message shows in the pane, not as a box.
  g.recorded.ClearShown();
  g.ClickButton("cmdRemoveAll");
  QVERIFY2(pane().contains("Note: You have not selected any fields/columns."), qPrintable(pane()));
  QVERIFY(g.recorded.Shown().empty());
}

void EditorWindowTest::ShortcutsRunTheProfileCommands() {
  GuiEditor g;
  g.Open("My Accounts");
  QVERIFY(g.Find<QPushButton>("cmdSaveProfile")->toolTip().contains("Ctrl+S"));
  QVERIFY(g.Find<QPushButton>("cmdEditProfile")->toolTip().contains("F2"));
  g.ClickCheck("chkTotals");
  auto* tree = g.Find<QTreeView>("tvwViews");
  // Each key starts its command, which shows its own prompt (by text or title).
  const struct {
    QWidget* on;
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
    std::string prompt;
  } kKeys[] = {
      {g.window.get(), Qt::Key_S, Qt::ControlModifier, "Your view profile has been saved."},
      {g.window.get(), Qt::Key_N, Qt::ControlModifier, "New Profile"},
      {tree, Qt::Key_F2, Qt::NoModifier, "Edit Profile Name"},
      {tree, Qt::Key_Delete, Qt::NoModifier,
       "Are you sure you want to delete the profile 'My Accounts'?"},
      {tree, Qt::Key_D, Qt::ControlModifier, "Copy Profile"},
  };
  for (const auto& k : kKeys) {
    g.recorded.ClearShown();
    k.on->setFocus();
    g.Press(k.on, k.key, k.modifiers);
    QCOMPARE(g.recorded.Shown().size(), std::size_t(1));
    const auto& shown = g.recorded.Shown().back();
    QVERIFY2(shown.text == k.prompt || shown.title == k.prompt, k.prompt.c_str());
  }
  QVERIFY(!g->ProfileChanged);  // saved by Ctrl+S
  // Nothing else was answered, so nothing else changed.
  QCOMPARE(g->txtCurrProf.Text(), std::string("My Accounts"));
}

QTEST_MAIN(EditorWindowTest)
#include "editor_window_test.moc"
