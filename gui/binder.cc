#include "gui/binder.h"

#include <QKeyEvent>

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFocusEvent>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeView>
#include <exception>

#include "base/error.h"
#include "gui/list_view_model.h"
#include "gui/mnemonics.h"
#include "gui/tree_model.h"

namespace cvve::gui {

namespace {
QString Q(const std::string& text) { return QString::fromStdString(text); }

// Refills a list or combo box whose rows differ from `texts` in one
// insertion: its view lays the rows out once instead of once per row.
template <class Widget, class TextAt>
void Refill(Widget* w, const QStringList& texts, TextAt text_at) {
  bool same = w->count() == texts.size();
  for (int i = 0; same && i < texts.size(); ++i) same = text_at(i) == texts[i];
  if (!same) {
    w->clear();
    w->addItems(texts);
  }
}
}  // namespace

QColor FromBgr(std::uint32_t bgr) {
  return QColor(static_cast<int>(bgr & 0xFF), static_cast<int>((bgr >> 8) & 0xFF),
                static_cast<int>((bgr >> 16) & 0xFF));
}

// Remembers which item was current when a mouse button went down on a view,
// so a click can tell a click on the current item from one that moved it.
class PressWatcher : public QObject {
 public:
  explicit PressWatcher(QAbstractItemView* view) : QObject(view), view_(view) {
    view->viewport()->installEventFilter(this);
  }
  QPersistentModelIndex current_at_press;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == view_->viewport() && (event->type() == QEvent::MouseButtonPress ||
                                         event->type() == QEvent::MouseButtonDblClick)) {
      current_at_press = view_->currentIndex();
    }
    return QObject::eventFilter(watched, event);
  }

 private:
  QAbstractItemView* view_;
};

// One widget bound to one model: refreshed when the model's revision moved.
class Binder::Adapter {
 public:
  Adapter(const ui::Control& model, std::function<void()> refresh)
      : model_(model), refresh_(std::move(refresh)) {}
  void Refresh(bool force) {
    if (!force && model_.Revision() == seen_) return;
    seen_ = model_.Revision();
    refresh_();
  }

 private:
  const ui::Control& model_;
  std::function<void()> refresh_;
  std::uint64_t seen_ = ~std::uint64_t{0};
};

Binder::Binder(QObject* parent) : QObject(parent) {}
Binder::~Binder() = default;

template <class Model, class Fn>
void Binder::Add(const Model& model, Fn refresh) {
  adapters_.push_back(std::make_unique<Adapter>(model, std::function<void()>(refresh)));
}

void Binder::Act(std::function<void()> action) {
  if (refreshing_) return;
  if (depth_ > 0) {
    pending_.push_back(std::move(action));
    return;
  }
  ++depth_;
  try {
    action();
  } catch (const std::exception& e) {
    if (on_failure) on_failure(Describe(e));
  } catch (...) {
    if (on_failure) on_failure("unknown failure");
  }
  --depth_;
  RefreshAll();
  RunPending();
}

void Binder::RunPending() {
  while (depth_ == 0 && !pending_.empty()) {
    auto next = std::move(pending_.front());
    pending_.erase(pending_.begin());
    Act(std::move(next));
  }
}

void Binder::ActLater(std::function<void()> action) {
  QMetaObject::invokeMethod(
      this, [this, action = std::move(action)]() mutable { Act(std::move(action)); },
      Qt::QueuedConnection);
}

void Binder::RefreshAll(bool force) {
  if (refreshing_) return;
  refreshing_ = true;
  if (before_refresh) ResumeNext([&] { force = before_refresh() || force; });
  for (auto& adapter : adapters_) {
    // A model the refresh cannot read leaves its widget as it was.
    ResumeNext([&] { adapter->Refresh(force); });
  }
  if (after_refresh) ResumeNext([&] { after_refresh(); });
  refreshing_ = false;
}

