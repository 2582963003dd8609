// The typical task by the keyboard alone, on the real window under a real X
// server (Xvfb) with a 1024x768 screen: open the account views of the demo
// data, pick a user profile, check a filter, type its value, save, OK. Keys
// always go to the widget that has the focus, as a keyboard's do; the views
// file on disk is read afterwards.
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <filesystem>
#include <pugixml.hpp>

#include "component/frm_acct_view_edit.h"
#include "cvviewedit/cls_view_edit.h"
#include "gui/editor_window.h"
#include "gui/qt_screen.h"
#include "host/host_services.h"
#include "test_support.h"

class KeyboardWalkthroughTest : public QObject {
  Q_OBJECT

 private slots:
  void TypicalTaskByKeysAlone();
};

namespace {

constexpr const char* kProfile = "North Lot Weekly Payers";
constexpr const char* kFilterKey = "5";

QString FocusName() {
  QWidget* focus = QApplication::focusWidget();
  if (!focus) return "(none)";
  // An editable drop-down's line edit stands for its box.
  if (qobject_cast<QLineEdit*>(focus) && qobject_cast<QComboBox*>(focus->parentWidget())) {
    return focus->parentWidget()->objectName();
  }
  return focus->objectName();
}

// One key to the focused widget, then the work it queued.
void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  QWidget* focus = QApplication::focusWidget();
  if (!focus) focus = QApplication::activeWindow();
  QTest::keyClick(focus, key, modifiers);
  QTest::qWait(40);
}

void Type(const QString& text) {
  QTest::keyClicks(QApplication::focusWidget(), text);
  QTest::qWait(60);
}

// The Tab key until the focus is on `name`; false after a whole round.
bool TabTo(const QString& name) {
  for (int i = 0; i < 60 && FocusName() != name; ++i) Key(Qt::Key_Tab);
  return FocusName() == name;
}

}  // namespace

