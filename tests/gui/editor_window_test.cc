// The editor window driven as a user drives it: clicks, keys and typing on
// the offscreen platform, with the file set in a temporary folder.
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <pugixml.hpp>

#include "gui/units.h"
#include "gui_fixture.h"
#include "variables/frm_variables.h"

using cvve::guitest::GuiEditor;
namespace ui = cvve::ui;

class EditorWindowTest : public QObject {
  Q_OBJECT

 private slots:
  void EditingSessionEndsWithTheExpectedViewsFile();
  void SaveQuestionOnSwitchingProfiles();
  void SaveQuestionThroughTheRealMessageBox();
  void InPlaceEditorSitsOverItsCellAndDisablesTheList();
  void InPlaceEditorOffersVariableMarkers();
  void CellColoursFollowTheRows();
  void CellPainterIsNotInstalledForViewEdit();
  void ReportModeRearrangesTheWindow();
  void SearchFillsTheResultsFolder();
  void StatementPaneShowsWhatSavingStoresWithoutPrompting();
  void ShortcutsRunTheProfileCommands();
  void SaveNoticeClosesWhenSaveLosesFocus();
  void FrameCloseIsCancel();
  void TabOrderFollowsTheSteps();
  void ClickOnACheckBoxOfTheTabsList();
};

namespace {

QListWidgetItem* ItemNamed(QListWidget* list, const QString& text) {
  const auto found = list->findItems(text, Qt::MatchExactly);
  return found.isEmpty() ? nullptr : found.front();
}

QStringList Texts(const QListWidget* list) {
  QStringList texts;
  for (int i = 0; i < list->count(); ++i) texts << list->item(i)->text();
  return texts;
}

// The XML text of `path` under the profile named `name` ("" when missing).
std::string ProfileValue(const std::string& xml, const std::string& name, const std::string& path) {
  pugi::xml_document doc;
  doc.load_string(xml.c_str());
  const std::string query = "/Views/Profiles/Profile[Name='" + name + "']/" + path;
  return doc.select_node(query.c_str()).node().text().get();
}

std::vector<std::string> ProfileColumns(const std::string& xml, const std::string& name) {
  pugi::xml_document doc;
  doc.load_string(xml.c_str());
  std::vector<std::string> names;
  const std::string query = "/Views/Profiles/Profile[Name='" + name + "']/Columns/Column/Name";
  for (const auto& node : doc.select_nodes(query.c_str()))
    names.push_back(node.node().text().get());
  return names;
}

void Activate(QWidget* window) {
  window->activateWindow();
  QVERIFY(QTest::qWaitForWindowActive(window));
}

}  // namespace

