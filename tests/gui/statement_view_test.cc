// The statement pane's text view against Qt's own plain text edit: the same
// line breaks for any text and width, the same pixels, the same scrolling by
// the keyboard, and selection, copy and what a screen reader reads.
#include <QAccessible>
#include <QAccessibleTextInterface>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFontDatabase>
#include <QImage>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <memory>
#include <random>

#include "gui/statement/statement_view.h"

using cvve::gui::StatementView;

class StatementViewTest : public QObject {
  Q_OBJECT

 private slots:
  void BreaksLinesWhereQtDoes_data();
  void BreaksLinesWhereQtDoes();
  void LooksLikeAPlainTextEdit_data();
  void LooksLikeAPlainTextEdit();
  void KeysScrollAsInAPlainTextEdit();
  void ScrollBarCountsEveryLine();
  void MouseSelectsAndKeysCopy();
  void ScreenReadersReadTheText();
};

namespace {

QFont Fixed() { return QFontDatabase::systemFont(QFontDatabase::FixedFont); }

// Statement-like text: words, names with underscores and dots, operators,
// quoted values, parentheses and commas, now and then a word longer than
// most lines and a run of spaces.
QString Statement(std::mt19937& random, int words, bool odd_characters) {
  static const char* const kPieces[] = {
      "SELECT", "a.ACCOUNT_NO,", "b.[Last Name],", "(x", "+", "y)", "'O''Brien'", "<>", "=",
      "IN", "('A',", "'B')", "WHERE", "AND", "-1.5", "x-y", "a/b", "NOT", "ORDER", "BY",
      "ASC,", "\"Quoted\"", "[Balance]>=0", "f(1,2)", "x;", "!", "?", "a_b_c_d_e",
      "VeryLongIdentifierWithoutAnyBreakOpportunityInsideItAtAllAndThenSomeMoreLetters",
      "ACCTS.AcctNum,CUST_INFO.LastName,CUST_INFO.FirstName,ACCTS.PmtAmt,ACCTS.NextDue,"
      "ACCTS.DaysLate,ACCTS.Balance,[x_y].[z_w],\"q_r\""};
  std::uniform_int_distribution<int> piece(0, std::size(kPieces) - 1);
  std::uniform_int_distribution<int> percent(0, 99);
  QString text;
  for (int i = 0; i < words; ++i) {
    if (i > 0) text += percent(random) < 5 ? QStringLiteral("   ") : QStringLiteral(" ");
    text += QString::fromLatin1(kPieces[piece(random)]);
    if (odd_characters && percent(random) < 10) text += QString::fromUtf8("é\tü");
    if (percent(random) < 4) text += '\n';
  }
  return text;
}

// Where Qt's own layout breaks each paragraph, as (start, length) pairs.
std::vector<std::pair<int, int>> QtLines(const QString& text, const QFont& font, int width) {
  std::vector<std::pair<int, int>> lines;
  int from = 0;
  for (const QString& paragraph : text.split('\n')) {
    QTextLayout layout(paragraph, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
      line.setLineWidth(width);
    }
    layout.endLayout();
    if (layout.lineCount() == 0) lines.emplace_back(from, 0);
    for (int i = 0; i < layout.lineCount(); ++i) {
      lines.emplace_back(from + layout.lineAt(i).textStart(), layout.lineAt(i).textLength());
    }
    from += static_cast<int>(paragraph.size()) + 1;
  }
  return lines;
}

QImage Grab(QWidget& widget) { return widget.grab().toImage(); }

// A view of `text` in the pane's font, shown at `size`.
std::unique_ptr<StatementView> Shown(const QString& text, QSize size) {
  auto view = std::make_unique<StatementView>();
  view->setFont(Fixed());
  view->setPlainText(text);
  view->resize(size);
  view->show();
  if (!QTest::qWaitForWindowExposed(view.get())) return nullptr;
  return view;
}

// A plain text edit as the window used to show its statement, and the view
// below it, both of `text` at `size`.
struct Pair {
  Pair(const QString& text, QSize size) : edit(&window), view(&window) {
    edit.setReadOnly(true);
    edit.setFont(Fixed());
    edit.setLineWrapMode(QPlainTextEdit::WidgetWidth);
    edit.setFocusPolicy(Qt::ClickFocus);
    edit.setPlainText(text);
    view.setFont(Fixed());
    view.setPlainText(text);
    edit.resize(size);
    view.resize(size);
    view.move(0, size.height() + 10);
    window.resize(size.width(), 2 * size.height() + 20);
    window.show();
  }
  QWidget window;
  QPlainTextEdit edit;
  StatementView view;
};

}  // namespace