void KeyboardWalkthroughTest::TypicalTaskByKeysAlone() {
  if (QGuiApplication::platformName() != "xcb") QSKIP("needs an X server (run under xvfb-run)");
  const QSize screen = QGuiApplication::primaryScreen()->size();
  QVERIFY2(screen.width() <= 1024 && screen.height() <= 768,
           qPrintable(QString("screen %1x%2").arg(screen.width()).arg(screen.height())));

  cvve::testing::TempDir dir;
  for (const auto& entry : std::filesystem::directory_iterator(CVVE_DEMO_DIR)) {
    if (entry.is_regular_file()) {
      std::filesystem::copy_file(entry.path(), dir.Path() / entry.path().filename());
    }
  }
  const std::string views_path = (dir.Path() / "acctviews.xml").string();

  cvve::DefaultHostServices host;
  host.view_files_folder = dir.Path().string();
  host.reports_base_folder = dir.Path().string();
  host.users = cvve::DemoUsers(dir.Path().string());
  host.executable_name = "viewedit";
  cvve::gui::QtScreen screen_faces;
  cvve::EditorEnvironment env{host, screen_faces.prompter(), screen_faces.dialogs(), nullptr};

  QStringList problems;
  auto expect = [&problems](bool ok, const QString& what) {
    if (!ok) problems << what + " (focus: " + FocusName() + ")";
    return ok;
  };
  bool fits = false;
  bool waiting_shown = false;
  std::string on_disk_after_save;

  screen_faces.qt_dialogs().on_editor_shown = [&](cvve::gui::EditorWindow& window) {
    QTimer::singleShot(300, &window, [&] {
      cvve::frmAcctViewEdit& ed = window.editor();
      auto finish = [&] {
        // Whatever went wrong, the editor closes so the test can report.
        if (ed.Visible()) window.binder().Act([&ed] { ed.cmdCancel.Click(); });
      };
      window.activateWindow();
      QTest::qWait(100);
      // The whole editor is on the screen, nothing scrolled away.
      auto* scroll = window.findChild<QScrollArea*>("scrContent");
      fits = window.frameGeometry().width() <= screen.width() &&
             window.frameGeometry().height() <= screen.height() && scroll &&
             !scroll->horizontalScrollBar()->isVisible() &&
             !scroll->verticalScrollBar()->isVisible();

      Key(Qt::Key_F, Qt::ControlModifier);
      if (!expect(FocusName() == "txtSearch", "Ctrl+F reaches the search")) return finish();
      Type("NORTH LOT");
      Key(Qt::Key_Tab);
      if (!expect(FocusName() == "tvwViews", "Tab from the search reaches the tree")) {
        return finish();
      }
      Type("North Lot");  // the tree's type-ahead selects the profile
      if (!expect(ed.CurrentProfileName == kProfile,
                  "typing in the tree loads the profile, not " +
                      QString::fromStdString(ed.CurrentProfileName))) {
        return finish();
      }
      if (!expect(TabTo("lstFilters"), "Tab reaches the filter list")) return finish();
      int row = -1;
      for (int i = 1; i <= ed.lstFilters.ItemCount(); ++i) {
        if (ed.lstFilters.Item(i).key == kFilterKey) row = i - 1;
      }
      if (!expect(row >= 0, "the profile has the Balance filter")) return finish();
      Key(Qt::Key_Home);
      for (int i = 0; i < row; ++i) Key(Qt::Key_Down);
      auto* list = window.findChild<QTreeView*>("lstFilters");
      if (!expect(list->currentIndex().row() == row, "the arrow keys reach the filter row")) {
        return finish();
      }
      const bool was_checked = ed.lstFilters.Item(row + 1).checked;
      Key(Qt::Key_Space);
      if (!expect(ed.lstFilters.Item(row + 1).checked != was_checked, "Space toggles the row")) {
        return finish();
      }
      if (was_checked) Key(Qt::Key_Space);  // the task wants it checked
      Key(Qt::Key_F2);
      if (!expect(FocusName() == "txtData1LV", "F2 opens the row's value")) return finish();
      Type("2500");
      Key(Qt::Key_Return);
      const int data1 = ed.lstFilters.ColumnPosition("Data1");
      if (!expect(ed.lstFilters.SubItem(row + 1, data1 - 1) == "2500", "the value is in its cell")) {
        return finish();
      }
      if (!expect(FocusName() == "lstFilters", "Enter hands the focus back to the list")) {
        return finish();
      }
      Key(Qt::Key_S, Qt::ControlModifier);
      QTest::qWait(200);
      auto* waiting = window.findChild<QLabel*>("lblUnwritten");
      waiting_shown = window.windowTitle().contains("saved, not yet written") && waiting &&
                      waiting->text().contains(kProfile);
      on_disk_after_save = dir.Read("acctviews.xml");
      Key(Qt::Key_K, Qt::AltModifier);  // OK
      QTest::qWait(200);
      finish();
    });
  };

  const std::string before = dir.Read("acctviews.xml");
  cvve::clsViewEdit component(env);
  component.AcctViewEdit();

  QVERIFY2(problems.isEmpty(), qPrintable(problems.join("; ")));
  QVERIFY2(fits, "the editor does not fit a 1024x768 screen without scrolling");
  QVERIFY2(waiting_shown, "after the save the window does not say the profile waits for OK");
  QCOMPARE(on_disk_after_save, before);  // the save alone writes nothing

  pugi::xml_document written;
  QVERIFY(written.load_file(views_path.c_str()));
  const pugi::xpath_node filter = written.select_node(
      (std::string("//Profile[Name='") + kProfile + "']/FilterChecks/Filter[Index='" +
       kFilterKey + "']")
          .c_str());
  QVERIFY2(filter, "the profile's filter is not in the views file");
  QCOMPARE(std::string(filter.node().child_value("Value")), std::string("True"));
  QCOMPARE(std::string(filter.node().child_value("Data1")), std::string("2500"));
}

QTEST_MAIN(KeyboardWalkthroughTest)
#include "keyboard_walkthrough_test.moc"
