#include "gui/statement/statement_view.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFontMetricsF>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPaintEvent>
#include <QScrollBar>
#include <QStyle>
#include <QTextBoundaryFinder>
#include <QToolTip>
#include <algorithm>
#include <cmath>

namespace cvve::gui {

namespace {

// A plain text edit's document keeps this margin around its text.
constexpr int kMargin = 4;

bool PrintableAscii(QChar c) { return c.unicode() >= 0x20 && c.unicode() < 0x7F; }

int To64(qreal pixels) { return static_cast<int>(std::lround(pixels * 64)); }

}  // namespace

std::vector<StatementView::Line> StatementView::WrapFixedWidth(
    const QString& text, int from, int to, int advance, int width,
    const std::function<int(QChar)>& overhang) {
  std::vector<Line> lines;
  if (from >= to) {
    lines.push_back({from, 0});
    return lines;
  }
  const QStringView paragraph = QStringView(text).mid(from, to - from);
  const int length = static_cast<int>(paragraph.size());
  // Where the line breaking rules allow a line to end (the rules Qt's own
  // layout reads); a word also ends where spaces begin.
  std::vector<char> breaks(static_cast<std::size_t>(length) + 1, 0);
  QTextBoundaryFinder finder(QTextBoundaryFinder::Line, paragraph.data(), length);
  for (qsizetype at = finder.toNextBoundary(); at > 0; at = finder.toNextBoundary()) {
    breaks[static_cast<std::size_t>(at)] = 1;
  }
  auto space = [&](int i) { return paragraph[i] == QLatin1Char(' '); };
  auto width_of = [&](int start, int end) {
    return static_cast<long long>(end - start) * advance + overhang(paragraph[end - 1]);
  };
  int start = 0;
  while (start < length) {
    int end = start;
    bool has_word = false;
    for (int p = start;;) {
      int q = p;
      while (q < length && space(q)) ++q;
      // Spaces at the end of a line stay on it and take no room.
      if (q == length) {
        end = length;
        break;
      }
      int r = q + 1;
      while (r < length && !space(r) && !breaks[static_cast<std::size_t>(r)]) ++r;
      if (width_of(start, r) > width) {
        if (has_word) {
          end = q;
          break;
        }
        // Spaces wider than the line fill it on their own.
        if (static_cast<long long>(q - start) * advance > width) {
          end = q;
          break;
        }
        // A first word wider than the line breaks anywhere: as many
        // characters as fit, at least one.
        int k = q + 1;
        while (k < r && width_of(start, k + 1) <= width) ++k;
        // A word that ended there keeps its trailing spaces.
        while (k == r && r < length && space(r)) k = ++r;
        end = k;
        break;
      }
      has_word = true;
      p = end = r;
    }
    lines.push_back({from + start, end - start});
    start = end;
  }
  return lines;
}

// What a screen reader reads: a read-only, multi-line, selectable text, as
// it reads a plain text edit.
class StatementAccessible : public QAccessibleWidget, public QAccessibleTextInterface {
 public:
  explicit StatementAccessible(StatementView* view)
      : QAccessibleWidget(view, QAccessible::EditableText) {}

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
  }
  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.readOnly = true;
    state.multiLine = true;
    state.selectableText = true;
    return state;
  }
  QString text(QAccessible::Text t) const override {
    if (t == QAccessible::Value) return View()->toPlainText();
    return QAccessibleWidget::text(t);
  }

  void selection(int index, int* start, int* end) const override {
    *start = *end = 0;
    if (index == 0 && selectionCount() == 1) {
      *start = View()->selectionStart();
      *end = View()->selectionEnd();
    }
  }
  int selectionCount() const override {
    return View()->selectionStart() < View()->selectionEnd() ? 1 : 0;
  }
  void addSelection(int start, int end) override { setSelection(0, start, end); }
  void removeSelection(int index) override {
    if (index == 0) View()->setSelection(View()->cursor_, View()->cursor_);
  }
  void setSelection(int, int start, int end) override {
    View()->setSelection(start, end);
    View()->ShowRange(start, end);
  }
  int cursorPosition() const override { return View()->cursorPosition(); }
  void setCursorPosition(int position) override {
    View()->setSelection(position, position);
    View()->ShowRange(position, position);
  }
  QString text(int start, int end) const override {
    return View()->toPlainText().mid(start, std::max(0, end - start));
  }
  int characterCount() const override { return static_cast<int>(View()->toPlainText().size()); }
  QRect characterRect(int offset) const override {
    const QRect rect = View()->characterRect(offset);
    return QRect(View()->viewport()->mapToGlobal(rect.topLeft()), rect.size());
  }
  int offsetAtPoint(const QPoint& point) const override {
    const QPoint local = View()->viewport()->mapFromGlobal(point);
    if (!View()->viewport()->rect().contains(local)) return -1;
    return View()->positionAt(local);
  }
  void scrollToSubstring(int start, int end) override { View()->ShowRange(start, end); }
  QString attributes(int offset, int* start, int* end) const override {
    // One font and colour throughout.
    *start = 0;
    *end = characterCount();
    if (offset < 0 || offset > characterCount()) *start = *end = -1;
    return {};
  }

 private:
  StatementView* View() const { return static_cast<StatementView*>(widget()); }
};

