// The item models over the tree and list-view control models, checked by
// QAbstractItemModelTester through builds, changes, removals and clears.
#include <QAbstractItemModelTester>
#include <QFont>
#include <QSignalSpy>
#include <QTest>

#include "gui/list_view_model.h"
#include "gui/tree_model.h"
#include "ui/list_view.h"
#include "ui/tree_view.h"

using cvve::gui::ListViewModel;
using cvve::gui::TreeModel;
namespace ui = cvve::ui;

class ItemModelsTest : public QObject {
  Q_OBJECT

 private slots:
  void TreeFollowsBuildsRemovalsAndClears();
  void TreeShowsTextIconAndBold();
  void TreeChangeOfTextKeepsShape();
  void ListFollowsItemsAndColumns();
  void ListMapsChecksAndAlignment();
  void ListReadsSafelyBeforeSync();
};

namespace {

// Folders A (sorted) and B, profiles under them, a grandchild under "b2".
void BuildTree(ui::TreeView& tree) {
  tree.Clear();
  ui::NodeId a = tree.Add(ui::kNoNode, "ROOT0", "A", "closed", "open");
  tree.SetSorted(a, true);
  tree.SetBold(a, true);
  ui::NodeId b = tree.Add(ui::kNoNode, "ROOT1", "B", "closed", "open");
  tree.Add(a, "zeta", "zeta", "AcctView");
  tree.Add(a, "alpha", "alpha", "AcctView");
  ui::NodeId b2 = tree.Add(b, "b2", "b2", "AcctView");
  tree.Add(b2, "b2|alice", "alice", "user");
}

QStringList Texts(const TreeModel& model, const QModelIndex& parent) {
  QStringList texts;
  for (int r = 0; r < model.rowCount(parent); ++r) {
    texts << model.index(r, 0, parent).data().toString();
  }
  return texts;
}

}  // namespace

void ItemModelsTest::TreeFollowsBuildsRemovalsAndClears() {
  ui::TreeView tree("tvwViews");
  TreeModel model(tree);
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
  QCOMPARE(model.rowCount(), 0);

  BuildTree(tree);
  model.Sync();
  QCOMPARE(Texts(model, {}), QStringList({"A", "B"}));
  // Sorted children come in alphabetical order.
  QCOMPARE(Texts(model, model.index(0, 0)), QStringList({"alpha", "zeta"}));
  const QModelIndex b2 = model.index(0, 0, model.index(1, 0));
  QCOMPARE(Texts(model, b2), QStringList({"alice"}));
  QCOMPARE(model.parent(model.index(0, 0, b2)), b2);

  // Results added under a folder, then removed again (the search does this).
  ui::NodeId search = tree.Add(ui::kNoNode, "ROOTSearch", "Search Results", "Search");
  tree.Add(search, "SEARCH|alpha", "alpha", "AcctView");
  model.Sync();
  QCOMPARE(model.rowCount(), 3);
  tree.RemoveChildren(tree.FindKey("ROOT1"));
  model.Sync();
  QCOMPARE(Texts(model, model.index(1, 0)), QStringList());
  QCOMPARE(Texts(model, model.index(2, 0)), QStringList({"alpha"}));
  QCOMPARE(TreeModel::NodeOf(model.index(0, 0, model.index(2, 0))), tree.FindKey("SEARCH|alpha"));

  tree.Clear();
  model.Sync();
  QCOMPARE(model.rowCount(), 0);
  QVERIFY(!model.IndexOf(0).isValid());
}

void ItemModelsTest::TreeShowsTextIconAndBold() {
  ui::TreeView tree("tvwViews");
  BuildTree(tree);
  TreeModel model(tree);
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
  const QModelIndex a = model.IndexOf(tree.FindKey("ROOT0"));
  const QModelIndex b = model.IndexOf(tree.FindKey("ROOT1"));
  QVERIFY(a.data(Qt::FontRole).value<QFont>().bold());
  QVERIFY(!b.data(Qt::FontRole).isValid());
  QVERIFY(!a.data(Qt::DecorationRole).value<QIcon>().isNull());
  // The expanded image is shown once the model says the node is expanded.
  const qint64 closed = a.data(Qt::DecorationRole).value<QIcon>().cacheKey();
  tree.SetExpanded(tree.FindKey("ROOT0"), true);
  QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
  model.Sync();
  QCOMPARE(changed.count(), 1);
  QVERIFY(a.data(Qt::DecorationRole).value<QIcon>().cacheKey() != closed);
  QVERIFY(model.index(0, 0, model.IndexOf(tree.FindKey("b2")))
              .data(Qt::DecorationRole)
              .value<QIcon>()
              .cacheKey() != closed);
}

