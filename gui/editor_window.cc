#include "gui/editor_window.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QSplitter>
#include <QStatusBar>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>

#include "base/error.h"
#include "base/text.h"
#include "component/frm_acct_view_edit.h"
#include "filters/value_editors.h"
#include "gui/about_box.h"
#include "gui/accessible_names.h"
#include "gui/filter_cell_delegate.h"
#include "gui/help_menu.h"
#include "gui/mnemonics.h"
#include "gui/list_view_model.h"
#include "gui/measured_delegate.h"
#include "gui/row_delegate.h"
#include "gui/units.h"
#include "gui/window_settings.h"
#include "profiles/profile_search.h"
#include "query/quiet_prompts.h"
#include "query/statement_preview.h"
#include "results/results.h"
#include "gui/results/results_pane.h"
#include "gui/statement/statement_view.h"
#include "ui/prompter.h"

namespace cvve::gui {

namespace {

QString Q(const std::string& text) { return QString::fromStdString(text); }

// Steps 3, 6 and 7 stand in a column of this width beside the lists.
constexpr int kSideColumnWidth = 250;

QGroupBox* Step(const QString& title, QWidget* parent) {
  auto* box = new QGroupBox(title, parent);
  return box;
}

// A label named `name`, its mnemonic marked, that hands the focus to `buddy`.
QLabel* Caption(const char* name, const QString& text, QWidget* buddy, QWidget* parent) {
  auto* label = new QLabel(WithMnemonic(name, text), parent);
  label->setObjectName(name);
  label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  label->setBuddy(buddy);
  return label;
}

// The numbered step titles; Alt+digit reaches the step's first control.
QString StepTitle(const char* title) { return QStringLiteral("&") + title; }

// Twips to whole pixels, rounded up: the first pixel at or after the point.
int CeilDiv(int twips, int per_pixel) {
  return twips >= 0 ? (twips + per_pixel - 1) / per_pixel : -((-twips) / per_pixel);
}

int MouseButtonCode(Qt::MouseButton button) {
  switch (button) {
    case Qt::LeftButton:
      return 1;
    case Qt::RightButton:
      return 2;
    case Qt::MiddleButton:
      return 4;
    default:
      return 0;
  }
}

int ShiftCode(Qt::KeyboardModifiers modifiers) {
  int code = 0;
  if (modifiers & Qt::ShiftModifier) code |= 1;
  if (modifiers & Qt::ControlModifier) code |= 2;
  if (modifiers & Qt::AltModifier) code |= 4;
  return code;
}

}  // namespace

EditorWindow::EditorWindow(frmAcctViewEdit& ed, QWidget* parent)
    : QWidget(parent, Qt::Window), ed_(ed), binder_(this) {
  setObjectName(Q(ed.Name()));
  ed_.TwipsPerPixelX = TwipsPerPixelX(this);
  ed_.TwipsPerPixelY = TwipsPerPixelY(this);
  BuildLayout();
  BindModels();
  SetTabOrder();
  AddShortcuts();
  NameForAssistiveTechnology(this);
  binder_.before_refresh = [this] { return ApplyReportMode(); };
  binder_.after_refresh = [this] { AfterRefresh(); };
  binder_.on_failure = [this](const std::string& description) {
    ed_.Prompt().MsgBox(std::string("An unexpected error occurred:") + kCrLf + kCrLf + description,
                        ui::Buttons::kOk, ui::Icon::kCritical, "Error");
  };
  // A mode written during an action is shown by that action's refresh; one
  // written from outside is shown at once.
  ed_.on_report_mode_changed = [this] {
    if (!binder_.Acting()) binder_.RefreshAll();
  };
  // Small screens: below this the editor scrolls inside the window.
  setMinimumSize(640, 480);
  // Most of the screen, so that large screens give the lists their room; the
  // size and splitters of the last session when there was one.
  binder_.RefreshAll(true);
  first_session_ = !RestoreWindowState(this, Splitters());
  if (first_session_) FitFirstSession();
}

void EditorWindow::FitFirstSession() {
  QSize size(1360, 880);
  if (QScreen* shown_on = screen()) {
    size = FirstWindowSize(shown_on->availableGeometry().size(), UnscrolledSize());
  }
  resize(size.expandedTo(minimumSize()));
}

EditorWindow::~EditorWindow() { ed_.on_report_mode_changed = nullptr; }

QSize EditorWindow::UnscrolledSize() const {
  // The editor's least size in the fonts of this screen, with the menu and
  // the status line around it.
  const QSize content = scroll_->widget()->minimumSizeHint();
  return {content.width(), content.height() + layout()->menuBar()->sizeHint().height() +
                               status_->sizeHint().height()};
}

QList<QSplitter*> EditorWindow::Splitters() const {
  return {main_split_, sides_split_, bottom_split_};
}

void EditorWindow::BuildLayout() {
  // Menu, the editor (scrolled when the window is smaller than it needs) and
  // the status line.
  auto* outer = new QVBoxLayout(this);
  outer->setContentsMargins(0, 0, 0, 0);
  outer->setSpacing(0);
  outer->setMenuBar(CreateHelpMenuBar(this));
  scroll_ = new QScrollArea(this);
  scroll_->setObjectName("scrContent");
  scroll_->setWidgetResizable(true);
  scroll_->setFrameShape(QFrame::NoFrame);
  auto* content = new QWidget(scroll_);
  content->setObjectName("content");
  scroll_->setWidget(content);
  outer->addWidget(scroll_, 1);
  status_ = new QStatusBar(this);
  status_->setObjectName("statusBar");
  status_->setSizeGripEnabled(false);
  unwritten_ = new QLabel(status_);
  unwritten_->setObjectName("lblUnwritten");
  status_->addWidget(unwritten_, 1);
  outer->addWidget(status_);

  auto* root = new QVBoxLayout(content);
  root->setContentsMargins(8, 8, 8, 8);
  root->setSpacing(6);
  // Steps over the bottom panes; the profiles beside the steps. The bottom
  // is a splitter of its own so that further panes can join the statement.
  main_split_ = new QSplitter(Qt::Vertical, content);
  main_split_->setObjectName("splMain");
  main_split_->setChildrenCollapsible(false);
  sides_split_ = new QSplitter(Qt::Horizontal, main_split_);
  sides_split_->setObjectName("splSides");
  sides_split_->setChildrenCollapsible(false);
  bottom_split_ = new QSplitter(Qt::Horizontal, main_split_);
  bottom_split_->setObjectName("splBottom");
  bottom_split_->setChildrenCollapsible(false);
  main_split_->addWidget(sides_split_);
  main_split_->addWidget(bottom_split_);
  main_split_->setStretchFactor(0, 1);
  main_split_->setStretchFactor(1, 0);
  root->addWidget(main_split_, 1);

  // --- 1. the profiles ---
  step1_ = Step(StepTitle("1. Select A Profile"), sides_split_);
  auto* l1 = new QVBoxLayout(step1_);
  l1->setSpacing(6);
  search_ = new QLineEdit(step1_);
  search_->setObjectName("txtSearch");
  search_->setPlaceholderText("Search profile names");
  search_->setClearButtonEnabled(true);
  search_->setToolTip(
      "Lists the profiles whose names contain this text under \"Search Results\" (Ctrl+F)");
  auto* search_row = new QHBoxLayout;
  search_label_ = Caption("lblSearch", "Search:", search_, step1_);
  search_row->addWidget(search_label_);
  search_row->addWidget(search_, 1);
  l1->addLayout(search_row);
  tree_ = new QTreeView(step1_);
  tree_->setIconSize(QSize(16, 16));
  l1->addWidget(tree_, 1);
  auto* commands = new QGridLayout;
  commands->setSpacing(6);
  const struct {
    ui::CommandButton* model;
    const char* tip;
    int row, column;
  } kCommands[] = {
      {&ed_.cmdNewProfile, "Create a new profile (Ctrl+N)", 0, 0},
      {&ed_.cmdCopyProfile, "Copy the profile under a new name (Ctrl+D)", 0, 1},
      {&ed_.cmdEditProfile, "Rename the profile (F2)", 1, 0},
      {&ed_.cmdDeleteProfile, "Delete the profile, or reset a system profile (Delete)", 1, 1},
      {&ed_.cmdSaveProfile, "Save the profile (Ctrl+S)", 2, 0},
  };
  for (const auto& command : kCommands) {
    auto* button = new QPushButton(step1_);
    binder_.Bind(*command.model, button);
    button->setToolTip(command.tip);
    commands->addWidget(button, command.row, command.column);
    if (command.model == &ed_.cmdSaveProfile) save_ = button;
  }
  l1->addLayout(commands);
  sides_split_->addWidget(step1_);

  // --- the right side: current profile, steps 2 to 7 ---
  auto* right_side = new QWidget(sides_split_);
  right_side->setObjectName("steps");
  sides_split_->addWidget(right_side);
  sides_split_->setStretchFactor(0, 0);
  sides_split_->setStretchFactor(1, 1);
  auto* right = new QVBoxLayout(right_side);
  right->setContentsMargins(0, 0, 0, 0);
  right->setSpacing(6);
  auto* current = new QHBoxLayout;
  current_profile_ = new QLineEdit(right_side);
  current_label_ = Caption("lblCurrProf", "Current profile:", current_profile_, right_side);
  current->addWidget(current_label_);
  QFont bold = current_profile_->font();
  bold.setBold(true);
  current_profile_->setFont(bold);
  current_profile_->setFocusPolicy(Qt::ClickFocus);
  current->addWidget(current_profile_, 1);
  right->addLayout(current);

  instructions_ = new QWidget(right_side);
  instructions_->setObjectName("fraInstructions");
  auto* columns = new QHBoxLayout(instructions_);
  columns->setContentsMargins(0, 0, 0, 0);
  columns->setSpacing(10);
  auto* col_a = new QVBoxLayout;
  col_a->setSpacing(8);
  auto* col_b = new QVBoxLayout;
  col_b->setSpacing(8);
  columns->addLayout(col_a, 1);
  columns->addLayout(col_b, 0);
  right->addWidget(instructions_, 1);

  // 2. data set and folder
  auto* step2 = Step(StepTitle("2. Choose The Data Set"), instructions_);
  auto* l2 = new QHBoxLayout(step2);
  data_set_ = new QComboBox(step2);
  data_set_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  data_set_->setMinimumContentsLength(14);
  l2->addWidget(Caption("lblDataSet", "Data set:", data_set_, step2));
  l2->addWidget(data_set_, 3);
  l2->addSpacing(12);
  folder_ = new QComboBox(step2);
  folder_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  folder_->setMinimumContentsLength(10);
  folder_label_ = Caption("lblAcctViewType", "Folder:", folder_, step2);
  l2->addWidget(folder_label_);
  folder_->setToolTip("The folder of the tree that lists this profile");
  l2->addWidget(folder_, 2);
  col_a->addWidget(step2);

  // 4. columns
  auto* step4 = Step(StepTitle("4. Select The List Columns"), instructions_);
  auto* l4 = new QGridLayout(step4);
  l4->setHorizontalSpacing(8);
  auto* available = new QListWidget(step4);
  auto* used = new QListWidget(step4);
  l4->addWidget(Caption("lblAvailColumns", "Available columns", available, step4), 0, 0);
  l4->addWidget(Caption("lblUsedColumns", "Used columns, in order", used, step4), 0, 2);
  binder_.Bind(ed_.lstAvailColumns, available);
  binder_.Bind(ed_.lstUsedColumns, used);
  for (QListWidget* list : {available, used}) list->setItemDelegate(new MeasuredDelegate(list));
  available->setToolTip("Double-click a column, or press Enter, to use it");
  used->setToolTip("Double-click a column, or press Enter, to stop using it");
  l4->addWidget(available, 1, 0);
  l4->addWidget(used, 1, 2);
  auto* moves = new QVBoxLayout;
  moves->addStretch();
  const struct {
    ui::CommandButton* model;
    const char* tip;
  } kMoves[] = {{&ed_.cmdAddForm, "Use the selected column"},
                {&ed_.cmdRemoveForm, "Stop using the selected column"},
                {&ed_.cmdRemoveAll, "Stop using every column"}};
  for (const auto& move : kMoves) {
    auto* button = new QPushButton(step4);
    binder_.Bind(*move.model, button);
    button->setToolTip(move.tip);
    button->setFixedWidth(44);
    moves->addWidget(button);
  }
  moves->addStretch();
  l4->addLayout(moves, 1, 1);
  auto* order = new QVBoxLayout;
  order->addStretch();
  for (int i = 0; i < 2; ++i) {
    auto* button = new QPushButton(step4);
    binder_.Bind(ed_.cmdMove[static_cast<std::size_t>(i)], button);
    button->setToolTip(i == 0 ? "Move the selected column up" : "Move the selected column down");
    order->addWidget(button);
  }
  order->addStretch();
  l4->addLayout(order, 1, 3);
  l4->setColumnStretch(0, 1);
  l4->setColumnStretch(2, 1);
  col_a->addWidget(step4, 2);

  // 5. the easy filter; the option's caption is the step's title
  auto* step5 = Step(QString(), instructions_);
  auto* l5 = new QVBoxLayout(step5);
  auto* mode = new QHBoxLayout;
  auto* easy = new QRadioButton(step5);
  auto* advanced = new QRadioButton(step5);
  QFont title_font = easy->font();
  title_font.setBold(true);
  easy->setFont(title_font);
  binder_.Bind(ed_.optFilter, std::vector<QRadioButton*>{easy, advanced});
  easy->setToolTip("Filter with the checked conditions of the list below");
  advanced->setToolTip("Filter with a statement written by hand");
  mode->addWidget(easy);
  mode->addStretch();
  mode->addWidget(advanced);
  auto* edit_advanced = new QPushButton(step5);
  binder_.Bind(ed_.cmdAdvancedFilter, edit_advanced);
  mode->addWidget(edit_advanced);
  l5->addLayout(mode);
  filter_area_ = new QWidget(step5);
  filter_area_->setObjectName("filterArea");
  auto* area = new QVBoxLayout(filter_area_);
  area->setContentsMargins(0, 0, 0, 0);
  filters_ = new QTreeView(filter_area_);
  area->addWidget(filters_);
  l5->addWidget(filter_area_, 1);
  col_a->addWidget(step5, 4);

  // 3. tabs (view mode) or page and variables (report mode)
  step3_ = Step(StepTitle("3. Select The Tabs"), instructions_);
  step3_->setFixedWidth(kSideColumnWidth);
  auto* l3 = new QVBoxLayout(step3_);
  tabs_ = new QTreeView(step3_);
  l3->addWidget(tabs_);
  col_b->addWidget(step3_, 1);

  // 6. sorting and totals
  auto* step6 = Step(StepTitle("6. Sort And Totals"), instructions_);
  step6->setFixedWidth(kSideColumnWidth);
  auto* l6 = new QGridLayout(step6);
  l6->setVerticalSpacing(6);
  for (int i = 0; i < 2; ++i) {
    const auto s = static_cast<std::size_t>(i);
    auto* sort = new QComboBox(step6);
    auto* direction = new QComboBox(step6);
    l6->addWidget(Caption(i == 0 ? "lblSort(0)" : "lblSort(1)", i == 0 ? "Sort by:" : "Then by:",
                          sort, step6),
                  i, 0);
    sort->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    sort->setMinimumContentsLength(10);
    binder_.Bind(ed_.cmbSort[s], sort);
    binder_.Bind(ed_.cmbSortASCDESC[s], direction);
    direction->setToolTip("ASC: ascending, DESC: descending");
    l6->addWidget(sort, i, 1);
    l6->addWidget(direction, i, 2);
  }
  l6->setColumnStretch(1, 1);
  int row = 2;
  for (ui::CheckBox* box :
       {&ed_.chkSortGroup, &ed_.chkTotals, &ed_.chkAverages, &ed_.chkShowLineCount}) {
    auto* check = new QCheckBox(step6);
    binder_.Bind(*box, check);
    l6->addWidget(check, row++, 0, 1, 3);
  }
  col_b->addWidget(step6);

  // 7. printing and input variables (moves into step 3 in report mode)
  step7_ = Step(StepTitle("7. Printing And Input Variables"), instructions_);
  step7_->setFixedWidth(kSideColumnWidth);
  auto* l7 = new QVBoxLayout(step7_);
  page_panel_ = new QWidget(step7_);
  page_panel_->setObjectName("pagePanel");
  auto* page = new QGridLayout(page_panel_);
  page->setContentsMargins(0, 0, 0, 0);
  page->setVerticalSpacing(6);
  auto* orientation = new QComboBox(page_panel_);
  page->addWidget(Caption("lblOrientation", "Orientation:", orientation, page_panel_), 0, 0);
  binder_.Bind(ed_.cmbOrientation, orientation);
  page->addWidget(orientation, 0, 1);
  auto* page_size = new QComboBox(page_panel_);
  page->addWidget(Caption("lblPageSize", "Page size:", page_size, page_panel_), 1, 0);
  binder_.Bind(ed_.cmbPageSize, page_size);
  page->addWidget(page_size, 1, 1);
  page->setColumnStretch(1, 1);
  row = 2;
  for (ui::CheckBox* box : {&ed_.chkMultiLine, &ed_.chkStartEnd}) {
    auto* check = new QCheckBox(page_panel_);
    binder_.Bind(*box, check);
    page->addWidget(check, row++, 0, 1, 2);
  }
  auto* variables = new QPushButton(page_panel_);
  binder_.Bind(ed_.cmdEditVariables, variables);
  variables->setToolTip("Define the values a report asks for when it is previewed");
  page->addWidget(variables, row, 0, 1, 2);
  l7->addWidget(page_panel_);
  col_b->addWidget(step7_);
  col_b_ = col_b;
  col_b_spacer_ = new QSpacerItem(0, 0, QSizePolicy::Minimum, QSizePolicy::Minimum);
  col_b->addItem(col_b_spacer_);

  // The statement that a save would store, read-only: the first bottom pane.
  pane_ = Step("Statement Saved With This Profile", bottom_split_);
  QGroupBox* pane = pane_;
  auto* lp = new QVBoxLayout(pane);
  lp->setContentsMargins(6, 4, 6, 6);
  statement_ = new StatementView(pane);
  statement_->setObjectName("txtStatement");
  statement_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  const int line = statement_->fontMetrics().lineSpacing();
  statement_->setMinimumHeight(line * 2 + 12);
  statement_->resize(statement_->width(), line * 5 + 12);
  statement_->setFocusPolicy(Qt::ClickFocus);
  lp->addWidget(statement_);
  bottom_split_->addWidget(pane);
  main_split_->setSizes({600, line * 5 + 40});

  // --- the closing row ---
  auto* closing = new QHBoxLayout;
  export_ = new QPushButton(this);
  binder_.Bind(ed_.cmdExport, export_);
  export_->setToolTip("Write this view as a custom report");
  preview_ = new QPushButton(this);
  binder_.Bind(ed_.cmdPreviewReport, preview_);
  preview_->setToolTip("Show the report with the values of its input variables");
  closing->addWidget(export_);
  closing->addWidget(preview_);
  closing->addStretch();
  changed_ = new QLabel("Unsaved changes", this);
  changed_->setObjectName("lblUnsaved");
  changed_->setStyleSheet("color: #a04a00; font-weight: bold;");
  closing->addWidget(changed_);
  // The status line: where a file the editor could not read was kept.
  auto* status = new QLabel(this);
  status->setObjectName("lblStatus");
  status->setVisible(false);
  closing->addWidget(status);
  closing->addSpacing(12);
  auto* ok = new QPushButton(this);
  binder_.Bind(ed_.cmdOK, ok);
  ok->setToolTip("Offer to save the profile, write the views file and close");
  auto* cancel = new QPushButton(this);
  binder_.Bind(ed_.cmdCancel, cancel);
  cancel->setToolTip("Close without writing the views file");
  for (QPushButton* button : {export_, preview_, ok, cancel}) button->setMinimumWidth(96);
  closing->addWidget(ok);
  closing->addWidget(cancel);
  root->addLayout(closing);
}

void EditorWindow::BindModels() {
  binder_.Bind(ed_.tvwViews, tree_);
  tree_->setItemDelegate(new RowDelegate(tree_));
  binder_.Bind(ed_.txtCurrProf, current_profile_, false);
  binder_.Bind(ed_.cmbAcctViewType, folder_);
  binder_.Bind(ed_.cmbDataSet, data_set_);
  binder_.Bind(ed_.fraInstructions, instructions_);
  instructions_->setObjectName(Q(ed_.fraInstructions.Name()));

  binder_.Bind(ed_.lstvwTabs, tabs_);
  tabs_->setHeaderHidden(true);
  tabs_->setItemDelegate(new RowDelegate(tabs_));
  tabs_->installEventFilter(this);

  // The filter list: fixed column widths from the model, rows scrolled a
  // whole row at a time so the model can count them.
  binder_.Bind(ed_.lstFilters, filters_, [this] { UpdateFilterMetrics(); });
  filters_->setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
  filters_->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  filters_->header()->setStretchLastSection(false);
  filters_->header()->setSectionResizeMode(QHeaderView::Fixed);
  filters_->header()->setSectionsMovable(false);
  filters_->setAllColumnsShowFocus(true);
  // Narrower than its columns it scrolls sideways, so small screens keep it.
  filters_->setMinimumWidth(300);
  filters_->installEventFilter(this);
  filters_->viewport()->installEventFilter(this);
  filter_area_->installEventFilter(this);
  connect(filters_->verticalScrollBar(), &QScrollBar::valueChanged, this,
          [this] { UpdateFilterMetrics(); });
  plain_delegate_ = new RowDelegate(filters_);
  cell_delegate_ = new FilterCellDelegate(ed_, filters_);
  cell_delegate_->on_error = [this](const std::string& description) {
    binder_.ActLater([this, description] {
      ed_.Prompt().MsgBox(std::string("Error: ") + kCrLf + kCrLf + description, ui::Buttons::kOk,
                          ui::Icon::kCritical, "ERROR");
    });
  };
  filters_->setItemDelegate(plain_delegate_);

  // The in-place value editors float over the list in the same container.
  value1_ = new QComboBox(filter_area_);
  value2_ = new QComboBox(filter_area_);
  binder_.Bind(ed_.txtData1LV, value1_);
  binder_.Bind(ed_.txtData2LV, value2_);
  for (QComboBox* box : {value1_, value2_}) {
    box->hide();
    box->installEventFilter(this);
    if (box->lineEdit()) box->lineEdit()->installEventFilter(this);
  }

  connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
    binder_.Act([this, text = text.toStdString()] { FillSearchResults(ed_, text); });
  });
}