void Binder::SetLayoutHidden(QWidget* widget, bool hidden) {
  if (hidden) {
    layout_hidden_.insert(widget);
    widget->setVisible(false);
  } else {
    layout_hidden_.remove(widget);
  }
}

void Binder::ApplyVisible(QWidget* widget, bool model_visible) const {
  const bool show = model_visible && !layout_hidden_.contains(widget);
  if (widget->isHidden() == show) widget->setVisible(show);
}

void Binder::Bind(ui::ComboBox& model, QComboBox* w) {
  w->setObjectName(Q(model.Name()));
  const bool editable = model.GetStyle() == ui::ComboBox::Style::kEditable;
  w->setEditable(editable);
  if (editable) w->setInsertPolicy(QComboBox::NoInsert);
  connect(w, &QComboBox::activated, this, [this, &model](int index) {
    Act([&model, index] {
      if (index < model.ListCount()) model.SetListIndex(index);
    });
  });
  if (editable) {
    connect(w->lineEdit(), &QLineEdit::textEdited, this, [this, &model](const QString& text) {
      Act([&model, text = text.toStdString()] { model.SetText(text); });
    });
  }
  Add(model, [this, &model, w, editable] {
    QStringList texts;
    texts.reserve(model.ListCount());
    for (const auto& entry : model.Entries()) texts << Q(entry.text);
    Refill(w, texts, [w](int i) { return w->itemText(i); });
    if (w->currentIndex() != model.ListIndex()) w->setCurrentIndex(model.ListIndex());
    if (editable && w->currentText() != Q(model.Text())) w->setEditText(Q(model.Text()));
    w->setEnabled(model.Enabled());
    ApplyVisible(w, model.Visible());
  });
}

void Binder::Bind(ui::ListBox& model, QListWidget* w) {
  w->setObjectName(Q(model.Name()));
  w->setSelectionMode(QAbstractItemView::SingleSelection);
  connect(w, &QListWidget::currentRowChanged, this, [this, &model](int row) {
    if (refreshing_) return;
    Act([&model, row] {
      if (row < model.ListCount()) model.SetListIndex(row);
    });
  });
  // A double click, or Enter on the current entry: the same handler.
  auto dbl_click = [this, &model](int row) {
    ActLater([&model, row] {
      if (row < 0 || row >= model.ListCount()) return;
      model.SetListIndex(row);
      if (model.on_dbl_click) model.on_dbl_click();
    });
  };
  connect(w, &QListWidget::itemDoubleClicked, this,
          [w, dbl_click](QListWidgetItem* item) { dbl_click(w->row(item)); });
  w->installEventFilter(this);
  enter_lists_.emplace_back(w, [w, dbl_click] { dbl_click(w->currentRow()); });
  Add(model, [this, &model, w] {
    QStringList texts;
    texts.reserve(model.ListCount());
    for (const auto& text : model.Items()) texts << Q(text);
    Refill(w, texts, [w](int i) { return w->item(i)->text(); });
    if (w->currentRow() != model.ListIndex()) {
      if (model.ListIndex() < 0) {
        w->setCurrentRow(-1);
        w->clearSelection();
      } else {
        w->setCurrentRow(model.ListIndex());
      }
    }
    w->setEnabled(model.Enabled());
    ApplyVisible(w, model.Visible());
  });
}

void Binder::Bind(ui::CheckBox& model, QCheckBox* w) {
  w->setObjectName(Q(model.Name()));
  w->setText(WithMnemonic(w->objectName(), Q(model.Caption())));
  connect(w, &QCheckBox::clicked, this, [this, &model] { Act([&model] { model.UserClick(); }); });
  Add(model, [this, &model, w] {
    w->setChecked(model.Checked());
    w->setEnabled(model.Enabled());
    ApplyVisible(w, model.Visible());
  });
}

