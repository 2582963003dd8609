// The launcher's GUI commands as a user starts them: without a display, with
// a bad folder, and under Xvfb, where the window is grabbed to a PNG.
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

class LauncherTest : public QObject {
  Q_OBJECT

 private slots:
  void RefusalsSayWhy();
  void VersionHelpAndRanges();
  void UnderXvfbTheWindowIsDrawn_data();
  void UnderXvfbTheWindowIsDrawn();
};

namespace {

struct Run {
  int code = -1;  // -2: crashed or timed out
  QString out, err;
};

Run Launch(const QString& program, const QStringList& arguments, bool display) {
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) env.remove(name);
  if (display) env.insert("QT_QPA_PLATFORM", "offscreen");
  QProcess process;
  process.setProcessEnvironment(env);
  process.start(program, arguments);
  if (!process.waitForFinished(90000)) process.kill();
  process.waitForFinished();
  const bool ended = process.exitStatus() == QProcess::NormalExit;
  return {ended ? process.exitCode() : -2, QString::fromUtf8(process.readAllStandardOutput()),
          QString::fromUtf8(process.readAllStandardError())};
}

}  // namespace

void LauncherTest::RefusalsSayWhy() {
  const struct {
    QStringList arguments;
    bool display;
    int code;
    QStringList messages;
  } kRuns[] = {
      {{}, false, 3, {"xvfb-run viewedit", "viewedit script"}},
      {{"inv"}, false, 3, {"xvfb-run viewedit", "viewedit script"}},
      {{"acct", "--views-folder", "/no/such/folder"},
       true,
       2,
       {"--views-folder: '/no/such/folder' is not a folder"}},
  };
  for (const auto& r : kRuns) {
    const Run run = Launch(VIEWEDIT_PATH, r.arguments, r.display);
    QCOMPARE(run.code, r.code);
    for (const QString& message : r.messages)
      QVERIFY2(run.err.contains(message), qPrintable(run.err));
    QVERIFY(run.out.isEmpty());  // no window was opened: the run ended at once
  }
}

void LauncherTest::VersionHelpAndRanges() {
  const QString footer = "Without a sub-command viewedit opens the account views";
  const Run version = Launch(VIEWEDIT_PATH, {"--version"}, false);
  QCOMPARE(version.code, 0);
  QVERIFY2(QRegularExpression("^viewedit \\(cvViewEdit\\) \\d+\\.\\d+\\.\\d+\n$")
               .match(version.out)
               .hasMatch(),
           qPrintable(version.out));

  const Run top = Launch(VIEWEDIT_PATH, {"--help"}, false);
  QCOMPARE(top.code, 0);
  QVERIFY(top.out.contains(footer));
  // Each sub-command's help is its own: its description, not the top's text.
  const struct {
    const char* command;
    const char* own;
  } kHelps[] = {{"acct", "account views"}, {"inv", "inventory views"},
                {"eod", "end-of-day views"}, {"edit", "VIEWS DEFAULTS SETUP"},
                {"report", "--pdf"},         {"script", "FILE"},
                {"sql", "--profile"},        {"demo-db", "--accounts"}};
  for (const auto& h : kHelps) {
    const Run help = Launch(VIEWEDIT_PATH, {h.command, "--help"}, false);
    QCOMPARE(help.code, 0);
    QVERIFY2(help.out.contains(h.own), qPrintable(help.out));
    QVERIFY2(!help.out.contains(footer), qPrintable(help.out));
  }

  // A number out of range names the range in plain figures.
  const Run negative = Launch(VIEWEDIT_PATH, {"demo-db", "--accounts", "-5"}, false);
  QCOMPARE(negative.code, 2);
  QVERIFY2(negative.err.contains("0") && negative.err.contains("10000000"),
           qPrintable(negative.err));
  QVERIFY2(!negative.err.contains("e+"), qPrintable(negative.err));
}

void LauncherTest::UnderXvfbTheWindowIsDrawn_data() {
  QTest::addColumn<QStringList>("command");
  QTest::newRow("account views") << QStringList{};
  QTest::newRow("inventory views") << QStringList{"inv"};
  QTest::newRow("any file set") << QStringList{"edit", "acctviews.xml", "acctviewsdef.xml",
                                               "viewsetup.xml"};
  QTest::newRow("report mode") << QStringList{"report"};
}

void LauncherTest::UnderXvfbTheWindowIsDrawn() {
  QFETCH(QStringList, command);
  const QString xvfb = QStandardPaths::findExecutable("xvfb-run");
  if (xvfb.isEmpty()) QSKIP("xvfb-run is not installed: no X server to run the launcher under");
  QTemporaryDir work;
  QVERIFY(work.isValid());
  // A copy of the demo file sets, so nothing a run does reaches data/demo.
  const QString data = work.filePath("demo");
  QCOMPARE(QProcess::execute("cp", {"-r", CVVE_DEMO_DIR, data}), 0);
  const QString png = work.filePath("window.png");
  QStringList arguments{"-a",           "-s", "-screen 0 1600x1000x24", VIEWEDIT_PATH,
                        "--screenshot", png,  "--views-folder",         data};
  arguments += command;
  const Run run = Launch(xvfb, arguments, false);
  QVERIFY2(run.code == 0, qPrintable(run.err));

  QImage image(png);
  QVERIFY2(!image.isNull(), "no screenshot written");
  QVERIFY(image.width() >= 1000 && image.height() >= 700);
  // Not blank: a drawn window has many colours (text, icons, the yellow cells).
  QSet<QRgb> colours;
  for (int y = 0; y < image.height(); y += 3) {
    for (int x = 0; x < image.width(); x += 3) colours.insert(image.pixel(x, y));
  }
  QVERIFY2(colours.size() > 50, qPrintable(QString::number(colours.size())));
  // The files were only read: closing by Cancel writes nothing, no .bak either.
  QCOMPARE(QProcess::execute("diff", {"-rq", CVVE_DEMO_DIR, data}), 0);
}

QTEST_MAIN(LauncherTest)
#include "launcher_test.moc"