void StatementViewTest::BreaksLinesWhereQtDoes_data() {
  QTest::addColumn<int>("seed");
  QTest::addColumn<bool>("odd");
  for (int seed = 1; seed <= 12; ++seed) {
    QTest::newRow(qPrintable(QString("ASCII %1").arg(seed))) << seed << false;
  }
  QTest::newRow("accents and tabs") << 99 << true;
}

void StatementViewTest::BreaksLinesWhereQtDoes() {
  QFETCH(int, seed);
  QFETCH(bool, odd);
  std::mt19937 random(static_cast<unsigned>(seed));
  const QString text = Statement(random, 400, odd);
  auto shown = Shown(text, QSize(200, 200));
  QVERIFY(shown);
  StatementView& view = *shown;
  // From a few characters a line to most of a screen, in steps that are not
  // multiples of a character's width.
  for (int width = 25; width < 1000; width += 37) {
    view.resize(width, 200);
    QApplication::processEvents();
    const int text_width = view.viewport()->width() - 8;
    const auto want = QtLines(text, view.font(), text_width);
    std::vector<std::pair<int, int>> got;
    for (const StatementView::Line& line : view.lines()) got.emplace_back(line.start, line.length);
    if (got != want) {
      std::size_t i = 0;
      while (i < got.size() && i < want.size() && got[i] == want[i]) ++i;
      const auto show = [&](const std::vector<std::pair<int, int>>& lines) {
        if (i >= lines.size()) return QString("(none)");
        return QString("%1+%2 \"%3\"")
            .arg(lines[i].first)
            .arg(lines[i].second)
            .arg(text.mid(lines[i].first, lines[i].second));
      };
      QFAIL(qPrintable(QString("width %1, line %2: got %3, Qt %4")
                           .arg(text_width)
                           .arg(i)
                           .arg(show(got), show(want))));
    }
  }
}

void StatementViewTest::LooksLikeAPlainTextEdit_data() {
  QTest::addColumn<int>("width");
  QTest::addColumn<int>("scroll");       // the plain text edit's scroll bar
  QTest::addColumn<int>("select_from");  // -1: no selection
  QTest::addColumn<int>("select_to");
  QTest::newRow("top") << 420 << 0 << -1 << -1;
  QTest::newRow("narrow") << 173 << 0 << -1 << -1;
  QTest::newRow("a selection over lines") << 420 << 0 << 30 << 260;
  QTest::newRow("a selection within a line") << 300 << 0 << 20 << 31;
  QTest::newRow("scrolled far") << 388 << 15 << -1 << -1;
  QTest::newRow("narrow, scrolled far") << 173 << 60 << -1 << -1;
}

