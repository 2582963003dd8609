#pragma once
// The item delegate of the editor's lists: rows a few pixels taller than
// Qt's tightest, so checks and text are easy to hit and read.
#include <QStyledItemDelegate>

namespace cvve::gui {

class RowDelegate : public QStyledItemDelegate {
  Q_OBJECT

 public:
  using QStyledItemDelegate::QStyledItemDelegate;
  static constexpr int kExtraHeight = 4;
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    size.rheight() += kExtraHeight;
    return size;
  }
};

}  // namespace cvve::gui
