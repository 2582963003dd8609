#include "gui/list_view_model.h"

namespace cvve::gui {

namespace {
Qt::Alignment ToQt(ui::Alignment alignment) {
  switch (alignment) {
    case ui::Alignment::kRight:
      return Qt::AlignRight | Qt::AlignVCenter;
    case ui::Alignment::kCenter:
      return Qt::AlignHCenter | Qt::AlignVCenter;
    case ui::Alignment::kLeft:
      break;
  }
  return Qt::AlignLeft | Qt::AlignVCenter;
}
}  // namespace

ListViewModel::ListViewModel(const ui::ListView& list, QObject* parent)
    : QAbstractTableModel(parent), list_(list) {
  Sync();
}

void ListViewModel::Sync() {
  QStringList headers;
  for (const auto& column : list_.Columns()) headers << QString::fromStdString(column.header);
  // A list without columns still shows its items' texts in one column.
  const int columns = std::max(1, list_.ColumnCount());
  if (list_.ItemCount() != rows_ || columns != columns_ || headers != headers_) {
    beginResetModel();
    rows_ = list_.ItemCount();
    columns_ = columns;
    headers_ = headers;
    endResetModel();
    return;
  }
  if (rows_ > 0) emit dataChanged(index(0, 0), index(rows_ - 1, columns_ - 1));
}

int ListViewModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

int ListViewModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : columns_;
}

QVariant ListViewModel::data(const QModelIndex& index, int role) const {
  // The list may already hold fewer items than the rows last synced (a paint
  // during an action); such rows show nothing until the next Sync.
  if (!index.isValid() || index.row() >= list_.ItemCount()) return {};
  const ui::ListItem& item = list_.Item(index.row() + 1);
  const int column = index.column();
  switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole: {
      if (column == 0) return QString::fromStdString(item.text);
      auto sub = static_cast<std::size_t>(column - 1);
      return sub < item.sub_items.size() ? QString::fromStdString(item.sub_items[sub]) : QString();
    }
    case Qt::CheckStateRole:
      if (column == 0) return item.checked ? Qt::Checked : Qt::Unchecked;
      return {};
    case Qt::TextAlignmentRole:
      if (column < list_.ColumnCount()) {
        return QVariant::fromValue(ToQt(list_.Column(column + 1).alignment));
      }
      return {};
    default:
      return {};
  }
}

QVariant ListViewModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= columns_) return {};
  if (role == Qt::DisplayRole) return section < headers_.size() ? headers_[section] : QString();
  if (role == Qt::TextAlignmentRole && section < list_.ColumnCount()) {
    return QVariant::fromValue(ToQt(list_.Column(section + 1).alignment));
  }
  return {};
}

Qt::ItemFlags ListViewModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
  if (index.column() == 0) flags |= Qt::ItemIsUserCheckable;
  return flags;
}

bool ListViewModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!index.isValid() || index.column() != 0 || role != Qt::CheckStateRole) return false;
  emit checkRequested(index.row() + 1, value.toInt() == Qt::Checked);
  return true;
}

}  // namespace cvve::gui
