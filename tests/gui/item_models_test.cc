// The item models over the tree and list-view control models, checked by
// QAbstractItemModelTester through builds, changes, removals and clears; the
// delegate that remembers the sizes of the lists' items and draws them from
// kept layouts.
#include <QAbstractItemModelTester>
#include <QFont>
#include <QHeaderView>
#include <QListWidget>
#include <QStandardItemModel>
#include <QTreeView>
#include <QSignalSpy>
#include <QStyledItemDelegate>
#include <QTest>
#include <functional>

#include "gui/list_view_model.h"
#include "gui/measured_delegate.h"
#include "gui/tree_model.h"
#include "ui/list_view.h"
#include "ui/tree_view.h"

using cvve::gui::ListViewModel;
using cvve::gui::TreeModel;
namespace ui = cvve::ui;
constexpr auto kQtTest = QAbstractItemModelTester::FailureReportingMode::QtTest;

class ItemModelsTest : public QObject {
  Q_OBJECT

 private slots:
  void TreeFollowsItsControl();
  void TreeSyncSkipsOnlySelectionMoves();
  void ListFollowsItsControl();
  void RememberedSizesAreTheStylesSizes();
  void KeptLayoutsDrawWhatTheStyleDraws();
};

namespace {

// Folders A (sorted, bold) and B, profiles under them, a grandchild under "b2".
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
  for (int r = 0; r < model.rowCount(parent); ++r)
    texts << model.index(r, 0, parent).data().toString();
  return texts;
}

qint64 IconKey(const QModelIndex& index) {
  return index.data(Qt::DecorationRole).value<QIcon>().cacheKey();
}

}  // namespace

void ItemModelsTest::TreeFollowsItsControl() {
  ui::TreeView tree("tvwViews");
  TreeModel model(tree);
  QAbstractItemModelTester tester(&model, kQtTest);
  QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
  QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
  QCOMPARE(model.rowCount(), 0);

  BuildTree(tree);
  model.Sync();
  QCOMPARE(Texts(model, {}), QStringList({"A", "B"}));
  QCOMPARE(Texts(model, model.index(0, 0)), QStringList({"alpha", "zeta"}));  // sorted
  const QModelIndex b2 = model.index(0, 0, model.index(1, 0));
  QCOMPARE(Texts(model, b2), QStringList({"alice"}));
  QCOMPARE(model.parent(model.index(0, 0, b2)), b2);

  // Bold and images; the expanded image once the control says so.
  const QModelIndex a = model.IndexOf(tree.FindKey("ROOT0"));
  QVERIFY(a.data(Qt::FontRole).value<QFont>().bold());
  QVERIFY(!model.index(1, 0).data(Qt::FontRole).isValid());
  const qint64 closed = IconKey(a);
  QVERIFY(closed != 0);
  QVERIFY(IconKey(model.index(0, 0, b2)) != closed);
  tree.SetExpanded(tree.FindKey("ROOT0"), true);
  changed.clear();
  model.Sync();
  QCOMPARE(changed.count(), 1);
  QVERIFY(IconKey(a) != closed);

  // A selection, a tag or the same rebuild is no change of shape; a node more is.
  const int resets = reset.count();
  tree.SetSelectedNode(tree.FindKey("alpha"));
  tree.SetTag(tree.FindKey("alpha"), "2");
  model.Sync();
  BuildTree(tree);
  tree.SetExpanded(tree.FindKey("ROOT0"), true);
  model.Sync();
  QCOMPARE(reset.count(), resets);
  tree.Add(tree.FindKey("ROOT1"), "b3", "b3", "AcctView");
  model.Sync();
  QCOMPARE(reset.count(), resets + 1);

  tree.Clear();
  model.Sync();
  QCOMPARE(model.rowCount(), 0);
  QVERIFY(!model.IndexOf(0).isValid());
}

