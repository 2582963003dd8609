#pragma once
// A Qt item model over ui::TreeView. It shows a snapshot of the tree taken by
// Sync, so the view never sees a half-built tree while an action runs; the
// internal id of an index is the node id.
#include <QAbstractItemModel>
#include <vector>

#include "ui/tree_view.h"

namespace cvve::gui {

class TreeModel : public QAbstractItemModel {
  Q_OBJECT

 public:
  explicit TreeModel(const ui::TreeView& tree, QObject* parent = nullptr);

  // Takes a new snapshot: a reset when the nodes or their order changed,
  // else dataChanged for the nodes whose text, images or bold changed.
  // Nothing when only the tree's selection moved since the last one (a
  // click on a profile); false then.
  bool Sync();
  // The index of a node of the last snapshot (invalid for kNoNode or none).
  QModelIndex IndexOf(ui::NodeId id) const;
  // The node of an index; kNoNode for an invalid one.
  static ui::NodeId NodeOf(const QModelIndex& index);
  int NodeCount() const { return static_cast<int>(nodes_.size()); }

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  struct Shown {
    ui::TreeNode node;
    int row = 0;  // position under its parent
  };
  const ui::TreeView& tree_;
  std::vector<Shown> nodes_;                   // by node id
  std::vector<std::vector<ui::NodeId>> kids_;  // by parent id + 1
  std::uint64_t synced_ = 0;                   // the tree's nodes revision shown
  bool ever_synced_ = false;
};

}  // namespace cvve::gui
