#pragma once
// The item delegate of the editor's lists: rows a few pixels taller than
// Qt's tightest, so checks and text are easy to hit and read.
#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <functional>

#include "gui/measured_delegate.h"

namespace cvve::gui {

class RowDelegate : public MeasuredDelegate {
  Q_OBJECT

 public:
  using MeasuredDelegate::MeasuredDelegate;
  static constexpr int kExtraHeight = 4;
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QSize size = MeasuredDelegate::sizeHint(option, index);
    size.rheight() += kExtraHeight;
    return size;
  }

  // A cell to draw attention to, and why (the tool tip); "" for none. The
  // window marks a filter value that makes the statement fail this way.
  std::function<QString(const QModelIndex&)> mark;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    MeasuredDelegate::paint(painter, option, index);
    PaintMark(painter, option, index);
  }

  bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                 const QModelIndex& index) override {
    const QString why = mark ? mark(index) : QString();
    if (why.isEmpty()) return QStyledItemDelegate::helpEvent(event, view, option, index);
    QToolTip::showText(event->globalPos(), why, view);
    return true;
  }

 protected:
  void PaintMark(QPainter* painter, const QStyleOptionViewItem& option,
                 const QModelIndex& index) const {
    if (!mark || mark(index).isEmpty()) return;
    painter->save();
    painter->setPen(QPen(QColor(0xC0, 0x10, 0x10), 2));
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(option.rect.adjusted(1, 1, -1, -1));
    painter->restore();
  }
};

}  // namespace cvve::gui
