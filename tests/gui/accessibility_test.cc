// What assistive technology and the keyboard find in the editor window: a
// name for every interactive widget (walked through QAccessible, as a screen
// reader walks it), labels that lead to their controls, and a mnemonic on
// every label and button.
#include <QAbstractButton>
#include <QAccessible>
#include <QGroupBox>
#include <QLabel>
#include <QTest>

#include "gui/about_box.h"
#include "gui/help_menu.h"
#include "gui/mnemonics.h"
#include "gui_fixture.h"

using cvve::guitest::GuiEditor;

class AccessibilityTest : public QObject {
  Q_OBJECT

 private slots:
  void EveryInteractiveWidgetHasAName_data();
  void EveryInteractiveWidgetHasAName();
  void LabelsAndButtonsHaveMnemonicsAndBuddies();
  void MnemonicsMarkTheirLetter();
  void HelpMenuOffersShortcutsDocumentationAndAbout();
};

namespace {

bool Interactive(QAccessible::Role role) {
  switch (role) {
    case QAccessible::Button:
    case QAccessible::CheckBox:
    case QAccessible::RadioButton:
    case QAccessible::ComboBox:
    case QAccessible::EditableText:
    case QAccessible::List:
    case QAccessible::Tree:
    case QAccessible::Table:
    case QAccessible::MenuBar:
    case QAccessible::SpinBox:
    case QAccessible::Slider:
    case QAccessible::PageTabList:
      return true;
    default:
      return false;
  }
}

// Every shown interactive object below `node` whose name is empty, by the
// widget's object name (or its role); `seen` counts the interactive ones.
void Unnamed(QAccessibleInterface* node, QStringList& missing, int& seen) {
  if (!node || node->state().invisible) return;
  if (Interactive(node->role())) {
    ++seen;
    if (node->text(QAccessible::Name).trimmed().isEmpty()) {
      QObject* object = node->object();
      missing << (object && !object->objectName().isEmpty()
                      ? object->objectName()
                      : QString("role %1").arg(static_cast<int>(node->role())));
    }
    // A list's rows and a tree's nodes are named by their text.
    if (node->role() == QAccessible::List || node->role() == QAccessible::Tree ||
        node->role() == QAccessible::Table) {
      return;
    }
  }
  for (int i = 0; i < node->childCount(); ++i) Unnamed(node->child(i), missing, seen);
}

}  // namespace

void AccessibilityTest::EveryInteractiveWidgetHasAName_data() {
  QTest::addColumn<int>("mode");
  QTest::addColumn<bool>("editing");
  QTest::newRow("view mode") << 0 << false;
  QTest::newRow("view mode, a value open") << 0 << true;
  QTest::newRow("report mode") << -1 << false;
}

void AccessibilityTest::EveryInteractiveWidgetHasAName() {
  QFETCH(int, mode);
  QFETCH(bool, editing);
  GuiEditor g;
  g.Open("My Accounts");
  if (mode != 0) g->SetReportMode(static_cast<std::int16_t>(mode));
  if (editing) g.ClickFilterCell(3, 2);
  g.Settle();

  QAccessibleInterface* root = QAccessible::queryAccessibleInterface(g.window.get());
  QVERIFY(root);
  QStringList missing;
  int seen = 0;
  Unnamed(root, missing, seen);
  QVERIFY2(missing.isEmpty(), qPrintable("without a name: " + missing.join(", ")));
  // The walk reached the whole window, not a part of it.
  QVERIFY2(seen >= 35, qPrintable(QString("only %1 interactive objects").arg(seen)));

  // Controls whose caption alone says too little are described.
  for (const char* name : {"lstFilters", "txtSearch", "cmdOK", "cmdCancel", "cmdSaveProfile",
                           "cmdAddForm", "txtStatement"}) {
    auto* widget = g.Find<QWidget>(name);
    QVERIFY2(widget, name);
    QAccessibleInterface* face = QAccessible::queryAccessibleInterface(widget);
    QVERIFY2(!face->text(QAccessible::Description).isEmpty(), name);
  }
  // A symbol button is read as what it does.
  QCOMPARE(QAccessible::queryAccessibleInterface(g.Find<QWidget>("cmdAddForm"))
               ->text(QAccessible::Name),
           QString("Use column"));
}