void StatementViewTest::LooksLikeAPlainTextEdit() {
  QFETCH(int, width);
  QFETCH(int, scroll);
  QFETCH(int, select_from);
  QFETCH(int, select_to);
  std::mt19937 random(7);
  const QString text = Statement(random, 260, false);
  Pair pair(text, QSize(width, 130));
  QVERIFY(QTest::qWaitForWindowExposed(&pair.window));
  QPlainTextEdit& edit = pair.edit;
  StatementView& view = pair.view;
  QCOMPARE(view.viewport()->size(), edit.viewport()->size());
  QCOMPARE(view.verticalScrollBar()->pageStep(), edit.verticalScrollBar()->pageStep());
  if (select_from >= 0) {
    QTextCursor cursor(edit.document());
    cursor.setPosition(select_from);
    cursor.setPosition(select_to, QTextCursor::KeepAnchor);
    edit.setTextCursor(cursor);
    view.setSelection(select_from, select_to);
    QCOMPARE(view.selectedText(), cursor.selectedText().replace(QChar::ParagraphSeparator, '\n'));
  }
  // The edit counts lines only of the paragraphs it has laid out; the view
  // is brought to the line the edit shows at its top.
  edit.verticalScrollBar()->setValue(scroll);
  QApplication::processEvents();
  const int top = edit.cursorForPosition(QPoint(8, 6)).position();
  int line = 0;
  while (line + 1 < static_cast<int>(view.lines().size()) && view.lines()[line + 1].start <= top) {
    ++line;
  }
  view.verticalScrollBar()->setValue(line);
  QCOMPARE(view.firstVisibleLine(), line);
  QVERIFY(scroll == 0 || line > 0);
  QApplication::processEvents();
  const QImage want = Grab(*edit.viewport());
  const QImage got = Grab(*view.viewport());
  QCOMPARE(got.size(), want.size());
  // Scrolled into a paragraph, the edit places lines at fractions of a
  // pixel that round a pixel up or down; the view at whole pixels.
  bool same = got == want;
  for (int dy : {-1, 1}) {
    if (same || scroll == 0) break;
    const int h = got.height() - 1;
    same = got.copy(0, std::max(0, dy), got.width(), h) ==
           want.copy(0, std::max(0, -dy), want.width(), h);
  }
  if (!same) {
    want.save(QDir::temp().filePath("statement_want.png"));
    got.save(QDir::temp().filePath("statement_got.png"));
    QFAIL("the pixels differ (statement_want.png, statement_got.png in the temporary folder)");
  }
}

void StatementViewTest::KeysScrollAsInAPlainTextEdit() {
  // By line, by page and to either end, as in a plain text edit whose
  // paragraphs are short enough that it counts every line.
  QString text;
  for (int i = 0; i < 120; ++i) text += QString("line %1 of the statement\n").arg(i);
  Pair pair(text, QSize(350, 150));
  QVERIFY(QTest::qWaitForWindowExposed(&pair.window));
  QPlainTextEdit& edit = pair.edit;
  StatementView& view = pair.view;
  QCOMPARE(view.verticalScrollBar()->maximum(), edit.verticalScrollBar()->maximum());
  const struct {
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
  } kKeys[] = {{Qt::Key_PageDown, {}}, {Qt::Key_Down, {}},         {Qt::Key_Space, {}},
               {Qt::Key_Up, {}},       {Qt::Key_End, {}},          {Qt::Key_PageUp, {}},
               {Qt::Key_Space, Qt::ShiftModifier}, {Qt::Key_Home, {}}, {Qt::Key_Down, {}}};
  for (const auto& key : kKeys) {
    QTest::keyClick(&edit, key.key, key.modifiers);
    QTest::keyClick(&view, key.key, key.modifiers);
    QVERIFY2(view.verticalScrollBar()->value() == edit.verticalScrollBar()->value(),
             qPrintable(QString("after key %1: %2, a plain text edit %3")
                            .arg(key.key)
                            .arg(view.verticalScrollBar()->value())
                            .arg(edit.verticalScrollBar()->value())));
  }
  QVERIFY(view.verticalScrollBar()->value() > 0);
}

void StatementViewTest::ScrollBarCountsEveryLine() {
  // A paragraph of thousands of characters: the scroll bar reaches its last
  // line, and a narrower pane has more lines.
  std::mt19937 random(5);
  QString text = Statement(random, 900, false);
  text.replace('\n', ' ');
  auto shown = Shown(text, QSize(400, 150));
  QVERIFY(shown);
  StatementView& view = *shown;
  const int wide_lines = static_cast<int>(view.lines().size());
  QVERIFY(wide_lines > 50);
  const int last = static_cast<int>(text.size()) - 1;
  // At the bottom the last character is shown; a line further up it is not.
  auto last_shown = [&] {
    return view.viewport()->rect().contains(view.characterRect(last));
  };
  view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
  QVERIFY(last_shown());
  view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() - 1);
  QVERIFY(!last_shown());
  view.resize(250, 150);
  QApplication::processEvents();
  QVERIFY(static_cast<int>(view.lines().size()) > wide_lines);
  view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
  QVERIFY(last_shown());
  // The lines cover the text once, in order.
  int at = 0;
  for (const auto& line : view.lines()) {
    QCOMPARE(line.start, at);
    at += line.length;
  }
  QCOMPARE(at, static_cast<int>(text.size()));
}

