// The launcher's GUI commands as a user starts them: without a display, with
// a bad folder, and under Xvfb, where the window is grabbed to a PNG.
#include <QDir>
#include <QDirIterator>
#include <QImage>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

class LauncherTest : public QObject {
  Q_OBJECT

 private slots:
  void WithoutDisplaySaysHowToRun();
  void BadFolderIsAClearError();
  void UnderXvfbTheWindowIsDrawn_data();
  void UnderXvfbTheWindowIsDrawn();
};

namespace {

struct Run {
  int code = -1;
  QString out, err;
};

Run Launch(const QStringList& arguments, const QProcessEnvironment& env, int timeout_ms = 60000,
           const QString& program = VIEWEDIT_PATH) {
  QProcess process;
  process.setProcessEnvironment(env);
  process.start(program, arguments);
  Run run;
  if (!process.waitForFinished(timeout_ms)) {
    process.kill();
    process.waitForFinished();
    run.err = "timed out";
    return run;
  }
  run.code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
  run.out = QString::fromUtf8(process.readAllStandardOutput());
  run.err = QString::fromUtf8(process.readAllStandardError());
  return run;
}

QProcessEnvironment WithoutDisplay() {
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) env.remove(name);
  return env;
}

// A copy of the demo file sets, so nothing a run does reaches data/demo.
bool CopyTree(const QString& from, const QString& to) {
  QDir source(from);
  if (!source.exists() || !QDir().mkpath(to)) return false;
  for (const QFileInfo& entry : source.entryInfoList(QDir::NoDotAndDotDot | QDir::AllEntries)) {
    const QString target = to + "/" + entry.fileName();
    if (entry.isDir() ? !CopyTree(entry.filePath(), target)
                      : !QFile::copy(entry.filePath(), target)) {
      return false;
    }
  }
  return true;
}

}  // namespace

void LauncherTest::WithoutDisplaySaysHowToRun() {
  for (const QStringList& arguments : {QStringList{}, QStringList{"inv"}}) {
    const Run run = Launch(arguments, WithoutDisplay());
    QCOMPARE(run.code, 3);
    QVERIFY2(run.err.contains("xvfb-run viewedit"), qPrintable(run.err));
    QVERIFY2(run.err.contains("viewedit script"), qPrintable(run.err));
  }
}

void LauncherTest::BadFolderIsAClearError() {
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert("QT_QPA_PLATFORM", "offscreen");
  const Run run = Launch({"acct", "--views-folder", "/no/such/folder"}, env);
  QCOMPARE(run.code, 2);
  QVERIFY2(run.err.contains("--views-folder: '/no/such/folder' is not a folder"),
           qPrintable(run.err));
  // No window was opened: the run ended at once, with nothing on stdout.
  QVERIFY(run.out.isEmpty());
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
  const QString data = work.filePath("demo");
  QVERIFY(CopyTree(CVVE_DEMO_DIR, data));
  const QString png = work.filePath("window.png");
  QStringList arguments{"-a",           "-s", "-screen 0 1600x1000x24", VIEWEDIT_PATH,
                        "--screenshot", png,  "--views-folder",         data};
  arguments += command;
  const Run run = Launch(arguments, WithoutDisplay(), 90000, xvfb);
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
  // The files were only read: closing by Cancel writes nothing.
  QDirIterator files(CVVE_DEMO_DIR, QDir::Files, QDirIterator::Subdirectories);
  int compared = 0;
  while (files.hasNext()) {
    const QString path = files.next();
    QFile copy(data + path.mid(QString(CVVE_DEMO_DIR).size()));
    QFile original(path);
    QVERIFY2(copy.open(QIODevice::ReadOnly) && original.open(QIODevice::ReadOnly),
             qPrintable(path));
    QVERIFY2(copy.readAll() == original.readAll(), qPrintable(path));
    ++compared;
  }
  QVERIFY(compared > 10);
  QVERIFY(QDir(data).entryList(QStringList{"*.bak"}, QDir::Files).isEmpty());
}

QTEST_MAIN(LauncherTest)
#include "launcher_test.moc"
