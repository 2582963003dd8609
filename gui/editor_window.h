#pragma once
// The editor window (frmAcctViewEdit) on Qt Widgets. It lays the controls out
// in the numbered steps a user follows and binds each widget to its control
// model; the widget's object name is the control's name. User actions go to
// the models' entry points through the Binder, which refreshes what changed.
// The window keeps the filter list's metrics in the model (twips), so hit
// tests and the in-place editors' placement match what is drawn.
#include <QPointer>
#include <QList>
#include <QWidget>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "gui/binder.h"

class QBoxLayout;
class QKeyEvent;
class QScrollArea;
class QSplitter;
class QStatusBar;
class QComboBox;
class QSpacerItem;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QStyledItemDelegate;
class QTreeView;

namespace cvve {
class frmAcctViewEdit;
namespace reportengine {
struct EditorDatabase;
}
}  // namespace cvve

namespace cvve::gui {

class FilterCellDelegate;
class ResultsPane;
class StatementView;

class EditorWindow : public QWidget {
  Q_OBJECT

 public:
  explicit EditorWindow(frmAcctViewEdit& ed, QWidget* parent = nullptr);
  ~EditorWindow() override;

  frmAcctViewEdit& editor() { return ed_; }
  Binder& binder() { return binder_; }
  QTreeView* filterList() const { return filters_; }
  // The widget that holds lstFilters and its two in-place editors.
  QWidget* filterArea() const { return filter_area_; }
  // 1: txtData1LV, 2: txtData2LV.
  QComboBox* valueEditor(int which) const { return which == 1 ? value1_ : value2_; }
  StatementView* statementPane() const { return statement_; }
  // Shows the rows of the profile on screen from `database` beside the
  // statement, from now on.
  void ShowResults(const reportengine::EditorDatabase& database);
  ResultsPane* resultsPane() const { return results_; }
  // Why the filter value in that cell of lstFilters makes the statement fail
  // ("" when it does not).
  QString valueMark(int row, int column) const;
  QLineEdit* searchBox() const { return search_; }
  QStatusBar* statusBar() const { return status_; }
  // Steps over bottom panes, profiles beside steps, and the bottom panes
  // (the statement first): their positions are remembered.
  QList<QSplitter*> Splitters() const;
  // The least window size at which the editor does not scroll.
  QSize UnscrolledSize() const;
  bool cellPainterShown() const;

  // Called once the model's form is hidden (OK or Cancel finished).
  std::function<void()> on_closed;

 protected:
  void closeEvent(QCloseEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  // A size for a window that has none remembered.
  void FitFirstSession();
  void BuildLayout();
  void BindModels();
  void SetTabOrder();
  void AddShortcuts();
  bool ApplyReportMode();
  void AfterRefresh();
  void UpdateFilterMetrics();
  void PlaceValueEditor(int which);
  bool ValueEditorEvent(int which, QEvent* event);
  void FilterMousePress(QMouseEvent* event);
  void ToggleCheck(QTreeView* view, ui::ListView& list);
  static bool FilterOpenKey(const QKeyEvent* key);
  void OpenCurrentFilterValue();
  int FilterPressX(int viewport_x) const;
  QString UnwrittenNotice(const QString& file) const;
  void UpdateResults();
  void MarkFailure();

  frmAcctViewEdit& ed_;
  Binder binder_;
  std::function<void(const char* button)> tree_key_;
  std::optional<bool> shown_report_mode_;

  // Step 1
  QScrollArea* scroll_ = nullptr;
  bool first_session_ = false;
  QStatusBar* status_ = nullptr;
  QLabel* unwritten_ = nullptr;
  QSplitter* main_split_ = nullptr;
  QSplitter* sides_split_ = nullptr;
  QSplitter* bottom_split_ = nullptr;
  QGroupBox* step1_ = nullptr;
  QLabel* search_label_ = nullptr;
  QLineEdit* search_ = nullptr;
  QTreeView* tree_ = nullptr;
  QLabel* current_label_ = nullptr;
  QLineEdit* current_profile_ = nullptr;
  // Steps 2 to 7 (the instruction frame)
  QWidget* instructions_ = nullptr;
  QLabel* folder_label_ = nullptr;
  QComboBox* folder_ = nullptr;
  QComboBox* data_set_ = nullptr;
  QGroupBox* step3_ = nullptr;
  QTreeView* tabs_ = nullptr;
  QGroupBox* step7_ = nullptr;
  QBoxLayout* col_b_ = nullptr;
  QSpacerItem* col_b_spacer_ = nullptr;
  QWidget* page_panel_ = nullptr;
  QWidget* filter_area_ = nullptr;
  QTreeView* filters_ = nullptr;
  QComboBox* value1_ = nullptr;
  QComboBox* value2_ = nullptr;
  FilterCellDelegate* cell_delegate_ = nullptr;
  // Pixels the caption column is drawn wider than the model's width.
  int caption_extra_ = 0;
  QStyledItemDelegate* plain_delegate_ = nullptr;
  QGroupBox* pane_ = nullptr;
  StatementView* statement_ = nullptr;
  ResultsPane* results_ = nullptr;
  // The filter value cells (row, column) the last statement failed on.
  std::vector<std::pair<int, int>> failing_cells_;
  QLabel* changed_ = nullptr;
  QPushButton* export_ = nullptr;
  QPushButton* preview_ = nullptr;
  QPushButton* save_ = nullptr;
};

}  // namespace cvve::gui