void Binder::Bind(ui::OptionGroup& model, const std::vector<QRadioButton*>& buttons) {
  auto* group = new QButtonGroup(this);
  group->setExclusive(true);
  for (int i = 0; i < static_cast<int>(buttons.size()) && i < model.Count(); ++i) {
    QRadioButton* w = buttons[static_cast<std::size_t>(i)];
    w->setObjectName(Q(model.Name() + "(" + std::to_string(i) + ")"));
    w->setText(WithMnemonic(w->objectName(), Q(model.Caption(i))));
    group->addButton(w, i);
    connect(w, &QRadioButton::clicked, this,
            [this, &model, i] { Act([&model, i] { model.SetValue(i); }); });
  }
  Add(model, [this, &model, buttons] {
    for (int i = 0; i < static_cast<int>(buttons.size()) && i < model.Count(); ++i) {
      QRadioButton* w = buttons[static_cast<std::size_t>(i)];
      w->setChecked(model.Value(i));
      w->setEnabled(model.Enabled());
      ApplyVisible(w, model.Visible());
    }
  });
}

void Binder::Bind(ui::TextBox& model, QLineEdit* w, bool editable) {
  w->setObjectName(Q(model.Name()));
  w->setReadOnly(!editable);
  if (editable) {
    connect(w, &QLineEdit::textEdited, this, [this, &model](const QString& text) {
      Act([&model, text = text.toStdString()] { model.SetText(text); });
    });
  }
  Add(model, [this, &model, w] {
    if (w->text() != Q(model.Text())) w->setText(Q(model.Text()));
    w->setEnabled(model.Enabled());
    ApplyVisible(w, model.Visible());
  });
}

void Binder::Bind(ui::TextBox& model, QPlainTextEdit* w) {
  w->setObjectName(Q(model.Name()));
  connect(w, &QPlainTextEdit::textChanged, this, [this, &model, w] {
    if (refreshing_) return;
    Act([&model, text = w->toPlainText().toStdString()] { model.SetText(text); });
  });
  Add(model, [this, &model, w] {
    if (w->toPlainText() != Q(model.Text())) w->setPlainText(Q(model.Text()));
    w->setEnabled(model.Enabled());
    ApplyVisible(w, model.Visible());
  });
}

void Binder::Bind(ui::CommandButton& model, QPushButton* w) {
  w->setObjectName(Q(model.Name()));
  w->setText(WithMnemonic(w->objectName(), Q(model.Caption())));
  w->setAutoDefault(false);
  connect(w, &QPushButton::clicked, this, [this, &model] { Act([&model] { model.Click(); }); });
  w->installEventFilter(this);
  focus_buttons_.emplace_back(w, &model);
  Add(model, [this, &model, w] {
    w->setEnabled(model.Enabled());
    ApplyVisible(w, model.Visible());
  });
}

void Binder::Bind(ui::Control& model, QWidget* w) {
  Add(model, [this, &model, w] {
    w->setEnabled(model.Enabled());
    ApplyVisible(w, model.Visible());
  });
}

ListViewModel* Binder::Bind(ui::ListView& model, QTreeView* view,
                            std::function<void()> on_refreshed) {
  view->setObjectName(Q(model.Name()));
  auto* items = new ListViewModel(model, view);
  view->setModel(items);
  view->setRootIsDecorated(false);
  view->setUniformRowHeights(true);
  view->setItemsExpandable(false);
  view->setSelectionBehavior(QAbstractItemView::SelectRows);
  view->setSelectionMode(QAbstractItemView::SingleSelection);
  view->setEditTriggers(QAbstractItemView::NoEditTriggers);
  connect(items, &ListViewModel::checkRequested, this, [this, &model](int position, bool checked) {
    ActLater([&model, position, checked] {
      if (position <= model.ItemCount()) model.UserCheck(position, checked);
    });
  });
  connect(view->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this, &model](const QModelIndex& current) {
            if (refreshing_) return;
            const int position = current.isValid() ? current.row() + 1 : 0;
            Act([&model, position] {
              if (position <= model.ItemCount()) model.SetSelectedItem(position);
            });
          });
  Add(model, [this, &model, view, items, on_refreshed] {
    items->Sync();
    const int selected = model.SelectedItem();
    const QModelIndex want = selected > 0 ? items->index(selected - 1, 0) : QModelIndex();
    if (view->currentIndex().row() != want.row()) {
      if (want.isValid()) {
        view->setCurrentIndex(want);
      } else {
        view->selectionModel()->clearCurrentIndex();
        view->clearSelection();
      }
    }
    view->setEnabled(model.Enabled());
    ApplyVisible(view, model.Visible());
    if (on_refreshed) on_refreshed();
  });
  return items;
}

