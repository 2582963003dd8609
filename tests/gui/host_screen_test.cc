// The screen a host without its own gets from the library, in a host that
// runs a QApplication: the editor uses that application, opens its window on
// the host's settings and returns when the window closes (here by the
// auto-close test aid); report mode opens the custom reports.
#include <QApplication>
#include <QtTest>

#include "component/frm_acct_view_edit.h"
#include "component/screen_registry.h"
#include "cvviewedit/cls_view_edit.h"
#include "embed/host_screen.h"
#include "gui/qt_screen.h"

class HostScreenTest : public QObject {
  Q_OBJECT

 private slots:
  void init();
  void FactoryGivesTheQtScreenWithReports();
  void AutoCloseValues();
  void EntryCallsUseTheHostsApplication();
};

void HostScreenTest::init() { qunsetenv("CVVE_TEST_AUTOCLOSE_MS"); }

void HostScreenTest::FactoryGivesTheQtScreenWithReports() {
  std::unique_ptr<cvve::Screen> screen = cvve::MakeDefaultScreen(cvve::HostSettings::Load());
  auto* qt = dynamic_cast<cvve::gui::QtScreen*>(screen.get());
  QVERIFY(qt);
  QVERIFY(qt->reports());
  // The host's application is there: nothing to make for the call.
  QVERIFY(!screen->EnterCall());
}

void HostScreenTest::AutoCloseValues() {
  const struct {
    const char* value;
    int expected;
  } cases[] = {{nullptr, -1}, {"", -1}, {"0", 0}, {"250", 250}, {"600000", 600000},
               {"600001", -1}, {"-5", -1}, {"12ms", -1}, {"x", -1}};
  for (const auto& c : cases) {
    if (c.value) {
      qputenv("CVVE_TEST_AUTOCLOSE_MS", c.value);
    } else {
      qunsetenv("CVVE_TEST_AUTOCLOSE_MS");
    }
    QCOMPARE(cvve::embed::AutoCloseMilliseconds(), c.expected);
  }
}

void HostScreenTest::EntryCallsUseTheHostsApplication() {
  qputenv("CVVE_TEST_AUTOCLOSE_MS", "50");
  QApplication* host_app = qApp;
  cvve::HostSettings settings = cvve::HostSettings::Load();
  settings.users = {"Host User"};
  cvve::clsViewEdit editor(settings);
  QVERIFY(!editor.Editor());
  editor.AcctViewEdit();
  QVERIFY(editor.Editor());
  QVERIFY(!editor.Editor()->Visible());
  QCOMPARE(qApp, host_app);
  editor.InvViewEdit();
  QVERIFY(!editor.Editor()->Visible());
  editor.ReportEdit();
  QVERIFY(editor.Editor()->InReportMode());
  QVERIFY(!editor.Editor()->Visible());
}

QTEST_MAIN(HostScreenTest)
#include "host_screen_test.moc"
