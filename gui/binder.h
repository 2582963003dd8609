#pragma once
// Keeps a window's widgets in step with the core's control models. A user's
// action on a widget calls the model's user-action entry point through Act;
// afterwards every adapter whose model revision changed refreshes its widget.
// Signals that widgets emit while they are being refreshed are ignored, so a
// refresh never feeds back into the models. The adapters hold no editor
// logic: they translate between a widget and a model, nothing more.
#include <QObject>
#include <QPointer>
#include <QSet>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ui/combo_box.h"
#include "ui/control.h"
#include "ui/list_box.h"
#include "ui/list_view.h"
#include "ui/simple_controls.h"
#include "ui/tree_view.h"

class QAbstractButton;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QTreeView;
class QWidget;

namespace cvve::gui {

class ListViewModel;
class TreeModel;

class Binder : public QObject {
  Q_OBJECT

 public:
  explicit Binder(QObject* parent = nullptr);
  ~Binder() override;

  // Runs a user's action on the models and refreshes. Ignored while
  // refreshing (the signal came from the refresh itself). An action that
  // arrives while another one runs (a focus change under a message box) waits
  // until that one has finished. A failure that escapes the action goes to
  // on_failure.
  void Act(std::function<void()> action);
  // Act from the event loop, for events raised inside a widget's own event
  // handling (a check box click, a tree selection, a focus change while a
  // refresh hides the focused widget) that must not see their model reset
  // under them. Queued even while refreshing: such events are the user's.
  void ActLater(std::function<void()> action);
  bool Refreshing() const { return refreshing_; }
  bool Acting() const { return depth_ > 0; }
  // Refreshes the adapters whose model changed (all of them when forced),
  // then runs after_refresh.
  void RefreshAll(bool force = false);

  // Runs first in each refresh; true forces every adapter to refresh (the
  // window rearranged itself).
  std::function<bool()> before_refresh;
  std::function<void()> after_refresh;
  std::function<void(const std::string& description)> on_failure;

  // Widgets that the window's layout hides whatever their model says.
  void SetLayoutHidden(QWidget* widget, bool hidden);
  // Shows the widget when the model wants it and the layout does not hide it.
  void ApplyVisible(QWidget* widget, bool model_visible) const;

  // --- bindings; each names the widget after the model (objectName) ---
  void Bind(ui::ComboBox& model, QComboBox* widget);
  void Bind(ui::ListBox& model, QListWidget* widget);
  void Bind(ui::CheckBox& model, QCheckBox* widget);
  // One radio button per option of the group, in index order.
  void Bind(ui::OptionGroup& model, const std::vector<QRadioButton*>& buttons);
  // A read-only box shows the text; an editable one sets it on every edit.
  void Bind(ui::TextBox& model, QLineEdit* widget, bool editable);
  void Bind(ui::TextBox& model, QPlainTextEdit* widget);
  // Click, and the focus leaving the button (on_lost_focus).
  void Bind(ui::CommandButton& model, QPushButton* widget);
  // Enabled and visible only.
  void Bind(ui::Control& model, QWidget* widget);
  // The list model is owned by the view. `on_refreshed` runs after each
  // refresh of that list (the window keeps metrics there).
  ListViewModel* Bind(ui::ListView& model, QTreeView* view,
                      std::function<void()> on_refreshed = {});
  TreeModel* Bind(ui::TreeView& model, QTreeView* view);
  // Any further widget state that follows a model's revision.
  void Watch(const ui::Control& model, std::function<void()> refresh);

 private:
  class Adapter;
  class WatchAdapter;
  template <class Model, class Fn>
  void Add(const Model& model, Fn refresh);
  bool eventFilter(QObject* watched, QEvent* event) override;
  void RunPending();

  std::vector<std::unique_ptr<Adapter>> adapters_;
  std::vector<std::function<void()>> pending_;
  QSet<QWidget*> layout_hidden_;
  // Buttons whose focus-out goes to their model's on_lost_focus.
  std::vector<std::pair<QPointer<QPushButton>, ui::CommandButton*>> focus_buttons_;
  // Lists where Enter does what a double click does.
  std::vector<std::pair<QPointer<QListWidget>, std::function<void()>>> enter_lists_;
  bool refreshing_ = false;
  int depth_ = 0;
};

// Converts a BGR colour of the editor's models to a QColor.
QColor FromBgr(std::uint32_t bgr);

}  // namespace cvve::gui