TreeModel* Binder::Bind(ui::TreeView& model, QTreeView* view) {
  view->setObjectName(Q(model.Name()));
  auto* nodes = new TreeModel(model, view);
  view->setModel(nodes);
  view->setHeaderHidden(true);
  view->setSelectionMode(QAbstractItemView::SingleSelection);
  view->setEditTriggers(QAbstractItemView::NoEditTriggers);
  // A click fires the node selection, also on the node already selected (as
  // the tree's own click does); a move by keyboard fires it once.
  auto* presses = new PressWatcher(view);
  connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this, &model](const QModelIndex& current) {
            if (refreshing_ || !current.isValid()) return;
            const ui::NodeId id = TreeModel::NodeOf(current);
            ActLater([&model, id] {
              if (model.Exists(id)) model.UserSelect(id);
            });
          });
  connect(view, &QTreeView::clicked, this, [this, &model, presses](const QModelIndex& index) {
    // A click that moved the selection was handled as a selection change.
    if (index != presses->current_at_press) return;
    const ui::NodeId id = TreeModel::NodeOf(index);
    ActLater([&model, id] {
      if (model.Exists(id)) model.UserSelect(id);
    });
  });
  for (bool expanded : {true, false}) {
    auto signal = expanded ? &QTreeView::expanded : &QTreeView::collapsed;
    connect(view, signal, this, [this, &model, expanded](const QModelIndex& index) {
      if (refreshing_) return;
      const ui::NodeId id = TreeModel::NodeOf(index);
      Act([&model, id, expanded] {
        if (model.Exists(id)) model.SetExpanded(id, expanded);
      });
    });
  }
  Add(model, [this, &model, view, nodes] {
    // Only the nodes' changes can leave the view's expansion behind the model's.
    const bool nodes_changed = nodes->Sync();
    for (ui::NodeId id = 0; nodes_changed && id < nodes->NodeCount() && id < model.Count(); ++id) {
      if (model.Children(id).empty()) continue;
      const QModelIndex at = nodes->IndexOf(id);
      if (view->isExpanded(at) != model.Node(id).expanded)
        view->setExpanded(at, model.Node(id).expanded);
    }
    const QModelIndex want = nodes->IndexOf(model.SelectedNode());
    if (view->currentIndex() != want) {
      if (want.isValid()) {
        view->setCurrentIndex(want);
      } else {
        view->selectionModel()->clearCurrentIndex();
        view->clearSelection();
      }
    }
    if (want.isValid()) view->scrollTo(want);
    view->setEnabled(model.Enabled());
    ApplyVisible(view, model.Visible());
  });
  return nodes;
}

void Binder::Watch(const ui::Control& model, std::function<void()> refresh) {
  Add(model, std::move(refresh));
}

bool Binder::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(event);
    const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
    for (auto& [list, activate] : enter_lists_) {
      if (enter && list == watched && key->modifiers() == Qt::NoModifier) {
        activate();
        return true;
      }
    }
  }
  if (event->type() == QEvent::FocusOut) {
    for (auto& [button, model] : focus_buttons_) {
      if (button == watched && model->on_lost_focus) {
        ui::CommandButton* target = model;
        Act([target] {
          if (target->on_lost_focus) target->on_lost_focus();
        });
      }
    }
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace cvve::gui