void EditorWindow::SetTabOrder() {
  std::vector<QWidget*> chain{search_, tree_};
  for (const char* name : {"cmdNewProfile",
                           "cmdCopyProfile",
                           "cmdEditProfile",
                           "cmdDeleteProfile",
                           "cmdSaveProfile",
                           "cmbDataSet",
                           "cmbAcctViewType",
                           "lstvwTabs",
                           "lstAvailColumns",
                           "cmdAddForm",
                           "cmdRemoveForm",
                           "cmdRemoveAll",
                           "lstUsedColumns",
                           "cmdMove(0)",
                           "cmdMove(1)",
                           "optFilter(0)",
                           "optFilter(1)",
                           "cmdAdvancedFilter",
                           "lstFilters",
                           "cmbSort(0)",
                           "cmbSortASCDESC(0)",
                           "cmbSort(1)",
                           "cmbSortASCDESC(1)",
                           "chkSortGroup",
                           "chkTotals",
                           "chkAverages",
                           "chkShowLineCount",
                           "cmbOrientation",
                           "cmbPageSize",
                           "chkMultiLine",
                           "chkStartEnd",
                           "cmdEditVariables",
                           "cmdExport",
                           "cmdPreviewReport",
                           "cmdOK",
                           "cmdCancel"}) {
    if (auto* w = findChild<QWidget*>(name)) chain.push_back(w);
  }
  for (std::size_t i = 1; i < chain.size(); ++i) setTabOrder(chain[i - 1], chain[i]);
}