void StatementViewTest::MouseSelectsAndKeysCopy() {
  const QString text = "SELECT alpha, beta_gamma FROM t\nWHERE x = 'long value' AND y > 2";
  auto shown = Shown(text, QSize(500, 120));
  QVERIFY(shown);
  StatementView& view = *shown;
  QWidget* port = view.viewport();
  // A drag from the middle of "alpha" to the middle of "long".
  const int from = static_cast<int>(text.indexOf("alpha")) + 2;
  const int to = static_cast<int>(text.indexOf("long")) + 2;
  const QPoint start = view.characterRect(from).topLeft() + QPoint(1, 2);
  const QPoint end = view.characterRect(to).topLeft() + QPoint(1, 2);
  QCOMPARE(view.positionAt(start), from);
  QCOMPARE(view.positionAt(end), to);
  QTest::mousePress(port, Qt::LeftButton, {}, start);
  QTest::mouseMove(port, end);
  QTest::mouseRelease(port, Qt::LeftButton, {}, end);
  QCOMPARE(view.selectedText(), text.mid(from, to - from));
  // Shift and a click moves the selection's far end.
  QTest::mouseClick(port, Qt::LeftButton, Qt::ShiftModifier,
                    view.characterRect(from + 3).topLeft() + QPoint(1, 2));
  QCOMPARE(view.selectedText(), text.mid(from, 3));
  // A double click takes the word.
  QTest::mouseDClick(port, Qt::LeftButton, {}, view.characterRect(from + 9).center());
  QCOMPARE(view.selectedText(), QString("beta_gamma"));
  QTest::keySequence(&view, QKeySequence::Copy);
  QCOMPARE(QApplication::clipboard()->text(), QString("beta_gamma"));
  QTest::keySequence(&view, QKeySequence::SelectAll);
  QTest::keySequence(&view, QKeySequence::Copy);
  QCOMPARE(QApplication::clipboard()->text(), text);
  // New text drops the selection.
  view.setPlainText("SELECT 1");
  QCOMPARE(view.selectedText(), QString());
  QTest::keySequence(&view, QKeySequence::Copy);
  QCOMPARE(QApplication::clipboard()->text(), text);
}

void StatementViewTest::ScreenReadersReadTheText() {
  const QString text = "SELECT a, b\nFROM t WHERE c = 1";
  auto shown = Shown(text, QSize(300, 100));
  QVERIFY(shown);
  StatementView& view = *shown;
  QAccessibleInterface* face = QAccessible::queryAccessibleInterface(&view);
  QVERIFY(face);
  QCOMPARE(face->role(), QAccessible::EditableText);
  QVERIFY(face->state().readOnly);
  QVERIFY(face->state().multiLine);
  QCOMPARE(face->text(QAccessible::Value), text);
  QAccessibleTextInterface* reading = face->textInterface();
  QVERIFY(reading);
  QCOMPARE(reading->characterCount(), static_cast<int>(text.size()));
  QCOMPARE(reading->text(12, 16), QString("FROM"));
  int start = 0, end = 0;
  QCOMPARE(reading->textAtOffset(13, QAccessible::WordBoundary, &start, &end), QString("FROM"));
  QCOMPARE(reading->textAtOffset(14, QAccessible::LineBoundary, &start, &end),
           QString("FROM t WHERE c = 1"));
  // A selection made by the reader is the view's, and back.
  reading->setSelection(0, 7, 8);
  QCOMPARE(view.selectedText(), QString("a"));
  QCOMPARE(reading->selectionCount(), 1);
  view.setSelection(2, 0);
  reading->selection(0, &start, &end);
  QCOMPARE(std::make_pair(start, end), std::make_pair(0, 2));
  QCOMPARE(reading->cursorPosition(), 0);
  // Characters are where they are drawn: the point of one leads back to it.
  const QRect where = reading->characterRect(14);
  QVERIFY(where.isValid());
  QCOMPARE(reading->offsetAtPoint(where.topLeft() + QPoint(1, 1)), 14);
}

QTEST_MAIN(StatementViewTest)
#include "statement_view_test.moc"
