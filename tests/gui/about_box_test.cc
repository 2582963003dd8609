// The About box: the library's version in its text, and Help > About in the
// menu bar opening it over the window.
#include <QAction>
#include <QApplication>
#include <QMenuBar>
#include <QMessageBox>
#include <QTimer>
#include <QVBoxLayout>
#include <QtTest>

#include "cvviewedit/c_api.h"
#include "cvviewedit/host_settings.h"
#include "gui/about_box.h"
#include "gui/help_menu.h"

class AboutBoxTest : public QObject {
  Q_OBJECT

 private slots:
  void TextNamesTheLibrarysVersion();
  void HelpAboutOpensTheBox();
};

void AboutBoxTest::TextNamesTheLibrarysVersion() {
  const QString version = QString::fromLatin1(cvve::Version());
  QVERIFY(QRegularExpression(QStringLiteral("^\\d+\\.\\d+\\.\\d+$")).match(version).hasMatch());
  QCOMPARE(QString::fromLatin1(cvViewEdit_Version()), version);
  QVERIFY(cvve::gui::AboutText().contains(QStringLiteral("cvViewEdit ") + version));
}

void AboutBoxTest::HelpAboutOpensTheBox() {
  QWidget window;
  auto* layout = new QVBoxLayout(&window);
  layout->setMenuBar(cvve::gui::CreateHelpMenuBar(&window));
  window.show();
  auto* about = window.findChild<QAction*>(QStringLiteral("actAbout"));
  QVERIFY(about);

  QString shown;
  QTimer::singleShot(0, [&shown] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box) return;
    shown = box->objectName() + "|" + box->text();
    box->accept();
  });
  about->trigger();
  QVERIFY(shown.startsWith(QStringLiteral("aboutBox|")));
  QVERIFY(shown.contains(QString::fromLatin1(cvve::Version())));
}

QTEST_MAIN(AboutBoxTest)
#include "about_box_test.moc"