namespace {
QAccessibleInterface* AccessibleFor(const QString&, QObject* object) {
  if (auto* view = qobject_cast<StatementView*>(object)) return new StatementAccessible(view);
  return nullptr;
}
}  // namespace

StatementView::StatementView(QWidget* parent) : QAbstractScrollArea(parent) {
  static const bool accessible = (QAccessible::installFactory(&AccessibleFor), true);
  static_cast<void>(accessible);
  viewport()->setBackgroundRole(QPalette::Base);
  viewport()->setAutoFillBackground(true);
  viewport()->setCursor(Qt::IBeamCursor);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFocusPolicy(Qt::ClickFocus);
  setAttribute(Qt::WA_InputMethodEnabled, false);
  FontChanged();
}

void StatementView::FontChanged() {
  const QFontMetricsF metrics(font());
  // As a plain text layout counts a line: its height with the leading.
  line_height_ = static_cast<int>(std::ceil(metrics.height() + std::max<qreal>(0, metrics.leading())));
  ascent_ = static_cast<int>(metrics.ascent());
  advance_64_ = To64(metrics.horizontalAdvance(QLatin1Char(' ')));
  for (char16_t c = 0x20; c < 0x7F; ++c) {
    const QChar ch(c);
    if (To64(metrics.horizontalAdvance(ch)) != advance_64_) advance_64_ = 0;
    overhang_64_[c] = std::max(0, To64(-metrics.rightBearing(ch)));
  }
  laid_out_width_ = -1;
  Relayout();
}

int StatementView::TextWidth() const { return viewport()->width() - 2 * kMargin; }

void StatementView::setPlainText(const QString& text) {
  QString normal = text;
  // Line ends as a document reads them.
  normal.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  for (QChar& c : normal) {
    if (c == QLatin1Char('\r') || c == QChar::ParagraphSeparator || c == QChar::LineSeparator) {
      c = QLatin1Char('\n');
    }
  }
  if (normal == text_) return;
  text_ = std::move(normal);
  anchor_ = cursor_ = 0;
  marks_.clear();
  laid_out_width_ = -1;
  Relayout();
  verticalScrollBar()->setValue(0);
  viewport()->update();
  if (QAccessible::isActive()) {
    QAccessibleTextUpdateEvent changed(this, 0, QString(), text_);
    QAccessible::updateAccessibility(&changed);
  }
}

void StatementView::setMarks(const std::vector<Mark>& marks) {
  marks_ = marks;
  viewport()->update();
}

void StatementView::Relayout() {
  const int width = TextWidth();
  if (width == laid_out_width_) return;
  laid_out_width_ = width;
  lines_.clear();
  const int width_64 = std::max(1, width) * 64;
  int from = 0;
  while (true) {
    int to = static_cast<int>(text_.indexOf(QLatin1Char('\n'), from));
    if (to < 0) to = static_cast<int>(text_.size());
    LayoutParagraph(from, to, width_64);
    if (to >= text_.size()) break;
    from = to + 1;
  }
  UpdateScrollBars();
}

