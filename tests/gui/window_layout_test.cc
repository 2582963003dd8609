// How the editor window fits its screen, is reached by the keyboard and says
// what waits for OK: sizes, scrolling, the stretched filter captions, the
// remembered size and splitters, F2/Enter/Tab into the filter values, Ctrl+F,
// and the saved-not-yet-written notice.
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QSettings>
#include <QSplitter>
#include <QTemporaryDir>
#include <QTest>

#include "gui/units.h"
#include "gui/window_settings.h"
#include "gui/statement/statement_view.h"
#include "gui_fixture.h"

using cvve::guitest::GuiEditor;

class WindowLayoutTest : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();
  void FitsSmallScreensAndScrollsBelowThat();
  void ExtraWidthGoesToTheListsAndCaptions();
  void SizeAndSplittersAreRemembered();
  void KeyboardOpensFilterValuesAsTheMouseDoes();
  void CtrlFSearchesIgnoringCase();
  void SavedProfilesWaitForOkAndTheWindowSaysSo();

 private:
  QTemporaryDir settings_dir_;
};

namespace {

QScrollArea* Scroller(const GuiEditor& g) { return g.Find<QScrollArea>("scrContent"); }

bool Scrolls(const GuiEditor& g) {
  return Scroller(g)->horizontalScrollBar()->isVisible() ||
         Scroller(g)->verticalScrollBar()->isVisible();
}

void ResizeTo(GuiEditor& g, QSize size) {
  g.window->resize(size);
  QTRY_COMPARE(g.window->size(), size);
  g.Settle();
}

}  // namespace

void WindowLayoutTest::initTestCase() {
  // Never the user's own settings, whatever the environment says.
  QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings_dir_.path());
}

void WindowLayoutTest::FitsSmallScreensAndScrollsBelowThat() {
  GuiEditor g;
  g.Open("My Accounts");
  QVERIFY(g.window->minimumWidth() <= 1000 && g.window->minimumHeight() <= 700);
  const struct {
    QSize size;
    bool scrolls;
  } kSizes[] = {{{1000, 700}, false},
                {{1366, 740}, false},
                {{700, 500}, true},
                // What a first session opens at on the smallest common screen.
                {cvve::gui::FirstWindowSize({1024, 768}, g.window->UnscrolledSize()), false}};
  for (const auto& s : kSizes) {
    for (int mode : {0, -1}) {
      g->SetReportMode(static_cast<std::int16_t>(mode));
      ResizeTo(g, s.size);
      QVERIFY2(Scrolls(g) == s.scrolls, qPrintable(QString("%1x%2 mode %3")
                                                      .arg(s.size.width())
                                                      .arg(s.size.height())
                                                      .arg(mode)));
      // Scrolled or not, no control is hidden: OK and Cancel are still there.
      for (const char* name : {"cmdOK", "cmdCancel", "lstFilters", "cmbSort(1)", "cmbPageSize"}) {
        QVERIFY2(g.Find<QWidget>(name)->isVisible(), name);
      }
    }
    g->SetReportMode(0);
  }
}

void WindowLayoutTest::ExtraWidthGoesToTheListsAndCaptions() {
  GuiEditor g;
  g.Open("My Accounts");
  ResizeTo(g, {1000, 700});
  const int caption_small = g.filters->header()->sectionSize(0);
  const int list_small = g.Find<QListWidget>("lstAvailColumns")->width();
  const int statement_small = g.window->statementPane()->width();
  const int value_small = g.filters->header()->sectionSize(2);
  ResizeTo(g, {1900, 1050});
  QVERIFY(g.filters->header()->sectionSize(0) > caption_small + 300);
  QVERIFY(g.Find<QListWidget>("lstAvailColumns")->width() > list_small);
  QVERIFY(g.window->statementPane()->width() > statement_small + 500);
  // The value cells keep their widths; the list has no empty space after them.
  QCOMPARE(g.filters->header()->sectionSize(2), value_small);
  QVERIFY(g.filters->horizontalScrollBar()->maximum() == 0);

  // Clicks still land in the cell they are drawn in: the value box opens over
  // it, and a click in the widened caption opens nothing.
  QComboBox* first = g.window->valueEditor(1);
  g.ClickFilterCell(3, 2);
  QVERIFY(first->isVisible());
  QCOMPARE(first->pos(),
           g.filters->viewport()->mapTo(g.window->filterArea(), g.FilterCellRect(3, 2).topLeft()));
  g.Press(first, Qt::Key_Escape);
  const QRect caption = g.FilterCellRect(2, 0);
  QTest::mouseClick(g.filters->viewport(), Qt::LeftButton, {},
                    QPoint(caption.right() - 5, caption.center().y()));
  g.Settle();
  QVERIFY(!first->isVisible() && !g.window->valueEditor(2)->isVisible());
  QCOMPARE(g->lstFilters.SelectedItem(), 2);
}

void WindowLayoutTest::SizeAndSplittersAreRemembered() {
  const QSize size(780, 560);  // within the offscreen screen
  int profiles_width = 0;
  {
    GuiEditor g;
    g.Open();
    ResizeTo(g, size);
    auto* sides = g.Find<QSplitter>("splSides");
    QList<int> sizes = sides->sizes();
    sizes[1] += sizes[0] - 230;
    sizes[0] = 230;
    sides->setSizes(sizes);
    g.Settle();
    profiles_width = sides->sizes()[0];
    g.ClickButton("cmdCancel");
    QVERIFY(!g.window->isVisible());
  }
  QSettings written(QSettings::IniFormat, QSettings::UserScope, "cvviewedit", "cvviewedit");
  QVERIFY2(written.childGroups().contains("window"), qPrintable(written.fileName()));
  QCOMPARE(written.value("window/size").toSize(), size);

  GuiEditor again;
  again.Open();
  QCOMPARE(again.window->size(), size);
  QCOMPARE(again.Find<QSplitter>("splSides")->sizes()[0], profiles_width);
}

