#include "gui/measured_delegate.h"

#include <QApplication>
#include <QFontMetrics>
#include <QPainter>
#include <QWidget>

namespace cvve::gui {

size_t qHash(const MeasuredDelegate::Key& key, size_t seed) {
  return qHashMulti(seed, key.style, key.features, key.check, key.alignment, key.elide,
                    key.direction, key.font, key.text);
}

size_t qHash(const MeasuredDelegate::LayoutKey& key, size_t seed) {
  return qHashMulti(seed, key.text, key.font, key.width, key.alignment, key.direction, key.elide);
}

namespace {
std::unique_ptr<QTextLayout> LineLayout(const QString& text, const QFont& font,
                                        const QTextOption& option, int width) {
  auto layout = std::make_unique<QTextLayout>(text, font);
  layout->setTextOption(option);
  layout->setCacheEnabled(true);
  layout->beginLayout();
  QTextLine line = layout->createLine();
  if (line.isValid()) {
    line.setLineWidth(width);
    line.setPosition(QPointF(0, 0));
  }
  layout->endLayout();
  return layout;
}
}  // namespace

const MeasuredDelegate::Drawn& MeasuredDelegate::LaidOut(const LayoutKey& key) const {
  if (const auto found = layouts_.constFind(key); found != layouts_.constEnd()) return **found;
  // As the style lays out an item's line: no wrapping, in the cell's width;
  // a text wider than that is elided as the style elides it, and placed by
  // the height of the whole text.
  QTextOption option;
  option.setWrapMode(QTextOption::ManualWrap);
  option.setTextDirection(static_cast<Qt::LayoutDirection>(key.direction));
  option.setAlignment(QStyle::visualAlignment(static_cast<Qt::LayoutDirection>(key.direction),
                                              Qt::Alignment(key.alignment)));
  auto drawn = std::make_shared<Drawn>();
  drawn->layout = LineLayout(key.text, key.font, option, key.width);
  drawn->box = drawn->layout->boundingRect().size().toSize();
  drawn->single_line = drawn->layout->lineCount() == 1;
  if (drawn->single_line && drawn->layout->lineAt(0).naturalTextWidth() > key.width) {
    const QString elided = QFontMetrics(key.font).elidedText(
        key.text, static_cast<Qt::TextElideMode>(key.elide), key.width);
    drawn->layout = LineLayout(elided, key.font, option, key.width);
  }
  if (layouts_.size() >= kRemembered) layouts_.clear();
  return **layouts_.insert(key, std::move(drawn));
}

void MeasuredDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const {
  QStyleOptionViewItem item = option;
  initStyleOption(&item, index);
  PaintItem(painter, item);
}

void MeasuredDelegate::PaintItem(QPainter* painter, QStyleOptionViewItem& item) const {
  const QWidget* widget = item.widget;
  QStyle* style = widget ? widget->style() : QApplication::style();
  const bool plain_line =
      !item.text.isEmpty() && !(item.features & QStyleOptionViewItem::WrapText) &&
      !(item.state & (QStyle::State_HasFocus | QStyle::State_Editing)) &&
      !style->inherits("QStyleSheetStyle") && !item.text.contains(QLatin1Char('\n')) &&
      !item.text.contains(QChar::LineSeparator);
  if (!plain_line) {
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, widget);
    return;
  }
  // The text's place in the cell does not depend on the text: the style
  // gives the text the cell's width left of the check and the icon.
  const QString text = item.text;
  item.text.clear();
  const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, widget) + 1;
  const QRect text_rect =
      style->subElementRect(QStyle::SE_ItemViewItemText, &item, widget).adjusted(margin, 0, -margin, 0);
  const Drawn& drawn = LaidOut({text, item.font, text_rect.width(),
                                static_cast<int>(item.displayAlignment),
                                static_cast<int>(item.direction),
                                static_cast<int>(item.textElideMode)});
  if (!drawn.single_line) {
    item.text = text;  // the style's own way
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, widget);
    return;
  }
  style->drawControl(QStyle::CE_ItemViewItem, &item, painter, widget);
  // The pen, the clip and the place the style draws an item's text with.
  painter->save();
  painter->setClipRect(item.rect);
  QPalette::ColorGroup group =
      item.state & QStyle::State_Enabled ? QPalette::Normal : QPalette::Disabled;
  if (group == QPalette::Normal && !(item.state & QStyle::State_Active)) group = QPalette::Inactive;
  painter->setPen(item.palette.color(
      group, item.state & QStyle::State_Selected ? QPalette::HighlightedText : QPalette::Text));
  const QRect placed =
      QStyle::alignedRect(Qt::LayoutDirectionAuto, item.displayAlignment, drawn.box, text_rect);
  drawn.layout->draw(painter, QPointF(text_rect.x(), placed.top()));
  painter->restore();
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