void EditorWindow::AddShortcuts() {
  auto press = [this](const char* name) {
    auto* button = findChild<QPushButton*>(name);
    if (!button || !button->isEnabled() || !button->isVisible()) return;
    // The focus moves first, as a click would move it: an open value editor
    // then stores its text before the command runs.
    button->setFocus(Qt::ShortcutFocusReason);
    button->click();
  };
  const struct {
    QKeySequence keys;
    const char* button;
  } kShortcuts[] = {
      {QKeySequence(Qt::CTRL | Qt::Key_S), "cmdSaveProfile"},
      {QKeySequence(Qt::CTRL | Qt::Key_N), "cmdNewProfile"},
      {QKeySequence(Qt::CTRL | Qt::Key_D), "cmdCopyProfile"},
  };
  for (const auto& shortcut : kShortcuts) {
    auto* s = new QShortcut(shortcut.keys, this);
    s->setContext(Qt::WindowShortcut);
    connect(s, &QShortcut::activated, this, [press, name = shortcut.button] { press(name); });
  }
  // Ctrl+F: to the profile search, its text ready to be typed over.
  auto* find = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_F), this);
  find->setContext(Qt::WindowShortcut);
  connect(find, &QShortcut::activated, this, [this] {
    if (!search_->isVisible()) return;
    search_->setFocus(Qt::ShortcutFocusReason);
    search_->selectAll();
  });
  // F2 and Delete act on the profile only while the tree has the focus (the
  // tree claims these keys before shortcuts see them); see eventFilter.
  tree_->installEventFilter(this);
  tree_key_ = press;
}