void StatementView::LayoutParagraph(int from, int to, int width_64) {
  bool counted = advance_64_ > 0;
  for (int i = from; counted && i < to; ++i) counted = PrintableAscii(text_[i]);
  if (counted) {
    const auto lines = WrapFixedWidth(text_, from, to, advance_64_, width_64,
                                      [this](QChar c) { return overhang_64_[c.unicode() & 0x7F]; });
    lines_.insert(lines_.end(), lines.begin(), lines.end());
    return;
  }
  // Anything else is laid out by Qt, once, as a plain text edit lays it out.
  QTextLayout layout(text_.mid(from, to - from), font());
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout.setTextOption(option);
  layout.beginLayout();
  while (true) {
    QTextLine line = layout.createLine();
    if (!line.isValid()) break;
    line.setLineWidth(width_64 / 64.0);
  }
  layout.endLayout();
  if (layout.lineCount() == 0) lines_.push_back({from, 0});
  for (int i = 0; i < layout.lineCount(); ++i) {
    const QTextLine line = layout.lineAt(i);
    lines_.push_back({from + line.textStart(), line.textLength()});
  }
}

void StatementView::UpdateScrollBars() {
  // Whole lines, as a plain text edit scrolls: a page is the lines that fit
  // above the bottom margin, and the last page ends on the last line.
  const int page = std::max(1, (viewport()->height() - 2 * kMargin - 1) / LineHeight());
  QScrollBar* bar = verticalScrollBar();
  bar->setRange(0, std::max(0, static_cast<int>(lines_.size()) - page));
  bar->setPageStep(page);
  bar->setSingleStep(1);
}

int StatementView::firstVisibleLine() const { return verticalScrollBar()->value(); }

int StatementView::LineTop(int row) const {
  // The margin above the text shows only at the top; scrolled, the first
  // line shown starts at the pane's edge.
  const int first = firstVisibleLine();
  return (first == 0 ? kMargin : 0) + (row - first) * LineHeight();
}

int StatementView::LineOf(int position) const {
  // The last line starting at or before the position.
  auto it = std::upper_bound(lines_.begin(), lines_.end(), position,
                             [](int p, const Line& line) { return p < line.start; });
  return it == lines_.begin() ? 0 : static_cast<int>(it - lines_.begin()) - 1;
}

int StatementView::positionAt(const QPoint& point) const {
  if (lines_.empty()) return 0;
  const int y = point.y() - LineTop(firstVisibleLine());
  const int row = std::clamp(firstVisibleLine() + (y < 0 ? -1 : y / LineHeight()), 0,
                             static_cast<int>(lines_.size()) - 1);
  const Line& line = lines_[static_cast<std::size_t>(row)];
  if (y < 0 && row == 0) return 0;
  QTextLayout layout(text_.mid(line.start, line.length), font());
  layout.beginLayout();
  QTextLine l = layout.createLine();
  layout.endLayout();
  if (!l.isValid()) return line.start;
  const int column = l.xToCursor(point.x() - kMargin, QTextLine::CursorBetweenCharacters);
  return line.start + std::clamp(column, 0, line.length);
}

QRect StatementView::characterRect(int position) const {
  if (lines_.empty()) return {};
  const int row = LineOf(position);
  const Line& line = lines_[static_cast<std::size_t>(row)];
  QTextLayout layout(text_.mid(line.start, line.length), font());
  layout.beginLayout();
  QTextLine l = layout.createLine();
  layout.endLayout();
  const int column = std::clamp(position - line.start, 0, line.length);
  const qreal x = l.isValid() ? l.cursorToX(column) : 0;
  const qreal next = l.isValid() && column < line.length ? l.cursorToX(column + 1) : x;
  const int top = LineTop(row);
  return QRect(kMargin + static_cast<int>(x), top, std::max(1, static_cast<int>(next - x)),
               LineHeight());
}

