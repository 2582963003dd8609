#pragma once
// A Qt item model over a report-style ui::ListView: one row per item, one
// column per list column, the check state in the first column. The model only
// shows; a user's check is handed out as checkRequested so the adapter can
// run ListView::UserCheck (which fires the editor's handler) outside Qt's
// event handling.
#include <QAbstractTableModel>
#include <QStringList>

#include "ui/list_view.h"

namespace cvve::gui {

class ListViewModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  explicit ListViewModel(const ui::ListView& list, QObject* parent = nullptr);

  // Brings rows and columns in step with the list: a reset when their number
  // or the headers changed, else one dataChanged over every cell.
  void Sync();

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // A check state on column 0 emits checkRequested and changes nothing here.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

 signals:
  void checkRequested(int position, bool checked);  // 1-based, as the list counts

 private:
  const ui::ListView& list_;
  int rows_ = 0;
  int columns_ = 0;
  QStringList headers_;
};

}  // namespace cvve::gui