bool EditorWindow::ApplyReportMode() {
  const bool report = ed_.InReportMode();
  if (shown_report_mode_ == report) return false;
  shown_report_mode_ = report;
  // Report mode: a printed report has no tabs and is not exported again; its
  // page and input variables matter most, so they take step 3's place.
  step1_->setTitle(StepTitle(report ? "1. Select A Report" : "1. Select A Profile"));
  current_label_->setText(
      WithMnemonic("lblCurrProf", report ? "Current report:" : "Current profile:"));
  pane_->setTitle(report ? "Statement Saved With This Report"
                         : "Statement Saved With This Profile");
  search_->setVisible(!report);
  search_label_->setVisible(!report);
  folder_label_->setVisible(!report);
  binder_.SetLayoutHidden(folder_, report);
  binder_.SetLayoutHidden(tabs_, report);
  binder_.SetLayoutHidden(export_, report);
  binder_.SetLayoutHidden(preview_, !report);
  auto* l3 = static_cast<QVBoxLayout*>(step3_->layout());
  auto* l7 = static_cast<QVBoxLayout*>(step7_->layout());
  if (report) {
    step3_->setTitle(StepTitle("3. Report Page And Input Variables"));
    l3->addWidget(page_panel_);
    step7_->hide();
  } else {
    step3_->setTitle(StepTitle("3. Select The Tabs"));
    l7->addWidget(page_panel_);
    step7_->show();
  }
  page_panel_->show();
  // The tabs list takes the column's spare height; without it the space
  // goes below the last step.
  col_b_->setStretchFactor(step3_, report ? 0 : 1);
  col_b_spacer_->changeSize(0, 0, QSizePolicy::Minimum,
                            report ? QSizePolicy::Expanding : QSizePolicy::Minimum);
  col_b_->invalidate();
  return true;
}

