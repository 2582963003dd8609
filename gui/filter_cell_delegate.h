#pragma once
// Paints the easy-filter list's value cells in the colours the editor keeps
// for them (FilterCellColor): the pale-yellow cells are the ones an in-place
// editor opens on; every other cell is black on white. Installed on lstFilters
// only while the editor's cell painter is installed.
#include <functional>
#include <string>
#include "gui/row_delegate.h"

namespace cvve {
class frmAcctViewEdit;
}

namespace cvve::gui {

class FilterCellDelegate : public RowDelegate {
  Q_OBJECT

 public:
  FilterCellDelegate(const frmAcctViewEdit& ed, QObject* parent);
  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;
  // Told once about a failure of the colour look-up; the cell is then
  // painted black on white.
  std::function<void(const std::string& description)> on_error;

 private:
  const frmAcctViewEdit& ed_;
  mutable bool error_told_ = false;
};

}  // namespace cvve::gui
