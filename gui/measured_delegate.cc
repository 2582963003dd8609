#include "gui/measured_delegate.h"

#include <QWidget>

namespace cvve::gui {

size_t qHash(const MeasuredDelegate::Key& key, size_t seed) {
  return qHashMulti(seed, key.style, key.features, key.check, key.alignment, key.elide,
                    key.direction, key.font, key.text);
}

QSize MeasuredDelegate::sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const {
  // An item's own size hint, an icon or wrapped text: measured every time.
  if (index.data(Qt::SizeHintRole).isValid()) return QStyledItemDelegate::sizeHint(option, index);
  QStyleOptionViewItem item = option;
  initStyleOption(&item, index);
  if (item.features & (QStyleOptionViewItem::HasDecoration | QStyleOptionViewItem::WrapText)) {
    return QStyledItemDelegate::sizeHint(option, index);
  }
  Key key{item.widget ? item.widget->style() : nullptr,
          static_cast<int>(item.features),
          static_cast<int>(item.checkState),
          static_cast<int>(item.displayAlignment),
          static_cast<int>(item.textElideMode),
          static_cast<int>(item.direction),
          item.font,
          item.text};
  if (const auto found = sizes_.constFind(key); found != sizes_.constEnd()) return *found;
  const QSize size = QStyledItemDelegate::sizeHint(option, index);
  if (sizes_.size() >= kRemembered) sizes_.clear();
  sizes_.insert(std::move(key), size);
  return size;
}

}  // namespace cvve::gui