void EditorWindowTest::EditingSessionEndsWithTheExpectedViewsFile() {
  GuiEditor g;
  g.Open();
  Activate(g.window.get());
  g.ClickNode("My Accounts");
  QCOMPARE(g->txtCurrProf.Text(), std::string("My Accounts"));

  // Tick the "Balance" filter with Space on its row.
  g.ClickFilterCell(2, 0);
  QCOMPARE(g->lstFilters.SelectedItem(), 2);
  g.filters->setFocus();
  QTest::keyClick(g.filters, Qt::Key_Space);
  g.Settle();
  QVERIFY(g->lstFilters.Item(2).checked);
  QVERIFY(g->ProfileChanged);

  // Click its Data1 cell, type over the default, Enter.
  g.ClickFilterCell(2, 2);
  QComboBox* box = g.window->valueEditor(1);
  QVERIFY(box->isVisible());
  QVERIFY(box->hasFocus());
  QTest::keyClicks(box, "500");
  QCOMPARE(g->lstFilters.SubItem(2, 2), std::string("500"));
  QTest::keyClick(box, Qt::Key_Return);
  g.Settle();
  QVERIFY(!box->isVisible());
  QVERIFY(g.filters->isEnabled());
  QCOMPARE(g->lstFilters.SubItem(2, 2), std::string("500"));

  // Add the "Balance" column.
  auto* available = g.Find<QListWidget>("lstAvailColumns");
  QListWidgetItem* balance = ItemNamed(available, "Balance");
  QVERIFY(balance);
  QTest::mouseClick(available->viewport(), Qt::LeftButton, {},
                    available->visualItemRect(balance).center());
  g.Settle();
  g.ClickButton("cmdAddForm");
  QCOMPARE(Texts(g.Find<QListWidget>("lstUsedColumns")), QStringList({"Account #", "Balance"}));

  g.ClickButton("cmdSaveProfile");
  QVERIFY(!g->ProfileChanged);
  g.ClickButton("cmdOK");
  QVERIFY(!g->Visible());
  QVERIFY(!g.window->isVisible());
  QCOMPARE(g.recorded.Unanswered(), 0);

  const std::string xml = g.ViewsFileText();
  QCOMPARE(ProfileValue(xml, "My Accounts", "FilterChecks/Filter[Index='2']/Value"),
           std::string("True"));
  QCOMPARE(ProfileValue(xml, "My Accounts", "FilterChecks/Filter[Index='2']/Data1"),
           std::string("500"));
  QCOMPARE(ProfileValue(xml, "My Accounts", "FilterChecks/Filter[Index='3']/Value"),
           std::string("False"));
  QCOMPARE(ProfileValue(xml, "My Accounts", "SQLWhereList"), std::string("(ACCTS.Balance > 500)"));
  QCOMPARE(ProfileValue(xml, "My Accounts", "SQLFieldList"),
           std::string("ACCTS.AcctNum,ACCTS.Balance"));
  QCOMPARE(ProfileValue(xml, "My Accounts", "SQL"), std::string());
  QCOMPARE(ProfileColumns(xml, "My Accounts"), (std::vector<std::string>{"Account #", "Balance"}));
  // The other profile is untouched.
  QCOMPARE(ProfileColumns(xml, "Old Accounts"), (std::vector<std::string>{"Last Name"}));
}

void EditorWindowTest::SaveQuestionOnSwitchingProfiles() {
  GuiEditor g;
  g.Open();
  g.ClickNode("My Accounts");
  g.ClickCheck("chkTotals");
  QVERIFY(g->chkTotals.Checked());
  QVERIFY(g->ProfileChanged);
  QVERIFY(g.window->isWindowModified());

  // Cancel: nothing is loaded, the change stays on screen.
  g.recorded.QueueAnswer(ui::Answer::kCancel);
  g.ClickNode("Old Accounts");
  QCOMPARE(g.recorded.Shown().back().text,
           std::string("You have made changes to this profile.  Would you like to save these "
                       "changes?"));
  QCOMPARE(g.recorded.Shown().back().title, std::string("Save Changes"));
  QCOMPARE(g.recorded.Shown().back().buttons, std::string("YesNoCancel"));
  QCOMPARE(g.recorded.Shown().back().icon, std::string("question"));
  QCOMPARE(g->txtCurrProf.Text(), std::string("My Accounts"));
  QVERIFY(g.Find<QCheckBox>("chkTotals")->isChecked());
  QVERIFY(g->ProfileChanged);

  // Yes, on clicking the node again: the change is saved, then the other loads.
  g.recorded.QueueAnswer(ui::Answer::kYes);
  g.ClickNode("Old Accounts");
  QCOMPARE(g->txtCurrProf.Text(), std::string("Old Accounts"));
  QVERIFY(!g->ProfileChanged);
  QVERIFY(!g.Find<QCheckBox>("chkTotals")->isChecked());
  QCOMPARE(g.recorded.Unanswered(), 0);
  pugi::xml_node saved = g->ViewsDoc.Root().select_node("//Profile[Name='My Accounts']").node();
  QCOMPARE(std::string(saved.child("DoTotals").text().get()), std::string("1"));
  QCOMPARE(Texts(g.Find<QListWidget>("lstUsedColumns")), QStringList({"Last Name"}));
}