void ItemModelsTest::TreeSyncSkipsOnlySelectionMoves() {
  // A click moves the selection only, and the snapshot is kept; any change
  // of the nodes made with it must still reach the model.
  const struct {
    const char* what;
    std::function<void(ui::TreeView&)> change;
    bool nodes_changed;
  } kCases[] = {
      {"selection only", [](ui::TreeView&) {}, false},
      {"bold", [](ui::TreeView& tree) { tree.SetBold(tree.FindKey("alpha"), true); }, true},
      {"expanded", [](ui::TreeView& tree) { tree.SetExpanded(tree.FindKey("ROOT0"), true); },
       true},
      {"a new node",
       [](ui::TreeView& tree) { tree.Add(tree.FindKey("ROOT0"), "beta", "beta", "AcctView"); },
       true},
      {"children removed", [](ui::TreeView& tree) { tree.RemoveChildren(tree.FindKey("ROOT1")); },
       true},
  };
  for (const auto& c : kCases) {
    ui::TreeView tree("tvwViews");
    BuildTree(tree);
    TreeModel model(tree);
    QAbstractItemModelTester tester(&model, kQtTest);
    QVERIFY2(!model.Sync(), c.what);  // nothing new since the model was made
    const ui::NodeId root0 = tree.FindKey("ROOT0");
    const qint64 icon_before = IconKey(model.IndexOf(root0));
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    tree.SetSelectedNode(tree.FindKey("zeta"));
    c.change(tree);
    tree.SetSelectedNode(tree.FindKey("alpha"));
    QCOMPARE(model.Sync(), c.nodes_changed);
    QCOMPARE(reset.count() + changed.count() > 0, c.nodes_changed);
    // What the model shows is the tree as it is now.
    for (ui::NodeId parent : {root0, tree.FindKey("ROOT1")}) {
      QStringList want;
      for (ui::NodeId id : tree.Children(parent)) want << QString::fromStdString(tree.Node(id).text);
      QVERIFY2(Texts(model, model.IndexOf(parent)) == want, c.what);
    }
    const QModelIndex alpha = model.IndexOf(tree.FindKey("alpha"));
    QCOMPARE(alpha.data(Qt::FontRole).value<QFont>().bold(), tree.Node(tree.FindKey("alpha")).bold);
    QCOMPARE(IconKey(model.IndexOf(root0)) != icon_before, tree.Node(root0).expanded);
    QVERIFY2(!model.Sync(), c.what);
  }
}

void ItemModelsTest::RememberedSizesAreTheStylesSizes() {
  QListWidget list;
  auto* measured = new cvve::gui::MeasuredDelegate(&list);
  list.setItemDelegate(measured);
  QStyledItemDelegate plain;
  const QStringList texts = {"", "A", "Account number", QString(300, 'W'), "Due date"};
  for (const QString& text : texts) list.addItem(text);
  // The same text in bold, and checkable (checked and not).
  list.addItem("Account number");
  QFont bold = list.font();
  bold.setBold(true);
  list.item(list.count() - 1)->setFont(bold);
  for (Qt::CheckState state : {Qt::Checked, Qt::Unchecked}) {
    list.addItem("Due date");
    list.item(list.count() - 1)->setCheckState(state);
  }
  auto check_all = [&](const char* when) {
    for (int row = 0; row < list.count(); ++row) {
      QStyleOptionViewItem option;
      option.initFrom(list.viewport());
      option.font = list.font();
      option.fontMetrics = list.fontMetrics();
      option.widget = &list;
      const QModelIndex index = list.model()->index(row, 0);
      for (int twice = 0; twice < 2; ++twice) {  // measured, then remembered
        QVERIFY2(measured->sizeHint(option, index) == plain.sizeHint(option, index),
                 qPrintable(QString("%1, row %2").arg(when).arg(row)));
      }
    }
  };
  check_all("first font");
  QVERIFY(measured->Remembered() >= 5);
  // A bigger font for the whole list: nothing measured in the old one is used.
  QFont big = list.font();
  big.setPointSize(big.pointSize() * 3);
  list.setFont(big);
  check_all("larger font");
  // Many different texts: the remembered sizes stay bounded.
  for (int i = 0; i <= cvve::gui::MeasuredDelegate::kRemembered; ++i) {
    list.addItem(QString("column %1").arg(i));
  }
  QStyleOptionViewItem option;
  option.initFrom(list.viewport());
  option.widget = &list;
  for (int row = 0; row < list.count(); ++row) measured->sizeHint(option, list.model()->index(row, 0));
  QVERIFY(measured->Remembered() <= cvve::gui::MeasuredDelegate::kRemembered);
  QVERIFY(measured->Remembered() > 0);
}