void WindowLayoutTest::KeyboardOpensFilterValuesAsTheMouseDoes() {
  GuiEditor g;
  g.Open("My Accounts");
  QComboBox* first = g.window->valueEditor(1);
  QComboBox* second = g.window->valueEditor(2);
  // Where the mouse opens the first value of the two-value row.
  g.ClickFilterCell(3, 2);
  const QRect by_mouse = first->geometry();
  g.Press(first, Qt::Key_Escape);

  // F2 opens the same box in the same place; Tab moves to the second value,
  // keeping the first; Enter keeps the second and hands the focus back.
  g.filters->setFocus();
  g.filters->setCurrentIndex(g.filters->model()->index(2, 0));
  g.Press(g.filters, Qt::Key_F2);
  QVERIFY(first->isVisible() && first->hasFocus());
  QCOMPARE(first->geometry(), by_mouse);
  QVERIFY(!g.filters->isEnabled());
  QTest::keyClicks(first->lineEdit(), "2026-03-01");
  g.Press(first->lineEdit(), Qt::Key_Tab);
  QVERIFY(!first->isVisible());
  QVERIFY(second->isVisible() && second->hasFocus());
  QCOMPARE(g->lstFilters.SubItem(3, 2), std::string("2026-03-01"));
  QTest::keyClicks(second->lineEdit(), "2026-04-30");
  g.Press(second->lineEdit(), Qt::Key_Return);
  QVERIFY(!second->isVisible() && g.filters->isEnabled() && g.filters->hasFocus());
  QCOMPARE(g->lstFilters.SubItem(3, 4), std::string("2026-04-30"));

  // Enter on a one-value row opens its value; Tab there leaves the box (the
  // text kept) for the next control, as a click elsewhere would.
  g.filters->setCurrentIndex(g.filters->model()->index(1, 0));
  g.Press(g.filters, Qt::Key_Return);
  QVERIFY(first->isVisible() && first->hasFocus());
  QTest::keyClicks(first->lineEdit(), "750");
  g.Press(first->lineEdit(), Qt::Key_Tab);
  QVERIFY(!first->isVisible() && !second->isVisible() && g.filters->isEnabled());
  QCOMPARE(g->lstFilters.SubItem(2, 2), std::string("750"));

  // A row without values opens nothing.
  g.filters->setFocus();
  g.filters->setCurrentIndex(g.filters->model()->index(0, 0));
  g.Press(g.filters, Qt::Key_F2);
  QVERIFY(!first->isVisible() && !second->isVisible() && g.filters->isEnabled());
  QVERIFY(!g->ProfileChanged);  // values alone never mark the profile
}

void WindowLayoutTest::CtrlFSearchesIgnoringCase() {
  GuiEditor g;
  g.Open();
  g.Press(g.window.get(), Qt::Key_F, Qt::ControlModifier);
  QLineEdit* search = g.window->searchBox();
  QVERIFY(search->hasFocus());
  QTest::keyClicks(search, "OLD ACC");
  g.Settle();
  QVERIFY(g->tvwViews.FindKey("SEARCH|Old Accounts") != cvve::ui::kNoNode);
  // No search in report mode: Ctrl+F leaves the focus where it is.
  g->SetReportMode(-1);
  g.filters->setFocus();
  g.Press(g.window.get(), Qt::Key_F, Qt::ControlModifier);
  QVERIFY(!search->hasFocus());
}

void WindowLayoutTest::SavedProfilesWaitForOkAndTheWindowSaysSo() {
  for (const char* close : {"cmdCancel", "cmdOK"}) {
    GuiEditor g;
    g.Open("My Accounts");
    const std::string before = g.ViewsFileText();
    auto* waiting = g.Find<QLabel>("lblUnwritten");
    QVERIFY(!g.window->windowTitle().contains("not yet written") && waiting->text().isEmpty());
    g.ClickCheck("chkTotals");
    g.ClickButton("cmdSaveProfile");
    // The classic notice, word for word; the window adds its own marks.
    QCOMPARE(g.recorded.NoticeText(), std::string("Your view profile has been saved."));
    QVERIFY2(g.window->windowTitle().contains("(saved, not yet written)"),
             qPrintable(g.window->windowTitle()));
    QVERIFY2(waiting->text().contains("My Accounts") && waiting->text().contains("views.xml"),
             qPrintable(waiting->text()));
    QCOMPARE(g.ViewsFileText(), before);
    g.ClickNode("Old Accounts");
    g.ClickCheck("chkTotals");
    g.ClickButton("cmdSaveProfile");
    QVERIFY2(waiting->text().contains("My Accounts, Old Accounts"), qPrintable(waiting->text()));

    g.ClickButton(close);
    QVERIFY(!g.window->isVisible());
    // Cancel drops the saves as it always has; OK writes them and the notice goes.
    QCOMPARE(g.ViewsFileText() == before, std::string(close) == "cmdCancel");
    if (std::string(close) == "cmdOK") {
      QVERIFY(waiting->text().isEmpty());
      QVERIFY(!g.window->windowTitle().contains("not yet written"));
    }
  }
}

QTEST_MAIN(WindowLayoutTest)
#include "window_layout_test.moc"