void AccessibilityTest::LabelsAndButtonsHaveMnemonicsAndBuddies() {
  GuiEditor g;
  g.Open("My Accounts");
  QStringList problems;
  for (QLabel* label : g.window->findChildren<QLabel*>()) {
    if (!label->isVisibleTo(g.window.get()) || label->objectName() == "lblUnwritten" ||
        label->objectName() == "lblUnsaved" || label->text().isEmpty()) {
      continue;  // status texts are read, not reached
    }
    if (!label->text().contains('&')) problems << label->objectName() + " has no mnemonic";
    if (!label->buddy()) problems << label->objectName() + " has no buddy";
  }
  for (QAbstractButton* button : g.window->findChildren<QAbstractButton*>()) {
    if (!button->isVisibleTo(g.window.get()) || button->text().isEmpty()) continue;
    if (!button->text().contains('&')) problems << button->objectName() + " has no mnemonic";
  }
  for (QGroupBox* box : g.window->findChildren<QGroupBox*>()) {
    if (box->title().startsWith(QChar('&')) == false && box->title().size() > 1 &&
        box->title()[1] == '.') {
      problems << box->title() + " has no mnemonic";
    }
  }
  QVERIFY2(problems.isEmpty(), qPrintable(problems.join("; ")));

  // A label's mnemonic puts the focus on its control.
  for (const char* label : {"lblDataSet", "lblSort(1)", "lblAvailColumns"}) {
    auto* l = g.Find<QLabel>(label);
    QVERIFY2(l && l->buddy(), label);
    const QChar letter = cvve::gui::MnemonicOf(label);
    g.Press(g.window.get(), static_cast<Qt::Key>(letter.toUpper().unicode()), Qt::AltModifier);
    QVERIFY2(l->buddy()->hasFocus(), label);
  }
  // Enter in a column list does what a double click does; a button's
  // mnemonic presses it (Alt+W: Move Down).
  const int used = g->lstUsedColumns.ListCount();
  g.Press(g.window.get(), Qt::Key_V, Qt::AltModifier);
  auto* available = g.Find<QWidget>("lstAvailColumns");
  QVERIFY(available->hasFocus());
  const std::string added = g->lstAvailColumns.List(0);
  g.Press(available, Qt::Key_Home);
  g.Press(available, Qt::Key_Return);
  QCOMPARE(g->lstUsedColumns.ListCount(), used + 1);
  QCOMPARE(g->lstUsedColumns.List(used), added);
  g.Press(g.window.get(), Qt::Key_U, Qt::AltModifier);
  auto* used_list = g.Find<QWidget>("lstUsedColumns");
  QVERIFY(used_list->hasFocus());
  const std::string top = g->lstUsedColumns.List(0);
  g.Press(used_list, Qt::Key_Home);
  QCOMPARE(g->lstUsedColumns.ListIndex(), 0);
  g.Press(g.window.get(), Qt::Key_W, Qt::AltModifier);
  QTRY_COMPARE(g->lstUsedColumns.List(1), top);  // a mnemonic click is animated
}

void AccessibilityTest::MnemonicsMarkTheirLetter() {
  using cvve::gui::WithMnemonic;
  const struct {
    const char* name;
    const char* caption;
    const char* shown;
  } kCases[] = {
      {"cmdNewProfile", "New", "&New"},
      {"cmdEditProfile", "Edit Name", "Edit Na&me"},
      {"cmdDeleteProfile", "Delete", "Dele&te"},
      {"optFilter(0)", "5. Easy Filter", "&5. Easy Filter"},
      {"cmdRemoveAll", "<<", "&<<"},
      {"cmdOK", "OK", "O&K"},
      {"chkStartEnd", "Start/End Date Variables", "Start/End Date Varia&bles"},
      {"chkStartEnd", "Start/End", "Start/End"},  // a caption without the letter
      {"lblAcctViewType", "Folder:", "&Folder:"},
      {"cmdNewProfile", "Save & New", "Save && &New"},  // '&' is text, never the mark
      {"noSuchControl", "A & B", "A && B"},
  };
  for (const auto& c : kCases) {
    QCOMPARE(WithMnemonic(c.name, c.caption), QString(c.shown));
  }
}

void AccessibilityTest::HelpMenuOffersShortcutsDocumentationAndAbout() {
  GuiEditor g;
  g.Open();
  QStringList actions;
  for (QAction* action : g.window->findChildren<QAction*>()) {
    if (!action->objectName().isEmpty()) actions << action->objectName();
  }
  for (const char* name : {"actShortcuts", "actDocumentation", "actAbout"}) {
    QVERIFY2(actions.contains(name), qPrintable(actions.join(", ")));
  }
  // The shortcuts the help lists are the ones the window has.
  QStringList keys;
  for (const auto& [key, what] : cvve::gui::KeyboardShortcuts()) keys << key;
  for (const char* key : {"Ctrl+F", "F2 or Enter (on a filter row)", "Enter (in a column list)",
                          "Report viewer: Ctrl+P"}) {
    QVERIFY2(keys.contains(key), key);
  }
  QVERIFY(cvve::gui::AboutText().contains(QString(qVersion())));
  QVERIFY(cvve::gui::AboutText().contains("LGPL"));
  QVERIFY(QFileInfo::exists(cvve::gui::DocumentationFolder() + "/window.md"));
}

QTEST_MAIN(AccessibilityTest)
#include "accessibility_test.moc"