void ItemModelsTest::KeptLayoutsDrawWhatTheStyleDraws() {
  // A table of cells of every kind the editor's lists show, drawn by the
  // style and by the delegate that keeps layouts: the pixels are the same,
  // the first time and from the kept layouts.
  QStandardItemModel model(0, 3);
  const struct {
    const char* text;
    Qt::Alignment alignment;
    int check;  // -1 none
    bool bold;
    bool enabled;
  } kCells[] = {
      {"Balance", Qt::AlignLeft | Qt::AlignVCenter, 2, false, true},
      {"1,234.50", Qt::AlignRight | Qt::AlignVCenter, -1, false, true},
      {"Due", Qt::AlignHCenter | Qt::AlignVCenter, -1, true, true},
      {"", Qt::AlignLeft | Qt::AlignVCenter, 0, false, true},
      {"A name far too long for its column, so the style elides it with dots", Qt::AlignLeft,
       -1, false, true},
      {"Disabled", Qt::AlignLeft | Qt::AlignVCenter, 0, false, false},
      {"Two\nlines", Qt::AlignLeft | Qt::AlignVCenter, -1, false, true},
      {"qypgj_", Qt::AlignLeft | Qt::AlignTop, -1, false, true},
      {"Ünïcödé ✓", Qt::AlignRight | Qt::AlignBottom, 2, true, true},
  };
  for (int row = 0; row < 4; ++row) {
    QList<QStandardItem*> items;
    for (int column = 0; column < 3; ++column) {
      const auto& cell = kCells[(row * 3 + column) % std::size(kCells)];
      auto* item = new QStandardItem(QString::fromUtf8(cell.text));
      item->setTextAlignment(cell.alignment);
      if (cell.check >= 0) {
        item->setCheckable(true);
        item->setCheckState(static_cast<Qt::CheckState>(cell.check));
      }
      QFont font;
      font.setBold(cell.bold);
      item->setFont(font);
      item->setEnabled(cell.enabled);
      items << item;
    }
    model.appendRow(items);
  }
  QTreeView view;
  view.setModel(&model);
  view.setRootIsDecorated(false);
  view.header()->resizeSection(0, 150);
  view.header()->resizeSection(1, 90);
  view.resize(400, 200);
  view.setSelectionBehavior(QAbstractItemView::SelectRows);
  view.selectionModel()->select(model.index(1, 0),
                                QItemSelectionModel::Select | QItemSelectionModel::Rows);
  view.show();
  QVERIFY(QTest::qWaitForWindowExposed(&view));
  QStyledItemDelegate style_drawn;
  auto* kept = new cvve::gui::MeasuredDelegate(&view);
  for (Qt::TextElideMode elide : {Qt::ElideRight, Qt::ElideMiddle, Qt::ElideLeft, Qt::ElideNone}) {
    view.setTextElideMode(elide);
    view.setItemDelegate(&style_drawn);
    const QImage want = view.viewport()->grab().toImage();
    view.setItemDelegate(kept);
    for (int pass = 0; pass < 2; ++pass) {
      const QImage got = view.viewport()->grab().toImage();
      QVERIFY2(got == want, qPrintable(QString("elide mode %1, pass %2").arg(elide).arg(pass)));
    }
  }
  // The layouts were kept and drawn from, not only handed to the style.
  QVERIFY(kept->RememberedLayouts() >= 5);
  view.setItemDelegate(nullptr);
}

void ItemModelsTest::ListFollowsItsControl() {
  ui::ListView list("lstvwTabs");
  ListViewModel model(list);
  QAbstractItemModelTester tester(&model, kQtTest);
  QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
  list.AddColumn({"", "Tabs", ui::Alignment::kLeft, 2880});
  list.AddColumn({"Data1", "", ui::Alignment::kCenter, 1570});
  for (int i = 1; i <= 3; ++i) list.AddItem(i, "row " + std::to_string(i), "T" + std::to_string(i));
  list.SetSubItem(2, 1, "45");
  list.SetChecked(2, true);
  model.Sync();
  QCOMPARE(model.columnCount(), 2);
  QCOMPARE(model.rowCount(), 3);
  QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), QString("Tabs"));
  QCOMPARE(model.index(1, 1).data().toString(), QString("45"));
  QCOMPARE(model.index(2, 0).data().toString(), QString("row 3"));
  QCOMPARE(model.index(0, 0).data(Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
  QCOMPARE(model.index(1, 0).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
  QVERIFY(!model.index(1, 1).data(Qt::CheckStateRole).isValid());
  QVERIFY(model.flags(model.index(0, 0)) & Qt::ItemIsUserCheckable);
  QVERIFY(!(model.flags(model.index(0, 1)) & Qt::ItemIsUserCheckable));
  QCOMPARE(model.index(0, 1).data(Qt::TextAlignmentRole).value<Qt::Alignment>() &
               Qt::AlignHorizontal_Mask,
           Qt::AlignHCenter);

  // A change of text alone is a dataChanged, not a reset.
  const int resets = reset.count();
  list.SetSubItem(1, 1, "x");
  model.Sync();
  QCOMPARE(reset.count(), resets);
  QCOMPARE(model.index(0, 1).data().toString(), QString("x"));

  // A user's check is handed on (the editor session checks a tab by mouse);
  // only the first column has a box.
  QSignalSpy asked(&model, &ListViewModel::checkRequested);
  QVERIFY(!model.setData(model.index(0, 1), Qt::Checked, Qt::CheckStateRole));
  QVERIFY(!model.setData(model.index(0, 0), "text", Qt::EditRole));
  QCOMPARE(asked.count(), 0);

  // The list shrank during an action: until the next Sync the rows it no
  // longer has show nothing instead of reading past its end.
  list.ClearItems();
  QCOMPARE(model.rowCount(), 3);
  QVERIFY(!model.index(2, 0).data().isValid());
  model.Sync();
  QCOMPARE(reset.count(), resets + 1);
  QCOMPARE(model.rowCount(), 0);
}

QTEST_MAIN(ItemModelsTest)
#include "item_models_test.moc"