void StatementView::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  const QRect dirty = event->rect();
  const int first = firstVisibleLine();
  const QPalette& pal = palette();
  const QPalette::ColorGroup group = isActiveWindow() ? QPalette::Active : QPalette::Inactive;
  const int sel_start = selectionStart();
  const int sel_end = selectionEnd();
  for (int row = first + std::max(0, (dirty.top() - LineTop(first)) / LineHeight());
       row < static_cast<int>(lines_.size()); ++row) {
    const int top = LineTop(row);
    if (top > dirty.bottom()) break;
    const Line& line = lines_[static_cast<std::size_t>(row)];
    const int end = line.start + line.length;
    // The line's own layout with the selection and the marks over it.
    QList<QTextLayout::FormatRange> ranges;
    QBrush whole_line;  // a line selected whole
    int whole_width = 0;  // its characters highlighted
    for (const Mark& mark : marks_) {
      const int a = std::max(mark.start, line.start);
      const int b = std::min(mark.start + mark.length, end);
      if (a >= b) continue;
      QTextLayout::FormatRange range;
      range.start = a - line.start;
      range.length = b - a;
      range.format.setUnderlineStyle(QTextCharFormat::WaveUnderline);
      range.format.setUnderlineColor(QColor(0xC0, 0x10, 0x10));
      range.format.setBackground(QColor(0xFF, 0xE0, 0xE0));
      ranges << range;
    }
    if (sel_start < sel_end && sel_start < end && sel_end > line.start) {
      // As a paragraph's layout draws a selection: the line it starts on
      // highlighted to the pane's edge when it goes on past the line, a
      // line it covers whole to the end of its text and trailing spaces,
      // the line it ends on to where it ends.
      const bool whole = sel_start < line.start && sel_end > end;
      const int a = std::max(sel_start, line.start);
      // The spaces a wrapped line ends with are not highlighted.
      int ink_end = end;
      if (end < text_.size() && text_[end] != QLatin1Char('\n')) {
        while (ink_end > line.start && text_[ink_end - 1] == QLatin1Char(' ')) --ink_end;
      }
      // A selection through a paragraph's line feed shows it as a space.
      const bool feed = sel_end > end && end < text_.size() && text_[end] == QLatin1Char('\n');
      const int b = feed ? end + 1 : std::max(a, std::min(sel_end, ink_end));
      whole_width = ink_end - line.start;
      QTextLayout::FormatRange range;
      range.start = a - line.start;
      range.length = b - a;
      if (whole) {
        whole_line = pal.brush(group, QPalette::Highlight);
      } else {
        range.format.setBackground(pal.brush(group, QPalette::Highlight));
      }
      range.format.setForeground(pal.brush(group, QPalette::HighlightedText));
      ranges << range;
    }
    QTextLayout layout(text_.mid(line.start, line.length), font());
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine l = layout.createLine();
    if (l.isValid()) {
      l.setLeadingIncluded(true);
      l.setLineWidth(std::max(0, TextWidth()));
      l.setPosition(QPointF(0, 0));
    }
    layout.endLayout();
    if (whole_line.style() != Qt::NoBrush && l.isValid()) {
      painter.fillRect(QRectF(kMargin, top, l.cursorToX(whole_width), l.height()), whole_line);
    }
    painter.setPen(pal.color(group, QPalette::Text));
    layout.draw(&painter, QPointF(kMargin, top), ranges);
  }
}

void StatementView::resizeEvent(QResizeEvent* event) {
  QAbstractScrollArea::resizeEvent(event);
  Relayout();
  UpdateScrollBars();
}

void StatementView::changeEvent(QEvent* event) {
  QAbstractScrollArea::changeEvent(event);
  if (event->type() == QEvent::FontChange) FontChanged();
  if (event->type() == QEvent::ActivationChange || event->type() == QEvent::PaletteChange) {
    viewport()->update();
  }
}

void StatementView::scrollContentsBy(int, int) { viewport()->update(); }

void StatementView::setSelection(int anchor, int cursor) {
  const int size = static_cast<int>(text_.size());
  const int old_start = selectionStart();
  const int old_end = selectionEnd();
  anchor_ = std::clamp(anchor, 0, size);
  cursor_ = std::clamp(cursor, 0, size);
  SelectionChanged(old_start, old_end);
}

void StatementView::SelectionChanged(int old_start, int old_end) {
  if (old_start == selectionStart() && old_end == selectionEnd()) return;
  viewport()->update();
  if (QAccessible::isActive()) {
    QAccessibleTextSelectionEvent selected(this, selectionStart(), selectionEnd());
    selected.setCursorPosition(cursor_);
    QAccessible::updateAccessibility(&selected);
  }
#ifndef QT_NO_CLIPBOARD
  // As text views do on X11: the selection is the primary selection.
  if (QClipboard* clipboard = QApplication::clipboard();
      clipboard && clipboard->supportsSelection() && selectionStart() < selectionEnd()) {
    clipboard->setText(selectedText(), QClipboard::Selection);
  }
#endif
}

QString StatementView::selectedText() const {
  return text_.mid(selectionStart(), selectionEnd() - selectionStart());
}

void StatementView::selectAll() { setSelection(0, static_cast<int>(text_.size())); }

void StatementView::copy() const {
  if (selectionStart() == selectionEnd()) return;
  if (QClipboard* clipboard = QApplication::clipboard()) clipboard->setText(selectedText());
}

