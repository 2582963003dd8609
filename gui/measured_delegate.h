#pragma once
// An item delegate that measures a plain text item once per font and text,
// and draws its text from a layout kept per text, font and width. Measuring
// and drawing shape the whole text; the editor's column lists are refilled
// with the same names on every change of data set, and their layout measures
// every item again, which took more than the rest of a profile switch; the
// style lays an item's text out three times each time it paints it.
#include <QFont>
#include <QHash>
#include <QSize>
#include <QString>
#include <QStyledItemDelegate>
#include <QTextLayout>
#include <memory>

class QStyle;

namespace cvve::gui {

class MeasuredDelegate : public QStyledItemDelegate {
  Q_OBJECT

 public:
  using QStyledItemDelegate::QStyledItemDelegate;
  // Beyond this many sizes the remembered ones are dropped and measured anew.
  static constexpr int kRemembered = 4096;

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;
  int Remembered() const { return static_cast<int>(sizes_.size()); }
  int RememberedLayouts() const { return static_cast<int>(layouts_.size()); }

  // Everything the style's measure of a text item reads besides its
  // rectangle (which only wrapped text reads).
  struct Key {
    const QStyle* style = nullptr;
    int features = 0;
    int check = 0;
    int alignment = 0;
    int elide = 0;
    int direction = 0;
    QFont font;
    QString text;
    bool operator==(const Key& other) const = default;
  };

 protected:
  // Draws an item as the style draws it (CE_ItemViewItem). A single line of
  // text, elided to its cell as the style elides it, is drawn from a kept
  // layout, the rest of the item by the style; anything else (wrapped,
  // several lines, the focused or edited item, a style sheet) is left to
  // the style whole.
  void PaintItem(QPainter* painter, QStyleOptionViewItem& item) const;

 private:
  // What a laid-out cell text depends on.
  struct LayoutKey {
    QString text;
    QFont font;
    int width = 0;
    int alignment = 0;
    int direction = 0;
    int elide = 0;
    bool operator==(const LayoutKey& other) const = default;
  };
  // The line to draw (the text, or the text elided) and the size the style
  // places it by.
  struct Drawn {
    std::unique_ptr<QTextLayout> layout;
    QSize box;
    bool single_line = false;
  };
  friend size_t qHash(const LayoutKey& key, size_t seed);
  const Drawn& LaidOut(const LayoutKey& key) const;

  mutable QHash<Key, QSize> sizes_;
  mutable QHash<LayoutKey, std::shared_ptr<Drawn>> layouts_;
};

size_t qHash(const MeasuredDelegate::Key& key, size_t seed = 0);

}  // namespace cvve::gui