void ItemModelsTest::TreeChangeOfTextKeepsShape() {
  ui::TreeView tree("tvwViews");
  BuildTree(tree);
  TreeModel model(tree);
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
  QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
  QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
  // A selection change or a new tag is no change of shape: no reset.
  tree.SetSelectedNode(tree.FindKey("alpha"));
  tree.SetTag(tree.FindKey("alpha"), "2");
  model.Sync();
  QCOMPARE(reset.count(), 0);
  QCOMPARE(changed.count(), 1);
  // A rebuild with the same nodes in the same order is no reset either.
  BuildTree(tree);
  model.Sync();
  QCOMPARE(reset.count(), 0);
  // One node more is.
  tree.Add(tree.FindKey("ROOT1"), "b3", "b3", "AcctView");
  model.Sync();
  QCOMPARE(reset.count(), 1);
}

void ItemModelsTest::ListFollowsItemsAndColumns() {
  ui::ListView list("lstFilters");
  ListViewModel model(list);
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
  list.AddColumn({"", "Filter", ui::Alignment::kLeft, 3000});
  list.AddColumn({"Data1", "", ui::Alignment::kCenter, 1570});
  model.Sync();
  QCOMPARE(model.columnCount(), 2);
  QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), QString("Filter"));
  for (int i = 1; i <= 3; ++i) list.AddItem(i, "row " + std::to_string(i), "k" + std::to_string(i));
  list.SetSubItem(2, 1, "45");
  model.Sync();
  QCOMPARE(model.rowCount(), 3);
  QCOMPARE(model.index(1, 1).data().toString(), QString("45"));
  QCOMPARE(model.index(2, 0).data().toString(), QString("row 3"));
  // A change of text alone is a dataChanged, not a reset.
  QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
  list.SetSubItem(1, 1, "x");
  model.Sync();
  QCOMPARE(reset.count(), 0);
  QCOMPARE(model.index(0, 1).data().toString(), QString("x"));
  list.ClearItems();
  model.Sync();
  QCOMPARE(reset.count(), 1);
  QCOMPARE(model.rowCount(), 0);
}

void ItemModelsTest::ListMapsChecksAndAlignment() {
  ui::ListView list("lstvwTabs");
  list.AddColumn({"", "Tabs", ui::Alignment::kLeft, 2880});
  list.AddColumn({"Data1", "", ui::Alignment::kCenter, 1570});
  list.AddItem(1, "General", "T1");
  list.AddItem(2, "Payments", "T2");
  list.SetChecked(2, true);
  ListViewModel model(list);
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
  QCOMPARE(model.index(0, 0).data(Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
  QCOMPARE(model.index(1, 0).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
  QVERIFY(!model.index(1, 1).data(Qt::CheckStateRole).isValid());
  QVERIFY(model.flags(model.index(0, 0)) & Qt::ItemIsUserCheckable);
  QVERIFY(!(model.flags(model.index(0, 1)) & Qt::ItemIsUserCheckable));
  QCOMPARE(model.index(0, 1).data(Qt::TextAlignmentRole).value<Qt::Alignment>() &
               Qt::AlignHorizontal_Mask,
           Qt::AlignHCenter);
  // A user's check is handed on, 1-based, and changes nothing by itself.
  QSignalSpy asked(&model, &ListViewModel::checkRequested);
  QVERIFY(model.setData(model.index(0, 0), Qt::Checked, Qt::CheckStateRole));
  QCOMPARE(asked.count(), 1);
  QCOMPARE(asked.at(0).at(0).toInt(), 1);
  QCOMPARE(asked.at(0).at(1).toBool(), true);
  QVERIFY(!list.Item(1).checked);
  QVERIFY(!model.setData(model.index(0, 1), Qt::Checked, Qt::CheckStateRole));
  QVERIFY(!model.setData(model.index(0, 0), "text", Qt::EditRole));
}

void ItemModelsTest::ListReadsSafelyBeforeSync() {
  ui::ListView list("lstFilters");
  list.AddColumn({"", "Filter", ui::Alignment::kLeft, 3000});
  list.AddItem(1, "a");
  list.AddItem(2, "b");
  ListViewModel model(list);
  // The list shrank during an action; until the next Sync the rows it no
  // longer has show nothing instead of reading past its end.
  list.ClearItems();
  QCOMPARE(model.rowCount(), 2);
  QVERIFY(!model.index(1, 0).data().isValid());
}

QTEST_MAIN(ItemModelsTest)
#include "item_models_test.moc"