QString StatementView::WordAround(int position, int* start) const {
  QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text_);
  finder.setPosition(position);
  qsizetype from = finder.isAtBoundary() && (finder.boundaryReasons() & QTextBoundaryFinder::StartOfItem)
                       ? position
                       : finder.toPreviousBoundary();
  if (from < 0) from = 0;
  finder.setPosition(from);
  qsizetype to = finder.toNextBoundary();
  if (to < 0) to = text_.size();
  *start = static_cast<int>(from);
  return text_.mid(from, to - from);
}

void StatementView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) {
    QAbstractScrollArea::mousePressEvent(event);
    return;
  }
  const int at = positionAt(event->position().toPoint());
  if (event->modifiers() & Qt::ShiftModifier) {
    setSelection(anchor_, at);
  } else {
    setSelection(at, at);
  }
  dragging_ = true;
  event->accept();
}

void StatementView::mouseMoveEvent(QMouseEvent* event) {
  if (!dragging_ || !(event->buttons() & Qt::LeftButton)) return;
  const QPoint at = event->position().toPoint();
  // Dragging past the top or bottom scrolls.
  if (at.y() < 0) verticalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepSub);
  if (at.y() > viewport()->height())
    verticalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepAdd);
  setSelection(anchor_, positionAt(at));
}

void StatementView::mouseReleaseEvent(QMouseEvent* event) {
  dragging_ = false;
  QAbstractScrollArea::mouseReleaseEvent(event);
}

void StatementView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  int start = 0;
  const QString word = WordAround(positionAt(event->position().toPoint()), &start);
  setSelection(start, start + static_cast<int>(word.size()));
}

void StatementView::ShowRange(int start, int end) {
  EnsureVisible(end);
  EnsureVisible(start);
}

void StatementView::EnsureVisible(int position) {
  const int row = LineOf(position);
  QScrollBar* bar = verticalScrollBar();
  if (row < bar->value()) bar->setValue(row);
  if (row >= bar->value() + bar->pageStep()) bar->setValue(row - bar->pageStep() + 1);
}

void StatementView::keyPressEvent(QKeyEvent* event) {
  // What a read-only text edit does with keys: copy, select all, and
  // scrolling by line, page and to either end.
  if (event == QKeySequence::Copy) {
    copy();
    return;
  }
  if (event == QKeySequence::SelectAll) {
    selectAll();
    return;
  }
  QScrollBar* bar = verticalScrollBar();
  if (event->key() == Qt::Key_Space) {
    bar->triggerAction(event->modifiers() & Qt::ShiftModifier ? QAbstractSlider::SliderPageStepSub
                                                              : QAbstractSlider::SliderPageStepAdd);
    return;
  }
  if (event->modifiers() == Qt::NoModifier && event->key() == Qt::Key_Home) {
    bar->triggerAction(QAbstractSlider::SliderToMinimum);
    return;
  }
  if (event->modifiers() == Qt::NoModifier && event->key() == Qt::Key_End) {
    bar->triggerAction(QAbstractSlider::SliderToMaximum);
    return;
  }
  QAbstractScrollArea::keyPressEvent(event);
}

void StatementView::contextMenuEvent(QContextMenuEvent* event) {
  QMenu menu(this);
  QAction* copy_action = menu.addAction(tr("&Copy"), this, &StatementView::copy);
  copy_action->setShortcut(QKeySequence::Copy);
  copy_action->setEnabled(selectionStart() < selectionEnd());
  menu.addSeparator();
  QAction* all = menu.addAction(tr("Select All"), this, &StatementView::selectAll);
  all->setShortcut(QKeySequence::SelectAll);
  all->setEnabled(!text_.isEmpty());
  menu.exec(event->globalPos());
}

bool StatementView::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    // A mark tells why the statement failed there.
    auto* help = static_cast<QHelpEvent*>(event);
    const int at = positionAt(help->pos());
    for (const Mark& mark : marks_) {
      if (at >= mark.start && at < mark.start + mark.length && !mark.tip.isEmpty()) {
        QToolTip::showText(help->globalPos(), mark.tip, viewport());
        return true;
      }
    }
    QToolTip::hideText();
    event->ignore();
    return true;
  }
  return QAbstractScrollArea::viewportEvent(event);
}

}  // namespace cvve::gui
