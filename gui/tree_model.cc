#include "gui/tree_model.h"

#include <QFont>

#include "gui/icons.h"

namespace cvve::gui {

TreeModel::TreeModel(const ui::TreeView& tree, QObject* parent)
    : QAbstractItemModel(parent), tree_(tree) {
  Sync();
}

bool TreeModel::Sync() {
  if (ever_synced_ && tree_.NodesRevision() == synced_) return false;
  ever_synced_ = true;
  synced_ = tree_.NodesRevision();
  std::vector<Shown> nodes(static_cast<std::size_t>(tree_.Count()));
  std::vector<std::vector<ui::NodeId>> kids(nodes.size() + 1);
  for (ui::NodeId id = ui::kNoNode; id < tree_.Count(); ++id) {
    const auto& children = tree_.Children(id);
    kids[static_cast<std::size_t>(id + 1)] = children;
    for (std::size_t row = 0; row < children.size(); ++row) {
      nodes[static_cast<std::size_t>(children[row])].row = static_cast<int>(row);
    }
    if (id != ui::kNoNode) nodes[static_cast<std::size_t>(id)].node = tree_.Node(id);
  }
  bool same_shape = kids == kids_;
  if (!same_shape) {
    beginResetModel();
    nodes_ = std::move(nodes);
    kids_ = std::move(kids);
    endResetModel();
    return true;
  }
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const ui::TreeNode& now = nodes[i].node;
    const ui::TreeNode& was = nodes_[i].node;
    bool changed = now.text != was.text || now.image != was.image ||
                   now.expanded_image != was.expanded_image || now.bold != was.bold ||
                   now.expanded != was.expanded || now.tag != was.tag || now.key != was.key;
    nodes_[i] = nodes[i];
    if (changed) {
      QModelIndex at = IndexOf(static_cast<ui::NodeId>(i));
      emit dataChanged(at, at);
    }
  }
  return true;
}

QModelIndex TreeModel::IndexOf(ui::NodeId id) const {
  if (id < 0 || id >= NodeCount()) return {};
  return createIndex(nodes_[static_cast<std::size_t>(id)].row, 0, static_cast<quintptr>(id));
}

ui::NodeId TreeModel::NodeOf(const QModelIndex& index) {
  return index.isValid() ? static_cast<ui::NodeId>(index.internalId()) : ui::kNoNode;
}

QModelIndex TreeModel::index(int row, int column, const QModelIndex& parent) const {
  if (column != 0 || row < 0) return {};
  ui::NodeId owner = NodeOf(parent);
  if (owner >= NodeCount()) return {};
  const auto& children = kids_[static_cast<std::size_t>(owner + 1)];
  if (row >= static_cast<int>(children.size())) return {};
  return createIndex(row, 0, static_cast<quintptr>(children[static_cast<std::size_t>(row)]));
}

QModelIndex TreeModel::parent(const QModelIndex& child) const {
  ui::NodeId id = NodeOf(child);
  if (id < 0 || id >= NodeCount()) return {};
  return IndexOf(nodes_[static_cast<std::size_t>(id)].node.parent);
}

int TreeModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid() && parent.column() != 0) return 0;
  ui::NodeId owner = NodeOf(parent);
  if (owner >= NodeCount() || kids_.empty()) return 0;
  return static_cast<int>(kids_[static_cast<std::size_t>(owner + 1)].size());
}

int TreeModel::columnCount(const QModelIndex&) const { return 1; }

QVariant TreeModel::data(const QModelIndex& index, int role) const {
  ui::NodeId id = NodeOf(index);
  if (id < 0 || id >= NodeCount()) return {};
  const ui::TreeNode& node = nodes_[static_cast<std::size_t>(id)].node;
  switch (role) {
    case Qt::DisplayRole:
      return QString::fromStdString(node.text);
    case Qt::DecorationRole:
      return TreeIcon(node.expanded && !node.expanded_image.empty() ? node.expanded_image
                                                                    : node.image);
    case Qt::FontRole:
      if (node.bold) {
        QFont font;
        font.setBold(true);
        return font;
      }
      return {};
    default:
      return {};
  }
}

Qt::ItemFlags TreeModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

}  // namespace cvve::gui
