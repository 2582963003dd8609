#pragma once
// An item delegate that measures a plain text item once per font and text.
// Measuring shapes the whole text; the editor's column lists are refilled
// with the same names on every change of data set, and their layout measures
// every item again, which took more than the rest of a profile switch.
#include <QFont>
#include <QHash>
#include <QSize>
#include <QString>
#include <QStyledItemDelegate>

class QStyle;

namespace cvve::gui {

class MeasuredDelegate : public QStyledItemDelegate {
  Q_OBJECT

 public:
  using QStyledItemDelegate::QStyledItemDelegate;
  // Beyond this many sizes the remembered ones are dropped and measured anew.
  static constexpr int kRemembered = 4096;

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  int Remembered() const { return static_cast<int>(sizes_.size()); }

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

 private:
  mutable QHash<Key, QSize> sizes_;
};

size_t qHash(const MeasuredDelegate::Key& key, size_t seed = 0);

}  // namespace cvve::gui