void EditorWindow::AfterRefresh() {
  const bool report = ed_.InReportMode();
  const QString file = QFileInfo(Q(ed_.ViewsPath)).fileName();
  const QString waiting = UnwrittenNotice(file);
  setWindowTitle((report ? QString("Custom Reports")
                         : QString("View Profiles - %1").arg(file.isEmpty() ? "no file" : file)) +
                 (waiting.isEmpty() ? QString() : QString(" (saved, not yet written)")) +
                 QString("[*]"));
  setWindowModified(ed_.ProfileChanged);
  changed_->setVisible(ed_.ProfileChanged);
  unwritten_->setText(waiting);

  // The cell painter follows the editor (installed by LoadFiles, removed on unload).
  QAbstractItemDelegate* want = ed_.cell_painter_installed
                                    ? static_cast<QAbstractItemDelegate*>(cell_delegate_)
                                    : plain_delegate_;
  if (filters_->itemDelegate() != want) filters_->setItemDelegate(want);

  for (int which = 1; which <= 2; ++which) {
    const ui::ComboBox& model = ValueEditor(ed_, which);
    QComboBox* box = valueEditor(which);
    if (!model.Visible()) continue;
    PlaceValueEditor(which);
    box->raise();
    if (model.Focused() && !box->hasFocus()) {
      // Just opened: the box takes the focus, its text ready to be typed over.
      box->setFocus(Qt::OtherFocusReason);
      if (box->lineEdit()) box->lineEdit()->selectAll();
    }
  }

  const QString statement = Q(StoredStatementPreview(ed_));
  if (statement_->toPlainText() != statement) {
    statement_->setPlainText(statement);
    MarkFailure();
  }
  UpdateResults();

  if (!ed_.Visible() && isVisible()) {
    SaveWindowState(this, Splitters());
    hide();
    if (on_closed) on_closed();
  }
}

