#include "gui/filter_cell_delegate.h"

#include <QApplication>
#include <QPainter>
#include <exception>
#include <optional>

#include "base/error.h"
#include "component/frm_acct_view_edit.h"
#include "filters/filter_list.h"
#include "gui/binder.h"

namespace cvve::gui {

FilterCellDelegate::FilterCellDelegate(const frmAcctViewEdit& ed, QObject* parent)
    : RowDelegate(parent), ed_(ed) {}

void FilterCellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index) const {
  if (index.column() == 0) {
    // The caption cell keeps its check box and the selection highlight.
    RowDelegate::paint(painter, option, index);
    return;
  }
  std::optional<std::uint32_t> colour;
  if (index.row() < ed_.lstFilters.ItemCount()) {
    try {
      colour = FilterCellColor(ed_, index.row(), index.column());
    } catch (const std::exception& e) {
      colour.reset();
      if (!error_told_ && on_error) {
        error_told_ = true;
        on_error(Describe(e));
      }
    }
  }
  QStyleOptionViewItem opt = option;
  initStyleOption(&opt, index);
  opt.state &= ~QStyle::State_Selected;
  const QColor background = colour ? FromBgr(*colour) : QColor(Qt::white);
  opt.backgroundBrush = background;
  opt.palette.setColor(QPalette::All, QPalette::Text, Qt::black);
  painter->fillRect(opt.rect, background);
  PaintItem(painter, opt);
  PaintMark(painter, option, index);
}

}  // namespace cvve::gui