void EditorWindowTest::SaveQuestionThroughTheRealMessageBox() {
  GuiEditor g(GuiEditor::Prompts::kQt);
  g.Open();
  g.ClickNode("My Accounts");
  g.ClickCheck("chkAverages");
  QVERIFY(g->ProfileChanged);

  QString seen_text, seen_title;
  QMessageBox::Icon seen_icon = QMessageBox::NoIcon;
  QMessageBox::StandardButtons seen_buttons;
  cvve::guitest::AnswerNextMessageBox([&](QMessageBox* box) {
    seen_text = box->text();
    seen_title = box->windowTitle();
    seen_icon = box->icon();
    seen_buttons = box->standardButtons();
    box->button(QMessageBox::No)->click();
  });
  g.ClickNode("Old Accounts");
  QCOMPARE(seen_text, QString("You have made changes to this profile.  Would you like to save "
                              "these changes?"));
  QCOMPARE(seen_title, QString("Save Changes"));
  QCOMPARE(seen_icon, QMessageBox::Question);
  QCOMPARE(seen_buttons, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
  // No: the other profile loads, nothing was saved.
  QCOMPARE(g->txtCurrProf.Text(), std::string("Old Accounts"));
  pugi::xml_node kept = g->ViewsDoc.Root().select_node("//Profile[Name='My Accounts']").node();
  QVERIFY(!kept.child("DoAverages"));
}

void EditorWindowTest::InPlaceEditorSitsOverItsCellAndDisablesTheList() {
  GuiEditor g;
  g.Open();
  Activate(g.window.get());
  g.ClickNode("My Accounts");
  QWidget* area = g.window->filterArea();
  const QWidget* viewport = g.filters->viewport();

  // Data1 of the two-value row: box 1 over the cell, one twip narrower.
  g.ClickFilterCell(3, 2);
  QComboBox* first = g.window->valueEditor(1);
  QComboBox* second = g.window->valueEditor(2);
  QVERIFY(first->isVisible());
  QVERIFY(!second->isVisible());
  const QRect data1 = g.FilterCellRect(3, 2);
  QCOMPARE(first->pos(), viewport->mapTo(area, data1.topLeft()));
  QCOMPARE(first->width(), cvve::gui::ToPixelsX(g.window.get(), 1570 - 1));
  QCOMPARE(first->currentText(), QString("2026-01-01"));
  QVERIFY(first->hasFocus());
  QVERIFY(!g.filters->isEnabled());
  QVERIFY(!g->lstFilters.Enabled());

  // Leaving the box stores its text, hides it and enables the list.
  QTest::mouseClick(g.Find<QListWidget>("lstUsedColumns")->viewport(), Qt::LeftButton);
  g.Settle();
  QVERIFY(!first->isVisible());
  QVERIFY(g.filters->isEnabled());

  // Data2 of the same row: box 2, ten twips narrower; typing then Escape.
  g.ClickFilterCell(3, 4);
  QVERIFY(second->isVisible());
  const QRect data2 = g.FilterCellRect(3, 4);
  QCOMPARE(second->pos(), viewport->mapTo(area, data2.topLeft()));
  QCOMPARE(second->width(), cvve::gui::ToPixelsX(g.window.get(), 1570 - 10));
  QVERIFY(!g.filters->isEnabled());
  QTest::keyClicks(second, "45");
  QTest::keyClick(second, Qt::Key_Escape);
  g.Settle();
  QVERIFY(!second->isVisible());
  QVERIFY(g.filters->isEnabled());
  QCOMPARE(g->lstFilters.SubItem(3, 4), std::string("45"));
  QVERIFY(!g->ProfileChanged);  // typing a value does not mark the profile

  // Data2 of a one-value row, and the caption column: no box opens.
  g.ClickFilterCell(2, 4);
  QVERIFY(!first->isVisible() && !second->isVisible());
  g.ClickFilterCell(3, 0);
  QVERIFY(!first->isVisible() && !second->isVisible());
  QCOMPARE(g->lstFilters.SelectedItem(), 3);
}

void EditorWindowTest::InPlaceEditorOffersVariableMarkers() {
  GuiEditor g;
  g.Open();
  Activate(g.window.get());
  g.ClickNode("My Accounts");
  g.ClickCheck("chkStartEnd");
  g.ClickFilterCell(2, 2);
  QComboBox* box = g.window->valueEditor(1);
  QVERIFY(box->isVisible());
  QCOMPARE(box->count(), 3);
  QCOMPARE(box->itemText(1), QString("<$START_DATE>"));
  QCOMPARE(box->itemText(2), QString("<$END_DATE>"));
  // A choice from the drop-down, which holds the focus for a moment.
  box->showPopup();
  QAbstractItemView* popup = box->view();
  QTRY_VERIFY(popup->isVisible());
  QTest::mouseClick(popup->viewport(), Qt::LeftButton, {},
                    popup->visualRect(popup->model()->index(1, 0)).center());
  g.Settle();
  QVERIFY(box->isVisible());
  QCOMPARE(g->lstFilters.SubItem(2, 2), std::string("<$START_DATE>"));
  // The arrow keys walk the entries as choices too.
  QTest::keyClick(box, Qt::Key_Down);
  g.Settle();
  QCOMPARE(g->lstFilters.SubItem(2, 2), std::string("<$END_DATE>"));
}

void EditorWindowTest::CellColoursFollowTheRows() {
  GuiEditor g;
  g.Open();
  g.ClickNode("My Accounts");
  QVERIFY(g.window->cellPainterShown());
  const QImage image = g.filters->viewport()->grab().toImage();
  const qreal ratio = image.devicePixelRatio();
  auto colour = [&](int row, int column) {
    const QPoint at = g.FilterCellRect(row, column).topLeft() + QPoint(3, 3);
    return image.pixelColor(int(at.x() * ratio), int(at.y() * ratio));
  };
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
  for (const auto& cell : kCells) {
    QCOMPARE(colour(cell.row, cell.column), cell.want);
  }
}

void EditorWindowTest::CellPainterIsNotInstalledForViewEdit() {
  GuiEditor g(GuiEditor::Prompts::kRecorded, "ViewEdit");
  g.Open();
  g.ClickNode("My Accounts");
  QVERIFY(!g.window->cellPainterShown());
  const QImage image = g.filters->viewport()->grab().toImage();
  const QPoint at = g.FilterCellRect(2, 2).topLeft() + QPoint(3, 3);
  QVERIFY(image.pixelColor(at * image.devicePixelRatio()) != QColor(255, 255, 192));
}

void EditorWindowTest::ReportModeRearrangesTheWindow() {
  GuiEditor g;
  g.Open();
  auto* tabs = g.Find<QWidget>("lstvwTabs");
  auto* page = g.Find<QWidget>("pagePanel");
  QVERIFY(g.Find<QPushButton>("cmdExport")->isVisible());
  QVERIFY(!g.Find<QPushButton>("cmdPreviewReport")->isVisible());
  QVERIFY(tabs->isVisible());
  QGroupBox* view_page_box = qobject_cast<QGroupBox*>(page->parentWidget());
  QVERIFY(view_page_box);
  QVERIFY(view_page_box->title().startsWith("7."));

  g->SetReportMode(-1);
  QVERIFY(!g.Find<QPushButton>("cmdExport")->isVisible());
  QVERIFY(g.Find<QPushButton>("cmdPreviewReport")->isVisible());
  QVERIFY(!tabs->isVisible());
  QVERIFY(!g.window->searchBox()->isVisible());
  QVERIFY(!g.Find<QWidget>("cmbAcctViewType")->isVisible());
  auto* report_page_box = qobject_cast<QGroupBox*>(page->parentWidget());
  QCOMPARE(report_page_box->title(), QString("3. Report Page And Input Variables"));
  QVERIFY(page->isVisible());
  QVERIFY(!view_page_box->isVisible());

  g->SetReportMode(0);
  QVERIFY(g.Find<QPushButton>("cmdExport")->isVisible());
  QVERIFY(!g.Find<QPushButton>("cmdPreviewReport")->isVisible());
  QVERIFY(tabs->isVisible());
  QCOMPARE(qobject_cast<QGroupBox*>(page->parentWidget()), view_page_box);
}

void EditorWindowTest::SearchFillsTheResultsFolder() {
  GuiEditor g;
  g.Open();
  QTest::keyClicks(g.window->searchBox(), "ACC");
  g.Settle();
  const ui::NodeId folder = g->tvwViews.FindKey("ROOTSearch");
  QVERIFY(folder != ui::kNoNode);
  std::vector<std::string> found;
  for (ui::NodeId id : g->tvwViews.Children(folder)) found.push_back(g->tvwViews.Node(id).text);
  QCOMPARE(found, (std::vector<std::string>{"Account Lookup", "My Accounts", "Old Accounts"}));
  QVERIFY(g.Find<QTreeView>("tvwViews")
              ->isExpanded(static_cast<QAbstractItemModel*>(g.Find<QTreeView>("tvwViews")->model())
                               ->index(2, 0)));

  // A result loads its profile.
  g.ClickNodeKey("SEARCH|Old Accounts");
  QCOMPARE(g->txtCurrProf.Text(), std::string("Old Accounts"));
  g.window->searchBox()->setText("old");
  g.Settle();
  QVERIFY(g->tvwViews.FindKey("SEARCH|Old Accounts") != ui::kNoNode);
  QCOMPARE(g->tvwViews.Children(g->tvwViews.FindKey("ROOTSearch")).size(), std::size_t(1));

  g.window->searchBox()->clear();
  g.Settle();
  QVERIFY(g->tvwViews.Children(g->tvwViews.FindKey("ROOTSearch")).empty());
}

void EditorWindowTest::StatementPaneShowsWhatSavingStoresWithoutPrompting() {
  GuiEditor g;
  g.Open();
  g.ClickNode("My Accounts");
  const QString user = g.window->statementPane()->toPlainText();
  QVERIFY2(user.contains("SQLFieldList: ACCTS.AcctNum"), qPrintable(user));
  QVERIFY2(user.contains("SQLWhereList: (empty)"), qPrintable(user));

  // With no column left the builder's message shows in the pane, not as a box.
  g.recorded.ClearShown();
  g.ClickButton("cmdRemoveAll");
  const QString empty = g.window->statementPane()->toPlainText();
  QVERIFY2(empty.contains("Note: You have not selected any fields/columns."), qPrintable(empty));
  QVERIFY(g.recorded.Shown().empty());

  g.recorded.QueueAnswer(ui::Answer::kNo);
  g.ClickNode("Account Lookup");
  const QString system = g.window->statementPane()->toPlainText();
  QVERIFY2(system.startsWith("System profile"), qPrintable(system));
  QVERIFY2(system.contains("CQ:SELECT ACCTS.AcctNum FROM ACCTS"), qPrintable(system));
}

void EditorWindowTest::ShortcutsRunTheProfileCommands() {
  GuiEditor g;
  g.Open();
  Activate(g.window.get());
  g.ClickNode("My Accounts");
  QVERIFY(g.Find<QPushButton>("cmdSaveProfile")->toolTip().contains("Ctrl+S"));
  QVERIFY(g.Find<QPushButton>("cmdEditProfile")->toolTip().contains("F2"));

  g.ClickCheck("chkTotals");
  QTest::keyClick(g.window.get(), Qt::Key_S, Qt::ControlModifier);
  g.Settle();
  QVERIFY(!g->ProfileChanged);
  QCOMPARE(g.recorded.Shown().back().kind, std::string("notice"));
  QCOMPARE(g.recorded.Shown().back().text, std::string("Your view profile has been saved."));

  QTest::keyClick(g.window.get(), Qt::Key_N, Qt::ControlModifier);
  g.Settle();
  QCOMPARE(g.recorded.Shown().back().text, std::string("Enter a name for the new profile:"));
  QCOMPARE(g.recorded.Shown().back().title, std::string("New Profile"));

  auto* tree = g.Find<QTreeView>("tvwViews");
  tree->setFocus();
  QTest::keyClick(tree, Qt::Key_F2);
  g.Settle();
  QCOMPARE(g.recorded.Shown().back().title, std::string("Edit Profile Name"));
  QTest::keyClick(tree, Qt::Key_Delete);
  g.Settle();
  QCOMPARE(g.recorded.Shown().back().text,
           std::string("Are you sure you want to delete the profile 'My Accounts'?"));
  QTest::keyClick(tree, Qt::Key_D, Qt::ControlModifier);
  g.Settle();
  QCOMPARE(g.recorded.Shown().back().title, std::string("Copy Profile"));
  QCOMPARE(g.recorded.Shown().back().default_text, std::string("Copy of My Accounts"));
  // Nothing was answered, so nothing changed.
  QCOMPARE(g->txtCurrProf.Text(), std::string("My Accounts"));
}

void EditorWindowTest::SaveNoticeClosesWhenSaveLosesFocus() {
  GuiEditor g(GuiEditor::Prompts::kQt);
  g.Open();
  Activate(g.window.get());
  g.ClickNode("My Accounts");
  g.ClickButton("cmdSaveProfile");
  QWidget* notice = g.qt_prompter.Notice();
  QVERIFY(notice);
  QVERIFY(notice->isVisible());
  QVERIFY(g.Find<QPushButton>("cmdSaveProfile")->hasFocus());
  QCOMPARE(notice->findChild<QLabel*>("noticeText")->text(),
           QString("Your view profile has been saved."));
  QTest::mouseClick(g.Find<QListWidget>("lstAvailColumns")->viewport(), Qt::LeftButton);
  g.Settle();
  QVERIFY(!g.qt_prompter.Notice());
}

void EditorWindowTest::FrameCloseIsCancel() {
  GuiEditor g;
  g.Open();
  g.ClickNode("My Accounts");
  g.ClickCheck("chkTotals");
  const std::string before = g.ViewsFileText();
  g.recorded.ClearShown();
  bool closed = false;
  g.window->on_closed = [&closed] { closed = true; };
  g.window->close();
  g.Settle();
  QVERIFY(closed);
  QVERIFY(!g->Visible());
  QVERIFY(g.recorded.Shown().empty());  // no question: Cancel drops the change
  QCOMPARE(g.ViewsFileText(), before);
}

void EditorWindowTest::TabOrderFollowsTheSteps() {
  GuiEditor g;
  g.Open();
  auto next = [](QWidget* w) {
    QWidget* n = w->nextInFocusChain();
    while (n && n->focusPolicy() == Qt::NoFocus) n = n->nextInFocusChain();
    return n;
  };
  QCOMPARE(next(g.window->searchBox()), g.Find<QWidget>("tvwViews"));
  QCOMPARE(next(g.Find<QWidget>("tvwViews")), g.Find<QWidget>("cmdNewProfile"));
  QCOMPARE(next(g.Find<QWidget>("cmdSaveProfile")), g.Find<QWidget>("cmbDataSet"));
  QCOMPARE(next(g.Find<QWidget>("cmdAdvancedFilter")), g.Find<QWidget>("lstFilters"));
  QCOMPARE(next(g.Find<QWidget>("cmdOK")), g.Find<QWidget>("cmdCancel"));
}

void EditorWindowTest::ClickOnACheckBoxOfTheTabsList() {
  GuiEditor g;
  g.Open();
  g.ClickNode("My Accounts");
  auto* tabs = g.Find<QTreeView>("lstvwTabs");
  QVERIFY(g->lstvwTabs.Item(1).checked);  // the profile's Tabs is "1"
  QVERIFY(!g->lstvwTabs.Item(2).checked);
  const QRect row = tabs->visualRect(tabs->model()->index(1, 0));
  // On the box at the row's left edge.
  QTest::mouseClick(tabs->viewport(), Qt::LeftButton, {},
                    QPoint(row.left() + 10, row.center().y()));
  g.Settle();
  QVERIFY(g->lstvwTabs.Item(2).checked);
  QVERIFY(g->ProfileChanged);
  QCOMPARE(tabs->model()->index(1, 0).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
}

QTEST_MAIN(EditorWindowTest)
#include "editor_window_test.moc"