QString EditorWindow::UnwrittenNotice(const QString& file) const {
  if (ed_.UnwrittenProfiles.empty()) return {};
  QStringList names;
  for (const std::string& name : ed_.UnwrittenProfiles) names << Q(name);
  return QString("Saved, not yet written: %1. OK writes %2 to %3; Cancel drops %2.")
      .arg(names.join(", "), names.size() == 1 ? "it" : "them", file);
}

void EditorWindow::ShowResults(const reportengine::EditorDatabase& database) {
  if (results_) return;
  results_ = new ResultsPane(database, this);
  // Beside the statement, in the bottom splitter, with most of its width.
  bottom_split_->addWidget(results_);
  bottom_split_->setStretchFactor(0, 1);
  bottom_split_->setStretchFactor(1, 2);
  results_->on_finished = [this] { MarkFailure(); };
  for (RowDelegate* delegate : {static_cast<RowDelegate*>(plain_delegate_),
                                static_cast<RowDelegate*>(cell_delegate_)}) {
    delegate->mark = [this](const QModelIndex& index) {
      return valueMark(index.row(), index.column());
    };
  }
  UpdateResults();
}

void EditorWindow::UpdateResults() {
  if (!results_) return;
  if (ed_.InReportMode()) {
    try {
      results_->ShowReport(results::ReportDefinition(ed_), {});
    } catch (const std::exception& e) {
      results_->ShowReport({}, Q(Describe(e)));
    }
    return;
  }
  std::string view_sql;
  QString problem;
  QStringList names;
  std::vector<std::string> formats;
  try {
    view_sql = results::ViewStatement(ed_);
    QuietPrompts quiet(ed_);
    for (const results::ShownColumn& column : results::ShownColumns(ed_)) {
      names << Q(column.name);
      formats.push_back(column.format);
    }
  } catch (const std::exception& e) {
    view_sql.clear();
    problem = Q(Describe(e));
  }
  results_->Show(view_sql, problem, names, formats);
}

QString EditorWindow::valueMark(int row, int column) const {
  if (!results_) return {};
  for (const auto& [failing_row, failing_column] : failing_cells_) {
    if (failing_row == row && failing_column == column) return results_->errorMessage();
  }
  return {};
}

