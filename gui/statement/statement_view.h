#pragma once
// A read-only, selectable text in a fixed-width font that lays out only the
// lines on screen. The editor's statements hold paragraphs of thousands of
// characters (every used column, every filter); a general text view shapes a
// paragraph whole each time the text changes, which took a fifth of a click
// on a large profile. Here the lines are found by counting characters: in a
// fixed-width font every printable ASCII character is as wide as the next,
// so a line's width is its length times one advance, and the breaks are the
// ones Qt's own word wrap picks (word boundaries, or anywhere in a word wider
// than the line). A paragraph holding anything else is laid out by Qt.
// Each line on screen is drawn by a QTextLayout of its own, as a plain text
// edit draws it, so the pane looks as it did.
#include <QAbstractScrollArea>
#include <QColor>
#include <QString>
#include <QTextLayout>
#include <functional>
#include <vector>

class QMenu;
class QMimeData;

namespace cvve::gui {

class StatementView : public QAbstractScrollArea {
  Q_OBJECT

 public:
  explicit StatementView(QWidget* parent = nullptr);

  // Where a line starts in the text and how many characters it holds
  // (trailing spaces included, the paragraph's line feed not).
  struct Line {
    int start = 0;
    int length = 0;
  };
  // A stretch of the text drawn with a wavy underline and a background; its
  // tool tip tells why.
  struct Mark {
    int start = 0;
    int length = 0;
    QString tip;
  };

  void setPlainText(const QString& text);
  const QString& toPlainText() const { return text_; }
  void setMarks(const std::vector<Mark>& marks);
  const std::vector<Mark>& marks() const { return marks_; }

  // The selection as positions in the text; anchor == cursor: none.
  void setSelection(int anchor, int cursor);
  int selectionStart() const { return std::min(anchor_, cursor_); }
  int selectionEnd() const { return std::max(anchor_, cursor_); }
  int cursorPosition() const { return cursor_; }
  QString selectedText() const;
  void selectAll();
  void copy() const;

  // The laid-out lines (for the current width).
  const std::vector<Line>& lines() const { return lines_; }
  // The first line shown.
  int firstVisibleLine() const;
  // The position in the text under a point of the viewport, and the
  // rectangle of a character in viewport coordinates.
  int positionAt(const QPoint& point) const;
  QRect characterRect(int position) const;

  // Breaks `text` into lines of at most `width` (in 1/64 pixel) the way Qt
  // wraps at word boundaries, or anywhere within a word wider than a line,
  // when every character is `advance` wide. `overhang` gives the amount a
  // character's ink runs beyond its advance (Qt counts it when a line ends
  // with it). Exposed so it can be held to QTextLayout's own breaks.
  static std::vector<Line> WrapFixedWidth(const QString& text, int from, int to, int advance,
                                          int width, const std::function<int(QChar)>& overhang);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  bool viewportEvent(QEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;

 private:
  friend class StatementAccessible;
  void Relayout();
  void LayoutParagraph(int from, int to, int width_64);
  void UpdateScrollBars();
  void FontChanged();
  int LineHeight() const { return line_height_; }
  int TextWidth() const;
  // The top of a line in the viewport.
  int LineTop(int row) const;
  int LineOf(int position) const;
  void SelectionChanged(int old_start, int old_end);
  QString WordAround(int position, int* start) const;
  void EnsureVisible(int position);
  void ShowRange(int start, int end);

  QString text_;
  std::vector<Line> lines_;
  std::vector<Mark> marks_;
  int anchor_ = 0;
  int cursor_ = 0;
  bool dragging_ = false;
  // The font's measures, taken when it changes.
  int line_height_ = 1;
  int ascent_ = 0;
  int advance_64_ = 0;  // 0: not every printable ASCII character is as wide
  int overhang_64_[128] = {};
  int laid_out_width_ = -1;
};

}  // namespace cvve::gui