// The filter value and the place in the statement pane the database's error
// names; cleared when the statement runs.
void EditorWindow::MarkFailure() {
  if (!results_) return;
  failing_cells_.clear();
  std::vector<StatementView::Mark> marks;
  const long long position = results_->errorPosition();
  const std::string& ran = results_->lastStatement();
  if (position >= 0 && static_cast<std::size_t>(position) < ran.size()) {
    for (const results::ValueCell& cell : results::ValuesAt(ed_, ran, position)) {
      failing_cells_.emplace_back(cell.item - 1, cell.column);
    }
    // The word the database named, found in the pane's text.
    std::size_t end = ran.find_first_of(" ,)\n", static_cast<std::size_t>(position) + 1);
    if (end == std::string::npos) end = ran.size();
    const QString word = Q(ran.substr(static_cast<std::size_t>(position),
                                      std::min<std::size_t>(end - position, 24)));
    const qsizetype found =
        word.isEmpty() ? -1 : statement_->toPlainText().indexOf(word, 0, Qt::CaseInsensitive);
    if (found >= 0) {
      marks.push_back({static_cast<int>(found), static_cast<int>(word.size()),
                       results_->errorMessage()});
    }
  }
  statement_->setMarks(marks);
  filters_->viewport()->update();
}

bool EditorWindow::cellPainterShown() const { return filters_->itemDelegate() == cell_delegate_; }

void EditorWindow::UpdateFilterMetrics() {
  ui::ListView& list = ed_.lstFilters;
  const int tx = TwipsPerPixelX(this);
  const int ty = TwipsPerPixelY(this);
  ed_.TwipsPerPixelX = tx;
  ed_.TwipsPerPixelY = ty;
  QHeaderView* header = filters_->header();
  // Column c covers the pixels x with x * tx inside its twips, as the model's
  // hit test counts them: its edges are the running widths divided upwards.
  // Room beyond the columns widens the caption column on screen only; the
  // model keeps its widths, and presses and editors are shifted by the extra.
  int running = 0;
  int widths = 0;
  for (int c = 0; c < list.ColumnCount() && c < header->count(); ++c) {
    const int left = CeilDiv(running, tx);
    running += list.Column(c + 1).width_twips;
    widths += CeilDiv(running, tx) - left;
  }
  caption_extra_ = std::max(0, filters_->viewport()->width() - widths);
  running = 0;
  for (int c = 0; c < list.ColumnCount() && c < header->count(); ++c) {
    const int left = CeilDiv(running, tx);
    running += list.Column(c + 1).width_twips;
    const int width = CeilDiv(running, tx) - left + (c == 0 ? caption_extra_ : 0);
    if (header->sectionSize(c) != width) header->resizeSection(c, width);
  }
  // The list's origin, as the model counts it, is the top of the header at
  // the left of the first column; rows start below the header.
  const QPoint viewport = filters_->viewport()->mapTo(filter_area_, QPoint(0, 0));
  const int header_height = filters_->isHeaderHidden() ? 0 : header->height();
  list.left = viewport.x() * tx;
  list.top = (viewport.y() - header_height) * ty;
  list.width = filters_->width() * tx;
  list.height = filters_->height() * ty;
  list.header_height_twips = header_height * ty;
  int row_height = filters_->sizeHintForRow(0);
  if (row_height <= 0) row_height = filters_->fontMetrics().height() + 4;
  list.row_height_twips = row_height * ty;
  list.scroll_rows = filters_->verticalScrollBar()->value();
}

int EditorWindow::FilterPressX(int viewport_x) const {
  // From the stretched columns on screen to the model's: a press in the
  // widened part of the caption is a press in the caption.
  const int x = viewport_x + filters_->horizontalScrollBar()->value();
  const int caption = filters_->header()->sectionSize(0);
  if (x >= caption) return x - caption_extra_;
  return std::min(x, std::max(0, caption - caption_extra_ - 1));
}

void EditorWindow::PlaceValueEditor(int which) {
  // The model places the box in twips within the filter area (over the cell
  // it edits); its height is the box's own.
  const ui::ComboBox& model = ValueEditor(ed_, which);
  QComboBox* box = valueEditor(which);
  // The columns right of the caption sit further right by the caption's
  // extra width, and further left by the list's horizontal scroll.
  const int shift = caption_extra_ - filters_->horizontalScrollBar()->value();
  box->setGeometry(CeilDiv(model.Left(), TwipsPerPixelX(this)) + shift,
                   CeilDiv(model.Top(), TwipsPerPixelY(this)), ToPixelsX(this, model.Width()),
                   box->sizeHint().height());
}

void EditorWindow::FilterMousePress(QMouseEvent* event) {
  // The model sees the point in twips relative to the list's origin, after
  // the press has moved the selection to the row under the pointer.
  const int tx = TwipsPerPixelX(this);
  const int ty = TwipsPerPixelY(this);
  const QPoint at = event->position().toPoint();
  const int header_height = filters_->isHeaderHidden() ? 0 : filters_->header()->height();
  const float x = float(FilterPressX(at.x()) * tx);
  const float y = float((at.y() + header_height) * ty);
  const int button = MouseButtonCode(event->button());
  const int shift = ShiftCode(event->modifiers());
  binder_.ActLater([this, button, shift, x, y] {
    UpdateFilterMetrics();
    lstFilters_MouseDown(ed_, button, shift, x, y);
  });
}

bool EditorWindow::FilterOpenKey(const QKeyEvent* key) {
  if (key->modifiers() != Qt::NoModifier && key->modifiers() != Qt::KeypadModifier) return false;
  return key->key() == Qt::Key_F2 || key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
}

void EditorWindow::OpenCurrentFilterValue() {
  const QModelIndex current = filters_->currentIndex();
  if (!current.isValid()) return;
  const int position = current.row() + 1;
  // The same press a click on the row's first value cell makes.
  binder_.ActLater([this, position] {
    UpdateFilterMetrics();
    static_cast<void>(lstFilters_OpenValueCell(ed_, position, 1));
  });
}

void EditorWindow::ToggleCheck(QTreeView* view, ui::ListView& list) {
  const QModelIndex current = view->currentIndex();
  if (!current.isValid()) return;
  const int position = current.row() + 1;
  binder_.ActLater([&list, position] {
    if (position <= list.ItemCount()) list.UserCheck(position, !list.Item(position).checked);
  });
}

bool EditorWindow::ValueEditorEvent(int which, QEvent* event) {
  switch (event->type()) {
    case QEvent::KeyPress: {
      auto* key = static_cast<QKeyEvent*>(event);
      if (key->key() == Qt::Key_Tab && key->modifiers() == Qt::NoModifier && which == 1 &&
          ValueCellCount(ed_, ed_.lstFilters.SelectedItem()) == 2) {
        binder_.Act([this] { static_cast<void>(txtDataLV_Tab(ed_, 1)); });
        return true;
      }
      int code = 0;
      if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) code = kKeyEnter;
      if (key->key() == Qt::Key_Escape) code = kKeyEscape;
      if (code == 0) return false;
      binder_.Act([this, which, code] {
        txtDataLV_KeyDown(ed_, which, code);
        txtDataLV_KeyPress(ed_, which, code);
      });
      // A box closed by the keyboard hands the focus back to the list.
      QTimer::singleShot(0, this, [this] {
        if (filters_->isEnabled() && !value1_->isVisible() && !value2_->isVisible()) {
          filters_->setFocus(Qt::OtherFocusReason);
        }
      });
      return true;
    }
    case QEvent::FocusOut: {
      auto* focus = static_cast<QFocusEvent*>(event);
      // The box's own drop-down takes the focus for a moment, and another
      // window being activated leaves it where it is: no loss either way.
      if (focus->reason() == Qt::PopupFocusReason ||
          focus->reason() == Qt::ActiveWindowFocusReason) {
        return false;
      }
      QWidget* now = QApplication::focusWidget();
      QWidget* popup = valueEditor(which)->view();
      if (now && popup && (now == popup || now->window() == popup->window())) return false;
      // A box the model closed itself has already had its loss of focus.
      auto lost = [this, which] {
        if (ValueEditor(ed_, which).Focused()) txtDataLV_LostFocus(ed_, which);
      };
      // Before the click that took the focus away runs, as the focus moves first.
      if (binder_.Refreshing() || binder_.Acting()) {
        binder_.ActLater(lost);
      } else {
        binder_.Act(lost);
      }
      return false;
    }
    default:
      return false;
  }
}

bool EditorWindow::eventFilter(QObject* watched, QEvent* event) {
  for (int which = 1; which <= 2; ++which) {
    QComboBox* box = valueEditor(which);
    if (box && (watched == box || watched == box->lineEdit())) {
      if (ValueEditorEvent(which, event)) return true;
      return QWidget::eventFilter(watched, event);
    }
  }
  if (watched == filters_->viewport() && event->type() == QEvent::MouseButtonPress) {
    FilterMousePress(static_cast<QMouseEvent*>(event));
  } else if ((watched == filter_area_ || watched == filters_->viewport()) &&
             (event->type() == QEvent::Resize || event->type() == QEvent::Move ||
              event->type() == QEvent::LayoutRequest)) {
    UpdateFilterMetrics();
    for (int which = 1; which <= 2; ++which) {
      if (valueEditor(which)->isVisible()) PlaceValueEditor(which);
    }
  } else if (watched == tree_ && event->type() == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(event);
    if (key->modifiers() == Qt::NoModifier &&
        (key->key() == Qt::Key_F2 || key->key() == Qt::Key_Delete)) {
      tree_key_(key->key() == Qt::Key_F2 ? "cmdEditProfile" : "cmdDeleteProfile");
      return true;
    }
  } else if ((watched == filters_ || watched == tabs_) &&
             (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease)) {
    auto* key = static_cast<QKeyEvent*>(event);
    if (watched == filters_ && FilterOpenKey(key)) {
      if (event->type() == QEvent::KeyPress) OpenCurrentFilterValue();
      return true;
    }
    if (key->key() == Qt::Key_Space && key->modifiers() == Qt::NoModifier) {
      if (event->type() == QEvent::KeyPress && !key->isAutoRepeat()) {
        ToggleCheck(static_cast<QTreeView*>(watched),
                    watched == filters_ ? ed_.lstFilters : ed_.lstvwTabs);
      }
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

void EditorWindow::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  // Only a shown window's size hints are in its style's fonts: the first
  // session's size is taken again then, once.
  if (first_session_ && !event->spontaneous()) {
    first_session_ = false;
    FitFirstSession();
  }
  UpdateFilterMetrics();
}

void EditorWindow::closeEvent(QCloseEvent* event) {
  if (!ed_.Visible()) {
    event->accept();
    return;
  }
  // The frame's close button is Cancel: nothing unsaved is written.
  event->ignore();
  binder_.Act([this] { ed_.cmdCancel.Click(); });
}

}  // namespace cvve::gui
